#include "common/text_file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>
#include <QStringEncoder>

namespace {
const QByteArray kUtf8Bom("\xEF\xBB\xBF");
const char* const kCodec = "GB18030";
}  // namespace

namespace TextFile {

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

QByteArray encode(const QString& text)
{
    QStringEncoder encoder(kCodec);
    if (!encoder.isValid()) return text.toLocal8Bit();
    return encoder.encode(text);
}

QString decode(const QByteArray& bytes)
{
    if (bytes.startsWith(kUtf8Bom)) return QString::fromUtf8(bytes.constData() + 3, bytes.size() - 3);
    QStringDecoder decoder(kCodec);
    if (!decoder.isValid()) return QString::fromLocal8Bit(bytes);
    return decoder.decode(bytes);
}

}  // namespace TextFile
