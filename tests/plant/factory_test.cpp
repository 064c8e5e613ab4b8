#include "plant_rig.h"

#include "plant/factory.h"

#include <memory>


namespace {
const QString kCode = QStringLiteral("61730428");
const QString kSet = WriteFrame("001A", "1000");  // S212 on, the rest of S208..S223 off
const QString kClear = WriteFrame("001A", "0000");
const QString kBusy = QStringLiteral("正在出厂设置,请稍候.../#ff0000/shown");
const QString kDone = QStringLiteral("出厂设置成功!/#008000/shown");
const QStringList kFour(4, QStringLiteral("12345678"));

// Codes typed in turn ("return": back to Other and in again); outcome "gate", "action" or "ended".
const struct { const char* name; QStringList codes; int wrongBoxes; QString outcome; } kGate[] = {
    {"the code", {kCode}, 0, "action"},
    {"empty is wrong", {""}, 1, "gate"},
    {"seven of eight digits", {"6173042"}, 1, "gate"},
    {"the code with a blank", {kCode + " "}, 1, "gate"},
    {"four wrong, then the code", kFour + QStringList{kCode}, 4, "action"},
    {"four wrong, back to Other, one more", kFour + QStringList{"return", "1"}, 4, "ended"},
    {"the code does not reset the count", kFour + QStringList{kCode, "return", "1"}, 4, "ended"},
    {"five wrong", kFour + QStringList{"1"}, 4, "ended"},
};

// The status line after each reply. "clear lost": the first clear takes effect but its answer is lost, so
// Timer2 sends it again; the caption follows the set and stands already. Never acknowledged: the progress
// line stays, red, after the link fault.
const struct { const char* name; bool yes; int naks; bool clearLost; QStringList frames, statuses; } kPulse[] = {
    {"set and cleared", true, 0, false, {kSet, kClear}, {kBusy, kDone, kDone}},
    {"answered No", false, 0, false, {}, {"/#000000/hidden"}},
    {"clear unanswered", true, 0, true, {kSet, kClear, kClear}, {kBusy, kDone, kDone}},
    {"set refused every time", true, 9, false, QStringList(9, kSet), QStringList(10, kBusy)},
};
}  // namespace

// The factory form: its gate, whose wrong codes count for the whole run, and the pulse of S212.
class FactoryTest : public QObject, PlantRig {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterPlantWith({"Other", "PLC"}); }
    void init()
    {
        setUp();
        FactoryWrongCodes = 0;
    }
    void cleanup() { tearDown(); }

    void gate_data() { TableRows(kGate); }
    void gate()
    {
        const auto& c = TableRow(kGate);
        Forms::show(QStringLiteral("PLC"));
        auto* f = show<Factory>("Factory");
        QTest::keyClicks(f->txtPassword, QStringLiteral("617"));
        QCOMPARE(f->txtPassword->displayText(), QStringLiteral("***"));
        for (const QString& code : c.codes) {
            if (code == QLatin1String("return")) {
                ClickOn(Ctl(f->picCom->isHidden() ? f->PicForm : f->picCom,
                            f->picCom->isHidden() ? QStringLiteral("lblReturn") : QStringLiteral("lblReturn2")));
                QTRY_VERIFY(!Forms::loaded(QStringLiteral("Factory")));
                QVERIFY(Forms::loaded(QStringLiteral("Other"))->isVisible());
                f = show<Factory>("Factory");
                continue;
            }
            f->txtPassword->setText(code);
            QTest::keyClick(f->txtPassword, Qt::Key_Return);
        }
        const bool ended = c.outcome == QLatin1String("ended");
        QStringList boxes(c.wrongBoxes, QStringLiteral("密码错误!"));
        if (ended)
            boxes << QStringLiteral("密码错误已5次，程序将退出！");
        QCOMPARE(mb->texts, boxes);
        QCOMPARE(mb->errorIcons.value(c.wrongBoxes), ended);
        QCOMPARE(h->endedProcess, ended ? 0 : -1);
        QVERIFY(!h->programEnded);  // not through the saving exit path
        if (ended) {
            QTRY_VERIFY(!Forms::loaded(QStringLiteral("Factory")));
            QVERIFY(!Forms::loaded(QStringLiteral("PLC")));
            return;
        }
        const bool action = c.outcome == QLatin1String("action");
        const QList<bool> hidden{f->picCom->isHidden(), f->PicForm->isHidden(), Ctl(f, "LblBd")->isHidden()};
        QCOMPARE(hidden, (QList<bool>{action, !action, !action}));
        QCOMPARE(f->txtPassword->text(), action ? QString() : c.codes.last());
    }

    void pulse_data() { TableRows(kPulse); }
    void pulse()
    {
        const auto& c = TableRow(kPulse);
        h->sim.setWord(294, 800);
        h->sim.setSBit(215, true);  // a neighbour in the same two bytes
        auto* f = show<Factory>("Factory");
        f->txtPassword->setText(kCode);
        ClickOn(Ctl(f, QStringLiteral("lblOK")));
        QVERIFY(!f->PicForm->isHidden());
        auto once = std::make_shared<bool>(c.clearLost);
        connect(&h->sim, &plcsim::Controller::requestReceived, this, [this, once](const QByteArray& r) {
            if (*once && r == kClear.toLatin1()) {
                *once = false;
                h->sim.injectFault(Fault::NoReply, 1);
            }
        });
        mb->queue(c.yes);
        QCOMPARE(statusPerReply(f->LbLCssdS, Ctl(f, "lblBdOk"), c.naks), c.statuses);
        QCOMPARE(mb->texts.value(0), QStringLiteral("是否进行出厂设置?"));
        QCOMPARE(h->takeFrames(), c.frames);
        const bool taken = c.frames.contains(kClear);
        QCOMPARE(mb->texts.size(), c.yes && !taken ? 2 : 1);  // the link fault after the ninth refusal
        QCOMPARE(h->sim.word(294), short(taken ? 300 : 800));  // the controller took its factory state
        QCOMPARE(h->sim.sBit(212), false);
        QCOMPARE(h->sim.sBit(215), !taken);
    }
};

QTEST_MAIN(FactoryTest)
#include "factory_test.moc"
