#include "test_support.h"

#include "common/module1.h"
#include "link/form_access.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"

#include <QTest>

// Reads of the calibration status (step 60) have no form behind them: the plain link at work.
static void sendStatusRead()
{
    StepNo = 60;
    SendFlag = true;
    send_recieve(BuildReadFrameBytes(QStringLiteral("S998"), 2));
}

static const QString kStatusFrame = QStringLiteral("\x02" "0007C02\x03" "6F");

class LinkEngineTest : public QObject {
    Q_OBJECT
private slots:
    void init() { h = new ConsoleHarness; h->connectLink(); }
    void cleanup() { delete h; }

    void sendWhileBusyIsDropped();
    void replyShape_data();
    void replyShape();
    void lostReplyIsResentByTheClock();
    void badReplyIsResentAtOnce();
    void eightResendsThenTheFault();
    void faultTextInEnglish();
    void formMovedOnStopsResends();
    void blockWriteTakesItsBoxesByStep_data();
    void blockWriteTakesItsBoxesByStep();

private:
    ConsoleHarness* h = nullptr;
};

void LinkEngineTest::sendWhileBusyIsDropped()
{
    SendFlag = false;
    Link().Timer2.stop();
    StepNo = 60;
    send_recieve(BuildReadFrameBytes(QStringLiteral("S998"), 2));
    QTest::qWait(20);
    QVERIFY(h->takeFrames().isEmpty());
    QVERIFY(!Link().Timer2.isActive());
}

void LinkEngineTest::replyShape_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("payload");
    const QString s(QChar(2)), e(QChar(3));
    QTest::newRow("good") << s + "8000" + e + "7B" << "8000";
    QTest::newRow("wrong checksum is accepted") << s + "8000" + e + "00" << "8000";
    QTest::newRow("ETX one place early") << s + "800" + e + "7B0" << "";
    QTest::newRow("one character short") << s + "8000" + e + "7" << "";
    QTest::newRow("one character long") << s + "8000" + e + "7B0" << "";
    QTest::newRow("no STX") << "08000" + e + "7B" << "";
    QTest::newRow("NAK") << QString(QChar(0x15)) + "0000000" << "";
}

void LinkEngineTest::replyShape()
{
    QFETCH(QString, reply);
    QFETCH(QString, payload);
    ExpectedReplyLen = 8;
    SendFlag = false;
    QCOMPARE(Link().ReplyPayload(reply), payload);
    QCOMPARE(SendFlag, !payload.isEmpty());
}

void LinkEngineTest::lostReplyIsResentByTheClock()
{
    h->sim.injectFault(plcsim::Fault::NoReply, 1);
    QElapsedTimer clock;
    clock.start();
    sendStatusRead();
    QTRY_COMPARE_WITH_TIMEOUT(h->sim.requests().size(), 2, 3000);
    // The second frame goes out on the next tick of the one-second clock, the same frame.
    QVERIFY2(clock.elapsed() >= 900, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(h->takeFrames(), (QStringList{kStatusFrame, kStatusFrame}));
    QTRY_VERIFY_WITH_TIMEOUT(SendFlag, 2000);
    QCOMPARE(int(Link().RetryCount), 0);
}

void LinkEngineTest::badReplyIsResentAtOnce()
{
    h->sim.injectFault(plcsim::Fault::Garbage, 1);
    sendStatusRead();
    QTRY_VERIFY_WITH_TIMEOUT(SendFlag, 800);  // well before the one-second clock
    QCOMPARE(h->takeFrames(), (QStringList{kStatusFrame, kStatusFrame}));
    QCOMPARE(int(Link().RetryCount), 0);
    QVERIFY(!Link().Timer2.isActive());
}

void LinkEngineTest::eightResendsThenTheFault()
{
    MbAnswerer mb;
    h->sim.injectFault(plcsim::Fault::Unplugged);
    Link().Timer1.start();
    sendStatusRead();
    Link().Timer2.stop();  // the ticks are driven by hand below
    for (int i = 1; i <= 8; ++i) {
        Link().RetryRequest();
        QCOMPARE(int(Link().RetryCount), i);
    }
    QTest::qWait(10);
    QCOMPARE(h->takeFrames().size(), 9);
    QVERIFY(mb.texts.isEmpty());
    Link().RetryRequest();  // the ninth failure
    QCOMPARE(mb.texts, QStringList{QStringLiteral("通讯发生错误请检查：\n1、下位机是否已断电；\n2、下位机是否正常运行；\n"
                                                  "3、通讯线是否接在端口:Com2,且接触良好。")});
    QCOMPARE(mb.errorIcons, QList<bool>{true});
    QCOMPARE(int(StepNo), 444);
    QVERIFY(SendFlag);
    QCOMPARE(int(Link().RetryCount), 0);
    QVERIFY(!Link().Timer1.isActive() && !Link().Timer2.isActive() && !Link().Timer3.isActive());
    QVERIFY(!MbResult);
    QVERIFY(h->takeFrames().isEmpty());
}

void LinkEngineTest::faultTextInEnglish()
{
    MbAnswerer mb;
    LangNo = 2;
    ProfileFile = QStringLiteral(ORVA_LANG_FILE);
    PortNo = 5;
    Link().RetryCount = 8;
    Link().RetryRequest();
    QCOMPARE(mb.texts.size(), 1);
    QVERIFY2(mb.texts[0].startsWith(QStringLiteral("Communication error")), qPrintable(mb.texts[0]));
    QVERIFY2(mb.texts[0].contains(QStringLiteral("port:Com5,")), qPrintable(mb.texts[0]));
}

void LinkEngineTest::formMovedOnStopsResends()
{
    h->sim.injectFault(plcsim::Fault::Unplugged);
    sendStatusRead();
    StepNo = 444;
    Link().RetryRequest();
    Link().RetryRequest();
    QCOMPARE(h->takeFrames().size(), 1);
    QVERIFY(Link().Timer2.isActive());
    QCOMPARE(int(Link().RetryCount), 0);
}

void LinkEngineTest::blockWriteTakesItsBoxesByStep_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<QString>("data");
    QTest::newRow("parameters from Pfd") << 9 << "D2040100";
    QTest::newRow("aggregate parameters from Pfd") << 109 << "D2040100";
    QTest::newRow("vibrator times from the main form") << 72 << "0500FFFF";
    QTest::newRow("no source: blanks stay") << 8 << "        ";
    QTest::newRow("test weight of a form not loaded") << 54 << "";
}

void LinkEngineTest::blockWriteTakesItsBoxesByStep()
{
    QFETCH(int, step);
    QFETCH(QString, data);
    Link().Pfd[0] = QStringLiteral("1234");
    Link().Pfd[1] = QStringLiteral("1");
    Link().TxtDCansd[0] = QStringLiteral("5");
    Link().TxtDCansd[1] = QStringLiteral("-1");
    StepNo = short(step);
    const QString frame = GetWrite_PLCD(QStringLiteral("D300"), 2);
    QCOMPARE(frame.mid(1, 7), QStringLiteral("1125804"));
    QCOMPARE(frame.mid(8, frame.size() - 11), data);
}

QTEST_MAIN(LinkEngineTest)
#include "link_engine_test.moc"
