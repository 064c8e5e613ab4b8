// The installed command as a user runs it: the real executable in an application folder of its own, through
// the real serial port code on a pseudo-terminal, to the standalone controller started as a commissioned
// plant. The rows run in order, as one session.
#include "common/text_file.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSerialPort>
#include <QTemporaryDir>
#include <QTest>

namespace {
constexpr int kSlowMs = 60000;  // a sanitizer build starts slowly
}

class CfgPtyTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        link = dir.filePath(QStringLiteral("ttyPLC"));
        exe = dir.filePath(QStringLiteral("orvaplccfg"));
        QVERIFY(QFile::copy(QStringLiteral(ORVAPLCCFG_EXE), exe));
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("Data")));
        QVERIFY(TextFile::writeLines(dir.filePath(QStringLiteral("Data/ComPorts.ini")),
                                     {QStringLiteral("[ComPorts]"), QStringLiteral("Com2=") + link}));
        sim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        sim.start(QStringLiteral(PLCSIM_EXE), {QStringLiteral("--commissioned"), QStringLiteral("--control-stdin"),
                                               QStringLiteral("--no-live"), QStringLiteral("--link"), link});
        QVERIFY(sim.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(sim.canReadLine(), kSlowMs);
        sim.readLine();
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(link).isSymLink(), kSlowMs);
    }
    void cleanupTestCase()
    {
        sim.write("quit\n");
        if (!sim.waitForFinished(kSlowMs))
            sim.kill();
    }

    void session_data()
    {
        QTest::addColumn<QStringList>("setUp");  // commands to the controller first
        QTest::addColumn<bool>("heldElsewhere");
        QTest::addColumn<QString>("args");
        QTest::addColumn<int>("exit");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err");  // the last line of standard error
        const struct {
            const char* name;
            const char* setUp;
            bool held;
            const char *args;
            int exit;
            const char *out, *err;
        } rows[] = {
            {"save", "", false, "save plant.cfg", 0, "", ""},
            {"two parameters and a sensor load changed", "set D355 80;set D358 300;set D203 450", false, "diff plant.cfg", 1,
             "骨料4 [scale03.params] 落差调整值: 60 -> 80\n骨料4 [scale03.params] 慢速配料值: 350 -> 300\n"
             "传感器配置设定 [D200] 骨料4: 500 -> 450",
             ""},
            {"restore", "", false, "restore --yes plant.cfg", 0,
             "骨料4 [scale03.params] 落差调整值: 80 -> 60\n骨料4 [scale03.params] 慢速配料值: 300 -> 350\n"
             "传感器配置设定 [D200] 骨料4: 450 -> 500",
             "已写入：scale03.params, D200"},
            {"equal again, the port given by its device", "", false, "--port ttyPLC diff plant.cfg", 0, "", ""},
            {"port held by another program", "", true, "save other.cfg", 2, "",
             "Com2端口已被其它程序占用!请重新设置端口！"},
        };
        for (const auto& r : rows)
            QTest::newRow(r.name) << QString(r.setUp).split(QLatin1Char(';'), Qt::SkipEmptyParts) << r.held
                                  << QString(r.args) << r.exit << QString::fromUtf8(r.out) << QString::fromUtf8(r.err);
    }
    void session()
    {
        QFETCH(QStringList, setUp);
        QFETCH(bool, heldElsewhere);
        QFETCH(QString, args);
        QFETCH(int, exit);
        QFETCH(QString, out);
        QFETCH(QString, err);
        for (const QString& c : setUp) {
            sim.write(c.toUtf8() + '\n');
            QTRY_VERIFY_WITH_TIMEOUT(sim.canReadLine(), kSlowMs);
            QCOMPARE(sim.readLine().trimmed(), QByteArray("ok"));
        }
        QSerialPort other(link);
        if (heldElsewhere)
            QVERIFY(other.open(QIODevice::ReadWrite));

        QProcess cfg;
        cfg.setWorkingDirectory(dir.path());
        cfg.start(exe, args.split(QLatin1Char(' ')));
        cfg.closeWriteChannel();
        QVERIFY(cfg.waitForFinished(kSlowMs));
        const QString stdErr = QString::fromUtf8(cfg.readAllStandardError()).trimmed();
        QCOMPARE(QString::fromUtf8(cfg.readAllStandardOutput()).trimmed(), out);
        QCOMPARE(stdErr.section(QLatin1Char('\n'), -1), err);
        QCOMPARE(cfg.exitCode(), exit);
    }

private:
    QTemporaryDir dir;
    QString link, exe;
    QProcess sim;
};

QTEST_GUILESS_MAIN(CfgPtyTest)
#include "cfg_pty_test.moc"
