#include "common/vbtext.h"

#include <QTest>

#include <cmath>
#include <limits>

class VbTextTest : public QObject {
    Q_OBJECT
private slots:
    void val_data();
    void val();
    void format_data();
    void format();
    void cInt_data();
    void cInt();
    void cLng_data();
    void cLng();
    void trim_data();
    void trim();
    void leftRightMid_data();
    void leftRightMid();
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
    QTest::newRow("leading point") << ".5" << 0.5;
    QTest::newRow("second point ends it") << "1.2.3" << 1.2;
    QTest::newRow("empty") << "" << 0.0;
    QTest::newRow("blanks only") << "   " << 0.0;
    QTest::newRow("plus sign") << "+7" << 7.0;
    QTest::newRow("sign alone") << "-" << 0.0;
    QTest::newRow("point alone") << "." << 0.0;
    QTest::newRow("negative fraction") << "-.25" << -0.25;
    QTest::newRow("trailing point") << "5." << 5.0;
    QTest::newRow("D exponent") << "1.5D2" << 150.0;
    QTest::newRow("negative exponent") << "25e-1" << 2.5;
    QTest::newRow("e without digits") << "3e" << 3.0;
    QTest::newRow("e and sign without digits") << "3e+x" << 3.0;
    QTest::newRow("tab and line feed skipped") << "\t\n42" << 42.0;
    QTest::newRow("blank after sign ends it") << "- 5" << 0.0;
    QTest::newRow("full-width digits are no digits") << QString::fromUtf8("１２") << 0.0;
    QTest::newRow("hex") << "&H1F" << 31.0;
    QTest::newRow("hex lower case") << "&hff" << 255.0;
    QTest::newRow("hex 16 bits negative") << "&HFFFF" << -1.0;
    QTest::newRow("hex 17 bits positive") << "&H10000" << 65536.0;
    QTest::newRow("hex 32 bits negative") << "&HFFFFFFFF" << -1.0;
    QTest::newRow("hex stops at non-digit") << "&H1Gx" << 1.0;
    QTest::newRow("hex without digits") << "&H" << 0.0;
    QTest::newRow("octal") << "&O17" << 15.0;
    QTest::newRow("octal stops at 8") << "&O178" << 15.0;
    QTest::newRow("ampersand alone") << "&" << 0.0;
    QTest::newRow("huge exponent") << "1e999" << std::numeric_limits<double>::infinity();
    QTest::newRow("tiny exponent") << "1e-999" << 0.0;
    QTest::newRow("register text") << "1234" << 1234.0;
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
    QTest::newRow("half up") << 0.5 << "#0" << "1";
    QTest::newRow("below half") << 0.4 << "#0" << "0";
    QTest::newRow("half away, not to even") << 2.5 << "#0" << "3";
    QTest::newRow("negative half away") << -2.5 << "#0" << "-3";
    QTest::newRow("negative rounding to zero") << -0.4 << "#0" << "-0";
    QTest::newRow("decimal half 0.125") << 0.125 << "#0.00" << "0.13";
    QTest::newRow("decimal half 1.005") << 1.005 << "#0.00" << "1.01";
    QTest::newRow("decimal half 2.675") << 2.675 << "#0.00" << "2.68";
    QTest::newRow("just below a half") << 1.0049999 << "#0.00" << "1.00";
    QTest::newRow("carry into integer") << 9.995 << "#0.00" << "10.00";
    QTest::newRow("carry over all nines") << 99.95 << "#0.0" << "100.0";
    QTest::newRow("forced decimals") << 12.0 << "#0.000" << "12.000";
    QTest::newRow("zero one decimal") << 0.0 << "#0.0" << "0.0";
    QTest::newRow("small value") << 0.001 << "#0.00" << "0.00";
    QTest::newRow("small negative") << -0.001 << "#0.00" << "-0.00";
    QTest::newRow("rounds up from far right") << 0.05 << "#0.0" << "0.1";
    QTest::newRow("large") << 1e20 << "#0" << "100000000000000000000";
    QTest::newRow("negative integer") << -1234.5 << "#0" << "-1235";
    QTest::newRow("plain 0") << 0.5 << "0" << "1";
    QTest::newRow("plain 0 of three digits") << 123.4 << "0" << "123";
    QTest::newRow("hash of zero is empty") << 0.0 << "#" << "";
    QTest::newRow("hash of a number") << 123.456 << "#" << "123";
    QTest::newRow("hash then point") << 0.5 << "#.00" << ".50";
    QTest::newRow("optional decimal dropped") << 1.5 << "0.0#" << "1.5";
    QTest::newRow("optional decimal shown") << 1.25 << "0.0#" << "1.25";
}

void VbTextTest::format()
{
    QFETCH(double, value);
    QFETCH(QString, pattern);
    QFETCH(QString, text);
    QCOMPARE(Format(value, pattern), text);
}

void VbTextTest::cInt_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("result");
    QTest::addColumn<bool>("overflow");
    QTest::newRow("half to even down") << 2.5 << 2 << false;
    QTest::newRow("half to even up") << 3.5 << 4 << false;
    QTest::newRow("negative half to even") << -2.5 << -2 << false;
    QTest::newRow("negative half to even down") << -3.5 << -4 << false;
    QTest::newRow("zero half") << 0.5 << 0 << false;
    QTest::newRow("above half") << 2.51 << 3 << false;
    QTest::newRow("below half") << -2.49 << -2 << false;
    QTest::newRow("top") << 32767.4 << 32767 << false;
    QTest::newRow("top half overflows") << 32767.5 << 0 << true;
    QTest::newRow("bottom half to even") << -32768.5 << -32768 << false;
    QTest::newRow("below bottom") << -32768.6 << 0 << true;
    QTest::newRow("far out") << 1e10 << 0 << true;
    QTest::newRow("not a number") << std::nan("") << 0 << true;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << 0 << true;
}

void VbTextTest::cInt()
{
    QFETCH(double, value);
    QFETCH(int, result);
    QFETCH(bool, overflow);
    try {
        const short r = CInt(value);
        QVERIFY2(!overflow, "no overflow raised");
        QCOMPARE(int(r), result);
    } catch (const VbError& e) {
        QVERIFY2(overflow, qPrintable(e.description()));
        QCOMPARE(e.number, kErrOverflow);
    }
}

void VbTextTest::cLng_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("result");
    QTest::addColumn<bool>("overflow");
    QTest::newRow("beyond 16 bits") << 70000.5 << 70000 << false;
    QTest::newRow("half to even up") << 70001.5 << 70002 << false;
    QTest::newRow("top half to even") << 2147483646.5 << 2147483646 << false;
    QTest::newRow("top half overflows") << 2147483647.5 << 0 << true;
    QTest::newRow("bottom half to even") << -2147483648.5 << int(-2147483647 - 1) << false;
    QTest::newRow("below bottom") << -2147483649.0 << 0 << true;
}

void VbTextTest::cLng()
{
    QFETCH(double, value);
    QFETCH(int, result);
    QFETCH(bool, overflow);
    try {
        const int r = CLng(value);
        QVERIFY2(!overflow, "no overflow raised");
        QCOMPARE(r, result);
    } catch (const VbError& e) {
        QVERIFY2(overflow, qPrintable(e.description()));
        QCOMPARE(e.number, kErrOverflow);
    }
}

void VbTextTest::trim_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("trim");
    QTest::addColumn<QString>("ltrim");
    QTest::addColumn<QString>("rtrim");
    QTest::newRow("both ends") << "  a b  " << "a b" << "a b  " << "  a b";
    QTest::newRow("tab is no blank") << "\ta\t" << "\ta\t" << "\ta\t" << "\ta\t";
    QTest::newRow("blanks only") << "   " << "" << "" << "";
    QTest::newRow("empty") << "" << "" << "" << "";
    QTest::newRow("full-width blank stays") << QString::fromUtf8("\u3000名 ") << QString::fromUtf8("\u3000名")
                                            << QString::fromUtf8("\u3000名 ") << QString::fromUtf8("\u3000名");
}

void VbTextTest::trim()
{
    QFETCH(QString, text);
    QFETCH(QString, trim);
    QFETCH(QString, ltrim);
    QFETCH(QString, rtrim);
    QCOMPARE(Trim(text), trim);
    QCOMPARE(LTrim(text), ltrim);
    QCOMPARE(RTrim(text), rtrim);
}

void VbTextTest::leftRightMid_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("expected");
    QTest::newRow("Left 2") << "Left(abcdef,2)" << Left("abcdef", 2) << "ab";
    QTest::newRow("Left beyond") << "Left(abc,5)" << Left("abc", 5) << "abc";
    QTest::newRow("Left 0") << "Left(abc,0)" << Left("abc", 0) << "";
    QTest::newRow("Left negative") << "Left(abc,-1)" << Left("abc", -1) << "";
    QTest::newRow("Right 2") << "Right(abcdef,2)" << Right("abcdef", 2) << "ef";
    QTest::newRow("Right beyond") << "Right(abc,9)" << Right("abc", 9) << "abc";
    QTest::newRow("Right 0") << "Right(abc,0)" << Right("abc", 0) << "";
    QTest::newRow("Mid from 1") << "Mid(abcdef,1,2)" << Mid("abcdef", 1, 2) << "ab";
    QTest::newRow("Mid inside") << "Mid(abcdef,2,3)" << Mid("abcdef", 2, 3) << "bcd";
    QTest::newRow("Mid to end") << "Mid(abcdef,5)" << Mid("abcdef", 5) << "ef";
    QTest::newRow("Mid length beyond") << "Mid(abcdef,5,10)" << Mid("abcdef", 5, 10) << "ef";
    QTest::newRow("Mid start beyond") << "Mid(abc,4,1)" << Mid("abc", 4, 1) << "";
    QTest::newRow("Mid start 0 clamped") << "Mid(abc,0,2)" << Mid("abc", 0, 2) << "ab";
    QTest::newRow("Mid Chinese") << "Mid(骨料1,2,1)" << Mid(QString::fromUtf8("骨料1"), 2, 1) << QString::fromUtf8("料");
    QTest::newRow("payload word") << "Mid(D2040000,1,2)" << Mid("D2040000", 4 * 1 - 3, 2) << "D2";
}

void VbTextTest::leftRightMid()
{
    QFETCH(QString, result);
    QFETCH(QString, expected);
    QCOMPARE(result, expected);
}

void VbTextTest::hex_data()
{
    QTest::addColumn<qlonglong>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("minus one as 16 bits") << qlonglong(-1) << "FFFF";
    QTest::newRow("beyond 16 bits") << qlonglong(70000) << "11170";
    QTest::newRow("zero") << qlonglong(0) << "0";
    QTest::newRow("upper case") << qlonglong(255) << "FF";
    QTest::newRow("16-bit bottom") << qlonglong(-32768) << "8000";
    QTest::newRow("below 16 bits") << qlonglong(-32769) << "FFFF7FFF";
    QTest::newRow("unsigned 16 bits") << qlonglong(65535) << "FFFF";
    QTest::newRow("32-bit bottom") << qlonglong(-2147483648LL) << "80000000";
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
    QTest::newRow("integer") << 1234.0 << "1234";
    QTest::newRow("half") << 0.5 << "0.5";
    QTest::newRow("negative") << -5.0 << "-5";
    QTest::newRow("zero") << 0.0 << "0";
    QTest::newRow("negative zero") << -0.0 << "0";
    QTest::newRow("binary noise hidden") << 0.1 + 0.2 << "0.3";
    QTest::newRow("fifteen digits") << 1.0 / 3.0 << "0.333333333333333";
    QTest::newRow("largest plain") << 123456789012345.0 << "123456789012345";
    QTest::newRow("exponent from 1E+15") << 1e15 << "1E+15";
    QTest::newRow("exponent with digits") << 1.5e20 << "1.5E+20";
    QTest::newRow("smallest plain") << 0.0001 << "0.0001";
    QTest::newRow("small exponent") << 0.00001 << "1E-05";
    QTest::newRow("negative small exponent") << -1.5e-7 << "-1.5E-07";
    QTest::newRow("trailing zeros of a decimal") << 12.5 << "12.5";
    QTest::newRow("round number") << 100.0 << "100";
}

void VbTextTest::numText()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    QCOMPARE(NumText(value), text);
}

QTEST_GUILESS_MAIN(VbTextTest)
#include "tst_vbtext.moc"
