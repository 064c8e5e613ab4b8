#include "plant_rig.h"

#include "plant/sensor.h"

namespace {
const QString kRead = Frame(QStringLiteral("011901C"));  // D200, 28 bytes
const QString kDone = QStringLiteral("传感器配置设定成功!");
const QString kRange = QStringLiteral("请检查!传感器配置设定的输入范围为:");
const QString kAskSet = QStringLiteral("是否设定当前参数?");
const QString kAskReturn = QStringLiteral("传感器配置更改后未设定，是否返回?");
// Fields typed with each scale's decimals (defaults: 0 for 0-5 and 8, 1 for 6, 7, 9, 10, 2 for 11-13).
const QString kWrite = Frame(QStringLiteral("111901C") +
                             WordsHex({2500, 0, 0, 0, 0, 0, 15005, 1, 30000, 0, 0, 23456, 30000, 0}));

// Then keys typed into the box: letters and a second point are swallowed, six characters at most, and
// Enter rounds to the scale's decimals.
const struct { const char* name; int scale; QString scaleName; int decimals, raw; QString shown, tip;
    QString keys, typed, afterEnter; } kReads[] = {
    {"two decimals", 12, "外加剂2", 2, 23456, "234.56", "输入范围为:(0-300kg)", "1a2.1.25", "12.125", "12.13"},
    {"one decimal", 7, "水秤", 1, 15005, "1500.5", "输入范围为:(0-3000kg)", "1234567", "123456", "123456.0"},
    {"no decimals", 0, "骨料1", 0, 30000, "30000", "输入范围为:(0-30000kg)", "12.5", "12.5", "13"},
    {"above 32767 reads negative", 8, "水泥", 0, 40000, "-25536", "输入范围为:(0-30000kg)", "", "", ""},
    {"negative read shown whole", 11, "外加剂1", 2, 40000, "-255.36", "输入范围为:(0-300kg)", "", "", ""},
    {"spare scale is read too", 4, "", 1, 1234, "123.4", "输入范围为:(0-3000kg)", "", "", ""},
};

const QString kBusy = QStringLiteral("正在设定传感器配置,请稍候....../#ff0000/hidden");
const QString kDoneShown = kDone + "/#008000/shown";
const QString kRetry = QStringLiteral("正在尝试继续传感器配置设定!/#ff0000/shown");
// Eight re-sends refused as well: the red line stays and the link fault is told. Then the return, asked
// while the values are not set, answered with `leaveYes`.
const struct { const char* name; int naks, sends; bool yes; QStringList statuses; bool saved, leaveYes; } kWrites[] = {
    {"acknowledged", 0, 1, true, {kBusy, kDoneShown}, true, false},
    {"refused every time", 9, 9, true, QStringList{kBusy} + QStringList(9, kRetry), false, false},
    {"answered No", 0, 0, false, {"/#000000/hidden"}, false, true},
};

// entry "default": the initialise button; "read": the scale's register read as 40000.
const struct { const char* name; int scale; QString entry, box; } kRanges[] = {
    {"no decimals, above 30000", 3, "30001", kRange + "(0-30000kg)"},
    {"negative read", 8, "read", kRange + "(0-30000kg)"},
    {"initialised, two decimals at 0", 0, "default", kRange + "(0-300kg)"},
};

const struct { const char* name; int empty; } kEmpty[] = {{"first", 0}, {"middle", 6}, {"last", 13}};
}  // namespace

class SensorTest : public QObject, PlantRig {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterPlantWith({"BcBut"}); }
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void readShowsEachScale_data() { TableRows(kReads); }
    void readShowsEachScale()
    {
        const auto& c = TableRow(kReads);
        ScaleName[size_t(c.scale)] = c.scaleName;
        ScaleDecimals[size_t(c.scale)] = short(c.decimals);
        h->sim.setWord(200 + c.scale, short(c.raw));
        QVERIFY(open());
        QCOMPARE(h->takeFrames(), QStringList{kRead});
        QLineEdit* box = Box(f, c.scale);
        QCOMPARE(box->text() + '|' + box->toolTip(), c.shown + '|' + c.tip);
        QCOMPARE(box->isEnabled(), !c.scaleName.isEmpty());
        QCOMPARE(Ctl<QLabel>(f, QStringLiteral("LblCansd(%1)").arg(c.scale))->text(),
                 c.scaleName.isEmpty() ? QStringLiteral("备用") : c.scaleName);
        QCOMPARE(SavedSensor.at(size_t(c.scale)), c.shown.toDouble());
        if (!c.keys.isEmpty()) {
            SensorSaved = true;
            f->LbLCssdS->show();
            box->clear();
            QTest::keyClicks(box, c.keys);
            QCOMPARE(box->text(), c.typed);
            QVERIFY(f->LbLCssdS->isHidden());
            QVERIFY(!SensorSaved);
            Box(f, 1)->setText(QStringLiteral("7.7"));
            QTest::keyClick(box, Qt::Key_Return);
            QCOMPARE(box->text(), c.afterEnter);
            QCOMPARE(Box(f, 1)->text(), QStringLiteral("8"));  // every field, not only this one
            WaitIdle();
            QVERIFY(h->takeFrames().isEmpty());
        }
        QCOMPARE(leave(Ctl(f, "lblReturn")), c.keys.isEmpty() ? QStringList() : QStringList{kAskReturn});
        QTRY_COMPARE(Forms::loaded(QStringLiteral("Sensor")) == nullptr, c.keys.isEmpty());
    }

    void writeBlock_data() { TableRows(kWrites); }
    void writeBlock()
    {
        const auto& c = TableRow(kWrites);
        for (int i = 0; i < 14; ++i)
            h->sim.setWord(200 + i, 0);
        QVERIFY(open());
        h->takeFrames();
        Edit(f, {"0=2500", "6=1500.5", "7=0.1", "8=30000", "11=234.56", "12=300"});
        mb->queue(c.yes);
        QCOMPARE(statusPerReply(f->LbLCssdS, Ctl(f, "lblBdOk"), c.naks), c.statuses);
        QCOMPARE(h->takeFrames(), QStringList(c.sends, kWrite));
        QCOMPARE(mb->texts.value(0), kAskSet);
        QCOMPARE(mb->texts.size(), c.saved || !c.yes ? 1 : 2);  // the link fault after the ninth refusal
        QCOMPARE(SensorSaved, c.saved);
        // The twins hold the registers either way; the controller only after an acknowledged write.
        QCOMPARE(f->TxtDCansdMulTen[11]->text(), QStringLiteral("23456"));
        QCOMPARE(h->sim.word(211), short(c.saved ? 23456 : 0));
        QCOMPARE(Box(f, 7)->text(), QStringLiteral("0.1"));
        QCOMPARE(leave(Ctl(f, "lblReturn"), c.leaveYes), c.saved ? QStringList() : QStringList{kAskReturn});
        QTRY_COMPARE(Forms::loaded(QStringLiteral("Sensor")) == nullptr, c.saved || c.leaveYes);
        QCOMPARE(Forms::loaded(QStringLiteral("BcBut")) != nullptr, c.saved || c.leaveYes);
    }

    void rangeRefused_data() { TableRows(kRanges); }
    void rangeRefused()
    {
        const auto& c = TableRow(kRanges);
        if (c.entry == QLatin1String("default"))
            ScaleDecimals[0] = 2;
        if (c.entry == QLatin1String("read"))
            h->sim.setWord(200 + c.scale, short(40000));
        QVERIFY(open());
        h->takeFrames();
        if (c.entry == QLatin1String("default"))
            ClickOn(Ctl(f, QStringLiteral("lblDefault")));
        else if (c.entry != QLatin1String("read"))
            Box(f, c.scale)->setText(c.entry);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, QStringList{c.box});
        QCOMPARE(mb->okOnly, QList<bool>{true});
        WaitIdle();
        QVERIFY(h->takeFrames().isEmpty());
        const bool changed = c.entry != QLatin1String("read");
        QCOMPARE(leave(Ctl(f, "lblReturn")), changed ? QStringList{kAskReturn} : QStringList());
        QTRY_COMPARE(Forms::loaded(QStringLiteral("Sensor")) != nullptr, changed);
    }

    // An empty source blanks what was assembled before it; the words after keep their places.
    void emptySourceKeepsWidth_data() { TableRows(kEmpty); }
    void emptySourceKeepsWidth()
    {
        const int empty = TableRow(kEmpty).empty;
        QVERIFY(open());
        QList<int> after;
        for (int i = 0; i < 14; ++i) {
            f->TxtDCansdMulTen[size_t(i)]->setText(i == empty ? QString() : QString::number(100 + i));
            if (i > empty)
                after << 100 + i;
        }
        StepNo = 74;
        const QString data = QString(4 * (empty + 1), QLatin1Char(' ')) + WordsHex(after);
        QCOMPARE(GetWrite_PLCD(QStringLiteral("D200"), 14), Frame(QStringLiteral("111901C") + data));
    }

private:
    bool open()
    {
        f = show<Sensor>("Sensor");
        return f && QTest::qWaitFor([] { return SensorReadDone && SendFlag && !Link().Timer2.isActive(); });
    }

    Sensor* f = nullptr;
};

QTEST_MAIN(SensorTest)
#include "sensor_test.moc"
