#include "test_support.h"

#include "common/vbtext.h"

#include <cmath>

namespace {
// CInt for 16 bits, CLng for 32, as the text of the result or of the error raised.
QString integer(double value, bool wide = false)
{
    try {
        return QString::number(wide ? CLng(value) : CInt(value));
    } catch (const VbError& e) {
        return QStringLiteral("error %1").arg(e.number);
    }
}

// A routine's result and the text expected of it: Val and the integer conversions as Str shows them, Format,
// the substring routines, Hex as the 16-bit routines expect it.
const struct { const char* name; QString result, expected; } kResults[] = {
    {"Val digits then letters", NumText(Val("12abc")), "12"},
    {"Val blanks, sign, exponent", NumText(Val("  -1.5e2x")), "-150"},
    {"Val second point ends it", NumText(Val("1.2.3")), "1.2"},
    {"Val D exponent", NumText(Val("1.5D2")), "150"},
    {"Val e without digits", NumText(Val("3e+x")), "3"},
    {"Val blank after sign ends it", NumText(Val("- 5")), "0"},
    {"Val full-width digits are no digits", NumText(Val(QString::fromUtf8("１２"))), "0"},
    {"Val hex", NumText(Val("&H1F")), "31"},
    {"Val hex 16 bits negative", NumText(Val("&HFFFF")), "-1"},
    {"Val octal stops at 8", NumText(Val("&O178")), "15"},
    {"half to even up", integer(3.5), "4"},
    {"half to even down", integer(2.5), "2"},
    {"negative half to even", integer(-2.5), "-2"},
    {"16-bit top half overflows", integer(32767.5), "error 6"},
    {"16-bit bottom half to even", integer(-32768.5), "-32768"},
    {"not a number", integer(std::nan("")), "error 6"},
    {"32-bit beyond 16 bits", integer(70001.5, true), "70002"},
    {"32-bit top half overflows", integer(2147483647.5, true), "error 6"},
    {"32-bit bottom half to even", integer(-2147483648.5, true), "-2147483648"},
    {"half away, not to even", Format(2.5, "#0"), "3"},
    {"negative half away", Format(-2.5, "#0"), "-3"},
    {"negative rounding to zero", Format(-0.4, "#0"), "-0"},
    {"decimal half 1.005", Format(1.005, "#0.00"), "1.01"},
    {"just below a half", Format(1.0049999, "#0.00"), "1.00"},
    {"carry over all nines", Format(99.95, "#0.0"), "100.0"},
    {"Trim both ends", Trim("  a b  "), "a b"},
    {"RTrim", RTrim("  a b  "), "  a b"},
    {"tab is no blank", Trim("\ta\t"), "\ta\t"},
    {"full-width blank stays", Trim(QString::fromUtf8("\u3000名 ")), QString::fromUtf8("\u3000名")},
    {"Left 2", Left("abcdef", 2), "ab"},
    {"Left negative", Left("abc", -1), ""},
    {"Right 2", Right("abcdef", 2), "ef"},
    {"Mid from 1", Mid("abcdef", 1, 2), "ab"},
    {"Mid to end", Mid("abcdef", 5), "ef"},
    {"Mid start beyond", Mid("abc", 4, 1), ""},
    {"Mid start 0 clamped", Mid("abc", 0, 2), "ab"},
    {"Mid Chinese", Mid(QString::fromUtf8("骨料1"), 2, 1), QString::fromUtf8("料")},
    {"Hex of minus one as 16 bits", Hex(-1), "FFFF"},
    {"Hex beyond 16 bits", Hex(70000), "11170"},
    {"Hex of the 16-bit bottom", Hex(-32768), "8000"},
    {"Hex below 16 bits", Hex(-32769), "FFFF7FFF"},
    {"binary noise hidden", NumText(0.1 + 0.2), "0.3"},
    {"fifteen digits", NumText(1.0 / 3.0), "0.333333333333333"},
    {"exponent from 1E+15", NumText(1e15), "1E+15"},
    {"small exponent", NumText(0.00001), "1E-05"},
};
}  // namespace

class VbTextTest : public QObject {
    Q_OBJECT
private slots:
    void results_data() { TableRows(kResults); }
    void results() { QCOMPARE(TableRow(kResults).result, TableRow(kResults).expected); }
};

QTEST_GUILESS_MAIN(VbTextTest)
#include "tst_vbtext.moc"
