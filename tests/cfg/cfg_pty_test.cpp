// The installed command as a user runs it: the real executable in an application folder of its own, through
// the real serial port code on a pseudo-terminal, to the standalone controller started as a commissioned
// plant. The rows run in order, as one session.
#include "test_support.h"

#include "common/text_file.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSerialPort>

namespace {
constexpr int kSlowMs = 60000;  // a sanitizer build starts slowly

// Commands to the controller first, whether another program holds the port, the arguments, the exit code,
// the output and the last line of standard error.
const struct { const char *name, *setUp; bool held; const char* args; int exit; const char *out, *err; } kSession[] = {
    {"save", "", false, "save plant.cfg", 0, "", ""},
    {"two parameters and a sensor load restored", "set D355 80;set D358 300;set D203 450", false,
     "restore --yes plant.cfg", 0,
     "骨料4 [scale03.params] 落差调整值: 80 -> 60\n骨料4 [scale03.params] 慢速配料值: 300 -> 350\n"
     "传感器配置设定 [D200] 骨料4: 450 -> 500",
     "已写入：scale03.params, D200"},
    {"equal again, the port given by its device", "", false, "--port ttyPLC diff plant.cfg", 0, "", ""},
    {"port held by another program", "", true, "save other.cfg", 2, "", "Com2端口已被其它程序占用!请重新设置端口！"},
};
}  // namespace

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
        sim.start(QStringLiteral(PLCSIM_EXE), {"--commissioned", "--control-stdin", "--no-live", "--link", link});
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

    void session_data() { TableRows(kSession); }
    void session()
    {
        const auto& c = TableRow(kSession);
        for (const QString& command : QString::fromLatin1(c.setUp).split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            sim.write(command.toUtf8() + '\n');
            QTRY_VERIFY_WITH_TIMEOUT(sim.canReadLine(), kSlowMs);
            QCOMPARE(sim.readLine().trimmed(), QByteArray("ok"));
        }
        QSerialPort other(link);
        if (c.held)
            QVERIFY(other.open(QIODevice::ReadWrite));

        QProcess cfg;
        cfg.setWorkingDirectory(dir.path());
        cfg.start(exe, QString::fromLatin1(c.args).split(QLatin1Char(' ')));
        cfg.closeWriteChannel();
        QVERIFY(cfg.waitForFinished(kSlowMs));
        const QString stdErr = QString::fromUtf8(cfg.readAllStandardError()).trimmed();
        QCOMPARE(QString::fromUtf8(cfg.readAllStandardOutput()).trimmed(), QString::fromUtf8(c.out));
        QCOMPARE(stdErr.section(QLatin1Char('\n'), -1), QString::fromUtf8(c.err));
        QCOMPARE(cfg.exitCode(), c.exit);
    }

private:
    QTemporaryDir dir;
    QString link, exe;
    QProcess sim;
};

QTEST_GUILESS_MAIN(CfgPtyTest)
#include "cfg_pty_test.moc"
