#include "cal_rig.h"

#include "common/app_paths.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>

using plcsim::Outcome;

namespace {
const QString kLiveRead = Frame(QStringLiteral("0101640"));
const QString kStatusRead = Frame(QStringLiteral("0007C02"));
const QString kSep(52, QLatin1Char('#'));

// The pulse, its clear, the status read and the live values that follow.
QString pulse(const char* address, const char* bits)
{
    return WriteFrame(address, bits) + WriteFrame(address, "0000") + kStatusRead + kLiveRead;
}

// Scale "一号秤" at 3000 raw with its zero point at 2000 shows 100.0; the frames from the tick of Timer3 on;
// the lines of the monthly file, the hidden copy and the operation list after it.
const QString kAt = QStringLiteral("2026/3/5 14:03:22"), kName = QStringLiteral("一号秤");
const QStringList kZero{kName + "BiaoZeroTime=" + kAt, kName + "BiaoZeroADValue=3000",
                        kName + "BiaoZeroWTValue=100.0", kSep};
QStringList spanLines(const char* index, const char* testWeight)
{
    return {QStringLiteral("CengIndex=") + index, kName + "BiaoWeightTime=" + kAt, kName + "BiaoWeightADValue=3000",
            kName + "BiaoWeightWTValue=100.0", kName + "BiaoWeightFMValue=" + testWeight, kSep};
}
QStringList opLines(const char* kind) { return {kName, kAt, "郑伟", kind, "3000", "100.0", "1500.5", ""}; }
// humid: the moisture form of the probe beside the weight form of the same slot, which must see nothing of it;
// the probes use the bits of slots 4 and 5 and take their known value at D29 and D30.
struct CalCase { const char* name; bool humid; int scale; bool span; Outcome outcome; QString frames;
                 const char* caption; QStringList monthly, hidden, op; };
const CalCase kCal[] = {
    {"zero, scale 0, taken", false, 0, false, Outcome::Success, pulse("0016", "2000"), "零位调校完成，请再进行实际验秤!",
     kZero, QStringList{"CengIndex=1"} + kZero, opLines("标零")},
    {"span, scale 0, taken", false, 0, true, Outcome::Success, WriteFrame("1056", "9D3A") + pulse("0016", "4000"),
     "分度调校完成，请再进行实际验秤!", spanLines("1", "1500.5"), spanLines("1", "1500.5"), opLines("标重")},
    // Indices 6 and 10 lie apart: S205 is bit 5 of byte 0x19, S208 bit 0 of byte 0x1A, D53 at 0x106A.
    {"zero, scale 6, refused", false, 6, false, Outcome::Refuse, pulse("0019", "2000"), "零位调校失败，请重新调校!",
     {}, {}, {}},
    {"span, scale 10, unanswered", false, 10, true, Outcome::NoAnswer,
     WriteFrame("106A", "9D3A") + pulse("001A", "0100"), "分度调校出错，请重新调校!", {}, {}, {}},
    {"dry, probe 4", true, 4, false, Outcome::Success, pulse("0017", "2000"), "湿度标定完成!", kZero,
     QStringList{"CengIndex=5"} + kZero, {}},
    {"wet, probe 4", true, 4, true, Outcome::Success, WriteFrame("103A", "7D00") + pulse("0017", "4000"), "湿度标定完成!",
     spanLines("5", "12.5"), spanLines("5", "12.5"), {}},
    {"wet, probe 5, refused", true, 5, true, Outcome::Refuse, WriteFrame("103C", "7D00") + pulse("0018", "0100"),
     "湿度标定失败，请重新标定!", {}, {}, {}},
    {"dry, probe 5, unanswered", true, 5, false, Outcome::NoAnswer, pulse("0017", "8000"), "湿度标定错误，请重新标定!",
     {}, {}, {}},
};

// The replies the controller test cannot give: both bits on, other lengths, a tab clicked meanwhile (-1: none).
// Not taken: the caption stays busy and nothing is recorded.
const struct { const char* name; int tab; const char* reply; bool taken; } kReplies[] = {
    {"C000 taken, polling on", -1, "C000", true},
    {"three characters", -1, "800", false},
    {"five characters", -1, "80000", false},
    {"empty", -1, "", false},
    {"option tab clicked, then 8000", 0, "8000", false},
};

// Unplugged: the write is never answered, re-sent, then the fault box. tip: shown at the end.
// S500.. word read as "2112": S496 and S508 are foreign bits; S501 and S505 are on.
// S612.. word read as "1100": S608 foreign, S612 on (tracking off). The acknowledgement hides the tip.
const QString kModeWrite = WriteFrame("003E", "2110"), kTrackWrite = WriteFrame("004C", "0100");
struct SwitchCase { const char *name, *box, *partner; QString frame; bool unplugged; const char* tip; };
const SwitchCase kSwitches[] = {
    {"verified mode ticked", "Check1(11)", "Check1(10)", kModeWrite, false, "调校方式已更改!"},
    {"plain mode cleared", "Check1(10)", "Check1(11)", kModeWrite, false, "调校方式已更改!"},
    {"tracking on ticked", "Check2(1)", "Check2(0)", kTrackWrite, false, ""},
    {"tracking off cleared", "Check2(0)", "Check2(1)", kTrackWrite, false, ""},
    // The controller never took it: the form must not claim that tracking is on.
    {"tracking off cleared, unplugged", "Check2(0)", "Check2(1)", kTrackWrite, true, ""},
};

// The test weight takes what could be typed: digits and one point, by key or by paste. action: "type:",
// "paste:" or "delete" (at the start of the box).
const struct { const char *name, *form, *start, *action, *text; } kEntries[] = {
    {"letters and a second point swallowed", "YIBiao", "", "type:1a5-0.0.5", "150.05"},
    {"paste of letters refused", "YIBiao", "150", "paste:abc-12", "150"},
    {"paste of a weight taken", "YIBiao", "", "paste:1500.5", "1500.5"},
    {"Delete as X11 sends it", "YIBiao", "150", "delete", "50"},
    {"moisture: paste refused", "YIBiaoHumidNew", "12", "paste:1e3", "12"},
};

QLabel* label(QWidget* f, const char* n) { return Ctl<QLabel>(f, QLatin1String(n)); }
void clickTab(QWidget* f, int i) { ClickOn(Ctl(f, QStringLiteral("LblBd(%1)").arg(i))); }
}  // namespace

// The weight calibration form on the wire, the records it leaves, and the moisture form beside it.
class YIBiaoTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterCalibrationForms(); }
    void init()
    {
        h = new ConsoleHarness;
        mb = new MbAnswerer;
        QDir(h->dir.path()).mkpath(QStringLiteral("Data"));
        // In GB18030 the operator's name is valid UTF-8 as well: read as UTF-8 it would reach the records garbled.
        TextFile::writeLines(h->path(QStringLiteral("Data/SysData.dat")), {QStringLiteral("UserNam:郑伟")});
        CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
        h->connectLink();
    }

    void cleanup()
    {
        delete mb;
        delete h;
        CalClock = {};
    }

    void calibrationAgainstTheController_data() { TableRows(kCal); }
    void calibrationAgainstTheController()
    {
        const CalCase& c = TableRow(kCal);
        const int scale = c.scale;
        const bool span = c.span, taken = c.outcome == Outcome::Success;
        ScaleName[size_t(scale)] = QStringLiteral("一号秤");
        ScaleDecimals[size_t(scale)] = 1;  // 1500.5 goes as 15005
        h->sim.setLoad(scale, 3000);       // zero point 2000: the weight shows 1000 raw, 100.0
        h->sim.setCalOutcome(c.outcome);
        QWidget* f = openAt(scale);
        QWidget* weightForm = f;
        if (c.humid) {
            HumidActive = true;
            Forms::show(QStringLiteral("BcButHumid"));
            clickTab(Forms::loaded(QStringLiteral("BcButHumid")), scale);
            f = Forms::loaded(QStringLiteral("YIBiaoHumidNew"));
        }
        clickTab(f, span ? 2 : 1);
        for (int i = 0; i < 3; ++i)  // the selected tab head dark blue, the others dark grey
            QCOMPARE(TextColor(label(f, qPrintable(QStringLiteral("LblBd(%1)").arg(i)))),
                     i == (span ? 2 : 1) ? QColor(0, 0, 192) : QColor(64, 64, 64));
        QTRY_COMPARE(label(f, "LbLADv")->text(), QStringLiteral("3000"));
        QCOMPARE(label(f, "LblZLv")->text(), QStringLiteral("100.0"));
        Ctl<QLineEdit>(f, "TxtFmzL")->setText(c.humid ? QStringLiteral("12.5") : QStringLiteral("1500.5"));
        ClickOn(label(f, "lblBdOk"));
        const QStringList ask = c.humid ? QStringList{"确定要湿度标定吗?", "正在湿度标定，请稍候......"}
                                : span  ? QStringList{"确定要称量分度调校吗?", "正在称量分度调校，请稍候......"}
                                        : QStringList{"确定要进行零位调校吗?", "正在零位调校，请稍候......"};
        QCOMPARE(mb->texts.value(0), ask[0]);
        QLabel* line = label(f, span ? "LbLBZwc" : "LbLBLwc");
        QCOMPARE(line->text(), ask[1]);
        QCOMPARE(TextColor(line), QColor(Qt::red));
        QVERIFY(!Link().Timer1.isActive());
        QCOMPARE(Link().Timer3.isActive() ? Link().Timer3.interval() : 0, 1000);
        waitIdle();
        h->takeFrames();
        // Nothing leaves before Timer3 ticks.
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());

        // The next live read leaves before the record files are written: the files do not hold up the link.
        bool liveReadBeforeRecords = false, statusSeen = false;
        connect(&h->sim, &plcsim::Controller::requestReceived, this, [&](const QByteArray& frame) {
            if (QString::fromLatin1(frame) == kStatusRead)
                statusSeen = true;
            else if (statusSeen && QString::fromLatin1(frame) == kLiveRead && !liveReadBeforeRecords)
                liveReadBeforeRecords = !QFile::exists(opRecords()) && !QFile::exists(monthly());
        });
        Link().timer3Tick();
        QTRY_COMPARE(line->text(), QString::fromUtf8(c.caption));
        waitIdle();
        QCOMPARE(h->takeFrames().join(QString()), c.frames);
        QVERIFY(liveReadBeforeRecords);
        QCOMPARE(TextColor(line), taken ? QColor(0, 0x80, 0) : QColor(Qt::red));
        QCOMPARE(Link().Timer1.isActive(), !taken);  // polling again only after a failure

        QCOMPARE(rawBytes(monthly()), GbLines(c.monthly));
        QCOMPARE(rawBytes(opRecords()), GbLines(c.op));
        const QString spool = h->path(QStringLiteral("drive_c/Program Files/MswSpool"));
        QCOMPARE(rawBytes(spool + QStringLiteral("/20263MswSpool.txt")), GbLines(c.hidden));
        QCOMPARE(AppPaths::isHidden(spool), taken);
        if (c.humid) {
            QVERIFY(label(weightForm, "LbLADv")->text().isEmpty() && label(weightForm, "LbLBLwc")->isHidden() &&
                    label(weightForm, "LbLBZwc")->isHidden());
            QCOMPARE(Ctl<QLineEdit>(weightForm, "txtBCSuccessRead")->text(), QString());
        }
    }

    void statusReply_data() { TableRows(kReplies); }
    void statusReply()
    {
        QFETCH(int, row);
        const int tab = kReplies[row].tab;
        const bool taken = kReplies[row].taken;
        QWidget* f = openAt(0);
        clickTab(f, 1);
        waitIdle();
        ClickOn(label(f, "lblBdOk"));
        // The reply is handed over as the dispatch would, without the pulses.
        Link().Timer3.stop();
        ZeroRequest = false;
        if (tab >= 0)
            clickTab(f, tab);
        waitIdle();
        h->takeFrames();
        SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), QStringLiteral("XXX"));
        SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), QLatin1String(kReplies[row].reply));

        QLabel* line = label(f, "LbLBLwc");
        QCOMPARE(line->text(),
                 taken ? QStringLiteral("零位调校完成，请再进行实际验秤!") : QStringLiteral("正在零位调校，请稍候......"));
        QCOMPARE(QFile::exists(opRecords()), taken);
        QCOMPARE(QFile::exists(monthly()), taken);
        QCOMPARE(line->isHidden() && label(f, "LbLBZwc")->isHidden(), tab >= 0);
        if (taken)
            QCOMPARE(TextColor(line), QColor(0, 0x80, 0));
        QCOMPARE(Link().Timer1.isActive(), taken);
        waitIdle();
        if (tab < 0)  // a tab restarts the live values of its own
            QCOMPARE(h->takeFrames().contains(kLiveRead), taken);
    }

    void optionSwitches_data() { TableRows(kSwitches); }
    void optionSwitches()
    {
        const SwitchCase& c = TableRow(kSwitches);
        const QString box = QLatin1String(c.box);
        for (int s : {496, 501, 505, 508, 608})
            h->sim.setSBit(s, true);
        QWidget* f = openAt(0);
        QVERIFY(Ctl<QCheckBox>(f, "Check1(10)")->isChecked() && Ctl<QCheckBox>(f, "Check2(0)")->isChecked());
        QVERIFY(!Ctl<QCheckBox>(f, "Check1(11)")->isChecked() && !Ctl<QCheckBox>(f, "Check2(1)")->isChecked());
        h->takeFrames();
        if (c.unplugged)
            h->sim.injectFault(plcsim::Fault::Unplugged);
        Ctl<QCheckBox>(f, box)->click();
        QLabel* l = label(f, box.startsWith(QStringLiteral("Check1")) ? "LblTzxxTip" : "LblTzxxZeroTip");
        if (c.unplugged) {
            Link().Timer2.stop();  // the time-outs are driven by hand
            for (int i = 0; i < 8; ++i)
                Link().RetryRequest();
            QCOMPARE(mb->texts, QStringList());  // eight re-sends before the operator is told
            Link().RetryRequest();
            QVERIFY(mb->texts.value(0).startsWith(QStringLiteral("通讯发生错误请检查：")));
        } else {
            waitIdle();
        }
        const QStringList frames = h->takeFrames();
        QCOMPARE(frames.value(0), c.frame);
        QCOMPARE(frames.count(c.frame), c.unplugged ? 9 : 1);
        QCOMPARE(l->isVisible() ? l->text() : QString(), QString::fromUtf8(c.tip));
        if (l->isVisible())
            QCOMPARE(TextColor(l), QColor(0, 0x80, 0));
        QCOMPARE(Ctl<QCheckBox>(f, QLatin1String(c.partner))->isChecked(), !Ctl<QCheckBox>(f, box)->isChecked());
    }

    void testWeightEntry_data() { TableRows(kEntries); }
    void testWeightEntry()
    {
        const auto& c = TableRow(kEntries);
        const QString form = QLatin1String(c.form), action = QLatin1String(c.action);
        QWidget* f = openAt(0);
        if (form == QLatin1String("YIBiaoHumidNew")) {
            HumidActive = true;
            Forms::show(form);
            f = Forms::loaded(form);
        }
        clickTab(f, 2);
        auto* b = Ctl<QLineEdit>(f, "TxtFmzL");
        QVERIFY(b->isVisible());
        b->setText(QLatin1String(c.start));
        b->setFocus();
        b->setCursorPosition(0);
        if (action == QLatin1String("delete"))
            QTest::sendKeyEvent(QTest::Click, b, Qt::Key_Delete, QString(QChar(0x7F)), Qt::NoModifier);
        else if (action.startsWith(QLatin1String("paste:")))
            QGuiApplication::clipboard()->setText(action.mid(6)), b->paste();
        else
            QTest::keyClicks(b, action.mid(5));
        QCOMPARE(b->text(), QLatin1String(c.text));
    }

    void monthlyFilesWithoutDataFolder()
    {
        QDir(h->path(QStringLiteral("Data"))).removeRecursively();
        CalClock = [] { return QDateTime(QDate(2026, 11, 1), QTime(8, 0)); };
        ScaleName[13] = QStringLiteral("外加剂3秤");
        BiaoZeroTime[13] = QStringLiteral("t");
        AppendZeroRecord(13);
        AppendWeightRecord(13);
        QString text;
        QVERIFY(TextFile::read(h->path(QStringLiteral("202611BiaoCen.txt")), &text));
        QVERIFY(text.startsWith(QStringLiteral("外加剂3秤BiaoZeroTime=t\r\n")));
        QVERIFY(text.contains(QStringLiteral("\r\nCengIndex=14\r\n")));
        QVERIFY(TextFile::read(h->path(QStringLiteral("drive_c/Program Files/MswSpool/202611MswSpool.txt")), &text));
        QVERIFY(text.startsWith(QStringLiteral("CengIndex=14\r\n")));
    }

private:
    // The globals a click on scale n of the calibration menu stores, then the form itself.
    QWidget* openAt(int scale)
    {
        h->sim.setSBit(612, true);  // bit on: tracking off
        UseScaleDevices(scale);
        Forms::show(QStringLiteral("YIBiao"));
        QWidget* f = Forms::loaded(QStringLiteral("YIBiao"));
        // The option word and the zero tracking word arrive one after the other.
        if (!QTest::qWaitFor([f] { return !Ctl<QLineEdit>(f, "txtTzxxZeroRead")->text().isEmpty() && SendFlag; }, 3000))
            qWarning("the option words did not arrive");
        return f;
    }

    void waitIdle() { QTRY_VERIFY(SendFlag); }
    QString monthly() const { return h->path(QStringLiteral("Data/20263BiaoCen.txt")); }
    QString opRecords() const { return h->path(QStringLiteral("Data/BiaoCeng.txt")); }

    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

QTEST_MAIN(YIBiaoTest)
#include "yi_biao_test.moc"
