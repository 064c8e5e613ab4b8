// The console's real serial port, through a pseudo-terminal, to the standalone controller: what the
// operator at a plant sees when the line is good, when a reply is lost, spoilt or late, when the cable
// is cut, when the adapter is pulled and plugged in again, and when the console is started again.
#include "test_support.h"

#include "common/text_file.h"
#include "link/frame_codec.h"
#include "shell/plc_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>
#include <QSerialPort>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {
constexpr int kSlowMs = 30000;  // a sanitizer build starts slowly

// A live read (step 51) as the calibration form polls it.
void readLiveBlock()
{
    LiveReadDone = false;
    StepNo = 51;
    SendFlag = true;
    send_recieve(BuildReadFrameWords(QStringLiteral("D11"), 32));
}

// As a program that had the line open raw at 9600 8N1 and ended without setting it back leaves it.
void leaveLineAsARawPortDoes(const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    QVERIFY(fd >= 0);
    termios t{};
    QCOMPARE(::tcgetattr(fd, &t), 0);
    ::cfmakeraw(&t);
    t.c_cflag |= CLOCAL | CREAD;
    t.c_cflag &= ~(CSTOPB | CRTSCTS);
    t.c_iflag &= ~(PARMRK | INPCK | IXON | IXOFF | IXANY);
    t.c_iflag |= IGNPAR;
    t.c_cc[VMIN] = 0;
    t.c_cc[VTIME] = 0;
    ::cfsetspeed(&t, B9600);
    QCOMPARE(::tcsetattr(fd, TCSANOW, &t), 0);
    ::close(fd);
}

// A reply lost, spoilt or late is asked for once again, and the read still ends.
const struct { const char* name; const char* fault; } kSpoilt[] = {
    {"answered the first time", ""},
    {"dropped reply", "fault noreply 1"},
    {"garbled reply", "fault garbage 1"},
    {"NAK, shorter than the threshold of a read", "fault nak 1"},
    {"late reply", "fault late 1"},
};

// The error log keeps the port's own number and words.
const struct { const char* name; int combo; bool heldElsewhere; const char* text; const char* logged; }
    kOpenErrors[] = {
    {"no such device", 2, false, "Com3端口无效!请重新设置端口！", "ErrNumber:1----No such file or directory"},
    {"held by another program", 1, true, "Com2端口已被其它程序占用!请重新设置端口！", "ErrNumber:2----"},
};

}  // namespace

class PtyLinkTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        RegisterForms();
        h = new ConsoleHarness;
        SetPortFactory({});  // the real serial port, by the mapping of the application folder
        linkPath = h->path(QStringLiteral("ttyPLC"));
        sim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        sim.start(QStringLiteral(PLCSIM_EXE),
                  {QStringLiteral("--control-stdin"), QStringLiteral("--no-live"), QStringLiteral("--link"), linkPath});
        QVERIFY(sim.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(sim.canReadLine(), kSlowMs);
        const QString device = QString::fromLocal8Bit(sim.readLine()).trimmed();
        QVERIFY(device.startsWith(QLatin1String("/dev/pts/")));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(linkPath).isSymLink(), kSlowMs);
        QDir().mkpath(h->path(QStringLiteral("Data")));
        QVERIFY(TextFile::writeLines(h->path(QStringLiteral("Data/ComPorts.ini")),
                                     {QStringLiteral("[ComPorts]"), QStringLiteral("Com2=") + linkPath,
                                      QStringLiteral("Com3=") + h->path(QStringLiteral("no-such-device"))}));

        MbAnswerer mb;
        auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
        QVERIFY(plc->load());
        plc->show();
        QCOMPARE(plc->ComboPlc->currentText(), QStringLiteral("Com2"));
        login(1);
        QVERIFY2(mb.texts.isEmpty(), qPrintable(mb.texts.join(QLatin1Char('|'))));
        QVERIFY(Link().portOpen());
        QCOMPARE(Link().port()->deviceName(), linkPath);
        watchPort();
    }
    void cleanupTestCase()
    {
        delete h;
        if (sim.state() != QProcess::NotRunning) {
            sim.write("quit\n");
            if (!sim.waitForFinished(kSlowMs))
                sim.kill();
        }
    }
    void spoiltReplies_data() { TableRows(kSpoilt); }
    void spoiltReplies()
    {
        const auto& c = TableRow(kSpoilt);
        const bool spoilt = *c.fault;
        const QList<QByteArray> setUp = spoilt ? QList<QByteArray>{"late 1500", c.fault}
                                               : QList<QByteArray>{"set D11 1234", "set D42 -5"};
        for (const QByteArray& c : setUp)
            QCOMPARE(command(c), QByteArray("ok"));
        sent.clear();
        const int arrivals = Link().port()->arrivals();
        readLiveBlock();
        QTRY_VERIFY_WITH_TIMEOUT(LiveReadDone, kSlowMs);
        QCOMPARE(sent.size(), spoilt ? 2 : 1);
        QCOMPARE(sent.first(), QByteArray("\x02" "0101640\x03" "5F"));
        QCOMPARE(sent.last(), sent.first());
        QCOMPARE(Link().TxtR[0], QStringLiteral("1234"));
        QCOMPARE(int(Link().RetryCount), 0);
        QVERIFY(!Link().Timer2.isActive());
        if (!spoilt) {
            QCOMPARE(Link().TxtR[31], QStringLiteral("-5"));
            // The 132 characters come one by one at the line's pace; the port is read when they can all be there.
            const int reads = Link().port()->arrivals() - arrivals;
            QVERIFY2(reads <= 4, qPrintable(QString::number(reads)));
        }
    }
    // The option word of the scale comes late, after its re-send has been answered and the chain has moved
    // on to the zero tracking word, a read of the same length.
    void lateWordIsNotTakenForTheNextRead()
    {
        // S612 on: tracking off.
        for (const char* c : {"set S496 1", "set S501 1", "set S505 1", "set S508 1", "set S608 1", "set S612 1",
                              "late 1500", "fault late 1"})
            QCOMPARE(command(c), QByteArray("ok"));
        UseScaleDevices(0);
        sent.clear();
        QElapsedTimer clock;
        clock.start();
        Forms::show(QStringLiteral("YIBiao"));
        QWidget* f = Forms::loaded(QStringLiteral("YIBiao"));
        QVERIFY(f);
        // Until the late word has come and gone.
        QTRY_VERIFY_WITH_TIMEOUT(clock.elapsed() > 2500 && SendFlag && !Link().Timer2.isActive(), kSlowMs);
        const QByteArray optionRead = Frame(QStringLiteral("0003E02")).toLatin1();
        const QByteArray trackingRead = Frame(QStringLiteral("0004C02")).toLatin1();
        QCOMPARE(sent, (QList<QByteArray>{optionRead, optionRead, trackingRead}));
        QVERIFY(Ctl<QCheckBox>(f, QStringLiteral("Check2(0)"))->isChecked());
        QVERIFY(!Ctl<QCheckBox>(f, QStringLiteral("Check2(1)"))->isChecked());

        // Tracking on: S612 cleared, S608 of the same word written back as it was read.
        sent.clear();
        Ctl<QCheckBox>(f, QStringLiteral("Check2(1)"))->click();
        QTRY_VERIFY_WITH_TIMEOUT(SendFlag && !Link().Timer2.isActive(), kSlowMs);
        QCOMPARE(sent.value(0), WriteFrame("004C", "0100").toLatin1());
        QCOMPARE(command("get S612"), QByteArray("ok 0"));
        QCOMPARE(command("get S608"), QByteArray("ok 1"));
        Forms::unload(QStringLiteral("YIBiao"));
        StepNo = 444;
    }
    void portOpenErrorsLogged_data() { TableRows(kOpenErrors); }
    void portOpenErrorsLogged()
    {
        const auto& c = TableRow(kOpenErrors);
        MbAnswerer mb;
        Link().closePort();
        QSerialPort other(linkPath);
        if (c.heldElsewhere)
            QVERIFY(other.open(QIODevice::ReadWrite));
        login(c.combo);
        QCOMPARE(mb.texts, QStringList{QString::fromUtf8(c.text)});
        QVERIFY(!Link().portOpen());
        QVERIFY2(ErrorLogText().contains(QLatin1String(c.logged)), qPrintable(ErrorLogText()));
        other.close();

        login(1);
        QCOMPARE(mb.texts.size(), 1);
        QVERIFY(Link().portOpen());
        watchPort();
    }
    // A console that ended without setting the line back leaves the pseudo-terminal as the port left it:
    // the next start opens it all the same, and the setting it cannot hold is logged once for the run.
    void secondStartOnTheSameLine()
    {
        MbAnswerer mb;
        for (int start = 1; start <= 2; ++start) {
            Link().closePort();
            leaveLineAsARawPortDoes(linkPath);
            login(1);
            QVERIFY2(mb.texts.isEmpty(), qPrintable(mb.texts.join(QLatin1Char('|'))));
            QVERIFY(Link().portOpen());
            watchPort();
            readLiveBlock();
            QTRY_VERIFY_WITH_TIMEOUT(LiveReadDone, kSlowMs);
        }
        QCOMPARE(ErrorLogText().count(QStringLiteral("9600,e,7,1")), 1);
    }
    // The far end gone (a USB adapter pulled): eight re-sends of the same frame, one report, then nothing more
    // is asked of the line; the adapter comes back and the next request is answered.
    void adapterPulledAndPluggedIn()
    {
        {
            MbAnswerer mb;
            QCOMPARE(command("hangup"), QByteArray("ok"));
            sent.clear();
            readLiveBlock();
            QTRY_VERIFY_WITH_TIMEOUT(!mb.texts.isEmpty(), kSlowMs);
            QCOMPARE(mb.texts.size(), 1);
            QCOMPARE(sent, QList<QByteArray>(9, sent.value(0)));  // the request and eight re-sends
            QVERIFY(mb.texts[0].contains(QStringLiteral("端口:Com2,")));
            QCOMPARE(mb.errorIcons, QList<bool>{true});
            QCOMPARE(int(StepNo), 444);
            QVERIFY(!Link().Timer1.isActive() && !Link().Timer2.isActive() && !Link().Timer3.isActive());
        }
        const QString log = ErrorLogText();
        QCOMPARE(log.count(QStringLiteral("ErrSub:MSComm1_OnComm")), 1);
        QVERIFY2(log.contains(linkPath + QStringLiteral(": ")), qPrintable(log));
        MbAnswerer mb;
        QVERIFY(command("reopen").startsWith("ok /dev/pts/"));
        QCOMPARE(command("set D11 4321"), QByteArray("ok"));
        readLiveBlock();
        QTRY_VERIFY_WITH_TIMEOUT(LiveReadDone, kSlowMs);
        QCOMPARE(Link().TxtR[0], QStringLiteral("4321"));
        QVERIFY(mb.texts.isEmpty());
    }

private:
    QByteArray command(const QByteArray& line)
    {
        sim.write(line + '\n');
        (void)QTest::qWaitFor([&] { return sim.canReadLine(); }, kSlowMs);
        return sim.readLine().trimmed();
    }
    void watchPort()
    {
        if (watched == Link().port())
            return;
        watched = Link().port();
        connect(watched, &CommPort::written, this, [this](const QByteArray& f) { sent.append(f); });
    }
    void login(int comboIndex)
    {
        auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
        plc->ComboPlc->setCurrentIndex(comboIndex);
        plc->txtPassword->setText(QStringLiteral("48213"));
        plc->cmdOk();
    }
    QList<QByteArray> sent;
    QProcess sim;
    QString linkPath;
    QPointer<CommPort> watched;
    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(PtyLinkTest)
#include "pty_link_test.moc"
