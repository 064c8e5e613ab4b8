// Forms unloaded inside a yield are destroyed once the routine that yielded has returned.
#include "common/event_yield.h"

#include <QApplication>
#include <QList>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace {
QList<QPointer<QWidget>> g_waiting;
bool g_flushQueued = false;

void queueFlush(int ms);

void flush()
{
    g_flushQueued = false;
    if (YieldDepth() > 0)
        return;  // the end of the outermost yield queues it again
    // A modal box is an event loop of its own, opened from inside some routine that may be the form's.
    if (QApplication::activeModalWidget()) {
        queueFlush(50);
        return;
    }
    DestroySettledNow();
}

void queueFlush(int ms)
{
    if (g_flushQueued || g_waiting.isEmpty() || !QCoreApplication::instance())
        return;
    g_flushQueued = true;
    QTimer::singleShot(ms, QCoreApplication::instance(), flush);
}
}  // namespace

void DestroyWhenSettled(QWidget* form)
{
    if (!form)
        return;
    SetAfterOutermostYield([] { queueFlush(0); });
    form->hide();
    if (!g_waiting.contains(form))
        g_waiting.append(form);
    if (YieldDepth() == 0)
        queueFlush(0);
}

void DestroySettledNow()
{
    if (YieldDepth() > 0)
        return;
    const QList<QPointer<QWidget>> forms = std::exchange(g_waiting, {});
    for (const QPointer<QWidget>& w : forms)
        delete w.data();
}
