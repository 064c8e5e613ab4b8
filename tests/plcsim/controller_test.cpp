// The simulated controller against frames the harness makes without the console's codec: if it answered
// wrongly, every console test run against it would prove the wrong thing.
#include "test_support.h"

#include <QElapsedTimer>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

using plcsim::Controller;
using plcsim::Fault;
using plcsim::Outcome;

Q_DECLARE_METATYPE(plcsim::Fault)
Q_DECLARE_METATYPE(plcsim::Outcome)

namespace {
QByteArray F(const QByteArray& body) { return Frame(QString::fromLatin1(body)).toLatin1(); }
const QByteArray ACK(1, '\x06');
const QByteArray NAK(1, '\x15');
const QByteArray kReadStatus = F("0007C02");  // S998/S999
const QByteArray kStatusClear = F("0000");
const QByteArray kWriteD291 = F("1124602D204");  // 1234
}  // namespace

class ControllerTest : public QObject {
    Q_OBJECT
private slots:
    void init() { got_.clear(); }

    void exchange_data()
    {
        QTest::addColumn<int>("address");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QByteArray>("after");
        QByteArray block;
        for (int i = 0; i < 64; ++i) block += char(i);
        const QByteArray none;
        QTest::newRow("read the live block") << 0x1016 << block << F("0101640") << F(block.toHex().toUpper()) << none;
        QTest::newRow("write one word, low byte first")
            << 0x1246 << none << kWriteD291 << ACK << QByteArray("\xD2\x04");
        QTest::newRow("a pulse writes both whole bytes")
            << 0x1A << QByteArray("\xFF\xFF") << F("1001A020800") << ACK << QByteArray("\x08\x00", 2);
        QTest::newRow("wrong checksum") << 0x1246 << none << QByteArray("\x02" "1124602D204\x03" "00") << NAK
                                        << QByteArray("\x00\x00", 2);
        QTest::newRow("read past the end") << 0 << none << F("013FF02") << NAK << none;
        // Y62 follows the jog bits and leaves the other outputs alone.
        QTest::newRow("fan held") << 0xA6 << QByteArray(1, 0) << F("1001A020200") << ACK << QByteArray("\x40");
        QTest::newRow("dust valve held") << 0xA6 << QByteArray(1, 0) << F("1001A020400") << ACK << QByteArray("\x80");
        QTest::newRow("jog released") << 0xA6 << QByteArray("\xC4") << F("1001A020000") << ACK << QByteArray("\x04");
        // Force on and off name a bit by its number, low byte first: Y0 is bit 0500, M8 bit 0808, S7 bit 0007.
        QTest::newRow("force on Y0") << 0xA0 << QByteArray(1, 0) << F("70005") << ACK << QByteArray("\x01");
        QTest::newRow("force off M8") << 0x101 << QByteArray("\xFF") << F("80808") << ACK << QByteArray("\xFE");
        QTest::newRow("force on S7, other bits kept") << 0 << QByteArray("\x10") << F("70700") << ACK << QByteArray("\x90");
        QTest::newRow("force beyond the bit memory") << 0 << none << F("70010") << NAK << none;
        QTest::newRow("force with a wrong sum") << 0xA0 << QByteArray(1, 0) << QByteArray("\x02" "70005\x03" "00") << NAK
                                                << QByteArray(1, 0);
        QTest::newRow("enquiry") << 0 << none << QByteArray("\x05") << ACK << none;
        QTest::newRow("unknown command") << 0 << none << F("20000") << NAK << none;
        QTest::newRow("read of nine characters") << 0 << none << F("00000") << NAK << none;
    }
    void exchange()
    {
        QFETCH(int, address);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, reply);
        QFETCH(QByteArray, after);
        Controller c;
        for (int i = 0; i < before.size(); ++i) c.setByteAt(address + i, quint8(before.at(i)));
        QCOMPARE(c.handleFrame(request), reply);
        for (int i = 0; i < after.size(); ++i) QCOMPARE(c.byteAt(address + i), quint8(after.at(i)));
    }

    // What every controller holds, read as a client of the protocol reads it.
    void runBitsAndIdentification_data()
    {
        QTest::addColumn<bool>("running");
        QTest::addColumn<QByteArray>("m8000");  // the byte of M8000..M8007
        QTest::newRow("running: M8000 and M8003 on") << true << F("09");
        QTest::newRow("stopped: M8001 on") << false << F("02");
    }
    void runBitsAndIdentification()
    {
        QFETCH(bool, running);
        QFETCH(QByteArray, m8000);
        Controller c;
        c.setRunning(running);
        QCOMPARE(c.handleFrame(F("001E001")), m8000);
        // D8000 watchdog 200 ms, D8001 identification 100, D8002 8 k steps.
        QCOMPARE(c.handleFrame(F("00E0006")), F("C80064000800"));
        // A run bit forced off is the controller's again at once.
        QCOMPARE(c.handleFrame(F(running ? "8000F" : "8010F")), ACK);
        QCOMPARE(c.handleFrame(F("001E001")), m8000);
        // A stopped controller takes the zero pulse of scale 0 into memory but does not calibrate.
        c.setNoise(false);
        c.setLoad(0, 2600);
        QCOMPARE(c.handleFrame(F("7B500")), ACK);  // S181
        QVERIFY(c.sBit(181));
        QCOMPARE(c.sBit(999), running);
        QCOMPARE(c.word(27), short(running ? 0 : 600));
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

    void faults_data()
    {
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<int>("count");
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("prefix");  // exact start of each spoilt answer
        QTest::addColumn<int>("junk");           // printable characters after it
        QTest::addColumn<bool>("executed");
        QTest::newRow("no reply, three times") << Fault::NoReply << 3 << kWriteD291 << QByteArray() << 0 << true;
        QTest::newRow("nak to a write, not done") << Fault::Nak << 2 << kWriteD291 << NAK << 0 << false;
        QTest::newRow("garbage for a read") << Fault::Garbage << 1 << kReadStatus << QByteArray() << 8 << true;
        QTest::newRow("short read") << Fault::Short << 1 << kReadStatus << kStatusClear.chopped(2) << 0 << true;
        QTest::newRow("long write") << Fault::Long << 1 << kWriteD291 << ACK << 2 << true;
        QTest::newRow("late write") << Fault::Late << 1 << kWriteD291 << ACK << 0 << true;
        QTest::newRow("unplugged hears nothing") << Fault::Unplugged << 10 << kWriteD291 << QByteArray() << 0 << false;
    }
    void faults()
    {
        QFETCH(Fault, fault);
        QFETCH(int, count);
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, prefix);
        QFETCH(int, junk);
        QFETCH(bool, executed);
        Controller c;
        connect(&c, &Controller::reply, this, [this](const QByteArray& b) { got_ += b; });
        c.setLateMs(60);
        c.injectFault(fault, count);
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < count; ++i) c.feed(request);
        const int each = int(prefix.size()) + junk;
        QTRY_COMPARE(got_.size(), qsizetype(count * each));
        QVERIFY(fault != Fault::Late || clock.elapsed() >= 60);
        for (int i = 0; i < got_.size(); i += each) {
            QCOMPARE(got_.mid(i, prefix.size()), prefix);
            for (int j = i + int(prefix.size()); j < i + each; ++j) QVERIFY(got_.at(j) >= '!' && got_.at(j) <= '~');
        }
        // The fault is used up: the next request is answered truly.
        if (fault == Fault::Unplugged) c.plugIn();
        c.feed(kReadStatus);
        QTRY_COMPARE(got_.mid(count * each), kStatusClear);
        if (request == kWriteD291) QCOMPARE(c.word(291), short(executed ? 1234 : 0));
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

    // The status answers are the calibration form's to check; here, what a calibration does to the weight.
    void calibration_data()
    {
        QTest::addColumn<Outcome>("outcome");
        QTest::addColumn<QByteArrayList>("writes");
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<int>("weight");  // at load 2600, then 2700
        QTest::addColumn<int>("laterWeight");
        const QByteArrayList zero{F("10016022000"), F("10016020000")};
        QTest::newRow("zero") << Outcome::Success << zero << F("8000") << 0 << 100;
        QTest::newRow("span, test weight 1000")
            << Outcome::Success << QByteArrayList{F("1105602E803"), F("10016024000"), F("10016020000")} << F("8000")
            << 1000 << 1167;
        QTest::newRow("zero refused") << Outcome::Refuse << zero << F("4000") << 600 << 700;
    }
    void calibration()
    {
        QFETCH(Outcome, outcome);
        QFETCH(QByteArrayList, writes);
        QFETCH(QByteArray, status);
        QFETCH(int, weight);
        QFETCH(int, laterWeight);
        Controller c;
        c.setNoise(false);
        c.setLoad(0, 2600);
        c.setCalOutcome(outcome);
        c.setByteAt(0x7C, 0xC0);  // both status bits left over from before
        for (const QByteArray& w : writes) QCOMPARE(c.handleFrame(w), ACK);
        QCOMPARE(c.handleFrame(kReadStatus), status);
        QCOMPARE(c.word(27), short(weight));
        c.setLoad(0, 2700);
        QCOMPARE(c.word(27), short(laterWeight));
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

private:
    QByteArray got_;
};

QTEST_GUILESS_MAIN(ControllerTest)
#include "controller_test.moc"
