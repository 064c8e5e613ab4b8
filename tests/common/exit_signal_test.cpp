// Shutdown and logout end the console as its exit button does: the calibration values of the run are
// saved and the port is closed.
#include "test_support.h"

#include "common/form_access.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "link/link_engine.h"
#include "shell/app_setup.h"
#include "shell/plc_form.h"

#include <QDir>
#include <QTest>

#include <csignal>
#include <cstring>

class ExitSignalTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        RegisterForms();
        ExitOnTerminationSignals();
    }

    void signalEndsAsTheExitButton_data()
    {
        QTest::addColumn<int>("sig");  // at shutdown, at logout, Ctrl+C
        for (int sig : {SIGTERM, SIGHUP, SIGINT}) QTest::newRow(sigabbrev_np(sig)) << sig;
    }
    void signalEndsAsTheExitButton()
    {
        QFETCH(int, sig);
        ConsoleHarness h;
        QVERIFY(QDir(h.dir.path()).mkpath(QStringLiteral("Data")));
        auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
        QVERIFY(plc->load());
        plc->show();
        h.connectLink();  // as after a good login
        QVERIFY(Link().portOpen());
        // A calibration taken in this run.
        BiaoZeroTime[0] = QStringLiteral("2026/3/5 14:03:22");
        BiaoZeroADValue[0] = QStringLiteral("3000");
        Link().Timer1.start();

        QCOMPARE(::raise(sig), 0);
        QTRY_VERIFY(h.programEnded);
        QVERIFY(!Link().portOpen() && !Link().Timer1.isActive());
        const QByteArray saved = rawBytes(h.path(QStringLiteral("Data/BLZConfig.dat")));
        QVERIFY(saved.startsWith("COMPort=2\r\n"));
        QVERIFY(saved.contains(TextFile::encode(QString::fromUtf8("骨料1BiaoZeroTime=2026/3/5 14:03:22\r\n"
                                                                  "骨料1BiaoZeroADValue=3000\r\n"))));
    }
};

QTEST_MAIN(ExitSignalTest)
#include "exit_signal_test.moc"
