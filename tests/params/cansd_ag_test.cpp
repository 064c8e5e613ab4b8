#include "test_support.h"

#include "common/module1.h"
#include "common/scale_table.h"
#include "link/form_access.h"
#include "link/link_engine.h"
#include "shell/app_setup.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

// The block of the aggregate editor sits where its opener puts it; the tests put it at D100.
static const QList<int> kBlock = {50, 3, 4, 5, 6, 50, 50, 20, 30, 30, 30, 30, 500, 500, 500, 500, 60, 60, 60, 60};

class CansdAGTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterParamsForms(); }
    void init();
    void cleanup() { delete h; }

    void readChainTwentyWords();
    void okChecksThenWrites_data();
    void okChecksThenWrites();
    void optionWriteIsStep111();

private:
    ConsoleHarness* h = nullptr;
    QWidget* form = nullptr;
};

void CansdAGTest::init()
{
    h = new ConsoleHarness;
    for (int k = 0; k < kBlock.size(); ++k)
        h->sim.setWord(100 + k, short(kBlock[k]));
    h->sim.setByteAt(62, 0x5A);
    h->sim.setByteAt(63, 0xC3);
    ParamDeviceAG = QStringLiteral("D100");
    OptionDevice = QStringLiteral("S500");
    h->connectLink();
    Forms::show(QStringLiteral("CansdAG"));
    form = Forms::loaded(QStringLiteral("CansdAG"));
    QVERIFY(form);
    QTRY_VERIFY_WITH_TIMEOUT(Ctl<QLineEdit>(form, "TxtSRead")->text().size() == 4 && SendFlag, 3000);
}

void CansdAGTest::readChainTwentyWords()
{
    QCOMPARE(h->takeFrames(), (QStringList{Frame("010C828"), Frame("0003E02")}));
    QStringList shown;
    for (int k = 0; k < 20; ++k)
        shown << Ctl<QLineEdit>(form, QStringLiteral("TxtDCansd(%1)").arg(k))->text();
    QCOMPARE(shown.join('|'), QStringLiteral("5|0.3|0.4|0.5|0.6|5|50|20|30|30|30|30|500|500|500|500|60|60|60|60"));
}

void CansdAGTest::okChecksThenWrites_data()
{
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QString>("message");   // the refusal, or the question before the write
    QTest::addColumn<QList<int>>("words");  // written; none after a refusal
    const QString ask = "是否设定当前参数?";
    // Box 0 shows tenths but is written by the scale's digits.
    QTest::newRow("no decimals") << 0 << QStringList{"0=6", "19=70"} << ask
                                 << QList<int>{6, 3, 4, 5, 6, 50, 50, 20, 30, 30, 30, 30, 500, 500, 500, 500, 60, 60, 60, 70};
    QTest::newRow("one decimal") << 1 << QStringList{"0=6", "19=70"} << ask
                                 << QList<int>{60, 3, 4, 5, 6, 50, 500, 200, 300, 300, 300, 300, 5000, 5000, 5000, 5000,
                                               600, 600, 600, 700};
    auto refused = [](const char* name, const QStringList& edits, const char* message) {
        QTest::newRow(name) << 0 << edits << QString::fromUtf8(message) << QList<int>{};
    };
    refused("delay below its range", {"0=1"}, "请检查!计量延时检查超差时间的范围为:(2-9)S");
    refused("range before relation", {"12=100", "16=200", "19=600"}, "请检查!计量落差调整值为:(0-500)Kg");
    refused("M4 relation", {"15=100", "19=101"}, "M4落差调整值不应大于落差调整最大值!");
}

void CansdAGTest::okChecksThenWrites()
{
    QFETCH(int, decimals);
    QFETCH(QStringList, edits);
    QFETCH(QString, message);
    QFETCH(QList<int>, words);
    ScaleDecimals[0] = short(decimals);
    h->takeFrames();
    for (const QString& e : edits)
        Ctl<QLineEdit>(form, "TxtDCansd(" + e.section('=', 0, 0) + ')')->setText(e.section('=', 1));
    MbAnswerer mb;
    ClickOn(Ctl<QWidget>(form, "ImgBdOk"));
    QTRY_COMPARE_WITH_TIMEOUT(mb.texts.size(), 1, 2000);
    QCOMPARE(mb.texts.first(), message);
    if (!words.isEmpty())
        QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
    QCOMPARE(h->takeFrames(), words.isEmpty() ? QStringList() : QStringList{Frame("110C828" + WordsHex(words))});
}

void CansdAGTest::optionWriteIsStep111()
{
    h->takeFrames();
    // Bit 4 is an option like the others here: no record mode kept apart.
    Ctl<QCheckBox>(form, "Check1(9)")->click();
    QTRY_COMPARE_WITH_TIMEOUT(Ctl<QLabel>(form, "LblTzxxTip")->text(), QStringLiteral("选项更改完成!"), 2000);
    QCOMPARE(h->takeFrames(), QStringList{Frame("1003E025AC2")});
}

QTEST_MAIN(CansdAGTest)
#include "cansd_ag_test.moc"
