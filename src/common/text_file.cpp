#include "common/text_file.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <QStringEncoder>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
const char* const kCodec = "GB18030";

bool startsWith(QByteArrayView bytes, const char* prefix, qsizetype n)
{
    return bytes.size() >= n && memcmp(bytes.data(), prefix, size_t(n)) == 0;
}

// The layout of a file as its mark tells it: the first bytes are enough. No file, no mark.
TextFile::Layout layoutOf(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return {};
    return TextFile::detect(f.read(3));
}

const char* markOf(const TextFile::Layout& l)
{
    switch (l.encoding) {
    case TextFile::Encoding::Utf8: return l.bomLength ? "\xEF\xBB\xBF" : "";
    case TextFile::Encoding::Utf16Le: return "\xFF\xFE";
    case TextFile::Encoding::Utf16Be: return "\xFE\xFF";
    case TextFile::Encoding::Gb18030: break;
    }
    return "";
}
}  // namespace

namespace TextFile {

Layout detect(QByteArrayView bytes)
{
    if (startsWith(bytes, "\xFF\xFE", 2)) return {Encoding::Utf16Le, 2};
    if (startsWith(bytes, "\xFE\xFF", 2)) return {Encoding::Utf16Be, 2};
    if (startsWith(bytes, "\xEF\xBB\xBF", 3)) return {Encoding::Utf8, 3};
    return {Encoding::Gb18030, 0};
}

bool exists(const QString& path) { return !path.isEmpty() && QFileInfo(path).isFile(); }

bool readBytes(const QString& path, QByteArray* bytes, FileError* error)
{
    const auto fail = [&](int err) {
        if (error) *error = SharedFiles::errorOf(err, path, true);
        return false;
    };
    if (path.isEmpty()) return fail(ENOENT);
    const QByteArray name = QFile::encodeName(path);
    // Only a file is opened: a pipe or a device put where a file belongs would hold the console up.
    struct stat st {};
    if (::stat(name.constData(), &st) != 0) return fail(errno);
    if (!S_ISREG(st.st_mode)) return fail(S_ISDIR(st.st_mode) ? EISDIR : EINVAL);
    const int in = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
    if (in < 0) return fail(errno);
    // Read straight into the buffer, sized by the file; a file that grows meanwhile grows it.
    QByteArray data(qsizetype(std::min<off_t>(st.st_size, off_t(1) << 30)) + 1, Qt::Uninitialized);
    qsizetype got = 0;
    for (;;) {
        if (got == data.size()) data.resize(data.size() * 2);
        const ssize_t n = ::read(in, data.data() + got, size_t(data.size() - got));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            const int err = errno;
            ::close(in);
            return fail(err);
        }
        if (n == 0) break;
        got += n;
    }
    data.truncate(got);
    ::close(in);
    *bytes = std::move(data);
    return true;
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

bool writeBytes(const QString& path, const QByteArray& bytes, FileError* error)
{
    const FileError e = SharedFiles::replaceFile(path, bytes);
    if (error) *error = e;
    return e.ok();
}

bool writeLines(const QString& path, const QStringList& lines, FileError* error)
{
    QString text;
    for (const QString& line : lines) text += line + QStringLiteral("\r\n");
    const Layout l = layoutOf(path);
    return writeBytes(path, QByteArray(markOf(l)) + encodeAs(text, l.encoding), error);
}

bool append(const QString& path, const QString& text, FileError* error)
{
    QString crlf;
    crlf.reserve(text.size() + 8);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('\n') && (i == 0 || text.at(i - 1) != QLatin1Char('\r'))) crlf += QLatin1Char('\r');
        crlf += c;
    }
    // Behind a mark the text goes on in the mark's encoding; a file made here has none.
    const FileError e = SharedFiles::appendToFile(path, encodeAs(crlf, layoutOf(path).encoding));
    if (error) *error = e;
    return e.ok();
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
