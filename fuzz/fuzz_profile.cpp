// Profile files: any bytes are read without harm, and a value written is the value read back.
#include "fuzz_support.h"

#include "common/profile.h"
#include "common/text_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzAppInit();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const auto index = ProfileIndex::fromBytes(bytes);
    for (const char* section : {"Name", "LANCOMMON", "ZDTime", ""})
        for (const char* key : {"01", "COM001-1", "11", "k"})
            (void)ProfileIndex::read(index.get(), QLatin1String(section), QLatin1String(key), QStringLiteral("d"));

    // Whatever was there, the write lands where the reader finds it. An odd byte at the end of a UTF-16
    // file is the one thing no writer can line up behind.
    const QString path = FuzzFile(bytes, "p.ini");
    const TextFile::Layout layout = TextFile::detect(bytes);
    if (layout.unit() == 2 && bytes.size() % 2) return 0;
    FUZZ_CHECK(WriteProfileValue(QStringLiteral("Sec"), QStringLiteral("Key"), QStringLiteral("v 1"), path));
    // The mark, or its absence, stays what it was: the file is read afterwards as it was before.
    QByteArray written;
    FUZZ_CHECK(TextFile::readBytes(path, &written));
    const TextFile::Layout after = TextFile::detect(written);
    FUZZ_CHECK(after.encoding == layout.encoding && after.bomLength == layout.bomLength);
    FUZZ_CHECK(ReadProfileValue(QStringLiteral("Sec"), QStringLiteral("Key"), QStringLiteral("d"), path) ==
               QStringLiteral("v 1"));
    FUZZ_CHECK(ReadProfileValue(QStringLiteral("SEC"), QStringLiteral("KEY"), QStringLiteral("d"), path) ==
               QStringLiteral("v 1"));
    return 0;
}
