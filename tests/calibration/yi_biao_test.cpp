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
// Frames written out by hand: body between STX and ETX, then the low byte of the sum from body to ETX.
QString frame(const QString& body)
{
    int sum = 3;
    for (QChar c : body)
        sum += c.unicode();
    return QChar(2) + body + QChar(3) + QStringLiteral("%1").arg(sum & 0xFF, 2, 16, QLatin1Char('0')).toUpper();
}
QString wr(const char* address, const char* data)
{
    return frame(QStringLiteral("1") + QLatin1String(address) + QStringLiteral("02") + QLatin1String(data));
}
QString rd(const char* address, const char* count)
{
    return frame(QStringLiteral("0") + QLatin1String(address) + QLatin1String(count));
}
const QString kLiveRead = rd("1016", "40");
const QString kStatusRead = rd("007C", "02");
const QDateTime kNow(QDate(2026, 3, 5), QTime(14, 3, 22));
const QString kSep(52, QLatin1Char('#'));

QByteArray fileBytes(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}
// Expected file text: lines joined with CRLF, in the stations' code page.
QByteArray gbLines(const QStringList& lines)
{
    return lines.isEmpty() ? QByteArray() : TextFile::encode(lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"));
}
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
    void tabClickDuringProcedureSilencesOutcome_data();
    void tabClickDuringProcedureSilencesOutcome();
    void successStopsPollingUntilTabIsOpenedAgain();
    void testWeightRange_data();
    void testWeightRange();
    void entryKeys_data();
    void entryKeys();
    void zeroTrackingGuard_data();
    void zeroTrackingGuard();
    void optionSwitches_data();
    void optionSwitches();
    void shortOptionReadReportsOnce();
    void liveValuesWithDecimals_data();
    void liveValuesWithDecimals();
    void currentVariant_data();
    void currentVariant();
    void returnGoesQuiet();

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
    CalClock = [] { return kNow; };
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

void YIBiaoTest::clickTab(QWidget* f, int i)
{
    ClickOn(label(f, QStringLiteral("LblBd(%1)").arg(i).toLatin1()));
}

// ---- the procedures against the simulated controller ----

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
        << QStringList{wr("0016", "2000"), wr("0016", "0000"), kStatusRead, kLiveRead}
        << "零位调校完成，请再进行实际验秤!" << true << false
        << QStringList{n + "BiaoZeroTime=2026/3/5 14:03:22", n + "BiaoZeroADValue=3000", n + "BiaoZeroWTValue=100.0", kSep}
        << QStringList{"CengIndex=1", n + "BiaoZeroTime=2026/3/5 14:03:22", n + "BiaoZeroADValue=3000",
                       n + "BiaoZeroWTValue=100.0", kSep}
        << QStringList{n, "2026/3/5 14:03:22", "张工", "标零", "3000", "100.0", "1500.5", ""};
    QTest::newRow("span, scale 0, taken")
        << 0 << true << int(Outcome::Success)
        << QStringList{wr("1056", "9D3A"), wr("0016", "4000"), wr("0016", "0000"), kStatusRead, kLiveRead}
        << "分度调校完成，请再进行实际验秤!" << true << false
        << QStringList{"CengIndex=1", n + "BiaoWeightTime=2026/3/5 14:03:22", n + "BiaoWeightADValue=3000",
                       n + "BiaoWeightWTValue=100.0", n + "BiaoWeightFMValue=1500.5", kSep}
        << QStringList{"CengIndex=1", n + "BiaoWeightTime=2026/3/5 14:03:22", n + "BiaoWeightADValue=3000",
                       n + "BiaoWeightWTValue=100.0", n + "BiaoWeightFMValue=1500.5", kSep}
        << QStringList{n, "2026/3/5 14:03:22", "张工", "标重", "3000", "100.0", "1500.5", ""};
    // Indices 6 and 10 lie apart: S205 is bit 5 of byte 0x19, S208 bit 0 of byte 0x1A, D53 at 0x106A.
    QTest::newRow("zero, scale 6, refused")
        << 6 << false << int(Outcome::Refuse)
        << QStringList{wr("0019", "2000"), wr("0019", "0000"), kStatusRead, kLiveRead}
        << "零位调校失败，请重新调校!" << false << true << QStringList() << QStringList() << QStringList();
    QTest::newRow("span, scale 10, unanswered")
        << 10 << true << int(Outcome::NoAnswer)
        << QStringList{wr("106A", "9D3A"), wr("001A", "0100"), wr("001A", "0000"), kStatusRead, kLiveRead}
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

    QCOMPARE(fileBytes(monthly()), gbLines(monthlyLines));
    QCOMPARE(fileBytes(hidden()), gbLines(hiddenLines));
    QCOMPARE(fileBytes(dataPath(QStringLiteral("BiaoCeng.txt"))), gbLines(opLines));
    if (!hiddenLines.isEmpty())
        QVERIFY(AppPaths::isHidden(h->path(QStringLiteral("drive_c/Program Files/MswSpool"))));
}

// ---- the outcome rules ----

void YIBiaoTest::statusReply_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<bool>("green");
    QTest::addColumn<bool>("polling");
    QTest::addColumn<bool>("liveRead");  // a read of the live block followed
    QTest::addColumn<bool>("recorded");
    QTest::addColumn<QString>("slotAfter");

    const QString busy = QStringLiteral("正在零位调校，请稍候......");
    QTest::newRow("8000 taken") << "8000" << "零位调校完成，请再进行实际验秤!" << true << false << true << true << "XXX";
    QTest::newRow("4000 refused") << "4000" << "零位调校失败，请重新调校!" << false << true << true << false << "XXX";
    QTest::newRow("0000 no answer") << "0000" << "零位调校出错，请重新调校!" << false << true << true << false << "XXX";
    QTest::newRow("C000 taken, polling on") << "C000" << "零位调校完成，请再进行实际验秤!" << true << true << true << true
                                            << "XXX";
    QTest::newRow("three characters") << "800" << busy << false << false << false << false << "800";
    QTest::newRow("five characters") << "80000" << busy << false << false << false << false << "80000";
    QTest::newRow("empty") << "" << busy << false << false << false << false << "0";
}

void YIBiaoTest::statusReply()
{
    QFETCH(QString, reply);
    QFETCH(QString, caption);
    QFETCH(bool, green);
    QFETCH(bool, polling);
    QFETCH(bool, liveRead);
    QFETCH(bool, recorded);
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
    h->takeFrames();
    SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), QStringLiteral("XXX"));
    SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), reply);

    QLabel* line = label(f, "LbLBLwc");
    QCOMPARE(line->text(), caption);
    QCOMPARE(TextColor(line), green ? QColor(0, 0x80, 0) : QColor(Qt::red));
    QCOMPARE(Link().Timer1.isActive(), polling);
    QCOMPARE(Ctl<QLineEdit>(f, "txtBCSuccessRead")->text(), slotAfter);
    waitIdle();
    QCOMPARE(h->takeFrames().contains(kLiveRead), liveRead);
    QCOMPARE(QFile::exists(dataPath(QStringLiteral("BiaoCeng.txt"))), recorded);
    QCOMPARE(QFile::exists(monthly()), recorded);
}

void YIBiaoTest::tabClickDuringProcedureSilencesOutcome_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("reply");
    QTest::newRow("option tab, taken") << 0 << "8000";
    QTest::newRow("span tab, taken") << 2 << "8000";
    QTest::newRow("span tab, refused") << 2 << "4000";
    QTest::newRow("span tab, no answer") << 2 << "0000";
}

void YIBiaoTest::tabClickDuringProcedureSilencesOutcome()
{
    QFETCH(int, tab);
    QFETCH(QString, reply);
    QWidget* f = openAt(0);
    clickTab(f, 1);
    waitIdle();
    mb->queue(true);
    ClickOn(label(f, "lblBdOk"));
    Link().Timer3.stop();
    ZeroRequest = false;
    waitIdle();
    clickTab(f, tab);
    waitIdle();
    SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), reply);

    QVERIFY(label(f, "LbLBLwc")->isHidden());
    QVERIFY(label(f, "LbLBZwc")->isHidden());
    QCOMPARE(label(f, "LbLBLwc")->text(), QStringLiteral("正在零位调校，请稍候......"));
    QVERIFY(!QFile::exists(dataPath(QStringLiteral("BiaoCeng.txt"))));
    QVERIFY(!QFile::exists(monthly()));
    QVERIFY(BiaoZeroTime[0].isEmpty());
}

void YIBiaoTest::successStopsPollingUntilTabIsOpenedAgain()
{
    QWidget* f = openAt(0);
    clickTab(f, 1);
    waitIdle();
    mb->queue(true);
    ClickOn(label(f, "lblBdOk"));
    waitIdle();
    Link().timer3Tick();
    QTRY_COMPARE(label(f, "LbLBLwc")->text(), QStringLiteral("零位调校完成，请再进行实际验秤!"));
    waitIdle();
    // The read after the success shows the calibrated weight, then the values stand still.
    QTRY_COMPARE(label(f, "LblZLv")->text(), QStringLiteral("0"));
    QVERIFY(!Link().Timer1.isActive());
    h->takeFrames();
    clickTab(f, 1);
    QVERIFY(Link().Timer1.isActive());
    waitIdle();
    QCOMPARE(h->takeFrames(), QStringList{kLiveRead});
}

// ---- the test weight ----

void YIBiaoTest::testWeightRange_data()
{
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("box");  // the first box the operator sees
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("sent");

    const QString ask = QStringLiteral("确定要称量分度调校吗?");
    const QString range = QStringLiteral("请检查!当前砝码重量的输入范围为:");
    QTest::newRow("1, no decimals") << 0 << "1" << ask << "1" << "1";
    QTest::newRow("30000, no decimals") << 0 << "30000" << ask << "30000" << "30000";
    QTest::newRow("30000.1, no decimals") << 0 << "30000.1" << range + "(1-30000)Kg" << "30000.1" << "";
    QTest::newRow("0.9, one decimal") << 1 << "0.9" << range + "(1-3000)Kg" << "0.9" << "";
    QTest::newRow("3000, one decimal") << 1 << "3000" << ask << "3000.0" << "30000";
    QTest::newRow("3000.1, one decimal") << 1 << "3000.1" << range + "(1-3000)Kg" << "3000.1" << "";
    QTest::newRow("1500.5, one decimal") << 1 << "1500.5" << ask << "1500.5" << "15005";
    QTest::newRow("12.3, two decimals") << 2 << "12.3" << ask << "12.30" << "1230";
    QTest::newRow("300, two decimals") << 2 << "300" << ask << "300.00" << "30000";
    QTest::newRow("300.1, two decimals") << 2 << "300.1" << range + "(1-300)Kg" << "300.1" << "";
    QTest::newRow("empty") << 1 << "" << range + "(1-3000)Kg" << "" << "";
}

void YIBiaoTest::testWeightRange()
{
    QFETCH(int, decimals);
    QFETCH(QString, entry);
    QFETCH(QString, box);
    QFETCH(QString, shown);
    QFETCH(QString, sent);
    ScaleDecimals[3] = short(decimals);
    QWidget* f = openAt(3);
    clickTab(f, 2);
    waitIdle();
    auto* e = Ctl<QLineEdit>(f, "TxtFmzL");
    e->setText(entry);
    auto* fm = Ctl<QLineEdit>(f, "TxtFm");
    fm->setText(QStringLiteral("-"));
    mb->queue(false);
    ClickOn(label(f, "lblBdOk"));
    QCOMPARE(mb->texts.value(0), box);
    QCOMPARE(mb->okOnly.value(0), !box.startsWith(QStringLiteral("确定")));
    QCOMPARE(e->text(), shown);
    if (!sent.isEmpty())
        QCOMPARE(fm->text(), sent);
    QVERIFY(!SpanRequest);
    QVERIFY(!Link().Timer3.isActive());
    QCOMPARE(MbResult, false);
}

void YIBiaoTest::entryKeys_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("text");
    QTest::newRow("digits") << "1234567890" << "1234567890";
    QTest::newRow("letters and signs dropped") << "1a-2+b3 " << "123";
    QTest::newRow("second point dropped") << "1.2.3" << "1.23";
    QTest::newRow("leading point gets a zero") << ".5" << "0.5";
}

void YIBiaoTest::entryKeys()
{
    QFETCH(QString, typed);
    QFETCH(QString, text);
    QWidget* f = openAt(0);
    clickTab(f, 2);
    auto* e = Ctl<QLineEdit>(f, "TxtFmzL");
    e->clear();
    e->setFocus();
    QTest::keyClicks(e, typed);
    QCOMPARE(e->text(), text);
}

// ---- zero tracking and calibration mode ----

void YIBiaoTest::zeroTrackingGuard_data()
{
    QTest::addColumn<bool>("trackingOff");
    QTest::addColumn<int>("tab");
    QTest::addColumn<bool>("refused");
    QTest::newRow("tracking on, zero tab") << false << 1 << true;
    QTest::newRow("tracking on, span tab") << false << 2 << true;
    QTest::newRow("tracking off, zero tab") << true << 1 << false;
    QTest::newRow("tracking off, span tab") << true << 2 << false;
}

void YIBiaoTest::zeroTrackingGuard()
{
    QFETCH(bool, trackingOff);
    QFETCH(int, tab);
    QFETCH(bool, refused);
    QWidget* f = openAt(0, trackingOff);
    h->takeFrames();
    clickTab(f, tab);
    clickTab(f, tab);
    const QString msg = QStringLiteral("调校之前,零位跟踪功能需关闭,全部调校完成之后再开启!");
    const QStringList boxes = refused ? QStringList{msg, msg} : QStringList();
    QCOMPARE(mb->texts, boxes);
    QCOMPARE(Ctl<QWidget>(f, "PicYiBiao(0)")->isVisible(), refused);
    QCOMPARE(Link().Timer1.isActive(), !refused);
    waitIdle();
    QCOMPARE(h->takeFrames().contains(kLiveRead), !refused);
}

void YIBiaoTest::optionSwitches_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("frame");
    QTest::addColumn<QString>("tipLabel");
    QTest::addColumn<QString>("tip");  // after the acknowledgement
    // S500.. word read as "2112": S496 and S508 are foreign bits; S501 and S505 are on.
    QTest::newRow("verified mode ticked") << "Check1(11)" << wr("003E", "2110") << "LblTzxxTip" << "调校方式已更改!";
    QTest::newRow("plain mode cleared") << "Check1(10)" << wr("003E", "2110") << "LblTzxxTip" << "调校方式已更改!";
    // S612.. word read as "1100": S608 foreign, S612 on (tracking off).
    // Only the "off" box words the tip; after the other the tip shows as designed.
    QTest::newRow("tracking on ticked") << "Check2(1)" << wr("004C", "0100") << "LblTzxxZeroTip" << "零位跟踪功能已更改！";
    QTest::newRow("tracking off cleared") << "Check2(0)" << wr("004C", "0100") << "LblTzxxZeroTip" << "零位跟踪功能已开启！";
}

void YIBiaoTest::optionSwitches()
{
    QFETCH(QString, box);
    QFETCH(QString, frame);
    QFETCH(QString, tipLabel);
    QFETCH(QString, tip);
    for (int s : {496, 501, 505, 508, 608})
        h->sim.setSBit(s, true);
    QWidget* f = openAt(0);
    QVERIFY(Ctl<QCheckBox>(f, "Check1(10)")->isChecked());
    QVERIFY(!Ctl<QCheckBox>(f, "Check1(11)")->isChecked());
    QVERIFY(Ctl<QCheckBox>(f, "Check2(0)")->isChecked());
    // Setting the boxes from the read wrote nothing.
    h->takeFrames();
    Ctl<QCheckBox>(f, box)->click();
    waitIdle();
    QCOMPARE(h->takeFrames(), QStringList{frame});
    QLabel* l = label(f, tipLabel.toLatin1());
    QVERIFY(l->isVisible());
    QCOMPARE(l->text(), tip);
    if (box != QLatin1String("Check2(1)"))
        QCOMPARE(TextColor(l), QColor(0, 0x80, 0));
    // The partner shows the opposite.
    const QString partner = box.left(box.indexOf('(') + 1) +
                            QString::number(box.contains("Check1") ? 21 - box.mid(7, 2).toInt() : 1 - box.mid(7, 1).toInt()) +
                            ")";
    QCOMPARE(Ctl<QCheckBox>(f, partner)->isChecked(), !Ctl<QCheckBox>(f, box)->isChecked());
}

void YIBiaoTest::shortOptionReadReportsOnce()
{
    QWidget* f = openAt(0);
    h->takeFrames();
    SetSlot(QStringLiteral("YIBiao"), QStringLiteral("txtTzxxRead"), QString());
    auto* verified = Ctl<QCheckBox>(f, "Check1(11)");
    QVERIFY(verified->isChecked());  // S505 off
    verified->click();
    verified->setChecked(true);
    verified->click();  // the same short word again: no second box
    QCOMPARE(mb->texts.size(), 1);
    verified->click();  // another word
    QCOMPARE(mb->texts.size(), 2);
    QVERIFY(mb->texts.value(0).startsWith(QStringLiteral("通讯发生错误请检查：")));
    QVERIFY(mb->texts.value(0).endsWith(QStringLiteral("3、通讯线是否接在端口:Com2,且接触良好。")));
    QCOMPARE(mb->errorIcons.value(0), true);
    QVERIFY(h->takeFrames().isEmpty());
}

// ---- live values ----

void YIBiaoTest::liveValuesWithDecimals_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<int>("raw");
    QTest::addColumn<QString>("weight");
    QTest::newRow("no decimals") << 2 << 0 << 1234 << "1234";
    QTest::newRow("two decimals") << 8 << 2 << 1234 << "12.34";
    QTest::newRow("one decimal, negative") << 13 << 1 << -5 << "-0.5";
}

void YIBiaoTest::liveValuesWithDecimals()
{
    QFETCH(int, scale);
    QFETCH(int, decimals);
    QFETCH(int, raw);
    QFETCH(QString, weight);
    ScaleDecimals[size_t(scale)] = short(decimals);
    QWidget* f = openAt(scale);
    h->sim.setWord(11 + scale, 4321);
    h->sim.setWord(27 + scale, short(raw));
    clickTab(f, 1);
    QTRY_COMPARE(label(f, "LblZLv")->text(), weight);
    QCOMPARE(label(f, "LbLADv")->text(), QStringLiteral("4321"));
}

// ---- the current variant ----

void YIBiaoTest::currentVariant_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("sent");  // frame of the value after Timer3
    QTest::newRow("1") << "1" << true << wr("1070", "0100");
    QTest::newRow("400") << "400" << true << wr("1070", "9001");
    QTest::newRow("250 unscaled") << "250" << true << wr("1070", "FA00");
    QTest::newRow("0.9") << "0.9" << false << "";
    QTest::newRow("400.1") << "400.1" << false << "";
}

void YIBiaoTest::currentVariant()
{
    QFETCH(QString, entry);
    QFETCH(bool, accepted);
    QFETCH(QString, sent);
    IsCurrentCal = true;
    ScaleDecimals[13] = 2;  // the current is sent as typed, whatever the scale's decimals
    ScaleNo = 13;
    ScaleTitle = QStringLiteral("电流标定");
    CalWeightDevice = QStringLiteral("D56");
    CalZeroDevice = QStringLiteral("S203");
    CalSpanDevice = QStringLiteral("S204");
    OptionDevice = QStringLiteral("S604");
    Forms::show(QStringLiteral("YIBiao"));
    QWidget* f = Forms::loaded(QStringLiteral("YIBiao"));
    waitIdle();
    // No option read: the zero tab opens at once and polls.
    QCOMPARE(h->takeFrames(), QStringList{kLiveRead});
    QVERIFY(Ctl<QWidget>(f, "ImgBd(0)")->isHidden());
    QVERIFY(Link().Timer1.isActive());
    QCOMPARE(Ctl<QLineEdit>(f, "TxtFmzL")->toolTip(), QStringLiteral("Input Range:(1-400)"));
    QCOMPARE(label(f, "lblFmzLUnit")->text(), QStringLiteral("A"));

    clickTab(f, 2);
    QVERIFY(mb->texts.isEmpty());  // no zero tracking guard
    QCOMPARE(label(f, "lblFmzL")->text(), QStringLiteral("请输入实测电流值:"));
    QCOMPARE(label(f, "LblCansd(1)")->text(), QStringLiteral("电流显示值:"));
    waitIdle();
    Ctl<QLineEdit>(f, "TxtFmzL")->setText(entry);
    mb->queue(true);
    mb->queue(true);
    ClickOn(label(f, "lblBdOk"));
    if (!accepted) {
        QCOMPARE(mb->texts, QStringList{QStringLiteral("请检查!当前电流的输入范围为:(1-400)A")});
        QCOMPARE(mb->okOnly.value(0), false);
        QVERIFY(!SpanRequest);
        return;
    }
    waitIdle();
    h->takeFrames();
    Link().timer3Tick();
    waitIdle();
    QTRY_COMPARE(h->sim.requests().size(), 5);
    QCOMPARE(h->takeFrames().value(0), sent);
}

void YIBiaoTest::returnGoesQuiet()
{
    QWidget* f = openAt(0);
    clickTab(f, 1);
    QVERIFY(Link().Timer1.isActive());
    ClickOn(label(f, "lblReturn"));
    QVERIFY(!Link().Timer1.isActive());
    QVERIFY(!Link().Timer2.isActive());
    QCOMPARE(StepNo, short(444));
    QTRY_VERIFY(!Forms::loaded(QStringLiteral("YIBiao")));
}

QTEST_MAIN(YIBiaoTest)
#include "yi_biao_test.moc"
