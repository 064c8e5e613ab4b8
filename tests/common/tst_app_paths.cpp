// The application folder: where Windows paths land, what is hidden, the port devices, and the error log
// kept in it.
#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <QRegularExpression>

namespace {
// A Windows path, its place in the application folder (null: not asked), and on the system drive.
const struct { const char *name, *path, *inApp, *systemDrive; } kWindowsPaths[] = {
    {"app path", "\\Data\\骨料.txt", "/Data/骨料.txt", "/drive_c/Data/骨料.txt"},
    {"no leading separator", "data\\CName.ini", "/data/CName.ini", "/drive_c/data/CName.ini"},
    {"lower-case drive", "c:\\Program Files\\MswSpool", nullptr, "/drive_c/Program Files/MswSpool"},
};
// DOS attributes before (null: the mount shows none), whether setting them works, and what is set (null: nothing).
const struct { const char *name, *before; bool setWorks; const char* written; } kShareAttributes[] = {
    {"folder", "10000000", true, "12000000"},
    {"other bits kept", "11200100", true, "13200100"},
    {"already hidden", "12000000", true, nullptr},
    {"no attributes on this mount", nullptr, true, nullptr},
    {"mount refuses", "10000000", false, "12000000"},
};
// Errors as form|routine|number, in order, and the routine of each record logged.
const struct { const char *name, *calls, *logged; } kRepeats[] = {
    {"same error twice", "Cansd|EnterChecked|13 Cansd|EnterChecked|13", "EnterChecked"},
    {"two numbers of a routine", "Cansd|EnterChecked|13 Cansd|EnterChecked|6", "EnterChecked EnterChecked"},
    {"two routines, one number", "Cansd|EnterChecked|13 Cansd|Form_Load|13", "EnterChecked Form_Load"},
    {"other form, same routine and number", "Cansd|ImgReturn_Click|5 CansdAG|ImgReturn_Click|5", "ImgReturn_Click"},
};
}  // namespace

class AppPathsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        app.renew();
        ResetErrorLogMemory();
    }
    void cleanup() { AppPaths::setDosAttributes({}); }

    void windowsPaths_data() { TableRows(kWindowsPaths); }
    void windowsPaths()
    {
        const auto& r = TableRow(kWindowsPaths);
        if (r.inApp) QCOMPARE(AppPaths::inApp(r.path), app() + r.inApp);
        QCOMPARE(AppPaths::systemDrive(r.path), app() + r.systemDrive);
        QCOMPARE(AppPaths::partnerShare("STATION2", r.path), app() + "/stations/STATION2" + r.systemDrive);
    }

    void hidden()
    {
        const QString err = AppPaths::inApp("ProgramErr");
        const QString spool = AppPaths::systemDrive("C:\\Program Files\\MswSpool");
        QVERIFY(QDir().mkpath(err) && QDir().mkpath(spool));
        AppPaths::setHidden(err);
        AppPaths::setHidden(err + "/");
        // A list that lost its last line end.
        QVERIFY(putBytes(app() + "/.hidden", rawBytes(app() + "/.hidden") + "last"));
        AppPaths::setHidden(app() + "/Data");
        AppPaths::setHidden(spool);
        QVERIFY(AppPaths::isHidden(err) && AppPaths::isHidden(spool) && AppPaths::isHidden(app() + "/.dotfile"));
        QVERIFY(!AppPaths::isHidden(app() + "/Program"));
        QCOMPARE(rawBytes(app() + "/.hidden"), QByteArray("ProgramErr\nlast\nData\n"));
        QCOMPARE(rawBytes(app() + "/drive_c/Program Files/.hidden"), QByteArray("MswSpool\n"));
    }

    // On a share of a Windows station the folder takes the hidden bit among its DOS attributes (four bytes,
    // low byte first), the others kept. A mount without them, or one that refuses, leaves ".hidden" alone to
    // tell it, and nothing goes to the log.
    void hiddenOnAWindowsShare_data() { TableRows(kShareAttributes); }
    void hiddenOnAWindowsShare()
    {
        const auto& r = TableRow(kShareAttributes);
        const QString spool = AppPaths::partnerShare("192.168.10.2", "C:\\Program Files\\CNameSpool");
        QVERIFY(QDir().mkpath(spool));
        QByteArray set;
        AppPaths::setDosAttributes({[&](const QString& p, QByteArray* v) {
                                        *v = r.before ? QByteArray::fromHex(r.before) : QByteArray();
                                        return p == spool && r.before;
                                    },
                                    [&](const QString& p, const QByteArray& v) {
                                        set = p == spool ? v : "elsewhere";
                                        return r.setWorks;
                                    }});
        AppPaths::setHidden(spool + "/");
        QCOMPARE(set, r.written ? QByteArray::fromHex(r.written) : QByteArray());
        QVERIFY(AppPaths::isHidden(spool));
        QVERIFY(!QFileInfo::exists(app() + "/ProgramErr"));
    }

    void comPortDevice()
    {
        QCOMPARE(AppPaths::comPortDevice(1), QStringLiteral("/dev/ttyS0"));  // no mapping file
        QVERIFY(putBytes(app() + "/Data/ComPorts.ini",
                         "[ComPorts]\r\nCom2 = /dev/ttyUSB0 \r\ncom3=/dev/ttyACM1\r\nCom4=\r\n"));
        QCOMPARE(AppPaths::comPortDevice(2), QStringLiteral("/dev/ttyUSB0"));
        QCOMPARE(AppPaths::comPortDevice(4), QStringLiteral("/dev/ttyS3"));  // empty mapping
    }

    void recordFormatAndFileName()
    {
        const QByteArray old = "ErrTime\xa3\xba" "2026-03-01   08:00:00\r\nold\r\n";
        QVERIFY(putBytes(ErrorLogPath(QDate::currentDate()), old));
        LogProgramError("Cansd", "ImgBdOk_Click", "13", QString::fromUtf8("类型不匹配"));
        const QByteArray bytes = rawBytes(ErrorLogPath(QDate::currentDate()));
        QVERIFY(bytes.startsWith(old));
        const QStringList lines = TextFile::decode(bytes.mid(old.size())).split("\r\n");
        // The date and time as the calibration records write them, three blanks between: "2026/3/5   9:03:22".
        QVERIFY2(QRegularExpression(QString::fromUtf8("^ErrTime：\\d{4}/[1-9]\\d?/[1-9]\\d?   [1-2]?\\d:\\d\\d:\\d\\d$"))
                     .match(lines[0]).hasMatch(), qPrintable(lines[0]));
        QCOMPARE(lines.mid(1), (QStringList{QString::fromUtf8("ErrNumber:13----类型不匹配"), "ErrForm:Cansd",
                                            "ErrSub:ImgBdOk_Click", QString(52, '#'), ""}));
        // The month has no leading zero.
        QCOMPARE(ErrorLogPath(QDate(2026, 3, 5)), app("ProgramErr/20263ErrLog.txt"));
    }

    void oncePerRoutineAndNumber_data() { TableRows(kRepeats); }
    void oncePerRoutineAndNumber()
    {
        QFETCH(int, row);
        // A new run logs them again.
        for (int run = 0; run < 2; ++run, ResetErrorLogMemory())
            for (const QString& call : QString(kRepeats[row].calls).split(' ')) {
                const QStringList f = call.split('|');
                LogProgramError(f[0], f[1], f[2], "description");
            }
        QStringList subs;
        for (const QString& line : ErrorLogText().split("\r\n"))
            if (line.startsWith("ErrSub:")) subs << line.mid(7);
        QCOMPARE(subs.join(' '), kRepeats[row].logged + QStringLiteral(" ") + kRepeats[row].logged);
    }

private:
    AppFolder app;
};

QTEST_GUILESS_MAIN(AppPathsTest)
#include "tst_app_paths.moc"
