#include "plant_rig.h"

#include "common/scale_table.h"
#include "plant/zd_time.h"

namespace {
const QString kRead = Frame(QStringLiteral("0122038"));  // D272, 56 bytes
const QString kAskSet = QStringLiteral("是否设定当前时间参数?");
const QString kRange = QStringLiteral("请检查!振动时间设定的输入范围为:");

QString blockWrite(const QList<int>& words) { return Frame(QStringLiteral("1122038") + WordsHex(words)); }

// Field i at 10 i + from, the spare vibrator of scale 3 (fields 4 to 7) at its own four values.
QList<int> block(int from, const QList<int>& spare)
{
    QList<int> r;
    for (int i = 0; i < 28; ++i)
        r << (i >= 4 && i < 8 ? spare[i - 4] : 10 * i + from);
    return r;
}
// Registers shown rounded up to whole seconds, and the tenths they go back as; the spare ones show the rounding.
QList<int> registers() { return block(5, {35, 5, 4, 600}); }
QList<int> writtenBack() { return block(10, {40, 10, 0, 600}); }
}  // namespace

// The vibrator times on the wire against the simulator: titles from the scale table, the block read
// rounded to whole seconds and written back in tenths, the checks that skip spare vibrators, the return.
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
    void cleanup()
    {
        tearDown();
        f = nullptr;
    }

    void blockWritten_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("nak");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QList<int>>("words");
        // Spare vibrators go back with what they held, rounded like the others.
        QTest::newRow("as read, rounded") << "lblBdOk" << false << kAskSet << writtenBack();
        QList<int> defaults;
        for (int i = 0; i < 28; ++i)
            defaults << (i % 2 == 0 ? 30 : (i < 16 ? 60 : 10));
        QTest::newRow("defaults at once") << "cmdDefault" << false << QStringLiteral("是否要初始化参数?") << defaults;
        QTest::newRow("refused once, then taken") << "ImgBdOk" << true << kAskSet << writtenBack();
    }
    void blockWritten()
    {
        QFETCH(QString, button);
        QFETCH(bool, nak);
        QFETCH(QString, question);
        QFETCH(QList<int>, words);
        QStringList seen;  // the status line after each reply
        connect(&h->sim, &plcsim::Controller::reply, this, [&] {
            seen << (f ? Status(f->LbLCssdS) + (f->LbLCssdS->isVisible() ? "/shown" : "/hidden") : QString());
        });
        open();
        QCOMPARE(h->takeFrames(), QStringList{kRead});
        QStringList shown;
        QString enabled;
        for (int i = 0; i < 28; ++i) {
            shown << Box(f, i)->text();
            enabled += Box(f, i)->isEnabled() ? '1' : '0';
            QCOMPARE(SavedVib.at(size_t(i)), Box(f, i)->text().toDouble());
        }
        QCOMPARE(shown.join('|'), QStringLiteral("1|2|3|4|4|1|0|60|9|10|11|12|13|14|15|16|17|18|19|20|21|22|23|24|25|26|27|28"));
        QCOMPARE(enabled, QStringLiteral("1111000000001111111111111111"));
        QCOMPARE(title(2)->text() + '|' + title(3)->text() + '|' + title(4)->text(), QStringLiteral("秤2振动器|备用振动器|备用振动器"));
        QVERIFY(!title(3)->isEnabled());
        QCOMPARE(Box(f, 0)->toolTip() + Box(f, 1)->toolTip(), QStringLiteral("输入范围为:(1-60)S输入范围为:(0-60)S"));
        seen.clear();
        if (nak)
            h->sim.injectFault(Fault::Nak, 1);
        ClickOn(Ctl(f, button));
        QCOMPARE(Status(f->LbLCssdS), QStringLiteral("正在设定振动器时间,请稍候....../#ff0000"));
        QTRY_VERIFY(VibSaved);
        QCOMPARE(mb->texts, QStringList{question});
        QCOMPARE(h->takeFrames(), QStringList(nak ? 2 : 1, blockWrite(words)));
        QStringList expected{"振动器时间设定成功!/#008000/shown"};
        if (nak)
            expected.prepend("正在尝试继续振动器时间设定!/#ff0000/shown");
        QCOMPARE(seen, expected);
        for (int i = 0; i < 28; ++i)
            QCOMPARE(h->sim.word(272 + i), short(words[i]));
    }

    void checkSkipsSpareFields_data()
    {
        QTest::addColumn<QStringList>("edits");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("tab");
        QTest::addColumn<int>("focus");  // -1: the question came
        QTest::newRow("0 in a pause field") << QStringList{"0=0"} << kRange + "(1-60)S" << 0 << 0;
        QTest::newRow("0 passes in a vibration field, 61 does not") << QStringList{"1=0", "3=61"} << kRange + "(0-60)S" << 0 << 3;
        QTest::newRow("60 passes in both; a powder field opens its tab")
            << QStringList{"0=60", "1=60", "17=61"} << kRange + "(0-60)S" << 1 << 17;
        QTest::newRow("a spare vibrator is not checked") << QStringList{"4=99", "6=0"} << kAskSet << 0 << -1;
        QTest::newRow("the pair below the form keeps the tab") << QStringList{"26=0"} << kRange + "(1-60)S" << 0 << 26;
    }
    void checkSkipsSpareFields()
    {
        QFETCH(QStringList, edits);
        QFETCH(QString, message);
        QFETCH(int, tab);
        QFETCH(int, focus);
        open();
        h->takeFrames();
        Edit(f, edits);
        mb->queue(false);  // No to the question: nothing is written either way
        ClickOn(Ctl(f, "ImgBdOk"));
        QCOMPARE(mb->texts, QStringList{message});
        QCOMPARE(mb->okOnly, QList<bool>{focus >= 0});
        QCOMPARE(f->PicZDTime[1]->isVisible(), tab == 1);
        QCOMPARE(f->PicZDTime[0]->isVisible(), tab == 0);
        if (focus >= 0)
            QTRY_COMPARE(f->focusWidget(), Box(f, focus));
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());
    }

    // An empty source blanks what was assembled before it; the words after keep their places.
    void emptySourceKeepsTheFrameWidth_data()
    {
        QTest::addColumn<int>("empty");
        QTest::newRow("twelfth") << 11;
        QTest::newRow("last") << 27;
    }
    void emptySourceKeepsTheFrameWidth()
    {
        QFETCH(int, empty);
        open();
        const QList<int> words = writtenBack();
        for (int i = 0; i < 28; ++i)
            Link().TxtDCansd.at(size_t(i)) = i == empty ? QString() : QString::number(words[i]);
        StepNo = 72;
        QCOMPARE(GetWrite_PLCD(QStringLiteral("D272"), 28),
                 Frame(QStringLiteral("1122038") + QString(4 * (empty + 1), QLatin1Char(' ')) + WordsHex(words.mid(empty + 1))));
    }

    void questionOnReturn_data()
    {
        QTest::addColumn<QString>("after");  // what follows an edit
        QTest::addColumn<bool>("asked");
        QTest::newRow("edited, not written") << "" << true;
        QTest::newRow("written and acknowledged") << "write" << false;
        QTest::newRow("a key after the write") << "write key" << true;
        QTest::newRow("nothing edited") << "untouched" << false;
    }
    void questionOnReturn()
    {
        QFETCH(QString, after);
        QFETCH(bool, asked);
        open();
        if (after != QLatin1String("untouched"))
            Box(f, 8)->setText(QStringLiteral("30"));
        if (after.startsWith(QLatin1String("write"))) {
            ClickOn(Ctl(f, "ImgBdOk"));
            QTRY_VERIFY(VibSaved);
        }
        if (after.endsWith(QLatin1String("key")))
            QTest::keyClick(Box(f, 8), Qt::Key_Shift);
        mb->texts.clear();
        mb->queue(false);  // No: stay
        ClickOn(Ctl(f, "ImgReturn"));
        QCOMPARE(mb->texts, asked ? QStringList{QStringLiteral("振动器时间更改后未设定，是否返回?")} : QStringList());
        QTest::qWait(20);
        QCOMPARE(Forms::loaded(QStringLiteral("ZDTime")) != nullptr, asked);
        QCOMPARE(Forms::loaded(QStringLiteral("Other")) != nullptr, !asked);
    }

private:
    // Opens the form as its entry on the system function form does, and waits for the block.
    void open()
    {
        const QList<int> r = registers();
        for (int i = 0; i < 28; ++i)
            h->sim.setWord(272 + i, short(r[i]));
        Forms::show(QStringLiteral("ZDTime"));
        f = static_cast<ZDTime*>(Forms::loaded(QStringLiteral("ZDTime")));
        QVERIFY(f);
        QTRY_VERIFY(VibReadDone && SendFlag);
    }
    QLabel* title(int s) { return Ctl<QLabel>(f, QStringLiteral("lblTitleName(%1)").arg(s)); }

    ZDTime* f = nullptr;
};

QTEST_MAIN(ZDTimeTest)
#include "zd_time_test.moc"
