#include "shell/app_setup.h"

#include "common/form_access.h"
#include "shell/plc_form.h"

#include <QApplication>
#include <QFontDatabase>
#include <QSocketNotifier>
#include <QStyleFactory>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {
int g_signalPipe[2] = {-1, -1};

// Only what is safe in a signal handler: one byte into the pipe.
void onTerminationSignal(int)
{
    const int saved = errno;
    const char c = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_signalPipe[1], &c, 1);
    errno = saved;
}
}  // namespace

void InstallAppLook(QApplication& app)
{
    app.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QFont f = app.font();
    // The CJK font of the installation; Qt falls back on its own if it is missing.
    for (const char* family : {"WenQuanYi Micro Hei", "Noto Sans CJK SC", "WenQuanYi Zen Hei"}) {
        if (QFontDatabase::families().contains(QLatin1String(family))) {
            f.setFamily(QLatin1String(family));
            break;
        }
    }
    f.setPixelSize(14);
    app.setFont(f);
}

void RegisterForms()
{
    Forms::registerForm(QStringLiteral("PLC"), [] { return new PLC; });
    RegisterParamsForms();
    RegisterPlantForms();
    RegisterCalibrationForms();
}

void ExitOnTerminationSignals()
{
    if (g_signalPipe[0] < 0 && ::pipe2(g_signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    static QSocketNotifier* notifier = nullptr;
    if (!notifier) {
        notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, qApp);
        QObject::connect(notifier, &QSocketNotifier::activated, qApp, [] {
            char buf[64];
            while (::read(g_signalPipe[0], buf, sizeof buf) > 0) {
            }
            ExitSystem();
        });
    }
    struct sigaction sa {};
    sa.sa_handler = onTerminationSignal;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    for (int sig : {SIGTERM, SIGHUP, SIGINT})
        sigaction(sig, &sa, nullptr);
}
