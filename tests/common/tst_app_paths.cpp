#include "common/app_paths.h"
#include "common_test_util.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class AppPathsTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void appFolderDefault();
    void inApp_data();
    void inApp();
    void systemDrive_data();
    void systemDrive();
    void hidden();
    void hiddenInReadOnlyFolder();
    void dir_data();
    void dir();
    void comPortDevice_data();
    void comPortDevice();
    void yearMonth_data();
    void yearMonth();

private:
    std::unique_ptr<QTemporaryDir> dir_;
    QString app() const { return dir_->path(); }
};

void AppPathsTest::init()
{
    dir_ = std::make_unique<QTemporaryDir>();
    AppPaths::setAppFolder(dir_->path());
}

void AppPathsTest::cleanup() { AppPaths::setAppFolder(QString()); }

void AppPathsTest::appFolderDefault()
{
    AppPaths::setAppFolder(QString());
    QCOMPARE(AppPaths::appFolder(), QCoreApplication::applicationDirPath());
    AppPaths::setAppFolder(app() + "/");
    QCOMPARE(AppPaths::appFolder(), app());
}

void AppPathsTest::inApp_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<QString>("inside");
    QTest::newRow("design path") << "\\Data\\BLZConfig.dat" << "/Data/BLZConfig.dat";
    QTest::newRow("slashes") << "/Data/BLZConfig.dat" << "/Data/BLZConfig.dat";
    QTest::newRow("no leading separator") << "Data\\CName.ini" << "/Data/CName.ini";
    QTest::newRow("lower-case data stays") << "\\data\\NetPath.ini" << "/data/NetPath.ini";
    QTest::newRow("Chinese") << "\\Data\\骨料.txt" << "/Data/骨料.txt";
    QTest::newRow("empty") << "" << "";
    QTest::newRow("separator only") << "\\" << "";
}

void AppPathsTest::inApp()
{
    QFETCH(QString, relative);
    QFETCH(QString, inside);
    QCOMPARE(AppPaths::inApp(relative), app() + inside);
}

void AppPathsTest::systemDrive_data()
{
    QTest::addColumn<QString>("windowsPath");
    QTest::addColumn<QString>("inside");
    QTest::newRow("spool") << "C:\\Program Files\\MswSpool" << "/drive_c/Program Files/MswSpool";
    QTest::newRow("lower-case drive") << "c:\\Program Files\\CNameSpool\\CName.ini"
                                      << "/drive_c/Program Files/CNameSpool/CName.ini";
    QTest::newRow("other drive") << "D:\\x" << "/drive_d/x";
    QTest::newRow("drive root") << "C:\\" << "/drive_c";
    QTest::newRow("no drive") << "\\Program Files\\x" << "/drive_c/Program Files/x";
}

void AppPathsTest::systemDrive()
{
    QFETCH(QString, windowsPath);
    QFETCH(QString, inside);
    QCOMPARE(AppPaths::systemDrive(windowsPath), app() + inside);
    // The same path on the partner station lies under its mounted share.
    QCOMPARE(AppPaths::partnerShare(QStringLiteral("STATION2"), windowsPath), app() + "/stations/STATION2" + inside);
}

void AppPathsTest::hidden()
{
    const QString err = AppPaths::inApp("ProgramErr");
    const QString spool = AppPaths::systemDrive("C:\\Program Files\\MswSpool");
    QVERIFY(QDir().mkpath(err));
    QVERIFY(QDir().mkpath(spool));
    QVERIFY(!AppPaths::isHidden(err));
    AppPaths::setHidden(err);
    AppPaths::setHidden(err + "/");
    QVERIFY(putBytes(app() + "/.hidden", rawBytes(app() + "/.hidden") + "last"));  // a list without its last line end
    AppPaths::setHidden(app() + "/Data");
    QVERIFY(AppPaths::isHidden(err));
    QVERIFY(AppPaths::isHidden(app() + "/Data"));
    QVERIFY(!AppPaths::isHidden(app() + "/Program"));
    QVERIFY(AppPaths::isHidden(app() + "/.dotfile"));
    QCOMPARE(rawBytes(app() + "/.hidden"), QByteArray("ProgramErr\nlast\nData\n"));
    AppPaths::setHidden(spool);
    QVERIFY(AppPaths::isHidden(spool));
    QCOMPARE(rawBytes(app() + "/drive_c/Program Files/.hidden"), QByteArray("MswSpool\n"));
}

void AppPathsTest::hiddenInReadOnlyFolder()
{
    QVERIFY(QDir().mkpath(app() + "/ProgramErr"));
    makeReadOnly(app());
    {
        UnprivilegedFiles asOperator;
        AppPaths::setHidden(app() + "/ProgramErr");
        QVERIFY(!AppPaths::isHidden(app() + "/ProgramErr"));
    }
    makeWritable(app());
    QVERIFY(!QFile::exists(app() + "/.hidden"));
}

void AppPathsTest::dir_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<bool>("withFolders");
    QTest::addColumn<QString>("name");
    QTest::newRow("file") << "Data/BLZConfig.dat" << false << "BLZConfig.dat";
    QTest::newRow("file with folders") << "Data/BLZConfig.dat" << true << "BLZConfig.dat";
    QTest::newRow("folder") << "Data" << true << "Data";
    QTest::newRow("folder with trailing slash") << "Data/" << true << "Data";
    QTest::newRow("folder without folders") << "Data" << false << "";
    QTest::newRow("missing") << "Data/none.dat" << false << "";
    QTest::newRow("missing folder") << "ProgramErr" << true << "";
    QTest::newRow("lower case is another name") << "data" << true << "";
}

void AppPathsTest::dir()
{
    QFETCH(QString, relative);
    QFETCH(bool, withFolders);
    QFETCH(QString, name);
    QVERIFY(putBytes(app() + "/Data/BLZConfig.dat", "COMPort=2\r\n"));
    QCOMPARE(AppPaths::Dir(app() + "/" + relative, withFolders), name);
    QCOMPARE(AppPaths::Dir(QString(), true), QString());
}

void AppPathsTest::comPortDevice_data()
{
    QTest::addColumn<QByteArray>("ini");  // empty: no file
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("device");
    const QByteArray ini = "[ComPorts]\r\nCom2 = /dev/ttyUSB0 \r\ncom3=/dev/ttyACM1\r\nCom4=\r\n";
    QTest::newRow("no file, Com1") << QByteArray() << 1 << "/dev/ttyS0";
    QTest::newRow("no file, Com2") << QByteArray() << 2 << "/dev/ttyS1";
    QTest::newRow("no file, Com6") << QByteArray() << 6 << "/dev/ttyS5";
    QTest::newRow("mapped") << ini << 2 << "/dev/ttyUSB0";
    QTest::newRow("key without case") << ini << 3 << "/dev/ttyACM1";
    QTest::newRow("empty mapping") << ini << 4 << "/dev/ttyS3";
    QTest::newRow("unmapped") << ini << 5 << "/dev/ttyS4";
}

void AppPathsTest::comPortDevice()
{
    QFETCH(QByteArray, ini);
    QFETCH(int, port);
    QFETCH(QString, device);
    if (!ini.isEmpty()) QVERIFY(putBytes(app() + "/Data/ComPorts.ini", ini));
    QCOMPARE(AppPaths::comPortDevice(port), device);
}

void AppPathsTest::yearMonth_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<QString>("text");
    QTest::newRow("March") << QDate(2026, 3, 5) << "20263";
    QTest::newRow("November") << QDate(2026, 11, 30) << "202611";
    QTest::newRow("January") << QDate(2027, 1, 1) << "20271";
}

void AppPathsTest::yearMonth()
{
    QFETCH(QDate, date);
    QFETCH(QString, text);
    QCOMPARE(AppPaths::yearMonth(date), text);
}

QTEST_GUILESS_MAIN(AppPathsTest)
#include "tst_app_paths.moc"
