#include "cal_rig.h"

#include "calibration/frm_jk.h"
#include "calibration/mb_question.h"
#include "calibration/records_csv.h"
#include "common/app_paths.h"

#include <QAbstractItemModel>
#include <QBuffer>
#include <QCheckBox>
#include <QClipboard>
#include <QDateEdit>
#include <QDialog>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPointer>
#include <QPushButton>
#include <QStringEncoder>
#include <QTableView>
#include <QTimer>

using plcsim::Outcome;

namespace {
const QString kLiveRead = Frame(QStringLiteral("0101640"));
const QString kStatusRead = Frame(QStringLiteral("0007C02"));
const QString kSep(52, QLatin1Char('#'));

// The pulse, its clear, the status read and the live values that follow.
QString pulse(const char* address, const char* bits)
{
    return WriteFrame(address, bits) + WriteFrame(address, "0000") + kStatusRead + kLiveRead;
}

// Scale "一号秤" at 3000 raw with its zero point at 2000 shows 100.0; the frames from the tick of Timer3 on;
// the lines of the monthly file, the hidden copy and the operation list after it.
const QString kAt = QStringLiteral("2026/3/5 14:03:22"), kName = QStringLiteral("一号秤");
const QStringList kZero{kName + "BiaoZeroTime=" + kAt, kName + "BiaoZeroADValue=3000",
                        kName + "BiaoZeroWTValue=100.0", kSep};
QStringList spanLines(const char* index, const char* testWeight)
{
    return {QStringLiteral("CengIndex=") + index, kName + "BiaoWeightTime=" + kAt, kName + "BiaoWeightADValue=3000",
            kName + "BiaoWeightWTValue=100.0", kName + "BiaoWeightFMValue=" + testWeight, kSep};
}
QStringList opLines(const char* kind) { return {kName, kAt, "郑伟", kind, "3000", "100.0", "1500.5", ""}; }
// humid: the moisture form of the probe beside the weight form of the same slot, which must see nothing of it;
// the probes use the bits of slots 4 and 5 and take their known value at D29 and D30.
struct CalCase { const char* name; bool humid; int scale; bool span; Outcome outcome; QString frames;
                 const char* caption; QStringList monthly, hidden, op; };
const CalCase kCal[] = {
    {"zero, scale 0, taken", false, 0, false, Outcome::Success, pulse("0016", "2000"), "零位调校完成，请再进行实际验秤!",
     kZero, QStringList{"CengIndex=1"} + kZero, opLines("标零")},
    {"span, scale 0, taken", false, 0, true, Outcome::Success, WriteFrame("1056", "9D3A") + pulse("0016", "4000"),
     "分度调校完成，请再进行实际验秤!", spanLines("1", "1500.5"), spanLines("1", "1500.5"), opLines("标重")},
    // Indices 6 and 10 lie apart: S205 is bit 5 of byte 0x19, S208 bit 0 of byte 0x1A, D53 at 0x106A.
    {"zero, scale 6, refused", false, 6, false, Outcome::Refuse, pulse("0019", "2000"), "零位调校失败，请重新调校!",
     {}, {}, {}},
    {"span, scale 10, unanswered", false, 10, true, Outcome::NoAnswer,
     WriteFrame("106A", "9D3A") + pulse("001A", "0100"), "分度调校出错，请重新调校!", {}, {}, {}},
    {"dry, probe 4", true, 4, false, Outcome::Success, pulse("0017", "2000"), "湿度标定完成!", kZero,
     QStringList{"CengIndex=5"} + kZero, {}},
    {"wet, probe 4", true, 4, true, Outcome::Success, WriteFrame("103A", "7D00") + pulse("0017", "4000"), "湿度标定完成!",
     spanLines("5", "12.5"), spanLines("5", "12.5"), {}},
    {"wet, probe 5, refused", true, 5, true, Outcome::Refuse, WriteFrame("103C", "7D00") + pulse("0018", "0100"),
     "湿度标定失败，请重新标定!", {}, {}, {}},
    {"dry, probe 5, unanswered", true, 5, false, Outcome::NoAnswer, pulse("0017", "8000"), "湿度标定错误，请重新标定!",
     {}, {}, {}},
};

// The replies the controller test cannot give: both bits on, other lengths, a tab clicked meanwhile (-1: none).
// Not taken: the caption stays busy and nothing is recorded.
const struct { const char* name; int tab; const char* reply; bool taken; } kReplies[] = {
    {"C000 taken, polling on", -1, "C000", true},
    {"three characters", -1, "800", false},
    {"five characters", -1, "80000", false},
    {"empty", -1, "", false},
    {"option tab clicked, then 8000", 0, "8000", false},
};

// Unplugged: the write is never answered, re-sent, then the fault box. tip: shown at the end.
// S500.. word read as "2112": S496 and S508 are foreign bits; S501 and S505 are on.
// S612.. word read as "1100": S608 foreign, S612 on (tracking off). The acknowledgement hides the tip.
const QString kModeWrite = WriteFrame("003E", "2110"), kTrackWrite = WriteFrame("004C", "0100");
struct SwitchCase { const char *name, *box, *partner; QString frame; bool unplugged; const char* tip; };
const SwitchCase kSwitches[] = {
    {"verified mode ticked", "Check1(11)", "Check1(10)", kModeWrite, false, "调校方式已更改!"},
    {"plain mode cleared", "Check1(10)", "Check1(11)", kModeWrite, false, "调校方式已更改!"},
    {"tracking on ticked", "Check2(1)", "Check2(0)", kTrackWrite, false, ""},
    {"tracking off cleared", "Check2(0)", "Check2(1)", kTrackWrite, false, ""},
    // The controller never took it: the form must not claim that tracking is on.
    {"tracking off cleared, unplugged", "Check2(0)", "Check2(1)", kTrackWrite, true, ""},
};

// The test weight takes what could be typed: digits and one point, by key or by paste. action: "type:",
// "paste:" or "delete" (at the start of the box).
const struct { const char *name, *form, *start, *action, *text; } kEntries[] = {
    {"letters and a second point swallowed", "YIBiao", "", "type:1a5-0.0.5", "150.05"},
    {"Delete as X11 sends it", "YIBiao", "150", "delete", "50"},
    {"moisture: paste refused", "YIBiaoHumidNew", "12", "paste:1e3", "12"},
    {"moisture: paste of a value taken", "YIBiaoHumidNew", "", "paste:12.5", "12.5"},
};

QLabel* label(QWidget* f, const char* n) { return Ctl<QLabel>(f, QLatin1String(n)); }
void clickTab(QWidget* f, int i) { ClickOn(Ctl(f, QStringLiteral("LblBd(%1)").arg(i))); }
QStringList shownRows(QTableView* g)
{
    QStringList rows;
    const QAbstractItemModel* m = g->model();
    for (int r = 0; r < m->rowCount(); ++r) {
        QStringList cells;
        for (int c = 0; c < m->columnCount(); ++c)
            cells << m->index(r, c).data().toString();
        rows << cells.join(QLatin1Char('|'));
    }
    return rows;
}

// The fields of record i of the long list: Chinese and ASCII of varying length.
QStringList longListRecord(int i)
{
    return {QStringLiteral("骨料%1秤").arg(i % 6 + 1), QStringLiteral("2026/%1/%2 9:%3:07").arg(i % 12 + 1).arg(i % 28 + 1).arg(i % 60),
            i % 3 ? QStringLiteral("张工%1").arg(i % 97) : QStringLiteral("李"), i % 2 ? QStringLiteral("标重") : QStringLiteral("标零"),
            QString::number(i), QString::number(i % 20000 / 10.0, 'f', 1), QString::number(i % 3001)};
}


// file: null for none, in GB18030 unless a byte-order mark goes before it.
struct GridCase { const char *name, *file, *mark; QStringList rows; };
const GridCase kGrid[] = {
    {"no file", nullptr, "", {}},
    {"empty file", "", "", {}},
    // Names whose GB18030 bytes are valid UTF-8 as well.
    {"zero then span, oldest first",
     "砂\r\n2026/3/5 9:00:00\r\n郑伟\r\n标零\r\n5000\r\n0.0\r\n0\r\n\r\n"
     "1#砂\r\n2026/3/5 9:10:00\r\n谢强\r\n标重\r\n9000\r\n1500.5\r\n1500.5\r\n\r\n", "",
     {"砂|2026/3/5 9:00:00|郑伟|标零|5000|0.0|0", "1#砂|2026/3/5 9:10:00|谢强|标重|9000|1500.5|1500.5"}},
    // An empty field pulls the next record's title into its row.
    {"empty operator shifts the row",
     "二号秤\r\n2026/3/5 9:00:00\r\n\r\n标重\r\n5000\r\n1500.5\r\n1500.5\r\n\r\n"
     "一号秤\r\n2026/3/5 9:10:00\r\n张工\r\n标重\r\n5000\r\n1.5\r\n1.5\r\n\r\n", "",
     {"二号秤|2026/3/5 9:00:00|标重|5000|1500.5|1500.5|一号秤", "2026/3/5 9:10:00|张工|标重|5000|1.5|1.5|"}},
    {"comma splits, quotes keep it, blanks trimmed", "A,B\r\n\"C,D\"x\r\n  E  \r\nF\r\nG\r\nH\r\n", "",
     {"A|B|C,D|E|F|G|H"}},
    {"LF and lone CR end lines too", "一\n二\r三\r\n四\n\n五\r\r六\n七", "", {"一|二|三|四|五|六|七"}},
    {"UTF-8 behind a byte-order mark", "秤\r\nt\r\n王\r\n标零\r\n1\r\n2\r\n3\r\n", "\xEF\xBB\xBF", {"秤|t|王|标零|1|2|3"}},
    {"UTF-16 behind its mark", "秤\r\nt\r\n王\r\n标零\r\n1\r\n2\r\n3\r\n", "\xFF\xFE", {"秤|t|王|标零|1|2|3"}},
};

const struct { const char *name, *file, *routine; } kRefusedWrites[] = {
    {"monthly file", "Data/20263BiaoCen.txt", "AppendZeroRecord"},
    {"hidden copy", "drive_c/Program Files/MswSpool/20263MswSpool.txt", "AppendWeightRecord"},
    {"operation list", "Data/BiaoCeng.txt", "AppendOpRecord"},
    {"configuration", "Data/BLZConfig.dat", "SaveBLZConfig"},
};

const struct { const char *name, *field, *csv; } kCsvFields[] = {
    {"plain", "1500.5", "1500.5"},
    {"comma", "C,D", "\"C,D\""},
    {"quote doubled", "ab\"c", "\"ab\"\"c\""},
    {"CR LF kept inside quotes", "a\r\nb", "\"a\r\nb\""},
    {"lone LF", "a\nb", "\"a\nb\""},
    {"Chinese as UTF-8", "骨料1秤", "骨料1秤"},
    {"blanks kept", " x ", " x "},
    {"empty", "", ""},
};

// current and found: -1 for none; with none found, the selection stays.
const struct { const char* name; int current; const char* text; int found; } kFinds[] = {
    {"from the top", -1, "标重", 1},
    {"after the current row", 1, "标", 2},
    {"round to the top", 2, "一号", 0},
    {"letters in any case", 0, "ab", 2},
    {"no row holds it", 1, "三号", -1},
};

// out: the first two fields of each row after the headers, or the error.
const struct { const char *name, *from, *to, *scale, *out; } kCommands[] = {
    {"months inclusive", "2026-01", "2026-03", "",
     "一号秤 2026/1/31 8:00:00|二号秤 2026/3/1 8:00:00|2026/3/2 8:00:00 李"},
    {"one scale, by the field before the date", "2026-01", "2026-11", "一号秤",
     "一号秤 2026/1/31 8:00:00|2026/3/2 8:00:00 李|2026/11/2 8:00:00 李"},
    {"a shifted row goes by its date", "2026-03", "2026-03", "一号秤", "2026/3/2 8:00:00 李"},
    {"no bounds", "", "", "",
     "一号秤 2025/12/31 8:00:00|一号秤 2026/1/31 8:00:00|二号秤 2026/3/1 8:00:00|2026/3/2 8:00:00 李|2026/11/2 8:00:00 李"},
    {"nothing in range", "2027-01", "", "", ""},
    {"bad month", "2026-13", "", "", "error: --from: “2026-13”不是月份：请写成 YYYY-MM，例如 2026-03"},
    {"from after to", "2026-11", "2026-01", "", "error: --from 2026-11 晚于 --to 2026-01"},
};
struct Seen {
    QSize size;
    QPoint pos;
    QRect label, ok, yes, no;
    bool okShown = false, yesShown = false;
};

QPushButton* btn(MbQuestion* box, const char* n) { return box->findChild<QPushButton*>(QLatin1String(n)); }

// Shows the box as a caller does and, once it is up, records it and then closes it with `button`
// (empty: the window's own close).
Seen showAndAnswer(const QString& text, bool isOk, const char* button)
{
    MbText = text;
    MbIsOk = isOk;
    Seen seen;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        MbQuestion* box = MbQuestion::showing();
        if (!box || !box->isVisible())
            return;
        poll.stop();
        seen = {box->size(), box->pos(), box->findChild<QLabel*>(QStringLiteral("LblAsk"))->geometry(),
                btn(box, "CmdMbOK")->geometry(), btn(box, "CmdYes")->geometry(), btn(box, "CmdNo")->geometry(),
                btn(box, "CmdMbOK")->isVisible(), btn(box, "CmdYes")->isVisible() && btn(box, "CmdNo")->isVisible()};
        *button ? btn(box, button)->click() : void(box->close());
    });
    poll.start(5);
    ShowMbQuestion();
    return seen;
}

const struct { const char *name, *button; bool isOk, before, result; } kAnswers[] = {
    {"OK", "CmdMbOK", true, false, true},
    {"Yes", "CmdYes", false, false, true},
    {"No", "CmdNo", false, true, false},
    {"closed, result kept true", "", false, true, true},
    {"closed, result kept false", "", true, false, false},
};
}  // namespace

// The weight calibration form on the wire, the records it leaves, and the moisture form beside it; the
// operation list as the record viewer shows it (order, the row shift of an empty field, the grid's columns, a
// long file read whole), its export and the records command; the own message box.
class YIBiaoTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterCalibrationForms(); }
    void init()
    {
        h = new ConsoleHarness;
        mb = new MbAnswerer;
        QDir(h->dir.path()).mkpath(QStringLiteral("Data"));
        // In GB18030 the operator's name is valid UTF-8 as well: read as UTF-8 it would reach the records garbled.
        TextFile::writeLines(h->path(QStringLiteral("Data/SysData.dat")), {QStringLiteral("UserNam:郑伟")});
        CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
        h->connectLink();
    }

    void cleanup()
    {
        delete mb;
        delete h;
        CalClock = {};
    }

    void calibrationAgainstTheController_data() { TableRows(kCal); }
    void calibrationAgainstTheController()
    {
        const CalCase& c = TableRow(kCal);
        const int scale = c.scale;
        const bool span = c.span, taken = c.outcome == Outcome::Success;
        ScaleName[size_t(scale)] = QStringLiteral("一号秤");
        ScaleDecimals[size_t(scale)] = 1;  // 1500.5 goes as 15005
        h->sim.setLoad(scale, 3000);       // zero point 2000: the weight shows 1000 raw, 100.0
        h->sim.setCalOutcome(c.outcome);
        QWidget* f = openAt(scale);
        QWidget* weightForm = f;
        if (c.humid) {
            HumidActive = true;
            Forms::show(QStringLiteral("BcButHumid"));
            clickTab(Forms::loaded(QStringLiteral("BcButHumid")), scale);
            f = Forms::loaded(QStringLiteral("YIBiaoHumidNew"));
        }
        clickTab(f, span ? 2 : 1);
        for (int i = 0; i < 3; ++i)  // the selected tab head dark blue, the others dark grey
            QCOMPARE(TextColor(label(f, qPrintable(QStringLiteral("LblBd(%1)").arg(i)))),
                     i == (span ? 2 : 1) ? QColor(0, 0, 192) : QColor(64, 64, 64));
        QTRY_COMPARE(label(f, "LbLADv")->text(), QStringLiteral("3000"));
        QCOMPARE(label(f, "LblZLv")->text(), QStringLiteral("100.0"));
        Ctl<QLineEdit>(f, "TxtFmzL")->setText(c.humid ? QStringLiteral("12.5") : QStringLiteral("1500.5"));
        ClickOn(label(f, "lblBdOk"));
        const QStringList ask = c.humid ? QStringList{"确定要湿度标定吗?", "正在湿度标定，请稍候......"}
                                : span  ? QStringList{"确定要称量分度调校吗?", "正在称量分度调校，请稍候......"}
                                        : QStringList{"确定要进行零位调校吗?", "正在零位调校，请稍候......"};
        QCOMPARE(mb->texts.value(0), ask[0]);
        QLabel* line = label(f, span ? "LbLBZwc" : "LbLBLwc");
        QCOMPARE(line->text(), ask[1]);
        QCOMPARE(TextColor(line), QColor(Qt::red));
        QVERIFY(!Link().Timer1.isActive());
        QCOMPARE(Link().Timer3.isActive() ? Link().Timer3.interval() : 0, 1000);
        waitIdle();
        h->takeFrames();
        // Nothing leaves before Timer3 ticks.
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());

        // The next live read leaves before the record files are written: the files do not hold up the link.
        bool liveReadBeforeRecords = false, statusSeen = false;
        connect(&h->sim, &plcsim::Controller::requestReceived, this, [&](const QByteArray& frame) {
            if (QString::fromLatin1(frame) == kStatusRead)
                statusSeen = true;
            else if (statusSeen && QString::fromLatin1(frame) == kLiveRead && !liveReadBeforeRecords)
                liveReadBeforeRecords = !QFile::exists(opRecords()) && !QFile::exists(monthly());
        });
        Link().timer3Tick();
        QTRY_COMPARE(line->text(), QString::fromUtf8(c.caption));
        waitIdle();
        QCOMPARE(h->takeFrames().join(QString()), c.frames);
        QVERIFY(liveReadBeforeRecords);
        QCOMPARE(TextColor(line), taken ? QColor(0, 0x80, 0) : QColor(Qt::red));
        QCOMPARE(Link().Timer1.isActive(), !taken);  // polling again only after a failure

        QCOMPARE(rawBytes(monthly()), GbLines(c.monthly));
        QCOMPARE(rawBytes(opRecords()), GbLines(c.op));
        const QString spool = h->path(QStringLiteral("drive_c/Program Files/MswSpool"));
        QCOMPARE(rawBytes(spool + QStringLiteral("/20263MswSpool.txt")), GbLines(c.hidden));
        QCOMPARE(AppPaths::isHidden(spool), taken);
        if (c.humid) {
            QVERIFY(label(weightForm, "LbLADv")->text().isEmpty() && label(weightForm, "LbLBLwc")->isHidden() &&
                    label(weightForm, "LbLBZwc")->isHidden());
            QCOMPARE(Ctl<QLineEdit>(weightForm, "txtBCSuccessRead")->text(), QString());
        }
    }

    void statusReply_data() { TableRows(kReplies); }
    void statusReply()
    {
        QFETCH(int, row);
        const int tab = kReplies[row].tab;
        const bool taken = kReplies[row].taken;
        QWidget* f = openAt(0);
        clickTab(f, 1);
        waitIdle();
        ClickOn(label(f, "lblBdOk"));
        // The reply is handed over as the dispatch would, without the pulses.
        Link().Timer3.stop();
        ZeroRequest = false;
        if (tab >= 0)
            clickTab(f, tab);
        waitIdle();
        h->takeFrames();
        SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), QStringLiteral("XXX"));
        SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), QLatin1String(kReplies[row].reply));

        QLabel* line = label(f, "LbLBLwc");
        QCOMPARE(line->text(),
                 taken ? QStringLiteral("零位调校完成，请再进行实际验秤!") : QStringLiteral("正在零位调校，请稍候......"));
        QCOMPARE(QFile::exists(opRecords()), taken);
        QCOMPARE(QFile::exists(monthly()), taken);
        QCOMPARE(line->isHidden() && label(f, "LbLBZwc")->isHidden(), tab >= 0);
        if (taken)
            QCOMPARE(TextColor(line), QColor(0, 0x80, 0));
        QCOMPARE(Link().Timer1.isActive(), taken);
        waitIdle();
        if (tab < 0)  // a tab restarts the live values of its own
            QCOMPARE(h->takeFrames().contains(kLiveRead), taken);
    }

    void optionSwitches_data() { TableRows(kSwitches); }
    void optionSwitches()
    {
        const SwitchCase& c = TableRow(kSwitches);
        const QString box = QLatin1String(c.box);
        for (int s : {496, 501, 505, 508, 608})
            h->sim.setSBit(s, true);
        QWidget* f = openAt(0);
        QVERIFY(Ctl<QCheckBox>(f, "Check1(10)")->isChecked() && Ctl<QCheckBox>(f, "Check2(0)")->isChecked());
        QVERIFY(!Ctl<QCheckBox>(f, "Check1(11)")->isChecked() && !Ctl<QCheckBox>(f, "Check2(1)")->isChecked());
        h->takeFrames();
        if (c.unplugged)
            h->sim.injectFault(plcsim::Fault::Unplugged);
        Ctl<QCheckBox>(f, box)->click();
        QLabel* l = label(f, box.startsWith(QStringLiteral("Check1")) ? "LblTzxxTip" : "LblTzxxZeroTip");
        if (c.unplugged) {
            Link().Timer2.stop();  // the time-outs are driven by hand
            for (int i = 0; i < 8; ++i)
                Link().RetryRequest();
            QCOMPARE(mb->texts, QStringList());  // eight re-sends before the operator is told
            Link().RetryRequest();
            QVERIFY(mb->texts.value(0).startsWith(QStringLiteral("通讯发生错误请检查：")));
        } else {
            waitIdle();
        }
        const QStringList frames = h->takeFrames();
        QCOMPARE(frames.value(0), c.frame);
        QCOMPARE(frames.count(c.frame), c.unplugged ? 9 : 1);
        QCOMPARE(l->isVisible() ? l->text() : QString(), QString::fromUtf8(c.tip));
        if (l->isVisible())
            QCOMPARE(TextColor(l), QColor(0, 0x80, 0));
        QCOMPARE(Ctl<QCheckBox>(f, QLatin1String(c.partner))->isChecked(), !Ctl<QCheckBox>(f, box)->isChecked());
    }

    void testWeightEntry_data() { TableRows(kEntries); }
    void testWeightEntry()
    {
        const auto& c = TableRow(kEntries);
        const QString form = QLatin1String(c.form), action = QLatin1String(c.action);
        QWidget* f = openAt(0);
        if (form == QLatin1String("YIBiaoHumidNew")) {
            HumidActive = true;
            Forms::show(form);
            f = Forms::loaded(form);
        }
        clickTab(f, 2);
        auto* b = Ctl<QLineEdit>(f, "TxtFmzL");
        QVERIFY(b->isVisible());
        b->setText(QLatin1String(c.start));
        b->setFocus();
        b->setCursorPosition(0);
        if (action == QLatin1String("delete"))
            QTest::sendKeyEvent(QTest::Click, b, Qt::Key_Delete, QString(QChar(0x7F)), Qt::NoModifier);
        else if (action.startsWith(QLatin1String("paste:")))
            QGuiApplication::clipboard()->setText(action.mid(6)), b->paste();
        else
            QTest::keyClicks(b, action.mid(5));
        QCOMPARE(b->text(), QLatin1String(c.text));
    }

    void monthlyFilesWithoutDataFolder()
    {
        QDir(h->path(QStringLiteral("Data"))).removeRecursively();
        CalClock = [] { return QDateTime(QDate(2026, 11, 1), QTime(8, 0)); };
        ScaleName[13] = QStringLiteral("外加剂3秤");
        BiaoZeroTime[13] = QStringLiteral("t");
        AppendZeroRecord(13);
        AppendWeightRecord(13);
        QString text;
        QVERIFY(TextFile::read(h->path(QStringLiteral("202611BiaoCen.txt")), &text));
        QVERIFY(text.startsWith(QStringLiteral("外加剂3秤BiaoZeroTime=t\r\n")));
        QVERIFY(text.contains(QStringLiteral("\r\nCengIndex=14\r\n")));
        QVERIFY(TextFile::read(h->path(QStringLiteral("drive_c/Program Files/MswSpool/202611MswSpool.txt")), &text));
        QVERIFY(text.startsWith(QStringLiteral("CengIndex=14\r\n")));
    }

    // The rows as read from the file, again on a new date (the date does not filter), in the design's
    // columns: widths in twips, 15 to the pixel, the last one not stretched. The rows go with the form.
    void gridColumns_data() { TableRows(kGrid); }
    void gridColumns()
    {
        const GridCase& c = TableRow(kGrid);
        if (c.file) {
            const QString text = QString::fromUtf8(c.file);
            const QByteArray mark(c.mark);
            PutFile(h->path(QStringLiteral("Data/BiaoCeng.txt")),
                      mark.isEmpty()          ? TextFile::encode(text)
                      : mark.startsWith('\xEF') ? mark + text.toUtf8()
                                              : mark + QStringEncoder(QStringEncoder::Utf16LE).encode(text));
        }
        Forms::show(QStringLiteral("FrmJk"));
        QWidget* form = Forms::loaded(QStringLiteral("FrmJk"));
        auto* g = Ctl<QTableView>(form, QStringLiteral("MSGrid"));
        QCOMPARE(shownRows(g), c.rows);
        auto* picker = Ctl<QDateEdit>(form, QStringLiteral("DTPicker1"));
        picker->setDate(picker->date().addDays(-40));
        QCOMPARE(shownRows(g), c.rows);
        QVERIFY(!g->horizontalHeader()->stretchLastSection());
        QStringList columns;
        for (int col = 0; col < g->model()->columnCount(); ++col) {
            columns << g->model()->headerData(col, Qt::Horizontal).toString() + QLatin1Char(' ') +
                           QString::number(g->horizontalHeader()->sectionSize(col));
            if (!c.rows.isEmpty())
                QCOMPARE(g->model()->index(0, col).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        }
        QCOMPARE(columns.join(QLatin1Char('|')),
                 QStringLiteral("秤名称 100|标秤时间 133|操作员 100|具体操作 100|AD信号值 87|重量值 87|砝码值 87"));
        QPointer<QAbstractItemModel> model = g->model();
        Forms::unload(QStringLiteral("FrmJk"));
        QVERIFY(model.isNull());
    }

    // A record or the save on exit that the file system refuses leaves the file as it was and a line in the
    // log with the system's reason and the path; the calibration itself stands.
    void refusedWritesAreLogged_data() { TableRows(kRefusedWrites); }
    void refusedWritesAreLogged()
    {
        QFETCH(int, row);
        const QString path = h->path(QLatin1String(kRefusedWrites[row].file));
        const QString routine = QLatin1String(kRefusedWrites[row].routine);
        CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
        PutFile(path, "kept\r\n");
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
        // An operator other than the superuser, whom permissions do not stop, in folders open to him.
        for (const QString& folder : {h->dir.path(), h->path(QStringLiteral("Data"))})
            QFile::setPermissions(folder, QFile::Permissions(0x7777));
        {
            FilesAsUser nobody(65534, 65534);
            if (routine == QLatin1String("SaveBLZConfig")) {
                SaveBLZConfig();
            } else if (routine == QLatin1String("AppendOpRecord")) {
                AppendOpRecord("秤", "t", "王", "标零", "1", "2", "3");
            } else {
                AppendZeroRecord(0);
                AppendWeightRecord(0);
            }
        }
        QCOMPARE(rawBytes(path), QByteArray("kept\r\n"));
        const QString log = ErrorLogText();
        QVERIFY2(log.contains("ErrNumber:70----Permission denied: " + path + "\r\nErrForm:Module1\r\nErrSub:" + routine), qPrintable(log));
    }

    // A field as CSV writes it, inside a row: quoted when it must be, quotes doubled, UTF-8, CRLF at the end.
    void csvQuoting_data() { TableRows(kCsvFields); }
    void csvQuoting()
    {
        QFETCH(int, row);
        QCOMPARE(CsvRow({QString::fromUtf8(kCsvFields[row].field), QStringLiteral("标零")}),
                 QByteArray(kCsvFields[row].csv) + ",标零\r\n");
    }

    // Ctrl+S on the viewer: a write that fails says so and leaves no file; then the rows shown, every field as
    // the grid shows it.
    void exportRows()
    {
        // The long list: Chinese and ASCII fields of varying length, every record back in order, field for
        // field; the second record's empty operator shifts all rows after it by one field.
        QStringList fields{"a,b",    "2026/3/5 9:00:00", "x\"y", "标零", "5000", "0.0", "0",
                           "二号秤", "2026/3/5 9:10:00", "标重", "1",    "2",    "3"};
        QStringEncoder gb("GB18030");
        QByteArray list = gb.encode(QStringLiteral("\"a,b\"\r\n2026/3/5 9:00:00\r\nx\"y\r\n标零\r\n5000\r\n0.0\r\n0\r\n\r\n"
                                                   "二号秤\r\n2026/3/5 9:10:00\r\n\r\n标重\r\n1\r\n2\r\n3\r\n\r\n"));
        for (int i = 0; i < 100000 - 2; ++i) {
            list += gb.encode(longListRecord(i).join(QStringLiteral("\r\n")) + QStringLiteral("\r\n\r\n"));
            fields += longListRecord(i);
        }
        PutFile(h->path(QStringLiteral("Data/BiaoCeng.txt")), list);
        Forms::show(QStringLiteral("FrmJk"));
        auto* form = static_cast<FrmJk*>(Forms::loaded(QStringLiteral("FrmJk")));
        const QString gone = h->path(QStringLiteral("gone/records.csv"));
        const QString path = h->path(QStringLiteral("out/records.csv"));
        QDir().mkpath(h->path(QStringLiteral("out")));
        for (const QString& to : {gone, path}) {
            FrmJk::ChooseExportPath = [to](QWidget*, const QString&) { return to; };
            form->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(form));
            QTest::keyClick(form, Qt::Key_S, Qt::ControlModifier);
            QTRY_COMPARE(mb->texts.size(), to == gone ? 1 : 2);
        }
        FrmJk::ChooseExportPath = nullptr;
        QCOMPARE(mb->errorIcons, (QList<bool>{true, false}));
        QVERIFY(mb->texts[0].startsWith(QStringLiteral("导出失败：\n") + gone));
        QCOMPARE(mb->texts[1], QStringLiteral("已导出100000条记录到：\n") + path);
        QVERIFY(!QFile::exists(gone));

        // UTF-8 behind its mark, the headers, then each row as the grid shows it.
        QByteArray csv = "\xEF\xBB\xBF" "秤名称,标秤时间,操作员,具体操作,AD信号值,重量值,砝码值\r\n";
        QStringList shown;
        for (const QString& r : shownRows(Ctl<QTableView>(form, QStringLiteral("MSGrid")))) {
            shown += r.split(QLatin1Char('|'));
            csv += CsvRow(r.split(QLatin1Char('|')));
        }
        QCOMPARE(shown, fields << QString());
        QVERIFY(csv.contains("\r\n\"a,b\",2026/3/5 9:00:00,\"x\"\"y\",标零,5000,0.0,0\r\n"));
        QCOMPARE(rawBytes(path), csv);
    }

    // Ctrl+F: the next row after the current one that holds the text, from the top again after the last.
    void findSelectsTheNextRow_data() { TableRows(kFinds); }
    void findSelectsTheNextRow()
    {
        const auto& c = TableRow(kFinds);
        PutFile(h->path(QStringLiteral("Data/BiaoCeng.txt")),
                  TextFile::encode(QStringLiteral("一号秤\r\nt1\r\n张工\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "二号秤\r\nt2\r\n张工\r\n标重\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "AB秤\r\nt3\r\n王工\r\n标零\r\n1\r\n2\r\n3\r\n\r\n")));
        Forms::show(QStringLiteral("FrmJk"));
        QWidget* form = Forms::loaded(QStringLiteral("FrmJk"));
        auto* g = Ctl<QTableView>(form, QStringLiteral("MSGrid"));
        if (c.current >= 0)
            g->selectRow(c.current);
        form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(form));
        QTest::keyClick(form, Qt::Key_F, Qt::ControlModifier);
        auto* find = Ctl<QDialog>(form, QStringLiteral("FindRecords"));
        QVERIFY(find && find->isVisible());
        Ctl<QLineEdit>(find, QStringLiteral("TxtFind"))->setText(QString::fromUtf8(c.text));
        Ctl<QPushButton>(find, QStringLiteral("cmdFindNext"))->click();
        QCOMPARE(g->currentIndex().row(), c.found >= 0 ? c.found : c.current);
        QCOMPARE(g->selectionModel()->selectedRows().size(), c.found >= 0 || c.current >= 0 ? 1 : 0);
        QCOMPARE(Ctl<QLabel>(find, QStringLiteral("lblFindResult"))->text().isEmpty(), c.found >= 0);
    }

    // The records command: the rows of the months asked for, of one scale if asked, as the grid shows them;
    // a shifted row goes by the date in it. Bad months are told, nothing is printed.
    void recordsCommand_data() { TableRows(kCommands); }
    void recordsCommand()
    {
        const auto& c = TableRow(kCommands);
        const QString out = QString::fromUtf8(c.out);
        // The third record has no operator: its row ends with the fourth's title, and the rows after it start
        // with their dates.
        PutFile(h->path(QStringLiteral("Data/BiaoCeng.txt")),
                  TextFile::encode(QStringLiteral("一号秤\r\n2025/12/31 8:00:00\r\n李\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "一号秤\r\n2026/1/31 8:00:00\r\n李\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "二号秤\r\n2026/3/1 8:00:00\r\n\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "一号秤\r\n2026/3/2 8:00:00\r\n李\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "一号秤\r\n2026/11/2 8:00:00\r\n李\r\n标重\r\n1\r\n2\r\n3\r\n\r\n")));
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const QString error =
            PrintRecordsCsv(QLatin1String(c.from), QLatin1String(c.to), QString::fromUtf8(c.scale), buffer);
        if (out.startsWith(QStringLiteral("error: "))) {
            QCOMPARE(error, out.mid(7));
            QVERIFY(buffer.data().isEmpty());
            return;
        }
        QCOMPARE(error, QString());
        QVERIFY(buffer.data().startsWith("秤名称,标秤时间,操作员,具体操作,AD信号值,重量值,砝码值\r\n"));
        QStringList got;
        const QStringList lines = QString::fromUtf8(buffer.data()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        for (const QString& row : lines.mid(1))
            got << row.section(QLatin1Char(','), 0, 1).replace(QLatin1Char(','), QLatin1Char(' '));
        QCOMPARE(got.join(QLatin1Char('|')), out);
    }

    void answers_data() { TableRows(kAnswers); }
    void answers()
    {
        const auto& c = TableRow(kAnswers);
        delete std::exchange(mb, nullptr);  // this operator answers by hand
        MbResult = c.before;
        const Seen s = showAndAnswer(QStringLiteral("是否退出秤控台?"), c.isOk, c.button);
        QCOMPARE(s.okShown, c.isOk);
        QCOMPARE(s.yesShown, !c.isOk);
        QCOMPARE(MbResult, c.result);
        QVERIFY(!MbQuestion::showing());
    }

    // No width of its own: a short text gets a narrow box. Over the calibration form it sits below the values.
    void sizeAndPlace()
    {
        delete std::exchange(mb, nullptr);
        Forms::load(QStringLiteral("YIBiao"))->move(120, 90);
        CurrentForm = QStringLiteral("YIBiao");
        const Seen small = showAndAnswer(QStringLiteral("密码错误!"), false, "CmdYes");
        const Seen wide = showAndAnswer(QStringLiteral("参数更改后未设定，是否返回?").repeated(3), false, "CmdYes");
        const Seen tall =
            showAndAnswer(QStringLiteral("通讯发生错误请检查：\n1、下位机是否已断电；\n2、下位机是否正常运行；"), false, "CmdYes");
        QCOMPARE(small.pos, QPoint(120, 90 + 180));
        QVERIFY(wide.size.width() > small.size.width());
        QVERIFY(tall.size.height() > small.size.height());
        for (const Seen& s : {small, wide, tall}) {
            // Width: the label and 1000 twips; height: below the label 1200 twips; buttons 200 twips below it.
            QCOMPARE(s.size.width(), s.label.width() + 66);
            QCOMPARE(s.size.height(), s.label.bottom() + 1 + 80);
            QCOMPARE(s.yes.top(), s.label.bottom() + 1 + 13);
            QCOMPARE(s.yes.left(), (s.size.width() - 106) / 2);
            QCOMPARE(s.no.left(), s.yes.left() + 60);
            QCOMPARE(s.ok.left(), (s.size.width() - s.ok.width()) / 2);
        }
    }

private:
    // The globals a click on scale n of the calibration menu stores, then the form itself.
    QWidget* openAt(int scale)
    {
        h->sim.setSBit(612, true);  // bit on: tracking off
        UseScaleDevices(scale);
        Forms::show(QStringLiteral("YIBiao"));
        QWidget* f = Forms::loaded(QStringLiteral("YIBiao"));
        // The option word and the zero tracking word arrive one after the other.
        if (!QTest::qWaitFor([f] { return !Ctl<QLineEdit>(f, "txtTzxxZeroRead")->text().isEmpty() && SendFlag; }, 3000))
            qWarning("the option words did not arrive");
        return f;
    }

    void waitIdle() { QTRY_VERIFY(SendFlag); }
    QString monthly() const { return h->path(QStringLiteral("Data/20263BiaoCen.txt")); }
    QString opRecords() const { return h->path(QStringLiteral("Data/BiaoCeng.txt")); }

    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

QTEST_MAIN(YIBiaoTest)
#include "yi_biao_test.moc"
