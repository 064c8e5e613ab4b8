#include "common/vbtext.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace {

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

bool isAsciiDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

int digitValue(QChar c)
{
    const ushort u = c.unicode();
    if (u >= '0' && u <= '9') return u - '0';
    if (u >= 'a' && u <= 'f') return u - 'a' + 10;
    if (u >= 'A' && u <= 'F') return u - 'A' + 10;
    return 99;
}

// "&H" and "&O" numbers come back signed: up to 16 bits as a 16-bit value, up to 32 bits as a 32-bit one,
// so that "&HFFFF" is -1 the way the 16-bit routines wrote it.
double radixValue(const QString& text, int pos, int radix)
{
    std::uint64_t value = 0;
    bool any = false;
    for (; pos < text.size(); ++pos) {
        const int d = digitValue(text.at(pos));
        if (d >= radix) break;
        any = true;
        if (value > (std::numeric_limits<std::uint64_t>::max() >> 4)) break;  // far beyond any register
        value = value * radix + d;
    }
    if (!any) return 0;
    if (value >= 0x8000 && value <= 0xFFFF) return double(std::int64_t(value) - 0x10000);
    if (value >= 0x80000000ULL && value <= 0xFFFFFFFFULL) return double(std::int64_t(value) - 0x100000000LL);
    return double(value);
}

// A decimal number as digits and the place of the point: value = 0.<digits> x 10^point.
struct Decimal {
    std::string digits;  // no leading zeros; empty for zero
    int point = 0;
};

// The shortest decimal text that reads back as the same double: 1.005 is "1.005", not 1.00499999...
Decimal shortestDecimal(double magnitude)
{
    Decimal d;
    if (magnitude == 0) return d;
    char buf[64];
    const auto res = std::to_chars(buf, buf + sizeof buf, magnitude, std::chars_format::scientific);
    const std::string text(buf, res.ptr);
    const auto e = text.find('e');
    for (std::size_t i = 0; i < e; ++i)
        if (text[i] != '.') d.digits += text[i];
    d.point = std::stoi(text.substr(e + 1)) + 1;
    while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
    return d;
}

// Half away from zero at the given number of decimals, done on the decimal digits.
void roundDecimal(Decimal& d, int decimals)
{
    const long keep = long(d.point) + decimals;
    if (keep >= long(d.digits.size())) return;
    if (keep < 0) {
        d.digits.clear();
        return;
    }
    const bool up = d.digits[std::size_t(keep)] >= '5';
    d.digits.resize(std::size_t(keep));
    if (up) {
        int i = int(keep) - 1;
        for (; i >= 0; --i) {
            if (d.digits[std::size_t(i)] == '9') {
                d.digits[std::size_t(i)] = '0';
            } else {
                ++d.digits[std::size_t(i)];
                break;
            }
        }
        if (i < 0) {
            d.digits.insert(d.digits.begin(), '1');
            ++d.point;
        }
    }
    while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
    if (d.digits.empty()) d.point = 0;
}

char digitAt(const Decimal& d, long index)
{
    if (index < 0 || index >= long(d.digits.size())) return '0';
    return d.digits[std::size_t(index)];
}

bool isPlaceholder(QChar c) { return c == QLatin1Char('#') || c == QLatin1Char('0') || c == QLatin1Char('.'); }

template <typename T> T roundHalfEven(double value)
{
    if (std::isnan(value)) throw VbError(kErrOverflow, QStringLiteral("Overflow"));
    double r = std::floor(value);
    const double frac = value - r;
    if (frac > 0.5 || (frac == 0.5 && std::fmod(r, 2.0) != 0)) r += 1;
    if (r < double(std::numeric_limits<T>::min()) || r > double(std::numeric_limits<T>::max()))
        throw VbError(kErrOverflow, QStringLiteral("Overflow"));
    return T(r);
}

}  // namespace

double Val(const QString& text)
{
    int pos = 0;
    const int n = text.size();
    while (pos < n && isBlank(text.at(pos))) ++pos;
    if (pos + 1 < n && text.at(pos) == QLatin1Char('&')) {
        const QChar kind = text.at(pos + 1).toUpper();
        if (kind == QLatin1Char('H')) return radixValue(text, pos + 2, 16);
        if (kind == QLatin1Char('O')) return radixValue(text, pos + 2, 8);
        return 0;
    }
    std::string number;
    if (pos < n && (text.at(pos) == QLatin1Char('+') || text.at(pos) == QLatin1Char('-'))) {
        if (text.at(pos) == QLatin1Char('-')) number += '-';
        ++pos;
    }
    bool digits = false;
    while (pos < n && isAsciiDigit(text.at(pos))) {
        number += char(text.at(pos++).unicode());
        digits = true;
    }
    if (pos < n && text.at(pos) == QLatin1Char('.')) {
        number += '.';
        ++pos;
        while (pos < n && isAsciiDigit(text.at(pos))) {
            number += char(text.at(pos++).unicode());
            digits = true;
        }
    }
    if (!digits) return 0;
    // The exponent counts only when digits follow it: "1e" and "1e+" are 1.
    if (pos < n && QStringLiteral("eEdD").contains(text.at(pos))) {
        int p = pos + 1;
        std::string exponent = "e";
        if (p < n && (text.at(p) == QLatin1Char('+') || text.at(p) == QLatin1Char('-')))
            exponent += char(text.at(p++).unicode());
        if (p < n && isAsciiDigit(text.at(p))) {
            while (p < n && isAsciiDigit(text.at(p))) exponent += char(text.at(p++).unicode());
            number += exponent;
        }
    }
    double value = 0;
    const char* first = number.data();
    const char* last = first + number.size();
    // from_chars does not take a leading "-" and "." the same way everywhere; read the magnitude.
    const bool negative = !number.empty() && number.front() == '-';
    if (negative) ++first;
    const auto res = std::from_chars(first, last, value, std::chars_format::general);
    if (res.ec == std::errc::result_out_of_range) {
        // Beyond the double range: a huge exponent is infinite (CInt then overflows), a tiny one is 0.
        const bool tiny = number.find("e-") != std::string::npos;
        value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
    } else if (res.ec != std::errc()) {
        return 0;
    }
    return negative ? -value : value;
}

// Rounding is done on the shortest decimal text that reads back as the same double, not on x * 10^d in
// binary: the operator typed 1.005 and expects 1.01, as a decimal-minded Format gives, although the double
// nearest to 1.005 lies a little below it. A half goes away from zero.
QString Format(double value, const QString& pattern)
{
    if (!std::isfinite(value)) return NumText(value);
    if (pattern.isEmpty()) return NumText(value);

    int first = 0, last = int(pattern.size()) - 1;
    while (first <= last && !isPlaceholder(pattern.at(first))) ++first;
    while (last >= first && !isPlaceholder(pattern.at(last))) --last;
    if (first > last) return pattern;  // no digit placeholder: the pattern is all literal
    const QString prefix = pattern.left(first);
    const QString suffix = pattern.mid(last + 1);
    const QString body = pattern.mid(first, last - first + 1);

    const int dot = int(body.indexOf(QLatin1Char('.')));
    const QString intPattern = dot < 0 ? body : body.left(dot);
    const QString fracPattern = dot < 0 ? QString() : body.mid(dot + 1);
    const int forcedInt = int(intPattern.count(QLatin1Char('0')));
    int decimals = 0, forcedDecimals = 0;
    for (QChar c : fracPattern) {
        if (c == QLatin1Char('0') || c == QLatin1Char('#')) ++decimals;
        if (c == QLatin1Char('0')) forcedDecimals = decimals;
    }

    Decimal d = shortestDecimal(std::fabs(value));
    roundDecimal(d, decimals);

    QString intText;
    for (long i = 0; i < d.point; ++i) intText += QLatin1Char(digitAt(d, i));
    while (intText.size() < forcedInt) intText.prepend(QLatin1Char('0'));
    QString fracText;
    for (long i = 0; i < decimals; ++i) fracText += QLatin1Char(digitAt(d, d.point + i));
    while (fracText.size() > forcedDecimals && fracText.endsWith(QLatin1Char('0'))) fracText.chop(1);

    QString out = prefix;
    if (value < 0) out += QLatin1Char('-');  // also when it rounds to zero: "-0", "-0.0"
    out += intText;
    if (dot >= 0) out += QLatin1Char('.') + fracText;
    return out + suffix;
}

short CInt(double value) { return roundHalfEven<short>(value); }

int CLng(double value) { return roundHalfEven<int>(value); }

QString LTrim(const QString& s)
{
    int i = 0;
    while (i < s.size() && s.at(i) == QLatin1Char(' ')) ++i;
    return s.mid(i);
}

QString RTrim(const QString& s)
{
    qsizetype i = s.size();
    while (i > 0 && s.at(i - 1) == QLatin1Char(' ')) --i;
    return s.left(i);
}

QString Trim(const QString& s) { return LTrim(RTrim(s)); }

QString Left(const QString& s, int n) { return n <= 0 ? QString() : s.left(n); }

QString Right(const QString& s, int n) { return n <= 0 ? QString() : s.right(n); }

QString Mid(const QString& s, int start, int length)
{
    if (start < 1) start = 1;
    if (start > s.size()) return QString();
    if (length < 0) return s.mid(start - 1);
    return s.mid(start - 1, length);
}

QString Hex(long long value)
{
    unsigned long long bits;
    if (value >= 0)
        bits = static_cast<unsigned long long>(value);
    else if (value >= -32768)
        bits = static_cast<unsigned long long>(value) & 0xFFFFULL;
    else
        bits = static_cast<unsigned long long>(value) & 0xFFFFFFFFULL;
    return QString::number(bits, 16).toUpper();
}

// Fifteen significant digits, as BASIC's Str and CStr give them; exponent form from 1E+15 up and
// below 0.0001 ("1E-05").
QString NumText(double value)
{
    if (std::isnan(value)) return QStringLiteral("NaN");
    if (std::isinf(value)) return value < 0 ? QStringLiteral("-Inf") : QStringLiteral("Inf");
    if (value == 0) return QStringLiteral("0");

    char buf[64];
    const auto res = std::to_chars(buf, buf + sizeof buf, std::fabs(value), std::chars_format::scientific, 14);
    const std::string text(buf, res.ptr);
    const auto e = text.find('e');
    std::string digits;
    for (std::size_t i = 0; i < e; ++i)
        if (text[i] != '.') digits += text[i];
    while (digits.size() > 1 && digits.back() == '0') digits.pop_back();
    const int exponent = std::stoi(text.substr(e + 1));

    std::string out = value < 0 ? "-" : "";
    if (exponent >= 15 || exponent < -4) {
        out += digits[0];
        if (digits.size() > 1) out += '.' + digits.substr(1);
        const int a = exponent < 0 ? -exponent : exponent;
        out += exponent < 0 ? "E-" : "E+";
        if (a < 10) out += '0';
        out += std::to_string(a);
    } else if (exponent < 0) {
        out += "0." + std::string(std::size_t(-exponent - 1), '0') + digits;
    } else {
        const std::size_t intLen = std::size_t(exponent) + 1;
        if (digits.size() <= intLen) {
            out += digits + std::string(intLen - digits.size(), '0');
        } else {
            out += digits.substr(0, intLen) + '.' + digits.substr(intLen);
        }
    }
    return QString::fromLatin1(out.data(), qsizetype(out.size()));
}

QString DateTimeText(const QDateTime& t, const QString& gap)
{
    return t.toString(QStringLiteral("yyyy/M/d")) + gap + t.toString(QStringLiteral("H:mm:ss"));
}
