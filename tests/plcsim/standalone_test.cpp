// The standalone controller on its pseudo-terminal, opened the way the console opens a serial port.
#include "test_support.h"

#include <QFileInfo>
#include <QProcess>
#include <QSerialPort>

namespace {
QByteArray F(const char* body) { return Frame(QLatin1String(body)).toLatin1(); }
const QByteArray kReadStatus = F("0007C02");
constexpr int kStartMs = 20000;  // a sanitizer build starts slowly
}  // namespace

class StandaloneTest : public QObject {
    Q_OBJECT
private slots:
    void servesThePty_data()
    {
        QTest::addColumn<bool>("commissioned");
        QTest::newRow("ended by the quit command") << false;
        QTest::newRow("commissioned, ended by SIGTERM") << true;
    }
    void servesThePty()
    {
        QFETCH(bool, commissioned);
        QTemporaryDir dir;
        const QString link = dir.filePath(QStringLiteral("ttyPLC"));
        QProcess sim;
        sim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QStringList args{"--link", link, "--control-stdin", "--no-live", "--init-delay", "50"};
        if (commissioned)
            args << "--commissioned";
        sim.start(QStringLiteral(PLCSIM_EXE), args);
        QVERIFY(sim.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(sim.canReadLine(), kStartMs);
        const QString device = QString::fromLocal8Bit(sim.readLine()).trimmed();
        QCOMPARE(QFileInfo(link).symLinkTarget(), device);

        QSerialPort port(link);  // 9600 baud, 7 data bits, even parity, one stop bit
        port.setDataBits(QSerialPort::Data7);
        port.setParity(QSerialPort::EvenParity);
        QVERIFY2(port.open(QIODevice::ReadWrite), qPrintable(port.errorString()));

        QByteArray got;
        connect(&port, &QSerialPort::readyRead, this, [&] { got += port.readAll(); });
        auto ask = [&](const QByteArray& frame, int answerLength) {
            got.clear();
            port.write(frame);
            (void)QTest::qWaitFor([&] { return got.size() >= answerLength; }, kStartMs);
            return got;
        };
        auto command = [&](const QByteArray& line) {
            sim.write(line + '\n');
            (void)QTest::qWaitFor([&] { return sim.canReadLine(); }, kStartMs);
            return sim.readLine().trimmed();
        };

        // Scale 11's key zeroing: its default 0.5 kg in the two decimals of the console's scale table.
        QCOMPARE(ask(F("013A802"), 8), commissioned ? F("3200") : F("0000"));

        // Hardware initialisation: the pulse is taken, S999 follows from the controller's own timer.
        QCOMPARE(ask(F("1001A020800"), 1), QByteArray("\x06"));
        QCOMPARE(ask(kReadStatus, 8), F("0000"));
        QTRY_COMPARE_WITH_TIMEOUT(ask(kReadStatus, 8), F("8000"), kStartMs);
        // The control commands at work on the line are the console's pseudo-terminal test's.

        port.close();
        if (commissioned)
            sim.terminate();
        else
            QCOMPARE(command("quit"), QByteArray("ok"));
        QTRY_COMPARE_WITH_TIMEOUT(sim.state(), QProcess::NotRunning, kStartMs);
        QCOMPARE(sim.exitStatus(), QProcess::NormalExit);
        QCOMPARE(sim.exitCode(), 0);
        QVERIFY(!QFileInfo(link).isSymLink());
    }
};

QTEST_GUILESS_MAIN(StandaloneTest)
#include "standalone_test.moc"
