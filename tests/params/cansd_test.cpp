#include "param_test_util.h"
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

namespace {
const QList<int> kRaw = {3, 15, 40, 1234, -5, 7, 300, 100, 25, 500, 60, 61, 62, 350, -25536};

QString readWords(int scale) { return Frame(QStringLiteral("0%1").arg(0x1000 + 2 * (300 + 15 * scale), 4, 16).toUpper() + "1E"); }
QString readOptions(int scale) { return Frame(QStringLiteral("0%1").arg(62 + scale, 4, 16, QLatin1Char('0')).toUpper() + "02"); }
QString writeWords(int scale, const QList<int>& words)
{
    return Frame(QStringLiteral("1%1").arg(0x1000 + 2 * (300 + 15 * scale), 4, 16).toUpper() + "1E" + WordsHex(words));
}
QString writeOptions(int scale, const QString& image)
{
    return Frame(QStringLiteral("1%1").arg(62 + scale, 4, 16, QLatin1Char('0')).toUpper() + "02" + image);
}
}  // namespace

class CansdTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterParamsForms(); }
    void init() { h = new ConsoleHarness; }
    void cleanup() { delete h; form = nullptr; }

    void readChainFillsBoxesAndOptions_data();
    void readChainFillsBoxesAndOptions();
    void rowsFollowTheScale_data();
    void rowsFollowTheScale();
    void writeSendsOneBlock_data();
    void writeSendsOneBlock();
    void defaultsAreFormattedAndScaled_data();
    void defaultsAreFormattedAndScaled();
    void checkStopsAtFirstFault_data();
    void checkStopsAtFirstFault();
    void liveWarningOnPageClick_data();
    void liveWarningOnPageClick();
    void keyFilter_data();
    void keyFilter();
    void outOfRangeMarkOnLeaving_data();
    void outOfRangeMarkOnLeaving();
    void unsavedQuestionOnReturn_data();
    void unsavedQuestionOnReturn();
    void nakShowsRetryThenSuccess();
    void optionClickWritesOneFrame_data();
    void optionClickWritesOneFrame();
    void optionClickBeforeReadOpensOneBox();

private:
    // Opens Cansd as the menu does and waits for the read chain to end.
    void open(int scale);
    QLineEdit* box(int k) { return Ctl<QLineEdit>(form, QStringLiteral("TxtDCansd(%1)").arg(k)); }
    QCheckBox* check(int i) { return Ctl<QCheckBox>(form, QStringLiteral("Check1(%1)").arg(i)); }
    void seedBlock(int scale, const QList<int>& words)
    {
        for (int k = 0; k < words.size(); ++k)
            h->sim.setWord(300 + 15 * scale + k, short(words[k]));
    }
    void seedOptions(int scale, int first, int second)
    {
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
    ScaleTitle = ScaleName[scale] + QStringLiteral("参数设定");
    ScaleCaption = ScaleName[scale];
    ParamDevice = QLatin1String(kScaleDevices[scale].param);
    OptionDevice = QLatin1String(kScaleDevices[scale].option);
    if (!Link().portOpen())
        h->connectLink();
    Forms::show(QStringLiteral("Cansd"));
    form = Forms::loaded(QStringLiteral("Cansd"));
    QVERIFY(form);
    auto* slot = Ctl<QLineEdit>(form, QStringLiteral("TxtSRead"));
    QTRY_VERIFY_WITH_TIMEOUT(slot->text().size() == 4 && SendFlag && int(StepNo) == 10, 3000);
}

void CansdTest::readChainFillsBoxesAndOptions_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QString>("boxes");
    QTest::addColumn<QString>("ticks");  // Check1(0..15), 1 for ticked
    const QString d0 = "0.3|1.5|4|1234|-5|7|300|100|25|500|60|61|62|350|-25536";
    const QString d1 = "0.3|1.5|4|123.4|-0.5|0.7|30.0|10.0|2.5|50.0|6.0|6.1|6.2|35.0|-2553.6";
    const QString d2 = "0.3|1.5|4|12.34|-0.05|0.07|3.00|1.00|0.25|5.00|0.60|0.61|0.62|3.50|-255.36";
    // Image "5AC3": bits 0 to 3 are 1,0,1,0 and bits 4 to 7 are 1,1,0,0.
    QTest::newRow("aggregate 1, record mode kept apart") << 0 << d0 << "1001100101100101";
    QTest::newRow("water") << 7 << d1 << "1001100110100101";
    QTest::newRow("cement") << 8 << d0 << "1001100110100101";
    QTest::newRow("powder") << 9 << d1 << "1001100110100101";
    QTest::newRow("spare two-material") << 10 << d1 << "1001100110100101";
    QTest::newRow("spare additive") << 13 << d2 << "1001100110100101";
}

void CansdTest::readChainFillsBoxesAndOptions()
{
    QFETCH(int, scale);
    QFETCH(QString, boxes);
    QFETCH(QString, ticks);
    Agg1RecordMode = QStringLiteral("1");  // scale 0 shows mode one whatever S504 holds
    seedBlock(scale, kRaw);
    seedOptions(scale, 0x5A, 0xC3);
    open(scale);
    QCOMPARE(h->takeFrames(), (QStringList{readWords(scale), readOptions(scale)}));
    QStringList shown;
    for (int k = 0; k < 15; ++k)
        shown << box(k)->text();
    QCOMPARE(shown.join('|'), boxes);
    QCOMPARE(Ctl<QLineEdit>(form, "TxtSRead")->text(), QStringLiteral("5AC3"));
    QString state;
    for (int i = 0; i < 16; ++i)
        state += check(i)->isChecked() ? '1' : '0';
    QCOMPARE(state, ticks);
    QVERIFY(OptionDone);
}

void CansdTest::rowsFollowTheScale_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QString>("captions");  // boxes 10 to 14, "-" for a hidden row
    QTest::addColumn<int>("rowOneBox");     // the box standing in the first metering row
    QTest::addColumn<QString>("hint3");
    QTest::newRow("aggregate") << 0 << "落差调整值|-|-|慢速配料值|-" << 13 << "输入范围为:(20-200)Kg";
    QTest::newRow("water") << 7 << "落差调整值|-|-|慢速配料值|-" << 13 << "输入范围为:(10.0-50.0)Kg";
    QTest::newRow("cement, no fourth material") << 8 << "水泥M1落差调整值|水泥M2落差调整值|水泥M3落差调整值|-|慢速配料值"
                                                << 14 << "输入范围为:(10-100)Kg";
    QTest::newRow("powder") << 9 << "粉灰M1落差调整值|粉灰M2落差调整值|-|-|慢速配料值" << 14 << "输入范围为:(10-100)Kg";
    QTest::newRow("spare two-material 10") << 10 << "-|-|慢速配料值|-|-" << 12 << "输入范围为:(10-100)Kg";
    QTest::newRow("additive") << 11 << "M1落差调整值|-|M2落差调整值|慢速配料值|-" << 13 << "输入范围为:(0.20-1.00)Kg";
}

void CansdTest::rowsFollowTheScale()
{
    QFETCH(int, scale);
    QFETCH(QString, captions);
    QFETCH(int, rowOneBox);
    QFETCH(QString, hint3);
    open(scale);
    QStringList got;
    for (int k = 10; k < 15; ++k)
        got << (box(k)->isHidden() ? QStringLiteral("-")
                                   : Ctl<QLabel>(form, QStringLiteral("LblCansd(%1)").arg(k))->text());
    QCOMPARE(got.join('|'), captions);
    // The first metering row stands level with the first discharge row (box 3).
    QCOMPARE(box(rowOneBox)->y(), box(3)->y());
    QCOMPARE(box(3)->toolTip(), hint3);
    const bool water = scale == 7;
    QCOMPARE(check(6)->isHidden(), water);
    QCOMPARE(Ctl<QWidget>(form, "ImgHelp(4)")->isHidden(), water);
}

void CansdTest::writeSendsOneBlock_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QStringList>("edits");  // "box=text"
    QTest::addColumn<QList<int>>("words");
    QTest::addColumn<QString>("box2");
    QTest::newRow("aggregate, time rows in tenths")
        << 0 << QStringList{"0=1.26", "2=4", "3=150"}
        << QList<int>{13, 3, 40, 150, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0} << "4";
    QTest::newRow("additive, two decimals")
        << 11 << QStringList{"3=0.456", "13=1.5"}
        << QList<int>{3, 3, 50, 46, 20, 50, 200, 20, 20, 1000, 50, 0, 0, 150, 0} << "5";
}

void CansdTest::writeSendsOneBlock()
{
    QFETCH(int, scale);
    QFETCH(QStringList, edits);
    QFETCH(QList<int>, words);
    QFETCH(QString, box2);
    // The controller holds sane values for the scale; hidden rows hold 0 and go back as 0.
    const QList<int> start = scale == 0 ? QList<int>{3, 3, 50, 500, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0}
                                        : QList<int>{3, 3, 50, 50, 20, 50, 200, 20, 20, 1000, 50, 0, 0, 200, 0};
    seedBlock(scale, start);
    open(scale);
    h->takeFrames();
    for (const QString& e : edits)
        box(e.section('=', 0, 0).toInt())->setText(e.section('=', 1));
    MbAnswerer mb;
    clickOk();
    QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
    QCOMPARE(mb.texts, QStringList{QStringLiteral("是否设定当前参数?")});
    QCOMPARE(h->takeFrames(), QStringList{writeWords(scale, words)});
    auto* status = Ctl<QLabel>(form, "LbLCssdS");
    QCOMPARE(status->text(), QStringLiteral("参数设定成功!"));
    QCOMPARE(TextColor(status), QColor(0, 0x80, 0));
    QCOMPARE(box(2)->text(), box2);
    // A read after the write gives back what was written.
    for (int k = 0; k < 15; ++k)
        QCOMPARE(int(h->sim.word(300 + 15 * scale + k)), words[k]);
    QStringList before;
    for (int k = 0; k < 15; ++k)
        before << box(k)->text();
    ClickOn(Ctl<QWidget>(form, "cmdRefresh"));
    QTRY_VERIFY_WITH_TIMEOUT(SendFlag && int(StepNo) == 10, 3000);
    QStringList after;
    for (int k = 0; k < 15; ++k)
        after << box(k)->text();
    QCOMPARE(after, before);
}

void CansdTest::defaultsAreFormattedAndScaled_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QList<int>>("words");
    QTest::addColumn<int>("k");
    QTest::addColumn<QString>("shown");
    QTest::newRow("water: 3 becomes 3.0, stored as 30")
        << 7 << QList<int>{3, 3, 50, 200, 60, 200, 1000, 50, 50, 500, 30, 30, 30, 250, 30} << 10 << "3.0";
    QTest::newRow("additive: 0.5 becomes 0.50, stored as 50")
        << 11 << QList<int>{3, 3, 50, 50, 20, 50, 200, 20, 20, 1000, 50, 50, 50, 200, 50} << 3 << "0.50";
    QTest::newRow("cement: box 13 is 20, box 14 is 5")
        << 8 << QList<int>{3, 3, 50, 25, 10, 20, 300, 20, 8, 100, 20, 20, 20, 20, 5} << 14 << "5";
}

void CansdTest::defaultsAreFormattedAndScaled()
{
    QFETCH(int, scale);
    QFETCH(QList<int>, words);
    QFETCH(int, k);
    QFETCH(QString, shown);
    seedOptions(scale, 0x12, 0x34);
    open(scale);
    h->takeFrames();
    MbAnswerer mb;
    ClickOn(Ctl<QWidget>(form, "cmdDefault"));
    QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
    // No check and no second question: the defaults go straight to the controller.
    QCOMPARE(mb.texts, QStringList{QStringLiteral("是否要初始化参数?")});
    QCOMPARE(h->takeFrames(), QStringList{writeWords(scale, words)});
    QCOMPARE(box(k)->text(), shown);
    QCOMPARE(int(h->sim.byteAt(62 + scale)), 0x12);  // the option bits are left as they are
}

void CansdTest::checkStopsAtFirstFault_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QString>("message");  // empty: the check passes and the question comes
    QTest::addColumn<int>("focus");  // -1: none, -2: the box can't take it and the fault is logged
    const QString agg = "0=0.3,1=0.3,2=5,3=50,4=20,5=30,6=300,7=100,8=30,9=500,10=60,11=0,12=0,13=350,14=0";
    const QString cem = "0=0.3,1=0.3,2=5,3=25,4=10,5=20,6=300,7=20,8=8,9=100,10=20,11=20,12=20,13=20,14=5";
    const QString add = "0=0.3,1=0.3,2=5,3=0.50,4=0.20,5=0.50,6=2.00,7=0.20,8=0.20,9=1.00,10=0.50,11=0,12=0.50,13=2.00,14=0";
    auto rows = [](const QString& base, const QString& more) { return (base + ',' + more).split(','); };
    QTest::newRow("box 2 refuses 12") << 0 << rows(agg, "2=12") << "请检查!卸料延时控制时间的范围为:(0-9)S" << 2;
    QTest::newRow("box 3 at its upper limit passes") << 0 << rows(agg, "3=200") << "" << -1;
    QTest::newRow("first relation before the second") << 0 << rows(agg, "5=10,6=200,7=250")
                                                       << "零位范围不应大于卸料允许误差值!" << 4;
    QTest::newRow("range fault in box 14 hides a relation fault")
        << 8 << rows(cem, "5=5,14=600") << "请检查!慢速配料值范围为:((1-500)Kg" << 14;
    QTest::newRow("hidden box 14 of an aggregate scale is never tested") << 0 << rows(agg, "14=9999") << "" << -1;
    QTest::newRow("hidden box 11 is tested only while shown") << 0 << rows(agg, "11=9999") << "" << -1;
    QTest::newRow("fourth material of the cement scale") << 8 << rows(cem, "13=190") << "请检查!M4计量落差调整值为:(0-100)Kg"
                                                         << 13;
    QTest::newRow("a hidden box that is always tested") << 6 << QStringList{"0=0.3", "1=0.3", "2=5", "3=25", "4=10", "5=20",
                                                                            "6=300", "7=20", "8=8", "9=50", "10=999"}
                                                        << "请检查!计量落差调整值为:(0-50)Kg" << -2;
    QTest::newRow("relation of the third material") << 8 << rows(cem, "9=30,10=20,11=20,12=40")
                                                    << "M3落差调整值不应大于落差调整最大值!" << 12;
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
    form->activateWindow();
    for (const QString& e : edits)
        box(e.section('=', 0, 0).toInt())->setText(e.section('=', 1));
    MbAnswerer mb;
    mb.queue(message.isEmpty() ? false : true);  // No to the question: nothing is written either way
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

void CansdTest::liveWarningOnPageClick_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QString>("warning");  // empty: hidden
    QTest::newRow("zero range above the tolerance") << 0 << QStringList{"4=40", "5=30", "6=10", "7=20"}
                                                    << "零位范围不应大于卸料允许误差值!";
    QTest::newRow("additive second material") << 11 << QStringList{"9=1.00", "10=0.5", "12=5.00"}
                                              << "M2落差调整值不应大于落差调整最大值!";
    QTest::newRow("nothing wrong") << 0 << QStringList{"4=20", "5=30", "6=300", "7=100", "9=500", "10=60"} << "";
}

void CansdTest::liveWarningOnPageClick()
{
    QFETCH(int, scale);
    QFETCH(QStringList, edits);
    QFETCH(QString, warning);
    open(scale);
    for (const QString& e : edits)
        box(e.section('=', 0, 0).toInt())->setText(e.section('=', 1));
    QWidget* page = Ctl<QWidget>(form, "picCansd(0)");
    QTest::mouseClick(page, Qt::LeftButton, {}, QPoint(5, page->height() - 5));
    auto* tip = Ctl<QLabel>(form, "lblCheckTip");
    QCOMPARE(tip->isHidden(), warning.isEmpty());
    if (!warning.isEmpty())
        QCOMPARE(tip->text(), warning);
}

void CansdTest::keyFilter_data()
{
    QTest::addColumn<int>("k");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("text");
    QTest::newRow("box 2 takes no point") << 2 << "1.5" << "15";
    QTest::newRow("one point only") << 3 << "1..5" << "1.5";
    QTest::newRow("letters are swallowed") << 3 << "a1b-2" << "12";
    QTest::newRow("a leading point gets a zero") << 4 << ".5" << "0.5";
}

void CansdTest::keyFilter()
{
    QFETCH(int, k);
    QFETCH(QString, typed);
    QFETCH(QString, text);
    open(0);
    box(k)->clear();
    QTest::keyClicks(box(k), typed);
    QCOMPARE(box(k)->text(), text);
}

void CansdTest::outOfRangeMarkOnLeaving_data()
{
    QTest::addColumn<int>("k");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("marked");
    QTest::newRow("upper limit") << 3 << "200" << "200" << false;
    QTest::newRow("one above") << 3 << "201" << "201" << true;
    QTest::newRow("rounded on leaving") << 0 << "1.26" << "1.3" << false;
    QTest::newRow("below the lower limit") << 9 << "99" << "99" << true;
}

void CansdTest::outOfRangeMarkOnLeaving()
{
    QFETCH(int, k);
    QFETCH(QString, typed);
    QFETCH(QString, shown);
    QFETCH(bool, marked);
    open(0);
    box(k)->setText(typed);
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QCoreApplication::sendEvent(box(k), &out);
    QCOMPARE(box(k)->text(), shown);
    QCOMPARE(!Ctl<QLabel>(form, QStringLiteral("lblOutRank(%1)").arg(k))->isHidden(), marked);
}

void CansdTest::unsavedQuestionOnReturn_data()
{
    QTest::addColumn<bool>("edit");
    QTest::addColumn<bool>("write");
    QTest::addColumn<bool>("keyAfter");
    QTest::addColumn<bool>("asked");
    QTest::newRow("edited, not written") << true << false << false << true;
    QTest::newRow("written and acknowledged") << true << true << false << false;
    QTest::newRow("a key after the write") << true << true << true << true;
    QTest::newRow("nothing changed") << false << false << false << false;
}

void CansdTest::unsavedQuestionOnReturn()
{
    QFETCH(bool, edit);
    QFETCH(bool, write);
    QFETCH(bool, keyAfter);
    QFETCH(bool, asked);
    seedBlock(0, {3, 3, 50, 50, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0});
    open(0);
    if (edit)
        box(3)->setText(QStringLiteral("60"));
    MbAnswerer mb;
    if (write) {
        clickOk();
        QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
    }
    if (keyAfter)
        QTest::keyClick(box(5), Qt::Key_Shift);
    mb.texts.clear();
    mb.queue(false);  // No: stay on the form
    ClickOn(Ctl<QWidget>(form, "ImgReturn"));
    QTest::qWait(20);
    const QString question = QStringLiteral("参数更改后未设定，是否返回?");
    QCOMPARE(mb.texts, asked ? QStringList{question} : QStringList{});
    QCOMPARE(Forms::loaded("Cansd") != nullptr, asked);
}

void CansdTest::nakShowsRetryThenSuccess()
{
    // Catches the caption at the moment each reply reaches the console.
    QStringList seen;
    connect(&h->sim, &plcsim::Controller::reply, this, [&] {
        if (auto* l = Forms::loaded("Cansd") ? Ctl<QLabel>(Forms::loaded("Cansd"), "LbLCssdS") : nullptr)
            seen << l->text() + (TextColor(l) == QColor(0xFF, 0, 0) ? "/red" : "/green");
    });
    seedBlock(0, {3, 3, 50, 50, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0});
    open(0);
    h->takeFrames();
    seen.clear();
    h->sim.injectFault(plcsim::Fault::Nak, 1);
    MbAnswerer mb;
    clickOk();
    QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
    const QStringList frames = h->takeFrames();
    QCOMPARE(frames.size(), 2);
    QCOMPARE(frames[1], frames[0]);
    QCOMPARE(seen, (QStringList{"正在设定参数,请稍候....../red", "正在尝试继续参数设定!/red"}));
    auto* status = Ctl<QLabel>(form, "LbLCssdS");
    QCOMPARE(status->text(), QStringLiteral("参数设定成功!"));
    QCOMPARE(TextColor(status), QColor(0, 0x80, 0));
}

void CansdTest::optionClickWritesOneFrame_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<int>("box");
    QTest::addColumn<QString>("image");
    QTest::addColumn<QString>("recordMode");
    // Read as "5AC3"; meanwhile the neighbours' digits change to "FF" in the controller.
    QTest::newRow("automatic fall adjustment") << 1 << 1 << "4AC3" << "";
    QTest::newRow("click on the ticked box switches the pair") << 1 << 0 << "4AC3" << "";
    QTest::newRow("deduction off") << 1 << 6 << "DAC3" << "";
    QTest::newRow("weight change detection off") << 1 << 12 << "5AC7" << "";
    QTest::newRow("the unreachable bit 7") << 1 << 14 << "5ACB" << "";
    QTest::newRow("record mode of scale 1 is bit 4") << 1 << 9 << "5AC2" << "";
    QTest::newRow("record mode of scale 0 kept apart") << 0 << 9 << "5AC3" << "1";
}

void CansdTest::optionClickWritesOneFrame()
{
    QFETCH(int, scale);
    QFETCH(int, box);
    QFETCH(QString, image);
    QFETCH(QString, recordMode);
    Agg1RecordMode = QStringLiteral("0");
    seedOptions(scale, 0x5A, 0xC3);
    open(scale);
    h->takeFrames();
    h->sim.setByteAt(62 + scale, 0x5F);
    h->sim.setByteAt(63 + scale, 0xF3);
    check(box)->click();
    QTRY_VERIFY_WITH_TIMEOUT(OptionDone, 3000);
    QCOMPARE(h->takeFrames(), QStringList{writeOptions(scale, image)});
    auto* tip = Ctl<QLabel>(form, "LblTzxxTip");
    QCOMPARE(tip->text(), QStringLiteral("选项更改完成!"));
    QCOMPARE(TextColor(tip), QColor(0, 0x80, 0));
    if (!recordMode.isEmpty())
        QCOMPARE(Agg1RecordMode, recordMode);
    // The controller holds the image as written, neighbours' digits included.
    QCOMPARE(QStringLiteral("%1%2").arg(h->sim.byteAt(62 + scale), 2, 16, QLatin1Char('0')).arg(h->sim.byteAt(63 + scale), 2, 16, QLatin1Char('0')).toUpper(),
             image);
}

void CansdTest::optionClickBeforeReadOpensOneBox()
{
    h->sim.injectFault(plcsim::Fault::Unplugged);
    ScaleNo = 2;
    ParamDevice = QLatin1String(kScaleDevices[2].param);
    OptionDevice = QLatin1String(kScaleDevices[2].option);
    h->connectLink();
    PortNo = 3;
    Forms::show(QStringLiteral("Cansd"));
    form = Forms::loaded(QStringLiteral("Cansd"));
    Link().Timer2.stop();  // the read is given up
    StepNo = 444;
    SendFlag = true;
    h->takeFrames();
    MbAnswerer mb;
    check(1)->click();
    QTRY_COMPARE_WITH_TIMEOUT(mb.texts.size(), 1, 2000);
    check(3)->click();
    QTest::qWait(30);
    QCOMPARE(mb.texts, QStringList{QStringLiteral("通讯发生错误请检查：\n1、下位机是否已断电；\n2、下位机是否正常运行；\n"
                                                  "3、通讯线是否接在端口:Com3,且接触良好。")});
    QCOMPARE(mb.errorIcons, QList<bool>{true});
    QVERIFY(h->takeFrames().isEmpty());
    QVERIFY(!OptionDone);
}

QTEST_MAIN(CansdTest)
#include "cansd_test.moc"
