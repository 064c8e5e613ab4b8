// Text files from other stations: the encoding is told right, decoding never fails, and what the console
// writes it reads back as written.
#include "fuzz_support.h"

#include "common/text_file.h"

#include <QStringDecoder>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzAppInit();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString asUtf8 = utf8.decode(bytes);
    FUZZ_CHECK(TextFile::isValidUtf8(bytes) == !utf8.hasError());
    if (TextFile::isValidUtf8(bytes)) FUZZ_CHECK(asUtf8.toUtf8() == bytes);

    const TextFile::Layout layout = TextFile::detect(bytes);
    FUZZ_CHECK(layout.bomLength >= 0 && layout.bomLength <= bytes.size());
    (void)TextFile::decode(bytes);

    const QString path = FuzzFile(bytes, "t.txt");
    QStringList lines;
    FUZZ_CHECK(TextFile::readLines(path, &lines));
    // Lines as the console writes them (GB18030, CRLF) come back the same, if they can be written at all.
    QStringList clean;
    for (const QString& line : lines) {
        QString c = line;
        c.remove(QChar(0xFFFD));
        if (TextFile::decodeAs(TextFile::encode(c), TextFile::Encoding::Gb18030) == c) clean << c;
    }
    const QString out = FuzzFile(QByteArray(), "w.txt");
    FUZZ_CHECK(TextFile::writeLines(out, clean));
    QStringList back;
    FUZZ_CHECK(TextFile::readLines(out, &back));
    // A file of plain ASCII or GB18030 reads back as written; one that happens to be valid UTF-8 as such.
    QByteArray written;
    FUZZ_CHECK(TextFile::readBytes(out, &written));
    if (TextFile::detect(written).encoding == TextFile::Encoding::Gb18030) FUZZ_CHECK(back == clean);
    return 0;
}
