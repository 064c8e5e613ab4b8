// A walk through the console as an operator clicks it: every menu entry of the main form and of the
// hubs, and every way back, against the real forms and the simulator. A form that is not part of this
// build yet skips its rows.
#include "test_support.h"

#include "common/form_access.h"
#include "common/module1.h"
#include "shell/app_setup.h"
#include "shell/plc_form.h"

#include <QLineEdit>
#include <QSet>
#include <QTest>

namespace {
const QStringList kForms = {"PLC",   "BcBut",  "BcButHumid", "Other",   "YIBiao",        "YIBiaoHumidNew",
                            "Cansd", "CansdAG", "Sensor",    "FrmJk",   "ZDTime",        "Factory",
                            "YiBiaoAdvance"};

bool shown(const QString& form)
{
    QWidget* w = Forms::loaded(form);
    return w && w->isVisible();
}
}  // namespace

class NavigationTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        RegisterForms();
        // Which forms this build has: each is made once and dropped again, with the link up.
        ConsoleHarness h;
        MbAnswerer mb;
        h.connectLink();
        for (const QString& f : kForms) {
            if (Forms::load(f))
                registered.insert(f);
            Forms::unloadAll();
        }
    }

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

    // steps: "Form:control" clicks a control of a showing form, "Form:control=text" types into a box,
    // "open:Form" shows a form that no menu opens.
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
            << gate + QStringList{"BcBut:LblBd(0)", "YIBiao:lblReturn"} << QStringList{"BcBut"} << QStringList{"YIBiao", "PLC"};
        QTest::newRow("calibration: a scale, back, back")
            << gate + QStringList{"BcBut:LblBd(8)", "YIBiao:lblReturn", "BcBut:lblReturn"} << QStringList{"PLC"}
            << QStringList{"YIBiao", "BcBut"};
        QTest::newRow("calibration: sensors and back")
            << gate + QStringList{"BcBut:lblSensor", "Sensor:lblReturn"} << QStringList{"BcBut"} << QStringList{"Sensor"};
        QTest::newRow("calibration: records over the menu")
            << gate + QStringList{"BcBut:LbLBdjk"} << QStringList{"FrmJk", "BcBut"} << QStringList{"PLC"};
        QTest::newRow("calibration: records closed")
            << gate + QStringList{"BcBut:LbLBdjk", "FrmJk:ImageExit"} << QStringList{"BcBut"} << QStringList{"FrmJk"};
        QTest::newRow("parameters: no gate, back")
            << QStringList{"PLC:LblSel(1)", "BcBut:lblReturn"} << QStringList{"PLC"} << QStringList{"BcBut"};
        QTest::newRow("parameters: a scale and back")
            << QStringList{"PLC:LblSel(1)", "BcBut:LblBd(1)", "Cansd:lblReturn"} << QStringList{"BcBut"}
            << QStringList{"Cansd", "PLC"};
        QTest::newRow("moisture: menu and back")
            << QStringList{"PLC:lblAdvance", "BcButHumid:lblReturn"} << QStringList{"PLC"} << QStringList{"BcButHumid"};
        QTest::newRow("moisture: a probe and back")
            << QStringList{"PLC:lblAdvance", "BcButHumid:LblBd(4)", "YIBiaoHumidNew:lblReturn"} << QStringList{"BcButHumid"}
            << QStringList{"YIBiaoHumidNew", "PLC"};
        QTest::newRow("system functions and back")
            << QStringList{"PLC:LblSel(2)", "Other:lblReturn"} << QStringList{"PLC"} << QStringList{"Other"};
        QTest::newRow("vibrator times and back")
            << QStringList{"PLC:LblSel(2)", "Other:LblZDTime", "ZDTime:lblReturn"} << QStringList{"Other"}
            << QStringList{"ZDTime", "PLC"};
        QTest::newRow("factory setting: the hidden entry, back from the gate")
            << QStringList{"PLC:LblSel(2)", "Other:lblShowFactory", "Other:lblHard", "Factory:lblReturn2"}
            << QStringList{"Other"} << QStringList{"Factory", "PLC"};
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
        QSet<QString> forms(shownAtEnd.begin(), shownAtEnd.end());
        forms.unite(QSet<QString>(goneAtEnd.begin(), goneAtEnd.end()));
        for (const QString& s : steps)
            forms.insert(s.startsWith(QLatin1String("open:")) ? s.mid(5) : s.section(QLatin1Char(':'), 0, 0));
        for (const QString& f : forms)
            if (!registered.contains(f))
                QSKIP(qPrintable(f + QStringLiteral(" is not part of this build yet")));

        login();
        for (const QString& step : steps) {
            if (step.startsWith(QLatin1String("open:"))) {
                Forms::show(step.mid(5));
                continue;
            }
            const QString form = step.section(QLatin1Char(':'), 0, 0);
            const QString control = step.section(QLatin1Char(':'), 1).section(QLatin1Char('='), 0, 0);
            QTRY_VERIFY2(shown(form), qPrintable(form + QStringLiteral(" is not showing before ") + step));
            QWidget* w = Ctl(Forms::loaded(form), control);
            QVERIFY2(w, qPrintable(step + QStringLiteral(": no such control")));
            if (step.contains(QLatin1Char('='))) {
                qobject_cast<QLineEdit*>(w)->setText(step.section(QLatin1Char('='), 1));
                continue;
            }
            QTRY_VERIFY2(w->isVisible(), qPrintable(step + QStringLiteral(": the control is not showing")));
            ClickOn(w);
        }
        for (const QString& f : shownAtEnd)
            QTRY_VERIFY2(shown(f), qPrintable(f + QStringLiteral(" is not showing")));
        for (const QString& f : goneAtEnd)
            QTRY_VERIFY2(!shown(f), qPrintable(f + QStringLiteral(" is still showing")));
        // A form that was left by its return is gone, so that its next entry starts afresh.
        for (const QString& f : goneAtEnd)
            if (f != QLatin1String("PLC"))
                QTRY_VERIFY2(!Forms::loaded(f), qPrintable(f + QStringLiteral(" is still loaded")));
        QCOMPARE(h->endedProcess, -1);
        QVERIFY(!h->programEnded);
    }

private:
    void login()
    {
        auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
        QVERIFY(plc->load());
        plc->show();
        plc->txtPassword->setText(QStringLiteral("48213"));
        plc->cmdOk();
        QVERIFY(plc->FraCeng[0]->isVisible());
    }

    QSet<QString> registered;
    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

QTEST_MAIN(NavigationTest)
#include "navigation_test.moc"
