// The console's real serial port, through a pseudo-terminal, to the standalone controller: what the
// operator at a plant sees when the line is good, when a reply is lost or spoilt, and when it is cut.
#include "test_support.h"

#include "common/module1.h"
#include "common/text_file.h"
#include "link/form_access.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "shell/app_setup.h"
#include "shell/plc_form.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

namespace {
constexpr int kSlowMs = 30000;  // a sanitizer build starts slowly

// A live read (step 51) as the calibration form polls it.
void readLiveBlock()
{
    StepNo = 51;
    SendFlag = true;
    send_recieve(BuildReadFrameWords(QStringLiteral("D11"), 32));
}
}  // namespace

class PtyLinkTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void loginAndReadAnswered();
    void spoiltReplies_data();
    void spoiltReplies();
    void cutLineEndsInTheFaultDialog();

private:
    QByteArray command(const QByteArray& line);
    QList<QPair<qint64, QByteArray>> sent;  // ms since the request, frame
    QElapsedTimer clock;
    QProcess sim;
    ConsoleHarness* h = nullptr;
};

QByteArray PtyLinkTest::command(const QByteArray& line)
{
    sim.write(line + '\n');
    (void)QTest::qWaitFor([&] { return sim.canReadLine(); }, kSlowMs);
    return sim.readLine().trimmed();
}

void PtyLinkTest::initTestCase()
{
    RegisterForms();
    h = new ConsoleHarness;
    SetPortFactory({});  // the real serial port, by the mapping of the application folder
    sim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    sim.start(QStringLiteral(PLCSIM_EXE), {QStringLiteral("--control-stdin"), QStringLiteral("--no-live")});
    QVERIFY(sim.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(sim.canReadLine(), kSlowMs);
    const QString device = QString::fromLocal8Bit(sim.readLine()).trimmed();
    QVERIFY(device.startsWith(QLatin1String("/dev/pts/")));
    QDir().mkpath(h->path(QStringLiteral("Data")));
    QVERIFY(TextFile::writeLines(h->path(QStringLiteral("Data/ComPorts.ini")),
                                 {QStringLiteral("[ComPorts]"), QStringLiteral("Com2=") + device}));

    MbAnswerer mb;
    auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
    QVERIFY(plc->load());
    plc->show();
    QCOMPARE(plc->ComboPlc->currentText(), QStringLiteral("Com2"));
    plc->txtPassword->setText(QStringLiteral("48213"));
    plc->cmdOk();
    QVERIFY2(mb.texts.isEmpty(), qPrintable(mb.texts.join(QLatin1Char('|'))));
    QVERIFY(Link().portOpen());
    QCOMPARE(Link().port()->deviceName(), device);
    connect(Link().port(), &CommPort::written, this,
            [this](const QByteArray& f) { sent.append({clock.elapsed(), f}); });
}

void PtyLinkTest::cleanupTestCase()
{
    delete h;
    if (sim.state() != QProcess::NotRunning) {
        sim.write("quit\n");
        if (!sim.waitForFinished(kSlowMs))
            sim.kill();
    }
}

void PtyLinkTest::loginAndReadAnswered()
{
    QCOMPARE(command("set D11 1234"), QByteArray("ok"));
    QCOMPARE(command("set D42 -5"), QByteArray("ok"));
    sent.clear();
    clock.start();
    readLiveBlock();
    QTRY_VERIFY_WITH_TIMEOUT(LiveReadDone, kSlowMs);
    QCOMPARE(Link().TxtR[0], QStringLiteral("1234"));
    QCOMPARE(Link().TxtR[31], QStringLiteral("-5"));
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent[0].second, QByteArray("\x02" "0101640\x03" "5F"));
    QVERIFY(!Link().Timer2.isActive());
    QCOMPARE(int(Link().RetryCount), 0);
}

void PtyLinkTest::spoiltReplies_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<bool>("byTheClock");  // re-sent by Timer2 rather than at once
    QTest::newRow("dropped reply") << QByteArray("fault noreply 1") << true;
    QTest::newRow("garbled reply") << QByteArray("fault garbage 1") << false;
    QTest::newRow("NAK, shorter than the threshold of a read") << QByteArray("fault nak 1") << true;
}

void PtyLinkTest::spoiltReplies()
{
    QFETCH(QByteArray, fault);
    QFETCH(bool, byTheClock);
    LiveReadDone = false;
    QCOMPARE(command(fault), QByteArray("ok"));
    sent.clear();
    clock.start();
    readLiveBlock();
    QTRY_VERIFY_WITH_TIMEOUT(LiveReadDone, kSlowMs);
    QCOMPARE(sent.size(), 2);
    QCOMPARE(sent[1].second, sent[0].second);
    // The reply time-out is one second; a spoilt reply is answered before it runs out.
    const qint64 gap = sent[1].first - sent[0].first;
    if (byTheClock)
        QVERIFY2(gap >= 900, qPrintable(QString::number(gap)));
    else
        QVERIFY2(gap < 900, qPrintable(QString::number(gap)));
    QCOMPARE(Link().TxtR[0], QStringLiteral("1234"));
    QCOMPARE(int(Link().RetryCount), 0);
}

void PtyLinkTest::cutLineEndsInTheFaultDialog()
{
    MbAnswerer mb;
    QCOMPARE(command("unplug"), QByteArray("ok"));
    sent.clear();
    clock.start();
    readLiveBlock();
    QTRY_COMPARE_WITH_TIMEOUT(mb.texts.size(), 1, kSlowMs);
    QCOMPARE(sent.size(), 9);  // the request and eight re-sends
    for (const auto& s : sent)
        QCOMPARE(s.second, sent[0].second);
    QVERIFY2(sent.last().first >= 7 * 900, qPrintable(QString::number(sent.last().first)));
    QVERIFY(mb.texts[0].contains(QStringLiteral("端口:Com2,")));
    QCOMPARE(mb.errorIcons, QList<bool>{true});
    QCOMPARE(int(StepNo), 444);
    QVERIFY(!Link().Timer1.isActive() && !Link().Timer2.isActive() && !Link().Timer3.isActive());

    // The operator goes on: the line comes back and the next request is answered.
    QCOMPARE(command("plug"), QByteArray("ok"));
    LiveReadDone = false;
    readLiveBlock();
    QTRY_VERIFY_WITH_TIMEOUT(LiveReadDone, kSlowMs);
}

QTEST_MAIN(PtyLinkTest)
#include "pty_link_test.moc"
