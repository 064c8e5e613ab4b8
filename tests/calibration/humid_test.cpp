#include "test_support.h"

#include "calibration/cal_records.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
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
const QString kStatusRead = frame(QStringLiteral("0007C02"));
const QString kLiveRead = frame(QStringLiteral("0101640"));
QLabel* label(QWidget* f, const char* n) { return Ctl<QLabel>(f, QLatin1String(n)); }
}  // namespace

class HumidTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterCalibrationForms(); }
    void init();
    void cleanup();

    void moistureGoesToItsOwnForm_data();
    void moistureGoesToItsOwnForm();
    void knownMoistureRange_data();
    void knownMoistureRange();

private:
    QWidget* openProbe(int button);
    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

void HumidTest::init()
{
    h = new ConsoleHarness;
    mb = new MbAnswerer;
    QDir(h->dir.path()).mkpath(QStringLiteral("Data"));
    CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
    h->connectLink();
}

void HumidTest::cleanup()
{
    delete mb;
    delete h;
    CalClock = {};
}

// The moisture menu, as the main form's moisture entry opens it, and a click on a probe.
QWidget* HumidTest::openProbe(int button)
{
    HumidActive = true;
    Forms::show(QStringLiteral("BcButHumid"));
    ClickOn(label(Forms::loaded(QStringLiteral("BcButHumid")), QStringLiteral("LblBd(%1)").arg(button).toLatin1()));
    return Forms::loaded(QStringLiteral("YIBiaoHumidNew"));
}

void HumidTest::moistureGoesToItsOwnForm_data()
{
    QTest::addColumn<int>("probe");
    QTest::addColumn<bool>("span");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QStringList>("frames");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<bool>("monthlyWritten");
    // The probes use the bits of slots 4 and 5 and take their known value at D29 and D30.
    QTest::newRow("dry point, probe 4")
        << 4 << false << int(Outcome::Success) << QStringList{wr("0017", "2000"), wr("0017", "0000"), kStatusRead, kLiveRead}
        << "湿度标定完成!" << true;
    QTest::newRow("wet point, probe 4")
        << 4 << true << int(Outcome::Success)
        << QStringList{wr("103A", "7D00"), wr("0017", "4000"), wr("0017", "0000"), kStatusRead, kLiveRead}
        << "湿度标定完成!" << true;
    QTest::newRow("wet point, probe 5, refused")
        << 5 << true << int(Outcome::Refuse)
        << QStringList{wr("103C", "7D00"), wr("0018", "0100"), wr("0018", "0000"), kStatusRead, kLiveRead}
        << "湿度标定失败，请重新标定!" << false;
    QTest::newRow("dry point, probe 5, unanswered")
        << 5 << false << int(Outcome::NoAnswer) << QStringList{wr("0017", "8000"), wr("0017", "0000"), kStatusRead, kLiveRead}
        << "湿度标定错误，请重新标定!" << false;
}

void HumidTest::moistureGoesToItsOwnForm()
{
    QFETCH(int, probe);
    QFETCH(bool, span);
    QFETCH(int, outcome);
    QFETCH(QStringList, frames);
    QFETCH(QString, caption);
    QFETCH(bool, monthlyWritten);
    h->sim.setCalOutcome(Outcome(outcome));
    h->sim.setLoad(probe, 2600 + probe);
    ScaleDecimals[size_t(probe)] = 1;
    // A weight form left open must see nothing of the moisture calibration.
    ScaleNo = short(probe);
    OptionDevice = QLatin1String(kScaleDevices[size_t(probe)].option);
    Forms::show(QStringLiteral("YIBiao"));
    QWidget* weightForm = Forms::loaded(QStringLiteral("YIBiao"));
    QTRY_VERIFY(SendFlag && !Ctl<QLineEdit>(weightForm, "txtTzxxZeroRead")->text().isEmpty());

    QWidget* f = openProbe(probe);
    QVERIFY(f);
    QCOMPARE(label(f, "LblBceng")->text(), (probe == 4 ? QStringLiteral("骨料3") : QStringLiteral("骨料4")) +
                                               QStringLiteral(" 湿度标定 "));
    QTRY_COMPARE(label(f, "LbLADv")->text(), QString::number(2600 + probe));
    if (span) {
        ClickOn(label(f, "LblBd(2)"));
        QTRY_VERIFY(SendFlag);
        Ctl<QLineEdit>(f, "TxtFmzL")->setText(QStringLiteral("12.5"));
    }
    mb->queue(true);
    ClickOn(label(f, "lblBdOk"));
    QCOMPARE(mb->texts.value(0), QStringLiteral("确定要湿度标定吗?"));
    QLabel* line = label(f, span ? "LbLBZwc" : "LbLBLwc");
    QCOMPARE(line->text(), QStringLiteral("正在湿度标定，请稍候......"));
    QTRY_VERIFY(SendFlag);
    h->takeFrames();
    Link().timer3Tick();
    QTRY_COMPARE(line->text(), caption);
    QTRY_VERIFY(SendFlag);
    QCOMPARE(h->takeFrames(), frames);

    QVERIFY(label(weightForm, "LbLADv")->text().isEmpty());
    QVERIFY(label(weightForm, "LbLBLwc")->isHidden());
    QVERIFY(label(weightForm, "LbLBZwc")->isHidden());
    QCOMPARE(Ctl<QLineEdit>(weightForm, "txtBCSuccessRead")->text(), QString());
    QCOMPARE(QFile::exists(h->path(QStringLiteral("Data/20263BiaoCen.txt"))), monthlyWritten);
    // No trace in the viewer's list.
    QVERIFY(!QFile::exists(h->path(QStringLiteral("Data/BiaoCeng.txt"))));
}

void HumidTest::knownMoistureRange_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("box");
    const QString ask = QStringLiteral("确定要湿度标定吗?");
    const QString range = QStringLiteral("请检查!实际湿度值的输入范围为:(1-20)%");
    QTest::newRow("1") << "1" << ask;
    QTest::newRow("20") << "20" << ask;
    QTest::newRow("0.9") << "0.9" << range;
    QTest::newRow("20.1") << "20.1" << range;
}

void HumidTest::knownMoistureRange()
{
    QFETCH(QString, entry);
    QFETCH(QString, box);
    QWidget* f = openProbe(4);
    ClickOn(label(f, "LblBd(2)"));
    Ctl<QLineEdit>(f, "TxtFmzL")->setText(entry);
    mb->queue(false);
    ClickOn(label(f, "lblBdOk"));
    QCOMPARE(mb->texts, QStringList{box});
    QCOMPARE(mb->okOnly.value(0), false);  // Yes and No, also for the range
    QVERIFY(!SpanRequest);
}

QTEST_MAIN(HumidTest)
#include "humid_test.moc"
