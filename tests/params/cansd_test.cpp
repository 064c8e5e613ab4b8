#include "test_support.h"

#include "common/error_log.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "link/form_access.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "shell/app_setup.h"

#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

static const QList<int> kRaw = {3, 15, 40, 1234, -5, 7, 300, 100, 25, 500, 60, 61, 62, 350, -25536};
static const QList<int> kAgg = {3, 3, 50, 50, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0};
static const QColor kDarkGreen(0, 0x80, 0);

// Parameter block of a scale: D300 + 15 words per scale; option bytes: S500 + scale.
static QString blockFrame(char op, int scale, const QString& data = {})
{
    return Frame(op + QString::number(0x1000 + 2 * (300 + 15 * scale), 16).toUpper() + "1E" + data);
}
static QString optionFrame(char op, int scale, const QString& image = {})
{
    return Frame(op + QStringLiteral("00") + QString::number(62 + scale, 16).toUpper() + "02" + image);
}

class CansdTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterParamsForms(); }
    void init() { h = new ConsoleHarness; }
    void cleanup() { delete h; form = nullptr; }

    void readChainFillsBoxesAndOptions_data();
    void readChainFillsBoxesAndOptions();
    void blockWriteSendsOneFrame_data();
    void blockWriteSendsOneFrame();
    void checkStopsAtFirstFault_data();
    void checkStopsAtFirstFault();
    void liveWarningOnPageClick();
    void unsavedQuestionOnReturn_data();
    void unsavedQuestionOnReturn();
    void nakShowsRetryThenSuccess();
    void optionClickWritesOneFrame_data();
    void optionClickWritesOneFrame();

private:
    // Opens Cansd as the menu does and waits for the read chain to end; the frames are kept.
    void open(int scale);
    QLineEdit* box(int k) { return Ctl<QLineEdit>(form, QStringLiteral("TxtDCansd(%1)").arg(k)); }
    QCheckBox* check(int i) { return Ctl<QCheckBox>(form, QStringLiteral("Check1(%1)").arg(i)); }
    QLabel* label(const char* name) { return Ctl<QLabel>(form, QLatin1String(name)); }
    void edit(const QStringList& edits)  // "box=text"
    {
        for (const QString& e : edits)
            box(e.section('=', 0, 0).toInt())->setText(e.section('=', 1));
    }
    void seed(int scale, const QList<int>& words, int first = 0, int second = 0)
    {
        for (int k = 0; k < words.size(); ++k)
            h->sim.setWord(300 + 15 * scale + k, short(words[k]));
        h->sim.setByteAt(62 + scale, quint8(first));
        h->sim.setByteAt(63 + scale, quint8(second));
    }
    void clickOk() { ClickOn(Ctl<QWidget>(form, QStringLiteral("ImgBdOk"))); }
    ConsoleHarness* h = nullptr;
    QWidget* form = nullptr;
};

void CansdTest::open(int scale)
{
    ScaleNo = short(scale);
    ParamDevice = QLatin1String(kScaleDevices[scale].param);
    OptionDevice = QLatin1String(kScaleDevices[scale].option);
    if (!Link().portOpen())
        h->connectLink();
    Forms::show(QStringLiteral("Cansd"));
    form = Forms::loaded(QStringLiteral("Cansd"));
    QVERIFY(form);
    auto* slot = Ctl<QLineEdit>(form, QStringLiteral("TxtSRead"));
    QTRY_VERIFY_WITH_TIMEOUT(slot->text().size() == 4 && SendFlag && StepNo == 10, 3000);
}

void CansdTest::readChainFillsBoxesAndOptions_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QString>("boxes");
    const QString d0 = "0.3|1.5|4|1234|-5|7|300|100|25|500|60|61|62|350|-25536";
    const QString d1 = "0.3|1.5|4|123.4|-0.5|0.7|30.0|10.0|2.5|50.0|6.0|6.1|6.2|35.0|-2553.6";
    const QString d2 = "0.3|1.5|4|12.34|-0.05|0.07|3.00|1.00|0.25|5.00|0.60|0.61|0.62|3.50|-255.36";
    QTest::newRow("aggregate 1, record mode kept apart") << 0 << d0;
    QTest::newRow("water") << 7 << d1;
    QTest::newRow("cement") << 8 << d0;
    QTest::newRow("powder") << 9 << d1;
    QTest::newRow("spare two-material") << 10 << d1;
    QTest::newRow("spare additive") << 13 << d2;
}

void CansdTest::readChainFillsBoxesAndOptions()
{
    QFETCH(int, scale);
    QFETCH(QString, boxes);
    Agg1RecordMode = QStringLiteral("1");  // scale 0 shows mode one whatever S504 holds
    seed(scale, kRaw, 0x5A, 0xC3);
    open(scale);
    QCOMPARE(h->takeFrames(), (QStringList{blockFrame('0', scale), optionFrame('0', scale)}));
    QStringList shown;
    for (int k = 0; k < 15; ++k)
        shown << box(k)->text();
    QCOMPARE(shown.join('|'), boxes);
    // Check1(0..15), 1 for ticked. Image "5AC3": bits 0 to 3 are 1,0,1,0 and bits 4 to 7 are 1,1,0,0.
    QString state;
    for (int i = 0; i < 16; ++i)
        state += check(i)->isChecked() ? '1' : '0';
    QCOMPARE(state, scale == 0 ? "1001100101100101" : "1001100110100101");
}

void CansdTest::blockWriteSendsOneFrame_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("edits");  // "box=text"; after a default, the text shown
    QTest::addColumn<QList<int>>("words");
    // Hidden rows hold 0 and go back as 0.
    QTest::newRow("aggregate, time rows in tenths") << 0 << "ImgBdOk" << QStringList{"0=1.26", "2=4", "3=150"}
        << QList<int>{13, 3, 40, 150, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0};
    QTest::newRow("additive, two decimals") << 11 << "ImgBdOk" << QStringList{"3=0.456", "13=1.5"}
        << QList<int>{3, 3, 50, 46, 20, 50, 200, 20, 20, 1000, 50, 0, 0, 150, 0};
    // No check and no second question: the defaults go straight to the controller.
    QTest::newRow("water defaults: 3.0, stored as 30") << 7 << "cmdDefault" << QStringList{"10=3.0"}
        << QList<int>{3, 3, 50, 200, 60, 200, 1000, 50, 50, 500, 30, 30, 30, 250, 30};
    QTest::newRow("additive defaults: 0.50, stored as 50") << 11 << "cmdDefault" << QStringList{"3=0.50"}
        << QList<int>{3, 3, 50, 50, 20, 50, 200, 20, 20, 1000, 50, 50, 50, 200, 50};
}

void CansdTest::blockWriteSendsOneFrame()
{
    QFETCH(int, scale);
    QFETCH(QString, button);
    QFETCH(QStringList, edits);
    QFETCH(QList<int>, words);
    const bool defaults = button == "cmdDefault";
    seed(scale, scale == 0 ? kAgg : QList<int>{3, 3, 50, 50, 20, 50, 200, 20, 20, 1000, 50, 0, 0, 200, 0});
    open(scale);
    h->takeFrames();
    if (!defaults)
        edit(edits);
    MbAnswerer mb;
    ClickOn(Ctl<QWidget>(form, button));
    QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
    QCOMPARE(mb.texts, QStringList{defaults ? QStringLiteral("是否要初始化参数?") : QStringLiteral("是否设定当前参数?")});
    QCOMPARE(h->takeFrames(), QStringList{blockFrame('1', scale, WordsHex(words))});
    for (const QString& e : defaults ? edits : QStringList())
        QCOMPARE(box(e.section('=', 0, 0).toInt())->text(), e.section('=', 1));
}

void CansdTest::checkStopsAtFirstFault_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QString>("message");  // empty: the check passes and the question comes
    QTest::addColumn<int>("focus");  // -1: none, -2: the box can't take it and the fault is logged
    const QString agg = "0=0.3,1=0.3,2=5,3=50,4=20,5=30,6=300,7=100,8=30,9=500,10=60,11=0,12=0,13=350,14=0";
    const QString cem = "0=0.3,1=0.3,2=5,3=25,4=10,5=20,6=300,7=20,8=8,9=100,10=20,11=20,12=20,13=20,14=5";
    const QString add = "0=0.3,1=0.3,2=5,3=0.50,4=0.20,5=0.50,6=2.00,7=0.20,8=0.20,9=1.00,10=0.50,11=0,"
                        "12=0.50,13=2.00,14=0";
    auto rows = [](const QString& base, const QString& more) { return (base + ',' + more).split(','); };
    QTest::newRow("box 2 refuses 12") << 0 << rows(agg, "2=12") << "请检查!卸料延时控制时间的范围为:(0-9)S" << 2;
    QTest::newRow("range fault in box 14 hides a relation fault")
        << 8 << rows(cem, "5=5,14=600") << "请检查!慢速配料值范围为:((1-500)Kg" << 14;
    QTest::newRow("hidden box 14 of aggregates never tested") << 0 << rows(agg, "14=9999") << "" << -1;
    QTest::newRow("hidden box 11 is tested only while shown") << 0 << rows(agg, "11=9999") << "" << -1;
    QTest::newRow("fourth material of the cement scale")
        << 8 << rows(cem, "13=190") << "请检查!M4计量落差调整值为:(0-100)Kg" << 13;
    QTest::newRow("a hidden box that is always tested")
        << 6 << QStringLiteral("0=0.3,1=0.3,2=5,3=25,4=10,5=20,6=300,7=20,8=8,9=50,10=999").split(',')
        << "请检查!计量落差调整值为:(0-50)Kg" << -2;
    QTest::newRow("additive second material only warns") << 11 << rows(add, "9=1.00,12=5.00") << "" << -1;
}

void CansdTest::checkStopsAtFirstFault()
{
    QFETCH(int, scale);
    QFETCH(QStringList, edits);
    QFETCH(QString, message);
    QFETCH(int, focus);
    if (scale == 8)
        BinName[12] = QStringLiteral("M4");  // the fourth material is named, so box 13 shows
    open(scale);
    h->takeFrames();
    edit(edits);
    MbAnswerer mb;
    mb.queue(!message.isEmpty());  // No to the question: nothing is written either way
    clickOk();
    QTRY_COMPARE_WITH_TIMEOUT(mb.texts.size(), 1, 2000);
    QCOMPARE(mb.texts.first(), message.isEmpty() ? QStringLiteral("是否设定当前参数?") : message);
    QTest::qWait(20);
    QVERIFY(h->takeFrames().isEmpty());
    if (focus >= 0)
        QCOMPARE(form->focusWidget(), box(focus));
    QFile log(ErrorLogPath(QDate::currentDate()));
    QCOMPARE(log.open(QIODevice::ReadOnly) && log.readAll().contains("EnterChecked"), focus == -2);
}

void CansdTest::liveWarningOnPageClick()
{
    // The additive scales warn of the second material's relation but do not refuse it.
    open(11);
    edit({"9=1.00", "10=0.5", "12=5.00"});
    QWidget* page = Ctl<QWidget>(form, "picCansd(0)");
    QTest::mouseClick(page, Qt::LeftButton, {}, QPoint(5, page->height() - 5));
    QCOMPARE(label("lblCheckTip")->isVisibleTo(form) ? label("lblCheckTip")->text() : QString(),
             QStringLiteral("M2落差调整值不应大于落差调整最大值!"));
}

void CansdTest::unsavedQuestionOnReturn_data()
{
    QTest::addColumn<int>("after");  // after an edit: 0 nothing, 1 a write, 2 a write and a key
    QTest::addColumn<bool>("asked");
    QTest::newRow("edited, not written") << 0 << true;
    QTest::newRow("written and acknowledged") << 1 << false;
    QTest::newRow("a key after the write") << 2 << true;
}

void CansdTest::unsavedQuestionOnReturn()
{
    QFETCH(int, after);
    QFETCH(bool, asked);
    seed(0, kAgg);
    open(0);
    box(3)->setText(QStringLiteral("60"));
    MbAnswerer mb;
    if (after > 0) {
        clickOk();
        QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
    }
    if (after == 2)
        QTest::keyClick(box(5), Qt::Key_Shift);
    mb.texts.clear();
    mb.queue(false);  // No: stay on the form
    ClickOn(Ctl<QWidget>(form, "ImgReturn"));
    QTest::qWait(20);
    QCOMPARE(mb.texts, asked ? QStringList{QStringLiteral("参数更改后未设定，是否返回?")} : QStringList{});
    QCOMPARE(Forms::loaded("Cansd") != nullptr, asked);
}

void CansdTest::nakShowsRetryThenSuccess()
{
    // Connected before the console, so it sees the caption as each reply arrives.
    QStringList seen;
    connect(&h->sim, &plcsim::Controller::reply, this, [&] {
        if (form)
            seen << label("LbLCssdS")->text() + (TextColor(label("LbLCssdS")) == Qt::red ? "/red" : "/green");
    });
    seed(0, kAgg);
    open(0);
    h->takeFrames();
    seen.clear();
    h->sim.injectFault(plcsim::Fault::Nak, 1);
    MbAnswerer mb;
    clickOk();
    QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
    QCOMPARE(h->takeFrames(), QStringList(2, blockFrame('1', 0, WordsHex(kAgg))));
    QCOMPARE(seen, (QStringList{"正在设定参数,请稍候....../red", "正在尝试继续参数设定!/red"}));
    QCOMPARE(label("LbLCssdS")->text(), QStringLiteral("参数设定成功!"));
    QCOMPARE(TextColor(label("LbLCssdS")), kDarkGreen);
}

void CansdTest::optionClickWritesOneFrame_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<int>("box");
    QTest::addColumn<QString>("image");
    // Read as "5AC3"; meanwhile the neighbours' digits change to "FF" in the controller.
    QTest::newRow("automatic fall adjustment") << 1 << 1 << "4AC3";
    QTest::newRow("the unreachable bit 7") << 1 << 14 << "5ACB";
    QTest::newRow("record mode of scale 1 is bit 4") << 1 << 9 << "5AC2";
    QTest::newRow("record mode of scale 0 kept apart") << 0 << 9 << "5AC3";
}

void CansdTest::optionClickWritesOneFrame()
{
    QFETCH(int, scale);
    QFETCH(int, box);
    QFETCH(QString, image);
    Agg1RecordMode = QStringLiteral("0");
    seed(scale, {}, 0x5A, 0xC3);
    open(scale);
    h->takeFrames();
    seed(scale, {}, 0x5F, 0xF3);
    check(box)->click();
    QTRY_VERIFY_WITH_TIMEOUT(OptionDone, 3000);
    QCOMPARE(h->takeFrames(), QStringList{optionFrame('1', scale, image)});
    QCOMPARE(label("LblTzxxTip")->text(), QStringLiteral("选项更改完成!"));
    QCOMPARE(TextColor(label("LblTzxxTip")), kDarkGreen);
    if (scale == 0)
        QCOMPARE(Agg1RecordMode, QStringLiteral("1"));
}

QTEST_MAIN(CansdTest)
#include "cansd_test.moc"
