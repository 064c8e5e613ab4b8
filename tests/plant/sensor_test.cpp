#include "plant_rig.h"

#include "common/scale_table.h"
#include "plant/sensor.h"

namespace {
const QString kRead = Frame(QStringLiteral("011901C"));  // D200, 28 bytes
const QString kBusy = QStringLiteral("正在设定传感器配置,请稍候......");
const QString kDone = QStringLiteral("传感器配置设定成功!");
const QString kRange = QStringLiteral("请检查!传感器配置设定的输入范围为:");
const QString kAskReturn = QStringLiteral("传感器配置更改后未设定，是否返回?");

QString blockWrite(const QList<int>& words) { return Frame(QStringLiteral("111901C") + WordsHex(words)); }
}  // namespace

// The sensor form on the wire against the simulator: the read shown with each scale's decimals, the
// block write, its range check and the question on return.
class SensorTest : public QObject, PlantRig {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterPlantWith({"BcBut"}); }
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void readShowsEachScale_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<int>("raw");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("tip");
        QTest::newRow("two decimals") << 12 << "外加剂2" << 2 << 23456 << "234.56" << "输入范围为:(0-300kg)";
        QTest::newRow("one decimal") << 7 << "水秤" << 1 << 15005 << "1500.5" << "输入范围为:(0-3000kg)";
        QTest::newRow("no decimals") << 0 << "骨料1" << 0 << 30000 << "30000" << "输入范围为:(0-30000kg)";
        QTest::newRow("above 32767 reads negative") << 8 << "水泥" << 0 << 40000 << "-25536" << "输入范围为:(0-30000kg)";
        QTest::newRow("negative read shown whole") << 11 << "外加剂1" << 2 << 40000 << "-255.36" << "输入范围为:(0-300kg)";
        QTest::newRow("spare scale is read too") << 4 << "" << 1 << 1234 << "123.4" << "输入范围为:(0-3000kg)";
    }
    void readShowsEachScale()
    {
        QFETCH(int, scale);
        QFETCH(QString, name);
        QFETCH(int, decimals);
        QFETCH(int, raw);
        QFETCH(QString, shown);
        QFETCH(QString, tip);
        ScaleName[size_t(scale)] = name;
        ScaleDecimals[size_t(scale)] = short(decimals);
        h->sim.setWord(200 + scale, short(raw));
        QVERIFY(open());
        QCOMPARE(h->takeFrames(), QStringList{kRead});
        QCOMPARE(Box(f, scale)->text(), shown);
        QCOMPARE(Box(f, scale)->toolTip(), tip);
        QCOMPARE(Box(f, scale)->isEnabled(), !name.isEmpty());
        QCOMPARE(Ctl<QLabel>(f, QStringLiteral("LblCansd(%1)").arg(scale))->text(), name.isEmpty() ? QStringLiteral("备用") : name);
        QCOMPARE(SavedSensor.at(size_t(scale)), shown.toDouble());
    }

    // Fields typed with each scale's decimals (defaults: 0 for 0-5 and 8, 1 for 6, 7, 9, 10, 2 for 11-13).
    void writeBlock_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QStringList>("frames");
        QTest::addColumn<QString>("status");
        QTest::addColumn<bool>("saved");
        const QList<int> words{2500, 0, 0, 0, 0, 0, 15005, 1, 30000, 0, 0, 23456, 30000, 0};
        const QString w = blockWrite(words);
        QTest::newRow("acknowledged") << "" << true << QStringList{w} << kDone << true;
        QTest::newRow("refused once, then taken") << "nak" << true << QStringList{w, w} << kDone << true;
        // Eight re-sends refused as well: the red line stays and the link fault is told.
        QTest::newRow("refused every time") << "nak 9" << true << QStringList(9, w)
                                            << QStringLiteral("正在尝试继续传感器配置设定!") << false;
        QTest::newRow("answered No") << "" << false << QStringList() << "" << false;
    }
    void writeBlock()
    {
        QFETCH(QString, fault);
        QFETCH(bool, yes);
        QFETCH(QStringList, frames);
        QFETCH(QString, status);
        QFETCH(bool, saved);
        for (int i = 0; i < 14; ++i)
            h->sim.setWord(200 + i, 0);
        QVERIFY(open());
        h->takeFrames();
        const QMap<int, QString> typed{{0, "2500"}, {6, "1500.5"}, {7, "0.1"}, {8, "30000"}, {11, "234.56"}, {12, "300"}};
        for (auto it = typed.begin(); it != typed.end(); ++it)
            Box(f, it.key())->setText(it.value());
        if (fault.startsWith(QLatin1String("nak")))
            h->sim.injectFault(Fault::Nak, fault == QLatin1String("nak") ? 1 : 9);
        mb->queue(yes);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QTRY_COMPARE(f->LbLCssdS->isHidden() ? QString() : f->LbLCssdS->text(), status);
        WaitIdle();
        QCOMPARE(h->takeFrames(), frames);
        QCOMPARE(mb->texts.value(0), QStringLiteral("是否设定当前参数?"));
        QCOMPARE(mb->texts.size(), saved || !yes ? 1 : 2);  // the link fault after the ninth refusal
        QCOMPARE(SensorSaved, saved);
        // The twins hold the registers either way; the controller only after an acknowledged write.
        QCOMPARE(f->TxtDCansdMulTen[11]->text(), QStringLiteral("23456"));
        QCOMPARE(h->sim.word(211), short(saved ? 23456 : 0));
        QCOMPARE(Box(f, 7)->text(), QStringLiteral("0.1"));
        if (yes)
            QCOMPARE(TextColor(f->LbLCssdS), saved ? QColor(0, 0x80, 0) : QColor(0xFF, 0, 0));
    }

    void rangeRefused_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<QString>("entry");  // "default": the initialise button
        QTest::addColumn<QString>("box");
        QTest::newRow("two decimals, above 300") << 11 << "300.01" << kRange + "(0-300kg)";
        QTest::newRow("no decimals, above 30000") << 3 << "30001" << kRange + "(0-30000kg)";
        QTest::newRow("negative read") << 8 << "read 40000" << kRange + "(0-30000kg)";
        QTest::newRow("initialised, two decimals at 0") << 0 << "default" << kRange + "(0-300kg)";
    }
    void rangeRefused()
    {
        QFETCH(int, scale);
        QFETCH(QString, entry);
        QFETCH(QString, box);
        if (entry == QLatin1String("default"))
            ScaleDecimals[0] = 2;
        if (entry == QLatin1String("read 40000"))
            h->sim.setWord(200 + scale, short(40000));
        QVERIFY(open());
        h->takeFrames();
        if (entry == QLatin1String("default"))
            ClickOn(Ctl(f, QStringLiteral("lblDefault")));
        else if (!entry.startsWith(QLatin1String("read")))
            Box(f, scale)->setText(entry);
        ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
        QCOMPARE(mb->texts, QStringList{box});
        QCOMPARE(mb->okOnly, QList<bool>{true});
        WaitIdle();
        QVERIFY(h->takeFrames().isEmpty());
    }

    // An empty source box blanks what was assembled before it; the words after keep their places.
    void emptySourceKeepsWidth_data()
    {
        QTest::addColumn<int>("empty");
        QTest::newRow("first") << 0;
        QTest::newRow("middle") << 6;
        QTest::newRow("last") << 13;
    }
    void emptySourceKeepsWidth()
    {
        QFETCH(int, empty);
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

    void typing_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("afterEnter");
        QTest::newRow("letters and a second point swallowed") << 11 << "1a2.1.25" << "12.125" << "12.13";
        QTest::newRow("no decimals rounds on Enter") << 0 << "12.5" << "12.5" << "13";
        QTest::newRow("six characters at most") << 9 << "1234567" << "123456" << "123456.0";
    }
    void typing()
    {
        QFETCH(int, scale);
        QFETCH(QString, keys);
        QFETCH(QString, typed);
        QFETCH(QString, afterEnter);
        QVERIFY(open());
        h->takeFrames();
        SensorSaved = true;
        f->LbLCssdS->show();
        QLineEdit* box = Box(f, scale);
        box->clear();
        QTest::keyClicks(box, keys);
        QCOMPARE(box->text(), typed);
        QVERIFY(f->LbLCssdS->isHidden());
        QVERIFY(!SensorSaved);
        Box(f, 1)->setText(QStringLiteral("7.7"));
        QTest::keyClick(box, Qt::Key_Return);
        QCOMPARE(box->text(), afterEnter);
        QCOMPARE(Box(f, 1)->text(), QStringLiteral("8"));  // every field, not only this one
        WaitIdle();
        QVERIFY(h->takeFrames().isEmpty());
    }

    void returnQuestion_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<bool>("answer");
        QTest::addColumn<QStringList>("boxes");
        QTest::addColumn<bool>("left");
        QTest::newRow("unchanged") << "" << true << QStringList() << true;
        QTest::newRow("changed, No") << "edit" << false << QStringList{kAskReturn} << false;
        QTest::newRow("changed, Yes") << "edit" << true << QStringList{kAskReturn} << true;
        QTest::newRow("changed and set") << "set" << true << QStringList{"是否设定当前参数?"} << true;
        QTest::newRow("initialised") << "default" << false << QStringList{kAskReturn} << false;
    }
    void returnQuestion()
    {
        QFETCH(QString, action);
        QFETCH(bool, answer);
        QFETCH(QStringList, boxes);
        QFETCH(bool, left);
        QVERIFY(open());
        if (action != QLatin1String("default") && !action.isEmpty())
            Box(f, 2)->setText(QStringLiteral("123"));
        if (action == QLatin1String("default"))
            ClickOn(Ctl(f, QStringLiteral("lblDefault")));
        if (action == QLatin1String("set")) {
            ClickOn(Ctl(f, QStringLiteral("lblBdOk")));
            QTRY_VERIFY(SensorSaved);
        }
        mb->queue(answer);
        ClickOn(Ctl(f, QStringLiteral("lblReturn")));
        QCOMPARE(mb->texts, boxes);
        QTRY_COMPARE(Forms::loaded(QStringLiteral("Sensor")) == nullptr, left);
        QCOMPARE(Forms::loaded(QStringLiteral("BcBut")) != nullptr, left);
    }

private:
    // The form as the operator finds it: loaded, read and the link idle again.
    bool open()
    {
        Forms::show(QStringLiteral("Sensor"));
        f = qobject_cast<Sensor*>(Forms::loaded(QStringLiteral("Sensor")));
        return f && QTest::qWaitFor([] { return SensorReadDone && SendFlag && !Link().Timer2.isActive(); });
    }

    Sensor* f = nullptr;
};

QTEST_MAIN(SensorTest)
#include "sensor_test.moc"
