#include "cfg/progress.h"

#include <cstdio>
#include <unistd.h>

namespace {
constexpr int kWidth = 30;
}

TerminalProgress::TerminalProgress() : enabled_(::isatty(STDERR_FILENO) == 1) {}

TerminalProgress::~TerminalProgress() { show(QString(), 1, 1); }

void TerminalProgress::show(const QString& what, int done, int total)
{
    if (!enabled_)
        return;
    // A finished bar is wiped, so that the messages after it start on a clean line.
    if (done >= total) {
        if (drawn_)
            std::fputs("\r\033[K", stderr);
        drawn_ = false;
        std::fflush(stderr);
        return;
    }
    const int filled = total > 0 ? kWidth * done / total : 0;
    const QString bar = QString(filled, QLatin1Char('#')) + QString(kWidth - filled, QLatin1Char('.'));
    std::fputs(QStringLiteral("\r\033[K%1 [%2] %3/%4").arg(what, bar).arg(done).arg(total).toUtf8().constData(), stderr);
    std::fflush(stderr);
    drawn_ = true;
}
