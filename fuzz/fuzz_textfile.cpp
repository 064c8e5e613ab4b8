// Text files from other stations: only a byte-order mark tells an encoding, decoding never fails, and what
// the console writes it reads back as written, behind the mark the file had.
#include "fuzz_support.h"

#include "common/text_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzAppInit();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const TextFile::Layout layout = TextFile::detect(bytes);
    const qsizetype mark = bytes.startsWith("\xEF\xBB\xBF")                                ? 3
                           : bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF") ? 2
                                                                                          : 0;
    FUZZ_CHECK(layout.bomLength == mark);
    // Without a mark the text is GB18030, however much of it looks like UTF-8.
    FUZZ_CHECK(mark > 0 || layout.encoding == TextFile::Encoding::Gb18030);
    (void)TextFile::decode(bytes);

    const QString path = FuzzFile(bytes, "t.txt");
    QStringList lines;
    FUZZ_CHECK(TextFile::readLines(path, &lines));
    // Lines as the console writes them come back the same, if the encoding can carry them at all. Most
    // texts come back whole; only when one does not is each line tried on its own (line ends are never
    // part of a character, so a whole that comes back means every line does).
    const auto comesBack = [&layout](const QString& c) {
        return TextFile::decodeAs(TextFile::encodeAs(c, layout.encoding), layout.encoding) == c;
    };
    QStringList stripped;
    for (const QString& line : lines) stripped << QString(line).remove(QChar(0xFFFD));
    const bool whole = comesBack(stripped.join(QLatin1Char('\n')));
    QStringList clean;
    for (const QString& c : stripped)
        if (whole || comesBack(c)) clean << c;

    // Written over the file, the lines keep its mark and its encoding.
    FUZZ_CHECK(TextFile::writeLines(path, clean));
    QByteArray written;
    FUZZ_CHECK(TextFile::readBytes(path, &written));
    // GB18030 text that begins with "锘" and a character whose first byte is BF begins with the bytes of a
    // UTF-8 mark, and is read as UTF-8 afterwards: the one text a rule of marks alone cannot carry.
    if (layout.bomLength == 0 && written.startsWith("\xEF\xBB\xBF")) return 0;
    const TextFile::Layout after = TextFile::detect(written);
    FUZZ_CHECK(after.encoding == layout.encoding && after.bomLength == layout.bomLength);
    QStringList back;
    FUZZ_CHECK(TextFile::readLines(path, &back));
    FUZZ_CHECK(back == clean);
    return 0;
}
