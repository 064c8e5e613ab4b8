// The simulated controller against frames written out by hand: if it answered wrongly, every console
// test run against it would prove the wrong thing.
#include "plcsim/controller.h"

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
// STX body ETX sum, the sum given as written on the wire.
QByteArray F(const QByteArray& body, const char* sum) { return '\x02' + body + '\x03' + sum; }
const QByteArray ACK(1, '\x06');
const QByteArray NAK(1, '\x15');
const QByteArray kReadStatus = F("0007C02", "6F");  // S998/S999
const QByteArray kStatusClear = F("0000", "C3");
const QByteArray kWriteD291 = F("1124602D204", "3D");  // 1234
}  // namespace

class ControllerTest : public QObject {
    Q_OBJECT
private slots:
    void exchange_data();
    void exchange();
    void faults_data();
    void faults();
    void pacedAt9600Baud();
    void calibration_data();
    void calibration();
    void hardwareInit_data();
    void hardwareInit();
    void hoist();
    void liveValues();

    void init() { got_.clear(); }

private:
    QByteArray got_;
    void listen(Controller& c) { connect(&c, &Controller::reply, this, [this](const QByteArray& b) { got_ += b; }); }
};

void ControllerTest::exchange_data()
{
    QTest::addColumn<int>("address");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("after");
    QByteArray block;
    for (int i = 0; i < 64; ++i) block += char(i);
    const QByteArray none;
    QTest::newRow("read the live block")
        << 0x1016 << block << F("0101640", "5F") << F(block.toHex().toUpper(), "EB") << none;
    QTest::newRow("write one word, low byte first") << 0x1246 << none << kWriteD291 << ACK << QByteArray("\xD2\x04");
    QTest::newRow("a pulse writes both whole bytes")
        << 0x1A << QByteArray("\xFF\xFF") << F("1001A020800", "30") << ACK << QByteArray("\x08\x00", 2);
    QTest::newRow("wrong checksum") << 0x1246 << none << F("1124602D204", "3E") << NAK << QByteArray("\x00\x00", 2);
    QTest::newRow("read past the end") << 0 << none << F("013FF02", "85") << NAK << none;
    // Y62 follows the jog bits and leaves the other outputs alone.
    QTest::newRow("fan held") << 0xA6 << QByteArray(1, 0) << F("1001A020200", "2A") << ACK << QByteArray("\x40");
    QTest::newRow("dust valve held") << 0xA6 << QByteArray(1, 0) << F("1001A020400", "2C") << ACK << QByteArray("\x80");
    QTest::newRow("jog released") << 0xA6 << QByteArray("\xC4") << F("1001A020000", "28") << ACK << QByteArray("\x04");
}

void ControllerTest::exchange()
{
    QFETCH(int, address);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, reply);
    QFETCH(QByteArray, after);
    Controller c;
    for (int i = 0; i < before.size(); ++i) c.setByteAt(address + i, quint8(before.at(i)));
    QCOMPARE(c.handleFrame(request), reply);
    QCOMPARE(c.requests(), QByteArrayList{request});
    for (int i = 0; i < after.size(); ++i) QCOMPARE(c.byteAt(address + i), quint8(after.at(i)));
}

void ControllerTest::faults_data()
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

void ControllerTest::faults()
{
    QFETCH(Fault, fault);
    QFETCH(int, count);
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, prefix);
    QFETCH(int, junk);
    QFETCH(bool, executed);
    Controller c;
    listen(c);
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
    QCOMPARE(c.requests().size(), count + 1);  // the console's frames are on the wire all the same
    if (request == kWriteD291) QCOMPARE(c.word(291), short(executed ? 1234 : 0));
}

void ControllerTest::pacedAt9600Baud()
{
    Controller c;
    const QByteArray request = F("0101640", "5F");
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

void ControllerTest::calibration_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QByteArrayList>("writes");
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<int>("weight");  // at load 2600, then 2700
    QTest::addColumn<int>("laterWeight");
    const QByteArray clear22 = F("10016020000", "1D"), clear25 = F("10019020000", "20");
    const QByteArray success = F("8000", "CB");
    QTest::newRow("zero of scale 0") << 0 << Outcome::Success << QByteArrayList{F("10016022000", "1F"), clear22}
                                     << success << 0 << 100;
    QTest::newRow("span of scale 0, test weight 1000")
        << 0 << Outcome::Success << QByteArrayList{F("1105602E803", "42"), F("10016024000", "21"), clear22}
        << success << 1000 << 1167;
    QTest::newRow("span of scale 10 refused") << 10 << Outcome::Refuse
                                              << QByteArrayList{F("1001A020100", "29"), F("1001A020000", "28")}
                                              << F("4000", "C7") << 600 << 700;
    QTest::newRow("zero of scale 6 without an answer") << 6 << Outcome::NoAnswer
                                                       << QByteArrayList{F("10019022000", "22"), clear25}
                                                       << kStatusClear << 600 << 700;
}

void ControllerTest::calibration()
{
    QFETCH(int, scale);
    QFETCH(Outcome, outcome);
    QFETCH(QByteArrayList, writes);
    QFETCH(QByteArray, status);
    QFETCH(int, weight);
    QFETCH(int, laterWeight);
    Controller c;
    c.setNoise(false);
    c.setLoad(scale, 2600);
    c.setCalOutcome(outcome);
    c.setByteAt(0x7C, 0xC0);  // both status bits left over from before
    for (const QByteArray& w : writes) QCOMPARE(c.handleFrame(w), ACK);
    QCOMPARE(c.handleFrame(kReadStatus), status);
    QCOMPARE(c.word(27 + scale), short(weight));
    c.setLoad(scale, 2700);
    QCOMPARE(c.word(27 + scale), short(laterWeight));
}

void ControllerTest::hardwareInit_data()
{
    QTest::addColumn<bool>("never");
    QTest::addColumn<QByteArray>("finalStatus");
    QTest::addColumn<QByteArray>("finalRequestBits");
    QTest::newRow("completes after the delay") << false << F("8000", "CB") << kStatusClear;
    QTest::newRow("never completes") << true << kStatusClear << F("0800", "CB");
}

void ControllerTest::hardwareInit()
{
    QFETCH(bool, never);
    QFETCH(QByteArray, finalStatus);
    QFETCH(QByteArray, finalRequestBits);
    Controller c;
    c.setInitDelayMs(40);
    c.setInitNever(never);
    c.setSBit(999, true);  // a calibration's success from before
    QCOMPARE(c.handleFrame(F("1001A020800", "30")), ACK);
    QCOMPARE(c.handleFrame(kReadStatus), kStatusClear);
    if (never) QVERIFY(!QTest::qWaitFor([&] { return c.sBit(999); }, 200));
    QTRY_COMPARE(c.handleFrame(kReadStatus), finalStatus);
    QCOMPARE(c.handleFrame(F("0001A02", "67")), finalRequestBits);  // S208
}

void ControllerTest::hoist()
{
    Controller c;
    c.setWord(291, 777);
    c.setHoistTrip(5, 100);
    QCOMPARE(c.handleFrame(F("1001A022000", "2A")), ACK);
    QCOMPARE(c.handleFrame(F("1001A020000", "28")), ACK);
    QCOMPARE(c.word(291), short(0));  // the trip starts at the receive position
    QCOMPARE(c.word(294), short(300));
    QTRY_COMPARE(c.word(293), short(500));
    QCOMPARE(c.word(291), short(500));
    QCOMPARE(c.word(292), short(200));
    QVERIFY(!c.hoistRunning());
}

// D14 and D30: AD value and weight of scale 3, read as the console reads them.
void ControllerTest::liveValues()
{
    Controller c;
    c.setLoad(3, 5000);
    c.setLiveModel(true);
    QSet<short> seen;
    bool off = false;
    auto read = [&](const QByteArray& frame) {
        const QByteArray r = c.handleFrame(frame);
        return short(r.mid(3, 2).toInt(nullptr, 16) << 8 | r.mid(1, 2).toInt(nullptr, 16));
    };
    auto sample = [&] {
        const short ad = read(F("0101C02", "6A"));
        const short weight = read(F("0103C02", "6C"));
        off = off || ad < 4998 || ad > 5002 || weight != ad - 2000;  // factor 1 from zero 2000
        seen.insert(ad);
        return off || seen.size() >= 3;
    };
    QTRY_VERIFY_WITH_TIMEOUT(sample(), 10000);
    QVERIFY(!off);
}

QTEST_GUILESS_MAIN(ControllerTest)
#include "controller_test.moc"
