// The parameter editors on the wire: Cansd for one scale, CansdAG for the aggregates' own block; and the
// block's rules as the settings command meets them.
#include "test_support.h"

#include "common/error_log.h"
#include "common/scale_table.h"
#include "link/register_map.h"
#include "params/param_block.h"
#include "shell/form_base.h"

#include <QCheckBox>
#include <QClipboard>
#include <QLineEdit>
#include <cmath>

namespace {
const QList<int> kRaw = {3, 15, 40, 1234, -5, 7, 300, 100, 25, 500, 60, 61, 62, 350, -25536};
const QList<int> kAgg = {3, 3, 50, 50, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0};
// The block of the aggregate editor sits where its opener puts it; the tests put it at D100.
const QList<int> kBlockAG = {50, 3, 4, 5, 6, 50, 50, 20, 30, 30, 30, 30, 500, 500, 500, 500, 60, 60, 60, 60};

// A scale's block: 15 words at D300 + 15 * scale; scale -1: the aggregate editor's 20 at D100. Options: S500.
QString blockFrame(char op, int scale, const QString& data = {})
{
    const int at = scale < 0 ? 100 : 300 + 15 * scale;
    return Frame(op + QString::number(0x1000 + 2 * at, 16).toUpper() + (scale < 0 ? "28" : "1E") + data);
}
QString optionFrame(char op, int scale, const QString& image = {})
{
    return Frame(op + QStringLiteral("00") + QString::number(62 + std::max(scale, 0), 16).toUpper() + "02" + image);
}

// kRaw as scales of no, one and two decimals show it.
const char kShown0[] = "0.3|1.5|4|1234|-5|7|300|100|25|500|60|61|62|350|-25536";
const char kShown1[] = "0.3|1.5|4|123.4|-0.5|0.7|30.0|10.0|2.5|50.0|6.0|6.1|6.2|35.0|-2553.6";
const char kShown2[] = "0.3|1.5|4|12.34|-0.05|0.07|3.00|1.00|0.25|5.00|0.60|0.61|0.62|3.50|-255.36";
// The boxes as read; the option box clicked then and the image it writes. The image is read as "5AC3"; the
// neighbours' middle digits then change to "FF" in the controller. No image: the read is never answered.
const struct { const char *name; int scale; const char* boxes; int option; const char* image; } kOptions[] = {
    {"no reply: zeros", 0, "0|0|0|0|0|0|0|0|0|0|0|0|0|0|0", 0, ""},
    {"aggregate 1, record mode kept apart", 0, kShown0, 8, "5AC3"},
    {"water, automatic fall adjustment", 7, kShown1, 1, "4AC3"},
    {"cement, record mode is bit 4", 8, kShown0, 9, "5AC2"},
    {"powder, bit 7", 9, kShown1, 14, "5ACB"},
    {"spare two-material, bit 3", 10, kShown1, 6, "DAC3"},
    {"spare additive, bit 6", 13, kShown2, 12, "5AC7"},
    // Bit 4 is an option like the others in the aggregate editor: no record mode kept apart.
    {"aggregate editor", -1, "5|0.3|0.4|0.5|0.6|5|50|20|30|30|30|30|500|500|500|500|60|60|60|60", 9, "5AC2"},
};

// Edits "box=text" (after the defaults: the text shown), the words written, whether the first write is
// refused, whether a key after the write makes leaving ask. Hidden rows hold 0 and go back as 0. The
// defaults need no check and no second question.
const struct { const char *name; int scale; const char *button, *edits; QList<int> words; bool nak, keyAfter; }
    kWrites[] = {
    {"aggregate, time rows in tenths, then a key", 0, "ImgBdOk", "0=1.26 2=4 3=150",
     {13, 3, 40, 150, 20, 30, 300, 100, 30, 500, 60, 0, 0, 350, 0}, false, true},
    {"water defaults: 3.0, stored as 30", 7, "cmdDefault", "10=3.0",
     {3, 3, 50, 200, 60, 200, 1000, 50, 50, 500, 30, 30, 30, 250, 30}, false, false},
    {"additive defaults: 0.50, stored as 50", 11, "cmdDefault", "3=0.50",
     {3, 3, 50, 50, 20, 50, 200, 20, 20, 1000, 50, 50, 50, 200, 50}, false, false},
    {"NAK: the same frame again", 0, "ImgBdOk", "", kAgg, true, false},
    // Box 0 shows tenths but is written by the scale's digits, one here.
    {"aggregate editor, one decimal", -1, "ImgBdOk", "0=6 19=70",
     {60, 3, 4, 5, 6, 50, 500, 200, 300, 300, 300, 300, 5000, 5000, 5000, 5000, 600, 600, 600, 700}, false, false},
};

// Blocks that pass the check, as typed into the boxes.
const char kAggBoxes[] = "0=0.3 1=0.3 2=5 3=50 4=20 5=30 6=300 7=100 8=30 9=500 10=60 11=0 12=0 13=350 14=0";
const char kCemBoxes[] = "0=0.3 1=0.3 2=5 3=25 4=10 5=20 6=300 7=20 8=8 9=100 10=20 11=20 12=20 13=20 14=5";
const char kAddBoxes[] =
    "0=0.3 1=0.3 2=5 3=0.50 4=0.20 5=0.50 6=2.00 7=0.20 8=0.20 9=1.00 10=0.50 11=0 12=0.50 13=2.00 14=0";
// A block typed in, then edits; the message of OK (none: the check passes and the question comes), the box
// that takes the focus (-1: none, -2: the box can't take it and the fault is logged) and the hint a click on
// the page shows before.
const struct { const char *name; int scale; const char *start, *edits, *message; int focus; const char* hint; }
    kChecks[] = {
    {"range fault in box 14 hides a relation fault", 8, kCemBoxes, "5=5 14=600", "请检查!慢速配料值范围为:((1-500)Kg",
     14, "零位范围不应大于卸料允许误差值!"},
    // Box 14 is never tested, box 11 only while shown.
    {"hidden boxes 11 and 14 of aggregates", 0, kAggBoxes, "11=9999 14=9999", "", -1, ""},
    {"fourth material of the cement scale", 8, kCemBoxes, "13=190", "请检查!M4计量落差调整值为:(0-100)Kg", 13,
     "M4落差调整值不应大于落差调整最大值!"},
    {"a hidden box that is always tested", 6, "0=0.3 1=0.3 2=5 3=25 4=10 5=20 6=300 7=20 8=8 9=50", "10=999",
     "请检查!计量落差调整值为:(0-50)Kg", -2, "落差调整值不应大于落差调整最大值!"},
    {"additive second material only warns", 11, kAddBoxes, "9=1.00 12=5.00", "", -1,
     "M2落差调整值不应大于落差调整最大值!"},
    {"aggregate editor: range before relation", -1, "", "12=100 16=200 19=600", "请检查!计量落差调整值为:(0-500)Kg",
     -1, "落差调整值不应大于落差调整最大值!"},
    {"aggregate editor: M4 relation", -1, "", "15=100 19=101", "M4落差调整值不应大于落差调整最大值!", -1,
     "M4落差调整值不应大于落差调整最大值!"},
};

// The limits and defaults of every kind of scale, each cell "low-high,default", and the messages of the
// blocking check of rows 11 to 14 where it tests them (empty: not tested there, shown or not), each after
// "请检查!"; rows 0 to 10 are tested everywhere with the same messages. The aggregate editor's one table serves
// every scale.
const QStringList kRangeMessages = {
    "超扣补秤脉冲时间的范围为:", "脉冲补称时间的范围为:", "卸料延时控制时间的范围为:", "按键归零允许范围为:",
    "卸料时的零位范围为:",       "卸料允许误差值范围为:", "扣称提前量最大值为:",       "扣称提前量调整值为:",
    "计量允许误差值为:",         "计量落差调整最大值为:", "计量落差调整值为:"};
const struct { const char* name; int first, last; const char *cells, *messages; } kLimits[] = {
    {"aggregate", 0, 5,
     "0.1-2.0,0.3|0.1-2.0,0.3|0-9,5|20-200,50|1-100,20|1-200,30|0-300,300|0-300,100|1-100,30|100-500,500|"
     "0-500,60|0-500,60|0-500,60|0-500,350|0-500,60",
     "||慢速配料值范围为:|"},
    {"spare two-material", 6, 6,
     "0.1-2,0.3|0.1-3.0,0.3|0-9,5|10-100,25|1-50,10|1-100,20|0-300,300|0-300,20|1-50,8|20-50,50|"
     "0-50,12|0-50,12|0-50,12|0-50,12|1-500,5",
     "M2计量落差调整值为:|||"},
    {"water", 7, 7,
     "0.1-2,0.3|0.1-2.0,0.3|0-9,5|10.0-50.0,20.0|1.0-20.0,6.0|1.0-100.0,20.0|0-100.0,100.0|0-100.0,5.0|"
     "1.0-50.0,5.0|10.0-50.0,50.0|0-50.0,3|0-50.0,3|0-50.0,3|0.0-100.0,25.0|0-50.0,3",
     "||慢速配料值范围为:|"},
    {"cement", 8, 8,
     "0.1-2.0,0.3|0.1-3.0,0.3|0-9,5|10-100,25|1-50,10|1-100,20|0-300,300|0-300,20|1-50,8|20-100,100|"
     "0-100,20|0-100,20|0-100,20|0-100,20|1-500,5",
     "M2计量落差调整值为:|M3计量落差调整值为:|M4计量落差调整值为:|慢速配料值范围为:("},
    {"powder", 9, 9,
     "0.1-2,0.3|0.1-3.0,0.3|0-9,5|10-100,25|1-50,10|1-100,20|0-300,300|0-300,20|1-50,8|20-100,100|"
     "0-100,12|0-100,12|0-100,12|0-100,12|1-500,5",
     "M2计量落差调整值为:|M3计量落差调整值为:||慢速配料值范围为:("},
    {"spare two-material", 10, 10,
     "0.1-2,0.3|0.1-3.0,0.3|0-9,5|10-100,25|1-50,10|1-100,20|0-300,300|0-300,20|1-50,8|20-50,50|"
     "0-50,12|0-50,12|1-500,5|0-50,12|0-50,12",
     "M2计量落差调整值为:|慢速配料值范围为:||"},
    {"additive", 11, 13,
     "0.1-2,0.3|0.1-2.0,0.3|0-9,5|0.20-1.00,0.5|0.05-1.00,0.20|0.05-2.00,0.50|0-5.00,2.00|0-5.00,0.20|"
     "0.05-0.50,0.20|1.00-10.00,10.00|0-10.00,0.50|0-10.00,0.50|0-10.00,0.50|0-5.00,2.00|0-10.00,0.50",
     "|M2计量落差调整值为:|慢速配料值范围为:|"},
    {"aggregate editor", -1, -1,
     "2-9,5|0.2-2.0,0.3|0.2-2.0,0.3|0.2-2.0,0.3|0.2-2.0,0.3|0-9,5|20-200,50|5-100,20|10-100,30|10-100,30|"
     "10-100,30|10-100,30|100-500,500|100-500,500|100-500,500|100-500,500|0-500,60|0-500,60|0-500,60|0-500,60",
     "计量延时检查超差时间的范围为:|脉冲补称时间的范围为:|脉冲补称时间的范围为:|脉冲补称时间的范围为:|"
     "脉冲补称时间的范围为:|卸料延时控制时间的范围为:|按键归零允许范围为:|卸料时的零位范围为:|计量允许误差值为:|"
     "计量允许误差值为:|计量允许误差值为:|计量允许误差值为:|计量落差调整最大值为:|计量落差调整最大值为:|"
     "计量落差调整最大值为:|计量落差调整最大值为:|计量落差调整值为:|计量落差调整值为:|计量落差调整值为:|"
     "计量落差调整值为:"},
};

// Rows 10 to 14 as the operator sees them: "k=caption" of those that show.
const struct { const char* name; int scale; const char* rows; } kRowsByScale[] = {
    {"aggregate", 0, "10=落差调整值|13=慢速配料值"},
    {"cement, fourth unnamed", 8, "10=水泥M1落差调整值|11=水泥M2落差调整值|12=水泥M3落差调整值|14=慢速配料值"},
    {"spare 10, named", 10, "10=矿粉M1落差调整值|11=矿粉M2落差调整值|12=慢速配料值"},
    {"additive", 11, "10=M1落差调整值|12=M2落差调整值|13=慢速配料值"},
};

// What an operator can and cannot get into a box by keys and paste: box 3 takes digits and one point, box 2
// (whole seconds) digits only; keys that type nothing keep their role. cursor -1: the whole text selected,
// as a box selects it on focus. Action "type:", "paste:", "del" (Delete as X11 sends it) or "bs".
const struct { const char* name; int k; const char* start; int cursor; const char *action, *text; } kTyping[] = {
    {"letters and a second point swallowed", 3, "", 0, "type:1a2.3.4", "12.34"},
    {"minus swallowed", 3, "12", 0, "type:-", "12"},
    {"point over a selected text that holds one", 3, "1.2", -1, "type:.", "1.2"},
    {"digit over a selected text", 3, "1.2", -1, "type:7", "7"},
    // A value the program showed with a character of no key: the next keys are judged all the same.
    {"letter after a read negative value", 3, "-5", 2, "type:a1", "-51"},
    {"box 2 takes no point", 2, "12", 2, "type:4.5", "1245"},
    {"digit beside a read point", 2, "5.5", 3, "type:1", "5.51"},
    {"Delete deletes", 3, "150", 0, "del", "50"},
    {"Backspace deletes", 3, "123", 3, "bs", "12"},
    {"paste of digits and a point taken", 3, "1", 1, "paste:2.5", "12.5"},
    {"paste with a letter refused", 3, "150", 3, "paste:abc-12", "150"},
    {"paste of a second point refused", 3, "1.5", 3, "paste:.5", "1.5"},
    {"paste over a selected text", 3, "1.5", -1, "paste:2.5", "2.5"},
    // Values the program writes are shown as read, whatever the list.
    {"program text unfiltered", 2, "-5.5", 0, "type:", "-5.5"},
};

// Buttons and boxes act when the mouse goes down and comes up over them: let go elsewhere, nothing happens.
// The refresh button reads as it goes down and stays bright until it comes up. Let go over the control or
// not; the question of the OK button came; block reads sent; the help of the box popped up.
const struct { const char *name, *control; bool over, asked; int reads; bool help; } kPresses[] = {
    {"OK let go elsewhere", "lblBdOk", false, false, 0, false},
    {"OK clicked", "lblBdOk", true, true, 0, false},
    {"OK image clicked", "ImgBdOk", true, true, 0, false},
    {"refresh let go elsewhere", "cmdRefresh", false, false, 1, false},
    {"refresh caption clicked", "lblRefresh", true, false, 1, false},
    {"box let go elsewhere", "TxtDCansd(3)", false, false, 0, false},
    {"box clicked", "TxtDCansd(3)", true, false, 0, true},
};
// The kind's defaults with "k=raw" words changed, as a settings file holds them.
QList<int> edited(int scale, const char* edits)
{
    QList<int> raw = ParamBlock::defaults(scale);
    for (const QString& e : QString::fromUtf8(edits).split(QLatin1Char(' '), Qt::SkipEmptyParts))
        raw[e.section(QLatin1Char('='), 0, 0).toInt()] = e.section(QLatin1Char('='), 1).toInt();
    return raw;
}

// The kind's defaults with edits, the field of the first fault (-1: none) and its message.
const struct { const char* name; int scale; const char* edits; int field; const char* message; } kFaults[] = {
    {"lead above its ceiling", 0, "6=50 7=60", 7, "扣称提前量不应大于扣称提前量最大值!"},
    {"fall above its ceiling", 0, "9=100 10=101", 10, "落差调整值不应大于落差调整最大值!"},
    {"second material, its row hidden", 6, "9=200 11=210", 11, "M2落差调整值不应大于落差调整最大值!"},
    {"third material of cement", 8, "9=20 12=21", 12, "M3落差调整值不应大于落差调整最大值!"},
    {"third material of powder", 9, "9=200 12=210", 12, "M3落差调整值不应大于落差调整最大值!"},
    {"additive, two decimals below", 11, "8=4", 8, "请检查!计量允许误差值为:(0.05-0.50)Kg"},
    {"additive, two decimals at the floor", 11, "8=5", -1, ""},
    {"a hidden row is not judged", 0, "12=999", -1, ""},
    {"a never-judged row", 6, "13=999", -1, ""},
};

// What the form shows of a register and what it writes for a typed text (INT_MIN: refused).
const struct { const char* name; int scale, k, raw; const char *shown, *typed; int written; } kShownAndRaw[] = {
    {"tenths", 0, 0, 3, "0.3", "0.35", 4},
    {"whole seconds held in tenths", 0, 2, 55, "6", "4", 40},
    {"negative weight", 0, 3, -25536, "-25536", "-25536", -25536},
    {"two decimals", 11, 3, 50, "0.50", "0.5", 50},
    {"a word too large", 7, 3, 0, "0.0", "3276.8", INT_MIN},
    {"not a number", 0, 3, 0, "0", "12abc", INT_MIN},
};
}  // namespace

class CansdTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterParamsForms(); }
    void init() { h = new ConsoleHarness; }
    void cleanup() { delete h; form = nullptr; }

    void readChainThenOptionClick_data() { TableRows(kOptions); }
    void readChainThenOptionClick()
    {
        const auto& c = TableRow(kOptions);
        Agg1RecordMode = QStringLiteral("1");  // scale 0 shows mode one whatever S504 holds
        seed(c.scale, c.scale < 0 ? kBlockAG : kRaw, 0x5A, 0xC3);
        if (!*c.image)
            h->sim.injectFault(plcsim::Fault::Unplugged);
        open(c.scale, *c.image);
        QCOMPARE(boxes(int(QByteArray(c.boxes).count('|')) + 1), QString(c.boxes));
        auto heads = [&] { return TextColor(label("LblBd(0)")).name() + ' ' + TextColor(label("LblBd(1)")).name(); };
        QCOMPARE(heads(), QStringLiteral("#0000c0 #404040"));  // the first page chosen
        if (!*c.image)
            return;
        QCOMPARE(h->takeFrames(), (QStringList{blockFrame('0', c.scale), optionFrame('0', c.scale)}));
        // Check1(0..15), 1 for ticked. Image "5AC3": bits 0 to 3 are 1,0,1,0 and bits 4 to 7 are 1,1,0,0.
        QString state;
        for (int i = 0; i < 16; ++i)
            state += Ctl<QCheckBox>(form, QStringLiteral("Check1(%1)").arg(i))->isChecked() ? '1' : '0';
        QCOMPARE(state, c.scale == 0 ? "1001100101100101" : "1001100110100101");

        seed(c.scale, {}, 0x5F, 0xF3);
        Ctl<QCheckBox>(form, QStringLiteral("Check1(%1)").arg(c.option))->click();
        QTRY_COMPARE_WITH_TIMEOUT(label("LblTzxxTip")->text(), QStringLiteral("选项更改完成!"), 3000);
        QCOMPARE(h->takeFrames(), QStringList{optionFrame('1', c.scale, c.image)});
        QCOMPARE(TextColor(label("LblTzxxTip")), QColor(0, 0x80, 0));
        QCOMPARE(Agg1RecordMode, c.scale == 0 ? QStringLiteral("0") : QStringLiteral("1"));
        ClickOn(label("LblBd(1)"));
        QCOMPARE(heads(), QStringLiteral("#404040 #0000c0"));
    }

    void blockWrite_data() { TableRows(kWrites); }
    void blockWrite()
    {
        const auto& c = TableRow(kWrites);
        const bool defaults = c.button == QByteArray("cmdDefault");
        // Connected before the console, so it sees the caption as each reply arrives.
        QStringList seen;
        connect(&h->sim, &plcsim::Controller::reply, this, [&] { seen << (form ? status() : QString()); });
        seed(c.scale, c.scale < 0   ? kBlockAG
                      : c.scale == 0 ? kAgg
                                     : QList<int>{3, 3, 50, 50, 20, 50, 200, 20, 20, 1000, 50, 0, 0, 200, 0});
        open(c.scale);
        if (c.scale < 0)
            ScaleDecimals[0] = 1;  // after the read, so that the boxes hold the block as read
        h->takeFrames();
        seen.clear();
        if (!defaults)
            edit(c.edits);
        if (c.nak)
            h->sim.injectFault(plcsim::Fault::Nak, 1);
        MbAnswerer mb;
        ClickOn(Ctl<QWidget>(form, c.button));
        QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
        QCOMPARE(mb.texts, QStringList{defaults ? QStringLiteral("是否要初始化参数?") : QStringLiteral("是否设定当前参数?")});
        QCOMPARE(h->takeFrames(), QStringList(c.nak ? 2 : 1, blockFrame('1', c.scale, WordsHex(c.words))));
        QStringList captions{"正在设定参数,请稍候....../#ff0000"};
        if (c.nak)
            captions << "正在尝试继续参数设定!/#ff0000";
        QCOMPARE(seen, captions);
        QCOMPARE(status(), QStringLiteral("参数设定成功!/#008000"));
        for (const QString& e : QString(defaults ? c.edits : "").split(' ', Qt::SkipEmptyParts))
            QCOMPARE(box(e.section('=', 0, 0).toInt())->text(), e.section('=', 1));
        if (c.keyAfter)
            QTest::keyClick(box(5), Qt::Key_Shift);
        returnAnsweringNo(mb, c.keyAfter);
    }

    void checkStopsAtFirstFault_data() { TableRows(kChecks); }
    void checkStopsAtFirstFault()
    {
        const auto& c = TableRow(kChecks);
        if (c.scale == 8)
            BinName[12] = QStringLiteral("M4");  // the fourth material is named, so box 13 shows
        if (c.scale < 0)
            seed(c.scale, kBlockAG);
        open(c.scale);
        h->takeFrames();
        edit(c.start);
        edit(c.edits);
        QWidget* page = Ctl<QWidget>(form, "picCansd(0)");
        QTest::mouseClick(page, Qt::LeftButton, {}, QPoint(5, page->height() - 5));
        QCOMPARE(label("lblCheckTip")->isVisibleTo(form) ? label("lblCheckTip")->text() : QString(), QString(c.hint));
        MbAnswerer mb;
        mb.queue(*c.message);  // No to the question: nothing is written either way
        clickOk();
        QTRY_COMPARE_WITH_TIMEOUT(mb.texts.size(), 1, 2000);
        QCOMPARE(mb.texts.first(), *c.message ? QString(c.message) : QStringLiteral("是否设定当前参数?"));
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());
        if (c.focus >= 0)
            QCOMPARE(form->focusWidget(), box(c.focus));
        QFile log(ErrorLogPath(QDate::currentDate()));
        QCOMPARE(log.open(QIODevice::ReadOnly) && log.readAll().contains("EnterChecked"), c.focus == -2);
        returnAnsweringNo(mb, true);  // edited, not written
    }

    void limitsOfEveryScale_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<int>("kind");
        for (int i = 0; i < int(std::size(kLimits)); ++i)
            for (int scale = kLimits[i].first; scale <= kLimits[i].last; ++scale)
                QTest::addRow(scale < 0 ? "%s" : "%s %d", kLimits[i].name, scale) << scale << i;
    }

    // Each limit through the form's own check: the value at the bound passes, one step beyond is refused
    // with the message; each hint names the limits; the defaults reach the controller.
    void limitsOfEveryScale()
    {
        QFETCH(int, scale);
        QFETCH(int, kind);
        const QStringList cells = QString(kLimits[kind].cells).split('|');
        const QStringList messages =
            (scale < 0 ? QStringList() : kRangeMessages) + QString(kLimits[kind].messages).split('|');
        for (QString& name : BinName)  // every material named: each row the scale has is shown
            if (name.isEmpty())
                name = QStringLiteral("料");
        const bool ag = scale < 0;
        open(scale);
        const int d = ScaleDecimals[size_t(std::max(scale, 0))];
        auto inSeconds = [ag](int k) { return k <= (ag ? 5 : 2); };
        auto step = [&](int k) {
            const bool whole = ag ? (k == 0 || k == 5) : k == 2;
            return whole ? 1.0 : inSeconds(k) ? 0.1 : std::pow(10.0, -d);
        };
        auto factor = [&](int k) { return (ag ? k >= 1 && k <= 5 : k <= 2) ? 10.0 : std::pow(10.0, d); };
        MbAnswerer mb;
        // The defaults and one value: the first box of the OK button, a refusal or the question, answered No.
        auto firstBox = [&](int k, const QString& value) {
            for (int i = 0; i < cells.size(); ++i)
                box(i)->setText(i == k ? value : cells[i].section(',', 1));
            mb.texts.clear();
            mb.queue(false);
            clickOk();
            return mb.texts.value(0);
        };
        QList<int> words;
        for (int k = 0; k < cells.size(); ++k) {
            const QString low = cells[k].section('-', 0, 0), high = cells[k].section(',', 0, 0).section('-', 1);
            const QString range = '(' + low + '-' + high + (inSeconds(k) ? ")S" : ")Kg");
            QCOMPARE(box(k)->toolTip(), "输入范围为:" + range);
            words << qRound(cells[k].section(',', 1).toDouble() * factor(k));
            if (messages[k].isEmpty())
                continue;
            const QString refusal = "请检查!" + messages[k] + range;
            for (const QString& v : {low, high})
                QVERIFY2(firstBox(k, v) != refusal, qPrintable(QStringLiteral("box %1 at %2").arg(k).arg(v)));
            for (double v : {low.toDouble() - step(k), high.toDouble() + step(k)})
                QCOMPARE(firstBox(k, QString::number(v, 'f', 2)), refusal);
        }
        h->takeFrames();
        mb.queue(true);
        ClickOn(Ctl<QWidget>(form, "cmdDefault"));
        QTRY_VERIFY_WITH_TIMEOUT(ParamSetDone, 3000);
        QCOMPARE(h->takeFrames(), QStringList{blockFrame('1', scale, WordsHex(words))});
    }

    // The spare rows a scale brings out take the window background like any box.
    void rowsByScale_data() { TableRows(kRowsByScale); }
    void rowsByScale()
    {
        const auto& c = TableRow(kRowsByScale);
        BinName[16] = BinName[17] = QStringLiteral("x");
        ScaleCaption = c.scale == 10 ? QStringLiteral("矿粉") : ScaleName[size_t(c.scale)];
        open(c.scale);
        QStringList shown;
        const QColor window = QApplication::palette().color(QPalette::Base);
        for (int k = 10; k < 15; ++k) {
            if (box(k)->isHidden())
                continue;
            shown << QStringLiteral("%1=%2").arg(k).arg(label(QStringLiteral("LblCansd(%1)").arg(k))->text());
            if (k == 11 || k == 12 || k == 14) {
                for (const char* part : {"LblCansd", "Label8"}) {
                    auto* l = label(QStringLiteral("%1(%2)").arg(part).arg(k));
                    QVERIFY(l->autoFillBackground() && l->palette().color(QPalette::Window) == window);
                }
                QCOMPARE(box(k)->palette().color(QPalette::Base), window);
            }
        }
        QCOMPARE(shown.join('|'), QString(c.rows));
    }

    void typingInABox_data() { TableRows(kTyping); }
    void typingInABox()
    {
        const auto& c = TableRow(kTyping);
        const QString action(c.action);
        open(0);
        QLineEdit* b = box(c.k);
        b->setText(c.start);
        b->setFocus();
        if (c.cursor < 0)
            b->selectAll();
        else
            b->setCursorPosition(c.cursor);
        if (action == "del") {
            QTest::sendKeyEvent(QTest::Click, b, Qt::Key_Delete, QString(QChar(0x7F)), Qt::NoModifier);
        } else if (action == "bs") {
            QTest::keyClick(b, Qt::Key_Backspace);
        } else if (action.startsWith("paste:")) {
            QGuiApplication::clipboard()->setText(action.mid(6));
            b->paste();
        } else {
            QTest::keyClicks(b, action.mid(5));
        }
        QCOMPARE(b->text(), QString(c.text));
    }

    void pressAndRelease_data() { TableRows(kPresses); }
    void pressAndRelease()
    {
        const auto& c = TableRow(kPresses);
        seed(0, kAgg);
        open(0);
        Ctl<QCheckBox>(form, "CheckTip(0)")->setChecked(true);
        h->takeFrames();
        MbAnswerer mb;
        mb.queue(false);
        QWidget* w = Ctl<QWidget>(form, c.control);
        const QImage bright = ButtonPicture(ButtonSize::Small, true).toImage();
        QTest::mousePress(w, Qt::LeftButton, {}, w->rect().center());
        if (c.reads)  // the refresh button and its caption
            QVERIFY(label("cmdRefresh")->pixmap().toImage() == bright);
        QTest::mouseRelease(w, Qt::LeftButton, {}, c.over ? w->rect().center() : QPoint(-30, -30));
        QTest::qWait(20);
        QTRY_VERIFY(SendFlag);
        QCOMPARE(mb.texts.contains(QStringLiteral("是否设定当前参数?")), c.asked);
        QCOMPARE(int(h->takeFrames().count(blockFrame('0', 0))), c.reads);
        QVERIFY(label("cmdRefresh")->pixmap().toImage() != bright);
        QCOMPARE(label("txtTip(0)")->isVisible(), c.help);
    }

    void firstFault_data() { TableRows(kFaults); }
    void firstFault()
    {
        const auto& c = TableRow(kFaults);
        const BlockFault f = ParamBlock::check(c.scale, edited(c.scale, c.edits));
        QCOMPARE(f.field, c.field);
        QCOMPARE(f.message, QString::fromUtf8(c.message));
    }

    void shownAndRaw_data() { TableRows(kShownAndRaw); }
    void shownAndRaw()
    {
        const auto& c = TableRow(kShownAndRaw);
        const BlockField f = ParamBlock::layout(c.scale).fields.at(c.k);
        QCOMPARE(Block::shown(f, c.raw), QString(c.shown));
        int got = INT_MIN;
        QCOMPARE(Block::toRaw(f, c.typed, &got), c.written != INT_MIN);
        QCOMPARE(got, c.written);
    }

private:
    // Opens the editor as the menu does (scale -1: the aggregate editor over scale 0) and waits for the read
    // chain to end; the frames are kept.
    void open(int scale, bool answered = true)
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
        QTRY_VERIFY_WITH_TIMEOUT(!answered || (Ctl<QLineEdit>(form, "TxtSRead")->text().size() == 4 && SendFlag), 3000);
    }

    QLineEdit* box(int k) { return Ctl<QLineEdit>(form, QStringLiteral("TxtDCansd(%1)").arg(k)); }
    QString boxes(int n)
    {
        QStringList texts;
        for (int k = 0; k < n; ++k)
            texts << box(k)->text();
        return texts.join('|');
    }
    QLabel* label(const QString& name) { return Ctl<QLabel>(form, name); }
    QString status() { return label("LbLCssdS")->text() + '/' + TextColor(label("LbLCssdS")).name(); }
    void edit(const char* edits)  // "box=text ..."
    {
        for (const QString& e : QString(edits).split(' ', Qt::SkipEmptyParts))
            box(e.section('=', 0, 0).toInt())->setText(e.section('=', 1));
    }
    void seed(int scale, const QList<int>& words, int first = 0, int second = 0)
    {
        for (int k = 0; k < words.size(); ++k)
            h->sim.setWord((scale < 0 ? 100 : 300 + 15 * scale) + k, short(words[k]));
        h->sim.setByteAt(62 + std::max(scale, 0), quint8(first));
        h->sim.setByteAt(63 + std::max(scale, 0), quint8(second));
    }
    // Leaving by the return image asks only while an edit is not written; No keeps the form.
    void returnAnsweringNo(MbAnswerer& mb, bool asked)
    {
        const QString name = form->objectName();
        mb.texts.clear();
        mb.queue(false);
        ClickOn(Ctl<QWidget>(form, "ImgReturn"));
        QTest::qWait(20);
        QCOMPARE(mb.texts, asked ? QStringList{QStringLiteral("参数更改后未设定，是否返回?")} : QStringList{});
        QCOMPARE(Forms::loaded(name) != nullptr, asked);
    }
    void clickOk() { ClickOn(Ctl<QWidget>(form, QStringLiteral("ImgBdOk"))); }
    ConsoleHarness* h = nullptr;
    QWidget* form = nullptr;
};

QTEST_MAIN(CansdTest)
#include "cansd_test.moc"
