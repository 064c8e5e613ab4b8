#include "test_support.h"

#include "calibration/cal_records.h"
#include "common/app_paths.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "link/form_access.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "shell/app_setup.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

using plcsim::Outcome;

namespace {
const QString kLiveRead = Frame(QStringLiteral("0101640"));
const QString kStatusRead = Frame(QStringLiteral("0007C02"));
const QString kSep(52, QLatin1Char('#'));

QLabel* label(QWidget* f, const char* n) { return Ctl<QLabel>(f, QLatin1String(n)); }
}  // namespace

class YIBiaoTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterCalibrationForms(); }
    void init();
    void cleanup();

    void calibrationAgainstTheController_data();
    void calibrationAgainstTheController();
    void statusReply_data();
    void statusReply();
    void optionSwitches_data();
    void optionSwitches();

private:
    // The globals a click on scale n of the calibration menu stores, then the form itself.
    QWidget* openAt(int scale, bool trackingOff = true);
    void clickTab(QWidget* f, int i);
    void waitIdle() { QTRY_VERIFY(SendFlag); }
    QString dataPath(const QString& name) const { return h->path(QStringLiteral("Data/") + name); }
    QString monthly() const { return dataPath(QStringLiteral("20263BiaoCen.txt")); }
    QString hidden() const { return h->path(QStringLiteral("drive_c/Program Files/MswSpool/20263MswSpool.txt")); }

    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

void YIBiaoTest::init()
{
    h = new ConsoleHarness;
    mb = new MbAnswerer;
    QDir(h->dir.path()).mkpath(QStringLiteral("Data"));
    TextFile::writeLines(dataPath(QStringLiteral("SysData.dat")), {QStringLiteral("UserNam:张工")});
    CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
    OperatorName.clear();
    for (auto* a : {&BiaoZeroTime, &BiaoZeroADValue, &BiaoZeroWTValue, &BiaoWeightTime, &BiaoWeightADValue,
                    &BiaoWeightWTValue, &BiaoWeightFMValue})
        a->fill(QString());
    h->connectLink();
}

void YIBiaoTest::cleanup()
{
    delete mb;
    delete h;
    CalClock = {};
}

QWidget* YIBiaoTest::openAt(int scale, bool trackingOff)
{
    h->sim.setSBit(612, trackingOff);  // bit on: tracking off
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

void YIBiaoTest::clickTab(QWidget* f, int i) { ClickOn(Ctl(f, QStringLiteral("LblBd(%1)").arg(i))); }

void YIBiaoTest::calibrationAgainstTheController_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<bool>("span");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QStringList>("frames");  // from the tick of Timer3 on
    QTest::addColumn<QString>("caption");
    QTest::addColumn<bool>("green");
    QTest::addColumn<bool>("pollingAfter");
    QTest::addColumn<QStringList>("monthlyLines");
    QTest::addColumn<QStringList>("hiddenLines");
    QTest::addColumn<QStringList>("opLines");

    const QString n = QStringLiteral("一号秤");
    QTest::newRow("zero, scale 0, taken")
        << 0 << false << int(Outcome::Success)
        << QStringList{WriteFrame("0016", "2000"), WriteFrame("0016", "0000"), kStatusRead, kLiveRead}
        << "零位调校完成，请再进行实际验秤!" << true << false
        << QStringList{n + "BiaoZeroTime=2026/3/5 14:03:22", n + "BiaoZeroADValue=3000", n + "BiaoZeroWTValue=100.0",
                       kSep}
        << QStringList{"CengIndex=1", n + "BiaoZeroTime=2026/3/5 14:03:22", n + "BiaoZeroADValue=3000",
                       n + "BiaoZeroWTValue=100.0", kSep}
        << QStringList{n, "2026/3/5 14:03:22", "张工", "标零", "3000", "100.0", "1500.5", ""};
    QTest::newRow("span, scale 0, taken")
        << 0 << true << int(Outcome::Success)
        << QStringList{WriteFrame("1056", "9D3A"), WriteFrame("0016", "4000"), WriteFrame("0016", "0000"), kStatusRead,
                       kLiveRead}
        << "分度调校完成，请再进行实际验秤!" << true << false
        << QStringList{"CengIndex=1",
                       n + "BiaoWeightTime=2026/3/5 14:03:22",
                       n + "BiaoWeightADValue=3000",
                       n + "BiaoWeightWTValue=100.0",
                       n + "BiaoWeightFMValue=1500.5",
                       kSep}
        << QStringList{"CengIndex=1",
                       n + "BiaoWeightTime=2026/3/5 14:03:22",
                       n + "BiaoWeightADValue=3000",
                       n + "BiaoWeightWTValue=100.0",
                       n + "BiaoWeightFMValue=1500.5",
                       kSep}
        << QStringList{n, "2026/3/5 14:03:22", "张工", "标重", "3000", "100.0", "1500.5", ""};
    // Indices 6 and 10 lie apart: S205 is bit 5 of byte 0x19, S208 bit 0 of byte 0x1A, D53 at 0x106A.
    QTest::newRow("zero, scale 6, refused")
        << 6 << false << int(Outcome::Refuse)
        << QStringList{WriteFrame("0019", "2000"), WriteFrame("0019", "0000"), kStatusRead, kLiveRead}
        << "零位调校失败，请重新调校!" << false << true << QStringList() << QStringList() << QStringList();
    QTest::newRow("span, scale 10, unanswered")
        << 10 << true << int(Outcome::NoAnswer)
        << QStringList{WriteFrame("106A", "9D3A"), WriteFrame("001A", "0100"), WriteFrame("001A", "0000"), kStatusRead,
                       kLiveRead}
        << "分度调校出错，请重新调校!" << false << true << QStringList() << QStringList() << QStringList();
}

void YIBiaoTest::calibrationAgainstTheController()
{
    QFETCH(int, scale);
    QFETCH(bool, span);
    QFETCH(int, outcome);
    QFETCH(QStringList, frames);
    QFETCH(QString, caption);
    QFETCH(bool, green);
    QFETCH(bool, pollingAfter);
    QFETCH(QStringList, monthlyLines);
    QFETCH(QStringList, hiddenLines);
    QFETCH(QStringList, opLines);

    ScaleName[size_t(scale)] = QStringLiteral("一号秤");
    ScaleDecimals[size_t(scale)] = 1;  // 1500.5 goes as 15005
    h->sim.setLoad(scale, 3000);       // zero point 2000: the weight shows 1000 raw, 100.0
    h->sim.setCalOutcome(Outcome(outcome));
    QWidget* f = openAt(scale);
    clickTab(f, span ? 2 : 1);
    QTRY_COMPARE(label(f, "LbLADv")->text(), QStringLiteral("3000"));
    QCOMPARE(label(f, "LblZLv")->text(), QStringLiteral("100.0"));
    Ctl<QLineEdit>(f, "TxtFmzL")->setText(QStringLiteral("1500.5"));
    mb->queue(true);
    ClickOn(label(f, "lblBdOk"));
    QCOMPARE(mb->texts.value(0), span ? QStringLiteral("确定要称量分度调校吗?") : QStringLiteral("确定要进行零位调校吗?"));
    QLabel* line = label(f, span ? "LbLBZwc" : "LbLBLwc");
    QCOMPARE(line->text(), span ? QStringLiteral("正在称量分度调校，请稍候......") : QStringLiteral("正在零位调校，请稍候......"));
    QCOMPARE(TextColor(line), QColor(Qt::red));
    QVERIFY(!Link().Timer1.isActive());
    QVERIFY(Link().Timer3.isActive());
    QCOMPARE(Link().Timer3.interval(), 1000);
    waitIdle();
    h->takeFrames();
    // Nothing leaves before Timer3 ticks.
    QTest::qWait(20);
    QVERIFY(h->takeFrames().isEmpty());

    Link().timer3Tick();
    QTRY_COMPARE(line->text(), caption);
    waitIdle();
    QCOMPARE(h->takeFrames(), frames);
    QCOMPARE(TextColor(line), green ? QColor(0, 0x80, 0) : QColor(Qt::red));
    QVERIFY(line->isVisible() || !f->isVisible());
    QCOMPARE(Link().Timer1.isActive(), pollingAfter);

    QCOMPARE(rawBytes(monthly()), GbLines(monthlyLines));
    QCOMPARE(rawBytes(hidden()), GbLines(hiddenLines));
    QCOMPARE(rawBytes(dataPath(QStringLiteral("BiaoCeng.txt"))), GbLines(opLines));
    if (!hiddenLines.isEmpty())
        QVERIFY(AppPaths::isHidden(h->path(QStringLiteral("drive_c/Program Files/MswSpool"))));
}

void YIBiaoTest::statusReply_data()
{
    QTest::addColumn<int>("tab");  // clicked while the procedure runs; -1: none
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<bool>("taken");  // green and recorded
    QTest::addColumn<bool>("polling");
    QTest::addColumn<QString>("slotAfter");
    const QString done = "零位调校完成，请再进行实际验秤!";
    const QString busy = "正在零位调校，请稍候......";
    QTest::newRow("8000 taken") << -1 << "8000" << done << true << false << "XXX";
    QTest::newRow("4000 refused") << -1 << "4000" << "零位调校失败，请重新调校!" << false << true << "XXX";
    QTest::newRow("0000 no answer") << -1 << "0000" << "零位调校出错，请重新调校!" << false << true << "XXX";
    QTest::newRow("C000 taken, polling on") << -1 << "C000" << done << true << true << "XXX";
    QTest::newRow("three characters") << -1 << "800" << busy << false << false << "800";
    QTest::newRow("five characters") << -1 << "80000" << busy << false << false << "80000";
    QTest::newRow("empty") << -1 << "" << busy << false << false << "0";
    QTest::newRow("option tab clicked, taken") << 0 << "8000" << busy << false << false << "";
    QTest::newRow("span tab clicked, refused") << 2 << "4000" << busy << false << false << "";
}

void YIBiaoTest::statusReply()
{
    QFETCH(int, tab);
    QFETCH(QString, reply);
    QFETCH(QString, caption);
    QFETCH(bool, taken);
    QFETCH(bool, polling);
    QFETCH(QString, slotAfter);
    QWidget* f = openAt(0);
    clickTab(f, 1);
    waitIdle();
    mb->queue(true);
    ClickOn(label(f, "lblBdOk"));
    // The reply is handed over as the dispatch would, without the pulses.
    Link().Timer3.stop();
    ZeroRequest = false;
    waitIdle();
    if (tab >= 0)
        clickTab(f, tab);
    waitIdle();
    h->takeFrames();
    SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), QStringLiteral("XXX"));
    SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), reply);

    QLabel* line = label(f, "LbLBLwc");
    QCOMPARE(line->text(), caption);
    QCOMPARE(QFile::exists(dataPath(QStringLiteral("BiaoCeng.txt"))), taken);
    QCOMPARE(QFile::exists(monthly()), taken);
    if (tab >= 0) {
        QVERIFY(line->isHidden() && label(f, "LbLBZwc")->isHidden());
        QVERIFY(BiaoZeroTime[0].isEmpty());
        return;
    }
    QCOMPARE(TextColor(line), taken ? QColor(0, 0x80, 0) : QColor(Qt::red));
    QCOMPARE(Link().Timer1.isActive(), polling);
    QCOMPARE(Ctl<QLineEdit>(f, "txtBCSuccessRead")->text(), slotAfter);
    waitIdle();
    QCOMPARE(h->takeFrames().contains(kLiveRead), !caption.startsWith(QStringLiteral("正在")));
}

void YIBiaoTest::optionSwitches_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("partner");
    QTest::addColumn<QString>("frame");
    QTest::addColumn<QString>("tip");  // after the acknowledgement
    // S500.. word read as "2112": S496 and S508 are foreign bits; S501 and S505 are on.
    QTest::newRow("verified mode ticked") << "Check1(11)"
                                          << "Check1(10)" << WriteFrame("003E", "2110") << "调校方式已更改!";
    QTest::newRow("plain mode cleared") << "Check1(10)"
                                        << "Check1(11)" << WriteFrame("003E", "2110") << "调校方式已更改!";
    // S612.. word read as "1100": S608 foreign, S612 on (tracking off).
    // Only the "off" box words the tip; after the other the tip shows as designed.
    QTest::newRow("tracking on ticked") << "Check2(1)"
                                        << "Check2(0)" << WriteFrame("004C", "0100") << "零位跟踪功能已更改！";
    QTest::newRow("tracking off cleared") << "Check2(0)"
                                          << "Check2(1)" << WriteFrame("004C", "0100") << "零位跟踪功能已开启！";
}

void YIBiaoTest::optionSwitches()
{
    QFETCH(QString, box);
    QFETCH(QString, partner);
    QFETCH(QString, frame);
    QFETCH(QString, tip);
    for (int s : {496, 501, 505, 508, 608})
        h->sim.setSBit(s, true);
    QWidget* f = openAt(0);
    QVERIFY(Ctl<QCheckBox>(f, "Check1(10)")->isChecked());
    QVERIFY(!Ctl<QCheckBox>(f, "Check1(11)")->isChecked());
    QVERIFY(Ctl<QCheckBox>(f, "Check2(0)")->isChecked());
    h->takeFrames();
    Ctl<QCheckBox>(f, box)->click();
    waitIdle();
    QCOMPARE(h->takeFrames(), QStringList{frame});
    QLabel* l = label(f, box.startsWith(QStringLiteral("Check1")) ? "LblTzxxTip" : "LblTzxxZeroTip");
    QVERIFY(l->isVisible());
    QCOMPARE(l->text(), tip);
    if (box != QLatin1String("Check2(1)"))
        QCOMPARE(TextColor(l), QColor(0, 0x80, 0));
    QCOMPARE(Ctl<QCheckBox>(f, partner)->isChecked(), !Ctl<QCheckBox>(f, box)->isChecked());
}

QTEST_MAIN(YIBiaoTest)
#include "yi_biao_test.moc"
