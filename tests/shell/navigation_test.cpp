// A walk through the console as an operator clicks it: every menu entry of the main form and of the
// hubs, and every way back, by caption and by image, against the real forms and the simulator.
#include "test_support.h"

#include "common/form_access.h"
#include "common/module1.h"
#include "shell/app_setup.h"
#include "shell/plc_form.h"

#include <QLineEdit>
#include <QSet>
#include <QTest>

namespace {
bool shown(const QString& form)
{
    QWidget* w = Forms::loaded(form);
    return w && w->isVisible();
}
}  // namespace

class NavigationTest : public QObject {
    Q_OBJECT
private slots:
    // Every form of the console is a step of some row below: one that cannot be opened fails there.
    void initTestCase() { RegisterForms(); }

    void init()
    {
        h = new ConsoleHarness;
        mb = new MbAnswerer;
    }

    void cleanup()
    {
        delete mb;
        delete h;
    }

    // steps: see Walk.
    void walk_data()
    {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QStringList>("shownAtEnd");
        QTest::addColumn<QStringList>("goneAtEnd");  // not loaded, or hidden
        const QStringList gate{"PLC:LblSel(0)", "BcBut:txtPassword=90765", "BcBut:lblOK"};

        QTest::newRow("calibration: the gate") << QStringList{"PLC:LblSel(0)"} << QStringList{"BcBut"} << QStringList{"PLC"};
        QTest::newRow("calibration: back from the gate")
            << QStringList{"PLC:LblSel(0)", "BcBut:lblReturn2"} << QStringList{"PLC"} << QStringList{"BcBut"};
        QTest::newRow("calibration: back from the menu")
            << gate + QStringList{"BcBut:lblReturn"} << QStringList{"PLC"} << QStringList{"BcBut"};
        QTest::newRow("calibration: a scale and back")
            << gate + QStringList{"BcBut:LblBd(0)", "hidden:BcBut", "YIBiao:lblReturn"} << QStringList{"BcBut"}
            << QStringList{"YIBiao", "PLC"};
        QTest::newRow("calibration: a scale, back, back")
            << gate + QStringList{"BcBut:LblBd(8)", "YIBiao:lblReturn", "BcBut:lblReturn"} << QStringList{"PLC"}
            << QStringList{"YIBiao", "BcBut"};
        QTest::newRow("calibration: sensors and back")
            << gate + QStringList{"BcBut:lblSensor", "hidden:BcBut", "Sensor:lblReturn"} << QStringList{"BcBut"}
            << QStringList{"Sensor"};
        QTest::newRow("calibration: records over the menu")
            << gate + QStringList{"BcBut:LbLBdjk"} << QStringList{"FrmJk", "BcBut"} << QStringList{"PLC"};
        QTest::newRow("calibration: records closed")
            << gate + QStringList{"BcBut:LbLBdjk", "FrmJk:ImageExit"} << QStringList{"BcBut"} << QStringList{"FrmJk"};
        QTest::newRow("parameters: no gate, back")
            << QStringList{"PLC:LblSel(1)", "BcBut:lblReturn"} << QStringList{"PLC"} << QStringList{"BcBut"};
        QTest::newRow("parameters: a scale and back")
            << QStringList{"PLC:LblSel(1)", "BcBut:LblBd(1)", "hidden:BcBut", "Cansd:lblReturn"} << QStringList{"BcBut"}
            << QStringList{"Cansd", "PLC"};
        QTest::newRow("moisture: menu and back")
            << QStringList{"PLC:lblAdvance", "BcButHumid:lblReturn"} << QStringList{"PLC"} << QStringList{"BcButHumid"};
        QTest::newRow("moisture: a probe and back")
            << QStringList{"PLC:lblAdvance", "BcButHumid:LblBd(4)", "hidden:BcButHumid", "YIBiaoHumidNew:lblReturn"}
            << QStringList{"BcButHumid"}
            << QStringList{"YIBiaoHumidNew", "PLC"};
        QTest::newRow("system functions and back")
            << QStringList{"PLC:LblSel(2)", "Other:lblReturn"} << QStringList{"PLC"} << QStringList{"Other"};
        QTest::newRow("vibrator times and back")
            << QStringList{"PLC:LblSel(2)", "Other:LblZDTime", "hidden:Other", "ZDTime:lblReturn"} << QStringList{"Other"}
            << QStringList{"ZDTime", "PLC"};
        QTest::newRow("factory setting: the hidden entry, back from the gate")
            << QStringList{"PLC:LblSel(2)", "Other:lblShowFactory", "Other:lblHard", "hidden:Other", "Factory:lblReturn2"}
            << QStringList{"Other"} << QStringList{"Factory", "PLC"};
        QTest::newRow("factory setting: the code, back from the setting")
            << QStringList{"PLC:LblSel(2)", "Other:lblShowFactory", "Other:ImgHard", "Factory:txtPassword=61730428",
                           "Factory:lblOK", "Factory:lblReturn"}
            << QStringList{"Other"} << QStringList{"Factory", "PLC"};
        QTest::newRow("factory setting, back, back")
            << QStringList{"PLC:LblSel(2)", "Other:lblShowFactory", "Other:lblHard", "Factory:txtPassword=61730428",
                           "Factory:cmdOK", "Factory:ImgReturn", "Other:ImgReturn"}
            << QStringList{"PLC"} << QStringList{"Factory", "Other"};
        // The gate is passed once a run: the next entry goes straight to the menu.
        QTest::newRow("calibration: the gate once a run")
            << gate + QStringList{"BcBut:lblReturn", "PLC:LblSel(0)", "BcBut:lblSensor", "Sensor:lblReturn"}
            << QStringList{"BcBut"} << QStringList{"Sensor", "PLC"};
        // The images do what their captions do.
        QTest::newRow("images: calibration, sensors, back, back")
            << QStringList{"PLC:Image1(0)", "BcBut:txtPassword=90765", "BcBut:cmdOK", "BcBut:ImgSensor",
                           "Sensor:ImgReturn", "BcBut:ImgReturn"}
            << QStringList{"PLC"} << QStringList{"Sensor", "BcBut"};
        QTest::newRow("images: calibration gate and back")
            << QStringList{"PLC:Image1(0)", "BcBut:ImgReturn2"} << QStringList{"PLC"} << QStringList{"BcBut"};
        QTest::newRow("images: a scale and back")
            << gate + QStringList{"BcBut:ImgBd(2)", "YIBiao:ImgReturn"} << QStringList{"BcBut"} << QStringList{"YIBiao"};
        QTest::newRow("images: records")
            << gate + QStringList{"BcBut:ImgBdjk"} << QStringList{"FrmJk", "BcBut"} << QStringList{"PLC"};
        QTest::newRow("images: parameters, a scale, back, back")
            << QStringList{"PLC:Image1(1)", "BcBut:ImgBd(8)", "Cansd:ImgReturn", "BcBut:ImgReturn"} << QStringList{"PLC"}
            << QStringList{"Cansd", "BcBut"};
        QTest::newRow("images: moisture, a probe, back, back")
            << QStringList{"PLC:ImgAdvance", "BcButHumid:ImgBd(4)", "YIBiaoHumidNew:ImgReturn", "BcButHumid:ImgReturn"}
            << QStringList{"PLC"} << QStringList{"YIBiaoHumidNew", "BcButHumid"};
        QTest::newRow("images: system functions, vibrators, back, back")
            << QStringList{"PLC:Image1(2)", "Other:ImageZDTime", "ZDTime:ImgReturn", "Other:ImgReturn"} << QStringList{"PLC"}
            << QStringList{"ZDTime", "Other"};
        QTest::newRow("images: factory gate and back")
            << QStringList{"PLC:Image1(2)", "Other:lblShowFactory", "Other:ImgHard", "Factory:ImgReturn2"}
            << QStringList{"Other"} << QStringList{"Factory"};
        QTest::newRow("images: hoist calibration back")
            << QStringList{"open:YiBiaoAdvance", "YiBiaoAdvance:ImgReturn"} << QStringList{"PLC"} << QStringList{"YiBiaoAdvance"};
        QTest::newRow("images: aggregate editor back")
            << QStringList{"PLC:Image1(1)", "open:CansdAG", "CansdAG:ImgReturn"} << QStringList{"BcBut"} << QStringList{"CansdAG"};
        QTest::newRow("hoist calibration, kept without a menu entry")
            << QStringList{"open:YiBiaoAdvance", "YiBiaoAdvance:lblReturn"} << QStringList{"PLC"}
            << QStringList{"YiBiaoAdvance"};
        QTest::newRow("aggregate editor, kept without a menu entry")
            << QStringList{"PLC:LblSel(1)", "open:CansdAG", "CansdAG:lblReturn"} << QStringList{"BcBut"}
            << QStringList{"CansdAG"};
    }

    void walk()
    {
        QFETCH(QStringList, steps);
        QFETCH(QStringList, shownAtEnd);
        QFETCH(QStringList, goneAtEnd);
        LogIn();
        Walk(steps);
        if (QTest::currentTestFailed())
            return;
        for (const QString& f : shownAtEnd)
            QTRY_VERIFY2(shown(f), qPrintable(f + QStringLiteral(" is not showing")));
        // A form that was left by its return is gone, so that its next entry starts afresh.
        for (const QString& f : goneAtEnd)
            QTRY_VERIFY2(f == QLatin1String("PLC") ? !shown(f) : !Forms::loaded(f),
                         qPrintable(f + QStringLiteral(" is still there")));
        QCOMPARE(h->endedProcess, -1);
        QVERIFY(!h->programEnded);
    }

private:
    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

QTEST_MAIN(NavigationTest)
#include "navigation_test.moc"
