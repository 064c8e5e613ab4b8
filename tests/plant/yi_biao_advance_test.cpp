#include "plant_rig.h"

#include "plant/yi_biao_advance.h"

#include <QElapsedTimer>

namespace {
const QString kPoll = Frame(QStringLiteral("012460A"));  // D291, 10 bytes
const QString kAsk = QStringLiteral("确定斗提位置标定吗?");

QString decelWrite(int up, int down) { return Frame(QStringLiteral("1124C04") + WordsHex({up, down})); }

// The skip's corner on its panel in pixels, from the design's twips.
QPoint skipAt(int q) { return {qRound((q * 50 + 4260) / 15.0), qRound((3450 - q * 60) / 15.0)}; }
}  // namespace

// The hoist calibration form against the simulator: the poll, the commands through Timer3, the counters
// and the figure, the deceleration values and the decoder of a status word.
class YiBiaoAdvanceTest : public QObject, PlantRig {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterPlantWith({"PLC"}); }
    void init()
    {
        setUp();
        h->sim.setHoistTrip(5, 100);
    }
    void cleanup() { tearDown(); }

    void poll_data()
    {
        QTest::addColumn<QList<int>>("clicks");  // tabs in turn; -1: return
        QTest::addColumn<bool>("polling");
        QTest::newRow("load reads once") << QList<int>{} << false;
        QTest::newRow("calibration tab polls") << QList<int>{1} << true;
        QTest::newRow("parameter tab stops it") << QList<int>{1, 0} << false;
        QTest::newRow("return stops it") << QList<int>{1, -1} << false;
    }
    void poll()
    {
        QFETCH(QList<int>, clicks);
        QFETCH(bool, polling);
        QVERIFY(open());
        for (int c : clicks) {
            WaitIdle();
            h->takeFrames();
            ClickOn(Ctl(f, c < 0 ? QStringLiteral("lblReturn") : QStringLiteral("LblBd(%1)").arg(c)));
        }
        QCOMPARE(Link().Timer1.isActive(), polling);
        if (polling) {
            QCOMPARE(Link().Timer1.interval(), 400);
            QStringList seen;
            QTRY_VERIFY((seen += h->takeFrames()).size() >= 3);
            QCOMPARE(seen, QStringList(seen.size(), kPoll));
            return;
        }
        WaitIdle();
        QCOMPARE(h->takeFrames(), clicks.value(clicks.size() - 1) == -1 ? QStringList() : QStringList{kPoll});
        if (clicks.contains(-1)) {
            QCOMPARE(int(StepNo), 444);
            QTRY_VERIFY(!Forms::loaded(QStringLiteral("YiBiaoAdvance")));
            QVERIFY(Forms::loaded(QStringLiteral("PLC"))->isVisible());
        }
    }

    void command_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QStringList>("frames");  // from the tick of Timer3 on
        QTest::addColumn<bool>("tripRuns");
        QTest::addColumn<int>("asks");  // the second within the first's second
        const QStringList start{WriteFrame("001A", "2000"), WriteFrame("001A", "0000"), kPoll};
        QTest::newRow("start") << "lblBdStart" << true << start << true << 1;
        QTest::newRow("start answered No") << "lblBdStart" << false << QStringList() << false << 1;
        QTest::newRow("cancel") << "lblBdCancel" << true
                                << QStringList{WriteFrame("001A", "4000"), WriteFrame("001A", "0000"), kPoll} << false << 1;
        QTest::newRow("start asked twice, sent once") << "lblBdStart" << true << start << true << 2;
    }
    void command()
    {
        QFETCH(QString, button);
        QFETCH(bool, yes);
        QFETCH(QStringList, frames);
        QFETCH(bool, tripRuns);
        QFETCH(int, asks);
        h->sim.setHoistTrip(1000, 1);
        if (button == QLatin1String("lblBdCancel"))  // a trip under way
            h->sim.handleFrame(WriteFrame("001A", "2000").toLatin1());
        h->sim.setSBit(215, true);  // another bit of the same two bytes
        QVERIFY(open());
        ClickOn(Ctl(f, QStringLiteral("LblBd(1)")));
        WaitIdle();
        QElapsedTimer sinceClick;
        sinceClick.start();
        for (int a = 0; a < asks; ++a) {
            if (a > 0)
                QTRY_VERIFY(Link().Timer3.remainingTime() < 800);
            mb->queue(yes);
            ClickOn(Ctl(f, button));
        }
        QCOMPARE(mb->texts, QStringList(asks, kAsk));
        QCOMPARE(Link().Timer1.isActive(), !yes);  // No: the poll goes on
        QCOMPARE(Link().Timer3.isActive() ? Link().Timer3.interval() : 0, yes ? 1000 : 0);
        if (asks > 1)  // the countdown of the first goes on
            QVERIFY(Link().Timer3.remainingTime() < 900);
        WaitIdle();
        h->takeFrames();  // the read that was in flight
        QStringList seen;
        if (yes) {
            // The command waits for the tick of Timer3, a second after the click.
            QTRY_COMPARE_WITH_TIMEOUT((seen += h->takeFrames()).mid(0, 3), frames, 3000);
            QVERIFY2(sinceClick.elapsed() >= 900, qPrintable(QString::number(sinceClick.elapsed())));
            QVERIFY(!Link().Timer3.isActive());
            QVERIFY(Link().Timer1.isActive());
            QCOMPARE(h->sim.sBit(215), false);  // the clear takes the neighbours with it
        } else {
            QVERIFY(!HoistCmdPending);
            QTRY_VERIFY((seen += h->takeFrames()).size() >= 2);
            QCOMPARE(seen, QStringList(seen.size(), kPoll));
        }
        QCOMPARE(h->sim.hoistRunning(), tripRuns);
    }

    // A whole trip as the operator watches it: the counters climb and the skip reaches the top.
    void tripClimbs()
    {
        QVERIFY(open());
        ClickOn(Ctl(f, QStringLiteral("LblBd(1)")));
        ClickOn(Ctl(f, QStringLiteral("lblBdStart")));
        Link().timer3Tick();
        QTRY_COMPARE(f->LblPulseNum[2]->text(), QStringLiteral("500"));
        QTRY_COMPARE(f->ImageMove->pos(), skipAt(40));
        QCOMPARE(f->LblPulseNum[1]->text(), QStringLiteral("200"));
    }

    void counts_data()
    {
        QTest::addColumn<QList<int>>("words");  // D291..D295
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<int>("step");  // of the figure; -1: it stays at rest
        QTest::newRow("half way") << QList<int>{250, 200, 500, 300, 400} << QStringList{"250", "200", "500", "300", "400"} << 20;
        QTest::newRow("nothing calibrated") << QList<int>{250, 0, 0, 100, 2000} << QStringList{"250", "0", "0", "100", "2000"} << -1;
        QTest::newRow("40000 reads negative")
            << QList<int>{40000, 1, 40000, 40000, 100} << QStringList{"-25536", "1", "-25536", "-25536", "100"} << -1;
    }
    void counts()
    {
        QFETCH(QList<int>, words);
        QFETCH(QStringList, shown);
        QFETCH(int, step);
        for (int i = 0; i < 5; ++i)
            h->sim.setWord(291 + i, short(words[i]));
        QVERIFY(open());
        QStringList labels;
        for (QLabel* l : f->LblPulseNum)
            labels << l->text();
        QCOMPARE(labels, shown);
        QCOMPARE(f->txtPulseNum[0]->text(), shown[3]);
        QCOMPARE(f->txtPulseNum[1]->text(), shown[4]);
        QCOMPARE(f->ImageMove->pos(), skipAt(step < 0 ? 0 : step));
    }

    void decel_data()
    {
        QTest::addColumn<QString>("up");  // typed
        QTest::addColumn<QString>("down");
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<QStringList>("boxes");
        QTest::addColumn<QStringList>("frames");
        const QString ask = QStringLiteral("是否设定当前参数?");
        const QString up = QStringLiteral("请检查!上升提前减速脉冲数的输入范围为:(100-2000)");
        const QString down = QStringLiteral("请检查!下降提前减速脉冲数的输入范围为:(100-2000)");
        QTest::newRow("100 and 2000") << "100" << "2000" << QList<bool>{true} << QStringList{ask}
                                      << QStringList{decelWrite(100, 2000)};
        QTest::newRow("99 up") << "99" << "500" << QList<bool>{true} << QStringList{up} << QStringList();
        QTest::newRow("2001 down") << "500" << "2001" << QList<bool>{false} << QStringList{down} << QStringList();
        QTest::newRow("no point can be typed") << "1.50" << "5.00" << QList<bool>{true} << QStringList{ask}
                                               << QStringList{decelWrite(150, 500)};
        QTest::newRow("four digits at most") << "20005" << "300" << QList<bool>{true} << QStringList{ask}
                                             << QStringList{decelWrite(2000, 300)};
        QTest::newRow("answered No") << "300" << "300" << QList<bool>{false} << QStringList{ask} << QStringList();
    }
    void decel()
    {
        QFETCH(QString, up);
        QFETCH(QString, down);
        QFETCH(QList<bool>, answers);
        QFETCH(QStringList, boxes);
        QFETCH(QStringList, frames);
        QVERIFY(open());
        h->takeFrames();
        for (int i = 0; i < 2; ++i) {
            f->txtPulseNum[size_t(i)]->clear();
            QTest::keyClicks(f->txtPulseNum[size_t(i)], i == 0 ? up : down);
        }
        for (bool a : answers)
            mb->queue(a);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, boxes);
        QCOMPARE(mb->okOnly, QList<bool>(boxes.size(), false));  // questions, even for a range
        WaitIdle();
        QCOMPARE(h->takeFrames(), frames);
        QCOMPARE(HoistParamSaved, !frames.isEmpty());
        if (!frames.isEmpty()) {
            QTRY_COMPARE(f->LbLCssdS->text(), QStringLiteral("参数设定成功!"));
            QCOMPARE(TextColor(f->LbLCssdS), QColor(0, 0x80, 0));
            QCOMPARE(h->sim.word(295), short(f->txtPulseNum[1]->text().toInt()));
            // A set answered while the calibration tab is up is seen there as well.
            ClickOn(Ctl(f, QStringLiteral("LblBd(1)")));
            f->WriteDecel();
            QTRY_COMPARE(f->LbLCssdS->isVisible() ? Status(f->LbLCssdS) : QString(), QStringLiteral("参数设定成功!/#008000"));
        }
    }

    void statusWord_data()
    {
        QTest::addColumn<bool>("start");
        QTest::addColumn<bool>("shownBefore");
        QTest::addColumn<QString>("reply");
        QTest::addColumn<QString>("line");  // empty: hidden
        QTest::addColumn<bool>("red");
        QTest::addColumn<bool>("polling");
        QTest::addColumn<int>("reads");
        QTest::newRow("8000 after start") << true << false << "8000" << "提升斗标定完成!" << false << false << 1;
        QTest::newRow("8000 after cancel") << false << false << "8000" << "提升斗取消标定完成!" << false << false << 1;
        QTest::newRow("8000 shown before") << true << true << "8000" << "" << false << false << 1;
        QTest::newRow("4000 after start") << true << false << "4000" << "提升斗标定失败，请重新标定!" << true << true << 1;
        QTest::newRow("4000 after cancel") << false << false << "4000" << "提升斗取消标定失败，请重新尝试!" << true << true << 1;
        // Both bits: the done text, and each branch reads once more.
        QTest::newRow("C000: done wins") << true << false << "C000" << "提升斗标定完成!" << false << true << 2;
        QTest::newRow("0000 after start") << true << false << "0000" << "提升斗标定错误，请重新标定!" << true << true << 1;
        QTest::newRow("0000 shown before") << false << true << "0000" << "提升斗取消标定错误，请重新尝试!" << true << true << 1;
        QTest::newRow("three digits") << true << false << "800" << "" << false << false << 0;
    }
    void statusWord()
    {
        QFETCH(bool, start);
        QFETCH(bool, shownBefore);
        QFETCH(QString, reply);
        QFETCH(QString, line);
        QFETCH(bool, red);
        QFETCH(bool, polling);
        QFETCH(int, reads);
        QVERIFY(open());
        h->takeFrames();
        f->BcStart = start;
        f->BcResultShown = shownBefore;
        SetSlot(QStringLiteral("YiBiaoAdvance"), QStringLiteral("txtBCSuccessRead"), reply);
        QCOMPARE(f->LbLBZwc->isHidden() ? QString() : f->LbLBZwc->text(), line);
        if (!line.isEmpty())
            QCOMPARE(TextColor(f->LbLBZwc), red ? QColor(0xFF, 0, 0) : QColor(0, 0x80, 0));
        QCOMPARE(Link().Timer1.isActive(), polling);
        QCOMPARE(f->txtBCSuccessRead->text(), reply.size() == 4 ? QStringLiteral("XXX") : reply);
        WaitIdle();
        QCOMPARE(h->takeFrames(), QStringList(reads, kPoll));
    }

private:
    bool open()
    {
        Forms::show(QStringLiteral("YiBiaoAdvance"));
        f = qobject_cast<YiBiaoAdvance*>(Forms::loaded(QStringLiteral("YiBiaoAdvance")));
        return f && QTest::qWaitFor([] { return HoistPollOn; });
    }

    YiBiaoAdvance* f = nullptr;
};

QTEST_MAIN(YiBiaoAdvanceTest)
#include "yi_biao_advance_test.moc"
