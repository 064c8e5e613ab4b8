// The name and bin tabs of BcBut as the engineer uses them: CName.ini on disk, the spool copy of the
// first names, the copies for the partner station and the production control system, and the restore.
#include "test_support.h"

#include "calibration/bc_but.h"
#include "calibration/cal_records.h"
#include "calibration/cname_files.h"
#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/form_access.h"
#include "common/module1.h"
#include "common/partner_station.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "shell/form_base.h"
#include "shell/plc_form.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QLineEdit>
#include <QTest>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

namespace {
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

// CName.ini as the first naming leaves it: the scales as named, the bins of the defaults, the time.
QStringList firstFile(const QString& time)
{
    return {"[Name]", "01=碎石", "02=骨料2", "03=骨料3", "04=骨料4", "05=", "06=", "07=", "11=水秤", "08=水泥A",
            "09=粉灰", "10=", "12=外加剂1", "13=外加剂2", "14=", "",
            "[RecordTime]", "RecordTime=" + time, "",
            "[01]", "01=骨料1", "", "[02]", "01=骨料2", "", "[03]", "01=骨料3", "", "[04]", "01=骨料4", "",
            "[05]", "01=", "", "[06]", "01=", "", "[07]", "01=", "02=", "", "[11]", "01=水秤", "02=", "",
            "[08]", "01=水泥M1", "02=水泥M2", "03=水泥M3", "04=", "", "[09]", "01=粉灰M1", "02=粉灰M2", "03=", "",
            "[10]", "01=", "02=", "", "[12]", "01=外加剂19", "", "[13]", "01=外加剂20", "", "[14]", "01="};
}

void writeText(const QString& path, const QStringList& lines)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    TextFile::writeLines(path, lines);
}
}  // namespace

class NamesTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        Forms::registerForm(QStringLiteral("PLC"), [] { return new PLC; });
        Forms::registerForm(QStringLiteral("BcBut"), [] { return new BcBut; });
    }

    void init()
    {
        h = new ConsoleHarness;
        mb = new MbAnswerer;
        QDir().mkpath(h->path(QStringLiteral("Data")));
        GatePassed = true;
        MenuMode = 0;
        CNameMissing = false;
        clock = QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22));
        CalClock = [this] { return clock; };
        PartnerStation::setAddressSource([] { return QList<QHostAddress>{ip("127.0.0.1"), ip("10.0.0.7")}; });
        PartnerStation::setMountCheck({});
        NetworkWaitLimit = std::chrono::milliseconds(20000);
        FolderStatError = {};
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

    // The first naming writes the whole file and its spool copy; a second naming changes the file but not
    // the spool, so that the restore brings the first names back.
    void firstNamingIsTheFactorySet()
    {
        CNameMissing = true;
        netPath(h->path(QStringLiteral("prod")));
        QDir().mkpath(h->path(QStringLiteral("prod/Data")));
        BcBut* f = openForm();
        tab(f, 2);
        QCOMPARE(mb->texts, QStringList{QStringLiteral("必须先设定电子秤名称,然后再设定料仓名称!")});
        tab(f, 1);
        QVERIFY(f->firstNaming());
        QVERIFY(!Ctl(f, QStringLiteral("LblCNameIni"))->isVisible());
        type(f, "TxtDCansd(0)", " 碎石 ");
        type(f, "TxtDCansd(8)", "水泥A");
        type(f, "TxtDCansd(4)", "不用的秤");  // not in use: written empty all the same
        mb->texts.clear();
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone}));
        const QByteArray first = GbLines(firstFile(QStringLiteral("2026/3/5 14:03:22")));
        QCOMPARE(rawBytes(cname()), first);
        QCOMPARE(rawBytes(spool()), first);
        QVERIFY(AppPaths::isHidden(CNameSpoolFolder()));
        QCOMPARE(rawBytes(h->path(QStringLiteral("prod/Data/CName.ini"))), first);
        QCOMPARE(caption(f, "LblCansdName(9)"), QStringLiteral("水泥AM1"));
        QVERIFY(!f->firstNaming() && !CNameMissing);
        QVERIFY(Ctl(f, QStringLiteral("ImgReturn"))->isVisible());

        clock = clock.addDays(1);
        type(f, "TxtDCansd(9)", "粉煤灰");
        mb->texts.clear();
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone}));
        QStringList second = firstFile(QStringLiteral("2026/3/6 14:03:22"));
        second[second.indexOf(QStringLiteral("09=粉灰"))] = QStringLiteral("09=粉煤灰");
        QCOMPARE(rawBytes(cname()), GbLines(second));
        QCOMPARE(rawBytes(spool()), first);

        tab(f, 2);  // open now that the scales have names
        type(f, "TxtDCansdName(10)", "水泥M2号");
        mb->texts.clear();
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, (QStringList{kAskBins, kBinsDone}));
        QVERIFY(TextFile::decode(rawBytes(cname())).contains(QStringLiteral("[08]\r\n01=水泥M1\r\n02=水泥M2号\r\n")));
        QCOMPARE(rawBytes(spool()), first);

        // Back on the next entry, with the file there, the restore is offered.
        Forms::unload(QStringLiteral("BcBut"));
        f = openForm();
        tab(f, 1);
        QVERIFY(Ctl(f, QStringLiteral("LblCNameIni"))->isVisible());
        mb->texts.clear();
        ClickOn(Ctl(f, QStringLiteral("LblCNameIni")));
        QCOMPARE(mb->texts, (QStringList{kAskRestore, QStringLiteral("恢复出厂设定已成功完成!")}));
        QCOMPARE(rawBytes(cname()), first);
        QCOMPARE(rawBytes(h->path(QStringLiteral("prod/Data/CName.ini"))), first);
        QCOMPARE(box(f, "TxtDCansd(9)"), QStringLiteral("粉灰"));
        QCOMPARE(box(f, "TxtDCansdName(10)"), QStringLiteral("水泥M2"));
        QCOMPARE(ScaleName[9], QStringLiteral("粉灰"));
    }

    // The names of a plant, most of them valid UTF-8 by chance in GB18030: the first naming writes all of them
    // in GB18030, and after a restart the tab shows them and the calibration values saved under them are back.
    void plantNamesThroughARestart()
    {
        const struct { int box; const char *key, *name, *gb; } rows[] = {
            {0, "01", "砂", "c9b0"},       {1, "02", "石", "caaf"},        {2, "03", "细砂", "cfb8c9b0"},
            {3, "04", "1#砂", "3123c9b0"}, {4, "05", "小石", "d0a1caaf"},   {5, "06", "石1", "caaf31"},
            {6, "07", "石粉", "caafb7db"}, {7, "11", "水", "cbae"},         {8, "08", "水泥", "cbaec4e0"},
            {9, "09", "粉煤灰", "b7dbc3babbd2"}, {10, "10", "矿粉", "bff3b7db"}, {11, "12", "外加剂1", "cde2bcd3bcc131"},
            {12, "13", "外加剂2", "cde2bcd3bcc132"}, {13, "14", "水2", "cbae32"},
        };
        CNameMissing = true;
        for (QString& n : ScaleName)
            if (n.isEmpty())
                n = QStringLiteral("备用");  // all fourteen in use
        BcBut* f = openForm();
        tab(f, 1);
        QByteArray names = "[Name]\r\n";
        for (const auto& r : rows) {
            type(f, qPrintable(IndexedName("TxtDCansd", r.box)), r.name);
            names += QByteArray(r.key) + '=' + QByteArray::fromHex(r.gb) + "\r\n";
        }
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone, kNetNoPath}));
        QCOMPARE(rawBytes(cname()), names + GbLines(firstFile(QStringLiteral("2026/3/5 14:03:22")).mid(15)));
        QCOMPARE(rawBytes(spool()), rawBytes(cname()));
        for (const auto& r : rows)
            BiaoZeroADValue[size_t(r.box)] = QString::number(3000 + r.box);
        SaveBLZConfig();
        const QByteArray blz = rawBytes(BLZConfigPath());
        for (const auto& r : rows)
            QVERIFY2(blz.contains("\r\n" + QByteArray::fromHex(r.gb) + "BiaoZeroADValue=" + QByteArray::number(3000 + r.box) + "\r\n"), r.name);

        Forms::unload(QStringLiteral("BcBut"));
        ResetConsoleState();
        BiaoZeroADValue.fill(QString());
        LoadBLZConfig();
        f = openForm();
        tab(f, 1);
        for (const auto& r : rows) {
            QCOMPARE(box(f, qPrintable(IndexedName("TxtDCansd", r.box))), QString::fromUtf8(r.name));
            QCOMPARE(BiaoZeroADValue[size_t(r.box)], QString::number(3000 + r.box));
        }
    }

    // Two operators of the group, umask 022 both, in the package's layout: A names the scales first, records
    // a calibration and restores the factory names; B then names the scales and records his calibration. B's
    // names are in the file and at the next start, his record is in the hidden copy, and nothing failed.
    void secondOperatorOfTheGroup()
    {
        if (::geteuid() != 0)
            QSKIP("only the superuser can act as two operators");
        constexpr unsigned kGroup = 4242, kUserA = 4001, kUserB = 4002;
        QVERIFY(::chmod(QFile::encodeName(h->dir.path()).constData(), 0755) == 0);
        for (const char* folder : {"Data", "ProgramErr", "drive_c", "stations"}) {
            const QByteArray p = QFile::encodeName(h->path(QLatin1String(folder)));
            QDir().mkpath(QString::fromUtf8(p));
            QVERIFY(::chown(p.constData(), 0, kGroup) == 0 && ::chmod(p.constData(), 02775) == 0);
        }
        const QString hidden = h->path(QStringLiteral("drive_c/Program Files/MswSpool/20263MswSpool.txt"));
        CNameMissing = true;
        {
            FilesAsUser a(kUserA, kGroup);
            BcBut* f = openForm();
            tab(f, 1);
            type(f, "TxtDCansd(0)", "砂");
            ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
            AppendZeroRecord(0);
            SaveBLZConfig();
            Forms::unload(QStringLiteral("BcBut"));
            f = openForm();
            tab(f, 1);
            ClickOn(Ctl(f, QStringLiteral("LblCNameIni")));
            Forms::unload(QStringLiteral("BcBut"));
        }
        QCOMPARE(QFileInfo(cname()).ownerId(), kUserA);
        mb->texts.clear();
        {
            FilesAsUser b(kUserB, kGroup);
            BcBut* f = openForm();
            tab(f, 1);
            type(f, "TxtDCansd(0)", "细砂");
            ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
            AppendZeroRecord(0);
            SaveBLZConfig();
        }
        QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone, kNetNoPath}));
        QCOMPARE(ErrorLogText(), QString());
        QVERIFY(TextFile::decode(rawBytes(hidden)).contains(QStringLiteral("\r\n细砂BiaoZeroTime=")));
        Forms::unload(QStringLiteral("BcBut"));
        SetDefaultNames();
        LoadBLZConfig();
        QCOMPARE(ScaleName[0], QStringLiteral("细砂"));
    }

    // The bin tab waits for the first naming only while the file is really missing.
    void tabsBeforeNaming_data()
    {
        QTest::addColumn<bool>("missingAtStart");
        QTest::addColumn<bool>("fileNow");
        QTest::addColumn<bool>("binsRefused");
        QTest::newRow("missing, still absent") << true << false << true;
        QTest::newRow("missing, written since") << true << true << false;
        QTest::newRow("found at start") << false << true << false;
    }
    void tabsBeforeNaming()
    {
        QFETCH(bool, missingAtStart);
        QFETCH(bool, fileNow);
        QFETCH(bool, binsRefused);
        CNameMissing = missingAtStart;
        if (fileNow)
            writeText(cname(), {"[Name]", "01=骨料1"});
        BcBut* f = openForm();
        tab(f, 2);
        QCOMPARE(mb->texts.size(), binsRefused ? 1 : 0);
        QCOMPARE(f->binTabOpen(), !binsRefused);
        tab(f, 1);
        QVERIFY(f->nameTabOpen());
        QCOMPARE(f->firstNaming(), binsRefused);
    }

    // What a refused or declined setting leaves: the file as it was.
    void checksBeforeWriting_data()
    {
        QTest::addColumn<int>("tab");
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("answer");
        QTest::addColumn<QStringList>("boxes");
        QTest::addColumn<bool>("written");
        QTest::addColumn<bool>("readOnly");  // CName.ini without write permission: refused, told, logged
        const QString empty = QStringLiteral("电子秤名称不能为空!");
        const QString refused = QStringLiteral("设定失败!\nPermission denied: @/Data/CName.ini");
        QTest::newRow("empty scale name") << 1 << "TxtDCansd(1)" << "" << true << QStringList{empty} << false << false;
        QTest::newRow("blanks only") << 1 << "TxtDCansd(13)" << "   " << true << QStringList{empty} << false << false;
        QTest::newRow("empty bin name") << 2 << "TxtDCansdName(9)" << " " << true
                                        << QStringList{QStringLiteral("料仓名称不能为空!")} << false << false;
        QTest::newRow("unused box is not checked") << 1 << "TxtDCansd(5)" << "" << true
                                                   << QStringList{kAskNames, kNamesDone} << true << false;
        QTest::newRow("answer no") << 1 << "TxtDCansd(1)" << "砂" << false << QStringList{kAskNames} << false << false;
        QTest::newRow("bins, answer no") << 2 << "TxtDCansdName(9)" << "P.O" << false << QStringList{kAskBins} << false << false;
        QTest::newRow("names refused") << 1 << "TxtDCansd(1)" << "砂" << true
                                       << QStringList{kAskNames, "电子秤名称" + refused} << false << true;
        QTest::newRow("bins refused") << 2 << "TxtDCansdName(9)" << "P.O" << true
                                      << QStringList{kAskBins, "料仓名称" + refused} << false << true;
    }

    void checksBeforeWriting()
    {
        QFETCH(int, tab);
        QFETCH(QString, box);
        QFETCH(QString, typed);
        QFETCH(bool, answer);
        QFETCH(QStringList, boxes);
        QFETCH(bool, written);
        QFETCH(bool, readOnly);
        ScaleName[13] = QStringLiteral("外加剂3");
        const QByteArray before = GbLines({"[Name]", "01=骨料1"});
        writeText(cname(), {"[Name]", "01=骨料1"});
        if (readOnly)
            QFile::setPermissions(cname(), QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        netPath(h->path(QStringLiteral("prod")));
        QDir().mkpath(h->path(QStringLiteral("prod/Data")));
        BcBut* f = openForm();
        this->tab(f, tab);
        Ctl<QLineEdit>(f, box)->setText(typed);
        mb->queue(answer);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, boxes.replaceInStrings(QStringLiteral("@"), h->dir.path()));
        QCOMPARE(rawBytes(cname()) != before, written);
        // A refused file is not copied on, and the names stay those of the file.
        QCOMPARE(QFileInfo::exists(h->path(QStringLiteral("prod/Data/CName.ini"))), written);
        QCOMPARE(ErrorLogText().contains(QStringLiteral("ErrNumber:70----Permission denied: ")), readOnly);
        if (readOnly)
            QCOMPARE(ScaleName[1], QStringLiteral("骨料2"));
        if (boxes.size() == 1 && answer)
            QCOMPARE(f->focusWidget(), Ctl(f, box));
        QVERIFY(!QFileInfo::exists(spool()));  // only the first naming makes the spool copy
    }

    // The copy for the production control system, from where NetPath.ini points, and what the operator is told.
    void networkCopy_data()
    {
        QTest::addColumn<QString>("netPath");  // empty: no NetPath.ini; "@" stands for the application folder
        QTest::addColumn<QString>("prepare");  // the folder made, or "Data file" / "read-only"
        QTest::addColumn<QString>("landsAt");  // where the copy is found; empty: nowhere
        QTest::addColumn<QString>("message");  // empty: none after the outcome box
        QTest::addColumn<int>("statError");    // what looking at the folder fails with; 0: as it is
        QTest::newRow("no NetPath.ini") << "" << "" << "" << kNetNoPath << 0;
        QTest::newRow("no Data folder there") << "@/prod" << "prod" << "" << kNetNoPath << 0;
        QTest::newRow("folder of this station") << "@/prod" << "prod/Data" << "prod/Data/CName.ini" << "" << 0;
        QTest::newRow("share of a station") << "\\\\192.168.10.9\\prod" << "stations/192.168.10.9/prod/Data"
                                            << "stations/192.168.10.9/prod/Data/CName.ini" << "" << 0;
        QTest::newRow("drive of a station") << "\\\\192.168.10.9\\D$\\Prod\\" << "stations/192.168.10.9/drive_d/Prod/Data"
                                            << "stations/192.168.10.9/drive_d/Prod/Data/CName.ini" << "" << 0;
        QTest::newRow("drive letter") << "D:\\Prod" << "drive_d/Prod/Data" << "drive_d/Prod/Data/CName.ini" << "" << 0;
        QTest::newRow("Data is a file") << "@/prod" << "Data file" << "" << "76:Path not found" << 0;
        QTest::newRow("read-only file there") << "@/prod" << "read-only" << "" << "70:Permission denied" << 0;
        // Only a folder that is not there is a missing path; a share that cannot be looked at is a lost network.
        QTest::newRow("not a folder on the way") << "@/prod" << "prod/Data" << "" << kNetNoPath << int(ENOTDIR);
        QTest::newRow("station off") << "@/prod" << "prod/Data" << "" << kNetLost << int(EHOSTDOWN);
        QTest::newRow("input/output error") << "@/prod" << "prod/Data" << "" << kNetLost << int(EIO);
        QTest::newRow("stale handle") << "@/prod" << "prod/Data" << "" << kNetLost << int(ESTALE);
        QTest::newRow("automount failed") << "@/prod" << "prod/Data" << "" << kNetLost << int(ENODEV);
    }

    void networkCopy()
    {
        QFETCH(QString, netPath);
        QFETCH(QString, prepare);
        QFETCH(QString, landsAt);
        QFETCH(QString, message);
        QFETCH(int, statError);
        if (statError)
            FolderStatError = [statError](const QString&) { return statError; };
        if (!netPath.isEmpty())
            this->netPath(netPath.replace(QLatin1Char('@'), h->dir.path()));
        const QString readOnly = h->path(QStringLiteral("prod/Data/CName.ini"));
        if (prepare == QLatin1String("Data file")) {
            writeText(h->path(QStringLiteral("prod/Data")), {"not a folder"});
        } else if (prepare == QLatin1String("read-only")) {
            writeText(readOnly, {"[Name]", "01=other station"});
            QFile::setPermissions(readOnly, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        } else if (!prepare.isEmpty()) {
            QDir().mkpath(h->path(prepare));
        }
        BcBut* f = openForm();
        tab(f, 1);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QStringList boxes{kAskNames, kNamesDone};
        if (!message.isEmpty())
            boxes << message;
        QCOMPARE(mb->texts, boxes);
        QVERIFY(!rawBytes(cname()).isEmpty());  // the local file stays set whatever the copy did
        if (!landsAt.isEmpty())
            QCOMPARE(rawBytes(h->path(landsAt)), rawBytes(cname()));
        if (prepare == QLatin1String("read-only"))
            QCOMPARE(rawBytes(readOnly), GbLines({"[Name]", "01=other station"}));
        QCOMPARE(TextFile::decode(rawBytes(ErrorLogPath(QDate::currentDate()))), QString());
    }

    // The partner of the pair gets the first names in its spool folder; a station without a partner, or
    // with its partner's share missing, tells the operator nothing more.
    void partnerCopy_data()
    {
        QTest::addColumn<QStringList>("own");
        QTest::addColumn<QString>("share");  // "mounted", "plain folder" (an empty mount point), "read-only"
        QTest::addColumn<QString>("partner");
        QTest::addColumn<QString>("logged");  // the error number logged; empty: no log
        QTest::newRow("first of a pair") << QStringList{"127.0.0.1", "192.168.10.1"} << "mounted" << "192.168.10.2" << "";
        QTest::newRow("second of a pair") << QStringList{"10.1.1.1", "192.168.10.4"} << "mounted" << "192.168.10.3" << "";
        QTest::newRow("in no pair") << QStringList{"192.168.10.7", "10.0.0.2"} << "mounted" << "" << "";
        QTest::newRow("loopback only") << QStringList{"127.0.0.1", "::1"} << "mounted" << "" << "";
        QTest::newRow("share not mounted") << QStringList{"192.168.10.1"} << "plain folder" << "192.168.10.2" << "52";
        QTest::newRow("read-only spool file") << QStringList{"192.168.10.2"} << "read-only" << "192.168.10.1" << "70";
    }

    void partnerCopy()
    {
        QFETCH(QStringList, own);
        QFETCH(QString, share);
        QFETCH(QString, partner);
        QFETCH(QString, logged);
        PartnerStation::setAddressSource([own] {
            QList<QHostAddress> a;
            for (const QString& s : own)
                a << QHostAddress(s);
            return a;
        });
        // A real mount cannot be made here: a folder stands in for it wherever the row says it is mounted.
        const QString stations = h->path(QStringLiteral("stations"));
        if (share != QLatin1String("plain folder"))
            PartnerStation::setMountCheck([](const QString& root) { return QFileInfo(root).isDir(); });
        for (const char* host : {"192.168.10.1", "192.168.10.2", "192.168.10.3"})
            QDir().mkpath(stations + QLatin1Char('/') + QLatin1String(host) + QStringLiteral("/drive_c"));
        const QString partnerSpool = stations + QLatin1Char('/') + partner + QStringLiteral("/drive_c/Program Files/CNameSpool");
        const QByteArray theirs = GbLines({"[Name]", "01=their own"});
        if (share == QLatin1String("read-only")) {
            writeText(partnerSpool + QStringLiteral("/CName.ini"), {"[Name]", "01=their own"});
            QFile::setPermissions(partnerSpool + QStringLiteral("/CName.ini"), QFile::ReadOwner);
        }
        CNameMissing = true;
        BcBut* f = openForm();
        tab(f, 1);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone, kNetNoPath}));
        QCOMPARE(rawBytes(spool()), rawBytes(cname()));

        // Only the partner's folder, and only when its share is there, gets a copy.
        QStringList copies;
        for (QDirIterator it(stations, {QStringLiteral("CName.ini")}, QDir::Files, QDirIterator::Subdirectories);
             it.hasNext();)
            copies << it.next();
        if (share == QLatin1String("mounted") && !partner.isEmpty()) {
            QCOMPARE(copies, QStringList{partnerSpool + QStringLiteral("/CName.ini")});
            QCOMPARE(rawBytes(copies.first()), rawBytes(cname()));
            QVERIFY(AppPaths::isHidden(partnerSpool));
        } else if (share == QLatin1String("read-only")) {
            QCOMPARE(rawBytes(partnerSpool + QStringLiteral("/CName.ini")), theirs);
        } else {
            QCOMPARE(copies, QStringList());
        }
        const QString log = TextFile::decode(rawBytes(ErrorLogPath(QDate::currentDate())));
        QCOMPARE(log.count(QStringLiteral("ErrSub:BackupCNameIni")), logged.isEmpty() ? 0 : 1);
        if (!logged.isEmpty())
            QVERIFY2(log.contains(QStringLiteral("ErrNumber:") + logged + QStringLiteral("----")), qPrintable(log));
    }

    // A partner whose share does not answer holds the console no longer than the wait allows; the
    // operator goes on and the log keeps one line.
    void partnerThatDoesNotAnswer()
    {
        PartnerStation::setAddressSource([] { return QList<QHostAddress>{ip("192.168.10.1")}; });
        auto release = std::make_shared<std::promise<void>>();
        std::shared_future<void> released = release->get_future().share();
        PartnerStation::setMountCheck([released](const QString&) {
            released.wait();
            return false;
        });
        NetworkWaitLimit = std::chrono::milliseconds(200);
        CNameMissing = true;
        BcBut* f = openForm();
        tab(f, 1);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        release->set_value();
        QCOMPARE(mb->texts, (QStringList{kAskNames, kNamesDone, kNetNoPath}));
        QCOMPARE(rawBytes(spool()), rawBytes(cname()));
        const QString log = TextFile::decode(rawBytes(ErrorLogPath(QDate::currentDate())));
        QCOMPARE(log.count(QStringLiteral("ErrNumber:52----")), 1);
    }

    void restoreFails_data()
    {
        QTest::addColumn<QString>("spool");  // "missing", "empty folder"
        QTest::addColumn<QStringList>("boxes");
        QTest::newRow("no spool folder") << "missing" << QStringList{kAskRestore, kRestoreFailed};
        QTest::newRow("spool folder without the file") << "empty folder" << QStringList{kAskRestore, kRestoreFailed};
    }

    void restoreFails()
    {
        QFETCH(QString, spool);
        QFETCH(QStringList, boxes);
        const QStringList present{"[Name]", "01=今天的名称"};
        writeText(cname(), present);
        if (spool == QLatin1String("empty folder"))
            QDir().mkpath(CNameSpoolFolder());
        BcBut* f = openForm();
        tab(f, 1);
        ClickOn(Ctl(f, QStringLiteral("LblCNameIni")));
        QCOMPARE(mb->texts, boxes);
        QCOMPARE(rawBytes(cname()), GbLines(present));
        // A failed copy leaves the present names as the ones a later restore brings back.
        QCOMPARE(rawBytes(this->spool()), spool == QLatin1String("missing") ? QByteArray() : GbLines(present));
    }

    // The captions of the bins follow the names of their scales; an entry without a name is unused.
    void captions_data()
    {
        QTest::addColumn<int>("lang");
        QTest::addColumn<QStringList>("names");  // "scale:index=name" or "bin:index=name" before the form loads
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<bool>("inUse");
        QTest::newRow("cement silo") << 1 << QStringList() << "LblCansdName(9)" << "水泥M1" << true;
        QTest::newRow("renamed cement") << 1 << QStringList{"scale:8=P.O水泥"} << "LblCansdName(11)" << "P.O水泥M3" << true;
        QTest::newRow("added powder") << 1 << QStringList{"scale:6=外加粉", "bin:7=粉2"} << "LblCansdName(7)"
                                      << "外加粉M2" << true;
        QTest::newRow("bin of an unused scale") << 1 << QStringList{"bin:16=矿粉1"} << "LblCansdName(16)" << "矿粉M1" << true;
        QTest::newRow("water keeps its name") << 1 << QStringList{"scale:7=清水秤"} << "LblCansdName(8)" << "清水秤" << true;
        QTest::newRow("admixture") << 1 << QStringList{"scale:11=减水剂"} << "LblCansdName(18)" << "减水剂" << true;
        QTest::newRow("second water") << 1 << QStringList{"bin:21=水2"} << "LblCansdName(21)" << "清水" << true;
        QTest::newRow("unused bin") << 1 << QStringList() << "LblCansdName(21)" << "未使用" << false;
        QTest::newRow("unused scale") << 1 << QStringList() << "LblCansd(4)" << "未使用" << false;
        QTest::newRow("scale label") << 1 << QStringList{"scale:0= 砂 "} << "LblCansd(0)" << "砂" << true;
        QTest::newRow("English: unused") << 2 << QStringList() << "LblCansdName(4)" << "Unused" << false;
        // No number in the language file: its English is the program's own.
        QTest::newRow("English: second water") << 2 << QStringList{"bin:21=水2"} << "LblCansdName(21)"
                                               << "Clear water" << true;
    }

    void captions()
    {
        QFETCH(int, lang);
        QFETCH(QStringList, names);
        QFETCH(QString, label);
        QFETCH(QString, caption);
        QFETCH(bool, inUse);
        LangNo = short(lang);
        ProfileFile = QStringLiteral(ORVA_LANG_FILE);
        for (const QString& n : names) {
            const int index = n.section(QLatin1Char(':'), 1).section(QLatin1Char('='), 0, 0).toInt();
            const QString name = n.section(QLatin1Char('='), 1);
            (n.startsWith(QLatin1String("scale")) ? ScaleName[size_t(index)] : BinName[size_t(index)]) = name;
        }
        BcBut* f = openForm();
        auto* l = Ctl<QLabel>(f, label);
        QCOMPARE(l->text(), caption);
        QCOMPARE(l->toolTip(), caption);
        QCOMPARE(l->isEnabled(), inUse);
        const QString boxName = QString(label).replace(QStringLiteral("LblCansdName"), QStringLiteral("TxtDCansdName"))
                                    .replace(QStringLiteral("LblCansd("), QStringLiteral("TxtDCansd("));
        QCOMPARE(Ctl(f, boxName)->isEnabled(), inUse);
    }

private:
    BcBut* openForm()
    {
        MenuTitle = QStringLiteral("调校");
        Forms::show(QStringLiteral("BcBut"));
        return qobject_cast<BcBut*>(Forms::loaded(QStringLiteral("BcBut")));
    }
    void tab(BcBut* f, int i) { ClickOn(Ctl(f, IndexedName("LblBdTap", i))); }
    void type(BcBut* f, const char* box, const char* text) { Ctl<QLineEdit>(f, QLatin1String(box))->setText(QString::fromUtf8(text)); }
    QString box(BcBut* f, const char* name) { return Ctl<QLineEdit>(f, QLatin1String(name))->text(); }
    QString caption(BcBut* f, const char* name) { return Ctl<QLabel>(f, QLatin1String(name))->text(); }
    QString cname() const { return h->path(QStringLiteral("Data/CName.ini")); }
    QString spool() const { return CNameSpoolFolder() + QStringLiteral("/CName.ini"); }
    void netPath(const QString& path) { writeText(h->path(QStringLiteral("Data/NetPath.ini")), {"NetworkPath=" + path}); }

    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
    QDateTime clock;
};

QTEST_MAIN(NamesTest)
#include "names_test.moc"
