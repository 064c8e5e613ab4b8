// The console's own executable, started as the desktop starts it, in an application folder of its own.
#include "test_support.h"

#include "common/app_paths.h"
#include "shell/single_instance.h"

#include <QProcess>

#include <csignal>
#include <sys/stat.h>

class ConsoleRunTest : public QObject {
    Q_OBJECT
private slots:
    // Shutdown ends the console as its exit button does: the run's values saved, for the whole group.
    void shutdownSavesAsTheExitButton()
    {
        QTemporaryDir dir;
        const QString exe = dir.filePath(QStringLiteral("ORVAPLCCOM"));
        QVERIFY(QFile::copy(QStringLiteral(ORVAPLCCOM_EXE), exe));
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("Data")));
        AppPaths::setAppFolder(dir.path());
        QProcess console;
        console.start(exe, {});
        QVERIFY(console.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(InstanceLockPath()), 60000);  // up and showing its login
        QCOMPARE(::kill(pid_t(console.processId()), SIGTERM), 0);
        QVERIFY(console.waitForFinished(60000));
        QCOMPARE(console.exitStatus(), QProcess::NormalExit);
        QCOMPARE(console.exitCode(), 0);
        const QString saved = dir.filePath(QStringLiteral("Data/BLZConfig.dat"));
        QVERIFY(rawBytes(saved).startsWith("COMPort=2\r\nIsShowCsHelp=1\r\n"));
        struct stat st {};
        QCOMPARE(::stat(QFile::encodeName(saved).constData(), &st), 0);
        QCOMPARE(st.st_mode & 0777, mode_t(0664));
    }
};

QTEST_GUILESS_MAIN(ConsoleRunTest)
#include "console_run_test.moc"
