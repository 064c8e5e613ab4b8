#include "common/app_paths.h"
#include "common_test_util.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

class AppPathsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        dir_ = std::make_unique<QTemporaryDir>();
        AppPaths::setAppFolder(dir_->path());
    }
    void cleanup()
    {
        AppPaths::setAppFolder(QString());
        AppPaths::setDosAttributes({});
    }

    void windowsPaths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("inApp");
        QTest::addColumn<QString>("systemDrive");
        QTest::newRow("app path") << "\\Data\\骨料.txt" << "/Data/骨料.txt" << "/drive_c/Data/骨料.txt";
        QTest::newRow("no leading separator") << "data\\CName.ini" << "/data/CName.ini" << "/drive_c/data/CName.ini";
        QTest::newRow("lower-case drive") << "c:\\Program Files\\MswSpool" << "" << "/drive_c/Program Files/MswSpool";
    }
    void windowsPaths()
    {
        QFETCH(QString, path);
        QFETCH(QString, inApp);
        QFETCH(QString, systemDrive);
        if (!inApp.isEmpty()) QCOMPARE(AppPaths::inApp(path), app() + inApp);
        QCOMPARE(AppPaths::systemDrive(path), app() + systemDrive);
        QCOMPARE(AppPaths::partnerShare(QStringLiteral("STATION2"), path), app() + "/stations/STATION2" + systemDrive);
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
    void hiddenOnAWindowsShare_data()
    {
        QTest::addColumn<QByteArray>("before");  // null: the mount shows no attributes
        QTest::addColumn<bool>("setWorks");
        QTest::addColumn<QByteArray>("written");  // null: nothing written
        const struct { const char *name, *before; bool setWorks; const char* written; } rows[] = {
            {"folder", "10000000", true, "12000000"},
            {"other bits kept", "11200100", true, "13200100"},
            {"already hidden", "12000000", true, nullptr},
            {"no attributes on this mount", nullptr, true, nullptr},
            {"mount refuses", "10000000", false, "12000000"},
        };
        for (const auto& r : rows)
            QTest::newRow(r.name) << (r.before ? QByteArray::fromHex(r.before) : QByteArray()) << r.setWorks
                                  << (r.written ? QByteArray::fromHex(r.written) : QByteArray());
    }
    void hiddenOnAWindowsShare()
    {
        QFETCH(QByteArray, before);
        QFETCH(bool, setWorks);
        QFETCH(QByteArray, written);
        const QString spool = AppPaths::partnerShare("192.168.10.2", "C:\\Program Files\\CNameSpool");
        QVERIFY(QDir().mkpath(spool));
        QByteArray set;
        AppPaths::setDosAttributes({[&](const QString& p, QByteArray* v) {
                                        *v = before;
                                        return p == spool && !before.isNull();
                                    },
                                    [&](const QString& p, const QByteArray& v) {
                                        set = p == spool ? v : "elsewhere";
                                        return setWorks;
                                    }});
        AppPaths::setHidden(spool + "/");
        QCOMPARE(set, written);
        QVERIFY(AppPaths::isHidden(spool));
        QVERIFY(!QFileInfo::exists(app() + "/ProgramErr"));
    }

    void comPortDevice_data()
    {
        QTest::addColumn<QByteArray>("ini");  // empty: no file
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("device");
        const QByteArray ini = "[ComPorts]\r\nCom2 = /dev/ttyUSB0 \r\ncom3=/dev/ttyACM1\r\nCom4=\r\n";
        QTest::newRow("no file") << QByteArray() << 1 << "/dev/ttyS0";
        QTest::newRow("mapped") << ini << 2 << "/dev/ttyUSB0";
        QTest::newRow("empty mapping") << ini << 4 << "/dev/ttyS3";
    }
    void comPortDevice()
    {
        QFETCH(QByteArray, ini);
        QFETCH(int, port);
        QFETCH(QString, device);
        if (!ini.isEmpty()) QVERIFY(putBytes(app() + "/Data/ComPorts.ini", ini));
        QCOMPARE(AppPaths::comPortDevice(port), device);
    }

private:
    std::unique_ptr<QTemporaryDir> dir_;
    QString app() const { return dir_->path(); }
};

QTEST_GUILESS_MAIN(AppPathsTest)
#include "tst_app_paths.moc"
