#include "plant_rig.h"

#include "plant/zd_time.h"

namespace {
const QString kAskSet = QStringLiteral("是否设定当前时间参数?");
const QString kRange = QStringLiteral("请检查!振动时间设定的输入范围为:");
const QString kAskReturn = QStringLiteral("振动器时间更改后未设定，是否返回?");

// Field i at 10 i + from, the spare vibrator of scale 3 (fields 4 to 7) at its own four values.
QList<int> block(int from, const QList<int>& spare)
{
    QList<int> r;
    for (int i = 0; i < 28; ++i)
        r << (i >= 4 && i < 8 ? spare[i - 4] : 10 * i + from);
    return r;
}
// Registers shown rounded up to whole seconds, and the tenths they go back as; spare ones show the rounding.
const QList<int> kRegisters = block(5, {35, 5, 4, 600});
const QList<int> kWrittenBack = block(10, {40, 10, 0, 600});

// Spare vibrators go back with what they held, rounded like the others. Then the return, answered No: an
// acknowledged write holds until a key is pressed in a box.
const struct { const char *name, *button; QStringList edits; QString question; QList<int> words; bool key; }
    kWrites[] = {
    {"as read, rounded", "lblBdOk", {}, kAskSet, kWrittenBack, false},
    {"defaults at once", "cmdDefault", {}, "是否要初始化参数?",
     {30, 60, 30, 60, 30, 60, 30, 60, 30, 60, 30, 60, 30, 60, 30, 60, 30, 10, 30, 10, 30, 10, 30, 10, 30, 10, 30, 10},
     false},
    {"edited, a key after the write", "ImgBdOk", {"8=30"}, kAskSet,
     kWrittenBack.mid(0, 8) << 300 << kWrittenBack.mid(9), true},
};

// focus -1: the question came. Then the return, answered No: asked whenever a value was changed.
const struct { const char* name; QStringList edits; QString message; int tab, focus; bool asked; } kChecks[] = {
    {"0 passes in a vibration field, 61 does not", {"1=0", "3=61"}, kRange + "(0-60)S", 0, 3, true},
    {"60 passes in both; a powder field opens its tab", {"0=60", "1=60", "17=61"}, kRange + "(0-60)S", 1, 17, true},
    {"a spare vibrator is not checked", {"4=99", "6=0"}, kAskSet, 0, -1, true},
    {"the pair below the form keeps the tab", {"26=0"}, kRange + "(1-60)S", 0, 26, true},
    {"typed as shown", {"6=0"}, kAskSet, 0, -1, false},
};
}  // namespace

class ZDTimeTest : public QObject, PlantRig {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterPlantWith({"Other"}); }
    void init()
    {
        setUp();
        SavedVib.fill(-1);
        // Scale 3 is named but has no vibrator, scale 4 has one but no name: both are spare.
        for (int s : {2, 3, 4, 5, 6, 8, 9, 10}) {
            ScaleName[size_t(s)] = s == 4 ? QString() : QStringLiteral("秤%1").arg(s);
            ScaleVibrator[size_t(s)] = s == 3 ? 0 : 1;
        }
    }
    void cleanup() { tearDown(); }

    void blockWritten_data() { TableRows(kWrites); }
    void blockWritten()
    {
        const auto& c = TableRow(kWrites);
        open();
        QCOMPARE(h->takeFrames(), QStringList{Frame(QStringLiteral("0122038"))});  // D272, 56 bytes
        QStringList shown;
        QString enabled;
        for (int i = 0; i < 28; ++i) {
            shown << Box(f, i)->text();
            enabled += Box(f, i)->isEnabled() ? '1' : '0';
            QCOMPARE(SavedVib.at(size_t(i)), Box(f, i)->text().toDouble());
        }
        QCOMPARE(shown.join('|'),
                 QStringLiteral("1|2|3|4|4|1|0|60|9|10|11|12|13|14|15|16|17|18|19|20|21|22|23|24|25|26|27|28"));
        QCOMPARE(enabled, QStringLiteral("1111000000001111111111111111"));
        QCOMPARE(title(2)->text() + '|' + title(3)->text() + '|' + title(4)->text(),
                 QStringLiteral("秤2振动器|备用振动器|备用振动器"));
        QVERIFY(!title(3)->isEnabled());
        QCOMPARE(Box(f, 0)->toolTip() + Box(f, 1)->toolTip(), QStringLiteral("输入范围为:(1-60)S输入范围为:(0-60)S"));
        Edit(f, c.edits);
        const QStringList seen{"正在设定振动器时间,请稍候....../#ff0000/hidden", "振动器时间设定成功!/#008000/shown"};
        QCOMPARE(statusPerReply(f->LbLCssdS, Ctl(f, c.button)), seen);
        QVERIFY(VibSaved);
        QCOMPARE(mb->texts, QStringList{c.question});
        QCOMPARE(h->takeFrames(), QStringList{Frame(QStringLiteral("1122038") + WordsHex(c.words))});
        for (int i = 0; i < 28; ++i)
            QCOMPARE(h->sim.word(272 + i), short(c.words[i]));
        if (c.key)
            QTest::keyClick(Box(f, 8), Qt::Key_Shift);
        QCOMPARE(leave(Ctl(f, "ImgReturn")), c.key ? QStringList{kAskReturn} : QStringList());
        QTest::qWait(20);
        QCOMPARE(Forms::loaded(QStringLiteral("ZDTime")) != nullptr, c.key);
        QCOMPARE(Forms::loaded(QStringLiteral("Other")) != nullptr, !c.key);
    }

    void checkSkipsSpareFields_data() { TableRows(kChecks); }
    void checkSkipsSpareFields()
    {
        const auto& c = TableRow(kChecks);
        open();
        h->takeFrames();
        Edit(f, c.edits);
        mb->queue(false);  // No to the question: nothing is written either way
        ClickOn(Ctl(f, "ImgBdOk"));
        QCOMPARE(mb->texts, QStringList{c.message});
        QCOMPARE(mb->okOnly, QList<bool>{c.focus >= 0});
        QCOMPARE(f->PicZDTime[1]->isVisible(), c.tab == 1);
        QCOMPARE(f->PicZDTime[0]->isVisible(), c.tab == 0);
        if (c.focus >= 0)
            QTRY_COMPARE(f->focusWidget(), Box(f, c.focus));
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());
        QCOMPARE(leave(Ctl(f, "ImgReturn")), c.asked ? QStringList{kAskReturn} : QStringList());
        QTest::qWait(20);
        QCOMPARE(Forms::loaded(QStringLiteral("ZDTime")) != nullptr, c.asked);
    }

private:
    void open()
    {
        for (int i = 0; i < 28; ++i)
            h->sim.setWord(272 + i, short(kRegisters[i]));
        f = show<ZDTime>("ZDTime");
        QVERIFY(f);
        QTRY_VERIFY(VibReadDone && SendFlag);
    }
    QLabel* title(int s) { return Ctl<QLabel>(f, QStringLiteral("lblTitleName(%1)").arg(s)); }

    ZDTime* f = nullptr;
};

QTEST_MAIN(ZDTimeTest)
#include "zd_time_test.moc"
