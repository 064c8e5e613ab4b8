#include "plant_rig.h"

#include "plant/factory.h"

#include <QFrame>
#include <memory>

namespace {
const QString kCode = QStringLiteral("61730428");
const QString kWrong = QStringLiteral("密码错误!");
const QString kFifth = QStringLiteral("密码错误已5次，程序将退出！");
const QString kSet = WriteFrame("001A", "1000");  // S212 on, the rest of S208..S223 off
const QString kClear = WriteFrame("001A", "0000");
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

    void gate_data()
    {
        QTest::addColumn<QStringList>("codes");  // typed in turn; "return": back to Other and in again
        QTest::addColumn<int>("wrongBoxes");
        QTest::addColumn<QString>("outcome");  // "gate", "action" or "ended"
        const QStringList four(4, QStringLiteral("12345678"));
        QTest::newRow("the code") << QStringList{kCode} << 0 << "action";
        QTest::newRow("empty is wrong") << QStringList{""} << 1 << "gate";
        QTest::newRow("seven of eight digits") << QStringList{"6173042"} << 1 << "gate";
        QTest::newRow("the code with a blank") << QStringList{kCode + " "} << 1 << "gate";
        QTest::newRow("four wrong, then the code") << four + QStringList{kCode} << 4 << "action";
        QTest::newRow("four wrong, back to Other, one more") << four + QStringList{"return", "1"} << 4 << "ended";
        QTest::newRow("the code does not reset the count")
            << four + QStringList{kCode, "return", "1"} << 4 << "ended";
        QTest::newRow("five wrong") << four + QStringList{"1"} << 4 << "ended";
    }
    void gate()
    {
        QFETCH(QStringList, codes);
        QFETCH(int, wrongBoxes);
        QFETCH(QString, outcome);
        Forms::show(QStringLiteral("PLC"));
        auto* f = open();
        QTest::keyClicks(f->txtPassword, QStringLiteral("617"));
        QCOMPARE(f->txtPassword->displayText(), QStringLiteral("***"));
        for (const QString& c : codes) {
            if (c == QLatin1String("return")) {
                ClickOn(Ctl(f->picCom->isHidden() ? f->PicForm : f->picCom,
                            f->picCom->isHidden() ? QStringLiteral("lblReturn") : QStringLiteral("lblReturn2")));
                QTRY_VERIFY(!Forms::loaded(QStringLiteral("Factory")));
                QVERIFY(Forms::loaded(QStringLiteral("Other"))->isVisible());
                f = open();
                continue;
            }
            f->txtPassword->setText(c);
            QTest::keyClick(f->txtPassword, Qt::Key_Return);
        }
        const bool ended = outcome == QLatin1String("ended");
        QStringList boxes(wrongBoxes, kWrong);
        if (ended)
            boxes << kFifth;
        QCOMPARE(mb->texts, boxes);
        QCOMPARE(mb->errorIcons.value(wrongBoxes), ended);
        QCOMPARE(h->endedProcess, ended ? 0 : -1);
        QVERIFY(!h->programEnded);  // not through the saving exit path
        if (ended) {
            QTRY_VERIFY(!Forms::loaded(QStringLiteral("Factory")));
            QVERIFY(!Forms::loaded(QStringLiteral("PLC")));
            return;
        }
        QCOMPARE(f->picCom->isHidden(), outcome == QLatin1String("action"));
        QCOMPARE(f->PicForm->isHidden(), outcome == QLatin1String("gate"));
        QCOMPARE(Ctl(f, QStringLiteral("LblBd"))->isHidden(), outcome == QLatin1String("gate"));
        // A wrong code stays in the box; the right one is cleared.
        QCOMPARE(f->txtPassword->text(), outcome == QLatin1String("action") ? QString() : codes.last());
    }

    void pulse_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QStringList>("frames");
        QTest::addColumn<QString>("status");
        QTest::newRow("set and cleared") << true << "" << QStringList{kSet, kClear} << "出厂设置成功!";
        QTest::newRow("answered No") << false << "" << QStringList() << "";
        QTest::newRow("set refused once") << true << "nak" << QStringList{kSet, kSet, kClear} << "出厂设置成功!";
        // The caption follows the set: it stands although the clear is still unanswered.
        QTest::newRow("clear unanswered") << true << "clear lost" << QStringList{kSet, kClear, kClear} << "出厂设置成功!";
        // Never acknowledged: the progress line stands, in red, after the link fault.
        QTest::newRow("set refused every time") << true << "nak 9" << QStringList(9, kSet) << "正在出厂设置,请稍候...";
    }
    void pulse()
    {
        QFETCH(bool, yes);
        QFETCH(QString, fault);
        QFETCH(QStringList, frames);
        QFETCH(QString, status);
        h->sim.setWord(294, 800);
        h->sim.setSBit(215, true);  // a neighbour in the same two bytes
        auto* f = open();
        f->txtPassword->setText(kCode);
        ClickOn(Ctl(f, QStringLiteral("lblOK")));
        QVERIFY(!f->PicForm->isHidden());
        if (fault.startsWith(QLatin1String("nak")))
            h->sim.injectFault(Fault::Nak, fault == QLatin1String("nak") ? 1 : 9);
        if (fault == QLatin1String("clear lost")) {
            // The first clear takes effect but its answer is lost; Timer2 sends it again.
            auto once = std::make_shared<bool>(true);
            connect(&h->sim, &plcsim::Controller::requestReceived, this, [this, once](const QByteArray& r) {
                if (*once && r == kClear.toLatin1()) {
                    *once = false;
                    h->sim.injectFault(Fault::NoReply, 1);
                }
            });
        }
        mb->queue(yes);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts.value(0), QStringLiteral("是否进行出厂设置?"));
        const bool taken = yes && fault != QLatin1String("nak 9");
        QStringList seen;
        const auto sent = [&] { return seen += h->takeFrames(); };
        QTRY_COMPARE(f->LbLCssdS->isHidden() ? QString() : f->LbLCssdS->text(), status);
        if (yes)
            QCOMPARE(TextColor(f->LbLCssdS), taken ? QColor(0, 0x80, 0) : QColor(0xFF, 0, 0));
        if (fault == QLatin1String("clear lost"))
            QCOMPARE(sent().count(kClear), 1);  // green before the clear is answered
        QTRY_COMPARE(sent(), frames);
        WaitIdle();
        QCOMPARE(sent(), frames);
        QCOMPARE(mb->texts.size(), yes && !taken ? 2 : 1);  // the link fault after the ninth refusal
        QCOMPARE(h->sim.word(294), short(taken ? 300 : 800));  // the controller took its factory state
        QCOMPARE(h->sim.sBit(212), false);
        QCOMPARE(h->sim.sBit(215), !taken);
    }

private:
    Factory* open()
    {
        Forms::show(QStringLiteral("Factory"));
        return qobject_cast<Factory*>(Forms::loaded(QStringLiteral("Factory")));
    }

};

QTEST_MAIN(FactoryTest)
#include "factory_test.moc"
