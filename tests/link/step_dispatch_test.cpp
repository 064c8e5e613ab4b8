#include "test_support.h"

#include "common/module1.h"
#include "link/form_access.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/step_table.h"

#include <QTest>

// No form is loaded in these tests: every reply reaches a step whose form is absent.
namespace {
enum Kind { Words, Bytes, Write };

// The request of a step, sent to a controller that does not answer, so that the test can answer it.
QString requestFor(Kind kind, const QString& device, int count)
{
    switch (kind) {
    case Words:
        return BuildReadFrameWords(device, short(count));
    case Bytes:
        return BuildReadFrameBytes(device, short(count));
    case Write:
        break;
    }
    return BuildWriteFrame(device, QStringLiteral("0000"), 4);
}

// A well-formed reply for that request: ACK for a write, data digits for a read.
QByteArray goodReplyFor(Kind kind, int count)
{
    if (kind == Write)
        return QByteArray(1, 0x06);
    const int bytes = kind == Words ? 2 * count : count;
    QByteArray r(1, 0x02);
    for (int i = 0; i < bytes; ++i)
        r += i % 2 ? "00" : "05";  // words of 5
    return r + '\x03' + "00";
}

// Refused: a NAK to a write; to a read, an answer of full length whose ETX is missing.
QByteArray badReplyFor(Kind kind, int count)
{
    if (kind == Write)
        return QByteArray(1, 0x15);
    const int bytes = kind == Words ? 2 * count : count;
    return QByteArray(1, 0x02) + QByteArray(2 * bytes + 3, '0');
}

QString addressOf(const QString& frame) { return frame.mid(2, 4); }
}  // namespace

class StepDispatchTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        h = new ConsoleHarness;
        h->connectLink();
        Link().Timer1.setInterval(3600 * 1000);  // polls are not part of these tests
        ParamDevice = ParamDeviceAG = QStringLiteral("D300");
        OptionDevice = QStringLiteral("S500");
        CalZeroDevice = QStringLiteral("S181");
        CalSpanDevice = QStringLiteral("S182");
        CalWeightDevice = QStringLiteral("D43");
        CalBitMask = BitOperand(QStringLiteral("S182"));
        mb = new MbAnswerer;
    }
    void cleanup()
    {
        delete mb;
        delete h;
    }

    void everyStepWithoutItsForm_data();
    void everyStepWithoutItsForm();
    void badReplyWithoutFormOnlyResends_data();
    void badReplyWithoutFormOnlyResends();
    void receiveGuards_data();
    void receiveGuards();

private:
    // Sends the request of step with the controller deaf, then delivers reply as the line would. With
    // answerChain the controller hears again before the reply, so that a chain runs to its end.
    QStringList exchange(short step, Kind kind, const QString& device, int count, const QByteArray& reply,
                         bool answerChain);

    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

QStringList StepDispatchTest::exchange(short step, Kind kind, const QString& device, int count, const QByteArray& reply,
                                       bool answerChain)
{
    h->sim.injectFault(plcsim::Fault::Unplugged);
    StepNo = step;
    SendFlag = true;
    send_recieve(requestFor(kind, device, count));
    QStringList sent = h->takeFrames();
    if (answerChain)
        h->sim.plugIn();
    emit h->sim.reply(reply);
    return sent;
}

void StepDispatchTest::everyStepWithoutItsForm_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("device");
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("chain");  // devices of the requests the dispatch sends itself
    const QStringList none;
    auto row = [](int step, Kind kind, const char* device, int count, const QStringList& chain) {
        QTest::addRow("step %d", step) << step << int(kind) << QString::fromLatin1(device) << count << chain;
    };
    row(8, Words, "D300", 15, {"S500"});
    row(9, Write, "D300", 0, none);
    row(10, Bytes, "S500", 2, none);
    row(11, Write, "S500", 0, none);
    row(20, Bytes, "S500", 2, {"S612"});
    row(21, Write, "S500", 0, none);
    row(22, Bytes, "S612", 2, none);
    row(23, Write, "S612", 0, none);
    row(24, Bytes, "S612", 2, {"S500"});
    row(25, Write, "S612", 0, none);
    row(51, Words, "D11", 32, none);
    row(52, Write, "S181", 0, {"S181", "S998"});
    row(53, Write, "S181", 0, {"S998"});
    row(54, Write, "D43", 0, {"S182", "S182", "S998"});
    row(55, Write, "S182", 0, {"S182", "S998"});
    row(56, Write, "S182", 0, {"S998"});
    row(57, Write, "S211", 0, {"S999"});
    row(58, Bytes, "S999", 2, none);
    row(59, Bytes, "S998", 2, none);
    row(60, Bytes, "S998", 2, none);
    row(61, Write, "S212", 0, none);
    row(62, Write, "S212", 0, {"S212"});
    row(63, Write, "S209", 0, {"Y62"});
    row(64, Write, "S209", 0, {"Y62"});
    row(65, Write, "S210", 0, {"Y62"});
    row(66, Write, "S210", 0, {"Y62"});
    row(67, Bytes, "Y62", 2, none);
    row(71, Words, "D272", 28, none);
    row(72, Write, "D272", 0, none);
    row(73, Words, "D200", 14, none);
    row(74, Write, "D200", 0, none);
    row(75, Words, "D215", 6, {"S612", "S500"});
    row(76, Write, "D215", 0, none);
    row(99, Bytes, "S500", 2, none);
    row(108, Words, "D300", 20, {"S500"});
    row(109, Write, "D300", 0, none);
    row(110, Bytes, "S500", 2, none);
    row(111, Write, "S500", 0, none);
    row(157, Words, "D291", 5, none);
    row(158, Write, "S182", 0, {"S182", "D291"});
    row(159, Write, "S182", 0, {"D291"});
    row(160, Write, "D294", 0, none);
    // The default row: nothing is waiting for these.
    row(444, Bytes, "S998", 2, none);
    row(7, Bytes, "S998", 2, none);
    row(300, Write, "S181", 0, none);
}

void StepDispatchTest::everyStepWithoutItsForm()
{
    QFETCH(int, step);
    QFETCH(int, kind);
    QFETCH(QString, device);
    QFETCH(int, count);
    QFETCH(QStringList, chain);
    const bool known = FindStep(short(step)) != nullptr;
    exchange(short(step), Kind(kind), device, count, goodReplyFor(Kind(kind), count), true);
    // The chain runs against the controller to its end; then the link is idle.
    QTRY_VERIFY(!Link().Timer2.isActive());
    QStringList sent = h->takeFrames();
    for (int k = 0; k < sent.size() && k < chain.size(); ++k)
        QCOMPARE(addressOf(sent[k]), DeviceToAddress(chain[k]));
    QCOMPARE(sent.size(), chain.size());
    QVERIFY(mb->texts.isEmpty());
    QCOMPARE(int(Link().RetryCount), 0);
    if (known) {
        QVERIFY(SendFlag);
    } else {
        QVERIFY(!SendFlag);  // the reply was dropped, not taken
        QCOMPARE(int(StepNo), step);
    }
    Link().Timer1.stop();
}

void StepDispatchTest::badReplyWithoutFormOnlyResends_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("device");
    QTest::addColumn<int>("count");
    auto row = [](int step, Kind kind, const char* device, int count) {
        QTest::addRow("step %d", step) << step << int(kind) << QString::fromLatin1(device) << count;
    };
    for (int step : {9, 11, 21, 23, 25, 57, 63, 64, 65, 66, 72, 74, 76, 109, 111, 160})
        row(step, Write, "S500", 0);
    row(8, Words, "D300", 15);
    row(20, Bytes, "S500", 2);
    row(51, Words, "D11", 32);
    row(58, Bytes, "S999", 2);
    row(157, Words, "D291", 5);
}

void StepDispatchTest::badReplyWithoutFormOnlyResends()
{
    QFETCH(int, step);
    QFETCH(int, kind);
    QFETCH(QString, device);
    QFETCH(int, count);
    const QStringList first = exchange(short(step), Kind(kind), device, count, badReplyFor(Kind(kind), count), false);
    QCOMPARE(first.size(), 1);
    // The same frame again at once, and nothing else.
    QCOMPARE(h->takeFrames(), first);
    QCOMPARE(int(Link().RetryCount), 1);
    QCOMPARE(int(StepNo), step);
    QVERIFY(Link().Timer2.isActive());
}

void StepDispatchTest::receiveGuards_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("ignored");
    const QByteArray longAck = QByteArray(1, 0x06) + "7A";
    QTest::newRow("long answer to the zero bit") << 52 << int(Write) << longAck << true;
    QTest::newRow("long answer to the test weight") << 54 << int(Write) << longAck << true;
    QTest::newRow("long answer to the deceleration write") << 160 << int(Write) << longAck << true;
    QTest::newRow("long answer to a parameter write") << 9 << int(Write) << longAck << false;
    QTest::newRow("two characters to the zero bit") << 52 << int(Write) << QByteArray("\x06" "A") << false;
    QTest::newRow("step 20 without STX and ETX") << 20 << int(Bytes) << QByteArray("05000000") << true;
    QTest::newRow("step 20 with ETX only") << 20 << int(Bytes) << QByteArray("050000\x03" "0") << false;
    QTest::newRow("step 22 without STX and ETX") << 22 << int(Bytes) << QByteArray("05000000") << false;
}

void StepDispatchTest::receiveGuards()
{
    QFETCH(int, step);
    QFETCH(int, kind);
    QFETCH(QByteArray, reply);
    QFETCH(bool, ignored);
    const QStringList first = exchange(short(step), Kind(kind), QStringLiteral("S181"), 2, reply, false);
    // Ignored: left to the clock, nothing re-sent yet. Taken: bad, so re-sent at once.
    QCOMPARE(h->takeFrames(), ignored ? QStringList() : first);
    QCOMPARE(int(Link().RetryCount), ignored ? 0 : 1);
    QCOMPARE(int(StepNo), step);
    QVERIFY(Link().Timer2.isActive());
}

QTEST_MAIN(StepDispatchTest)
#include "step_dispatch_test.moc"
