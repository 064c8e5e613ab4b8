// A walk through the console as an operator clicks it: every menu entry of the main form and of the
// hubs, and every way back, by caption and by image, against the real forms and the simulator.
#include "test_support.h"

#include "common/form_access.h"
#include "shell/app_setup.h"

namespace {
bool shown(const QString& form)
{
    QWidget* w = Forms::loaded(form);
    return w && w->isVisible();
}

QStringList split(const char* s) { return QString::fromLatin1(s).split(QLatin1Char('|'), Qt::SkipEmptyParts); }

// Every form of the console is a step of some row: one that cannot be opened fails there. steps: see Walk,
// after the calibration gate where gate is set; gone: not loaded (the main form: hidden).
const struct { const char* name; bool gate; const char* steps; const char* shown; const char* gone; } kWalks[] = {
    {"calibration: the gate", false, "PLC:LblSel(0)", "BcBut", "PLC"},
    {"calibration: back from the gate", false, "PLC:LblSel(0)|BcBut:lblReturn2", "PLC", "BcBut"},
    {"calibration: back from the menu", true, "BcBut:lblReturn", "PLC", "BcBut"},
    {"calibration: a scale and back", true, "BcBut:LblBd(0)|hidden:BcBut|YIBiao:lblReturn", "BcBut", "YIBiao|PLC"},
    {"calibration: a scale, back, back", true, "BcBut:LblBd(8)|YIBiao:lblReturn|BcBut:lblReturn", "PLC",
     "YIBiao|BcBut"},
    {"calibration: sensors and back", true, "BcBut:lblSensor|hidden:BcBut|Sensor:lblReturn", "BcBut", "Sensor"},
    {"calibration: records over the menu", true, "BcBut:LbLBdjk", "FrmJk|BcBut", "PLC"},
    {"calibration: records closed", true, "BcBut:LbLBdjk|FrmJk:ImageExit", "BcBut", "FrmJk"},
    {"parameters: no gate, back", false, "PLC:LblSel(1)|BcBut:lblReturn", "PLC", "BcBut"},
    {"parameters: a scale and back", false, "PLC:LblSel(1)|BcBut:LblBd(1)|hidden:BcBut|Cansd:lblReturn", "BcBut",
     "Cansd|PLC"},
    {"moisture: menu and back", false, "PLC:lblAdvance|BcButHumid:lblReturn", "PLC", "BcButHumid"},
    {"moisture: a probe and back", false,
     "PLC:lblAdvance|BcButHumid:LblBd(4)|hidden:BcButHumid|YIBiaoHumidNew:lblReturn", "BcButHumid",
     "YIBiaoHumidNew|PLC"},
    {"system functions and back", false, "PLC:LblSel(2)|Other:lblReturn", "PLC", "Other"},
    {"vibrator times and back", false, "PLC:LblSel(2)|Other:LblZDTime|hidden:Other|ZDTime:lblReturn", "Other",
     "ZDTime|PLC"},
    {"factory setting: the hidden entry, back from the gate", false,
     "PLC:LblSel(2)|Other:lblShowFactory|Other:lblHard|hidden:Other|Factory:lblReturn2", "Other", "Factory|PLC"},
    {"factory setting: the code, back from the setting", false,
     "PLC:LblSel(2)|Other:lblShowFactory|Other:ImgHard|Factory:txtPassword=61730428|Factory:lblOK|Factory:lblReturn",
     "Other", "Factory|PLC"},
    {"factory setting, back, back", false,
     "PLC:LblSel(2)|Other:lblShowFactory|Other:lblHard|Factory:txtPassword=61730428|Factory:cmdOK|"
     "Factory:ImgReturn|Other:ImgReturn",
     "PLC", "Factory|Other"},
    // The gate is passed once a run: the next entry goes straight to the menu.
    {"calibration: the gate once a run", true, "BcBut:lblReturn|PLC:LblSel(0)|BcBut:lblSensor|Sensor:lblReturn",
     "BcBut", "Sensor|PLC"},
    // The images do what their captions do.
    {"images: calibration, sensors, back, back", false,
     "PLC:Image1(0)|BcBut:txtPassword=90765|BcBut:cmdOK|BcBut:ImgSensor|Sensor:ImgReturn|BcBut:ImgReturn", "PLC",
     "Sensor|BcBut"},
    {"images: calibration gate and back", false, "PLC:Image1(0)|BcBut:ImgReturn2", "PLC", "BcBut"},
    {"images: a scale and back", true, "BcBut:ImgBd(2)|YIBiao:ImgReturn", "BcBut", "YIBiao"},
    {"images: records", true, "BcBut:ImgBdjk", "FrmJk|BcBut", "PLC"},
    {"images: parameters, a scale, back, back", false, "PLC:Image1(1)|BcBut:ImgBd(8)|Cansd:ImgReturn|BcBut:ImgReturn",
     "PLC", "Cansd|BcBut"},
    {"images: moisture, a probe, back, back", false,
     "PLC:ImgAdvance|BcButHumid:ImgBd(4)|YIBiaoHumidNew:ImgReturn|BcButHumid:ImgReturn", "PLC",
     "YIBiaoHumidNew|BcButHumid"},
    {"images: system functions, vibrators, back, back", false,
     "PLC:Image1(2)|Other:ImageZDTime|ZDTime:ImgReturn|Other:ImgReturn", "PLC", "ZDTime|Other"},
    {"images: factory gate and back", false, "PLC:Image1(2)|Other:lblShowFactory|Other:ImgHard|Factory:ImgReturn2",
     "Other", "Factory"},
    {"images: hoist calibration back", false, "open:YiBiaoAdvance|YiBiaoAdvance:ImgReturn", "PLC", "YiBiaoAdvance"},
    {"images: aggregate editor back", false, "PLC:Image1(1)|open:CansdAG|CansdAG:ImgReturn", "BcBut", "CansdAG"},
    {"hoist calibration, kept without a menu entry", false, "open:YiBiaoAdvance|YiBiaoAdvance:lblReturn", "PLC",
     "YiBiaoAdvance"},
    {"aggregate editor, kept without a menu entry", false, "PLC:LblSel(1)|open:CansdAG|CansdAG:lblReturn", "BcBut",
     "CansdAG"},
};
}  // namespace

class NavigationTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterForms(); }
    void walk_data() { TableRows(kWalks); }
    void walk()
    {
        const auto& c = TableRow(kWalks);
        ConsoleHarness h;
        MbAnswerer mb;
        LogIn();
        Walk((c.gate ? split("PLC:LblSel(0)|BcBut:txtPassword=90765|BcBut:lblOK") : QStringList()) + split(c.steps));
        if (QTest::currentTestFailed())
            return;
        for (const QString& f : split(c.shown))
            QTRY_VERIFY2(shown(f), qPrintable(f + QStringLiteral(" is not showing")));
        // A form that was left by its return is gone, so that its next entry starts afresh.
        for (const QString& f : split(c.gone))
            QTRY_VERIFY2(f == QLatin1String("PLC") ? !shown(f) : !Forms::loaded(f),
                         qPrintable(f + QStringLiteral(" is still there")));
        QCOMPARE(h.endedProcess, -1);
        QVERIFY(!h.programEnded);
    }
};

QTEST_MAIN(NavigationTest)
#include "navigation_test.moc"
