// The simulated controller against frames written out by hand: if it answered wrongly, every console
// test run against it would prove the wrong thing.
#include "plcsim/controller.h"
#include "plcsim/sim_port.h"

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
QByteArray F(const QByteArray& body, const char* sum)
{
    return '\x02' + body + '\x03' + sum;
}
const QByteArray ACK(1, '\x06');
const QByteArray NAK(1, '\x15');

const QByteArray kReadStatus = F("0007C02", "6F");  // S998/S999
const QByteArray kReadY62 = F("000A602", "6C");
const QByteArray kReadS208 = F("0001A02", "67");
const QByteArray kWriteD291 = F("1124602D204", "3D");  // 1234

bool isJunk(char c)
{
    return c >= '!' && c <= '~';
}

}  // namespace

class ControllerTest : public QObject {
    Q_OBJECT
private slots:
    void exchange_data();
    void exchange();
    void faults_data();
    void faults();
    void unpluggedHearsNothing();
    void stream_data();
    void stream();
    void pacing_data();
    void pacing();
    void calibration_data();
    void calibration();
    void hardwareInit_data();
    void hardwareInit();
    void jog_data();
    void jog();
    void hoist_data();
    void hoist();
    void liveValuesDrift();
    void simPort_data();
    void simPort();
};

void ControllerTest::exchange_data()
{
    QTest::addColumn<int>("preloadAt");
    QTest::addColumn<QByteArray>("preload");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("checkAt");
    QTest::addColumn<QByteArray>("memory");

    QByteArray block;
    QByteArray blockHex;
    for (int i = 0; i < 64; ++i) {
        block += char(i);
        blockHex += QByteArray::number(i, 16).rightJustified(2, '0').toUpper();
    }

    QTest::newRow("read one D word") << 0x1016 << QByteArray("\xD2\x04") << F("0101602", "5D") << F("D204", "DD")
                                     << -1 << QByteArray();
    QTest::newRow("read the live block") << 0x1016 << block << F("0101640", "5F") << F(blockHex, "EB") << -1
                                         << QByteArray();
    QTest::newRow("read the status bits") << 0x7C << QByteArray("\x80\x00", 2) << kReadStatus << F("8000", "CB")
                                          << -1 << QByteArray();
    QTest::newRow("read the last D word") << 0x13FE << QByteArray("\xFF\x7F") << F("013FE02", "84")
                                          << F("FF7F", "0C") << -1 << QByteArray();
    QTest::newRow("write one word, low byte first")
        << -1 << QByteArray() << kWriteD291 << ACK << 0x1246 << QByteArray("\xD2\x04");
    QTest::newRow("write a test weight") << -1 << QByteArray() << F("1105602E803", "42") << ACK << 0x1056
                                         << QByteArray("\xE8\x03");
    QTest::newRow("a pulse writes both whole bytes")
        << 0x1A << QByteArray("\xFF\xFF") << F("1001A020800", "30") << ACK << 0x1A << QByteArray("\x08\x00", 2);
    QTest::newRow("wrong checksum") << -1 << QByteArray() << F("1124602D204", "3E") << NAK << 0x1246
                                    << QByteArray("\x00\x00", 2);
    QTest::newRow("read past the end") << -1 << QByteArray() << F("013FF02", "85") << NAK << -1 << QByteArray();
    QTest::newRow("count disagrees with the data")
        << 0x1A << QByteArray("\x55\x55") << F("1001A010800", "2F") << NAK << 0x1A << QByteArray("\x55\x55");
    QTest::newRow("blanks in the data") << 0x3E << QByteArray("\x11\x22") << F("1003E02 0  ", "FE") << NAK << 0x3E
                                        << QByteArray("\x11\x22");
    QTest::newRow("unknown command") << -1 << QByteArray() << F("2003E02", "6F") << NAK << -1 << QByteArray();
    QTest::newRow("read of no bytes") << -1 << QByteArray() << F("0003E00", "6B") << NAK << -1 << QByteArray();
}

void ControllerTest::exchange()
{
    QFETCH(int, preloadAt);
    QFETCH(QByteArray, preload);
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, reply);
    QFETCH(int, checkAt);
    QFETCH(QByteArray, memory);

    Controller c;
    for (int i = 0; i < preload.size(); ++i)
        c.setByteAt(preloadAt + i, quint8(preload.at(i)));
    c.clearRequests();
    QCOMPARE(c.handleFrame(request), reply);
    QCOMPARE(c.requests(), QByteArrayList{request});
    for (int i = 0; i < memory.size(); ++i)
        QCOMPARE(c.byteAt(checkAt + i), quint8(memory.at(i)));
}

void ControllerTest::faults_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("prefix");  // exact start of each spoilt answer
    QTest::addColumn<int>("junk");           // random characters after it
    QTest::addColumn<int>("lateMs");
    QTest::addColumn<bool>("executed");

    const QByteArray status = F("0000", "C3");
    QTest::newRow("no reply to a read") << Fault::NoReply << 1 << kReadStatus << QByteArray() << 0 << 0 << true;
    QTest::newRow("no reply, three times") << Fault::NoReply << 3 << kReadStatus << QByteArray() << 0 << 0 << true;
    QTest::newRow("no reply to a write") << Fault::NoReply << 1 << kWriteD291 << QByteArray() << 0 << 0 << true;
    QTest::newRow("nak to a read") << Fault::Nak << 2 << kReadStatus << NAK << 0 << 0 << true;
    QTest::newRow("nak to a write, not done") << Fault::Nak << 1 << kWriteD291 << NAK << 0 << 0 << false;
    QTest::newRow("garbage for a read") << Fault::Garbage << 1 << kReadStatus << QByteArray() << 8 << 0 << true;
    QTest::newRow("garbage for a write") << Fault::Garbage << 2 << kWriteD291 << QByteArray() << 1 << 0 << true;
    QTest::newRow("short read") << Fault::Short << 1 << kReadStatus << status.chopped(2) << 0 << 0 << true;
    QTest::newRow("short write: nothing") << Fault::Short << 1 << kWriteD291 << QByteArray() << 0 << 0 << true;
    QTest::newRow("long read") << Fault::Long << 1 << kReadStatus << status << 2 << 0 << true;
    QTest::newRow("long write") << Fault::Long << 1 << kWriteD291 << ACK << 2 << 0 << true;
    QTest::newRow("late read") << Fault::Late << 1 << kReadStatus << status << 0 << 60 << true;
    QTest::newRow("late write") << Fault::Late << 1 << kWriteD291 << ACK << 0 << 60 << true;
}

void ControllerTest::faults()
{
    QFETCH(Fault, fault);
    QFETCH(int, count);
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, prefix);
    QFETCH(int, junk);
    QFETCH(int, lateMs);
    QFETCH(bool, executed);

    Controller c;
    QByteArray got;
    connect(&c, &Controller::reply, this, [&](const QByteArray& b) { got += b; });
    c.setLateMs(lateMs);
    c.injectFault(fault, count);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < count; ++i)
        c.feed(request);

    if (lateMs > 0) {
        QCoreApplication::processEvents();
        QVERIFY(got.isEmpty());
        QTRY_COMPARE(got, prefix);
        QVERIFY(clock.elapsed() >= lateMs);
        got.clear();
        prefix.clear();
    }
    // The fault is used up: the next request is answered truly, after whatever the spoilt ones got.
    const QByteArray next = F("0000", "C3");
    c.feed(kReadStatus);
    QTRY_VERIFY(got.endsWith(next));
    got.chop(next.size());

    const int each = int(prefix.size()) + junk;
    QCOMPARE(got.size(), qsizetype(lateMs > 0 ? 0 : count * each));
    for (int i = 0; i < got.size(); i += each) {
        QCOMPARE(got.mid(i, prefix.size()), prefix);
        for (int j = i + int(prefix.size()); j < i + each; ++j)
            QVERIFY2(isJunk(got.at(j)), got.toHex().constData());
    }
    if (request == kWriteD291)
        QCOMPARE(c.word(291), short(executed ? 1234 : 0));
}

void ControllerTest::unpluggedHearsNothing()
{
    Controller c;
    QByteArray got;
    connect(&c, &Controller::reply, this, [&](const QByteArray& b) { got += b; });
    c.injectFault(Fault::Unplugged);
    for (int i = 0; i < 10; ++i)
        c.feed(kWriteD291);
    QVERIFY(!QTest::qWaitFor([&] { return !got.isEmpty(); }, 50));
    QCOMPARE(c.word(291), short(0));
    QCOMPARE(c.requests().size(), 10);  // the console's frames are on the wire all the same

    c.plugIn();
    c.feed(kWriteD291);
    QTRY_COMPARE(got, ACK);
    QCOMPARE(c.word(291), short(1234));
}

void ControllerTest::stream_data()
{
    QTest::addColumn<QByteArrayList>("chunks");
    QTest::addColumn<QByteArray>("replies");
    QTest::addColumn<QByteArrayList>("frames");

    const QByteArray read = kReadStatus;
    const QByteArray answer = F("0000", "C3");
    QByteArrayList bytes;
    for (char ch : read)
        bytes << QByteArray(1, ch);

    QTest::newRow("whole frame") << QByteArrayList{read} << answer << QByteArrayList{read};
    QTest::newRow("one byte at a time") << bytes << answer << QByteArrayList{read};
    QTest::newRow("split in the checksum") << QByteArrayList{read.chopped(1), read.right(1)} << answer
                                           << QByteArrayList{read};
    QTest::newRow("junk before STX") << QByteArrayList{QByteArray("\x15zz\r\n") + read} << answer
                                     << QByteArrayList{read};
    QTest::newRow("two frames at once") << QByteArrayList{kWriteD291 + read} << ACK + answer
                                        << QByteArrayList{kWriteD291, read};
    QTest::newRow("cut frame is dropped") << QByteArrayList{read.left(5), read} << answer << QByteArrayList{read};
    QTest::newRow("wrong checksum in the stream")
        << QByteArrayList{F("0007C02", "70"), read} << NAK + answer << QByteArrayList{F("0007C02", "70"), read};
}

void ControllerTest::stream()
{
    QFETCH(QByteArrayList, chunks);
    QFETCH(QByteArray, replies);
    QFETCH(QByteArrayList, frames);

    Controller c;
    QByteArray got;
    connect(&c, &Controller::reply, this, [&](const QByteArray& b) { got += b; });
    for (const QByteArray& chunk : chunks)
        c.feed(chunk);
    QTRY_COMPARE(got, replies);
    QCOMPARE(c.requests(), frames);
}

void ControllerTest::pacing_data()
{
    QTest::addColumn<bool>("paced");
    QTest::addColumn<int>("replies");
    QTest::addColumn<int>("minMs");

    // 132 characters of 10 bits at 9600 baud: the last one is complete after 137.5 ms.
    QTest::newRow("paced at the line's speed") << true << 132 << 137;
    QTest::newRow("at once") << false << 1 << 0;
}

void ControllerTest::pacing()
{
    QFETCH(bool, paced);
    QFETCH(int, replies);
    QFETCH(int, minMs);

    Controller c;
    const QByteArray request = F("0101640", "5F");
    const QByteArray whole = c.handleFrame(request);
    QCOMPARE(whole.size(), 132);
    c.setPaced(paced);
    QSignalSpy spy(&c, &Controller::reply);
    QElapsedTimer clock;
    clock.start();
    c.feed(request);
    QCOMPARE(spy.count(), 0);  // never from inside feed()
    QTRY_COMPARE(spy.count(), replies);
    QVERIFY(clock.elapsed() >= minMs);
    QByteArray got;
    for (const QList<QVariant>& args : spy)
        got += args.at(0).toByteArray();
    QCOMPARE(got, whole);
}

void ControllerTest::calibration_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<int>("load");
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QByteArrayList>("writes");
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<int>("weight");
    QTest::addColumn<int>("laterLoad");
    QTest::addColumn<int>("laterWeight");

    const QByteArray zero0 = F("10016022000", "1F"), clear22 = F("10016020000", "1D");
    const QByteArray span0 = F("10016024000", "21"), weight0 = F("1105602E803", "42");  // D43 = 1000
    const QByteArray zero6 = F("10019022000", "22"), clear25 = F("10019020000", "20");
    const QByteArray span10 = F("1001A020100", "29"), clear26 = F("1001A020000", "28");
    const QByteArray span4 = F("10017024000", "22"), clear23 = F("10017020000", "1E");
    const QByteArray moisture4 = F("1103A026400", "35");  // D29 = 100
    const QByteArray success = F("8000", "CB"), refused = F("4000", "C7"), silent = F("0000", "C3");

    QTest::newRow("zero of scale 0") << 0 << 2600 << Outcome::Success << QByteArrayList{zero0, clear22} << success
                                     << 0 << 2700 << 100;
    QTest::newRow("span of scale 0") << 0 << 2600 << Outcome::Success << QByteArrayList{weight0, span0, clear22}
                                     << success << 1000 << 2900 << 1500;
    QTest::newRow("zero of scale 6, bit apart") << 6 << 2500 << Outcome::Success
                                                << QByteArrayList{zero6, clear25} << success << 0 << 2700 << 200;
    QTest::newRow("span of scale 10 refused") << 10 << 2500 << Outcome::Refuse
                                              << QByteArrayList{span10, clear26} << refused << 500 << 2600 << 600;
    QTest::newRow("zero without an answer") << 6 << 2500 << Outcome::NoAnswer << QByteArrayList{zero6, clear25}
                                            << silent << 500 << 2600 << 600;
    QTest::newRow("moisture span of slot 4") << 4 << 2400 << Outcome::Success
                                             << QByteArrayList{moisture4, span4, clear23} << success << 100 << 2800
                                             << 200;
    // The clear alone is no edge: the old status stays.
    QTest::newRow("clear starts nothing") << 0 << 2600 << Outcome::Success << QByteArrayList{clear22}
                                          << F("C000", "D6") << 600 << 2700 << 700;
}

void ControllerTest::calibration()
{
    QFETCH(int, scale);
    QFETCH(int, load);
    QFETCH(Outcome, outcome);
    QFETCH(QByteArrayList, writes);
    QFETCH(QByteArray, status);
    QFETCH(int, weight);
    QFETCH(int, laterLoad);
    QFETCH(int, laterWeight);

    Controller c;
    c.setNoise(false);
    c.setLoad(scale, load);
    c.setCalOutcome(outcome);
    c.setByteAt(0x7C, 0xC0);  // both status bits left over from before
    for (const QByteArray& w : writes)
        QCOMPARE(c.handleFrame(w), ACK);
    QCOMPARE(c.handleFrame(kReadStatus), status);
    QCOMPARE(c.word(27 + scale), short(weight));
    c.setLoad(scale, laterLoad);
    QCOMPARE(c.word(11 + scale), short(laterLoad));
    QCOMPARE(c.word(27 + scale), short(laterWeight));
}

void ControllerTest::hardwareInit_data()
{
    QTest::addColumn<bool>("never");
    QTest::addColumn<QByteArray>("finalStatus");
    QTest::addColumn<QByteArray>("finalRequestBits");

    QTest::newRow("completes after the delay") << false << F("8000", "CB") << F("0000", "C3");
    QTest::newRow("never completes") << true << F("0000", "C3") << F("0800", "CB");
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
    QCOMPARE(c.handleFrame(kReadStatus), F("0000", "C3"));
    if (never)
        QVERIFY(!QTest::qWaitFor([&] { return c.sBit(999); }, 200));
    QTRY_COMPARE(c.handleFrame(kReadStatus), finalStatus);
    QCOMPARE(c.handleFrame(kReadS208), finalRequestBits);
}

void ControllerTest::jog_data()
{
    QTest::addColumn<quint8>("outputsBefore");
    QTest::addColumn<QByteArray>("write");
    QTest::addColumn<QByteArray>("outputs");

    QTest::newRow("fan held") << quint8(0) << F("1001A020200", "2A") << F("4000", "C7");
    QTest::newRow("dust valve held") << quint8(0) << F("1001A020400", "2C") << F("8000", "CB");
    QTest::newRow("released") << quint8(0xC0) << F("1001A020000", "28") << F("0000", "C3");
    QTest::newRow("other outputs kept") << quint8(0x04) << F("1001A020200", "2A") << F("4400", "CB");
}

void ControllerTest::jog()
{
    QFETCH(quint8, outputsBefore);
    QFETCH(QByteArray, write);
    QFETCH(QByteArray, outputs);

    Controller c;
    c.setByteAt(0xA6, outputsBefore);
    QCOMPARE(c.handleFrame(write), ACK);
    QCOMPARE(c.handleFrame(kReadY62), outputs);
}

void ControllerTest::hoist_data()
{
    QTest::addColumn<bool>("cancel");

    QTest::newRow("trip to the end") << false;
    QTest::newRow("cancelled on the way") << true;
}

void ControllerTest::hoist()
{
    QFETCH(bool, cancel);

    Controller c;
    c.setWord(291, 777);
    c.setHoistTrip(cancel ? 1000 : 5, 100);
    QCOMPARE(c.handleFrame(F("1001A022000", "2A")), ACK);
    QCOMPARE(c.handleFrame(F("1001A020000", "28")), ACK);
    QCOMPARE(c.word(291), short(0));  // the trip starts at the receive position
    QCOMPARE(c.word(294), short(300));
    if (!cancel) {
        QTRY_COMPARE(c.word(293), short(500));
        QCOMPARE(c.word(291), short(500));
        QCOMPARE(c.word(292), short(200));
        QVERIFY(!c.hoistRunning());
        return;
    }
    QTRY_VERIFY(c.word(291) >= 200);
    QCOMPARE(c.handleFrame(F("1001A024000", "2C")), ACK);
    const short stopped = c.word(291);
    QVERIFY(!QTest::qWaitFor([&] { return c.word(291) != stopped; }, 500));
    QCOMPARE(c.word(293), short(0));
}

void ControllerTest::liveValuesDrift()
{
    Controller c;
    c.setLoad(3, 5000);
    c.setLiveModel(true);
    QSet<short> seen;
    bool off = false;
    // D14 and D30: AD value and weight of scale 3, read as the console reads them.
    const QByteArray readAd = F("0101C02", "6A");
    const QByteArray readWeight = F("0103C02", "6C");
    auto word = [](const QByteArray& reply) {
        return short(reply.mid(3, 2).toInt(nullptr, 16) << 8 | reply.mid(1, 2).toInt(nullptr, 16));
    };
    auto sample = [&] {
        const short ad = word(c.handleFrame(readAd));
        const short weight = word(c.handleFrame(readWeight));
        off = off || ad < 4998 || ad > 5002 || weight != ad - 2000;  // factor 1 from zero 2000
        seen.insert(ad);
        return off || seen.size() >= 3;
    };
    QTRY_VERIFY_WITH_TIMEOUT(sample(), 10000);
    QVERIFY(!off);
}

void ControllerTest::simPort_data()
{
    QTest::addColumn<int>("openError");

    QTest::newRow("opens") << int(PortOpenError::None);
    QTest::newRow("port in use") << int(PortOpenError::InUse);
}

void ControllerTest::simPort()
{
    QFETCH(int, openError);

    Controller c;
    plcsim::SimPort port(&c);
    port.setOpenError(PortOpenError(openError), QStringLiteral("busy"));
    const PortOpenResult r = port.open();
    QCOMPARE(int(r.error), openError);
    QCOMPARE(port.isOpen(), openError == int(PortOpenError::None));

    QSignalSpy received(&port, &CommPort::received);
    port.setThreshold(8);
    port.output(kReadStatus);
    if (!port.isOpen()) {
        QVERIFY(!QTest::qWaitFor([&] { return received.count() > 0; }, 50));
        QVERIFY(c.requests().isEmpty());
        return;
    }
    QTRY_COMPARE(received.count(), 1);
    QCOMPARE(port.takeInput(), F("0000", "C3"));
    port.close();
    c.feed(kReadStatus);
    QVERIFY(!QTest::qWaitFor([&] { return port.inBufferCount() > 0; }, 50));
}

QTEST_GUILESS_MAIN(ControllerTest)
#include "controller_test.moc"
