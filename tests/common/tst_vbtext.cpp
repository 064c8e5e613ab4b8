#include "common/vbtext.h"

#include <QTest>

#include <cmath>

class VbTextTest : public QObject {
    Q_OBJECT
private slots:
    void val_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("value");
        QTest::newRow("digits then letters") << "12abc" << 12.0;
        QTest::newRow("blanks, sign, exponent") << "  -1.5e2x" << -150.0;
        QTest::newRow("second point ends it") << "1.2.3" << 1.2;
        QTest::newRow("D exponent") << "1.5D2" << 150.0;
        QTest::newRow("e without digits") << "3e+x" << 3.0;
        QTest::newRow("blank after sign ends it") << "- 5" << 0.0;
        QTest::newRow("full-width digits are no digits") << QString::fromUtf8("１２") << 0.0;
        QTest::newRow("hex") << "&H1F" << 31.0;
        QTest::newRow("hex 16 bits negative") << "&HFFFF" << -1.0;
        QTest::newRow("octal stops at 8") << "&O178" << 15.0;
    }
    void val()
    {
        QFETCH(QString, text);
        QFETCH(double, value);
        QCOMPARE(Val(text), value);
    }

    // CInt for 16 bits, CLng for 32; -1 stands for the overflow error.
    void integerConversion_data()
    {
        QTest::addColumn<bool>("wide");
        QTest::addColumn<double>("value");
        QTest::addColumn<qlonglong>("result");
        const qlonglong overflow = -1;
        QTest::newRow("half to even up") << false << 3.5 << 4LL;
        QTest::newRow("negative half to even") << false << -2.5 << -2LL;
        QTest::newRow("16-bit top half overflows") << false << 32767.5 << overflow;
        QTest::newRow("16-bit bottom half to even") << false << -32768.5 << -32768LL;
        QTest::newRow("not a number") << false << std::nan("") << overflow;
        QTest::newRow("32-bit beyond 16 bits") << true << 70001.5 << 70002LL;
        QTest::newRow("32-bit top half overflows") << true << 2147483647.5 << overflow;
        QTest::newRow("32-bit bottom half to even") << true << -2147483648.5 << -2147483648LL;
    }
    void integerConversion()
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

    // Rows that carry a routine's result and the text expected of it: Format, the substring routines,
    // Hex as the 16-bit routines expect it, NumText as Str gives it.
    void results_data()
    {
        QTest::addColumn<QString>("result");
        QTest::addColumn<QString>("expected");
        QTest::newRow("half away, not to even") << Format(2.5, "#0") << "3";
        QTest::newRow("negative half away") << Format(-2.5, "#0") << "-3";
        QTest::newRow("negative rounding to zero") << Format(-0.4, "#0") << "-0";
        QTest::newRow("decimal half 1.005") << Format(1.005, "#0.00") << "1.01";
        QTest::newRow("just below a half") << Format(1.0049999, "#0.00") << "1.00";
        QTest::newRow("carry over all nines") << Format(99.95, "#0.0") << "100.0";
        QTest::newRow("Trim both ends") << Trim("  a b  ") << "a b";
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
        QTest::newRow("Hex of minus one as 16 bits") << Hex(-1) << "FFFF";
        QTest::newRow("Hex beyond 16 bits") << Hex(70000) << "11170";
        QTest::newRow("Hex of the 16-bit bottom") << Hex(-32768) << "8000";
        QTest::newRow("Hex below 16 bits") << Hex(-32769) << "FFFF7FFF";
        QTest::newRow("binary noise hidden") << NumText(0.1 + 0.2) << "0.3";
        QTest::newRow("fifteen digits") << NumText(1.0 / 3.0) << "0.333333333333333";
        QTest::newRow("exponent from 1E+15") << NumText(1e15) << "1E+15";
        QTest::newRow("small exponent") << NumText(0.00001) << "1E-05";
    }
    void results()
    {
        QFETCH(QString, result);
        QFETCH(QString, expected);
        QCOMPARE(result, expected);
    }
};

QTEST_GUILESS_MAIN(VbTextTest)
#include "tst_vbtext.moc"
