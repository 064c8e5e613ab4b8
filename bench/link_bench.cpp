// Figures of the paths that run on every request: building a block write, taking a live block apart,
// the link trace's record of an exchange, and one round trip through the in-process controller. Prints
// figures; asserts nothing.
#include "common/app_paths.h"
#include "common/module1.h"
#include "common/profile.h"
#include "link/comm_port.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/link_trace.h"
#include "plcsim/controller.h"
#include "plcsim/sim_port.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <cstdio>

namespace {

template <class F> void measure(const char* what, int rounds, F&& f)
{
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < rounds; ++i)
        f(i);
    const double us = double(t.nsecsElapsed()) / 1000.0 / rounds;
    std::printf("%-44s %10.2f us/op  (%d rounds)\n", what, us, rounds);
}

QString liveReply()
{
    QString data;
    for (int i = 0; i < 64; ++i)
        data += QStringLiteral("%1").arg(i * 7 % 256, 2, 16, QLatin1Char('0')).toUpper();
    const QString body = data + ETX;
    return STX + body + FrameChecksum(body);
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    volatile int sink = 0;

    measure("checksum of a 15-word block write", 20000, [&](int) {
        sink = sink + FrameChecksum(QStringLiteral("1125C1E") + QString(60, QLatin1Char('7')) + ETX).size();
    });
    measure("block write frame of 15 words (GetWrite_PLCD)", 5000, [&](int i) {
        for (int k = 0; k < 15; ++k)
            Link().Pfd.at(k) = QString::number((i + k) % 3000);
        StepNo = 9;
        sink = sink + GetWrite_PLCD(QStringLiteral("D300"), 15).size();
    });
    const QString reply = liveReply();
    measure("32 words out of a live reply", 20000, [&](int) {
        const QString p = Link().ReplyPayload(reply);
        for (int k = 1; k <= 32; ++k)
            sink = sink + GetWordFromPayload(k, p);
    });

    // What the link engine tells the trace of a live read: the frame out, the reply in, the reply taken.
    const QString liveFrame = BuildReadFrameWords(QStringLiteral("D11"), 32);
    const QByteArray replyBytes = reply.toLatin1();
    StepNo = 51;
    measure("link trace of one live read (out, in, taken)", 200000, [&](int) {
        LinkTrace().sent(liveFrame, 51, QByteArray());
        LinkTrace().received(replyBytes);
        LinkTrace().taken();
    });

    QTemporaryDir dir;
    AppPaths::setAppFolder(dir.path());
    // What the fault box waits for: the full ring written to ProgramErr.
    measure("trace file of a full ring (5,000 exchanges)", 10, [&](int i) {
        sink = sink + WriteTraceFile(LinkTrace(), dir.path(), QDateTime::currentDateTime().addSecs(i)).size();
    });
    LinkTrace().clear();
    const QString ini = dir.filePath(QStringLiteral("bench.ini"));
    for (int k = 0; k < 200; ++k)
        WriteProfileValue(QStringLiteral("S%1").arg(k % 20), QStringLiteral("K%1").arg(k), QString::number(k), ini);
    measure("profile read, 200 keys in 20 sections", 2000, [&](int i) {
        sink = sink + ReadProfileValue(QStringLiteral("S%1").arg(i % 20), QStringLiteral("K%1").arg(i % 200),
                                       QStringLiteral("x"), ini).size();
    });

    plcsim::Controller sim;
    sim.setLiveModel(false);
    SetPortFactory([&](int) { return new plcsim::SimPort(&sim); });
    Link().openPort(2);
    Link().resetForLogin();
    measure("live read round trip, in-process controller", 2000, [&](int) {
        LiveReadDone = false;
        StepNo = 51;
        SendFlag = true;
        send_recieve(BuildReadFrameWords(QStringLiteral("D11"), 32));
        while (!LiveReadDone)
            QCoreApplication::processEvents();
    });
    Link().Timer2.stop();
    Link().closePort();
    return sink == -1;
}
