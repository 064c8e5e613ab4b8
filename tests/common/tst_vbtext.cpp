#include "common/vbtext.h"

#include <QTest>

#include <cmath>

class VbTextTest : public QObject {
    Q_OBJECT
private slots:
    void val_data();
    void val();
    void format_data();
    void format();
    void integerConversion_data();
    void integerConversion();
    void substrings_data();
    void substrings();
    void hex_data();
    void hex();
    void numText_data();
    void numText();
};

void VbTextTest::val_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("digits then letters") << "12abc" << 12.0;
    QTest::newRow("blanks, sign, exponent") << "  -1.5e2x" << -150.0;
    QTest::newRow("no number") << "abc" << 0.0;
    QTest::newRow("second point ends it") << "1.2.3" << 1.2;
    QTest::newRow("D exponent") << "1.5D2" << 150.0;
    QTest::newRow("e without digits") << "3e+x" << 3.0;
    QTest::newRow("blank after sign ends it") << "- 5" << 0.0;
    QTest::newRow("full-width digits are no digits") << QString::fromUtf8("１２") << 0.0;
    QTest::newRow("hex") << "&H1F" << 31.0;
    QTest::newRow("hex 16 bits negative") << "&HFFFF" << -1.0;
    QTest::newRow("octal stops at 8") << "&O178" << 15.0;
}

void VbTextTest::val()
{
    QFETCH(QString, text);
    QFETCH(double, value);
    QCOMPARE(Val(text), value);
}

void VbTextTest::format_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("text");
    QTest::newRow("negative half keeps sign") << -0.5 << "#0.0" << "-0.5";
    QTest::newRow("register / 100") << 1234 / 100.0 << "#0.00" << "12.34";
    QTest::newRow("half away, not to even") << 2.5 << "#0" << "3";
    QTest::newRow("negative half away") << -2.5 << "#0" << "-3";
    QTest::newRow("negative rounding to zero") << -0.4 << "#0" << "-0";
    QTest::newRow("decimal half 1.005") << 1.005 << "#0.00" << "1.01";
    QTest::newRow("just below a half") << 1.0049999 << "#0.00" << "1.00";
    QTest::newRow("carry over all nines") << 99.95 << "#0.0" << "100.0";
    QTest::newRow("hash of zero is empty") << 0.0 << "#" << "";
    QTest::newRow("optional decimal shown") << 1.25 << "0.0#" << "1.25";
}

void VbTextTest::format()
{
    QFETCH(double, value);
    QFETCH(QString, pattern);
    QFETCH(QString, text);
    QCOMPARE(Format(value, pattern), text);
}

// CInt for 16 bits, CLng for 32; -1 stands for the overflow error.
void VbTextTest::integerConversion_data()
{
    QTest::addColumn<bool>("wide");
    QTest::addColumn<double>("value");
    QTest::addColumn<qlonglong>("result");
    const qlonglong overflow = -1;
    QTest::newRow("half to even up") << false << 3.5 << 4LL;
    QTest::newRow("negative half to even") << false << -2.5 << -2LL;
    QTest::newRow("zero half") << false << 0.5 << 0LL;
    QTest::newRow("16-bit top half overflows") << false << 32767.5 << overflow;
    QTest::newRow("16-bit bottom half to even") << false << -32768.5 << -32768LL;
    QTest::newRow("not a number") << false << std::nan("") << overflow;
    QTest::newRow("32-bit beyond 16 bits") << true << 70001.5 << 70002LL;
    QTest::newRow("32-bit top half overflows") << true << 2147483647.5 << overflow;
    QTest::newRow("32-bit bottom half to even") << true << -2147483648.5 << -2147483648LL;
}

void VbTextTest::integerConversion()
{
    QFETCH(bool, wide);
    QFETCH(double, value);
    QFETCH(qlonglong, result);
    try {
        const qlonglong r = wide ? CLng(value) : CInt(value);
        QVERIFY2(result != -1, "no overflow raised");
        QCOMPARE(r, result);
    } catch (const VbError& e) {
        QVERIFY2(result == -1, qPrintable(e.description()));
        QCOMPARE(e.number, kErrOverflow);
    }
}

void VbTextTest::substrings_data()
{
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("expected");
    QTest::newRow("Trim both ends") << Trim("  a b  ") << "a b";
    QTest::newRow("LTrim") << LTrim("  a b  ") << "a b  ";
    QTest::newRow("RTrim") << RTrim("  a b  ") << "  a b";
    QTest::newRow("tab is no blank") << Trim("\ta\t") << "\ta\t";
    QTest::newRow("full-width blank stays") << Trim(QString::fromUtf8("\u3000名 ")) << QString::fromUtf8("\u3000名");
    QTest::newRow("Left 2") << Left("abcdef", 2) << "ab";
    QTest::newRow("Left negative") << Left("abc", -1) << "";
    QTest::newRow("Right 2") << Right("abcdef", 2) << "ef";
    QTest::newRow("Mid from 1") << Mid("abcdef", 1, 2) << "ab";
    QTest::newRow("Mid to end") << Mid("abcdef", 5) << "ef";
    QTest::newRow("Mid start beyond") << Mid("abc", 4, 1) << "";
    QTest::newRow("Mid start 0 clamped") << Mid("abc", 0, 2) << "ab";
    QTest::newRow("Mid Chinese") << Mid(QString::fromUtf8("骨料1"), 2, 1) << QString::fromUtf8("料");
}

void VbTextTest::substrings()
{
    QFETCH(QString, result);
    QFETCH(QString, expected);
    QCOMPARE(result, expected);
}

void VbTextTest::hex_data()
{
    QTest::addColumn<qlonglong>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("minus one as 16 bits") << -1LL << "FFFF";
    QTest::newRow("beyond 16 bits") << 70000LL << "11170";
    QTest::newRow("16-bit bottom") << -32768LL << "8000";
    QTest::newRow("below 16 bits") << -32769LL << "FFFF7FFF";
}

void VbTextTest::hex()
{
    QFETCH(qlonglong, value);
    QFETCH(QString, text);
    QCOMPARE(Hex(value), text);
}

void VbTextTest::numText_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("binary noise hidden") << 0.1 + 0.2 << "0.3";
    QTest::newRow("fifteen digits") << 1.0 / 3.0 << "0.333333333333333";
    QTest::newRow("exponent from 1E+15") << 1e15 << "1E+15";
    QTest::newRow("small exponent") << 0.00001 << "1E-05";
}

void VbTextTest::numText()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    QCOMPARE(NumText(value), text);
}

QTEST_GUILESS_MAIN(VbTextTest)
#include "tst_vbtext.moc"
