#include "param_test_util.h"
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
namespace {
const QList<int> kBlock = {50, 3, 4, 5, 6, 50, 50, 20, 30, 30, 30, 30, 500, 500, 500, 500, 60, 60, 60, 60};
const QString kRead = Frame("010C828");
const QString kReadOptions = Frame("0003E02");
}  // namespace

class CansdAGTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterParamsForms(); }
    void init();
    void cleanup() { delete h; }

    void readChainTwentyWords();
    void writeScalesEachRow_data();
    void writeScalesEachRow();
    void checkMessages_data();
    void checkMessages();
    void keyFilter_data();
    void keyFilter();
    void optionWriteIsStep111();

private:
    QLineEdit* box(int k) { return Ctl<QLineEdit>(form, QStringLiteral("TxtDCansd(%1)").arg(k)); }
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
    ScaleNo = 0;
    ScaleTitle = QStringLiteral("骨料1参数设定");
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
    QCOMPARE(h->takeFrames(), (QStringList{kRead, kReadOptions}));
    QStringList shown;
    for (int k = 0; k < 20; ++k)
        shown << box(k)->text();
    QCOMPARE(shown.join('|'), QStringLiteral("5|0.3|0.4|0.5|0.6|5|50|20|30|30|30|30|500|500|500|500|60|60|60|60"));
    // No row hides, whatever the bin names say.
    for (int k = 0; k < 20; ++k)
        QVERIFY(!box(k)->isHidden());
    QCOMPARE(Ctl<QLabel>(form, "LblCansd(17)")->text(), QStringLiteral("M2 落差调整值"));
    QCOMPARE(box(0)->toolTip(), QStringLiteral("输入范围为:(2-9)S"));
    QCOMPARE(box(6)->toolTip(), QStringLiteral("输入范围为:(20-200)Kg"));
}

void CansdAGTest::writeScalesEachRow_data()
{
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QList<int>>("words");
    // Box 0 shows tenths but is written by the scale's digits.
    QTest::newRow("no decimals") << 0
                                 << QList<int>{6, 3, 4, 5, 6, 50, 50, 20, 30, 30, 30, 30, 500, 500, 500, 500, 60, 60, 60, 70};
    QTest::newRow("one decimal") << 1
                                 << QList<int>{60, 3, 4, 5, 6, 50, 500, 200, 300, 300, 300, 300, 5000, 5000, 5000, 5000, 600,
                                               600, 600, 700};
}

void CansdAGTest::writeScalesEachRow()
{
    QFETCH(int, decimals);
    QFETCH(QList<int>, words);
    ScaleDecimals[0] = short(decimals);
    h->takeFrames();
    const QStringList texts = {"6", "0.3", "0.4", "0.5", "0.6", "5", "50", "20", "30", "30",
                               "30", "30", "500", "500", "500", "500", "60", "60", "60", "70"};
    for (int k = 0; k < 20; ++k)
        box(k)->setText(texts[k]);
    MbAnswerer mb;
    ClickOn(Ctl<QWidget>(form, "ImgBdOk"));
    QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
    QCOMPARE(mb.texts, QStringList{QStringLiteral("是否设定当前参数?")});
    QCOMPARE(h->takeFrames(), QStringList{Frame("110C828" + WordsHex(words))});
    QCOMPARE(Ctl<QLabel>(form, "LbLCssdS")->text(), QStringLiteral("参数设定成功!"));
    for (int k = 0; k < 20; ++k)
        QCOMPARE(int(h->sim.word(100 + k)), words[k]);
}

void CansdAGTest::checkMessages_data()
{
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QString>("message");
    QTest::newRow("delay below its range") << QStringList{"0=1"} << "请检查!计量延时检查超差时间的范围为:(2-9)S";
    QTest::newRow("top-up time of M3") << QStringList{"3=2.5"} << "请检查!脉冲补称时间的范围为:(0.2-2.0)S";
    QTest::newRow("range before relation") << QStringList{"12=100", "16=200", "19=600"} << "请检查!计量落差调整值为:(0-500)Kg";
    QTest::newRow("M1 relation") << QStringList{"12=100", "16=200"} << "M1落差调整值不应大于落差调整最大值!";
    QTest::newRow("M4 relation") << QStringList{"15=100", "19=101"} << "M4落差调整值不应大于落差调整最大值!";
}

void CansdAGTest::checkMessages()
{
    QFETCH(QStringList, edits);
    QFETCH(QString, message);
    h->takeFrames();
    for (const QString& e : edits)
        box(e.section('=', 0, 0).toInt())->setText(e.section('=', 1));
    MbAnswerer mb;
    ClickOn(Ctl<QWidget>(form, "ImgBdOk"));
    QTRY_COMPARE_WITH_TIMEOUT(mb.texts.size(), 1, 2000);
    QCOMPARE(mb.texts.first(), message);
    QVERIFY(h->takeFrames().isEmpty());
}

void CansdAGTest::keyFilter_data()
{
    QTest::addColumn<int>("k");
    QTest::addColumn<QString>("text");
    QTest::newRow("delay: whole seconds") << 0 << "15";
    QTest::newRow("top-up time") << 1 << "1.5";
    QTest::newRow("discharge delay: whole seconds") << 5 << "15";
    QTest::newRow("weights") << 6 << "1.5";
}

void CansdAGTest::keyFilter()
{
    QFETCH(int, k);
    QFETCH(QString, text);
    box(k)->clear();
    QTest::keyClicks(box(k), QStringLiteral("1.5"));
    QCOMPARE(box(k)->text(), text);
}

void CansdAGTest::optionWriteIsStep111()
{
    h->takeFrames();
    // Bit 4 is an option like the others here: no record mode kept apart.
    Ctl<QCheckBox>(form, "Check1(9)")->click();
    QTRY_VERIFY_WITH_TIMEOUT(SendFlag, 3000);
    QCOMPARE(h->takeFrames(), QStringList{Frame("1003E025AC2")});
    auto* tip = Ctl<QLabel>(form, "LblTzxxTip");
    QTRY_COMPARE_WITH_TIMEOUT(tip->text(), QStringLiteral("选项更改完成!"), 2000);
    QCOMPARE(TextColor(tip), QColor(0, 0x80, 0));
    QCOMPARE(int(h->sim.byteAt(63)), 0xC2);
}

QTEST_MAIN(CansdAGTest)
#include "cansd_ag_test.moc"
