// The console against the standalone controller simulator on a pseudo-terminal, paced at line speed.
// Prints, for each chain, the console's turnaround as the simulator sees it (the write of the last
// character of a reply to the first character of the next request), the reply-to-label latency, the
// start-up of the real executable to its first painted window, memory, CPU share while polling, and the
// record viewer's open time and memory, and the records out as CSV. Prints figures; asserts nothing.
//
//   console_bench [--only chains,live,cpu,startup,viewer,csv] [--cpu-seconds N] [--polls N]
#include "calibration/frm_jk.h"
#include "calibration/mb_question.h"
#include "calibration/records_csv.h"
#include "calibration/yi_biao.h"
#include "common/app_paths.h"
#include "common/form_access.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "link/comm_port.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "params/param_editor.h"
#include "shell/app_setup.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <cstdio>
#include <ctime>
#include <functional>
#include <map>
#include <sys/resource.h>

namespace {

qint64 nowNs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return qint64(ts.tv_sec) * 1000000000LL + ts.tv_nsec;
}

double rssMb()
{
    QFile f(QStringLiteral("/proc/self/status"));
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : f.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').at(0).toDouble() / 1024.0;
    return -1;
}

struct Stats {
    int n = 0;
    double p50 = 0, p99 = 0, max = 0;
};

Stats stats(std::vector<double> v)
{
    Stats s;
    s.n = int(v.size());
    if (v.empty())
        return s;
    std::sort(v.begin(), v.end());
    auto rank = [&](double p) { return v[size_t(std::max(0.0, std::ceil(p * double(v.size())) - 1))]; };
    s.p50 = rank(0.50);
    s.p99 = rank(0.99);
    s.max = v.back();
    return s;
}

void printStats(const QString& what, const Stats& s, const char* unit = "ms")
{
    std::printf("  %-52s n=%5d  p50 %8.3f  p99 %8.3f  max %8.3f %s\n", qPrintable(what), s.n, s.p50, s.p99, s.max,
                unit);
}

// Runs the event loop until pred holds or the time is up; false on time-out.
bool waitFor(const std::function<bool()>& pred, int timeoutMs)
{
    QElapsedTimer t;
    t.start();
    QTimer guard;  // wakes the loop now and then, so that a time-out is noticed
    guard.start(50);
    while (!pred()) {
        if (t.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void settle(int ms)
{
    QElapsedTimer t;
    t.start();
    waitFor([&] { return t.elapsed() >= ms; }, ms + 100);
}

// Paint events of one widget, by the monotonic clock.
class PaintWatch : public QObject {
public:
    std::vector<qint64> times;
    bool eventFilter(QObject*, QEvent* e) override
    {
        if (e->type() == QEvent::Paint)
            times.push_back(nowNs());
        return false;
    }
};

// A request as the console wrote it.
struct Sent {
    qint64 ns;
    short step;
    QString phase;
};

struct Trace {
    std::vector<qint64> requestStart;  // the first character of each request at the simulator
    std::vector<std::pair<qint64, int>> sent;  // each chunk the simulator wrote: time, length
};

Trace readTrace(const QString& path)
{
    Trace t;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return t;
    while (!f.atEnd()) {
        const QList<QByteArray> parts = f.readLine().trimmed().split(' ');
        if (parts.size() != 3)
            continue;
        const qint64 ns = parts[0].toLongLong();
        const QByteArray bytes = QByteArray::fromHex(parts[2]);
        if (parts[1] == "R") {
            for (char c : bytes)
                if (c == 2)
                    t.requestStart.push_back(ns);
        } else {
            t.sent.push_back({ns, int(bytes.size())});
        }
    }
    return t;
}

class Bench {
public:
    QTemporaryDir dir;
    QProcess sim;
    QString simTrace;
    std::vector<Sent> writes;
    QString phase;
    QTimer boxAnswerer;
    int boxesAnswered = 0;

    bool startSimulator()
    {
        simTrace = dir.filePath(QStringLiteral("sim-trace.txt"));
        sim.setProgram(QStringLiteral(ORVA_PLCSIM));
        sim.setArguments({QStringLiteral("--paced"), QStringLiteral("--control-stdin"), QStringLiteral("--trace"),
                          simTrace});
        sim.start();
        if (!sim.waitForStarted(5000) || !waitFor([&] { return sim.canReadLine(); }, 5000)) {
            std::fprintf(stderr, "the simulator did not start\n");
            return false;
        }
        const QString pty = QString::fromLocal8Bit(sim.readLine()).trimmed();
        QDir(dir.path()).mkpath(QStringLiteral("Data"));
        TextFile::writeLines(dir.filePath(QStringLiteral("Data/ComPorts.ini")),
                             {QStringLiteral("[ComPorts]"), QStringLiteral("Com2=") + pty});
        return true;
    }

    void simCommand(const QString& line)
    {
        sim.write((line + QLatin1Char('\n')).toUtf8());
        sim.waitForBytesWritten(1000);
        waitFor([&] { return sim.canReadLine(); }, 2000);
        sim.readAll();
    }

    bool connect()
    {
        AppPaths::setAppFolder(dir.path());
        PortNo = 2;
        if (Link().openPort(PortNo).error != PortOpenError::None) {
            std::fprintf(stderr, "the port to the simulator did not open\n");
            return false;
        }
        Link().resetForLogin();
        QObject::connect(Link().port(), &CommPort::written, Link().port(),
                         [this](const QByteArray&) { writes.push_back({nowNs(), StepNo, phase}); });
        // A box that would stop the run (a link fault) is answered and counted.
        boxAnswerer.setInterval(50);
        QObject::connect(&boxAnswerer, &QTimer::timeout, [this] {
            MbQuestion* box = MbQuestion::showing();
            if (!box || !box->isVisible())
                return;
            ++boxesAnswered;
            for (const char* n : {"CmdMbOK", "CmdYes"})
                if (auto* b = box->findChild<QAbstractButton*>(QLatin1String(n)); b && b->isVisible()) {
                    b->click();
                    return;
                }
        });
        boxAnswerer.start();
        return true;
    }

    // n rounds: start() sends the first request of a round, done() says the round's last reply is in.
    bool drive(const QString& name, int rounds, const std::function<void(int)>& start,
               const std::function<bool()>& done)
    {
        phase = name;
        for (int i = 0; i < rounds; ++i) {
            start(i);
            if (!waitFor(done, 15000)) {
                std::fprintf(stderr, "%s: round %d did not end (StepNo %d)\n", qPrintable(name), i, StepNo);
                phase.clear();
                return false;
            }
        }
        phase.clear();
        return true;
    }

    // ---- the parameter editor: read chain, block write, option writes ----
    void paramChains(int rounds)
    {
        ScaleNo = 2;
        ScaleTitle = ScaleName[2];
        ScaleCaption = ScaleTitle;
        ParamDevice = ParamDeviceOf(2);
        OptionDevice = QLatin1String(kScaleDevices[2].option);
        phase = QStringLiteral("parameter read chain");
        Forms::show(QStringLiteral("Cansd"));
        auto* f = static_cast<ParamEditor*>(Forms::loaded(QStringLiteral("Cansd")));
        auto readDone = [] { return StepNo == 10 && SendFlag; };
        if (!waitFor(readDone, 5000))
            std::fprintf(stderr, "the editor's first read did not end\n");
        drive(QStringLiteral("parameter read chain"), rounds, [f](int) { f->RefreshParams(); }, readDone);
        drive(QStringLiteral("parameter block write"), rounds, [f](int) { f->SetParams(); },
              [] { return StepNo == 9 && SendFlag && ParamSetDone; });
        f->SelectPage(1);
        drive(QStringLiteral("option writes"), rounds,
              [f](int) {
                  QCheckBox* off = f->Check1[0]->isChecked() ? f->Check1[1] : f->Check1[0];
                  off->setChecked(true);
              },
              [] { return StepNo == 11 && SendFlag; });
        Forms::unload(QStringLiteral("Cansd"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // ---- weight calibration: zero and span chains, then live polls one after another ----
    YIBiao* openCalibration()
    {
        simCommand(QStringLiteral("set S612 1"));  // zero tracking off
        ScaleNo = 0;
        ScaleTitle = ScaleName[0];
        const ScaleDevices& d = kScaleDevices[0];
        CalZeroDevice = QLatin1String(d.zero);
        CalSpanDevice = QLatin1String(d.span);
        CalWeightDevice = QLatin1String(d.weight);
        OptionDevice = QLatin1String(d.option);
        phase = QStringLiteral("calibration options");
        Forms::show(QStringLiteral("YIBiao"));
        auto* f = static_cast<YIBiao*>(Forms::loaded(QStringLiteral("YIBiao")));
        if (!waitFor([] { return StepNo == 22 && SendFlag; }, 5000))
            std::fprintf(stderr, "the calibration form's option reads did not end\n");
        f->SelectTab(1);
        static_cast<CalibrationForm*>(f)->ShowStepHint();
        phase = QStringLiteral("first live read");
        f->ReadLiveOnce();
        waitFor([] { return StepNo == 51 && SendFlag && LiveReadDone; }, 5000);
        return f;
    }

    void calibrationChains(CalibrationForm* f, int rounds)
    {
        auto* entry = f->findChild<QLineEdit*>(QStringLiteral("TxtFmzL"));
        // As the OK button and Timer3 do it, without the question and the second's wait.
        drive(QStringLiteral("zero and span calibration"), rounds,
              [f, entry](int i) {
                  const bool span = i % 2 == 1;
                  f->SelectTab(span ? 2 : 1);
                  f->ShowStepHint();
                  Link().Timer1.stop();
                  LiveReadDone = false;
                  if (span) {
                      entry->setText(QStringLiteral("1500"));
                      f->PrepareEntry();
                      f->SpanDone = false;
                      SpanRequest = true;
                  } else {
                      f->ZeroDone = false;
                      ZeroRequest = true;
                  }
                  Link().timer3Tick();
              },
              [] { return StepNo == 51 && SendFlag && LiveReadDone; });
        f->SelectTab(1);
        f->ShowStepHint();
    }

    std::vector<qint64> labelPaints;

    void livePolls(CalibrationForm* f, int polls)
    {
        auto* ad = f->findChild<QLabel*>(QStringLiteral("LbLADv"));
        PaintWatch watch;
        ad->installEventFilter(&watch);
        // Each poll as soon as the last is shown, where Timer1 would wait for its next tick.
        drive(QStringLiteral("live polls"), polls, [](int) { Link().timer1Tick(); },
              [] { return StepNo == 51 && SendFlag && LiveReadDone; });
        settle(50);
        ad->removeEventFilter(&watch);
        labelPaints = watch.times;
    }

    void cpuWhilePolling(CalibrationForm* f, int seconds)
    {
        boxAnswerer.stop();
        phase = QStringLiteral("polling by Timer1");
        rusage r0{}, r1{};
        f->StartLivePolling();
        settle(1000);
        getrusage(RUSAGE_SELF, &r0);
        const qint64 t0 = nowNs();
        const int before = int(writes.size());
        const int arrivedBefore = Link().port()->arrivals();
        QEventLoop loop;
        QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
        loop.exec();
        getrusage(RUSAGE_SELF, &r1);
        const double wall = double(nowNs() - t0) / 1e9;
        auto sec = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
        const double cpu = sec(r1.ru_utime) - sec(r0.ru_utime) + sec(r1.ru_stime) - sec(r0.ru_stime);
        const long wakes = (r1.ru_nvcsw - r0.ru_nvcsw) + (r1.ru_nivcsw - r0.ru_nivcsw);
        std::printf("\nPolling live values with Timer1 (400 ms) for %.0f s, %d reads:\n", wall,
                    int(writes.size()) - before);
        std::printf("  CPU %.3f s = %.2f %% of a core; %.0f context switches a second; RSS %.1f MB\n", cpu,
                    100.0 * cpu / wall, double(wakes) / wall, rssMb());
        std::printf("  the port woke the console %.1f times a read\n",
                    double(Link().port()->arrivals() - arrivedBefore) / std::max(1, int(writes.size()) - before));
        Link().Timer1.stop();
        waitFor([] { return SendFlag; }, 2000);
        phase.clear();
        boxAnswerer.start();
    }

    void closeCalibration()
    {
        Link().Timer1.stop();
        waitFor([] { return SendFlag; }, 2000);
        StepNo = 444;
        Forms::unload(QStringLiteral("YIBiao"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // ---- figures out of the simulator's trace ----
    void report()
    {
        sim.write("quit\n");
        sim.closeWriteChannel();
        if (!sim.waitForFinished(3000)) {
            sim.terminate();
            sim.waitForFinished(3000);
        }
        const Trace t = readTrace(simTrace);
        if (t.requestStart.size() != writes.size())
            std::fprintf(stderr, "the simulator saw %zu requests, the console wrote %zu\n", t.requestStart.size(),
                         writes.size());
        const size_t n = std::min(t.requestStart.size(), writes.size());
        // Last character of the reply to request k: the last chunk written before request k + 1 came in.
        std::vector<qint64> replyEnd(n, -1);
        size_t s = 0;
        for (size_t k = 0; k < n; ++k) {
            const qint64 from = t.requestStart[k];
            const qint64 to = k + 1 < n ? t.requestStart[k + 1] : std::numeric_limits<qint64>::max();
            while (s < t.sent.size() && t.sent[s].first < from)
                ++s;
            while (s < t.sent.size() && t.sent[s].first < to)
                replyEnd[k] = t.sent[s++].first;
        }
        std::map<QString, std::map<QString, std::vector<double>>> turn;
        std::vector<double> all, console;
        for (size_t k = 1; k < n; ++k) {
            const Sent& w = writes[k];
            if (w.phase.isEmpty() || w.phase != writes[k - 1].phase || replyEnd[k - 1] < 0)
                continue;
            const double ms = double(t.requestStart[k] - replyEnd[k - 1]) / 1e6;
            turn[w.phase][QStringLiteral("%1 -> %2").arg(writes[k - 1].step).arg(w.step)].push_back(ms);
        }
        std::printf("\nTurnaround, last reply character out of the simulator -> first character of the next "
                    "request in (ms):\n");
        // Who sends the next request: the console's own chain, or the bench starting the next round.
        auto starter = [](const QString& phase, const QString& pair) {
            static const QStringList bench = {QStringLiteral("10 -> 8"), QStringLiteral("9 -> 9"),
                                              QStringLiteral("11 -> 11"), QStringLiteral("51 -> 52"),
                                              QStringLiteral("51 -> 54")};
            if (phase == QLatin1String("live polls"))
                return "dispatch + next poll at once";
            return bench.contains(pair) ? "next round (form routine)" : "console chain";
        };
        for (const auto& [ph, pairs] : turn) {
            if (ph == QLatin1String("polling by Timer1"))
                continue;  // paced by the timer, not a turnaround
            std::printf(" %s\n", qPrintable(ph));
            for (const auto& [pair, v] : pairs)
                printStats(QStringLiteral("%1  [%2]").arg(pair, QLatin1String(starter(ph, pair))), stats(v));
        }
        // Reply -> label: the first paint of the AD label after each live reply of the polling phase.
        std::vector<double> label;
        for (size_t k = 0; k < n; ++k) {
            if (writes[k].phase != QLatin1String("live polls") || writes[k].step != 51 || replyEnd[k] < 0)
                continue;
            const qint64 end = replyEnd[k];
            const qint64 next = k + 1 < n && replyEnd[k + 1] > 0 ? replyEnd[k + 1] : end + 1000000000LL;
            auto it = std::lower_bound(labelPaints.begin(), labelPaints.end(), end);
            if (it != labelPaints.end() && *it < next)
                label.push_back(double(*it - end) / 1e6);
        }
        std::printf("\nLive reply's last character -> AD label painted (ms):\n");
        printStats(QStringLiteral("step 51 replies whose value changed"), stats(label));
        if (boxesAnswered)
            std::printf("  (%d message boxes were answered during the run: a link fault)\n", boxesAnswered);
    }
};

// ---- start-up of the real executable, to its first painted window ----
void startup(int runs)
{
    QTemporaryDir root;
    QProcess x;
    int display = 0;
    for (int d = 91; d < 140; ++d)
        if (!QFile::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(d)) &&
            !QFile::exists(QStringLiteral("/tmp/.X%1-lock").arg(d))) {
            display = d;
            break;
        }
    x.start(QStringLiteral("Xvfb"), {QStringLiteral(":%1").arg(display), QStringLiteral("-screen"),
                                     QStringLiteral("0"), QStringLiteral("1280x1024x24"),
                                     QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    if (!x.waitForStarted(5000) ||
        !waitFor([&] { return QFile::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(display)); }, 10000)) {
        std::printf("\nStart-up: Xvfb did not start\n");
        return;
    }
    // An operator's desktop has a session bus; without one, Qt's accessibility start spends its time
    // looking for a way to launch one.
    QProcess bus;
    QString busAddress = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (busAddress.isEmpty()) {
        bus.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        if (bus.waitForStarted(3000) && waitFor([&] { return bus.canReadLine(); }, 5000))
            busAddress = QString::fromLocal8Bit(bus.readLine()).trimmed();
    }
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        // A fresh application folder each time: a copy of the executable with its language file.
        const QString app = root.filePath(QStringLiteral("app%1").arg(i));
        QDir().mkpath(app + QStringLiteral("/Lang"));
        QDir().mkpath(app + QStringLiteral("/Data"));
        QFile::copy(QStringLiteral(ORVA_CONSOLE), app + QStringLiteral("/ORVAPLCCOM"));
        QFile::copy(QStringLiteral(ORVA_LANG_FILE), app + QStringLiteral("/Lang/PLCCOMLANGUAGE.ini"));
        const QString mark = app + QStringLiteral("/painted");
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), QStringLiteral(":%1").arg(display));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        env.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(ORVA_PAINT_PROBE));
        env.insert(QStringLiteral("ORVA_PAINT_PROBE"), mark);
        if (!busAddress.isEmpty())
            env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
        p.setProcessEnvironment(env);
        p.setProgram(app + QStringLiteral("/ORVAPLCCOM"));
        const qint64 t0 = nowNs();
        p.start();
        const bool painted = waitFor([&] { return QFile(mark).size() > 0; }, 10000);
        if (painted) {
            QFile f(mark);
            f.open(QIODevice::ReadOnly);
            times.push_back(double(f.readAll().trimmed().toLongLong() - t0) / 1e6);
        }
        p.kill();
        p.waitForFinished(3000);
    }
    x.terminate();
    x.waitForFinished(3000);
    if (bus.state() != QProcess::NotRunning) {
        bus.terminate();
        bus.waitForFinished(3000);
    }
    std::printf("\nStart of the executable -> login panel painted (Xvfb, session bus, fresh folder each run):\n");
    if (!times.empty())
        std::printf("  first run %.1f ms; %d runs: median %.1f ms, max %.1f ms\n", times.front(), int(times.size()),
                    stats(times).p50, stats(times).max);
}

// ---- the record viewer ----
void writeRecords(const QString& path, int records)
{
    QStringEncoder gb("GB18030");
    QFile f(path);
    f.open(QIODevice::WriteOnly | QIODevice::Truncate);
    QString chunk;
    for (int i = 0; i < records; ++i) {
        chunk += QStringLiteral("骨料%1秤\r\n2026/3/%2 9:%3:00\r\n张工\r\n%4\r\n%5\r\n%6\r\n1500\r\n\r\n")
                     .arg(i % 6 + 1)
                     .arg(i % 28 + 1)
                     .arg(i % 60, 2, 10, QLatin1Char('0'))
                     .arg(i % 2 ? QStringLiteral("标重") : QStringLiteral("标零"))
                     .arg(10000 + i % 30000)
                     .arg(double(i % 20000) / 10.0, 0, 'f', 1);
        if (chunk.size() > 1 << 20) {
            f.write(gb.encode(chunk));
            chunk.clear();
        }
    }
    f.write(gb.encode(chunk));
}

double openViewerMs()
{
    const qint64 t0 = nowNs();
    QWidget* form = Forms::load(QStringLiteral("FrmJk"));
    PaintWatch watch;
    QWidget* grid = form->findChild<QAbstractItemView*>(QStringLiteral("MSGrid"))->viewport();
    grid->installEventFilter(&watch);
    Forms::show(QStringLiteral("FrmJk"));
    waitFor([&] { return !watch.times.empty(); }, 600000);
    grid->removeEventFilter(&watch);
    return double(watch.times.front() - t0) / 1e6;
}

void closeViewer()
{
    Forms::unload(QStringLiteral("FrmJk"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

void viewer()
{
    const QString path = AppPaths::inApp(QStringLiteral("Data/BiaoCeng.txt"));
    std::printf("\nRecord viewer (FrmJk), open = show until the grid is painted; RSS of the whole process:\n");
    for (int records : {10000, 100000}) {
        writeRecords(path, records);
        const double base = rssMb();
        std::vector<double> opens, open, closed;
        for (int i = 0; i < 10; ++i) {
            opens.push_back(openViewerMs());
            open.push_back(rssMb());
            closeViewer();
            closed.push_back(rssMb());
        }
        std::printf("  %6d records (%.1f MB file): open first %.0f ms, median of 10 %.0f ms\n", records,
                    double(QFile(path).size()) / 1e6, opens.front(), stats(opens).p50);
        std::printf("         RSS before %.1f MB, open %.1f MB (+%.1f), after closing %.1f MB; after 10 openings "
                    "open %.1f MB, closed %.1f MB\n",
                    base, open.front(), open.front() - base, closed.front(), open.back(), closed.back());
    }
    writeRecords(path, 400000);
    const double ms = openViewerMs();
    std::printf("  %.1f MB file: open %.0f ms, RSS open %.1f MB", double(QFile(path).size()) / 1e6, ms, rssMb());
    closeViewer();
    std::printf(", closed %.1f MB\n", rssMb());
    QFile::remove(path);
}

// ---- the records out as CSV ----
void csv()
{
    const QString path = AppPaths::inApp(QStringLiteral("Data/BiaoCeng.txt"));
    writeRecords(path, 100000);
    const QString out = AppPaths::inApp(QStringLiteral("records.csv"));
    std::printf("\nRecords out as CSV, 100,000 records (%.1f MB list):\n", double(QFile(path).size()) / 1e6);
    // The viewer's export, as Ctrl+S runs it once the file is chosen: the rows shown, to a file.
    Forms::show(QStringLiteral("FrmJk"));
    const auto* grid = Forms::loaded(QStringLiteral("FrmJk"))->findChild<QAbstractItemView*>(QStringLiteral("MSGrid"));
    const OpRecords& shown = static_cast<const OpRecordModel*>(grid->model())->records();
    std::vector<double> exports, command;
    for (int i = 0; i < 10; ++i) {
        const qint64 t0 = nowNs();
        ExportRecordsCsv(shown, out);
        exports.push_back(double(nowNs() - t0) / 1e6);
    }
    closeViewer();
    std::printf("  viewer export (Ctrl+S, 10 runs): median %.0f ms, max %.0f ms; %.1f MB written\n",
                stats(exports).p50, stats(exports).max, double(QFile(out).size()) / 1e6);
    // The records command: read the list, pick the months, print.
    for (int i = 0; i < 10; ++i) {
        QBuffer sink;
        sink.open(QIODevice::WriteOnly);
        const qint64 t0 = nowNs();
        PrintRecordsCsv(QStringLiteral("2026-01"), QStringLiteral("2026-11"), QString(), sink);
        command.push_back(double(nowNs() - t0) / 1e6);
    }
    std::printf("  records command, all 100,000 in range (read, select, print; 10 runs): median %.0f ms, max %.0f ms\n",
                stats(command).p50, stats(command).max);
    QFile::remove(out);
    QFile::remove(path);
}

}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    InstallAppLook(app);
    RegisterForms();
    QStringList only = {QStringLiteral("chains"), QStringLiteral("live"), QStringLiteral("cpu"),
                        QStringLiteral("startup"), QStringLiteral("viewer"), QStringLiteral("csv")};
    int cpuSeconds = 60, polls = 1000, rounds = 50;
    const QStringList args = app.arguments();
    for (int i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--only"))
            only = args[i + 1].split(QLatin1Char(','));
        else if (args[i] == QLatin1String("--cpu-seconds"))
            cpuSeconds = args[i + 1].toInt();
        else if (args[i] == QLatin1String("--polls"))
            polls = args[i + 1].toInt();
        else if (args[i] == QLatin1String("--rounds"))
            rounds = args[i + 1].toInt();
    }
    std::printf("console_bench: %d cores, paced simulator on a pseudo-terminal\n", QThread::idealThreadCount());
    std::printf("RSS at start %.1f MB\n", rssMb());

    Bench b;
    if (!b.startSimulator() || !b.connect())
        return 1;
    if (only.contains(QLatin1String("chains")))
        b.paramChains(rounds);
    if (only.contains(QLatin1String("chains")) || only.contains(QLatin1String("live")) ||
        only.contains(QLatin1String("cpu"))) {
        YIBiao* f = b.openCalibration();
        if (only.contains(QLatin1String("chains")))
            b.calibrationChains(f, rounds);
        if (only.contains(QLatin1String("live")))
            b.livePolls(f, polls);
        if (only.contains(QLatin1String("cpu")))
            b.cpuWhilePolling(f, cpuSeconds);
        b.closeCalibration();
    }
    b.report();
    if (only.contains(QLatin1String("viewer")))
        viewer();
    if (only.contains(QLatin1String("csv")))
        csv();
    if (only.contains(QLatin1String("startup")))
        startup(5);
    Forms::unloadAll();
    return 0;
}
