// The simulated controller against frames made without the console's codec: if it answered wrongly, every
// console test run against it would prove the wrong thing.
#include "test_support.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSerialPort>
#include <QSet>
#include <QSignalSpy>

using plcsim::Controller;
using plcsim::Fault;
using plcsim::Outcome;

namespace {
QByteArray F(const char* body) { return Frame(QLatin1String(body)).toLatin1(); }
const QByteArray ACK(1, '\x06'), NAK(1, '\x15');
const QByteArray kReadStatus = F("0007C02");  // S998/S999
const QByteArray kStatusClear = F("0000");
const QByteArray kWriteD291 = F("1124602D204");  // 1234
constexpr int kStartMs = 20000;  // a sanitizer build starts slowly

const QByteArray kLiveBlock = QByteArray::fromHex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"
                                                  "202122232425262728292a2b2c2d2e2f303132333435363738393a3b3c3d3e3f");
// The bytes at an address before the request, and what they are after it; the controller running or stopped.
const struct Exchange { const char* name; int address; QByteArray before, request, reply, after; bool running = true; }
kExchanges[] = {
    // Running: M8000 and M8003 on; stopped: M8001 on. A run bit forced off is the controller's again at once.
    {"run bits, running", 0, {}, F("001E001"), F("09"), {}},
    {"run bits, stopped", 0, {}, F("001E001"), F("02"), {}, false},
    {"M8000 forced off", 0x1E0, {}, F("8000F"), ACK, "\x09"},
    {"M8001 forced off, stopped", 0x1E0, {}, F("8010F"), ACK, "\x02", false},
    // D8000 watchdog 200 ms, D8001 identification 100, D8002 8 k steps.
    {"identification", 0, {}, F("00E0006"), F("C80064000800"), {}},
    {"identification, stopped", 0, {}, F("00E0006"), F("C80064000800"), {}, false},
    // A stopped controller takes the zero pulse of scale 0 into memory (S181) but does not calibrate.
    {"zero pulse, stopped", 0x16, {}, F("7B500"), ACK, "\x20", false},
    {"read the live block", 0x1016, kLiveBlock, F("0101640"), F(kLiveBlock.toHex().toUpper()), {}},
    {"write one word, low byte first", 0x1246, {}, kWriteD291, ACK, "\xD2\x04"},
    {"a pulse writes both whole bytes", 0x1A, "\xFF\xFF", F("1001A020800"), ACK, QByteArray("\x08\x00", 2)},
    {"wrong checksum", 0x1246, {}, "\x02" "1124602D204\x03" "00", NAK, QByteArray("\x00\x00", 2)},
    {"read past the end", 0, {}, F("013FF02"), NAK, {}},
    // Y62 follows the jog bits and leaves the other outputs alone.
    {"jog released", 0xA6, "\xC4", F("1001A020000"), ACK, "\x04"},
    // Force on and off name a bit by its number, low byte first: Y0 is bit 0500, M8 bit 0808, S7 bit 0007.
    {"force on Y0", 0xA0, QByteArray(1, 0), F("70005"), ACK, "\x01"},
    {"force off M8", 0x101, "\xFF", F("80808"), ACK, "\xFE"},
    {"force on S7, other bits kept", 0, "\x10", F("70700"), ACK, "\x90"},
    {"force beyond the bit memory", 0, {}, F("70010"), NAK, {}},
    {"force with a wrong sum", 0xA0, QByteArray(1, 0), "\x02" "70005\x03" "00", NAK, QByteArray(1, 0)},
    {"enquiry", 0, {}, "\x05", ACK, {}},
    {"unknown command", 0, {}, F("20000"), NAK, {}},
    {"read of nine characters", 0, {}, F("00000"), NAK, {}},
};

// A fault spoils that many answers to the request: each starts exactly with the prefix and goes on with
// printable junk; whether the request was carried out shows in D291 after a write.
const struct Spoilt { const char* name; Fault fault; int count; QByteArray request, prefix; int junk; bool executed; }
kSpoilt[] = {
    {"no reply, three times", Fault::NoReply, 3, kWriteD291, {}, 0, true},
    {"nak to a write, not done", Fault::Nak, 2, kWriteD291, NAK, 0, false},
    {"garbage for a read", Fault::Garbage, 1, kReadStatus, {}, 8, true},
    {"long write", Fault::Long, 1, kWriteD291, ACK, 2, true},
    {"late write", Fault::Late, 1, kWriteD291, ACK, 0, true},
    {"unplugged hears nothing", Fault::Unplugged, 10, kWriteD291, {}, 0, false},
};

// The weight of scale 0 at load 2600, then at 2700, after the writes of a calibration.
const QList<QByteArray> kZero{F("10016022000"), F("10016020000")};
const struct Calibration { const char* name; Outcome outcome; QList<QByteArray> writes; QByteArray status;
                           short weight, laterWeight; bool running = true; } kCalibrations[] = {
    {"zero", Outcome::Success, kZero, F("8000"), 0, 100},
    {"span, test weight 1000", Outcome::Success, {F("1105602E803"), F("10016024000"), F("10016020000")}, F("8000"),
     1000, 1167},
    {"zero refused", Outcome::Refuse, kZero, F("4000"), 600, 700},
    {"zero, controller stopped", Outcome::Success, {F("7B500")}, F("C000"), 600, 700, false},
};
}  // namespace

class ControllerTest : public QObject {
    Q_OBJECT
private slots:
    void init() { got_.clear(); }

    void exchange_data() { TableRows(kExchanges); }
    void exchange()
    {
        const Exchange& c = TableRow(kExchanges);
        Controller sim;
        sim.setRunning(c.running);
        for (int i = 0; i < c.before.size(); ++i) sim.setByteAt(c.address + i, quint8(c.before.at(i)));
        QCOMPARE(sim.handleFrame(c.request), c.reply);
        QByteArray after;
        for (int i = 0; i < c.after.size(); ++i) after += char(sim.byteAt(c.address + i));
        QCOMPARE(after, c.after);
    }

    // An enquiry between frames is answered at once; a frame after it as always.
    void enquiryOnTheLine()
    {
        Controller c;
        connect(&c, &Controller::reply, this, [this](const QByteArray& b) { got_ += b; });
        c.feed("\x05");
        c.feed("junk\x05" + kReadStatus.left(4));
        c.feed(kReadStatus.mid(4) + "\x05");
        QTRY_COMPARE(got_, ACK + ACK + kStatusClear + ACK);
    }

    void faults_data() { TableRows(kSpoilt); }
    void faults()
    {
        const Spoilt& s = TableRow(kSpoilt);
        Controller c;
        connect(&c, &Controller::reply, this, [this](const QByteArray& b) { got_ += b; });
        c.setLateMs(60);
        c.injectFault(s.fault, s.count);
        for (int i = 0; i < s.count; ++i) c.feed(s.request);
        const int each = int(s.prefix.size()) + s.junk;
        QTRY_COMPARE(got_.size(), qsizetype(s.count * each));
        for (int i = 0; i < got_.size(); i += each) {
            QCOMPARE(got_.mid(i, s.prefix.size()), s.prefix);
            for (int j = i + int(s.prefix.size()); j < i + each; ++j) QVERIFY(got_.at(j) >= '!' && got_.at(j) <= '~');
        }
        // The fault is used up: the next request is answered truly.
        if (s.fault == Fault::Unplugged)
            c.plugIn();
        c.feed(kReadStatus);
        QTRY_COMPARE(got_.mid(s.count * each), kStatusClear);
        if (s.request == kWriteD291)
            QCOMPARE(c.word(291), short(s.executed ? 1234 : 0));
    }

    void pacedAt9600Baud()
    {
        Controller c;
        const QByteArray request = F("0101640");
        const QByteArray whole = c.handleFrame(request);
        c.setPaced(true);
        QSignalSpy spy(&c, &Controller::reply);
        QElapsedTimer clock;
        clock.start();
        for (char ch : request) c.feed(QByteArray(1, ch));  // as the line delivers it
        QCOMPARE(spy.count(), 0);  // never from inside feed()
        // 132 characters of 10 bits at 9600 baud: the last one is complete after 137.5 ms.
        QTRY_COMPARE(spy.count(), 132);
        QVERIFY(clock.elapsed() >= 137);
        QByteArray got;
        for (const QList<QVariant>& args : spy) got += args.at(0).toByteArray();
        QCOMPARE(got, whole);
    }

    // What a calibration does to the status bits and the weight.
    void calibration_data() { TableRows(kCalibrations); }
    void calibration()
    {
        const Calibration& k = TableRow(kCalibrations);
        Controller c;
        c.setRunning(k.running);
        c.setNoise(false);
        c.setLoad(0, 2600);
        c.setCalOutcome(k.outcome);
        c.setByteAt(0x7C, 0xC0);  // both status bits left over from before
        for (const QByteArray& w : k.writes) QCOMPARE(c.handleFrame(w), ACK);
        QCOMPARE(c.handleFrame(kReadStatus), k.status);
        QCOMPARE(c.word(27), k.weight);
        c.setLoad(0, 2700);
        QCOMPARE(c.word(27), k.laterWeight);
    }

    void hoist()
    {
        Controller c;
        c.setWord(291, 777);
        c.setHoistTrip(5, 100);
        QCOMPARE(c.handleFrame(F("1001A022000")), ACK);
        QCOMPARE(c.handleFrame(F("1001A020000")), ACK);
        QCOMPARE(c.word(291), short(0));  // the trip starts at the receive position
        QCOMPARE(c.word(294), short(300));
        QTRY_COMPARE(c.word(293), short(500));
        QCOMPARE(c.word(291), short(500));
        QCOMPARE(c.word(292), short(200));
        QVERIFY(!c.hoistRunning());
    }

    // D14 and D30: AD value and weight of scale 3 drift a little around the load, the weight with them.
    void liveValues()
    {
        Controller c;
        c.setLoad(3, 5000);
        c.setLiveModel(true);
        QSet<short> seen;
        bool off = false;
        auto sample = [&] {
            const short ad = c.word(14), weight = c.word(30);
            off = off || ad < 4998 || ad > 5002 || weight != ad - 2000;  // factor 1 from zero 2000
            seen.insert(ad);
            return off || seen.size() >= 3;
        };
        QTRY_VERIFY_WITH_TIMEOUT(sample(), 10000);
        QVERIFY(!off);
    }

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

        // Scale 11's key zeroing: its default 0.5 kg in the two decimals of the console's scale table.
        QCOMPARE(ask(F("013A802"), 8), commissioned ? F("3200") : F("0000"));

        // Hardware initialisation: the pulse is taken, S999 follows from the controller's own timer.
        QCOMPARE(ask(F("1001A020800"), 1), QByteArray("\x06"));
        QCOMPARE(ask(kReadStatus, 8), F("0000"));
        QTRY_COMPARE_WITH_TIMEOUT(ask(kReadStatus, 8), F("8000"), kStartMs);

        port.close();
        if (commissioned) {
            sim.terminate();
        } else {
            sim.write("quit\n");
            QTRY_VERIFY_WITH_TIMEOUT(sim.canReadLine(), kStartMs);
            QCOMPARE(sim.readLine().trimmed(), QByteArray("ok"));
        }
        QTRY_COMPARE_WITH_TIMEOUT(sim.state(), QProcess::NotRunning, kStartMs);
        QCOMPARE(sim.exitStatus(), QProcess::NormalExit);
        QCOMPARE(sim.exitCode(), 0);
        QVERIFY(!QFileInfo(link).isSymLink());
    }
private:
    QByteArray got_;
};

QTEST_GUILESS_MAIN(ControllerTest)
#include "controller_test.moc"
