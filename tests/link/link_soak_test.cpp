// Two hundred thousand live reads through the link and the dispatch, as fast as the link answers:
// whatever a round trip leaves behind shows as growth of the process.
#include "test_support.h"

#include "link/frame_codec.h"

#include <unistd.h>

class LinkSoakTest : public QObject {
    Q_OBJECT
private slots:
    void liveReadsLeaveNothingBehind()
    {
        ConsoleHarness h;
        h.connectLink();
        h.sim.setWord(11, 1234);
        // One live read (step 51) to its end in the dispatch; false if it does not end.
        const auto roundTrip = [] {
            LiveReadDone = false;
            StepNo = 51;
            SendFlag = true;
            send_recieve(BuildReadFrameWords(QStringLiteral("D11"), 32));
            for (int spins = 0; !LiveReadDone && spins <= 1000; ++spins) QCoreApplication::processEvents();
            return bool(LiveReadDone);
        };
        const auto residentBytes = [] {
            QFile f(QStringLiteral("/proc/self/statm"));
            return f.open(QIODevice::ReadOnly) ? f.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE)
                                               : 0;
        };
        qint64 before = 0;
        for (int i = -5000; i < 200000; ++i) {  // the first 5000 warm up
            if (i % 1000 == 0)
                h.sim.clearRequests();  // the simulator's own record of the requests
            if (i == 0)
                before = residentBytes();
            if (!roundTrip())
                QFAIL(qPrintable(QStringLiteral("round trip %1 did not end").arg(i)));
        }
        const qint64 growth = residentBytes() - before;
        qInfo("200000 round trips, resident memory grew by %lld bytes", growth);
        QCOMPARE(Link().TxtR[0], QStringLiteral("1234"));
        QCOMPARE(int(Link().RetryCount), 0);
        QVERIFY2(growth < 1024 * 1024, qPrintable(QString::number(growth)));
    }
};

QTEST_MAIN(LinkSoakTest)
#include "link_soak_test.moc"
