#include "common/profile.h"

#include "common/text_file.h"
#include "common/vbtext.h"

#include <QByteArray>
#include <QList>

namespace {

// The reader's buffer held 456 characters with the closing NUL.
constexpr qsizetype kValueLimit = 455;
const QByteArray kUtf8Bom("\xEF\xBB\xBF");

// One line of a profile file as it lies on disk, with what the profile routines see in it.
struct ProfileLine {
    QByteArray bytes;  // without the line end
    QByteArray end;    // "\r\n", "\n", "\r" or empty for a last line without one
    enum Kind { Other, Section, Key } kind = Other;
    QString name;   // section or key name, trimmed
    QString value;  // value of a key line, trimmed
};

struct ProfileText {
    bool utf8 = false;  // the file began with a UTF-8 byte-order mark, which is kept
    QList<ProfileLine> lines;
};

void classify(ProfileLine& line, bool utf8)
{
    const QString text = (utf8 ? QString::fromUtf8(line.bytes) : TextFile::decode(line.bytes)).trimmed();
    if (text.startsWith(QLatin1Char('['))) {
        const qsizetype close = text.indexOf(QLatin1Char(']'));
        if (close > 0) {
            line.kind = ProfileLine::Section;
            line.name = text.mid(1, close - 1).trimmed();
        }
        return;  // an unclosed "[" is neither a section nor a key
    }
    const qsizetype eq = text.indexOf(QLatin1Char('='));
    if (eq < 0) return;  // comments and other lines without "=" are kept and never match
    line.kind = ProfileLine::Key;
    line.name = text.left(eq).trimmed();
    line.value = text.mid(eq + 1).trimmed();
}

ProfileText parse(QByteArray bytes)
{
    ProfileText p;
    if (bytes.startsWith(kUtf8Bom)) {
        p.utf8 = true;
        bytes.remove(0, kUtf8Bom.size());
    }
    // Neither GB18030 nor UTF-8 uses CR or LF inside a character, so the lines can be cut as bytes.
    qsizetype start = 0;
    const qsizetype n = bytes.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char c = bytes.at(i);
        if (c != '\r' && c != '\n') continue;
        ProfileLine line;
        line.bytes = bytes.mid(start, i - start);
        const bool crlf = c == '\r' && i + 1 < n && bytes.at(i + 1) == '\n';
        line.end = crlf ? QByteArray("\r\n") : QByteArray(1, c);
        if (crlf) ++i;
        p.lines.append(line);
        start = i + 1;
    }
    if (start < n) p.lines.append(ProfileLine{bytes.mid(start), QByteArray(), ProfileLine::Other, {}, {}});
    for (ProfileLine& line : p.lines) classify(line, p.utf8);
    return p;
}

bool sameName(const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) == 0; }

// Index of the first section of that name, or -1; *end is the index after its last line.
qsizetype findSection(const ProfileText& p, const QString& section, qsizetype* end)
{
    qsizetype start = -1;
    for (qsizetype i = 0; i < p.lines.size(); ++i) {
        if (p.lines[i].kind != ProfileLine::Section) continue;
        if (start >= 0) {
            *end = i;
            return start;
        }
        if (sameName(p.lines[i].name, section)) start = i;
    }
    *end = p.lines.size();
    return start;
}

// Only the first section of a name is searched, as the Windows routines do.
qsizetype findKey(const ProfileText& p, qsizetype sectionStart, qsizetype sectionEnd, const QString& key)
{
    for (qsizetype i = sectionStart + 1; i < sectionEnd; ++i)
        if (p.lines[i].kind == ProfileLine::Key && sameName(p.lines[i].name, key)) return i;
    return -1;
}

QString cutValue(QString value)
{
    const qsizetype nul = value.indexOf(QChar(0));
    if (nul >= 0) value.truncate(nul);
    if (value.size() > kValueLimit) value.truncate(kValueLimit);
    return value;
}

}  // namespace

QString ReadProfileValue(const QString& section, const QString& key, const QString& deflt, const QString& file)
{
    // The default loses its trailing blanks, as the Windows routine cuts them.
    const QString fallback = cutValue(RTrim(deflt));
    QByteArray bytes;
    if (!TextFile::readBytes(file, &bytes)) return fallback;
    const ProfileText p = parse(bytes);
    qsizetype end = 0;
    const qsizetype s = findSection(p, section.trimmed(), &end);
    if (s < 0) return fallback;
    const qsizetype k = findKey(p, s, end, key.trimmed());
    if (k < 0) return fallback;
    QString value = p.lines[k].value;
    if (value.size() >= 2 && (value.front() == QLatin1Char('"') || value.front() == QLatin1Char('\'')) &&
        value.back() == value.front())
        value = value.mid(1, value.size() - 2);
    return cutValue(value);
}

bool WriteProfileValue(const QString& section, const QString& key, const QString& value, const QString& file)
{
    const QString sectionName = section.trimmed();
    const QString keyName = key.trimmed();
    if (sectionName.isEmpty() || keyName.isEmpty()) return true;

    QByteArray bytes;
    if (TextFile::exists(file)) {
        if (!TextFile::readBytes(file, &bytes)) return true;  // unreadable: leave it rather than lose it
    }
    ProfileText p = parse(bytes);
    const auto encode = [&p](const QString& text) { return p.utf8 ? text.toUtf8() : TextFile::encode(text); };
    const QByteArray crlf("\r\n");

    qsizetype end = 0;
    const qsizetype s = findSection(p, sectionName, &end);
    if (s >= 0) {
        const qsizetype k = findKey(p, s, end, keyName);
        if (k >= 0) {
            p.lines[k].bytes = encode(p.lines[k].name + QLatin1Char('=') + value);
        } else {
            // After the last line of the section that is not blank, so a blank line before the next section stays.
            qsizetype at = end;
            while (at > s + 1 && p.lines[at - 1].bytes.trimmed().isEmpty()) --at;
            if (p.lines[at - 1].end.isEmpty()) p.lines[at - 1].end = crlf;
            p.lines.insert(at, ProfileLine{encode(keyName + QLatin1Char('=') + value), crlf, ProfileLine::Key, {}, {}});
        }
    } else {
        if (!p.lines.isEmpty()) {
            if (p.lines.back().end.isEmpty()) p.lines.back().end = crlf;
            if (!p.lines.back().bytes.trimmed().isEmpty()) p.lines.append(ProfileLine{{}, crlf, ProfileLine::Other, {}, {}});
        }
        p.lines.append(ProfileLine{encode(QLatin1Char('[') + sectionName + QLatin1Char(']')), crlf,
                                   ProfileLine::Section, {}, {}});
        p.lines.append(ProfileLine{encode(keyName + QLatin1Char('=') + value), crlf, ProfileLine::Key, {}, {}});
    }

    QByteArray out = p.utf8 ? kUtf8Bom : QByteArray();
    for (const ProfileLine& line : p.lines) out += line.bytes + line.end;
    TextFile::writeBytes(file, out);  // a failed write leaves the old file whole; the caller is told True
    return true;
}

QString ReadKeyLine(const QString& file, const QString& key)
{
    QStringList lines;
    if (!TextFile::readLines(file, &lines)) return QString();
    for (const QString& line : lines)
        if (line.startsWith(key, Qt::CaseSensitive)) return Trim(line.mid(key.size()));
    return QString();
}
