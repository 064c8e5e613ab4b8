#include "test_support.h"

#include "common/error_log.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/form_access.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "shell/app_setup.h"
#include "shell/form_base.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <cmath>

static const QList<int> kRaw = {3, 15, 40, 1234, -5, 7, 300, 100, 25, 500, 60, 61, 62, 350, -25536};
static const QList<int> kAgg = {3, 3, 50, 50, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0};
// The block of the aggregate editor sits where its opener puts it; the tests put it at D100.
static const QList<int> kBlockAG = {50, 3, 4, 5, 6, 50, 50, 20, 30, 30, 30, 30, 500, 500, 500, 500, 60, 60, 60, 60};

// Parameter block of a scale: D300 + 15 words per scale; scale -1 stands for the aggregate editor and its
// 20 words at D100. Option bytes: S500 + scale.
static QString blockFrame(char op, int scale, const QString& data = {})
{
    const int at = scale < 0 ? 100 : 300 + 15 * scale;
    return Frame(op + QString::number(0x1000 + 2 * at, 16).toUpper() + (scale < 0 ? "28" : "1E") + data);
}
static QString optionFrame(char op, int scale, const QString& image = {})
{
    return Frame(op + QStringLiteral("00") + QString::number(62 + std::max(scale, 0), 16).toUpper() + "02" + image);
}

// The parameter editors on the wire: Cansd for one scale, CansdAG for the aggregates' own block.
class CansdTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterParamsForms(); }
    void init() { h = new ConsoleHarness; }
    void cleanup() { delete h; form = nullptr; }

    void readChainThenOptionClick_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<QString>("boxes");
        QTest::addColumn<int>("option");  // the box clicked after the read
        QTest::addColumn<QString>("image");  // written by the click
        const QString d0 = "0.3|1.5|4|1234|-5|7|300|100|25|500|60|61|62|350|-25536";
        const QString d1 = "0.3|1.5|4|123.4|-0.5|0.7|30.0|10.0|2.5|50.0|6.0|6.1|6.2|35.0|-2553.6";
        const QString d2 = "0.3|1.5|4|12.34|-0.05|0.07|3.00|1.00|0.25|5.00|0.60|0.61|0.62|3.50|-255.36";
        // Read as "5AC3"; the neighbours' middle digits then change to "FF" in the controller.
        QTest::newRow("aggregate 1, record mode kept apart") << 0 << d0 << 8 << "5AC3";
        QTest::newRow("water, automatic fall adjustment") << 7 << d1 << 1 << "4AC3";
        QTest::newRow("cement, record mode is bit 4") << 8 << d0 << 9 << "5AC2";
        QTest::newRow("powder, bit 7") << 9 << d1 << 14 << "5ACB";
        QTest::newRow("spare two-material, bit 3") << 10 << d1 << 6 << "DAC3";
        QTest::newRow("spare additive, bit 6") << 13 << d2 << 12 << "5AC7";
        // Bit 4 is an option like the others in the aggregate editor: no record mode kept apart.
        QTest::newRow("aggregate editor") << -1 << "5|0.3|0.4|0.5|0.6|5|50|20|30|30|30|30|500|500|500|500|60|60|60|60"
                                          << 9 << "5AC2";
    }

    void readChainThenOptionClick()
    {
        QFETCH(int, scale);
        QFETCH(QString, boxes);
        QFETCH(int, option);
        QFETCH(QString, image);
        Agg1RecordMode = QStringLiteral("1");  // scale 0 shows mode one whatever S504 holds
        seed(scale, scale < 0 ? kBlockAG : kRaw, 0x5A, 0xC3);
        open(scale);
        QCOMPARE(h->takeFrames(), (QStringList{blockFrame('0', scale), optionFrame('0', scale)}));
        QStringList shown;
        for (int k = 0; k <= boxes.count('|'); ++k)
            shown << box(k)->text();
        QCOMPARE(shown.join('|'), boxes);
        // Check1(0..15), 1 for ticked. Image "5AC3": bits 0 to 3 are 1,0,1,0 and bits 4 to 7 are 1,1,0,0.
        QString state;
        for (int i = 0; i < 16; ++i)
            state += check(i)->isChecked() ? '1' : '0';
        QCOMPARE(state, scale == 0 ? "1001100101100101" : "1001100110100101");

        seed(scale, {}, 0x5F, 0xF3);
        check(option)->click();
        QTRY_COMPARE_WITH_TIMEOUT(label("LblTzxxTip")->text(), QStringLiteral("选项更改完成!"), 3000);
        QCOMPARE(h->takeFrames(), QStringList{optionFrame('1', scale, image)});
        QCOMPARE(TextColor(label("LblTzxxTip")), QColor(0, 0x80, 0));
        QCOMPARE(Agg1RecordMode, scale == 0 ? QStringLiteral("0") : QStringLiteral("1"));
    }

    void blockWrite_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("edits");  // "box=text"; after a default, the text shown
        QTest::addColumn<QList<int>>("words");
        QTest::addColumn<bool>("nak");  // the first write is refused
        // Hidden rows hold 0 and go back as 0.
        QTest::newRow("aggregate, time rows in tenths") << 0 << "ImgBdOk" << QStringList{"0=1.26", "2=4", "3=150"}
            << QList<int>{13, 3, 40, 150, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0} << false;
        // No check and no second question: the defaults go straight to the controller.
        QTest::newRow("water defaults: 3.0, stored as 30") << 7 << "cmdDefault" << QStringList{"10=3.0"}
            << QList<int>{3, 3, 50, 200, 60, 200, 1000, 50, 50, 500, 30, 30, 30, 250, 30} << false;
        QTest::newRow("additive defaults: 0.50, stored as 50") << 11 << "cmdDefault" << QStringList{"3=0.50"}
            << QList<int>{3, 3, 50, 50, 20, 50, 200, 20, 20, 1000, 50, 50, 50, 200, 50} << false;
        QTest::newRow("NAK: the same frame again") << 0 << "ImgBdOk" << QStringList() << kAgg << true;
        // Box 0 shows tenths but is written by the scale's digits (one here); the zero-digit factors are
        // in limitsOfEveryScale.
        QTest::newRow("aggregate editor, one decimal") << -1 << "ImgBdOk" << QStringList{"0=6", "19=70"}
            << QList<int>{60, 3, 4, 5, 6, 50, 500, 200, 300, 300, 300, 300, 5000, 5000, 5000, 5000, 600, 600, 600, 700}
            << false;
    }

    void blockWrite()
    {
        QFETCH(int, scale);
        QFETCH(QString, button);
        QFETCH(QStringList, edits);
        QFETCH(QList<int>, words);
        QFETCH(bool, nak);
        const bool defaults = button == "cmdDefault";
        // Connected before the console, so it sees the caption as each reply arrives.
        QStringList seen;
        connect(&h->sim, &plcsim::Controller::reply, this, [&] { seen << (form ? status() : QString()); });
        seed(scale, scale < 0 ? kBlockAG
                    : scale == 0 ? kAgg : QList<int>{3, 3, 50, 50, 20, 50, 200, 20, 20, 1000, 50, 0, 0, 200, 0});
        open(scale);
        if (scale < 0)
            ScaleDecimals[0] = 1;  // after the read, so that the boxes hold the block as read
        h->takeFrames();
        seen.clear();
        if (!defaults)
            edit(edits);
        if (nak)
            h->sim.injectFault(plcsim::Fault::Nak, 1);
        MbAnswerer mb;
        ClickOn(Ctl<QWidget>(form, button));
        QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
        QCOMPARE(mb.texts, QStringList{defaults ? QStringLiteral("是否要初始化参数?") : QStringLiteral("是否设定当前参数?")});
        QCOMPARE(h->takeFrames(), QStringList(nak ? 2 : 1, blockFrame('1', scale, WordsHex(words))));
        QStringList captions{"正在设定参数,请稍候....../#ff0000"};
        if (nak)
            captions << "正在尝试继续参数设定!/#ff0000";
        QCOMPARE(seen, captions);
        QCOMPARE(status(), QStringLiteral("参数设定成功!/#008000"));
        for (const QString& e : defaults ? edits : QStringList())
            QCOMPARE(box(e.section('=', 0, 0).toInt())->text(), e.section('=', 1));
    }

    void checkStopsAtFirstFault_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<QStringList>("edits");
        QTest::addColumn<QString>("message");  // empty: the check passes and the question comes
        QTest::addColumn<int>("focus");  // -1: none, -2: the box can't take it and the fault is logged
        QTest::addColumn<QString>("hint");  // shown by a click on the page before OK
        const QString agg = "0=0.3,1=0.3,2=5,3=50,4=20,5=30,6=300,7=100,8=30,9=500,10=60,11=0,12=0,13=350,14=0";
        const QString cem = "0=0.3,1=0.3,2=5,3=25,4=10,5=20,6=300,7=20,8=8,9=100,10=20,11=20,12=20,13=20,14=5";
        const QString add = "0=0.3,1=0.3,2=5,3=0.50,4=0.20,5=0.50,6=2.00,7=0.20,8=0.20,9=1.00,10=0.50,11=0,"
                            "12=0.50,13=2.00,14=0";
        auto rows = [](const QString& base, const QString& more) { return (base + ',' + more).split(','); };
        QTest::newRow("box 2 refuses 12") << 0 << rows(agg, "2=12") << "请检查!卸料延时控制时间的范围为:(0-9)S" << 2 << "";
        QTest::newRow("range fault in box 14 hides a relation fault")
            << 8 << rows(cem, "5=5,14=600") << "请检查!慢速配料值范围为:((1-500)Kg" << 14 << "零位范围不应大于卸料允许误差值!";
        // Box 14 is never tested, box 11 only while shown.
        QTest::newRow("hidden boxes 11 and 14 of aggregates") << 0 << rows(agg, "11=9999,14=9999") << "" << -1 << "";
        QTest::newRow("fourth material of the cement scale")
            << 8 << rows(cem, "13=190") << "请检查!M4计量落差调整值为:(0-100)Kg" << 13
            << "M4落差调整值不应大于落差调整最大值!";
        QTest::newRow("a hidden box that is always tested")
            << 6 << QStringLiteral("0=0.3,1=0.3,2=5,3=25,4=10,5=20,6=300,7=20,8=8,9=50,10=999").split(',')
            << "请检查!计量落差调整值为:(0-50)Kg" << -2 << "落差调整值不应大于落差调整最大值!";
        QTest::newRow("additive second material only warns")
            << 11 << rows(add, "9=1.00,12=5.00") << "" << -1 << "M2落差调整值不应大于落差调整最大值!";
        QTest::newRow("aggregate editor: range before relation")
            << -1 << QStringList{"12=100", "16=200", "19=600"} << "请检查!计量落差调整值为:(0-500)Kg" << -1
            << "落差调整值不应大于落差调整最大值!";
        QTest::newRow("aggregate editor: M4 relation")
            << -1 << QStringList{"15=100", "19=101"} << "M4落差调整值不应大于落差调整最大值!" << -1
            << "M4落差调整值不应大于落差调整最大值!";
    }

    void checkStopsAtFirstFault()
    {
        QFETCH(int, scale);
        QFETCH(QStringList, edits);
        QFETCH(QString, message);
        QFETCH(int, focus);
        QFETCH(QString, hint);
        if (scale == 8)
            BinName[12] = QStringLiteral("M4");  // the fourth material is named, so box 13 shows
        if (scale < 0)
            seed(scale, kBlockAG);
        open(scale);
        h->takeFrames();
        edit(edits);
        QWidget* page = Ctl<QWidget>(form, "picCansd(0)");
        QTest::mouseClick(page, Qt::LeftButton, {}, QPoint(5, page->height() - 5));
        QCOMPARE(label("lblCheckTip")->isVisibleTo(form) ? label("lblCheckTip")->text() : QString(), hint);
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

    void unsavedQuestionOnReturn_data()
    {
        QTest::addColumn<int>("after");  // after an edit: 0 nothing, 1 a write, 2 a write and a key
        QTest::addColumn<bool>("asked");
        QTest::newRow("edited, not written") << 0 << true;
        QTest::newRow("written and acknowledged") << 1 << false;
        QTest::newRow("a key after the write") << 2 << true;
    }

    void unsavedQuestionOnReturn()
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

    // The design's table of limits and defaults, each cell "low-high,default", with the message of the
    // blocking check for the rows it tests on that scale (empty: not tested there, shown or not). Scale
    // -1 is the aggregate editor, whose one table serves every scale.
    void limitsOfEveryScale_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<QStringList>("limits");
        QTest::addColumn<QStringList>("messages");
        const QStringList base{"请检查!超扣补秤脉冲时间的范围为:", "请检查!脉冲补称时间的范围为:",
                               "请检查!卸料延时控制时间的范围为:", "请检查!按键归零允许范围为:",
                               "请检查!卸料时的零位范围为:", "请检查!卸料允许误差值范围为:",
                               "请检查!扣称提前量最大值为:", "请检查!扣称提前量调整值为:",
                               "请检查!计量允许误差值为:", "请检查!计量落差调整最大值为:", "请检查!计量落差调整值为:"};
        const QString m2 = "请检查!M2计量落差调整值为:", m3 = "请检查!M3计量落差调整值为:",
                      m4 = "请检查!M4计量落差调整值为:", slow = "请检查!慢速配料值范围为:";
        auto msgs = [&](const QString& r11, const QString& r12, const QString& r13, const QString& r14) {
            return base + QStringList{r11, r12, r13, r14};
        };
        const QStringList aggregate = QString("0.1-2.0,0.3|0.1-2.0,0.3|0-9,5|20-200,50|1-100,20|1-200,30|0-300,300|"
                                              "0-300,100|1-100,30|100-500,500|0-500,60|0-500,60|0-500,60|0-500,350|0-500,60")
                                          .split('|');
        for (int n = 0; n <= 5; ++n)
            QTest::addRow("aggregate %d", n) << n << aggregate << msgs("", "", slow, "");
        QTest::newRow("spare two-material 6")
            << 6
            << QString("0.1-2,0.3|0.1-3.0,0.3|0-9,5|10-100,25|1-50,10|1-100,20|0-300,300|0-300,20|1-50,8|20-50,50|"
                       "0-50,12|0-50,12|0-50,12|0-50,12|1-500,5").split('|')
            << msgs(m2, "", "", "");
        QTest::newRow("water 7")
            << 7
            << QString("0.1-2,0.3|0.1-2.0,0.3|0-9,5|10.0-50.0,20.0|1.0-20.0,6.0|1.0-100.0,20.0|0-100.0,100.0|"
                       "0-100.0,5.0|1.0-50.0,5.0|10.0-50.0,50.0|0-50.0,3|0-50.0,3|0-50.0,3|0.0-100.0,25.0|0-50.0,3")
                   .split('|')
            << msgs("", "", slow, "");
        QTest::newRow("cement 8")
            << 8
            << QString("0.1-2.0,0.3|0.1-3.0,0.3|0-9,5|10-100,25|1-50,10|1-100,20|0-300,300|0-300,20|1-50,8|"
                       "20-100,100|0-100,20|0-100,20|0-100,20|0-100,20|1-500,5").split('|')
            << msgs(m2, m3, m4, slow + "(");
        QTest::newRow("powder 9")
            << 9
            << QString("0.1-2,0.3|0.1-3.0,0.3|0-9,5|10-100,25|1-50,10|1-100,20|0-300,300|0-300,20|1-50,8|"
                       "20-100,100|0-100,12|0-100,12|0-100,12|0-100,12|1-500,5").split('|')
            << msgs(m2, m3, "", slow + "(");
        QTest::newRow("spare two-material 10")
            << 10
            << QString("0.1-2,0.3|0.1-3.0,0.3|0-9,5|10-100,25|1-50,10|1-100,20|0-300,300|0-300,20|1-50,8|20-50,50|"
                       "0-50,12|0-50,12|1-500,5|0-50,12|0-50,12").split('|')
            << msgs(m2, slow, "", "");
        const QStringList additive =
            QString("0.1-2,0.3|0.1-2.0,0.3|0-9,5|0.20-1.00,0.5|0.05-1.00,0.20|0.05-2.00,0.50|0-5.00,2.00|0-5.00,0.20|"
                    "0.05-0.50,0.20|1.00-10.00,10.00|0-10.00,0.50|0-10.00,0.50|0-10.00,0.50|0-5.00,2.00|0-10.00,0.50")
                .split('|');
        for (int n = 11; n <= 13; ++n)
            QTest::addRow("additive %d", n) << n << additive << msgs("", m2, slow, "");
        QStringList ag, agMessages;
        auto agRows = [&](int count, const char* cell, const char* message) {
            for (int i = 0; i < count; ++i) {
                ag << cell;
                agMessages << QString::fromUtf8(message);
            }
        };
        agRows(1, "2-9,5", "请检查!计量延时检查超差时间的范围为:");
        agRows(4, "0.2-2.0,0.3", "请检查!脉冲补称时间的范围为:");
        agRows(1, "0-9,5", "请检查!卸料延时控制时间的范围为:");
        agRows(1, "20-200,50", "请检查!按键归零允许范围为:");
        agRows(1, "5-100,20", "请检查!卸料时的零位范围为:");
        agRows(4, "10-100,30", "请检查!计量允许误差值为:");
        agRows(4, "100-500,500", "请检查!计量落差调整最大值为:");
        agRows(4, "0-500,60", "请检查!计量落差调整值为:");
        QTest::newRow("aggregate editor") << -1 << ag << agMessages;
    }

    // Each limit through the form's own check: the value at the bound passes, one step beyond is refused
    // with the message; each hint names the limits; the defaults reach the controller.
    void limitsOfEveryScale()
    {
        QFETCH(int, scale);
        QFETCH(QStringList, limits);
        QFETCH(QStringList, messages);
        for (QString& name : BinName)  // every material named: each row the scale has is shown
            if (name.isEmpty())
                name = QStringLiteral("料");
        const bool ag = scale < 0;
        open(scale);
        h->takeFrames();
        const int d = ScaleDecimals[size_t(std::max(scale, 0))];
        const int boxes = int(limits.size());
        // The rows in seconds, their steps and register factors; the rest in kilograms by the decimals.
        auto inSeconds = [ag](int k) { return k <= (ag ? 5 : 2); };
        auto step = [&](int k) {
            const bool whole = ag ? (k == 0 || k == 5) : k == 2;
            return whole ? 1.0 : inSeconds(k) ? 0.1 : std::pow(10.0, -d);
        };
        auto factor = [&](int k) { return (ag ? k >= 1 && k <= 5 : k <= 2) ? 10.0 : std::pow(10.0, d); };
        auto setDefaults = [&] {
            for (int k = 0; k < boxes; ++k)
                box(k)->setText(limits[k].section(',', 1));
        };
        MbAnswerer mb;
        // The first box of the OK button: a refusal, or the question, answered No.
        auto firstBox = [&](int k, const QString& value) {
            setDefaults();
            box(k)->setText(value);
            mb.texts.clear();
            mb.queue(false);
            clickOk();
            return mb.texts.value(0);
        };
        for (int k = 0; k < boxes; ++k) {
            const QString range = limits[k].section(',', 0, 0);
            const QString low = range.section('-', 0, 0), high = range.section('-', 1, 1);
            const QString ending = inSeconds(k) ? ")S" : ")Kg";
            const QString where = QStringLiteral("scale %1 box %2").arg(scale).arg(k);
            QCOMPARE(box(k)->toolTip(), QStringLiteral("输入范围为:(") + low + '-' + high + ending);
            if (messages[k].isEmpty())
                continue;
            const QString refusal = messages[k] + '(' + low + '-' + high + ending;
            for (const QString& v : {low, high})
                QVERIFY2(firstBox(k, v) != refusal, qPrintable(where + " at " + v));
            for (double v : {low.toDouble() - step(k), high.toDouble() + step(k)})
                QVERIFY2(firstBox(k, QString::number(v, 'f', 2)) == refusal,
                         qPrintable(where + " beyond: " + mb.texts.value(0)));
        }
        QList<int> words;
        for (int k = 0; k < boxes; ++k)
            words << qRound(limits[k].section(',', 1).toDouble() * factor(k));
        h->takeFrames();
        mb.queue(true);
        ClickOn(Ctl<QWidget>(form, "cmdDefault"));
        QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
        QCOMPARE(h->takeFrames(), QStringList{blockFrame('1', scale, WordsHex(words))});
    }

    // What the operator sees of rows 10 to 14: which show, what they are called, and that the spare rows
    // a scale brings out take the window background like any box.
    void rowsByScale_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<QStringList>("rows");  // "k=caption" of the rows 10 to 14 shown
        QTest::newRow("aggregate") << 0 << QStringList{"10=落差调整值", "13=慢速配料值"};
        QTest::newRow("cement, fourth unnamed")
            << 8 << QStringList{"10=水泥M1落差调整值", "11=水泥M2落差调整值", "12=水泥M3落差调整值", "14=慢速配料值"};
        QTest::newRow("spare 10, named") << 10 << QStringList{"10=矿粉M1落差调整值", "11=矿粉M2落差调整值", "12=慢速配料值"};
        QTest::newRow("additive") << 11 << QStringList{"10=M1落差调整值", "12=M2落差调整值", "13=慢速配料值"};
    }

    void rowsByScale()
    {
        QFETCH(int, scale);
        QFETCH(QStringList, rows);
        BinName[16] = BinName[17] = QStringLiteral("x");
        ScaleCaption = scale == 10 ? QStringLiteral("矿粉") : ScaleName[size_t(scale)];
        open(scale);
        QStringList shown;
        for (int k = 10; k < 15; ++k) {
            if (box(k)->isHidden())
                continue;
            shown << QStringLiteral("%1=%2").arg(k).arg(Ctl<QLabel>(form, QStringLiteral("LblCansd(%1)").arg(k))->text());
            if (k == 11 || k == 12 || k == 14) {
                const QColor window = QApplication::palette().color(QPalette::Base);
                for (const char* part : {"LblCansd", "Label8"}) {
                    auto* l = Ctl<QLabel>(form, QStringLiteral("%1(%2)").arg(part).arg(k));
                    QVERIFY(l->autoFillBackground() && l->palette().color(QPalette::Window) == window);
                }
                QCOMPARE(box(k)->palette().color(QPalette::Base), window);
            }
        }
        QCOMPARE(shown, rows);
    }

    // Typed characters outside the list are swallowed; keys that type nothing keep their role; a paste
    // brings in only what could have been typed.
    void typingInABox_data()
    {
        QTest::addColumn<int>("k");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("action");  // "type:", "paste:" or "delete" (at the start of the box)
        QTest::addColumn<QString>("text");
        QTest::newRow("letters and a second point swallowed") << 3 << "" << "type:1a2.3.4" << "12.34";
        QTest::newRow("box 2 takes no point") << 2 << "" << "type:4.5" << "45";
        QTest::newRow("Delete as X11 sends it") << 3 << "150" << "delete" << "50";
        QTest::newRow("paste of letters refused") << 3 << "150" << "paste:abc-12" << "150";
        QTest::newRow("paste of digits taken") << 3 << "" << "paste:12.5" << "12.5";
    }

    void typingInABox()
    {
        QFETCH(int, k);
        QFETCH(QString, start);
        QFETCH(QString, action);
        QFETCH(QString, text);
        open(0);
        QLineEdit* b = box(k);
        b->setText(start);
        b->setFocus();
        b->setCursorPosition(0);
        if (action == "delete")
            QTest::sendKeyEvent(QTest::Click, b, Qt::Key_Delete, QString(QChar(0x7F)), Qt::NoModifier);
        else if (action.startsWith("paste:"))
            QGuiApplication::clipboard()->setText(action.mid(6)), b->paste();
        else
            QTest::keyClicks(b, action.mid(5));
        QCOMPARE(b->text(), text);
    }

    // A form whose read is never answered shows zeros; the first page head is the selected one.
    void freshLoadWithoutController()
    {
        h->sim.injectFault(plcsim::Fault::Unplugged);
        ScaleNo = 0;
        ParamDevice = QStringLiteral("D300");
        OptionDevice = QStringLiteral("S500");
        h->connectLink();
        Forms::show(QStringLiteral("Cansd"));
        form = Forms::loaded(QStringLiteral("Cansd"));
        for (int k = 0; k < 15; ++k)
            QCOMPARE(box(k)->text(), QStringLiteral("0"));
        QCOMPARE(Ctl<QLineEdit>(form, "TxtSRead")->text(), QStringLiteral("0"));
        const QColor chosen(0, 0, 192), other(64, 64, 64);
        QCOMPARE(TextColor(label("LblBd(0)")), chosen);
        QCOMPARE(TextColor(label("LblBd(1)")), other);
        ClickOn(label("LblBd(1)"));
        QCOMPARE(TextColor(label("LblBd(0)")), other);
        QCOMPARE(TextColor(label("LblBd(1)")), chosen);
    }

    // Buttons and boxes act when the mouse goes down and comes up over them: let go elsewhere, nothing
    // happens. The refresh button reads as it goes down and stays bright until it comes up.
    void pressAndRelease_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<bool>("over");   // let go over the control
        QTest::addColumn<bool>("asked");  // the question of the OK button came
        QTest::addColumn<int>("reads");   // block reads sent
        QTest::addColumn<bool>("help");   // the help of the box popped up
        QTest::newRow("OK let go elsewhere") << "lblBdOk" << false << false << 0 << false;
        QTest::newRow("OK clicked") << "lblBdOk" << true << true << 0 << false;
        QTest::newRow("OK image clicked") << "ImgBdOk" << true << true << 0 << false;
        QTest::newRow("refresh let go elsewhere") << "cmdRefresh" << false << false << 1 << false;
        QTest::newRow("refresh caption clicked") << "lblRefresh" << true << false << 1 << false;
        QTest::newRow("box let go elsewhere") << "TxtDCansd(3)" << false << false << 0 << false;
        QTest::newRow("box clicked") << "TxtDCansd(3)" << true << false << 0 << true;
    }

    void pressAndRelease()
    {
        QFETCH(QString, control);
        QFETCH(bool, over);
        QFETCH(bool, asked);
        QFETCH(int, reads);
        QFETCH(bool, help);
        seed(0, kAgg);
        open(0);
        Ctl<QCheckBox>(form, "CheckTip(0)")->setChecked(true);
        h->takeFrames();
        MbAnswerer mb;
        mb.queue(false);
        QWidget* w = Ctl<QWidget>(form, control);
        auto* picture = Ctl<QLabel>(form, QStringLiteral("cmdRefresh"));
        const QImage bright = ButtonPicture(ButtonSize::Small, true).toImage();
        const bool refresh = control.endsWith(QStringLiteral("Refresh"));
        QTest::mousePress(w, Qt::LeftButton, {}, w->rect().center());
        if (refresh)
            QVERIFY(picture->pixmap().toImage() == bright);
        QTest::mouseRelease(w, Qt::LeftButton, {}, over ? w->rect().center() : QPoint(-30, -30));
        QTest::qWait(20);
        QTRY_VERIFY(SendFlag);
        QCOMPARE(mb.texts.contains(QStringLiteral("是否设定当前参数?")), asked);
        QCOMPARE(int(h->takeFrames().count(blockFrame('0', 0))), reads);
        QVERIFY(picture->pixmap().toImage() != bright);
        QCOMPARE(label("txtTip(0)")->isVisible(), help);
    }

    // Rows 0, 5 and 6 of the aggregate editor have captions of its own, which have no number in the language file.
    void aggregateEditorCaptionsInEnglish()
    {
        LangNo = 2;
        ProfileFile = QStringLiteral(ORVA_LANG_FILE);
        open(-1);
        QStringList captions;
        for (int k : {0, 1, 5, 6, 7})
            captions << Ctl<QLabel>(form, QStringLiteral("LblCansd(%1)").arg(k))->text();
        QCOMPARE(captions, (QStringList{"Tolerance check delay", "M1 Top-up pulse time", "Discharge delay time",
                                        "Key zeroing range", "Zero range"}));
    }

private:
    // Opens the editor as the menu does (scale -1: the aggregate editor over scale 0) and waits for the read
    // chain to end; the frames are kept.
    void open(int scale)
    {
        const QString name = scale < 0 ? QStringLiteral("CansdAG") : QStringLiteral("Cansd");
        scale = std::max(scale, 0);
        ScaleNo = short(scale);
        ParamDevice = QLatin1String(kScaleDevices[scale].param);
        ParamDeviceAG = QStringLiteral("D100");
        OptionDevice = QLatin1String(kScaleDevices[scale].option);
        h->connectLink();
        Forms::show(name);
        form = Forms::loaded(name);
        QVERIFY(form);
        QTRY_VERIFY_WITH_TIMEOUT(Ctl<QLineEdit>(form, "TxtSRead")->text().size() == 4 && SendFlag, 3000);
    }

    QLineEdit* box(int k) { return Ctl<QLineEdit>(form, QStringLiteral("TxtDCansd(%1)").arg(k)); }
    QCheckBox* check(int i) { return Ctl<QCheckBox>(form, QStringLiteral("Check1(%1)").arg(i)); }
    QLabel* label(const char* name) { return Ctl<QLabel>(form, QLatin1String(name)); }
    // The status caption and its colour.
    QString status() { return label("LbLCssdS")->text() + '/' + TextColor(label("LbLCssdS")).name(); }
    void edit(const QStringList& edits)  // "box=text"
    {
        for (const QString& e : edits)
            box(e.section('=', 0, 0).toInt())->setText(e.section('=', 1));
    }
    void seed(int scale, const QList<int>& words, int first = 0, int second = 0)
    {
        for (int k = 0; k < words.size(); ++k)
            h->sim.setWord((scale < 0 ? 100 : 300 + 15 * scale) + k, short(words[k]));
        h->sim.setByteAt(62 + std::max(scale, 0), quint8(first));
        h->sim.setByteAt(63 + std::max(scale, 0), quint8(second));
    }
    void clickOk() { ClickOn(Ctl<QWidget>(form, QStringLiteral("ImgBdOk"))); }
    ConsoleHarness* h = nullptr;
    QWidget* form = nullptr;
};

QTEST_MAIN(CansdTest)
#include "cansd_test.moc"
