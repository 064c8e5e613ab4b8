// The calibration forms as the engineer uses them, the records they leave, their viewer and the own message box.
#include "cal_rig.h"

#include "calibration/cname_files.h"
#include "calibration/frm_jk.h"
#include "calibration/mb_question.h"
#include "calibration/records_csv.h"
#include "common/app_paths.h"
#include "common/partner_station.h"
#include "shell/plc_form.h"

#include <QBuffer>
#include <QCheckBox>
#include <QClipboard>
#include <QDateEdit>
#include <QDirIterator>
#include <QHeaderView>
#include <QPushButton>
#include <QStringEncoder>
#include <QTableView>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

using plcsim::Outcome;

namespace {
const QString kInitRunning = QStringLiteral("正在硬件初始化,请稍候...");

bool shown(BcBut* f, const char* control) { return !Ctl(f, QLatin1String(control))->isHidden(); }
QString status(BcBut* f) { return f->LbLCssdS->isHidden() ? QString() : f->LbLCssdS->text(); }

// Codes typed in turn, "dated": the code and today's month plus day. Outcome: "gate", "menu" or "ended".
struct GateCase { const char* name; short mode; bool passedEarlier, firstNaming; QStringList codes; int wrong;
                  const char* outcome; };
const QStringList kFourWrong(4, QStringLiteral("12345"));
const GateCase kGate[] = {
    {"calibration, first time", 0, false, false, {}, 0, "gate"},
    {"calibration, passed this run", 0, true, false, {}, 0, "menu"},
    {"parameters, never gated", 1, false, false, {}, 0, "menu"},
    {"a near miss", 0, false, false, {"90766"}, 1, "gate"},
    {"first naming: month plus day", 0, false, true, {"dated"}, 0, "menu"},
    {"first naming: plain code", 0, false, true, {"90765"}, 1, "gate"},
    {"four wrong, then the code", 0, false, false, kFourWrong + QStringList{"90765"}, 4, "menu"},
    {"five wrong end the process", 0, false, false, kFourWrong + QStringList{"12345"}, 4, "ended"},
};

// Zero, span, weight, option; or parameter block, option. A blank name shows as unused, and neither its
// caption nor its picture chooses it.
struct ScaleCase { const char* name; short mode; int scale; QStringList devices; };
const ScaleCase kScales[] = {
    {"blank name", 0, 3, QStringList(4, QStringLiteral("unchanged"))},
    {"calibration 0", 0, 0, {"S181", "S182", "D43", "S500"}},
    {"calibration 6", 0, 6, {"S205", "S206", "D49", "S548"}},
    {"calibration 10", 0, 10, {"S207", "S208", "D53", "S580"}},
    {"calibration 13", 0, 13, {"S203", "S204", "D56", "S604"}},
    {"parameters 0", 1, 0, {"D300", "S500"}},
    {"parameters 13", 1, 13, {"D495", "S604"}},
};

// 0: the controller's own timing; n: S999 comes on before poll n; -1: never.
const struct { const char* name; int finishAt; } kInit[] = {
    {"controller finishes at once", 0},
    {"answer to the last poll still counts", 51},
    {"controller never finishes", -1},
};

const QString kNetNoPath =
    QStringLiteral("网络路径不存在，更改的数据未能同步，请先保证生产控制系统数据能正常同步后再重新设定！");
const QString kAskNames = QStringLiteral("是否设定当前电子秤名称?\n注意:设定之前必须主从机都要开机且网络连接正常,否则不能同步更改的数据!");
const QString kAskBins = QStringLiteral("是否设定当前料仓名称?\n注意:设定之前必须主从机都要开机且网络连接正常,否则不能同步更改的数据!");
const QString kNamesDone = QStringLiteral("电子秤名称设定已成功完成!");
const QString kBinsDone = QStringLiteral("料仓名称设定已成功完成!");
const QString kAskRestore = QStringLiteral("是否恢复出厂设定的电子秤名称?");
const QString kRestoreFailed = QStringLiteral("恢复出厂设定失败!");
const QString kNetLost = QStringLiteral("网络未联接，更改的数据未能同步，请在网络正常时重新设定！");

QHostAddress ip(const char* a) { return QHostAddress(QLatin1String(a)); }

// CName.ini after its [Name] section as the first naming leaves it: the time, the bins of the defaults.
QStringList binsPart(const QString& time)
{
    return {"", "[RecordTime]", "RecordTime=" + time, "",
            "[01]", "01=骨料1", "", "[02]", "01=骨料2", "", "[03]", "01=骨料3", "", "[04]", "01=骨料4", "",
            "[05]", "01=", "", "[06]", "01=", "", "[07]", "01=", "02=", "", "[11]", "01=水秤", "02=", "",
            "[08]", "01=水泥M1", "02=水泥M2", "03=水泥M3", "04=", "", "[09]", "01=粉灰M1", "02=粉灰M2", "03=", "",
            "[10]", "01=", "02=", "", "[12]", "01=外加剂19", "", "[13]", "01=外加剂20", "", "[14]", "01="};
}

// A setting from a CName.ini of one name: what the operator is told, the file, and its copy in folder for the
// production control system, made only when nothing more is said. readOnly: CName.ini refused, told, logged;
// "@": the application folder. netPath: NetPath.ini's path ("": no file); there: "file" where the folder should
// be, or a "read-only" CName.ini in it; statError: looking at the folder fails so (only a folder that is not
// there is a missing path). spoolFolder: made before a restore, where a failed copy leaves the present names.
const QString kEmpty = QStringLiteral("电子秤名称不能为空!");
const QString kRefused = QStringLiteral("设定失败!\nPermission denied: @/Data/CName.ini");
QStringList told(const QString& more = {})
{
    return more.isEmpty() ? QStringList{kAskNames, kNamesDone} : QStringList{kAskNames, kNamesDone, more};
}
struct SetCase { const char* name; QStringList boxes; const char *box = "TxtDCansd(1)", *typed = "砂"; int tab = 1;
                 bool answer = true, readOnly = false; int statError = 0; bool spoolFolder = false;
                 const char *netPath = "@/prod", *folder = "prod/Data", *there = ""; };
const SetCase kSettings[] = {
    {"empty scale name", {kEmpty}, "TxtDCansd(1)", ""},
    {"blanks only", {kEmpty}, "TxtDCansd(13)", "   "},
    {"empty bin name", {QStringLiteral("料仓名称不能为空!")}, "TxtDCansdName(9)", " ", 2},
    {"unused box is not checked", told(), "TxtDCansd(5)", ""},
    {"answer no", {kAskNames}, "TxtDCansd(1)", "砂", 1, false},
    {"bins, answer no", {kAskBins}, "TxtDCansdName(9)", "P.O", 2, false},
    {"names refused", {kAskNames, "电子秤名称" + kRefused}, "TxtDCansd(1)", "砂", 1, true, true},
    {"bins refused", {kAskBins, "料仓名称" + kRefused}, "TxtDCansdName(9)", "P.O", 2, true, true},
    {.name = "no NetPath.ini", .boxes = told(kNetNoPath), .netPath = ""},
    {.name = "no Data folder there", .boxes = told(kNetNoPath), .folder = "prod"},
    {.name = "folder of this station", .boxes = told()},
    {.name = "share of a station", .boxes = told(), .netPath = "\\\\192.168.10.9\\prod",
     .folder = "stations/192.168.10.9/prod/Data"},
    {.name = "drive of a station", .boxes = told(), .netPath = "\\\\192.168.10.9\\D$\\Prod\\",
     .folder = "stations/192.168.10.9/drive_d/Prod/Data"},
    {.name = "drive letter", .boxes = told(), .netPath = "D:\\Prod", .folder = "drive_d/Prod/Data"},
    {.name = "Data is a file", .boxes = told("76:Path not found"), .there = "file"},
    {.name = "read-only file there", .boxes = told("70:Permission denied"), .there = "read-only"},
    {.name = "not a folder on the way", .boxes = told(kNetNoPath), .statError = ENOTDIR},
    {.name = "station off", .boxes = told(kNetLost), .statError = EHOSTDOWN},
    {.name = "input/output error", .boxes = told(kNetLost), .statError = EIO},
    {.name = "stale handle", .boxes = told(kNetLost), .statError = ESTALE},
    {.name = "automount failed", .boxes = told(kNetLost), .statError = ENODEV},
    {.name = "restore: no spool folder", .boxes = {kAskRestore, kRestoreFailed}, .box = "LblCNameIni"},
    {.name = "restore: spool folder without the file", .boxes = {kAskRestore, kRestoreFailed}, .box = "LblCNameIni",
     .spoolFolder = true},
};

// The partner of the pair gets the first names in its spool folder; a station without a partner, with its
// partner's share missing, or with a share that does not answer, tells the operator nothing more.
// share: "mounted", "plain folder" (an empty mount point), "read-only", "silent"; logged: the error number.
struct PartnerCase { const char* name; QList<QHostAddress> own; const char *share, *partner, *logged; };
const PartnerCase kPartners[] = {
    {"first of a pair", {ip("127.0.0.1"), ip("192.168.10.1")}, "mounted", "192.168.10.2", ""},
    {"second of a pair", {ip("10.1.1.1"), ip("192.168.10.4")}, "mounted", "192.168.10.3", ""},
    {"in no pair", {ip("192.168.10.7"), ip("10.0.0.2")}, "mounted", "", ""},
    {"loopback only", {ip("127.0.0.1"), ip("::1")}, "mounted", "", ""},
    {"share not mounted", {ip("192.168.10.1")}, "plain folder", "192.168.10.2", "52"},
    {"read-only spool file", {ip("192.168.10.2")}, "read-only", "192.168.10.1", "70"},
    {"share does not answer", {ip("192.168.10.1")}, "silent", "192.168.10.2", "52"},
};

// The captions of the bins follow the names of their scales; an entry without a name is unused.
// names: "scale:index=name" or "bin:index=name" before the form loads.
struct CaptionCase { const char* name; int lang; QStringList names; const char *label, *caption; bool inUse; };
const CaptionCase kCaptions[] = {
    {"cement silo", 1, {}, "LblCansdName(9)", "水泥M1", true},
    {"renamed cement", 1, {"scale:8=P.O水泥"}, "LblCansdName(11)", "P.O水泥M3", true},
    {"added powder", 1, {"scale:6=外加粉", "bin:7=粉2"}, "LblCansdName(7)", "外加粉M2", true},
    {"bin of an unused scale", 1, {"bin:16=矿粉1"}, "LblCansdName(16)", "矿粉M1", true},
    {"water keeps its name", 1, {"scale:7=清水秤"}, "LblCansdName(8)", "清水秤", true},
    {"admixture", 1, {"scale:11=减水剂"}, "LblCansdName(18)", "减水剂", true},
    {"second water", 1, {"bin:21=水2"}, "LblCansdName(21)", "清水", true},
    {"unused bin", 1, {}, "LblCansdName(21)", "未使用", false},
    {"unused scale", 1, {}, "LblCansd(4)", "未使用", false},
    {"scale label", 1, {"scale:0= 砂 "}, "LblCansd(0)", "砂", true},
    {"English: unused", 2, {}, "LblCansdName(4)", "Unused", false},
    // No number in the language file: its English is the program's own.
    {"English: second water", 2, {"bin:21=水2"}, "LblCansdName(21)", "Clear water", true},
};

const QString kLiveRead = Frame(QStringLiteral("0101640"));
const QString kStatusRead = Frame(QStringLiteral("0007C02"));
const QString kSep(52, QLatin1Char('#'));

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
// the probes use the bits of slots 4 and 5 and take their known value at D29 and D30. The test weight box holds
// start, then takes entry at its start ("type:", "paste:" or "delete"): only digits and one point get in.
struct CalCase { const char* name; bool humid; int scale; bool span; Outcome outcome; const char *start, *entry;
                 QString frames; const char* caption; QStringList monthly, hidden, op; };
const CalCase kCal[] = {
    {"zero, scale 0, taken", false, 0, false, Outcome::Success, "1500.5", "", pulse("0016", "2000"),
     "零位调校完成，请再进行实际验秤!", kZero, QStringList{"CengIndex=1"} + kZero, opLines("标零")},
    {"span, scale 0, taken, typed", false, 0, true, Outcome::Success, "", "type:15a00-.5.",
     WriteFrame("1056", "9D3A") + pulse("0016", "4000"), "分度调校完成，请再进行实际验秤!", spanLines("1", "1500.5"),
     spanLines("1", "1500.5"), opLines("标重")},
    // Indices 6 and 10 lie apart: S205 is bit 5 of byte 0x19, S208 bit 0 of byte 0x1A, D53 at 0x106A.
    {"zero, scale 6, refused", false, 6, false, Outcome::Refuse, "1500.5", "", pulse("0019", "2000"),
     "零位调校失败，请重新调校!", {}, {}, {}},
    // Delete as X11 sends it.
    {"span, scale 10, unanswered, Delete", false, 10, true, Outcome::NoAnswer, "11500.5", "delete",
     WriteFrame("106A", "9D3A") + pulse("001A", "0100"), "分度调校出错，请重新调校!", {}, {}, {}},
    {"dry, probe 4", true, 4, false, Outcome::Success, "12.5", "", pulse("0017", "2000"), "湿度标定完成!", kZero,
     QStringList{"CengIndex=5"} + kZero, {}},
    {"wet, probe 4, pasted", true, 4, true, Outcome::Success, "", "paste:12.5",
     WriteFrame("103A", "7D00") + pulse("0017", "4000"), "湿度标定完成!", spanLines("5", "12.5"), spanLines("5", "12.5"), {}},
    {"wet, probe 5, refused, paste refused", true, 5, true, Outcome::Refuse, "12.5", "paste:1e3",
     WriteFrame("103C", "7D00") + pulse("0018", "0100"), "湿度标定失败，请重新标定!", {}, {}, {}},
    {"dry, probe 5, unanswered", true, 5, false, Outcome::NoAnswer, "12.5", "", pulse("0017", "8000"),
     "湿度标定错误，请重新标定!", {}, {}, {}},
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

QStringList longListRecord(int i)
{
    return {QStringLiteral("骨料%1秤").arg(i % 6 + 1),
            QStringLiteral("2026/%1/%2 9:%3:07").arg(i % 12 + 1).arg(i % 28 + 1).arg(i % 60),
            i % 3 ? QStringLiteral("张工%1").arg(i % 97) : QStringLiteral("李"),
            i % 2 ? QStringLiteral("标重") : QStringLiteral("标零"),
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
    {"CR LF kept inside quotes", "a\r\nb", "\"a\r\nb\""},
    {"lone LF", "a\nb", "\"a\nb\""},
    {"blanks kept", " x ", " x "},
    {"empty", "", ""},
};

// Ctrl+F on the long list: the next row after the current one that holds the text, from the top again after the
// last. current and found: -1 for none; with none found, the selection stays.
const struct { const char* name; int current; const char* text; int found; } kFinds[] = {
    {"from the top", -1, "标重", 1},
    {"after the current row", 1, "标", 2},
    {"round to the top", 99999, "a,b", 0},
    {"letters in any case", 1, "X\"Y", 0},
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
struct Seen { QSize size; QPoint pos; QRect label, ok, yes, no; bool okShown = false, yesShown = false; };

QPushButton* btn(MbQuestion* box, const char* n) { return box->findChild<QPushButton*>(QLatin1String(n)); }

// Shows the box as a caller does, records it once it is up, closes it with `button` (empty: its own close).
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

// Rows 2 and 3 are wider and taller than row 1.
const struct { const char* name; QString text; const char* button; bool isOk, before, result; } kAnswers[] = {
    {"OK", "是否退出秤控台?", "CmdMbOK", true, false, true},
    {"Yes, short text", "密码错误!", "CmdYes", false, false, true},
    {"No, wide text", QStringLiteral("参数更改后未设定，是否返回?").repeated(3), "CmdNo", false, true, false},
    {"closed, result kept true", "通讯发生错误请检查：\n1、下位机是否已断电；\n2、下位机是否正常运行；", "", false, true, true},
    {"closed, result kept false", "是否退出秤控台?", "", true, false, false},
};
}  // namespace

class CalibrationTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        // The forms of the parameter side that the menu opens are plain stand-ins here.
        RegisterCalibrationForms();
        Forms::registerForm(QStringLiteral("PLC"), [] { return new PLC; });
        for (const char* n : {"Cansd", "Sensor"})
            Forms::registerForm(QLatin1String(n), [] { return new QWidget; });
    }

    void init()
    {
        h = new ConsoleHarness;
        mb = new MbAnswerer;
        QDir().mkpath(h->path(QStringLiteral("Data")));
        // In GB18030 the operator's name is valid UTF-8 as well: read as UTF-8 it would reach the records garbled.
        TextFile::writeLines(h->path(QStringLiteral("Data/SysData.dat")), {QStringLiteral("UserNam:郑伟")});
        h->connectLink();
        GatePassed = true;
        CNameMissing = false;
        clock = QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22));
        CalClock = [this] { return clock; };
        PartnerStation::setAddressSource([] { return QList<QHostAddress>{ip("127.0.0.1"), ip("10.0.0.7")}; });
        NetworkWaitLimit = std::chrono::milliseconds(20000);
    }

    void cleanup()
    {
        delete mb;
        delete h;
        CalClock = {};
        PartnerStation::setAddressSource({});
        PartnerStation::setMountCheck({});
        FolderStatError = {};
    }

    void gate_data() { TableRows(kGate); }
    void gate()
    {
        const GateCase& c = TableRow(kGate);
        const QDate today = QDate::currentDate();
        GatePassed = c.passedEarlier;
        CNameMissing = c.firstNaming;
        BcBut* f = OpenBcBut(c.mode);
        if (c.firstNaming)
            emit Ctl<ClickLabel>(f, QStringLiteral("LblBdTap(1)"))->clicked();
        for (const QString& code : c.codes) {
            const QString dated = QStringLiteral("90765") + QString::number(today.month() + today.day());
            f->txtPassword->setText(code == QLatin1String("dated") ? dated : code);
            ClickOn(Ctl(f, QStringLiteral("cmdOK")));
        }
        const bool menu = c.outcome == QLatin1String("menu"), ended = c.outcome == QLatin1String("ended");
        QStringList boxes(c.wrong, QStringLiteral("密码错误!"));
        if (ended)
            boxes << QStringLiteral("密码错误已5次，程序将退出！");
        QCOMPARE(mb->texts, boxes);
        QCOMPARE(h->endedProcess, ended ? 0 : -1);
        QVERIFY(!h->programEnded);  // never through the saving exit path
        QCOMPARE(GatePassed, menu && c.mode == 0);
        if (ended) {
            QTRY_VERIFY(!Forms::loaded(QStringLiteral("BcBut")));
            return;
        }
        QCOMPARE(shown(f, "picCom"), !menu);
        QCOMPARE(shown(f, "PicBiaoC"), menu);
        QCOMPARE(shown(f, "ImgHard"), menu && c.mode == 0);
        // At the first naming the operator must finish the names before leaving.
        QCOMPARE(shown(f, "ImgReturn"), menu && !c.firstNaming);
    }

    void devicesStoredForScale_data() { TableRows(kScales); }
    void devicesStoredForScale()
    {
        const ScaleCase& c = TableRow(kScales);
        const bool blank = c.devices.first() == QLatin1String("unchanged");
        const size_t i = size_t(c.scale);
        ScaleName[i] = blank ? QStringLiteral("   ") : QStringLiteral("Scale %1").arg(c.scale);
        ScaleNo = 1;
        CalZeroDevice = CalSpanDevice = CalWeightDevice = OptionDevice = QStringLiteral("unchanged");
        BcBut* f = OpenBcBut(c.mode);
        auto* caption = Ctl<ClickLabel>(f, QStringLiteral("LblBd(%1)").arg(c.scale));
        QCOMPARE(caption->text(), blank ? QStringLiteral("未使用") : ScaleName[i]);
        ClickOn(caption);
        if (blank)
            emit Ctl<ClickLabel>(f, QStringLiteral("ImgBd(%1)").arg(c.scale))->clicked();
        QCOMPARE(int(ScaleNo), blank ? 1 : c.scale);
        if (!blank)
            QCOMPARE(ScaleTitle, ScaleName[i]);
        const QStringList stored{CalZeroDevice, CalSpanDevice, CalWeightDevice, OptionDevice};
        QCOMPARE(c.mode == 0 ? stored : (QStringList{ParamDevice, OptionDevice}), c.devices);
        const QString opens = c.mode == 0 ? QStringLiteral("YIBiao") : QStringLiteral("Cansd");
        QCOMPARE(Forms::loaded(opens) && Forms::loaded(opens)->isVisible(), !blank);
        QCOMPARE(f->isVisible(), blank);
    }

    void hardwareInitialisation_data() { TableRows(kInit); }
    void hardwareInitialisation()
    {
        const int finishAt = TableRow(kInit).finishAt;
        Link().Timer1.setInterval(3600 * 1000);  // ticks of the poll are driven by hand
        h->sim.setInitNever(finishAt != 0);
        h->sim.setInitDelayMs(0);
        h->sim.setSBit(999, true);  // left on by an earlier calibration
        BcBut* f = OpenBcBut();
        ClickOn(Ctl(f, QStringLiteral("lblHard")));
        QCOMPARE(mb->texts, QStringList{QStringLiteral("是否进行硬件初始化?")});
        QCOMPARE(status(f), kInitRunning);
        // Each tick comes after the answer to the poll before it, as the poll flag makes it.
        int done = 0;
        for (;;) {
            QTRY_VERIFY(InitPollDue || status(f) != kInitRunning);
            if (!Link().Timer1.isActive())
                break;
            QCOMPARE(status(f), kInitRunning);
            QVERIFY2(done < 51, "still polling after 51 ticks");
            if (++done == finishAt) {
                h->sim.setSBit(999, true);
                h->sim.setSBit(211, false);
            }
            Link().timer1Tick();
        }
        QTRY_VERIFY(InitPollDue);  // the last poll is answered
        if (finishAt != 0)
            QCOMPARE(done, finishAt < 0 ? 51 : finishAt);
        QCOMPARE(status(f), finishAt < 0 ? QStringLiteral("硬件初始化失败!") : QStringLiteral("硬件初始化已完成!"));
        QCOMPARE(TextColor(f->LbLCssdS), finishAt < 0 ? QColor(0xFF, 0, 0) : QColor(0, 0x80, 0));
        const QStringList frames = h->takeFrames();
        QCOMPARE(frames.value(0), WriteFrame("001A", "0800"));  // S211 set, its pair of bytes clear
        QCOMPARE(frames.filter(QStringLiteral("\x02" "1001A")).size(), 1);  // S211 is cleared by the controller
        QCOMPARE(frames.count(Frame(QStringLiteral("0007C02"))), done + 1);  // S999 and its pair of bytes
        QCOMPARE(h->sim.sBit(211), finishAt < 0);
    }

    // Two operators of the group, umask 022 both. A's first naming of a plant's names (most of them valid UTF-8
    // by chance in GB18030) is the factory set in the spool; his later names and bins are not, so the restore
    // brings the first back. B renames a scale and records; after a restart all is back, and nothing failed.
    void namingByTwoOperators()
    {
        // box: TxtDCansd(box); gb: the bytes written under key, empty for the scale not in use.
        const struct { int box; const char *key, *name, *gb; } rows[] = {
            {0, "01", " 砂 ", "c9b0"},     {1, "02", "石", "caaf"},        {2, "03", "细砂", "cfb8c9b0"},
            {3, "04", "1#砂", "3123c9b0"}, {4, "05", "不用的秤", ""},       {5, "06", "石1", "caaf31"},
            {6, "07", "石粉", "caafb7db"}, {7, "11", "水", "cbae"},         {8, "08", "水泥A", "cbaec4e041"},
            {9, "09", "粉煤灰", "b7dbc3babbd2"}, {10, "10", "矿粉", "bff3b7db"}, {11, "12", "外加剂1", "cde2bcd3bcc131"},
            {12, "13", "外加剂2", "cde2bcd3bcc132"}, {13, "14", "水2", "cbae32"},
        };
        constexpr unsigned kGroup = 4242, kUserA = 4001, kUserB = 4002;
        const bool root = ::geteuid() == 0;
        QVERIFY(::chmod(QFile::encodeName(h->dir.path()).constData(), 0755) == 0);
        for (const char* folder : {"Data", "ProgramErr", "drive_c", "stations", "prod", "prod/Data"}) {
            const QByteArray p = QFile::encodeName(h->path(QLatin1String(folder)));
            QDir().mkpath(QString::fromUtf8(p));
            QVERIFY(!root || (::chown(p.constData(), 0, kGroup) == 0 && ::chmod(p.constData(), 02775) == 0));
        }
        QVERIFY(putBytes(h->path(QStringLiteral("Data/NetPath.ini")),
                GbLines({"NetworkPath=" + h->path(QStringLiteral("prod"))})));
        CNameMissing = true;
        for (int i : {5, 6, 10, 13})
            ScaleName[size_t(i)] = QStringLiteral("备用");
        QByteArray names = "[Name]\r\n";
        {
            FilesAsUser a(kUserA, kGroup);
            BcBut* f = OpenBcBut();
            tab(f, 2);
            QCOMPARE(mb->texts, QStringList{QStringLiteral("必须先设定电子秤名称,然后再设定料仓名称!")});
            QVERIFY(!f->binTabOpen());
            tab(f, 1);
            QVERIFY(f->firstNaming());
            QVERIFY(!Ctl(f, QStringLiteral("LblCNameIni"))->isVisible());
            for (const auto& r : rows) {
                type(f, qPrintable(IndexedName("TxtDCansd", r.box)), r.name);
                names += QByteArray(r.key) + '=' + QByteArray::fromHex(r.gb) + "\r\n";
            }
            QCOMPARE(boxesAfter(f), (QStringList{kAskNames, kNamesDone}));
            const QByteArray first = names + GbLines(binsPart(QStringLiteral("2026/3/5 14:03:22")));
            QCOMPARE(rawBytes(cname()), first);
            QCOMPARE(rawBytes(spool()), first);
            QVERIFY(AppPaths::isHidden(CNameSpoolFolder()));
            QCOMPARE(rawBytes(h->path(QStringLiteral("prod/Data/CName.ini"))), first);
            QCOMPARE(label(f, "LblCansdName(9)")->text(), QStringLiteral("水泥AM1"));
            QVERIFY(!f->firstNaming() && !CNameMissing);
            QVERIFY(Ctl(f, QStringLiteral("ImgReturn"))->isVisible());
            for (const auto& r : rows)
                BiaoZeroADValue[size_t(r.box)] = QString::number(3000 + r.box);
            SaveBLZConfig();
            const QByteArray blz = rawBytes(BLZConfigPath());
            for (const auto& r : rows) {
                const QByteArray line =
                    QByteArray::fromHex(r.gb) + "BiaoZeroADValue=" + QByteArray::number(3000 + r.box);
                QVERIFY2(!*r.gb || blz.contains("\r\n" + line + "\r\n"), r.name);
            }

            clock = clock.addDays(1);
            type(f, "TxtDCansd(9)", "粉灰");
            QCOMPARE(boxesAfter(f), (QStringList{kAskNames, kNamesDone}));
            QByteArray second = names + GbLines(binsPart(QStringLiteral("2026/3/6 14:03:22")));
            second.replace("\r\n09=\xB7\xDB\xC3\xBA\xBB\xD2\r\n", "\r\n09=\xB7\xDB\xBB\xD2\r\n");
            QCOMPARE(rawBytes(cname()), second);
            QCOMPARE(rawBytes(spool()), first);

            tab(f, 2);  // open now that the scales have names
            type(f, "TxtDCansdName(10)", "水泥M2号");
            QCOMPARE(boxesAfter(f), (QStringList{kAskBins, kBinsDone}));
            QVERIFY(TextFile::decode(rawBytes(cname())).contains(QStringLiteral("[08]\r\n01=水泥M1\r\n02=水泥M2号\r\n")));
            QCOMPARE(rawBytes(spool()), first);

            // Back on the next entry, with the file there, the restore is offered.
            Forms::unload(QStringLiteral("BcBut"));
            f = OpenBcBut();
            tab(f, 1);
            QVERIFY(Ctl(f, QStringLiteral("LblCNameIni"))->isVisible());
            QCOMPARE(boxesAfter(f, "LblCNameIni"), (QStringList{kAskRestore, QStringLiteral("恢复出厂设定已成功完成!")}));
            QCOMPARE(rawBytes(cname()), first);
            QCOMPARE(rawBytes(h->path(QStringLiteral("prod/Data/CName.ini"))), first);
            QCOMPARE(box(f, "TxtDCansd(9)"), QStringLiteral("粉煤灰"));
            QCOMPARE(box(f, "TxtDCansdName(10)"), QStringLiteral("水泥M2"));
            QCOMPARE(ScaleName[9], QStringLiteral("粉煤灰"));
            Forms::unload(QStringLiteral("BcBut"));
        }
        QVERIFY(!root || QFileInfo(cname()).ownerId() == kUserA);
        mb->texts.clear();
        {
            FilesAsUser b(kUserB, kGroup);
            BcBut* f = OpenBcBut();
            tab(f, 1);
            type(f, "TxtDCansd(0)", "河砂");
            ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
            AppendZeroRecord(0);
            SaveBLZConfig();
            Forms::unload(QStringLiteral("BcBut"));
        }
        QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone}));
        QCOMPARE(ErrorLogText(), QString());
        const QString hidden = h->path(QStringLiteral("drive_c/Program Files/MswSpool/20263MswSpool.txt"));
        QVERIFY(TextFile::decode(rawBytes(hidden)).contains(QStringLiteral("\r\n河砂BiaoZeroTime=")));

        ResetConsoleState();
        BiaoZeroADValue.fill(QString());
        LoadBLZConfig();
        BcBut* f = OpenBcBut();
        tab(f, 1);
        for (const auto& r : rows) {
            const QString name = r.box == 0 ? QStringLiteral("河砂") : *r.gb ? QString::fromUtf8(r.name) : QString();
            QCOMPARE(box(f, qPrintable(IndexedName("TxtDCansd", r.box))), name);
            if (*r.gb)
                QCOMPARE(BiaoZeroADValue[size_t(r.box)], QString::number(3000 + r.box));
        }
    }

    void setting_data() { TableRows(kSettings); }
    void setting()
    {
        const SetCase& c = TableRow(kSettings);
        const QString folder = h->path(QLatin1String(c.folder)), there = QLatin1String(c.there);
        const QString copyAt = folder + QStringLiteral("/CName.ini");
        ScaleName[13] = QStringLiteral("外加剂3");
        const QByteArray before = GbLines({"[Name]", "01=骨料1"});
        QVERIFY(putBytes(cname(), before));
        if (c.readOnly)
            QFile::setPermissions(cname(), QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        if (c.statError)
            FolderStatError = [e = c.statError](const QString&) { return e; };
        if (*c.netPath)
            QVERIFY(putBytes(h->path(QStringLiteral("Data/NetPath.ini")),
                    GbLines({"NetworkPath=" + QString::fromUtf8(c.netPath).replace(QLatin1Char('@'), h->dir.path())})));
        if (there == QLatin1String("file"))
            QVERIFY(putBytes(folder, "not a folder\r\n"));
        else
            QDir().mkpath(folder);
        if (there == QLatin1String("read-only")) {
            QVERIFY(putBytes(copyAt, GbLines({"[Name]", "01=other station"})));
            QFile::setPermissions(copyAt, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        }
        if (c.spoolFolder)
            QDir().mkpath(CNameSpoolFolder());
        // The bin tab waits for the first naming only while the file is really missing.
        CNameMissing = c.tab == 2;
        BcBut* f = OpenBcBut();
        tab(f, c.tab);
        const bool restore = QLatin1String(c.box) == QLatin1String("LblCNameIni");
        if (!restore)
            type(f, c.box, c.typed);
        mb->queue(c.answer);
        QCOMPARE(boxesAfter(f, restore ? c.box : "lblBdOk"),
                 QStringList(c.boxes).replaceInStrings(QStringLiteral("@"), h->dir.path()));
        const bool written = c.boxes.contains(kNamesDone) || c.boxes.contains(kBinsDone);
        QCOMPARE(rawBytes(cname()) != before, written);
        QCOMPARE(rawBytes(copyAt), there == QLatin1String("read-only") ? GbLines({"[Name]", "01=other station"})
                                   : written && c.boxes.size() == 2    ? rawBytes(cname())
                                                                       : QByteArray());
        // A refused file is not copied on, and the names stay those of the file.
        QCOMPARE(ErrorLogText().contains(QStringLiteral("ErrNumber:70----Permission denied: ")), c.readOnly);
        QCOMPARE(ErrorLogText().isEmpty(), !c.readOnly);
        if (c.readOnly)
            QCOMPARE(ScaleName[1], QStringLiteral("骨料2"));
        if (c.boxes.size() == 1 && c.answer)
            QCOMPARE(f->focusWidget(), Ctl(f, QLatin1String(c.box)));
        QCOMPARE(rawBytes(spool()), c.spoolFolder ? before : QByteArray());  // only the first naming makes it
        tab(f, 1);
        QVERIFY(!f->firstNaming());
    }

    void partnerCopy_data() { TableRows(kPartners); }
    void partnerCopy()
    {
        const PartnerCase& c = TableRow(kPartners);
        const QString share = QLatin1String(c.share), logged = QLatin1String(c.logged);
        PartnerStation::setAddressSource([own = c.own] { return own; });
        // A real mount cannot be made here: a folder stands in for it wherever the row says it is mounted.
        // A silent share holds the check until the operator has gone on, longer than the wait allows.
        auto release = std::make_shared<std::promise<void>>();
        if (share == QLatin1String("silent")) {
            NetworkWaitLimit = std::chrono::milliseconds(200);
            PartnerStation::setMountCheck([released = release->get_future().share()](const QString&) {
                released.wait();
                return false;
            });
        } else if (share != QLatin1String("plain folder")) {
            PartnerStation::setMountCheck([](const QString& root) { return QFileInfo(root).isDir(); });
        }
        const QString stations = h->path(QStringLiteral("stations"));
        for (const char* host : {"192.168.10.1", "192.168.10.2", "192.168.10.3"})
            QDir().mkpath(stations + QLatin1Char('/') + QLatin1String(host) + QStringLiteral("/drive_c"));
        const QString partnerSpool = stations + QLatin1Char('/') + QLatin1String(c.partner) +
                                     QStringLiteral("/drive_c/Program Files/CNameSpool");
        const QString partnerFile = partnerSpool + QStringLiteral("/CName.ini");
        const bool readOnly = share == QLatin1String("read-only");
        const bool copied = share == QLatin1String("mounted") && *c.partner;
        if (readOnly) {
            QVERIFY(putBytes(partnerFile, GbLines({"[Name]", "01=their own"})));
            QFile::setPermissions(partnerFile, QFile::ReadOwner);
        }
        CNameMissing = true;
        BcBut* f = OpenBcBut();
        tab(f, 1);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        release->set_value();
        QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone, kNetNoPath}));
        QCOMPARE(rawBytes(spool()), rawBytes(cname()));
        QStringList copies;
        for (QDirIterator it(stations, {QStringLiteral("CName.ini")}, QDir::Files, QDirIterator::Subdirectories);
             it.hasNext();)
            copies << it.next();
        QCOMPARE(copies, copied || readOnly ? QStringList{partnerFile} : QStringList());
        QCOMPARE(rawBytes(partnerFile),
                 copied ? rawBytes(cname()) : readOnly ? GbLines({"[Name]", "01=their own"}) : QByteArray());
        QCOMPARE(AppPaths::isHidden(partnerSpool), copied);
        const QString log = ErrorLogText();
        QCOMPARE(log.count(QStringLiteral("ErrSub:BackupCNameIni")), logged.isEmpty() ? 0 : 1);
        QCOMPARE(log.count(QStringLiteral("ErrNumber:") + logged + QStringLiteral("----")), logged.isEmpty() ? 0 : 1);
    }

    void captions_data() { TableRows(kCaptions); }
    void captions()
    {
        const CaptionCase& c = TableRow(kCaptions);
        LangNo = short(c.lang);
        ProfileFile = QStringLiteral(ORVA_LANG_FILE);
        for (const QString& n : c.names) {
            const int index = n.section(QLatin1Char(':'), 1).section(QLatin1Char('='), 0, 0).toInt();
            const QString name = n.section(QLatin1Char('='), 1);
            (n.startsWith(QLatin1String("scale")) ? ScaleName[size_t(index)] : BinName[size_t(index)]) = name;
        }
        BcBut* f = OpenBcBut();
        auto* l = Ctl<QLabel>(f, QLatin1String(c.label));
        QCOMPARE(l->text(), QString::fromUtf8(c.caption));
        QCOMPARE(l->toolTip(), QString::fromUtf8(c.caption));
        QCOMPARE(l->isEnabled(), c.inUse);
        QCOMPARE(Ctl(f, QString(c.label).replace(QStringLiteral("LblCansd"), QStringLiteral("TxtDCansd")))->isEnabled(),
                 c.inUse);
    }

    void calibrationAgainstTheController_data() { TableRows(kCal); }
    void calibrationAgainstTheController()
    {
        const CalCase& c = TableRow(kCal);
        const bool span = c.span, taken = c.outcome == Outcome::Success;
        ScaleName[size_t(c.scale)] = QStringLiteral("一号秤");
        ScaleDecimals[size_t(c.scale)] = 1;  // 1500.5 goes as 15005
        h->sim.setLoad(c.scale, 3000);       // zero point 2000: the weight shows 1000 raw, 100.0
        h->sim.setCalOutcome(c.outcome);
        QWidget* f = openAt(c.scale);
        QWidget* weightForm = f;
        if (c.humid) {
            HumidActive = true;
            Forms::show(QStringLiteral("BcButHumid"));
            clickTab(Forms::loaded(QStringLiteral("BcButHumid")), c.scale);
            f = Forms::loaded(QStringLiteral("YIBiaoHumidNew"));
        }
        clickTab(f, span ? 2 : 1);
        for (int i = 0; i < 3; ++i)  // the selected tab head dark blue, the others dark grey
            QCOMPARE(TextColor(label(f, qPrintable(QStringLiteral("LblBd(%1)").arg(i)))),
                     i == (span ? 2 : 1) ? QColor(0, 0, 192) : QColor(64, 64, 64));
        QTRY_COMPARE(label(f, "LbLADv")->text(), QStringLiteral("3000"));
        QCOMPARE(label(f, "LblZLv")->text(), QStringLiteral("100.0"));
        auto* weight = Ctl<QLineEdit>(f, "TxtFmzL");
        QVERIFY(!c.span || weight->isVisible());
        weight->setText(QLatin1String(c.start));
        weight->setFocus();
        weight->setCursorPosition(0);
        const QString entry = QLatin1String(c.entry);
        if (entry == QLatin1String("delete"))
            QTest::sendKeyEvent(QTest::Click, weight, Qt::Key_Delete, QString(QChar(0x7F)), Qt::NoModifier);
        else if (entry.startsWith(QLatin1String("paste:")))
            QGuiApplication::clipboard()->setText(entry.mid(6)), weight->paste();
        else
            QTest::keyClicks(weight, entry.mid(5));
        QCOMPARE(weight->text(), c.humid ? QStringLiteral("12.5") : QStringLiteral("1500.5"));
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
        const auto& c = TableRow(kReplies);
        QWidget* f = openAt(0);
        clickTab(f, 1);
        waitIdle();
        ClickOn(label(f, "lblBdOk"));
        // The reply is handed over as the dispatch would, without the pulses.
        Link().Timer3.stop();
        ZeroRequest = false;
        if (c.tab >= 0)
            clickTab(f, c.tab);
        waitIdle();
        h->takeFrames();
        SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), QStringLiteral("XXX"));
        SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), QLatin1String(c.reply));

        QLabel* line = label(f, "LbLBLwc");
        QCOMPARE(line->text(),
                 c.taken ? QStringLiteral("零位调校完成，请再进行实际验秤!") : QStringLiteral("正在零位调校，请稍候......"));
        QCOMPARE(QFile::exists(opRecords()), c.taken);
        QCOMPARE(QFile::exists(monthly()), c.taken);
        QCOMPARE(line->isHidden() && label(f, "LbLBZwc")->isHidden(), c.tab >= 0);
        if (c.taken)
            QCOMPARE(TextColor(line), QColor(0, 0x80, 0));
        QCOMPARE(Link().Timer1.isActive(), c.taken);
        waitIdle();
        if (c.tab < 0)  // a tab restarts the live values of its own
            QCOMPARE(h->takeFrames().contains(kLiveRead), c.taken);
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

    void monthlyFilesWithoutDataFolder()
    {
        QDir(h->path(QStringLiteral("Data"))).removeRecursively();
        CalClock = [] { return QDateTime(QDate(2026, 11, 1), QTime(8, 0)); };
        ScaleName[13] = QStringLiteral("外加剂3秤");
        BiaoZeroTime[13] = QStringLiteral("t");
        AppendZeroRecord(13);
        AppendWeightRecord(13);
        const QByteArray monthly = rawBytes(h->path(QStringLiteral("202611BiaoCen.txt")));
        QVERIFY(monthly.startsWith(GbLines({"外加剂3秤BiaoZeroTime=t"})) && monthly.contains("\r\nCengIndex=14\r\n"));
        QVERIFY(rawBytes(h->path(QStringLiteral("drive_c/Program Files/MswSpool/202611MswSpool.txt")))
                    .startsWith("CengIndex=14\r\n"));
    }

    // The rows as read from the file, again on a new date (the date does not filter), in the viewer's
    // columns: widths in twips, 15 to the pixel, the last one not stretched. The rows go with the form.
    void gridColumns_data() { TableRows(kGrid); }
    void gridColumns()
    {
        const GridCase& c = TableRow(kGrid);
        if (c.file) {
            const QString text = QString::fromUtf8(c.file);
            const QByteArray mark(c.mark);
            QVERIFY(putBytes(h->path(QStringLiteral("Data/BiaoCeng.txt")),
                      mark.isEmpty()          ? TextFile::encode(text)
                      : mark.startsWith('\xEF') ? mark + text.toUtf8()
                                              : mark + QStringEncoder(QStringEncoder::Utf16LE).encode(text)));
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
        const auto& c = TableRow(kRefusedWrites);
        const QString path = h->path(QLatin1String(c.file));
        QVERIFY(putBytes(path, "kept\r\n"));
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
        // An operator other than the superuser, whom permissions do not stop, in folders open to him.
        for (const QString& folder : {h->dir.path(), h->path(QStringLiteral("Data"))})
            QFile::setPermissions(folder, QFile::Permissions(0x7777));
        {
            FilesAsUser nobody(65534, 65534);
            AppendZeroRecord(0);
            AppendWeightRecord(0);
            AppendOpRecord("秤", "t", "王", "标零", "1", "2", "3");
            SaveBLZConfig();
        }
        QCOMPARE(rawBytes(path), QByteArray("kept\r\n"));
        const QString log = ErrorLogText();
        QVERIFY2(log.contains("ErrNumber:70----Permission denied: " + path + "\r\nErrForm:Module1\r\nErrSub:" +
                              QLatin1String(c.routine)),
                 qPrintable(log));
    }

    void csvQuoting_data() { TableRows(kCsvFields); }
    void csvQuoting()
    {
        const auto& c = TableRow(kCsvFields);
        QCOMPARE(CsvRow({QString::fromUtf8(c.field), QStringLiteral("标零")}), QByteArray(c.csv) + ",标零\r\n");
    }

    // The long list on the viewer, every record back in order, field for field; the second record's empty operator
    // shifts all rows after it by one field. Ctrl+S: a write that fails says so and leaves no file; then the rows
    // shown, every field as the grid shows it.
    void exportRows()
    {
        QStringList fields{"a,b",    "2026/3/5 9:00:00", "x\"y", "标零", "5000", "0.0", "0",
                           "二号秤", "2026/3/5 9:10:00", "标重", "1",    "2",    "3"};
        QStringEncoder gb("GB18030");
        QByteArray list = gb.encode(QStringLiteral(
            "\"a,b\"\r\n2026/3/5 9:00:00\r\nx\"y\r\n标零\r\n5000\r\n0.0\r\n0\r\n\r\n"
            "二号秤\r\n2026/3/5 9:10:00\r\n\r\n标重\r\n1\r\n2\r\n3\r\n\r\n"));
        for (int i = 0; i < 100000 - 2; ++i) {
            list += gb.encode(longListRecord(i).join(QStringLiteral("\r\n")) + QStringLiteral("\r\n\r\n"));
            fields += longListRecord(i);
        }
        QVERIFY(putBytes(h->path(QStringLiteral("Data/BiaoCeng.txt")), list));
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

        QByteArray csv = "\xEF\xBB\xBF" "秤名称,标秤时间,操作员,具体操作,AD信号值,重量值,砝码值\r\n";
        QStringList shown;
        auto* g = Ctl<QTableView>(form, QStringLiteral("MSGrid"));
        for (const QString& r : shownRows(g)) {
            shown += r.split(QLatin1Char('|'));
            csv += CsvRow(r.split(QLatin1Char('|')));
        }
        QCOMPARE(shown, fields << QString());
        QVERIFY(csv.contains("\r\n\"a,b\",2026/3/5 9:00:00,\"x\"\"y\",标零,5000,0.0,0\r\n"));
        QCOMPARE(rawBytes(path), csv);

        form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(form));
        QTest::keyClick(form, Qt::Key_F, Qt::ControlModifier);
        auto* find = Ctl<QDialog>(form, QStringLiteral("FindRecords"));
        QVERIFY(find && find->isVisible());
        for (const auto& r : kFinds) {
            g->clearSelection();
            if (r.current >= 0)
                g->selectRow(r.current);
            Ctl<QLineEdit>(find, QStringLiteral("TxtFind"))->setText(QString::fromUtf8(r.text));
            Ctl<QPushButton>(find, QStringLiteral("cmdFindNext"))->click();
            QCOMPARE(g->currentIndex().row(), r.found >= 0 ? r.found : r.current);
            QCOMPARE(g->selectionModel()->selectedRows().size(), r.found >= 0 || r.current >= 0 ? 1 : 0);
            QVERIFY2(Ctl<QLabel>(find, QStringLiteral("lblFindResult"))->text().isEmpty() == (r.found >= 0), r.name);
        }
    }

    // The records command: the rows of the months asked for, of one scale if asked, as the grid shows them;
    // a shifted row goes by the date in it. Bad months are told, nothing is printed.
    void recordsCommand_data() { TableRows(kCommands); }
    void recordsCommand()
    {
        const auto& c = TableRow(kCommands);
        // The third record has no operator: the rows after it start with their dates.
        QVERIFY(putBytes(h->path(QStringLiteral("Data/BiaoCeng.txt")),
                TextFile::encode(QStringLiteral("一号秤\r\n2025/12/31 8:00:00\r\n李\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                "一号秤\r\n2026/1/31 8:00:00\r\n李\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                "二号秤\r\n2026/3/1 8:00:00\r\n\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                "一号秤\r\n2026/3/2 8:00:00\r\n李\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                "一号秤\r\n2026/11/2 8:00:00\r\n李\r\n标重\r\n1\r\n2\r\n3\r\n\r\n"))));
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const QString error =
            PrintRecordsCsv(QLatin1String(c.from), QLatin1String(c.to), QString::fromUtf8(c.scale), buffer);
        const QStringList lines = QString::fromUtf8(buffer.data()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        QStringList got;
        for (const QString& row : lines.mid(1))
            got << row.section(QLatin1Char(','), 0, 1).replace(QLatin1Char(','), QLatin1Char(' '));
        QCOMPARE(error.isEmpty() ? got.join(QLatin1Char('|')) : QStringLiteral("error: ") + error,
                 QString::fromUtf8(c.out));
        QCOMPARE(lines.value(0), error.isEmpty() ? QStringLiteral("秤名称,标秤时间,操作员,具体操作,AD信号值,重量值,砝码值") : QString());
    }

    // The answer the caller gets. No width of its own: a short text gets a narrow box. Over the calibration form
    // it sits below the values.
    void answers()
    {
        delete std::exchange(mb, nullptr);  // this operator answers by hand
        Forms::load(QStringLiteral("YIBiao"))->move(120, 90);
        CurrentForm = QStringLiteral("YIBiao");
        QList<Seen> seen;
        for (const auto& c : kAnswers) {
            MbResult = c.before;
            const Seen& s = seen.emplace_back(showAndAnswer(c.text, c.isOk, c.button));
            QVERIFY2(s.okShown == c.isOk && s.yesShown == !c.isOk && MbResult == c.result, c.name);
            QVERIFY(!MbQuestion::showing());
            QCOMPARE(s.pos, QPoint(120, 90 + 180));
            // Width: the label and 1000 twips; height: below the label 1200 twips; buttons 200 twips below it.
            QCOMPARE(s.size.width(), s.label.width() + 66);
            QCOMPARE(s.size.height(), s.label.bottom() + 1 + 80);
            QCOMPARE(s.yes.top(), s.label.bottom() + 1 + 13);
            QCOMPARE(s.yes.left(), (s.size.width() - 106) / 2);
            QCOMPARE(s.no.left(), s.yes.left() + 60);
            QCOMPARE(s.ok.left(), (s.size.width() - s.ok.width()) / 2);
        }
        QVERIFY(seen[2].size.width() > seen[1].size.width());
        QVERIFY(seen[3].size.height() > seen[1].size.height());
    }

private:
    void tab(BcBut* f, int i) { ClickOn(Ctl(f, IndexedName("LblBdTap", i))); }
    QStringList boxesAfter(BcBut* f, const char* control = "lblBdOk")
    {
        mb->texts.clear();
        ClickOn(Ctl(f, QLatin1String(control)));
        return mb->texts;
    }
    void type(BcBut* f, const char* box, const char* text)
    {
        Ctl<QLineEdit>(f, QLatin1String(box))->setText(QString::fromUtf8(text));
    }
    QString box(BcBut* f, const char* name) { return Ctl<QLineEdit>(f, QLatin1String(name))->text(); }
    QString cname() const { return h->path(QStringLiteral("Data/CName.ini")); }
    QString spool() const { return CNameSpoolFolder() + QStringLiteral("/CName.ini"); }

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
    QDateTime clock;
};

QTEST_MAIN(CalibrationTest)
#include "calibration_test.moc"
