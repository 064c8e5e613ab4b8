// The controller on a pseudo-terminal, for the demo and the end-to-end tests: the first line of
// stdout is the device to open; with --control-stdin, commands on stdin are answered on stdout.
#include "plcsim/control.h"
#include "plcsim/controller.h"
#include "plcsim/pty_endpoint.h"

#include "common/scale_table.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <csignal>
#include <ctime>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

int gSignalPipe[2] = {-1, -1};

void onSignal(int)
{
    const char c = 1;
    [[maybe_unused]] const ssize_t n = ::write(gSignalPipe[1], &c, 1);
}

void say(const QString& line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

[[noreturn]] void usageError(const QString& text)
{
    std::fputs(qPrintable(text + QLatin1Char('\n')), stderr);
    std::exit(2);
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("plcsim"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Simulated plant controller on a pseudo-terminal (9600 baud, 7E1 framing).\n"
                       "Prints the slave device on the first line of stdout and serves until killed.\n\n") +
        plcsim::protocolHelp() + QLatin1Char('\n') + plcsim::controlCommandHelp());
    parser.addHelpOption();
    const QCommandLineOption link(QStringLiteral("link"), QStringLiteral("Make a symbolic link PATH to the device."),
                                  QStringLiteral("PATH"));
    const QCommandLineOption paced(QStringLiteral("paced"),
                                   QStringLiteral("Send answers at the speed of the line (default)."));
    const QCommandLineOption noPace(QStringLiteral("no-pace"), QStringLiteral("Send each answer at once."));
    const QCommandLineOption paceRequests(
        QStringLiteral("pace-requests"),
        QStringLiteral("Take each request only as fast as the line would carry it, as on a real line (with "
                       "--paced: both ways at line speed)."));
    const QCommandLineOption initDelay(QStringLiteral("init-delay"),
                                       QStringLiteral("Hardware initialisation takes MS milliseconds (2000)."),
                                       QStringLiteral("MS"));
    const QCommandLineOption initNever(QStringLiteral("init-never"),
                                       QStringLiteral("Hardware initialisation never completes."));
    const QCommandLineOption calOutcome(QStringLiteral("cal-outcome"),
                                        QStringLiteral("Answer to zero and span calibration (success)."),
                                        QStringLiteral("success|refuse|none"));
    const QCommandLineOption fault(QStringLiteral("fault"),
                                   QStringLiteral("Start with a fault on the next COUNT requests (1)."),
                                   QStringLiteral("KIND[:COUNT]"));
    const QCommandLineOption stopped(QStringLiteral("stopped"),
                                     QStringLiteral("Start as a stopped controller (run bits off, no program)."));
    const QCommandLineOption controlStdin(QStringLiteral("control-stdin"),
                                          QStringLiteral("Read control commands from stdin."));
    const QCommandLineOption noLive(QStringLiteral("no-live"),
                                    QStringLiteral("Keep AD values and weights still (no scan, no noise)."));
    const QCommandLineOption trace(QStringLiteral("trace"),
                                   QStringLiteral("Write every chunk received (R) and sent (T) to FILE, one line "
                                                  "each: monotonic nanoseconds, R or T, the bytes in hex."),
                                   QStringLiteral("FILE"));
    const QCommandLineOption commissioned(
        QStringLiteral("commissioned"),
        QStringLiteral("Start as a commissioned plant: the parameters and option bits of every scale, the option "
                       "words, plant times, vibrator times, sensor loads and the hoist's block hold the console's "
                       "defaults (the hoist not yet calibrated)."));
    parser.addOptions(
        {link, paced, noPace, initDelay, initNever, calOutcome, fault, controlStdin, noLive, trace, stopped, commissioned, paceRequests});
    parser.process(app);

    plcsim::Controller controller;
    if (parser.isSet(commissioned)) {
        // The weights are scaled by the decimals of the console's own scale table.
        SetDefaultNames();
        controller.commission();
    }
    controller.setPaced(!parser.isSet(noPace));
    controller.setPacedRequests(parser.isSet(paceRequests));
    controller.setRunning(!parser.isSet(stopped));
    controller.setLiveModel(!parser.isSet(noLive));
    controller.setInitNever(parser.isSet(initNever));
    if (parser.isSet(initDelay)) {
        bool ok = false;
        const int ms = parser.value(initDelay).toInt(&ok);
        if (!ok || ms < 0)
            usageError(QStringLiteral("--init-delay wants milliseconds"));
        controller.setInitDelayMs(ms);
    }
    if (parser.isSet(calOutcome)) {
        const auto o = plcsim::outcomeFromName(parser.value(calOutcome));
        if (!o)
            usageError(QStringLiteral("--cal-outcome wants success, refuse or none"));
        controller.setCalOutcome(*o);
    }
    if (parser.isSet(fault)) {
        const QStringList parts = parser.value(fault).split(QLatin1Char(':'));
        const auto f = plcsim::faultFromName(parts.at(0));
        bool ok = parts.size() == 1;
        const int count = parts.size() == 2 ? parts.at(1).toInt(&ok) : 1;
        if (!f || !ok || count < 1 || parts.size() > 2)
            usageError(QStringLiteral("--fault wants KIND[:COUNT]"));
        controller.injectFault(*f, count);
    }

    plcsim::PtyEndpoint pty;
    QString error;
    if (!pty.open(&error)) {
        std::fputs(qPrintable(QStringLiteral("plcsim: cannot open a pseudo-terminal: ") + error + QLatin1Char('\n')),
                   stderr);
        return 1;
    }
    // The trace is connected first, so that its clock is read before the bytes are handled or written.
    std::FILE* traceFile = nullptr;
    if (parser.isSet(trace)) {
        traceFile = std::fopen(qPrintable(parser.value(trace)), "w");
        if (!traceFile)
            usageError(QStringLiteral("--trace: cannot write ") + parser.value(trace));
        auto log = [traceFile](char dir, const QByteArray& bytes) {
            timespec ts{};
            clock_gettime(CLOCK_MONOTONIC, &ts);
            std::fprintf(traceFile, "%lld %c %s\n", (long long)ts.tv_sec * 1000000000LL + ts.tv_nsec, dir,
                         bytes.toHex().constData());
            // Whoever reads the trace while the simulator runs sees every chunk so far.
            std::fflush(traceFile);
        };
        QObject::connect(&pty, &plcsim::PtyEndpoint::bytesReceived, &controller,
                         [log](const QByteArray& b) { log('R', b); });
        QObject::connect(&controller, &plcsim::Controller::reply, &pty, [log](const QByteArray& b) { log('T', b); });
    }
    QObject::connect(&pty, &plcsim::PtyEndpoint::bytesReceived, &controller, &plcsim::Controller::feed);
    QObject::connect(&controller, &plcsim::Controller::reply, &pty, &plcsim::PtyEndpoint::write);

    const QString linkPath = parser.value(link);
    if (!linkPath.isEmpty()) {
        // A link left behind by a run that was killed hard is replaced; anything else is not ours.
        if (QFileInfo(linkPath).isSymLink())
            QFile::remove(linkPath);
        if (!QFile::link(pty.slavePath(), linkPath)) {
            std::fputs(qPrintable(QStringLiteral("plcsim: cannot make the link ") + linkPath + QLatin1Char('\n')),
                       stderr);
            return 1;
        }
    }

    if (::pipe2(gSignalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return 1;
    QSocketNotifier signalNotifier(gSignalPipe[0], QSocketNotifier::Read);
    QObject::connect(&signalNotifier, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    struct sigaction sa {};
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGTERM, &sa, nullptr);
    sigaction(SIGINT, &sa, nullptr);

    say(pty.slavePath());

    QSocketNotifier* stdinNotifier = nullptr;
    QByteArray pendingLine;
    if (parser.isSet(controlStdin)) {
        stdinNotifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, &app);
        QObject::connect(stdinNotifier, &QSocketNotifier::activated, &app, [&] {
            char buf[512];
            const ssize_t n = ::read(STDIN_FILENO, buf, sizeof buf);
            if (n <= 0) {
                // The controller goes on serving when its controller has gone.
                stdinNotifier->setEnabled(false);
                return;
            }
            pendingLine.append(buf, n);
            qsizetype end;
            while ((end = pendingLine.indexOf('\n')) >= 0) {
                const QString line = QString::fromUtf8(pendingLine.left(end)).trimmed();
                pendingLine.remove(0, end + 1);
                if (line.isEmpty())
                    continue;
                // The line itself, as a pulled adapter and one plugged in again at the same path.
                if (line == QLatin1String("hangup")) {
                    pty.close();
                    say(QStringLiteral("ok"));
                    continue;
                }
                if (line == QLatin1String("reopen")) {
                    pty.close();
                    QString why;
                    if (!pty.open(&why)) {
                        say(QStringLiteral("error: ") + why);
                        continue;
                    }
                    if (!linkPath.isEmpty()) {
                        QFile::remove(linkPath);
                        QFile::link(pty.slavePath(), linkPath);
                    }
                    say(QStringLiteral("ok ") + pty.slavePath());
                    continue;
                }
                const plcsim::ControlAnswer answer = plcsim::runControlCommand(controller, line);
                say(answer.text);
                if (answer.quit)
                    app.quit();
            }
        });
    }

    const int rc = app.exec();
    if (traceFile)
        std::fclose(traceFile);
    if (!linkPath.isEmpty() && QFileInfo(linkPath).symLinkTarget() == QFileInfo(pty.slavePath()).absoluteFilePath())
        QFile::remove(linkPath);
    ::close(gSignalPipe[0]);
    ::close(gSignalPipe[1]);
    return rc;
}
