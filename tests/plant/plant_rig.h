#pragma once
// What every plant form test starts from: the simulator on the line and an operator at the boxes.
#include "test_support.h"

#include "common/form_access.h"
#include "common/module1.h"
#include "link/link_engine.h"
#include "shell/app_setup.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>

using plcsim::Fault;

// A second base of each test class: setUp() in init(), tearDown() in cleanup().
struct PlantRig {
    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
    void setUp()
    {
        h = new ConsoleHarness;
        mb = new MbAnswerer;
        h->connectLink();
    }
    void tearDown()
    {
        delete mb;
        delete h;
    }
    // Shows a form as its menu entry does.
    template <class F> F* show(const char* name)
    {
        Forms::show(QLatin1String(name));
        return qobject_cast<F*>(Forms::loaded(QLatin1String(name)));
    }
};

// The plant forms, with plain widgets standing in for the forms they lead back to.
inline void RegisterPlantWith(std::initializer_list<const char*> standIns)
{
    RegisterPlantForms();
    for (const char* n : standIns)
        Forms::registerForm(QLatin1String(n), [] { return new QWidget; });
}

inline void WaitIdle() { QTRY_VERIFY(SendFlag && !Link().Timer2.isActive()); }

inline QLineEdit* Box(QWidget* f, int i) { return Ctl<QLineEdit>(f, QStringLiteral("TxtDCansd(%1)").arg(i)); }

// Types each "field=text" into its box.
inline void Edit(QWidget* f, const QStringList& edits)
{
    for (const QString& e : edits)
        Box(f, e.section('=', 0, 0).toInt())->setText(e.section('=', 1));
}

// A status caption as text and colour.
inline QString Status(QLabel* l) { return l->text() + '/' + TextColor(l).name(); }
