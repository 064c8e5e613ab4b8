#include "test_support.h"

#include "calibration/bc_but.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "link/form_access.h"
#include "link/link_engine.h"
#include "shell/form_base.h"
#include "shell/plc_form.h"

#include <QLineEdit>
#include <QTest>
#include <algorithm>

namespace {
const QString kWrongCode = QStringLiteral("密码错误!");
const QString kInitRunning = QStringLiteral("正在硬件初始化,请稍候...");

BcBut* openMenu(short mode)
{
    MenuMode = mode;
    MenuTitle = mode == 0 ? QStringLiteral("调校") : QStringLiteral("参数设定");
    Forms::show(QStringLiteral("BcBut"));
    return qobject_cast<BcBut*>(Forms::loaded(QStringLiteral("BcBut")));
}

bool shown(BcBut* f, const char* control) { return !Ctl(f, QLatin1String(control))->isHidden(); }

void enterCode(BcBut* f, const QString& code)
{
    f->txtPassword->setText(code);
    ClickOn(Ctl(f, QStringLiteral("cmdOK")));
}

QString status(BcBut* f) { return f->LbLCssdS->isHidden() ? QString() : f->LbLCssdS->text(); }

int countFrames(const QStringList& frames, const QString& head)
{
    return int(std::count_if(frames.begin(), frames.end(),
                             [&](const QString& f) { return f.mid(1, head.size()) == head; }));
}
}  // namespace

class BcButTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        // The forms the menu opens belong to other parts of the console; here they are plain stand-ins.
        Forms::registerForm(QStringLiteral("PLC"), [] { return new PLC; });
        Forms::registerForm(QStringLiteral("BcBut"), [] { return new BcBut; });
        for (const char* n : {"YIBiao", "Cansd", "Sensor", "FrmJk"})
            Forms::registerForm(QLatin1String(n), [] { return new QWidget; });
    }
    void init()
    {
        h = new ConsoleHarness;
        mb = new MbAnswerer;
        h->connectLink();
        // Ticks of the poll are driven by hand; the clock itself must not add any.
        Link().Timer1.setInterval(3600 * 1000);
    }
    void cleanup()
    {
        delete mb;
        delete h;
    }

    void gateOnEntry_data();
    void gateOnEntry();
    void fiveWrongCodesEndTheProcess_data();
    void fiveWrongCodesEndTheProcess();
    void passedGateIsNotAskedAgain();
    void emptyNameCannotBeChosen_data();
    void emptyNameCannotBeChosen();
    void devicesStoredForScale_data();
    void devicesStoredForScale();
    void hardwareInitialisation_data();
    void hardwareInitialisation();

private:
    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

void BcButTest::gateOnEntry_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("passed");
    QTest::addColumn<bool>("gate");
    QTest::addColumn<bool>("calibrationEntries");
    QTest::newRow("calibration, first time: the gate") << 0 << false << true << false;
    QTest::newRow("calibration, gate passed this run") << 0 << true << false << true;
    QTest::newRow("parameters, never gated") << 1 << false << false << false;
}

void BcButTest::gateOnEntry()
{
    QFETCH(int, mode);
    QFETCH(bool, passed);
    QFETCH(bool, gate);
    QFETCH(bool, calibrationEntries);
    GatePassed = passed;
    BcBut* f = openMenu(short(mode));
    QCOMPARE(shown(f, "picCom"), gate);
    QCOMPARE(shown(f, "PicBiaoC"), !gate);
    QCOMPARE(shown(f, "ImgReturn"), !gate);
    QCOMPARE(shown(f, "ImgHard"), calibrationEntries);
    QCOMPARE(shown(f, "ImgBdjk"), calibrationEntries);
}

void BcButTest::fiveWrongCodesEndTheProcess_data()
{
    QTest::addColumn<int>("wrong");
    QTest::newRow("four wrong, then the code") << 4;
    QTest::newRow("five wrong") << 5;
}

void BcButTest::fiveWrongCodesEndTheProcess()
{
    QFETCH(int, wrong);
    const bool ended = wrong == 5;
    BcBut* f = openMenu(0);
    for (int i = 0; i < wrong; ++i)
        enterCode(f, QStringLiteral("1234%1").arg(i));
    if (!ended)
        enterCode(f, QStringLiteral("90765"));
    QStringList expected(qMin(wrong, 4), kWrongCode);
    if (ended)
        expected << QStringLiteral("密码错误已5次，程序将退出！");
    QCOMPARE(mb->texts, expected);
    QCOMPARE(h->endedProcess, ended ? 0 : -1);
    QVERIFY(!h->programEnded);  // never through the saving exit path
    QCOMPARE(GatePassed, !ended);
    if (ended)
        QTRY_VERIFY(!Forms::loaded(QStringLiteral("BcBut")));
}

void BcButTest::passedGateIsNotAskedAgain()
{
    BcBut* f = openMenu(0);
    enterCode(f, QStringLiteral("90765"));
    QVERIFY(shown(f, "PicBiaoC") && !shown(f, "picCom"));
    ClickOn(Ctl(f, QStringLiteral("lblReturn")));
    QTRY_VERIFY(!Forms::loaded(QStringLiteral("BcBut")));
    f = openMenu(0);
    QVERIFY(!shown(f, "picCom"));
    QVERIFY(shown(f, "ImgHard"));
    QVERIFY(mb->texts.isEmpty());
}

void BcButTest::emptyNameCannotBeChosen_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("name");
    QTest::newRow("calibration, blanks only") << 0 << "   ";
    QTest::newRow("parameters, empty name") << 1 << "";
}

void BcButTest::emptyNameCannotBeChosen()
{
    QFETCH(int, mode);
    QFETCH(QString, name);
    GatePassed = true;
    ScaleName[3] = name;
    ScaleNo = 1;
    CalZeroDevice = ParamDevice = QStringLiteral("unchanged");
    BcBut* f = openMenu(short(mode));
    auto* caption = Ctl<ClickLabel>(f, QStringLiteral("LblBd(3)"));
    QCOMPARE(caption->text(), QStringLiteral("未使用"));
    ClickOn(caption);
    emit Ctl<ClickLabel>(f, QStringLiteral("ImgBd(3)"))->clicked();
    QCOMPARE(int(ScaleNo), 1);
    QCOMPARE(CalZeroDevice, QStringLiteral("unchanged"));
    QCOMPARE(ParamDevice, QStringLiteral("unchanged"));
    QVERIFY(f->isVisible());
}

void BcButTest::devicesStoredForScale_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("scale");
    QTest::addColumn<QStringList>("devices");  // zero, span, weight, option; or parameter block, option
    QTest::newRow("calibration 0") << 0 << 0 << QStringList{"S181", "S182", "D43", "S500"};
    QTest::newRow("calibration 6") << 0 << 6 << QStringList{"S205", "S206", "D49", "S548"};
    QTest::newRow("calibration 10") << 0 << 10 << QStringList{"S207", "S208", "D53", "S580"};
    QTest::newRow("calibration 13") << 0 << 13 << QStringList{"S203", "S204", "D56", "S604"};
    QTest::newRow("parameters 0") << 1 << 0 << QStringList{"D300", "S500"};
    QTest::newRow("parameters 6") << 1 << 6 << QStringList{"D390", "S548"};
    QTest::newRow("parameters 10") << 1 << 10 << QStringList{"D450", "S580"};
    QTest::newRow("parameters 13") << 1 << 13 << QStringList{"D495", "S604"};
}

void BcButTest::devicesStoredForScale()
{
    QFETCH(int, mode);
    QFETCH(int, scale);
    QFETCH(QStringList, devices);
    GatePassed = true;
    ScaleName[size_t(scale)] = QStringLiteral("Scale %1").arg(scale);
    BcBut* f = openMenu(short(mode));
    ClickOn(Ctl(f, QStringLiteral("LblBd(%1)").arg(scale)));
    QCOMPARE(int(ScaleNo), scale);
    QCOMPARE(ScaleTitle, ScaleName[size_t(scale)]);
    const QStringList stored = mode == 0 ? QStringList{CalZeroDevice, CalSpanDevice, CalWeightDevice, OptionDevice}
                                         : QStringList{ParamDevice, OptionDevice};
    QCOMPARE(stored, devices);
    const QString opens = mode == 0 ? QStringLiteral("YIBiao") : QStringLiteral("Cansd");
    QVERIFY(Forms::loaded(opens) && Forms::loaded(opens)->isVisible());
    QVERIFY(!f->isVisible());
    Forms::unload(opens);
}

void BcButTest::hardwareInitialisation_data()
{
    QTest::addColumn<int>("finishAt");  // 0: the controller's own timing; n: S999 comes on before poll n; -1 never
    QTest::addColumn<int>("ticks");
    QTest::addColumn<QString>("outcome");
    const QString done = QStringLiteral("硬件初始化已完成!");
    QTest::newRow("controller finishes at once") << 0 << -1 << done;
    QTest::newRow("finished at the fifth poll") << 5 << 5 << done;
    QTest::newRow("answer to the last poll still counts") << 51 << 51 << done;
    QTest::newRow("controller never finishes") << -1 << 51 << QStringLiteral("硬件初始化失败!");
}

void BcButTest::hardwareInitialisation()
{
    QFETCH(int, finishAt);
    QFETCH(int, ticks);
    QFETCH(QString, outcome);
    GatePassed = true;
    h->sim.setInitNever(finishAt != 0);
    h->sim.setInitDelayMs(0);
    h->sim.setSBit(999, true);  // left on by an earlier calibration
    BcBut* f = openMenu(0);
    ClickOn(Ctl(f, QStringLiteral("lblHard")));
    QCOMPARE(mb->texts, QStringList{QStringLiteral("是否进行硬件初始化?")});
    QCOMPARE(status(f), kInitRunning);

    // Each tick comes after the answer to the poll before it, as the poll flag makes it.
    int done = 0;
    for (;;) {
        QTRY_VERIFY(InitPollDue || status(f) != kInitRunning);
        if (!Link().Timer1.isActive())
            break;
        QCOMPARE(status(f), kInitRunning);
        QVERIFY2(done < 51, "still polling after 51 ticks");
        if (done + 1 == finishAt) {
            h->sim.setSBit(999, true);
            h->sim.setSBit(211, false);
        }
        Link().timer1Tick();
        ++done;
    }
    QTRY_VERIFY(InitPollDue);  // the last poll is answered
    if (ticks >= 0)
        QCOMPARE(done, ticks);
    QCOMPARE(status(f), outcome);
    QCOMPARE(TextColor(f->LbLCssdS), finishAt < 0 ? QColor(0xFF, 0, 0) : QColor(0, 0x80, 0));
    const QStringList frames = h->takeFrames();
    QCOMPARE(frames.value(0).mid(1, 11), QStringLiteral("1001A020800"));  // S211 set, its pair of bytes clear
    QCOMPARE(countFrames(frames, QStringLiteral("1001A")), 1);  // S211 is cleared by the controller
    QCOMPARE(countFrames(frames, QStringLiteral("0007C02")), done + 1);  // S999 and its pair of bytes
    QCOMPARE(h->sim.sBit(211), finishAt < 0);
}

QTEST_MAIN(BcButTest)
#include "bc_but_test.moc"
