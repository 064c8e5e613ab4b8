#include "test_support.h"

#include "common/module1.h"
#include "common/form_access.h"
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

class LinkEngineTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        h = new ConsoleHarness;
        h->connectLink();
    }
    void cleanup() { delete h; }

    void sendWhileBusyIsDropped()
    {
        SendFlag = false;
        Link().Timer2.stop();
        StepNo = 60;
        send_recieve(BuildReadFrameBytes(QStringLiteral("S998"), 2));
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());
        QVERIFY(!Link().Timer2.isActive());
    }

    void replyShape_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<QString>("payload");
        const QString s(QChar(2)), e(QChar(3));
        QTest::newRow("good") << s + "8000" + e + "7B" << "8000";
        QTest::newRow("wrong checksum is accepted") << s + "8000" + e + "00" << "8000";
        QTest::newRow("ETX one place early") << s + "800" + e + "7B0" << "";
        QTest::newRow("one character short") << s + "8000" + e + "7" << "";
        QTest::newRow("no STX") << "08000" + e + "7B" << "";
        QTest::newRow("NAK") << QString(QChar(0x15)) + "0000000" << "";
    }
    void replyShape()
    {
        QFETCH(QString, reply);
        QFETCH(QString, payload);
        ExpectedReplyLen = 8;
        SendFlag = false;
        QCOMPARE(Link().ReplyPayload(reply), payload);
        QCOMPARE(SendFlag, !payload.isEmpty());
    }

    // The ninth failure ends in the fault box (in English and with another port: gluedEnglishKeepsItsBlank).
    void eightResendsThenTheFault()
    {
        MbAnswerer mb;
        h->sim.injectFault(plcsim::Fault::Unplugged);
        Link().Timer1.start();
        sendStatusRead();
        Link().Timer2.stop();  // the ticks are driven by hand below
        for (int i = 1; i <= 8; ++i) Link().RetryRequest();
        QTest::qWait(10);
        QCOMPARE(h->takeFrames().size(), 9);
        QVERIFY(mb.texts.isEmpty());
        Link().RetryRequest();
        QCOMPARE(mb.texts, QStringList{QStringLiteral("通讯发生错误请检查：\n1、下位机是否已断电；\n2、下位机是否正常运行；\n"
                                                      "3、通讯线是否接在端口:Com2,且接触良好。")});
        QCOMPARE(mb.errorIcons, QList<bool>{true});
        QCOMPARE(int(StepNo), 444);
        QCOMPARE(int(Link().RetryCount), 0);
        QVERIFY(!Link().Timer1.isActive() && !Link().Timer2.isActive() && !Link().Timer3.isActive());
        QVERIFY(h->takeFrames().isEmpty());
    }

    void formMovedOnStopsResends()
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

    // A re-sent request was answered, but its first send may still be answered late: the next request
    // waits for that reply, and a sender forcing its way in meanwhile replaces it. One frame goes out.
    // Meanwhile the link is busy as for a request that is out, and a form that returns stops its clock.
    void nextRequestWaitsForAnOwedReply_data()
    {
        QTest::addColumn<bool>("formReturns");
        QTest::newRow("sent once the owed reply is too late, and answered") << false;
        QTest::newRow("the form returns meanwhile: sent, unanswered, never re-sent") << true;
    }
    void nextRequestWaitsForAnOwedReply()
    {
        QFETCH(bool, formReturns);
        Link().LateReplyHorizonMs = 300;
        h->sim.injectFault(plcsim::Fault::NoReply);
        sendStatusRead();
        QCoreApplication::processEvents();
        Link().RetryRequest();
        QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());
        QCOMPARE(h->takeFrames().size(), 2);
        sendStatusRead();
        sendStatusRead();
        QCOMPARE(h->takeFrames().size(), 0);
        QVERIFY(!SendFlag && Link().Timer2.isActive());
        if (formReturns) {
            Link().Timer2.stop();
            h->sim.injectFault(plcsim::Fault::NoReply);
        }
        QStringList sent;
        QTRY_VERIFY(!(sent += h->takeFrames()).isEmpty());
        QCOMPARE(sent, QStringList{Frame(QStringLiteral("0007C02"))});
        if (formReturns)
            QVERIFY(!SendFlag && !Link().Timer2.isActive());
        else
            QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());
        Link().LateReplyHorizonMs = 2000;
    }

    // The parameter editors' own steps are proven by their tests; these are the other sources. The image
    // is of fixed width: an empty source blanks what was assembled before it, and nothing moves.
    void blockWriteTakesItsBoxesByStep_data()
    {
        QTest::addColumn<int>("step");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::addColumn<QString>("data");
        QTest::newRow("vibrator times from the main form") << 72 << "5" << "-1" << "0500FFFF";
        QTest::newRow("empty first box") << 72 << "" << "-1" << "    FFFF";
        QTest::newRow("empty last box blanks all") << 72 << "5" << "" << "        ";
        QTest::newRow("parameter block, empty first word") << 9 << "" << "-1" << "    FFFF";
        QTest::newRow("aggregate block, empty last word") << 109 << "5" << "" << "        ";
        QTest::newRow("no source: blanks stay") << 8 << "5" << "-1" << "        ";
        QTest::newRow("test weight of a form not loaded") << 54 << "5" << "-1" << "        ";
    }
    void blockWriteTakesItsBoxesByStep()
    {
        QFETCH(int, step);
        QFETCH(QString, first);
        QFETCH(QString, second);
        QFETCH(QString, data);
        Link().TxtDCansd[0] = first;
        Link().TxtDCansd[1] = second;
        Link().Pfd[0] = first;
        Link().Pfd[1] = second;
        StepNo = short(step);
        const QString frame = GetWrite_PLCD(QStringLiteral("D300"), 2);
        QCOMPARE(frame.mid(1, 7), QStringLiteral("1125804"));
        QCOMPARE(frame.mid(8, frame.size() - 11), data);
    }

private:
    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(LinkEngineTest)
#include "link_engine_test.moc"
