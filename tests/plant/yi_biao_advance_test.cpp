#include "plant_rig.h"

#include "plant/yi_biao_advance.h"

namespace {
const QString kPoll = Frame(QStringLiteral("012460A"));  // D291, 10 bytes
const QString kAsk = QStringLiteral("确定斗提位置标定吗?");

QString decelWrite(int up, int down) { return Frame(QStringLiteral("1124C04") + WordsHex({up, down})); }

// The skip's corner on its panel in pixels, from twips.
QPoint skipAt(int q) { return {qRound((q * 50 + 4260) / 15.0), qRound((3450 - q * 60) / 15.0)}; }

// D291..D295 as loaded and as shown, the step of the figure (0 also at rest), then tabs clicked in turn
// (-1: return).
const struct { const char* name; QList<int> words; QString shown; int step; QList<int> clicks; bool polling; }
    kPolls[] = {
    {"half way, the load reads once", {250, 200, 500, 300, 400}, "250|200|500|300|400", 20, {}, false},
    {"at the top, the calibration tab polls", {500, 200, 500, 300, 400}, "500|200|500|300|400", 40, {1}, true},
    {"nothing calibrated, the parameter tab stops it", {250, 0, 0, 100, 2000}, "250|0|0|100|2000", 0, {1, 0}, false},
    {"40000 reads negative, return stops it", {40000, 1, 40000, 40000, 100}, "-25536|1|-25536|-25536|100", 0,
     {1, -1}, false},
};

// Frames from the tick of Timer3 on; asks: the second within the first's second.
const QStringList kStart{WriteFrame("001A", "2000"), WriteFrame("001A", "0000"), kPoll};
const struct { const char* name; QString button; bool yes; QStringList frames; bool tripRuns; int asks; }
    kCommands[] = {
    {"start", "lblBdStart", true, kStart, true, 1},
    {"start answered No", "lblBdStart", false, {}, false, 1},
    {"cancel", "lblBdCancel", true, {WriteFrame("001A", "4000"), WriteFrame("001A", "0000"), kPoll}, false, 1},
    {"start asked twice, sent once", "lblBdStart", true, kStart, true, 2},
};

const QString kAskSet = QStringLiteral("是否设定当前参数?");
const QString kDown = QStringLiteral("请检查!下降提前减速脉冲数的输入范围为:(100-2000)");
const struct { const char* name; QString up, down; bool yes; QStringList boxes, frames; } kDecels[] = {
    {"100 and 2000", "100", "2000", true, {kAskSet}, {decelWrite(100, 2000)}},
    {"2001 down", "500", "2001", true, {kDown}, {}},
    {"no point can be typed", "1.50", "5.00", true, {kAskSet}, {decelWrite(150, 500)}},
    {"four digits at most", "20005", "300", true, {kAskSet}, {decelWrite(2000, 300)}},
    {"answered No", "300", "300", false, {kAskSet}, {}},
};

// line empty: hidden. C000 has both bits: the done text, and each branch reads once more.
const struct { const char* name; bool start, shownBefore; QString reply, line; bool polling; int reads; } kStatus[] = {
    {"8000 after start", true, false, "8000", "提升斗标定完成!/#008000", false, 1},
    {"8000 after cancel", false, false, "8000", "提升斗取消标定完成!/#008000", false, 1},
    {"8000 shown before", true, true, "8000", "", false, 1},
    {"4000 after start", true, false, "4000", "提升斗标定失败，请重新标定!/#ff0000", true, 1},
    {"4000 after cancel", false, false, "4000", "提升斗取消标定失败，请重新尝试!/#ff0000", true, 1},
    {"C000: done wins", true, false, "C000", "提升斗标定完成!/#008000", true, 2},
    {"0000 after start", true, false, "0000", "提升斗标定错误，请重新标定!/#ff0000", true, 1},
    {"0000 shown before", false, true, "0000", "提升斗取消标定错误，请重新尝试!/#ff0000", true, 1},
    {"three digits", true, false, "800", "", false, 0},
};
}  // namespace

class YiBiaoAdvanceTest : public QObject, PlantRig {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterPlantWith({"PLC"}); }
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void loadAndPoll_data() { TableRows(kPolls); }
    void loadAndPoll()
    {
        const auto& [name, words, shown, step, clicks, polling] = TableRow(kPolls);
        for (int i = 0; i < 5; ++i)
            h->sim.setWord(291 + i, short(words[i]));
        QVERIFY(open());
        QStringList labels;
        for (QLabel* l : f->LblPulseNum)
            labels << l->text();
        QCOMPARE(labels.join('|'), shown);
        QCOMPARE(f->txtPulseNum[0]->text() + '|' + f->txtPulseNum[1]->text(), shown.section('|', 3));
        QCOMPARE(f->ImageMove->pos(), skipAt(step));
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

    void command_data() { TableRows(kCommands); }
    void command()
    {
        const auto& [name, button, yes, frames, tripRuns, asks] = TableRow(kCommands);
        h->sim.setHoistTrip(1000, 1);
        if (button == QLatin1String("lblBdCancel"))  // a trip under way
            h->sim.handleFrame(WriteFrame("001A", "2000").toLatin1());
        h->sim.setSBit(215, true);  // another bit of the same two bytes
        QVERIFY(open());
        ClickOn(Ctl(f, QStringLiteral("LblBd(1)")));
        WaitIdle();
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

    void decel_data() { TableRows(kDecels); }
    void decel()
    {
        const auto& [name, up, down, yes, boxes, frames] = TableRow(kDecels);
        QVERIFY(open());
        h->takeFrames();
        for (int i = 0; i < 2; ++i) {
            f->txtPulseNum[size_t(i)]->clear();
            QTest::keyClicks(f->txtPulseNum[size_t(i)], i == 0 ? up : down);
        }
        mb->queue(yes);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, boxes);
        QCOMPARE(mb->okOnly, QList<bool>(boxes.size(), false));  // questions, even for a range
        WaitIdle();
        QCOMPARE(h->takeFrames(), frames);
        QCOMPARE(HoistParamSaved, !frames.isEmpty());
        if (!frames.isEmpty()) {
            QTRY_COMPARE(Status(f->LbLCssdS), QStringLiteral("参数设定成功!/#008000"));
            QCOMPARE(h->sim.word(295), short(f->txtPulseNum[1]->text().toInt()));
            // A set answered while the calibration tab is up is seen there as well.
            ClickOn(Ctl(f, QStringLiteral("LblBd(1)")));
            f->WriteDecel();
            QTRY_COMPARE(f->LbLCssdS->isVisible() ? Status(f->LbLCssdS) : QString(),
                         QStringLiteral("参数设定成功!/#008000"));
        }
    }

    void statusWord_data() { TableRows(kStatus); }
    void statusWord()
    {
        const auto& [name, start, shownBefore, reply, line, polling, reads] = TableRow(kStatus);
        QVERIFY(open());
        h->takeFrames();
        f->BcStart = start;
        f->BcResultShown = shownBefore;
        SetSlot(QStringLiteral("YiBiaoAdvance"), QStringLiteral("txtBCSuccessRead"), reply);
        QCOMPARE(f->LbLBZwc->isHidden() ? QString() : Status(f->LbLBZwc), line);
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
