// Key-line files (BLZConfig.dat, SysData.dat, NetPath.ini): the reader gives what a plain walk over the
// file's lines gives.
#include "fuzz_support.h"

#include "common/profile.h"
#include "common/text_file.h"
#include "common/vbtext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzAppInit();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString path = FuzzFile(bytes, "k.dat");
    QStringList lines;
    FUZZ_CHECK(TextFile::readLines(path, &lines));
    for (const char* k : {"COMPort=", "UserNam:", "NetworkPath=", "BiaoZeroTime=", "=", ""}) {
        const QString key = QString::fromUtf8(k);
        QString expected;
        for (const QString& line : lines)
            if (line.startsWith(key)) {
                expected = Trim(line.mid(key.size()));
                break;
            }
        FUZZ_CHECK(ReadKeyLine(path, key) == expected);
    }
    return 0;
}
