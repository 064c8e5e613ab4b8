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
    // Most texts come back whole; only when one does not is each line tried on its own (line ends are
    // never part of a GB18030 character, so a whole that comes back means every line does).
    const auto comesBack = [](const QString& c) {
        return TextFile::decodeAs(TextFile::encode(c), TextFile::Encoding::Gb18030) == c;
    };
    QStringList stripped;
    for (const QString& line : lines) stripped << QString(line).remove(QChar(0xFFFD));
    const bool whole = comesBack(stripped.join(QLatin1Char('\n')));
    QStringList clean;
    for (const QString& c : stripped)
        if (whole || comesBack(c)) clean << c;
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
