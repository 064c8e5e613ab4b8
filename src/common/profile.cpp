#include "common/profile.h"

#include "common/text_file.h"
#include "common/vbtext.h"

#include <QStringDecoder>
#include <QStringView>

#include <algorithm>
#include <tuple>

namespace {

using TextFile::Encoding;
using TextFile::Layout;

// The reader's buffer held 456 characters with the closing NUL.
constexpr qsizetype kValueLimit = 455;

// Calls f(start, length, endLength) in bytes for each line; CR, LF and CRLF end a line, counted in the
// code units of the encoding, so a UTF-16 file is cut where its characters are.
template <class F> void forEachLine(QByteArrayView b, const Layout& l, F&& f)
{
    const int u = l.unit();
    const bool be = l.encoding == Encoding::Utf16Be;
    const auto* p = reinterpret_cast<const uchar*>(b.data());
    auto unitAt = [&](qsizetype i) -> unsigned {
        if (u == 1) return p[i];
        return be ? unsigned(p[i] << 8 | p[i + 1]) : unsigned(p[i] | p[i + 1] << 8);
    };
    const qsizetype n = b.size();
    qsizetype start = l.bomLength, i = start;
    while (i + u <= n) {
        const unsigned c = unitAt(i);
        if (c != '\r' && c != '\n') {
            i += u;
            continue;
        }
        qsizetype end = i + u;
        if (c == '\r' && end + u <= n && unitAt(end) == '\n') end += u;
        f(start, i - start, end - i);
        start = i = end;
    }
    if (start < n) f(start, n - start, qsizetype(0));
}

// A line's text. Lines of plain ASCII, nearly all of them, are looked at as they lie in the file, however
// long; the others are decoded.
class LineText {
public:
    explicit LineText(Encoding e) : encoding_(e) {}
    // Latin-1 view of an ASCII line, or empty with *decoded set.
    bool ascii(QByteArrayView bytes) const
    {
        if (encoding_ != Encoding::Gb18030 && encoding_ != Encoding::Utf8) return false;
        for (const char c : bytes)
            if (uchar(c) >= 0x80) return false;
        return true;
    }
    QStringView decode(QByteArrayView bytes)
    {
        if (encoding_ != Encoding::Gb18030) {
            buffer_ = TextFile::decodeAs(bytes, encoding_);
            return buffer_;
        }
        // One converter for all lines: making one per line would cost more than the decoding.
        if (!gb_.isValid()) return buffer_ = TextFile::decodeAs(bytes, encoding_);
        gb_.resetState();
        buffer_ = gb_.decode(bytes);
        return buffer_;
    }

private:
    Encoding encoding_;
    QString buffer_;
    QStringDecoder gb_{"GB18030"};
};

template <class View> struct LineKind {
    enum Kind { Other, Section, Key } kind = Other;
    View name, value;
};

template <class View> LineKind<View> classify(View line)
{
    using K = LineKind<View>;
    const View text = line.trimmed();
    if (text.startsWith(QLatin1Char('['))) {
        const qsizetype close = text.indexOf(QLatin1Char(']'));
        if (close > 0) return {K::Section, text.sliced(1, close - 1).trimmed(), {}};
        return {};  // an unclosed "[" is neither a section nor a key
    }
    const qsizetype eq = text.indexOf(QLatin1Char('='));
    if (eq < 0) return {};  // comments and other lines without "=" are kept and never match
    return {K::Key, text.first(eq).trimmed(), text.sliced(eq + 1).trimmed()};
}

template <class View> quint32 foldedHash(View s)
{
    quint32 h = 2166136261u;
    for (qsizetype i = 0; i < s.size(); ++i) {
        h ^= QChar(s[i]).toCaseFolded().unicode();
        h *= 16777619u;
    }
    return h;
}

template <class View> bool sameName(View a, QStringView b) { return QStringView(b).compare(a, Qt::CaseInsensitive) == 0; }

// Quotes that enclose the whole value go, then everything from a NUL on and beyond 455 characters. Only
// what is kept is copied, so a value of a hundred megabytes costs no more than a short one.
template <class View> QString finishValue(View value)
{
    if (value.size() >= 2 && (value.front() == QLatin1Char('"') || value.front() == QLatin1Char('\'')) &&
        value.back() == value.front())
        value = value.sliced(1, value.size() - 2);
    const qsizetype nul = value.indexOf(QChar(0));
    if (nul >= 0) value = value.first(nul);
    if (value.size() > kValueLimit) value = value.first(kValueLimit);
    return value.toString();
}

QString cutValue(QString value)
{
    const qsizetype nul = value.indexOf(QChar(0));
    if (nul >= 0) value.truncate(nul);
    if (value.size() > kValueLimit) value.truncate(kValueLimit);
    return value;
}

}  // namespace

// ---- reading ----

std::shared_ptr<const ProfileIndex> ProfileIndex::load(const QString& file)
{
    QByteArray bytes;
    if (!TextFile::readBytes(file, &bytes)) return nullptr;
    return fromBytes(std::move(bytes));
}

std::shared_ptr<const ProfileIndex> ProfileIndex::fromBytes(QByteArray bytes)
{
    auto index = std::make_shared<ProfileIndex>();
    index->bytes_ = std::move(bytes);
    const Layout layout = TextFile::detect(index->bytes_);
    index->encoding_ = int(layout.encoding);
    LineText text(layout.encoding);
    quint32 section = 0;
    const QByteArrayView all(index->bytes_);
    auto take = [&](const auto& k, qsizetype at) {
        if (k.kind == std::decay_t<decltype(k)>::Section) {
            ++section;
            index->sections_.push_back({foldedHash(k.name), section, at});
        } else if (k.kind == std::decay_t<decltype(k)>::Key && section > 0) {
            index->keys_.push_back({foldedHash(k.name), section, at});
        }
    };
    forEachLine(all, layout, [&](qsizetype at, qsizetype length, qsizetype) {
        const QByteArrayView line = all.sliced(at, length);
        if (text.ascii(line))
            take(classify(QLatin1StringView(line.data(), line.size())), at);
        else
            take(classify(text.decode(line)), at);
    });
    const auto byHash = [](const Entry& a, const Entry& b) {
        return std::tie(a.section, a.hash, a.at) < std::tie(b.section, b.hash, b.at);
    };
    std::sort(index->sections_.begin(), index->sections_.end(),
              [](const Entry& a, const Entry& b) { return std::tie(a.hash, a.section) < std::tie(b.hash, b.section); });
    std::sort(index->keys_.begin(), index->keys_.end(), byHash);
    index->sections_.shrink_to_fit();
    index->keys_.shrink_to_fit();
    return index;
}

QByteArrayView ProfileIndex::lineAt(qsizetype at) const
{
    const Layout layout{TextFile::Encoding(encoding_), 0};
    const int u = layout.unit();
    const bool be = layout.encoding == TextFile::Encoding::Utf16Be;
    const auto* p = reinterpret_cast<const uchar*>(bytes_.constData());
    qsizetype end = at;
    for (; end + u <= bytes_.size(); end += u) {
        const unsigned c = u == 1 ? p[end] : be ? unsigned(p[end] << 8 | p[end + 1]) : unsigned(p[end] | p[end + 1] << 8);
        if (c == '\r' || c == '\n') break;
    }
    if (end + u > bytes_.size()) end = bytes_.size();
    return QByteArrayView(bytes_).sliced(at, end - at);
}

std::optional<QString> ProfileIndex::value(const QString& sectionName, const QString& keyName) const
{
    const QString wantSection = sectionName.trimmed();
    const QString wantKey = keyName.trimmed();
    const QString memo = wantSection.toCaseFolded() + QLatin1Char('\n') + wantKey.toCaseFolded();
    if (const auto hit = answers_.find(memo); hit != answers_.end()) return *hit;
    LineText text{Encoding(encoding_)};
    // Whether the line at `at` is a section or key of that name, and the value of a key.
    auto matches = [&](qsizetype at, const QString& want, QString* value) {
        const QByteArrayView line = lineAt(at);
        auto check = [&](const auto& k) {
            if (!sameName(k.name, want)) return false;
            if (value) *value = finishValue(k.value);
            return true;
        };
        if (text.ascii(line)) return check(classify(QLatin1StringView(line.data(), line.size())));
        return check(classify(text.decode(line)));
    };

    std::optional<QString> found;
    // Only the first section of a name is searched, as the Windows routines do.
    const quint32 hs = foldedHash(QStringView(wantSection));
    auto s = std::lower_bound(sections_.begin(), sections_.end(), hs,
                              [](const Entry& e, quint32 h) { return e.hash < h; });
    quint32 section = 0;
    for (; s != sections_.end() && s->hash == hs; ++s)
        if (matches(s->at, wantSection, nullptr)) {
            section = s->section;
            break;
        }
    if (section > 0) {
        const quint32 hk = foldedHash(QStringView(wantKey));
        auto k = std::lower_bound(keys_.begin(), keys_.end(), std::pair(section, hk), [](const Entry& e, const auto& want) {
            return std::tie(e.section, e.hash) < std::tie(want.first, want.second);
        });
        QString v;
        for (; k != keys_.end() && k->section == section && k->hash == hk; ++k)
            if (matches(k->at, wantKey, &v)) {
                found = v;
                break;
            }
    }
    answers_.insert(memo, found);
    return found;
}

QString ProfileIndex::read(const ProfileIndex* index, const QString& section, const QString& key, const QString& deflt)
{
    if (index)
        if (std::optional<QString> v = index->value(section, key)) return *v;
    // The default loses its trailing blanks, as the Windows routine cuts them.
    return cutValue(RTrim(deflt));
}

QString ReadProfileValue(const QString& section, const QString& key, const QString& deflt, const QString& file)
{
    const auto index = ProfileIndex::load(file);
    return ProfileIndex::read(index.get(), section, key, deflt);
}

// ---- writing ----

bool WriteProfileValue(const QString& section, const QString& key, const QString& value, const QString& file,
                       FileError* error)
{
    const QString sectionName = section.trimmed();
    const QString keyName = key.trimmed();
    if (sectionName.isEmpty() || keyName.isEmpty()) return true;

    QByteArray bytes;
    if (TextFile::exists(file)) {
        if (!TextFile::readBytes(file, &bytes, error)) return true;  // unreadable: leave it rather than lose it
    }
    const Layout layout = bytes.isEmpty() ? Layout{} : TextFile::detect(bytes);
    const auto encode = [&layout](const QString& text) { return TextFile::encodeAs(text, layout.encoding); };
    const QByteArray crlf = encode(QStringLiteral("\r\n"));

    // One pass over the lines, keeping only where the change goes.
    struct Place {
        qsizetype at = -1, length = 0, endLength = 0;
        bool blank = true;
    };
    LineText text(layout.encoding);
    const QByteArrayView all(bytes);
    bool inSection = false, sectionFound = false, sectionEnded = false;
    Place keyLine, lastFilled, lastLine;
    QString keyAsWritten;
    forEachLine(all, layout, [&](qsizetype at, qsizetype length, qsizetype endLength) {
        const QStringView line = text.decode(all.sliced(at, length));
        const LineKind<QStringView> k = classify(line);
        const Place here{at, length, endLength, line.trimmed().isEmpty()};
        lastLine = here;
        if (sectionEnded) return;
        if (k.kind == LineKind<QStringView>::Section) {
            if (inSection) {
                inSection = false;
                sectionEnded = true;
                return;
            }
            if (!sectionFound && sameName(k.name, sectionName)) {
                sectionFound = inSection = true;
                lastFilled = here;
            }
            return;
        }
        if (!inSection) return;
        if (!here.blank) lastFilled = here;
        if (keyLine.at < 0 && k.kind == LineKind<QStringView>::Key && sameName(k.name, keyName)) {
            keyLine = here;
            keyAsWritten = k.name.toString();
        }
    });

    QByteArray out;
    if (keyLine.at >= 0) {
        out = bytes.left(keyLine.at) + encode(keyAsWritten + QLatin1Char('=') + value) +
              bytes.mid(keyLine.at + keyLine.length);
    } else if (sectionFound) {
        // After the last line of the section that is not blank, so a blank line before the next section stays.
        const qsizetype end = lastFilled.at + lastFilled.length;
        out = bytes.left(end + lastFilled.endLength);
        if (lastFilled.endLength == 0) out += crlf;
        out += encode(keyName + QLatin1Char('=') + value) + crlf + bytes.mid(end + lastFilled.endLength);
    } else {
        out = bytes;
        if (bytes.isEmpty() && layout.bomLength == 0) {
            // a new file is GB18030 without a mark
        } else if (lastLine.at >= 0) {
            if (lastLine.endLength == 0) out += crlf;
            if (!lastLine.blank) out += crlf;
        }
        out += encode(QLatin1Char('[') + sectionName + QLatin1Char(']')) + crlf +
               encode(keyName + QLatin1Char('=') + value) + crlf;
    }
    TextFile::writeBytes(file, out, error);  // a failed write leaves the old file whole
    return true;
}

QString ReadKeyLine(const QString& file, const QString& key)
{
    QString text;
    if (!TextFile::read(file, &text)) return QString();
    const QStringView all(text);
    const qsizetype n = all.size();
    qsizetype start = 0;
    while (start <= n) {
        qsizetype end = start;
        while (end < n && all[end] != u'\r' && all[end] != u'\n') ++end;
        if (start == n && end == n) break;
        const QStringView line = all.sliced(start, end - start);
        if (line.startsWith(key, Qt::CaseSensitive)) return Trim(line.mid(key.size()).toString());
        if (end < n && all[end] == u'\r' && end + 1 < n && all[end + 1] == u'\n') ++end;
        start = end + 1;
    }
    return QString();
}
