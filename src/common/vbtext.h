#pragma once
// The text and number routines every form relies on. They behave as the operators' screens
// were designed with, not as C++ would: Val reads the longest numeric beginning, Format rounds
// half away from zero, CInt rounds half to even.
#include <QDateTime>
#include <QString>
#include <stdexcept>

// A run-time error of a routine: the number and description go to the error log.
struct VbError : std::runtime_error {
    int number;
    VbError(int n, const QString& description) : std::runtime_error(description.toStdString()), number(n) {}
    QString description() const { return QString::fromStdString(what()); }
};

constexpr int kErrOverflow = 6;
constexpr int kErrSubscript = 9;
constexpr int kErrTypeMismatch = 13;

// Value of the longest numeric beginning of a text ("12abc" -> 12, " -1.5e2x" -> -150, "abc" -> 0).
// Leading blanks are skipped; "&H" and "&O" prefixes read hex and octal.
double Val(const QString& text);

// Format(value, "#0.00"): "0" a forced digit, "#" an optional one; half away from zero at the
// last shown digit; a negative value that rounds to zero keeps its sign ("-0.5" for -5 / 10 with "#0.0",
// "-0" for -0.4 with "#0").
QString Format(double value, const QString& pattern);

// Number to 16-bit integer: nearest, a half to the even neighbour; out of range raises overflow (6).
short CInt(double value);
// Number to 32-bit integer, same rounding; out of range raises overflow (6).
int CLng(double value);

QString Trim(const QString& s);
QString LTrim(const QString& s);
QString RTrim(const QString& s);
QString Left(const QString& s, int n);
QString Right(const QString& s, int n);
// Mid counts from 1; length < 0 means to the end.
QString Mid(const QString& s, int start, int length = -1);
// Upper-case hex of an integer; negative values as their 32-bit two's complement ("FFFFFFFF").
// A value that fits in 16 bits signed shows as 16 bits ("FFFF" for -1), as the 16-bit routines expect.
QString Hex(long long value);
// Decimal text of a number as BASIC's Str/CStr give it: no trailing zeros, no "+".
QString NumText(double value);
// Date and time as the station writes them into its files: "2026/3/5" and "14:03:22", the gap between them
// one blank in the records and the names file, three in the error log.
QString DateTimeText(const QDateTime& t, const QString& gap = QStringLiteral(" "));
