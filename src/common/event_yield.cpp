#include "common/event_yield.h"

#include <QCoreApplication>

namespace {
int g_depth = 0;
void (*g_afterOutermost)() = nullptr;
}  // namespace

void YieldToEvents()
{
    ++g_depth;
    QCoreApplication::processEvents();
    --g_depth;
    // Still inside the routine that yielded: what waits for the event loop is queued now.
    if (g_depth == 0 && g_afterOutermost)
        g_afterOutermost();
}

int YieldDepth() { return g_depth; }

void SetAfterOutermostYield(void (*routine)()) { g_afterOutermost = routine; }
