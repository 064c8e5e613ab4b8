// orvaplccfg against the standalone controller simulator on a pseudo-terminal, paced at line speed: a whole
// save and a whole restore (every block differs), run as a user runs them, the executable in an application
// folder of its own. Prints each run's wall time beside the time its frames need on the wire at 9600,e,7,1
// (10 bits a character), from the simulator's trace of every character in and out. Asserts nothing.
//
//   cfg_bench [--runs N]
#include "common/text_file.h"
#include "link/register_map.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr double kMsPerChar = 10.0 * 1000.0 / 9600.0;

struct Wire {
    qint64 in = 0, out = 0;  // characters to the controller and back
    int requests = 0;
    double ms() const { return double(in + out) * kMsPerChar; }
};

class Bench {
public:
    QTemporaryDir dir;
    QProcess sim;
    QString trace, exe;
    qint64 traceAt = 0;

    bool start()
    {
        trace = dir.filePath(QStringLiteral("sim-trace.txt"));
        exe = dir.filePath(QStringLiteral("orvaplccfg"));
        if (!QFile::copy(QStringLiteral(ORVAPLCCFG_EXE), exe))
            return false;
        sim.setProgram(QStringLiteral(ORVA_PLCSIM));
        sim.setArguments({QStringLiteral("--paced"), QStringLiteral("--pace-requests"), QStringLiteral("--commissioned"), QStringLiteral("--no-live"),
                          QStringLiteral("--control-stdin"), QStringLiteral("--trace"), trace});
        sim.start();
        if (!sim.waitForStarted(5000) || !sim.waitForReadyRead(5000))
            return false;
        const QString pty = QString::fromLocal8Bit(sim.readLine()).trimmed();
        QDir(dir.path()).mkpath(QStringLiteral("Data"));
        return TextFile::writeLines(dir.filePath(QStringLiteral("Data/ComPorts.ini")),
                                    {QStringLiteral("[ComPorts]"), QStringLiteral("Com2=") + pty});
    }

    void command(const QString& line)
    {
        sim.write((line + QLatin1Char('\n')).toUtf8());
        sim.waitForBytesWritten(1000);
        while (!sim.canReadLine())
            sim.waitForReadyRead(1000);
        sim.readLine();
    }

    // What crossed the line since the last call, by the simulator's trace.
    Wire takeWire()
    {
        Wire w;
        QFile f(trace);
        if (!f.open(QIODevice::ReadOnly) || !f.seek(traceAt))
            return w;
        while (!f.atEnd()) {
            const QList<QByteArray> parts = f.readLine().trimmed().split(' ');
            if (parts.size() != 3)
                continue;
            const QByteArray bytes = QByteArray::fromHex(parts[2]);
            (parts[1] == "R" ? w.in : w.out) += bytes.size();
            if (parts[1] == "R")
                w.requests += int(bytes.count('\x02'));
        }
        traceAt = f.pos();
        return w;
    }

    // Wall time of one run of the executable, in ms; -1 when it did not end as expected.
    double run(const QStringList& args, int expectedExit)
    {
        QProcess p;
        p.setWorkingDirectory(dir.path());
        QElapsedTimer t;
        t.start();
        p.start(exe, args);
        p.closeWriteChannel();
        if (!p.waitForFinished(120000) || p.exitCode() != expectedExit) {
            std::fprintf(stderr, "orvaplccfg %s: exit %d\n%s", qPrintable(args.join(QLatin1Char(' '))), p.exitCode(),
                         p.readAllStandardError().constData());
            return -1;
        }
        return double(t.nsecsElapsed()) / 1e6;
    }

    // Every block other than the file: a word of each parameter block, a bit of each scale's options and of
    // S612, a time, a vibrator time, a sensor load and a deceleration distance.
    void changeEveryBlock()
    {
        for (int k = 0; k < 14; ++k) {
            command(QStringLiteral("set %1 4").arg(ParamDeviceOf(k)));
            command(QStringLiteral("set %1 1").arg(OptionDeviceOf(k)));
        }
        for (const char* c : {"set S612 1", "set D215 60", "set D272 40", "set D200 400", "set D294 500"})
            command(QLatin1String(c));
    }
};

void print(const char* what, std::vector<double> wall, const Wire& w)
{
    std::sort(wall.begin(), wall.end());
    const double median = wall[wall.size() / 2];
    std::printf("  %-8s %3d requests %6lld chars  wire %7.1f ms   wall median %7.1f  min %7.1f  max %7.1f ms   "
                "median/wire %.3f\n",
                what, w.requests, w.in + w.out, w.ms(), median, wall.front(), wall.back(), median / w.ms());
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    int runs = 5;
    const QStringList args = app.arguments();
    for (int i = 1; i + 1 < args.size(); i += 2)
        if (args[i] == QLatin1String("--runs"))
            runs = std::max(1, args[i + 1].toInt());

    Bench b;
    if (!b.start()) {
        std::fprintf(stderr, "the simulator or the application folder did not start\n");
        return 1;
    }
    std::printf("cfg_bench: %d cores, paced simulator on a pseudo-terminal, %d runs each\n",
                QThread::idealThreadCount(), runs);

    std::vector<double> startup;
    for (int i = 0; i < runs; ++i)
        startup.push_back(b.run({QStringLiteral("--version")}, 0));
    std::sort(startup.begin(), startup.end());
    std::printf("  start and end of the executable (--version): median %.1f ms\n", startup[startup.size() / 2]);

    std::vector<double> save, restore;
    Wire saveWire, restoreWire;
    for (int i = 0; i < runs; ++i) {
        b.takeWire();
        save.push_back(b.run({QStringLiteral("save"), QStringLiteral("plant.cfg")}, 0));
        saveWire = b.takeWire();
        b.changeEveryBlock();
        b.takeWire();
        restore.push_back(b.run({QStringLiteral("restore"), QStringLiteral("--yes"), QStringLiteral("plant.cfg")}, 0));
        restoreWire = b.takeWire();
    }
    if (std::count(save.begin(), save.end(), -1.0) + std::count(restore.begin(), restore.end(), -1.0) > 0)
        return 1;
    print("save", save, saveWire);
    print("restore", restore, restoreWire);
    b.command(QStringLiteral("quit"));
    b.sim.waitForFinished(5000);
    return 0;
}
