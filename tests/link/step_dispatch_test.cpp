#include "test_support.h"

#include "common/module1.h"
#include "common/form_access.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/step_table.h"

#include <QTest>

// No form is loaded in these tests: every reply reaches a step whose form is absent.

// A well-formed reply: ACK to a write (bytes 0), else that many data bytes of words of 5.
static QByteArray goodReply(int bytes)
{
    return bytes ? "\x02" + QByteArray("0500").repeated(bytes / 2) + "\x03" "00" : QByteArray(1, 0x06);
}

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
    }
    void cleanup() { delete h; }

    void everyStepWithoutItsForm_data()
    {
        QTest::addColumn<int>("step");
        QTest::addColumn<int>("bytes");        // bytes read, 0 for a write
        QTest::addColumn<QStringList>("chain");  // devices of the requests the dispatch sends itself
        struct Row { int step, bytes; const char* chain; };
        const Row rows[] = {
            {8, 30, "S500"}, {9, 0, ""}, {10, 2, ""}, {11, 0, ""}, {20, 2, "S612"}, {21, 0, ""},
            {22, 2, ""}, {23, 0, ""}, {24, 2, "S500"}, {25, 0, ""}, {51, 64, ""}, {52, 0, "S181 S998"},
            {53, 0, "S998"}, {54, 0, "S182 S182 S998"}, {55, 0, "S182 S998"}, {56, 0, "S998"},
            {57, 0, "S999"}, {58, 2, ""}, {59, 2, ""}, {60, 2, ""}, {61, 0, ""}, {62, 0, "S212"},
            {63, 0, "Y62"}, {64, 0, "Y62"}, {65, 0, "Y62"}, {66, 0, "Y62"}, {67, 2, ""}, {71, 56, ""},
            {72, 0, ""}, {73, 28, ""}, {74, 0, ""}, {75, 12, "S612 S500"}, {76, 0, ""}, {99, 2, ""},
            {108, 40, "S500"}, {109, 0, ""}, {110, 2, ""}, {111, 0, ""}, {157, 10, ""},
            {158, 0, "S182 D291"}, {159, 0, "D291"}, {160, 0, ""},
            // The default row: nothing waits for these.
            {444, 2, ""}, {7, 2, ""}, {300, 0, ""},
        };
        for (const Row& r : rows)
            QTest::addRow("step %d", r.step) << r.step << r.bytes
                                             << QString::fromLatin1(r.chain).split(' ', Qt::SkipEmptyParts);
    }
    void everyStepWithoutItsForm()
    {
        QFETCH(int, step);
        QFETCH(int, bytes);
        QFETCH(QStringList, chain);
        MbAnswerer mb;
        exchange(short(step), bytes, goodReply(bytes), true);
        // The chain runs against the controller to its end; then the link is idle.
        QTRY_VERIFY(!Link().Timer2.isActive());
        QStringList sent, expected;
        for (const QString& f : h->takeFrames()) sent << f.mid(2, 4);
        for (const QString& d : chain) expected << DeviceToAddress(d);
        QCOMPARE(sent, expected);
        QVERIFY(mb.texts.isEmpty());
        QCOMPARE(int(Link().RetryCount), 0);
        if (FindStep(short(step))) {
            QVERIFY(SendFlag);
        } else {
            QVERIFY(!SendFlag);  // the reply was dropped, not taken
            QCOMPARE(int(StepNo), step);
        }
    }

    void receiveGuards_data()
    {
        QTest::addColumn<int>("step");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<bool>("ignored");
        const QByteArray longAck = QByteArray(1, 0x06) + "7A";
        QTest::newRow("long answer to the zero bit") << 52 << 0 << longAck << true;
        QTest::newRow("long answer to a parameter write") << 9 << 0 << longAck << false;
        QTest::newRow("two characters to the zero bit") << 52 << 0 << QByteArray("\x06" "A") << false;
        QTest::newRow("step 20 without STX and ETX") << 20 << 2 << QByteArray("05000000") << true;
        QTest::newRow("step 20 with ETX only") << 20 << 2 << QByteArray("050000\x03" "0") << false;
        QTest::newRow("step 22 without STX and ETX") << 22 << 2 << QByteArray("05000000") << false;
    }
    void receiveGuards()
    {
        QFETCH(int, step);
        QFETCH(int, bytes);
        QFETCH(QByteArray, reply);
        QFETCH(bool, ignored);
        const QStringList first = exchange(short(step), bytes, reply, false);
        // Ignored: left to the clock, nothing re-sent yet. Taken: bad, so re-sent at once.
        QCOMPARE(h->takeFrames(), ignored ? QStringList() : first);
        QCOMPARE(int(Link().RetryCount), ignored ? 0 : 1);
        QCOMPARE(int(StepNo), step);
        QVERIFY(Link().Timer2.isActive());
    }

private:
    // Sends a request for step with the controller deaf, then delivers reply as the line would. With
    // answerChain the controller hears again first, so that a chain runs to its end.
    QStringList exchange(short step, int bytes, const QByteArray& reply, bool answerChain)
    {
        h->sim.injectFault(plcsim::Fault::Unplugged);
        StepNo = step;
        SendFlag = true;
        send_recieve(bytes ? BuildReadFrameBytes("S181", short(bytes)) : BuildWriteFrame("S181", "0000", 4));
        const QStringList sent = h->takeFrames();
        if (answerChain)
            h->sim.plugIn();
        emit h->sim.reply(reply);
        return sent;
    }

    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(StepDispatchTest)
#include "step_dispatch_test.moc"
