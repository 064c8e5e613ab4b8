#include "common/text_file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>
#include <QStringEncoder>

#include <cstring>

namespace {
const char* const kCodec = "GB18030";

bool startsWith(QByteArrayView bytes, const char* prefix, qsizetype n)
{
    return bytes.size() >= n && memcmp(bytes.data(), prefix, size_t(n)) == 0;
}
}  // namespace

namespace TextFile {

bool isValidUtf8(QByteArrayView bytes)
{
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const qsizetype n = bytes.size();
    qsizetype i = 0;
    while (i < n) {
        const unsigned c = p[i];
        if (c < 0x80) {
            ++i;
            continue;
        }
        int more;
        unsigned low = 0x80, high = 0xBF;  // allowed range of the second byte
        if (c >= 0xC2 && c <= 0xDF) {
            more = 1;
        } else if (c >= 0xE0 && c <= 0xEF) {
            more = 2;
            if (c == 0xE0) low = 0xA0;        // no overlong forms
            else if (c == 0xED) high = 0x9F;  // no surrogates
        } else if (c >= 0xF0 && c <= 0xF4) {
            more = 3;
            if (c == 0xF0) low = 0x90;
            else if (c == 0xF4) high = 0x8F;  // nothing above U+10FFFF
        } else {
            return false;
        }
        if (i + more >= n) return false;
        if (p[i + 1] < low || p[i + 1] > high) return false;
        for (int k = 2; k <= more; ++k)
            if ((p[i + k] & 0xC0) != 0x80) return false;
        i += more + 1;
    }
    return true;
}

Layout detect(QByteArrayView bytes)
{
    if (startsWith(bytes, "\xFF\xFE", 2)) return {Encoding::Utf16Le, 2};
    if (startsWith(bytes, "\xFE\xFF", 2)) return {Encoding::Utf16Be, 2};
    // GB18030 text may begin with these three bytes ("锘" and a lead byte): a mark only before UTF-8.
    if (startsWith(bytes, "\xEF\xBB\xBF", 3) && isValidUtf8(bytes.sliced(3))) return {Encoding::Utf8, 3};
    for (const char c : bytes) {
        if (uchar(c) >= 0x80) return {isValidUtf8(bytes) ? Encoding::Utf8 : Encoding::Gb18030, 0};
    }
    return {Encoding::Gb18030, 0};  // plain ASCII reads the same either way
}

bool exists(const QString& path) { return !path.isEmpty() && QFileInfo(path).isFile(); }

bool readBytes(const QString& path, QByteArray* bytes)
{
    if (!exists(path)) return false;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return false;
    *bytes = f.readAll();
    return f.error() == QFileDevice::NoError;
}

bool read(const QString& path, QString* text)
{
    QByteArray bytes;
    if (!readBytes(path, &bytes)) return false;
    *text = decode(bytes);
    return true;
}

bool readLines(const QString& path, QStringList* lines)
{
    QString text;
    if (!read(path, &text)) return false;
    lines->clear();
    qsizetype start = 0;
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text.at(i);
        if (c != QLatin1Char('\r') && c != QLatin1Char('\n')) continue;
        lines->append(text.mid(start, i - start));
        if (c == QLatin1Char('\r') && i + 1 < n && text.at(i + 1) == QLatin1Char('\n')) ++i;
        start = i + 1;
    }
    if (start < n) lines->append(text.mid(start));
    return true;
}

bool writeBytes(const QString& path, const QByteArray& bytes)
{
    // A file another station made read-only stays as it is, as it would on Windows.
    const QFileInfo fi(path);
    if (fi.exists() && (!fi.isFile() || !fi.isWritable())) return false;
    QSaveFile f(path);
    // A folder the operator may not write to, holding files he may: the file itself is rewritten.
    f.setDirectWriteFallback(true);
    if (!f.open(QIODevice::WriteOnly)) return false;
    if (f.write(bytes) != bytes.size()) {
        f.cancelWriting();
        return false;
    }
    return f.commit();
}

bool writeLines(const QString& path, const QStringList& lines)
{
    QString text;
    for (const QString& line : lines) text += line + QStringLiteral("\r\n");
    return writeBytes(path, encode(text));
}

bool append(const QString& path, const QString& text)
{
    QString crlf;
    crlf.reserve(text.size() + 8);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('\n') && (i == 0 || text.at(i - 1) != QLatin1Char('\r'))) crlf += QLatin1Char('\r');
        crlf += c;
    }
    if (QFileInfo(path).isDir()) return false;
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Append)) return false;
    const QByteArray bytes = encode(crlf);
    return f.write(bytes) == bytes.size() && f.flush();
}

QByteArray encode(const QString& text) { return encodeAs(text, Encoding::Gb18030); }

QString decode(const QByteArray& bytes)
{
    const Layout l = detect(bytes);
    return decodeAs(QByteArrayView(bytes).sliced(l.bomLength), l.encoding);
}

QString decodeAs(QByteArrayView bytes, Encoding encoding)
{
    switch (encoding) {
    case Encoding::Utf8:
        return QString::fromUtf8(bytes);
    case Encoding::Utf16Le:
        return QStringDecoder(QStringDecoder::Utf16LE).decode(bytes);
    case Encoding::Utf16Be:
        return QStringDecoder(QStringDecoder::Utf16BE).decode(bytes);
    case Encoding::Gb18030:
        break;
    }
    QStringDecoder decoder(kCodec);
    if (!decoder.isValid()) return QString::fromLocal8Bit(bytes);
    return decoder.decode(bytes);
}

QByteArray encodeAs(QStringView text, Encoding encoding)
{
    switch (encoding) {
    case Encoding::Utf8:
        return text.toUtf8();
    case Encoding::Utf16Le:
        return QStringEncoder(QStringEncoder::Utf16LE).encode(text);
    case Encoding::Utf16Be:
        return QStringEncoder(QStringEncoder::Utf16BE).encode(text);
    case Encoding::Gb18030:
        break;
    }
    QStringEncoder encoder(kCodec);
    if (!encoder.isValid()) return text.toLocal8Bit();
    return encoder.encode(text);
}

}  // namespace TextFile
