#pragma once
// What every plant form test starts from: the simulator on the line and an operator at the boxes.
#include "test_support.h"

#include "common/scale_table.h"

#include <QLabel>
#include <QLineEdit>

using plcsim::Fault;

inline QString Status(QLabel* l) { return l->text() + '/' + TextColor(l).name(); }

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
    template <class F> F* show(const char* name)
    {
        Forms::show(QLatin1String(name));
        return qobject_cast<F*>(Forms::loaded(QLatin1String(name)));
    }
    // Clicks `button` with the controller refusing the first `naks` requests: the status line as the click
    // leaves it, then after each reply, as text/colour/shown or hidden.
    QStringList statusPerReply(QLabel* status, QWidget* button, int naks = 0)
    {
        QStringList seen;
        const auto look = [&] { seen << Status(status) + (status->isVisible() ? "/shown" : "/hidden"); };
        const QMetaObject::Connection c = QObject::connect(&h->sim, &plcsim::Controller::reply, look);
        if (naks > 0)
            h->sim.injectFault(Fault::Nak, naks);
        ClickOn(button);
        look();
        if (!QTest::qWaitFor([] { return SendFlag && !Link().Timer2.isActive(); }))
            seen << "the link still busy";
        QObject::disconnect(c);
        return seen;
    }
    // Clicks `back` with `answer` ready for a question: the questions asked.
    QStringList leave(QWidget* back, bool answer = false)
    {
        mb->texts.clear();
        mb->queue(answer);
        ClickOn(back);
        return mb->texts;
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

