// The calibration menu: the gate, the scales it opens, the hardware initialisation, and the name and bin tabs
// as the engineer uses them: CName.ini on disk, the spool copy of the first names, the copies for the partner
// station and the production control system, and the restore.
#include "cal_rig.h"

#include "calibration/cname_files.h"
#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/partner_station.h"
#include "shell/plc_form.h"

#include <QDirIterator>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

namespace {
const QString kInitRunning = QStringLiteral("正在硬件初始化,请稍候...");

bool shown(BcBut* f, const char* control) { return !Ctl(f, QLatin1String(control))->isHidden(); }
QString status(BcBut* f) { return f->LbLCssdS->isHidden() ? QString() : f->LbLCssdS->text(); }

// Codes typed in turn, "dated": the code and today's month plus day. Outcome: "gate", "menu" or "ended".
struct GateCase {
    const char* name;
    short mode;
    bool passedEarlier, firstNaming;
    QStringList codes;
    int wrong;
    const char* outcome;
};
const QStringList kFourWrong(4, QStringLiteral("12345"));
const GateCase kGate[] = {
    {"calibration, first time", 0, false, false, {}, 0, "gate"},
    {"calibration, passed this run", 0, true, false, {}, 0, "menu"},
    {"parameters, never gated", 1, false, false, {}, 0, "menu"},
    {"the code", 0, false, false, {"90765"}, 0, "menu"},
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
    {"parameters 6", 1, 6, {"D390", "S548"}},
    {"parameters 10", 1, 10, {"D450", "S580"}},
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


// A setting from a CName.ini of one name: what the operator is told, the file, and its copy for the production
// control system at landsAt, made only by a setting that went through without a word more. readOnly: CName.ini
// without write permission, refused, told and logged; "@" stands for the application folder. netPath: where
// NetPath.ini points (empty: no file); prepare: the folder made, or "Data file" / "read-only"; statError: what
// looking at the folder fails with. Only a folder that is not there is a missing path; a share that cannot be
// looked at is a lost network.
const QString kEmpty = QStringLiteral("电子秤名称不能为空!");
const QString kRefused = QStringLiteral("设定失败!\nPermission denied: @/Data/CName.ini");
QStringList told(const QString& more = {})
{
    return more.isEmpty() ? QStringList{kAskNames, kNamesDone} : QStringList{kAskNames, kNamesDone, more};
}
struct SetCase {
    const char* name;
    QStringList boxes;
    const char *box = "TxtDCansd(1)", *typed = "砂";
    int tab = 1;
    bool answer = true, readOnly = false;
    const char *netPath = "@/prod", *prepare = "prod/Data", *landsAt = "prod/Data/CName.ini";
    int statError = 0;
    bool spoolFolder = false;  // made before a restore: a failed copy leaves the present names there
};
const SetCase kSettings[] = {
    {"empty scale name", {kEmpty}, "TxtDCansd(1)", ""},
    {"blanks only", {kEmpty}, "TxtDCansd(13)", "   "},
    {"empty bin name", {QStringLiteral("料仓名称不能为空!")}, "TxtDCansdName(9)", " ", 2},
    {"unused box is not checked", told(), "TxtDCansd(5)", ""},
    {"answer no", {kAskNames}, "TxtDCansd(1)", "砂", 1, false},
    {"bins, answer no", {kAskBins}, "TxtDCansdName(9)", "P.O", 2, false},
    {"names refused", {kAskNames, "电子秤名称" + kRefused}, "TxtDCansd(1)", "砂", 1, true, true},
    {"bins refused", {kAskBins, "料仓名称" + kRefused}, "TxtDCansdName(9)", "P.O", 2, true, true},
    {.name = "no NetPath.ini", .boxes = told(kNetNoPath), .netPath = "", .prepare = ""},
    {.name = "no Data folder there", .boxes = told(kNetNoPath), .prepare = "prod"},
    {.name = "folder of this station", .boxes = told()},
    {.name = "share of a station", .boxes = told(), .netPath = "\\\\192.168.10.9\\prod",
     .prepare = "stations/192.168.10.9/prod/Data", .landsAt = "stations/192.168.10.9/prod/Data/CName.ini"},
    {.name = "drive of a station", .boxes = told(), .netPath = "\\\\192.168.10.9\\D$\\Prod\\",
     .prepare = "stations/192.168.10.9/drive_d/Prod/Data",
     .landsAt = "stations/192.168.10.9/drive_d/Prod/Data/CName.ini"},
    {.name = "drive letter", .boxes = told(), .netPath = "D:\\Prod", .prepare = "drive_d/Prod/Data",
     .landsAt = "drive_d/Prod/Data/CName.ini"},
    {.name = "Data is a file", .boxes = told("76:Path not found"), .prepare = "Data file"},
    {.name = "read-only file there", .boxes = told("70:Permission denied"), .prepare = "read-only", .landsAt = ""},
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
}  // namespace

class BcButTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        // The forms the menu opens belong to other parts of the console; here they are plain stand-ins.
        Forms::registerForm(QStringLiteral("PLC"), [] { return new PLC; });
        Forms::registerForm(QStringLiteral("BcBut"), [] { return new BcBut; });
        for (const char* n : {"YIBiao", "Cansd", "Sensor", "FrmJk"})
            Forms::registerForm(QLatin1String(n), [] { return new QWidget; });
    }

    void init()
    {
        h = new ConsoleHarness;
        mb = new MbAnswerer;
        QDir().mkpath(h->path(QStringLiteral("Data")));
        h->connectLink();
        // Ticks of the poll are driven by hand; the clock itself must not add any.
        Link().Timer1.setInterval(3600 * 1000);
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
        GatePassed = true;
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
        QFETCH(int, row);
        const int finishAt = kInit[row].finishAt;
        GatePassed = true;
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

    // Two operators of the group, umask 022 both: A names the scales of a plant, most of them valid UTF-8 by
    // chance in GB18030, and the first naming writes the whole file, its spool copy and the production copy;
    // his second naming and his bins change the file but not the spool, so that the restore brings the first
    // names back. B then renames a scale and records; after a restart the names and the values saved under
    // them are back, and nothing failed.
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
        netPath(h->path(QStringLiteral("prod")));
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
            mb->texts.clear();
            ok(f);
            QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone}));
            const QByteArray first = names + GbLines(binsPart(QStringLiteral("2026/3/5 14:03:22")));
            QCOMPARE(rawBytes(cname()), first);
            QCOMPARE(rawBytes(spool()), first);
            QVERIFY(AppPaths::isHidden(CNameSpoolFolder()));
            QCOMPARE(rawBytes(h->path(QStringLiteral("prod/Data/CName.ini"))), first);
            QCOMPARE(caption(f, "LblCansdName(9)"), QStringLiteral("水泥AM1"));
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
            mb->texts.clear();
            ok(f);
            QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone}));
            QByteArray second = names + GbLines(binsPart(QStringLiteral("2026/3/6 14:03:22")));
            second.replace("\r\n09=\xB7\xDB\xC3\xBA\xBB\xD2\r\n", "\r\n09=\xB7\xDB\xBB\xD2\r\n");
            QCOMPARE(rawBytes(cname()), second);
            QCOMPARE(rawBytes(spool()), first);

            tab(f, 2);  // open now that the scales have names
            type(f, "TxtDCansdName(10)", "水泥M2号");
            mb->texts.clear();
            ok(f);
            QCOMPARE(mb->texts, (QStringList{kAskBins, kBinsDone}));
            QVERIFY(TextFile::decode(rawBytes(cname())).contains(QStringLiteral("[08]\r\n01=水泥M1\r\n02=水泥M2号\r\n")));
            QCOMPARE(rawBytes(spool()), first);

            // Back on the next entry, with the file there, the restore is offered.
            Forms::unload(QStringLiteral("BcBut"));
            f = OpenBcBut();
            tab(f, 1);
            QVERIFY(Ctl(f, QStringLiteral("LblCNameIni"))->isVisible());
            mb->texts.clear();
            ClickOn(Ctl(f, QStringLiteral("LblCNameIni")));
            QCOMPARE(mb->texts, (QStringList{kAskRestore, QStringLiteral("恢复出厂设定已成功完成!")}));
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
            ok(f);
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
        const QString prepare = QString::fromUtf8(c.prepare), readOnly = h->path(QStringLiteral("prod/Data/CName.ini"));
        ScaleName[13] = QStringLiteral("外加剂3");
        const QByteArray before = GbLines({"[Name]", "01=骨料1"});
        PutFile(cname(), before);
        if (c.readOnly)
            QFile::setPermissions(cname(), QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        if (c.statError)
            FolderStatError = [e = c.statError](const QString&) { return e; };
        if (*c.netPath)
            netPath(QString::fromUtf8(c.netPath).replace(QLatin1Char('@'), h->dir.path()));
        if (prepare == QLatin1String("Data file")) {
            PutFile(h->path(QStringLiteral("prod/Data")), "not a folder\r\n");
        } else if (prepare == QLatin1String("read-only")) {
            PutFile(readOnly, GbLines({"[Name]", "01=other station"}));
            QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        } else if (!prepare.isEmpty()) {
            QDir().mkpath(h->path(prepare));
        }
        if (c.spoolFolder)
            QDir().mkpath(CNameSpoolFolder());
        // The bin tab waits for the first naming only while the file is really missing.
        CNameMissing = c.tab == 2;
        BcBut* f = OpenBcBut();
        tab(f, c.tab);
        if (QLatin1String(c.box) == QLatin1String("LblCNameIni")) {
            ClickOn(Ctl(f, QLatin1String(c.box)));
        } else {
            type(f, c.box, c.typed);
            mb->queue(c.answer);
            ok(f);
        }
        QCOMPARE(mb->texts, QStringList(c.boxes).replaceInStrings(QStringLiteral("@"), h->dir.path()));
        const bool written = c.boxes.contains(kNamesDone) || c.boxes.contains(kBinsDone);
        QCOMPARE(rawBytes(cname()) != before, written);
        const QByteArray copy = written && c.boxes.size() == 2 ? rawBytes(cname()) : QByteArray();
        if (*c.landsAt)
            QCOMPARE(rawBytes(h->path(QLatin1String(c.landsAt))), copy);
        if (prepare == QLatin1String("read-only"))
            QCOMPARE(rawBytes(readOnly), GbLines({"[Name]", "01=other station"}));
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
            PutFile(partnerFile, GbLines({"[Name]", "01=their own"}));
            QFile::setPermissions(partnerFile, QFile::ReadOwner);
        }
        CNameMissing = true;
        BcBut* f = OpenBcBut();
        tab(f, 1);
        ok(f);
        release->set_value();
        QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone, kNetNoPath}));
        QCOMPARE(rawBytes(spool()), rawBytes(cname()));
        // Only the partner's folder, and only when its share is there, gets a copy.
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

private:
    void tab(BcBut* f, int i) { ClickOn(Ctl(f, IndexedName("LblBdTap", i))); }
    void ok(BcBut* f) { ClickOn(Ctl(f, QStringLiteral("lblBdOk"))); }
    void type(BcBut* f, const char* box, const char* text) { Ctl<QLineEdit>(f, QLatin1String(box))->setText(QString::fromUtf8(text)); }
    QString box(BcBut* f, const char* name) { return Ctl<QLineEdit>(f, QLatin1String(name))->text(); }
    QString caption(BcBut* f, const char* name) { return Ctl<QLabel>(f, QLatin1String(name))->text(); }
    QString cname() const { return h->path(QStringLiteral("Data/CName.ini")); }
    QString spool() const { return CNameSpoolFolder() + QStringLiteral("/CName.ini"); }
    void netPath(const QString& path)
    {
        PutFile(h->path(QStringLiteral("Data/NetPath.ini")), GbLines({"NetworkPath=" + path}));
    }

    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
    QDateTime clock;
};

QTEST_MAIN(BcButTest)
#include "bc_but_test.moc"
