#include "common/event_yield.h"

#include <QApplication>
#include <QCoreApplication>
#include <QList>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace {
int g_depth = 0;
QList<QPointer<QWidget>> g_waiting;
bool g_flushQueued = false;

void queueFlush(int ms);

void flush()
{
    g_flushQueued = false;
    if (g_depth > 0)
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

void YieldToEvents()
{
    ++g_depth;
    QCoreApplication::processEvents();
    --g_depth;
    // Still inside the routine that yielded: the destruction waits for the event loop.
    if (g_depth == 0)
        queueFlush(0);
}

int YieldDepth() { return g_depth; }

void DestroyWhenSettled(QWidget* form)
{
    if (!form)
        return;
    form->hide();
    if (!g_waiting.contains(form))
        g_waiting.append(form);
    if (g_depth == 0)
        queueFlush(0);
}

void DestroySettledNow()
{
    if (g_depth > 0)
        return;
    const QList<QPointer<QWidget>> forms = std::exchange(g_waiting, {});
    for (const QPointer<QWidget>& w : forms)
        delete w.data();
}
