// Two hundred thousand live reads through the link and the dispatch, as fast as the link answers:
// whatever a round trip leaves behind shows as growth of the process.
#include "test_support.h"

#include "common/module1.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"

#include <QCoreApplication>
#include <QFile>
#include <QTest>

#include <unistd.h>

namespace {
// Resident memory of this process, in bytes.
qint64 residentBytes()
{
    QFile f(QStringLiteral("/proc/self/statm"));
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    return f.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

// One live read (step 51) to its end in the dispatch; false if it does not end.
bool roundTrip()
{
    LiveReadDone = false;
    StepNo = 51;
    SendFlag = true;
    send_recieve(BuildReadFrameWords(QStringLiteral("D11"), 32));
    for (int spins = 0; !LiveReadDone; ++spins) {
        if (spins > 1000)
            return false;
        QCoreApplication::processEvents();
    }
    return true;
}
}  // namespace

class LinkSoakTest : public QObject {
    Q_OBJECT
private slots:
    void liveReadsLeaveNothingBehind()
    {
        ConsoleHarness h;
        h.connectLink();
        h.sim.setWord(11, 1234);
        constexpr int kWarmUp = 5000, kTrips = 200000;
        for (int i = 0; i < kWarmUp; ++i) QVERIFY(roundTrip());
        h.sim.clearRequests();
        const qint64 before = residentBytes();
        for (int i = 1; i <= kTrips; ++i) {
            if (!roundTrip())
                QFAIL(qPrintable(QStringLiteral("round trip %1 did not end").arg(i)));
            if (i % 1000 == 0)
                h.sim.clearRequests();  // the simulator's own record of the requests
        }
        const qint64 growth = residentBytes() - before;
        qInfo("%d round trips, resident memory grew by %lld bytes", kTrips, growth);
        QCOMPARE(Link().TxtR[0], QStringLiteral("1234"));
        QCOMPARE(int(Link().RetryCount), 0);
        QVERIFY2(growth < 1024 * 1024, qPrintable(QString::number(growth)));
    }
};

QTEST_MAIN(LinkSoakTest)
#include "link_soak_test.moc"
