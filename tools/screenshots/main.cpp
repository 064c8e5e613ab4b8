// Opens each form in the state worth showing, against the in-process simulator, in Chinese and in
// English, and saves what the operator would see as docs/screenshots/<name>-<zh|en>-<state>.png.
// usage: orva_screenshots OUTPUT_FOLDER
#include "plcsim/controller.h"
#include "plcsim/sim_port.h"

#include "calibration/mb_question.h"

#include "common/app_paths.h"
#include "common/form_access.h"
#include "common/module1.h"
#include "common/own_text.h"
#include "common/scale_table.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "params/limits.h"
#include "shell/app_setup.h"
#include "shell/form_base.h"
#include "shell/plc_form.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QSet>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>
#include <cmath>
#include <functional>

namespace {

plcsim::Controller* gSim = nullptr;
QString gAppFolder;

// Lets the event loop run until the condition holds or two seconds have passed.
bool settle(const std::function<bool()>& done = {})
{
    QDeadlineTimer deadline(2000);
    while (!deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        if (SendFlag && (!done || done()))
            break;
    }
    // One more pass for the last repaint.
    QCoreApplication::processEvents();
    return !done || done();
}

void click(QWidget* form, const QString& control)
{
    if (auto* l = form ? form->findChild<ClickLabel*>(control) : nullptr)
        emit l->clicked();
}

QWidget* show(const QString& name)
{
    Forms::show(name);
    QWidget* f = Forms::loaded(name);
    settle();
    return f;
}

// Where the pictures put the aggregate editor's block, which no menu places.
constexpr int kBlockAG = 100;

// Each scale's block holds the defaults of its kind, so that the editors show real values; the aggregate
// editor's block holds its own defaults, for scale 0.
void seedParameters()
{
    for (int n = 0; n < 14; ++n) {
        const LimitTexts t = LoadLimits(n);
        for (int k = 0; k < 15; ++k) {
            const double factor = k <= 2 ? 10 : std::pow(10.0, ScaleDecimals[size_t(n)]);
            gSim->setWord(300 + 15 * n + k, short(std::lround(t.deflt.value(k).toDouble() * factor)));
        }
    }
    const LimitTexts ag = LoadLimitsAG();
    for (int k = 0; k < int(ag.deflt.size()); ++k) {
        const double factor = k >= 1 && k <= 5 ? 10 : std::pow(10.0, ScaleDecimals[0]);
        gSim->setWord(kBlockAG + k, short(std::lround(ag.deflt.value(k).toDouble() * factor)));
    }
}

QWidget* login(bool enter)
{
    auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
    plc->load();
    plc->show();
    if (enter) {
        plc->txtPassword->setText(QStringLiteral("48213"));
        plc->cmdOk();
    } else {
        plc->txtPassword->setText(QStringLiteral("48213"));
    }
    settle();
    return plc;
}

QWidget* menu(short mode, bool gatePassed)
{
    // Opened by the main menu's button, which gives the menu its title in the language of the run.
    QWidget* plc = login(true);
    CNameMissing = false;  // the login read the names anew, from a folder that has no names file
    GatePassed = gatePassed;
    click(plc, QStringLiteral("LblSel(%1)").arg(mode));
    QWidget* f = Forms::loaded(QStringLiteral("BcBut"));
    settle();
    return f;
}

QWidget* tab(QWidget* form, const QString& caption)
{
    click(form, caption);
    settle();
    Link().Timer1.stop();  // live values stand still for the picture
    settle();
    return form;
}

// A gate's code typed and entered.
QWidget* enterCode(QWidget* form, const QString& code)
{
    if (auto* box = form ? form->findChild<QLineEdit*>(QStringLiteral("txtPassword")) : nullptr) {
        box->setText(code);
        emit box->returnPressed();
    }
    settle();
    return form;
}

// The parameter editor of a scale as the menu opens it; page 1 is the option page.
QWidget* editor(const QString& name, int scale, int page)
{
    ScaleNo = short(scale);
    ScaleTitle = ScaleCaption = ScaleName[size_t(scale)];
    ParamDevice = QLatin1String(kScaleDevices[size_t(scale)].param);
    ParamDeviceAG = QStringLiteral("D%1").arg(kBlockAG);
    OptionDevice = QLatin1String(kScaleDevices[size_t(scale)].option);
    QWidget* f = show(name);
    settle([f] { return f->findChild<QLineEdit*>(QStringLiteral("TxtSRead"))->text().size() == 4; });
    if (page == 1)
        click(f, QStringLiteral("LblBd(1)"));
    settle();
    return f;
}

QWidget* calibration(int scale, int tab)
{
    gSim->setSBit(612, true);  // tracking off, so the calibration tabs open
    gSim->setLoad(scale, 3000);
    ScaleNo = short(scale);
    ScaleTitle = ScaleName[size_t(scale)];
    const ScaleDevices& d = kScaleDevices[size_t(scale)];
    CalZeroDevice = QLatin1String(d.zero);
    CalSpanDevice = QLatin1String(d.span);
    CalWeightDevice = QLatin1String(d.weight);
    OptionDevice = QLatin1String(d.option);
    QWidget* f = show(QStringLiteral("YIBiao"));
    settle([f] { return !f->findChild<QLineEdit*>(QStringLiteral("txtTzxxZeroRead"))->text().isEmpty(); });
    if (tab > 0) {
        click(f, QStringLiteral("LblBd(%1)").arg(tab));
        settle([f] { return !f->findChild<QLabel*>(QStringLiteral("LbLADv"))->text().isEmpty(); });
        Link().Timer1.stop();
        settle();
    }
    return f;
}

QWidget* moisture(int tab)
{
    HumidActive = true;
    gSim->setLoad(4, 2604);
    QWidget* menuForm = show(QStringLiteral("BcButHumid"));
    click(menuForm, QStringLiteral("LblBd(4)"));
    QWidget* f = Forms::loaded(QStringLiteral("YIBiaoHumidNew"));
    settle();
    if (f && tab == 2)
        click(f, QStringLiteral("LblBd(2)"));
    settle();
    Link().Timer1.stop();
    settle();
    return f;
}

// One row a picture: the form, its state, the file's stem and state, and how to get there. A row whose
// form is not registered yet is skipped with a message.
struct Shot {
    const char* form;
    const char* state;
    std::function<QWidget*()> open;
};

const QList<Shot>& shots()
{
    static const QList<Shot> rows = {
        {"PLC", "login", [] { return login(false); }},
        {"PLC", "menu", [] { return login(true); }},
        {"BcBut", "gate", [] { return menu(0, false); }},
        {"BcBut", "calibration-menu", [] { return menu(0, true); }},
        {"BcBut", "parameter-menu", [] { return menu(1, false); }},
        {"BcBut", "names", [] { return tab(menu(0, true), QStringLiteral("LblBdTap(1)")); }},
        {"BcBut", "bins", [] { return tab(menu(0, true), QStringLiteral("LblBdTap(2)")); }},
        {"Cansd", "0-params", [] { return editor(QStringLiteral("Cansd"), 0, 0); }},
        {"Cansd", "0-options", [] { return editor(QStringLiteral("Cansd"), 0, 1); }},
        {"Cansd", "7-options", [] { return editor(QStringLiteral("Cansd"), 7, 1); }},
        {"Cansd", "8-params", [] { return editor(QStringLiteral("Cansd"), 8, 0); }},
        {"Cansd", "10-params", [] { return editor(QStringLiteral("Cansd"), 10, 0); }},
        {"Cansd", "11-params", [] { return editor(QStringLiteral("Cansd"), 11, 0); }},
        {"CansdAG", "params", [] { return editor(QStringLiteral("CansdAG"), 0, 0); }},
        {"YIBiao", "options", [] { return calibration(0, 0); }},
        {"YIBiao", "zero", [] { return calibration(0, 1); }},
        {"YIBiao", "span", [] { return calibration(8, 2); }},
        {"BcButHumid", "menu", [] { return show(QStringLiteral("BcButHumid")); }},
        {"YIBiaoHumidNew", "span", [] { return moisture(2); }},
        {"FrmJk", "records", [] { return show(QStringLiteral("FrmJk")); }},
        {"Other", "tab-0", [] { return tab(show(QStringLiteral("Other")), QStringLiteral("LblBd(0)")); }},
        {"Other", "tab-1", [] { return tab(show(QStringLiteral("Other")), QStringLiteral("LblBd(1)")); }},
        {"Other", "tab-2", [] { return tab(show(QStringLiteral("Other")), QStringLiteral("LblBd(2)")); }},
        {"Other", "tab-3", [] { return tab(show(QStringLiteral("Other")), QStringLiteral("LblBd(3)")); }},
        {"ZDTime", "tab-0", [] { return tab(show(QStringLiteral("ZDTime")), QStringLiteral("LblBd(0)")); }},
        {"ZDTime", "tab-1", [] { return tab(show(QStringLiteral("ZDTime")), QStringLiteral("LblBd(1)")); }},
        {"Sensor", "sensors", [] { return show(QStringLiteral("Sensor")); }},
        {"Factory", "gate", [] { return show(QStringLiteral("Factory")); }},
        {"Factory", "setting", [] { return enterCode(show(QStringLiteral("Factory")), QStringLiteral("61730428")); }},
        {"YiBiaoAdvance", "tab-0", [] { return tab(show(QStringLiteral("YiBiaoAdvance")), QStringLiteral("LblBd(0)")); }},
        {"YiBiaoAdvance", "tab-1", [] { return tab(show(QStringLiteral("YiBiaoAdvance")), QStringLiteral("LblBd(1)")); }},
    };
    return rows;
}

// A fresh start in the given language: no form loaded, the names and the link as after a login.
void freshStart(int lang)
{
    Forms::unloadAll();
    Link().Timer1.stop();
    Link().Timer2.stop();
    Link().Timer3.stop();
    LangNo = short(lang);
    ProfileFile = gAppFolder + QStringLiteral("/Lang/PLCCOMLANGUAGE.ini");
    QFile sel(gAppFolder + QStringLiteral("/Lang/PLCCOMLANSEL.ini"));
    if (sel.open(QIODevice::WriteOnly))
        sel.write(QStringLiteral("[PLCCOMLANSEL]\r\nLANSEL=%1\r\n").arg(lang).toLatin1());
    sel.close();
    SetDefaultNames();
    CNameMissing = false;  // a plant with its names set: every tab of the menu opens
    MenuMode = 0;
    GatePassed = false;
    HumidActive = IsCurrentCal = false;
    StepNo = 444;
    SendFlag = true;
    Link().openPort(2);
    Link().resetForLogin();
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (argc < 2) {
        QTextStream(stderr) << "usage: orva_screenshots OUTPUT_FOLDER\n";
        return 2;
    }
    const QString out = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    QDir().mkpath(out);
    InstallAppLook(app);
    InstallOwnTranslation();

    QTemporaryDir dir;
    gAppFolder = dir.path();
    AppPaths::setAppFolder(gAppFolder);
    QDir(gAppFolder).mkpath(QStringLiteral("Data"));
    QDir(gAppFolder).mkpath(QStringLiteral("Lang"));
    QFile::copy(QStringLiteral(ORVA_LANG_FILE), gAppFolder + QStringLiteral("/Lang/PLCCOMLANGUAGE.ini"));

    plcsim::Controller sim;
    gSim = &sim;
    sim.setLiveModel(false);
    sim.setNoise(false);
    SetPortFactory([&sim](int) { return new plcsim::SimPort(&sim); });
    EndProcess = [](int) {};
    EndProgramHook = [] {};
    RegisterForms();
    SetDefaultNames();
    seedParameters();

    // A message box that a state brings up is answered as an operator would, OK or Yes.
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [] {
        MbQuestion* box = MbQuestion::showing();
        if (!box || !box->isVisible())
            return;
        for (const char* name : {"CmdMbOK", "CmdYes"})
            if (auto* b = box->findChild<QAbstractButton*>(QLatin1String(name)); b && b->isVisible())
                return b->click();
    });
    answer.start(20);

    QSet<QString> made;
    int failed = 0;
    QTextStream log(stdout);
    for (const Shot& s : shots()) {
        for (const auto& [lang, tag] : {std::pair{1, "zh"}, {2, "en"}}) {
            freshStart(lang);
            const QString file = QStringLiteral("%1-%2-%3.png").arg(QString::fromLatin1(s.form).toLower(), QLatin1String(tag),
                                                                   QLatin1String(s.state));
            QWidget* w = s.open();
            if (!Forms::loaded(QLatin1String(s.form))) {
                log << "skipped " << file << ": the form " << s.form << " is not built yet" << Qt::endl;
                break;
            }
            if (!w || !w->isVisible()) {
                log << "FAILED " << file << ": the form did not open\n";
                ++failed;
                continue;
            }
            if (!w->grab().save(out + QLatin1Char('/') + file)) {
                log << "FAILED " << file << ": cannot write it\n";
                ++failed;
                continue;
            }
            made.insert(file);
            log << "made " << file << Qt::endl;
        }
    }
    // Pictures no row makes any more are stale.
    for (const QString& old : QDir(out).entryList({QStringLiteral("*.png")}, QDir::Files))
        if (!made.contains(old) && QFile::remove(out + QLatin1Char('/') + old))
            log << "removed stale " << old << '\n';
    log.flush();
    Forms::unloadAll();
    Link().closePort();
    return failed == 0 ? 0 : 1;
}
