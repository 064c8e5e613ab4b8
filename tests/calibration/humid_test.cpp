#include "test_support.h"

#include "calibration/cal_records.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "link/form_access.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "shell/app_setup.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

using plcsim::Outcome;

namespace {
const QString kTail = Frame(QStringLiteral("0007C02")) + Frame(QStringLiteral("0101640"));  // status, live
// The pulse, its clear, the status read and the live values that follow.
QString pulse(const char* address, const char* bits)
{
    return WriteFrame(address, bits) + WriteFrame(address, "0000") + kTail;
}
QLabel* label(QWidget* f, const char* n) { return Ctl<QLabel>(f, QLatin1String(n)); }
}  // namespace

class HumidTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterCalibrationForms(); }
    void moistureGoesToItsOwnForm_data();
    void moistureGoesToItsOwnForm();
};

void HumidTest::moistureGoesToItsOwnForm_data()
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

void HumidTest::moistureGoesToItsOwnForm()
{
    QFETCH(int, probe);
    QFETCH(bool, span);
    QFETCH(int, outcome);
    QFETCH(QString, frames);
    const QString caption = QStringList{"湿度标定完成!", "湿度标定失败，请重新标定!", "湿度标定错误，请重新标定!"}[outcome];
    ConsoleHarness h;
    MbAnswerer mb;
    QDir(h.dir.path()).mkpath(QStringLiteral("Data"));
    CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
    h.connectLink();
    h.sim.setCalOutcome(Outcome(outcome));
    h.sim.setLoad(probe, 2600 + probe);
    ScaleDecimals[size_t(probe)] = 1;
    // A weight form left open must see nothing of the moisture calibration.
    ScaleNo = short(probe);
    OptionDevice = QLatin1String(kScaleDevices[size_t(probe)].option);
    Forms::show(QStringLiteral("YIBiao"));
    QWidget* weightForm = Forms::loaded(QStringLiteral("YIBiao"));
    QTRY_VERIFY(SendFlag && !Ctl<QLineEdit>(weightForm, "txtTzxxZeroRead")->text().isEmpty());

    HumidActive = true;
    Forms::show(QStringLiteral("BcButHumid"));
    ClickOn(label(Forms::loaded(QStringLiteral("BcButHumid")), QStringLiteral("LblBd(%1)").arg(probe).toLatin1()));
    QWidget* f = Forms::loaded(QStringLiteral("YIBiaoHumidNew"));
    QVERIFY(f);
    QTRY_COMPARE(label(f, "LbLADv")->text(), QString::number(2600 + probe));
    if (span) {
        ClickOn(label(f, "LblBd(2)"));
        QTRY_VERIFY(SendFlag);
        Ctl<QLineEdit>(f, "TxtFmzL")->setText(QStringLiteral("12.5"));
    }
    mb.queue(true);
    ClickOn(label(f, "lblBdOk"));
    QCOMPARE(mb.texts.value(0), QStringLiteral("确定要湿度标定吗?"));
    QTRY_VERIFY(SendFlag);
    h.takeFrames();
    Link().timer3Tick();
    QLabel* line = label(f, span ? "LbLBZwc" : "LbLBLwc");
    QTRY_COMPARE(line->text(), caption);
    QTRY_VERIFY(SendFlag);
    QCOMPARE(h.takeFrames().join(QString()), frames);

    QVERIFY(label(weightForm, "LbLADv")->text().isEmpty() && label(weightForm, "LbLBLwc")->isHidden() &&
            label(weightForm, "LbLBZwc")->isHidden());
    QCOMPARE(Ctl<QLineEdit>(weightForm, "txtBCSuccessRead")->text(), QString());
    QCOMPARE(QFile::exists(h.path(QStringLiteral("Data/20263BiaoCen.txt"))), outcome == int(Outcome::Success));
    QVERIFY(!QFile::exists(h.path(QStringLiteral("Data/BiaoCeng.txt"))));  // not in the viewer's list
    CalClock = {};
}

QTEST_MAIN(HumidTest)
#include "humid_test.moc"
