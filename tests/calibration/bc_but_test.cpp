#include "test_support.h"

#include "calibration/bc_but.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "link/form_access.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "shell/form_base.h"
#include "shell/plc_form.h"

#include <QDate>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMouseEvent>
#include <QScreen>
#include <QTest>

namespace {
const QString kWrongCode = QStringLiteral("密码错误!");
const QString kFifthWrong = QStringLiteral("密码错误已5次，程序将退出！");
const QString kInitRunning = QStringLiteral("正在硬件初始化,请稍候...");
const QString kInitDone = QStringLiteral("硬件初始化已完成!");
const QString kInitFailed = QStringLiteral("硬件初始化失败!");

// The forms the menu opens belong to other parts of the console; here they are plain stand-ins.
void registerStandIns()
{
    Forms::registerForm(QStringLiteral("PLC"), [] { return new PLC; });
    Forms::registerForm(QStringLiteral("BcBut"), [] { return new BcBut; });
    for (const char* n : {"YIBiao", "Cansd", "Sensor", "FrmJk"})
        Forms::registerForm(QLatin1String(n), [] { return new QWidget; });
}

BcBut* openMenu(short mode)
{
    MenuMode = mode;
    MenuTitle = mode == 0 ? QStringLiteral("调校") : QStringLiteral("参数设定");
    Forms::show(QStringLiteral("BcBut"));
    return qobject_cast<BcBut*>(Forms::loaded(QStringLiteral("BcBut")));
}

bool shown(BcBut* f, const char* control) { return !Ctl(f, QLatin1String(control))->isHidden(); }

// via: "cmdOK", its caption "lblOK", or "enter" in the box
void enterCode(BcBut* f, const QString& code, const QString& via = QStringLiteral("cmdOK"))
{
    f->txtPassword->setText(code);
    if (via == QLatin1String("enter"))
        QTest::keyClick(f->txtPassword, Qt::Key_Return);
    else
        ClickOn(Ctl(f, via));
}

QString status(BcBut* f) { return f->LbLCssdS->isHidden() ? QString() : f->LbLCssdS->text(); }

int countFrames(const QStringList& frames, const QString& head)
{
    int n = 0;
    for (const QString& f : frames)
        n += f.mid(1, head.size()) == head;
    return n;
}

const QString kInitWriteHead = QStringLiteral("1001A020800");  // S211 set, its pair of bytes otherwise clear
const QString kInitReadHead = QStringLiteral("0007C02");      // S999 and its pair of bytes
}  // namespace

class BcButTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { registerStandIns(); }
    void init()
    {
        h = new ConsoleHarness;
        h->connectLink();
        // Ticks of the poll are driven by hand; the clock itself must not add any.
        Link().Timer1.setInterval(3600 * 1000);
        CNameMissing = false;
    }
    void cleanup()
    {
        delete mb;
        mb = nullptr;
        delete h;
        CNameMissing = false;
    }

    void gateOnEntry_data();
    void gateOnEntry();
    void codeComparison_data();
    void codeComparison();
    void fiveWrongCodesEndTheProcess_data();
    void fiveWrongCodesEndTheProcess();
    void passedGateIsNotAskedAgain();
    void emptyNameCannotBeChosen_data();
    void emptyNameCannotBeChosen();
    void devicesStoredForScale_data();
    void devicesStoredForScale();
    void tabs_data();
    void tabs();
    void hardwareInitialisation_data();
    void hardwareInitialisation();
    void helpOpensAndCloses();
    void mainMenuOpensTheHub_data();
    void mainMenuOpensTheHub();
    void returnGoesBackToMainForm_data();
    void returnGoesBackToMainForm();
    void captionsByLanguage_data();
    void captionsByLanguage();
    void dragStopsNearScreenBottom_data();
    void dragStopsNearScreenBottom();

private:
    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

void BcButTest::gateOnEntry_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("passed");
    QTest::addColumn<bool>("gate");
    QTest::addColumn<bool>("menu");
    QTest::addColumn<bool>("calibrationEntries");
    QTest::newRow("calibration, first time: the gate") << 0 << false << true << false << false;
    QTest::newRow("calibration, gate passed this run") << 0 << true << false << true << true;
    QTest::newRow("parameters, never gated") << 1 << false << false << true << false;
    QTest::newRow("parameters after the gate") << 1 << true << false << true << false;
}

void BcButTest::gateOnEntry()
{
    QFETCH(int, mode);
    QFETCH(bool, passed);
    QFETCH(bool, gate);
    QFETCH(bool, menu);
    QFETCH(bool, calibrationEntries);
    GatePassed = passed;
    BcBut* f = openMenu(short(mode));
    QVERIFY(f);
    QCOMPARE(CurrentForm, QStringLiteral("BcBut"));
    QCOMPARE(shown(f, "picCom"), gate);
    QCOMPARE(shown(f, "PicBiaoC"), menu);
    QCOMPARE(shown(f, "ImgReturn"), menu);
    QCOMPARE(shown(f, "ImgHard"), calibrationEntries);
    QCOMPARE(shown(f, "ImgSensor"), calibrationEntries);
    QCOMPARE(shown(f, "ImgBdjk"), calibrationEntries);
    QVERIFY(!shown(f, "ImgElect"));
    if (menu)
        QCOMPARE(Ctl<QLabel>(f, QStringLiteral("lblXMName"))->text(), MenuTitle);
}

void BcButTest::codeComparison_data()
{
    const QDate today = QDate::currentDate();
    const QString dated = QStringLiteral("90765") + QString::number(today.month() + today.day());
    QTest::addColumn<bool>("firstNaming");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("via");
    QTest::newRow("the code") << false << "90765" << true << "cmdOK";
    QTest::newRow("the code, caption clicked") << false << "90765" << true << "lblOK";
    QTest::newRow("the code, Enter") << false << "90765" << true << "enter";
    QTest::newRow("wrong code, Enter") << false << "90766" << false << "enter";
    QTest::newRow("trailing blank") << false << "90765 " << false << "cmdOK";
    QTest::newRow("leading blank") << false << " 90765" << false << "cmdOK";
    QTest::newRow("empty") << false << "" << false << "lblOK";
    QTest::newRow("console code is not this one") << false << "48213" << false << "cmdOK";
    QTest::newRow("first naming: code with month plus day") << true << dated << true << "cmdOK";
    QTest::newRow("first naming: plain code") << true << "90765" << false << "cmdOK";
}

void BcButTest::codeComparison()
{
    QFETCH(bool, firstNaming);
    QFETCH(QString, typed);
    QFETCH(bool, accepted);
    QFETCH(QString, via);
    mb = new MbAnswerer;
    CNameMissing = firstNaming;
    BcBut* f = openMenu(0);
    if (firstNaming)
        emit Ctl<ClickLabel>(f, QStringLiteral("LblBdTap(1)"))->clicked();
    QCOMPARE(f->firstNaming(), firstNaming);
    enterCode(f, typed, via);
    QCOMPARE(GatePassed, accepted);
    QCOMPARE(shown(f, "picCom"), !accepted);
    QCOMPARE(shown(f, "PicBiaoC"), accepted);
    if (accepted) {
        QVERIFY(mb->texts.isEmpty());
        QVERIFY(f->txtPassword->text().isEmpty());
        // At the first naming the operator must finish the names before leaving.
        QCOMPARE(shown(f, "ImgReturn"), !firstNaming);
        QCOMPARE(f->nameTabOpen(), firstNaming);
    } else {
        QCOMPARE(mb->texts, QStringList{kWrongCode});
        QCOMPARE(f->txtPassword->text(), typed);  // the wrong text stays
    }
}

void BcButTest::fiveWrongCodesEndTheProcess_data()
{
    QTest::addColumn<int>("wrong");
    QTest::addColumn<bool>("ended");
    QTest::newRow("four wrong, then the code") << 4 << false;
    QTest::newRow("five wrong") << 5 << true;
}

void BcButTest::fiveWrongCodesEndTheProcess()
{
    QFETCH(int, wrong);
    QFETCH(bool, ended);
    mb = new MbAnswerer;
    BcBut* f = openMenu(0);
    for (int i = 0; i < wrong; ++i)
        enterCode(f, QStringLiteral("1234%1").arg(i));
    if (!ended)
        enterCode(f, QStringLiteral("90765"));
    QStringList expected(qMin(wrong, 4), kWrongCode);
    if (ended)
        expected << kFifthWrong;
    QCOMPARE(mb->texts, expected);
    QCOMPARE(h->endedProcess, ended ? 0 : -1);
    QVERIFY(!h->programEnded);  // never through the saving exit path
    QCOMPARE(GatePassed, !ended);
    if (ended)
        QTRY_VERIFY(!Forms::loaded(QStringLiteral("BcBut")));
}

void BcButTest::passedGateIsNotAskedAgain()
{
    mb = new MbAnswerer;
    BcBut* f = openMenu(0);
    enterCode(f, QStringLiteral("90765"));
    ClickOn(Ctl(f, QStringLiteral("lblReturn")));
    QTRY_VERIFY(!Forms::loaded(QStringLiteral("BcBut")));
    f = openMenu(0);
    QVERIFY(!shown(f, "picCom"));
    QVERIFY(shown(f, "PicBiaoC"));
    QVERIFY(shown(f, "ImgHard"));
    QVERIFY(mb->texts.isEmpty());
}

void BcButTest::emptyNameCannotBeChosen_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("name");
    QTest::newRow("calibration, empty name") << 0 << "";
    QTest::newRow("calibration, blanks only") << 0 << "   ";
    QTest::newRow("parameters, empty name") << 1 << "";
}

void BcButTest::emptyNameCannotBeChosen()
{
    QFETCH(int, mode);
    QFETCH(QString, name);
    GatePassed = true;
    ScaleName[3] = name;
    ScaleName[4] = QStringLiteral("骨料5秤");
    ScaleNo = 1;
    CalZeroDevice = ParamDevice = QStringLiteral("unchanged");
    BcBut* f = openMenu(short(mode));
    auto* image = Ctl<ClickLabel>(f, QStringLiteral("ImgBd(3)"));
    auto* caption = Ctl<ClickLabel>(f, QStringLiteral("LblBd(3)"));
    QVERIFY(image->isHidden());
    QVERIFY(!image->isEnabled());
    QVERIFY(!caption->isEnabled());
    QCOMPARE(caption->text(), QStringLiteral("未使用"));
    ClickOn(caption);
    emit image->clicked();
    QCOMPARE(int(ScaleNo), 1);
    QCOMPARE(CalZeroDevice, QStringLiteral("unchanged"));
    QCOMPARE(ParamDevice, QStringLiteral("unchanged"));
    QVERIFY(f->isVisible());
    // The neighbours are still there to be chosen.
    QCOMPARE(Ctl<QLabel>(f, QStringLiteral("LblBd(4)"))->text(), ScaleName[4]);
    QVERIFY(Ctl<QLabel>(f, QStringLiteral("LblBd(4)"))->isEnabled());
}

void BcButTest::devicesStoredForScale_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("scale");
    QTest::addColumn<QStringList>("devices");  // zero, span, weight, option; or parameter block, option
    QTest::addColumn<QString>("opens");
    QTest::newRow("calibration 0") << 0 << 0 << QStringList{"S181", "S182", "D43", "S500"} << "YIBiao";
    QTest::newRow("calibration 6") << 0 << 6 << QStringList{"S205", "S206", "D49", "S548"} << "YIBiao";
    QTest::newRow("calibration 10") << 0 << 10 << QStringList{"S207", "S208", "D53", "S580"} << "YIBiao";
    QTest::newRow("calibration 13") << 0 << 13 << QStringList{"S203", "S204", "D56", "S604"} << "YIBiao";
    QTest::newRow("parameters 0") << 1 << 0 << QStringList{"D300", "S500"} << "Cansd";
    QTest::newRow("parameters 6") << 1 << 6 << QStringList{"D390", "S548"} << "Cansd";
    QTest::newRow("parameters 10") << 1 << 10 << QStringList{"D450", "S580"} << "Cansd";
    QTest::newRow("parameters 13") << 1 << 13 << QStringList{"D495", "S604"} << "Cansd";
}

void BcButTest::devicesStoredForScale()
{
    QFETCH(int, mode);
    QFETCH(int, scale);
    QFETCH(QStringList, devices);
    QFETCH(QString, opens);
    GatePassed = true;
    ScaleName[size_t(scale)] = QStringLiteral("Scale %1").arg(scale);
    BcBut* f = openMenu(short(mode));
    ClickOn(Ctl(f, QStringLiteral("LblBd(%1)").arg(scale)));
    QCOMPARE(int(ScaleNo), scale);
    QCOMPARE(ScaleTitle, ScaleName[size_t(scale)]);
    if (mode == 0) {
        QCOMPARE((QStringList{CalZeroDevice, CalSpanDevice, CalWeightDevice, OptionDevice}), devices);
    } else {
        QCOMPARE((QStringList{ParamDevice, OptionDevice}), devices);
        QCOMPARE(ScaleCaption, ScaleName[size_t(scale)]);
    }
    QVERIFY(Forms::loaded(opens) && Forms::loaded(opens)->isVisible());
    QVERIFY(!f->isVisible());
    QCOMPARE(TextColor(Ctl(f, QStringLiteral("LblBd(%1)").arg(scale))), QColor(192, 0, 0));
    QVERIFY(TextColor(Ctl(f, QStringLiteral("LblBd(%1)").arg(scale == 0 ? 1 : 0))) != QColor(192, 0, 0));
    Forms::unload(opens);
}

void BcButTest::tabs_data()
{
    QTest::addColumn<bool>("namesMissing");
    QTest::addColumn<int>("tab");
    QTest::addColumn<int>("selected");
    QTest::addColumn<bool>("firstNaming");
    QTest::addColumn<QString>("box");
    QTest::newRow("names tab") << false << 1 << 1 << false << "";
    QTest::newRow("bins tab") << false << 2 << 2 << false << "";
    QTest::newRow("no names yet: names tab starts the first naming") << true << 1 << 1 << true << "";
    QTest::newRow("no names yet: bins refused")
        << true << 2 << 0 << false << "必须先设定电子秤名称,然后再设定料仓名称!";
    QTest::newRow("no names yet: scales tab") << true << 0 << 0 << false << "";
}

void BcButTest::tabs()
{
    QFETCH(bool, namesMissing);
    QFETCH(int, tab);
    QFETCH(int, selected);
    QFETCH(bool, firstNaming);
    QFETCH(QString, box);
    mb = new MbAnswerer;
    CNameMissing = namesMissing;
    GatePassed = true;
    BcBut* f = openMenu(0);
    QCOMPARE(Ctl(f, QStringLiteral("ImageCNameIni"))->isHidden(), namesMissing);
    ClickOn(Ctl(f, QStringLiteral("LblBdTap(%1)").arg(tab)));
    QCOMPARE(mb->texts, box.isEmpty() ? QStringList() : QStringList{box});
    QCOMPARE(f->firstNaming(), firstNaming);
    QCOMPARE(f->nameTabOpen(), selected == 1);
    QCOMPARE(f->binTabOpen(), selected == 2);
    for (int k = 0; k < 3; ++k) {
        QCOMPARE(f->PicBcBut[size_t(k)]->isVisible(), k == selected);
        const QColor c = TextColor(Ctl(f, QStringLiteral("LblBdTap(%1)").arg(k)));
        QCOMPARE(c == QColor(0, 0, 0x80), k == selected);
    }
    QCOMPARE(shown(f, "ImgBdOk"), selected != 0);
}

void BcButTest::hardwareInitialisation_data()
{
    QTest::addColumn<bool>("yes");
    QTest::addColumn<int>("finishAt");  // 0: the controller's own timing; n: S999 comes on before poll n; -1 never
    QTest::addColumn<int>("ticks");
    QTest::addColumn<QString>("outcome");
    QTest::addColumn<QColor>("colour");
    const QColor green(0, 0x80, 0), red(0xFF, 0, 0);
    QTest::newRow("controller finishes at once") << true << 0 << -1 << kInitDone << green;
    QTest::newRow("finished at the fifth poll") << true << 5 << 5 << kInitDone << green;
    QTest::newRow("finished at the 50th poll") << true << 50 << 50 << kInitDone << green;
    QTest::newRow("answer to the last poll still counts") << true << 51 << 51 << kInitDone << green;
    QTest::newRow("controller never finishes") << true << -1 << 51 << kInitFailed << red;
    QTest::newRow("operator declines") << false << 0 << 0 << QString() << QColor();
}

void BcButTest::hardwareInitialisation()
{
    QFETCH(bool, yes);
    QFETCH(int, finishAt);
    QFETCH(int, ticks);
    QFETCH(QString, outcome);
    QFETCH(QColor, colour);
    mb = new MbAnswerer;
    mb->queue(yes);
    GatePassed = true;
    h->sim.setInitNever(finishAt != 0);
    h->sim.setInitDelayMs(0);
    h->sim.setSBit(999, true);  // left on by an earlier calibration
    BcBut* f = openMenu(0);
    ClickOn(Ctl(f, QStringLiteral("lblHard")));
    QCOMPARE(mb->texts, QStringList{QStringLiteral("是否进行硬件初始化?")});
    if (!yes) {
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());
        QVERIFY(f->LbLCssdS->isHidden());
        return;
    }
    QCOMPARE(status(f), kInitRunning);
    QCOMPARE(TextColor(f->LbLCssdS), QColor(0xFF, 0, 0));

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
    QCOMPARE(TextColor(f->LbLCssdS), colour);
    QVERIFY(!Link().Timer1.isActive());
    const QStringList frames = h->takeFrames();
    QCOMPARE(frames.value(0).mid(1, kInitWriteHead.size()), kInitWriteHead);
    QCOMPARE(countFrames(frames, QStringLiteral("1001A")), 1);  // S211 is cleared by the controller
    QCOMPARE(countFrames(frames, kInitReadHead), done + 1);
    QCOMPARE(h->sim.sBit(211), finishAt < 0);
}

void BcButTest::helpOpensAndCloses()
{
    GatePassed = true;
    BcBut* f = openMenu(0);
    auto* tip = Ctl<QLabel>(f, QStringLiteral("txtTip"));
    QVERIFY(tip->isHidden());
    ClickOn(Ctl(f, QStringLiteral("ImgHelp")));
    QVERIFY(tip->isVisible());
    QCOMPARE(tip->text(), QStringLiteral("注意:系统初次使用或更换硬件时必须初始化硬件。     [关闭]"));
    ClickOn(tip);
    QVERIFY(tip->isHidden());
}

void BcButTest::mainMenuOpensTheHub_data()
{
    QTest::addColumn<int>("entry");
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("gate");
    QTest::newRow("calibration") << 0 << "调校" << true;
    QTest::newRow("parameters") << 1 << "参数设定" << false;
}

void BcButTest::mainMenuOpensTheHub()
{
    QFETCH(int, entry);
    QFETCH(QString, title);
    QFETCH(bool, gate);
    HumidActive = true;
    auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
    plc->setCaptions();
    plc->show();
    plc->txtPassword->setText(QStringLiteral("48213"));
    plc->cmdOk();
    ClickOn(Ctl(plc, QStringLiteral("LblSel(%1)").arg(entry)));
    auto* f = qobject_cast<BcBut*>(Forms::loaded(QStringLiteral("BcBut")));
    QVERIFY(f && f->isVisible());
    QVERIFY(!plc->isVisible());
    QCOMPARE(int(MenuMode), entry);
    QVERIFY(!HumidActive);
    QCOMPARE(Ctl<QLabel>(f, QStringLiteral("lblXMName"))->text(), title);
    QCOMPARE(shown(f, "picCom"), gate);
    ClickOn(Ctl(f, gate ? QStringLiteral("lblReturn2") : QStringLiteral("lblReturn")));
    QTRY_VERIFY(!Forms::loaded(QStringLiteral("BcBut")));
    QVERIFY(plc->isVisible());
}

void BcButTest::returnGoesBackToMainForm_data()
{
    QTest::addColumn<bool>("passed");
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("pollStopped");
    QTest::newRow("menu return stops the poll") << true << "lblReturn" << true;
    QTest::newRow("gate return leaves the clock alone") << false << "lblReturn2" << false;
}

void BcButTest::returnGoesBackToMainForm()
{
    QFETCH(bool, passed);
    QFETCH(QString, button);
    QFETCH(bool, pollStopped);
    GatePassed = passed;
    BcBut* f = openMenu(0);
    Link().Timer1.start();
    ClickOn(Ctl(f, button));
    QVERIFY(!f->isVisible());
    QTRY_VERIFY(!Forms::loaded(QStringLiteral("BcBut")));
    QVERIFY(Forms::loaded(QStringLiteral("PLC"))->isVisible());
    QCOMPARE(Link().Timer1.isActive(), !pollStopped);
}

void BcButTest::captionsByLanguage_data()
{
    QTest::addColumn<int>("lang");
    QTest::addColumn<QStringList>("captions");  // tab 0, sensors, hardware, record, unused scale
    QTest::newRow("Chinese") << 1 << QStringList{"电子秤选择", "传感器配置", "硬件初始化", "标定记录", "未使用"};
    QTest::newRow("English") << 2
                             << QStringList{"Scale selection", "Sensors", "Init hardware", "Records", "Unused"};
}

void BcButTest::captionsByLanguage()
{
    QFETCH(int, lang);
    QFETCH(QStringList, captions);
    LangNo = short(lang);
    ProfileFile = QStringLiteral(ORVA_LANG_FILE);
    GatePassed = true;
    ScaleName[2].clear();
    BcBut* f = openMenu(0);
    QStringList shownCaptions;
    for (const char* n : {"LblBdTap(0)", "lblSensor", "lblHard", "LbLBdjk", "LblBd(2)"})
        shownCaptions << Ctl<QLabel>(f, QLatin1String(n))->text();
    QCOMPARE(shownCaptions, captions);
}

void BcButTest::dragStopsNearScreenBottom_data()
{
    QTest::addColumn<int>("fromBottom");  // cursor distance from the screen's lower edge
    QTest::addColumn<bool>("moves");
    QTest::newRow("well above") << 300 << true;
    QTest::newRow("just above the guard") << 101 << true;
    QTest::newRow("at the guard") << 100 << false;
    QTest::newRow("lowest pixel") << 1 << false;
}

void BcButTest::dragStopsNearScreenBottom()
{
    QFETCH(int, fromBottom);
    QFETCH(bool, moves);
    BcBut* f = openMenu(1);
    f->move(0, 0);
    const QPoint grip(400, 5);
    const int screenHeight = QGuiApplication::primaryScreen()->geometry().height();
    QMouseEvent press(QEvent::MouseButtonPress, grip, f->mapToGlobal(grip), Qt::LeftButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(f, &press);
    const QPoint cursor(500, screenHeight - fromBottom);
    QMouseEvent move(QEvent::MouseMove, f->mapFromGlobal(cursor), cursor, Qt::NoButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(f, &move);
    QCOMPARE(f->pos(), moves ? cursor - grip : QPoint(0, 0));
}

QTEST_MAIN(BcButTest)
#include "bc_but_test.moc"
