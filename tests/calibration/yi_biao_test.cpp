#include "test_support.h"

#include "calibration/cal_records.h"
#include "common/app_paths.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "common/form_access.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "shell/app_setup.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <limits>

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
        TextFile::writeLines(h->path(QStringLiteral("Data/SysData.dat")), {QStringLiteral("UserNam:张工")});
        CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
        h->connectLink();
    }

    void cleanup()
    {
        delete mb;
        delete h;
        CalClock = {};
    }

    void calibrationAgainstTheController_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<bool>("span");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("frames");  // from the tick of Timer3 on
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QStringList>("monthlyLines");
        QTest::addColumn<QStringList>("hiddenLines");
        QTest::addColumn<QStringList>("opLines");
        const QString n = QStringLiteral("一号秤"), at = QStringLiteral("2026/3/5 14:03:22");
        const QStringList zero{n + "BiaoZeroTime=" + at, n + "BiaoZeroADValue=3000", n + "BiaoZeroWTValue=100.0", kSep};
        const QStringList span{"CengIndex=1", n + "BiaoWeightTime=" + at, n + "BiaoWeightADValue=3000",
                               n + "BiaoWeightWTValue=100.0", n + "BiaoWeightFMValue=1500.5", kSep};
        auto op = [&](const char* kind) { return QStringList{n, at, "张工", kind, "3000", "100.0", "1500.5", ""}; };
        const QStringList none;
        QTest::newRow("zero, scale 0, taken") << 0 << false << int(Outcome::Success) << pulse("0016", "2000")
            << "零位调校完成，请再进行实际验秤!" << zero << QStringList{"CengIndex=1"} + zero << op("标零");
        QTest::newRow("span, scale 0, taken") << 0 << true << int(Outcome::Success)
            << WriteFrame("1056", "9D3A") + pulse("0016", "4000") << "分度调校完成，请再进行实际验秤!" << span << span
            << op("标重");
        // Indices 6 and 10 lie apart: S205 is bit 5 of byte 0x19, S208 bit 0 of byte 0x1A, D53 at 0x106A.
        QTest::newRow("zero, scale 6, refused") << 6 << false << int(Outcome::Refuse) << pulse("0019", "2000")
            << "零位调校失败，请重新调校!" << none << none << none;
        QTest::newRow("span, scale 10, unanswered") << 10 << true << int(Outcome::NoAnswer)
            << WriteFrame("106A", "9D3A") + pulse("001A", "0100") << "分度调校出错，请重新调校!" << none << none << none;
    }

    void calibrationAgainstTheController()
    {
        QFETCH(int, scale);
        QFETCH(bool, span);
        QFETCH(int, outcome);
        QFETCH(QString, frames);
        QFETCH(QString, caption);
        QFETCH(QStringList, monthlyLines);
        QFETCH(QStringList, hiddenLines);
        QFETCH(QStringList, opLines);
        const bool taken = outcome == int(Outcome::Success);

        ScaleName[size_t(scale)] = QStringLiteral("一号秤");
        ScaleDecimals[size_t(scale)] = 1;  // 1500.5 goes as 15005
        h->sim.setLoad(scale, 3000);       // zero point 2000: the weight shows 1000 raw, 100.0
        h->sim.setCalOutcome(Outcome(outcome));
        QWidget* f = openAt(scale);
        clickTab(f, span ? 2 : 1);
        for (int i = 0; i < 3; ++i)  // the selected tab head dark blue, the others dark grey
            QCOMPARE(TextColor(label(f, qPrintable(QStringLiteral("LblBd(%1)").arg(i)))),
                     i == (span ? 2 : 1) ? QColor(0, 0, 192) : QColor(64, 64, 64));
        QTRY_COMPARE(label(f, "LbLADv")->text(), QStringLiteral("3000"));
        QCOMPARE(label(f, "LblZLv")->text(), QStringLiteral("100.0"));
        Ctl<QLineEdit>(f, "TxtFmzL")->setText(QStringLiteral("1500.5"));
        ClickOn(label(f, "lblBdOk"));
        QCOMPARE(mb->texts.value(0), span ? QStringLiteral("确定要称量分度调校吗?") : QStringLiteral("确定要进行零位调校吗?"));
        QLabel* line = label(f, span ? "LbLBZwc" : "LbLBLwc");
        QCOMPARE(line->text(),
                 span ? QStringLiteral("正在称量分度调校，请稍候......") : QStringLiteral("正在零位调校，请稍候......"));
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
        QTRY_COMPARE(line->text(), caption);
        waitIdle();
        QCOMPARE(h->takeFrames().join(QString()), frames);
        QVERIFY(liveReadBeforeRecords);
        QCOMPARE(TextColor(line), taken ? QColor(0, 0x80, 0) : QColor(Qt::red));
        QCOMPARE(Link().Timer1.isActive(), !taken);  // polling again only after a failure

        QCOMPARE(rawBytes(monthly()), GbLines(monthlyLines));
        QCOMPARE(rawBytes(opRecords()), GbLines(opLines));
        const QString spool = h->path(QStringLiteral("drive_c/Program Files/MswSpool"));
        QCOMPARE(rawBytes(spool + QStringLiteral("/20263MswSpool.txt")), GbLines(hiddenLines));
        QCOMPARE(AppPaths::isHidden(spool), taken);
    }

    // The replies the controller test cannot give: both bits on, other lengths, a tab clicked meanwhile.
    void statusReply_data()
    {
        QTest::addColumn<int>("tab");  // clicked while the procedure runs; -1: none
        QTest::addColumn<QString>("reply");
        QTest::addColumn<bool>("taken");  // else the caption stays busy and nothing is recorded
        QTest::newRow("C000 taken, polling on") << -1 << "C000" << true;
        QTest::newRow("three characters") << -1 << "800" << false;
        QTest::newRow("five characters") << -1 << "80000" << false;
        QTest::newRow("empty") << -1 << "" << false;
        QTest::newRow("option tab clicked, then 8000") << 0 << "8000" << false;
    }

    void statusReply()
    {
        QFETCH(int, tab);
        QFETCH(QString, reply);
        QFETCH(bool, taken);
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
        SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), reply);

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

    void optionSwitches_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("partner");
        QTest::addColumn<QString>("frame");
        QTest::addColumn<bool>("unplugged");  // the write is never answered: re-sends, then the fault box
        QTest::addColumn<QString>("tip");     // shown at the end
        // S500.. word read as "2112": S496 and S508 are foreign bits; S501 and S505 are on.
        const QString mode = WriteFrame("003E", "2110"), tracking = WriteFrame("004C", "0100");
        QTest::newRow("verified mode ticked") << "Check1(11)" << "Check1(10)" << mode << false << "调校方式已更改!";
        QTest::newRow("plain mode cleared") << "Check1(10)" << "Check1(11)" << mode << false << "调校方式已更改!";
        // S612.. word read as "1100": S608 foreign, S612 on (tracking off). The acknowledgement hides the tip.
        QTest::newRow("tracking on ticked") << "Check2(1)" << "Check2(0)" << tracking << false << "";
        QTest::newRow("tracking off cleared") << "Check2(0)" << "Check2(1)" << tracking << false << "";
        // The controller never took it: the form must not claim that tracking is on.
        QTest::newRow("tracking off cleared, unplugged") << "Check2(0)" << "Check2(1)" << tracking << true << "";
    }

    void optionSwitches()
    {
        QFETCH(QString, box);
        QFETCH(QString, partner);
        QFETCH(QString, frame);
        QFETCH(bool, unplugged);
        QFETCH(QString, tip);
        for (int s : {496, 501, 505, 508, 608})
            h->sim.setSBit(s, true);
        QWidget* f = openAt(0);
        QVERIFY(Ctl<QCheckBox>(f, "Check1(10)")->isChecked() && Ctl<QCheckBox>(f, "Check2(0)")->isChecked());
        QVERIFY(!Ctl<QCheckBox>(f, "Check1(11)")->isChecked() && !Ctl<QCheckBox>(f, "Check2(1)")->isChecked());
        h->takeFrames();
        if (unplugged)
            h->sim.injectFault(plcsim::Fault::Unplugged);
        Ctl<QCheckBox>(f, box)->click();
        QLabel* l = label(f, box.startsWith(QStringLiteral("Check1")) ? "LblTzxxTip" : "LblTzxxZeroTip");
        if (unplugged) {
            Link().Timer2.stop();  // the time-outs are driven by hand
            for (int i = 0; i <= 8; ++i)
                Link().RetryRequest();
            QVERIFY(mb->texts.value(0).startsWith(QStringLiteral("通讯发生错误请检查：")));
        } else {
            waitIdle();
        }
        QCOMPARE(h->takeFrames().value(0), frame);
        QCOMPARE(l->isVisible() ? l->text() : QString(), tip);
        if (l->isVisible())
            QCOMPARE(TextColor(l), QColor(0, 0x80, 0));
        QCOMPARE(Ctl<QCheckBox>(f, partner)->isChecked(), !Ctl<QCheckBox>(f, box)->isChecked());
    }

    // The test weight takes what could be typed: digits and one point, by key or by paste.
    void testWeightEntry_data()
    {
        QTest::addColumn<QString>("form");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("action");  // "type:", "paste:" or "delete" (at the start of the box)
        QTest::addColumn<QString>("text");
        QTest::newRow("letters and a second point swallowed") << "YIBiao" << "" << "type:1a5-0.0.5" << "150.05";
        QTest::newRow("paste of letters refused") << "YIBiao" << "150" << "paste:abc-12" << "150";
        QTest::newRow("paste of a weight taken") << "YIBiao" << "" << "paste:1500.5" << "1500.5";
        QTest::newRow("Delete as X11 sends it") << "YIBiao" << "150" << "delete" << "50";
        QTest::newRow("moisture: paste refused") << "YIBiaoHumidNew" << "12" << "paste:1e3" << "12";
    }

    void testWeightEntry()
    {
        QFETCH(QString, form);
        QFETCH(QString, start);
        QFETCH(QString, action);
        QFETCH(QString, text);
        QWidget* f = openAt(0);
        if (form == QLatin1String("YIBiaoHumidNew")) {
            HumidActive = true;
            Forms::show(form);
            f = Forms::loaded(form);
        }
        clickTab(f, 2);
        auto* b = Ctl<QLineEdit>(f, "TxtFmzL");
        QVERIFY(b->isVisible());
        b->setText(start);
        b->setFocus();
        b->setCursorPosition(0);
        if (action == QLatin1String("delete"))
            QTest::sendKeyEvent(QTest::Click, b, Qt::Key_Delete, QString(QChar(0x7F)), Qt::NoModifier);
        else if (action.startsWith(QLatin1String("paste:")))
            QGuiApplication::clipboard()->setText(action.mid(6)), b->paste();
        else
            QTest::keyClicks(b, action.mid(5));
        QCOMPARE(b->text(), text);
    }

    void moistureGoesToItsOwnForm_data()
    {
        QTest::addColumn<int>("probe");
        QTest::addColumn<bool>("span");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("frames");
        // The probes use the bits of slots 4 and 5 and take their known value at D29 and D30.
        QTest::newRow("dry, probe 4") << 4 << false << int(Outcome::Success) << pulse("0017", "2000");
        QTest::newRow("wet, probe 4") << 4 << true << int(Outcome::Success)
                                      << WriteFrame("103A", "7D00") + pulse("0017", "4000");
        QTest::newRow("wet, probe 5, refused")
            << 5 << true << int(Outcome::Refuse) << WriteFrame("103C", "7D00") + pulse("0018", "0100");
        QTest::newRow("dry, probe 5, unanswered") << 5 << false << int(Outcome::NoAnswer) << pulse("0017", "8000");
    }

    void moistureGoesToItsOwnForm()
    {
        QFETCH(int, probe);
        QFETCH(bool, span);
        QFETCH(int, outcome);
        QFETCH(QString, frames);
        const QString caption = QStringList{"湿度标定完成!", "湿度标定失败，请重新标定!", "湿度标定错误，请重新标定!"}[outcome];
        h->sim.setCalOutcome(Outcome(outcome));
        h->sim.setLoad(probe, 2600 + probe);
        ScaleDecimals[size_t(probe)] = 1;
        // A weight form left open must see nothing of the moisture calibration.
        QWidget* weightForm = openAt(probe);
        HumidActive = true;
        Forms::show(QStringLiteral("BcButHumid"));
        clickTab(Forms::loaded(QStringLiteral("BcButHumid")), probe);
        QWidget* f = Forms::loaded(QStringLiteral("YIBiaoHumidNew"));
        QTRY_COMPARE(label(f, "LbLADv")->text(), QString::number(2600 + probe));
        if (span) {
            clickTab(f, 2);
            waitIdle();
            Ctl<QLineEdit>(f, "TxtFmzL")->setText(QStringLiteral("12.5"));
        }
        ClickOn(label(f, "lblBdOk"));
        QCOMPARE(mb->texts.value(0), QStringLiteral("确定要湿度标定吗?"));
        waitIdle();
        h->takeFrames();
        Link().timer3Tick();
        QTRY_COMPARE(label(f, span ? "LbLBZwc" : "LbLBLwc")->text(), caption);
        waitIdle();
        QCOMPARE(h->takeFrames().join(QString()), frames);

        QVERIFY(label(weightForm, "LbLADv")->text().isEmpty() && label(weightForm, "LbLBLwc")->isHidden() &&
                label(weightForm, "LbLBZwc")->isHidden());
        QCOMPARE(Ctl<QLineEdit>(weightForm, "txtBCSuccessRead")->text(), QString());
        QCOMPARE(QFile::exists(monthly()), outcome == int(Outcome::Success));
        QVERIFY(!QFile::exists(opRecords()));  // not in the viewer's list
    }

    // The three clocks of the link as the controller sees them: on average no request earlier than the
    // design's period allows (a coarse timer may fire a little early, and a tick that a busy loop delays
    // shortens the next), and at the quickest none much later, with room for a loaded machine.
    void linkClocksOnTheWire_data()
    {
        QTest::addColumn<QString>("clock");
        QTest::addColumn<int>("period");
        QTest::addColumn<int>("gaps");  // measured; the first counts from the click
        QTest::newRow("Timer1: the live values every 400 ms") << "poll" << 400 << 5;
        QTest::newRow("Timer2: a lost reply sent again after a second") << "resend" << 1000 << 3;
        QTest::newRow("Timer3: the command a second after Yes") << "command" << 1000 << 1;
    }

    void linkClocksOnTheWire()
    {
        QFETCH(QString, clock);
        QFETCH(int, period);
        QFETCH(int, gaps);
        QWidget* f = openAt(0);
        const bool command = clock == QLatin1String("command"), poll = clock == QLatin1String("poll");
        // The re-sent request is the option word, read again with the tab.
        const QString watched = command ? WriteFrame("0016", "2000") : poll ? kLiveRead : Frame(QStringLiteral("0003E02"));
        if (command) {
            clickTab(f, 1);
            waitIdle();
        } else if (!poll) {
            h->sim.injectFault(plcsim::Fault::NoReply, gaps);
        }
        QElapsedTimer since;
        QList<qint64> at;
        connect(&h->sim, &plcsim::Controller::requestReceived, this, [&](const QByteArray& frame) {
            if (QString::fromLatin1(frame) == watched)
                at << since.elapsed();
        });
        since.start();
        if (command)
            ClickOn(label(f, "lblBdOk")), at.prepend(0);
        else
            clickTab(f, poll ? 1 : 0);
        QTRY_VERIFY_WITH_TIMEOUT(at.size() > gaps, 2 * period * (gaps + 1));
        qint64 quickest = std::numeric_limits<qint64>::max();
        for (int i = 1; i <= gaps; ++i)
            quickest = std::min(quickest, at[i] - at[i - 1]);
        const qint64 mean = (at[gaps] - at[0]) / gaps;
        QVERIFY2(mean >= period * 9 / 10, qPrintable(QStringLiteral("every %1 ms on average").arg(mean)));
        QVERIFY2(quickest <= period * 5 / 4, qPrintable(QStringLiteral("at the quickest after %1 ms").arg(quickest)));
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
        ScaleNo = short(scale);
        ScaleTitle = ScaleName[size_t(scale)];
        const ScaleDevices& d = kScaleDevices[size_t(scale)];
        CalZeroDevice = QLatin1String(d.zero);
        CalSpanDevice = QLatin1String(d.span);
        CalWeightDevice = QLatin1String(d.weight);
        OptionDevice = QLatin1String(d.option);
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
