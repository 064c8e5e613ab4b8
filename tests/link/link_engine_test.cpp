// The link at work with no form behind its requests, and its trace as the engineer reads it: what each way of
// failing leaves in the ring, the file written before the fault box, and how many such files stay. The
// re-send clock is ticked by hand.
#include "test_support.h"

#include "common/module1.h"
#include "common/text_file.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/link_trace.h"

#include <QDir>
#include <QRegularExpression>

namespace {
void tick() { QMetaObject::invokeMethod(&Link().Timer2, "timeout"); }

// Step 60 reads two bytes of S998; step 61 writes a word to S212. Neither has a form behind it.
void request(bool write)
{
    StepNo = write ? 61 : 60;
    SendFlag = true;
    send_recieve(write ? BuildWriteFrame(QStringLiteral("S212"), QStringLiteral("0000"), 4)
                       : BuildReadFrameBytes(QStringLiteral("S998"), 2));
}

// The ring as "sent/outcome" per exchange, with the reply's characters where the row asks for them.
QStringList ringSummary(bool withReply)
{
    QStringList out;
    const LinkTraceRing& r = LinkTrace();
    for (quint64 s = r.firstSeq(); s <= r.lastSeq() && s > 0; ++s) {
        const TraceExchange& x = *r.at(s);
        const char* send = x.outcome == TraceOutcome::Dropped ? "" : x.resent ? "re-sent/" : "sent/";
        out << QLatin1String(send) + TraceOutcomeText(x.outcome) +
                   (withReply && !x.reply.isEmpty() ? QLatin1Char(' ') + ShowLineChars(x.reply) : QString());
    }
    return out;
}

using F = plcsim::Fault;
// The fault of the first answer, the ticks of the re-send clock before the controller answers, the ring.
const struct Outcome {
    const char* name;
    bool write;
    F fault;
    int ticks;
    const char* ring;
} kOutcomes[] = {
    {"read answered", false, F::None, 0, "sent/reply taken <STX>0000<ETX>C3"},
    {"write acknowledged", true, F::None, 0, "sent/acknowledged <ACK>"},
    {"NAK to a write, re-sent at once", true, F::Nak, 0, "sent/NAK <NAK>|re-sent/acknowledged <ACK>"},
    {"NAK to a read, seen at the re-send", false, F::Nak, 1, "sent/NAK <NAK>|re-sent/reply taken <STX>0000<ETX>C3"},
    {"no reply, then answered", false, F::NoReply, 1, "sent/timed out|re-sent/reply taken <STX>0000<ETX>C3"},
    {"short read, seen at the re-send", false, F::Short, 1,
     "sent/short <STX>0000<ETX>|re-sent/reply taken <STX>0000<ETX>C3"},
    {"long reply to a write", true, F::Long, 0, "sent/long|re-sent/acknowledged <ACK>"},
    {"garbage of the right length", false, F::Garbage, 0, "sent/garbage|re-sent/reply taken <STX>0000<ETX>C3"},
    {"late: owed while the next request waits", false, F::Late, 1,
     "sent/late <STX>0000<ETX>C3|re-sent/reply taken <STX>0000<ETX>C3|sent/reply taken <STX>0000<ETX>C3"},
};
}  // namespace

class LinkEngineTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        h = new ConsoleHarness;
        h->connectLink();
        Link().Timer2.setInterval(3600 * 1000);  // only the test's own ticks
        LinkTrace().clear();
    }
    void cleanup()
    {
        delete h;
        Link().Timer2.setInterval(1000);
        Link().LateReplyHorizonMs = 2000;
    }

    // The periods the controller's program and the operators count on: a live reading every 400 ms, a
    // re-send a second after an unanswered request, the countdown by the second; a login sets them anew.
    void clockPeriods()
    {
        LinkEngine fresh;
        QList<int> periods{fresh.Timer1.interval(), fresh.Timer2.interval(), fresh.Timer3.interval()};
        fresh.Timer1.setInterval(50);
        fresh.resetForLogin();
        periods << fresh.Timer1.interval();
        QCOMPARE(periods, (QList<int>{400, 1000, 1000, 400}));
    }

    void formMovedOnStopsResends()
    {
        h->sim.injectFault(F::Unplugged);
        request(false);
        StepNo = 444;
        Link().RetryRequest();
        Link().RetryRequest();
        QCOMPARE(h->takeFrames().size(), 1);
        QVERIFY(Link().Timer2.isActive());
        QCOMPARE(int(Link().RetryCount), 0);
    }

    // A re-sent request was answered, but its first send may still be answered late: the next request
    // waits for that reply, and a sender forcing its way in meanwhile replaces it. One frame goes out.
    // Meanwhile the link is busy as for a request that is out, and a form that returns stops its clock.
    void nextRequestWaitsForAnOwedReply_data()
    {
        QTest::addColumn<bool>("formReturns");
        QTest::newRow("sent once the owed reply is too late, and answered") << false;
        QTest::newRow("the form returns meanwhile: sent, unanswered, never re-sent") << true;
    }
    void nextRequestWaitsForAnOwedReply()
    {
        QFETCH(bool, formReturns);
        Link().LateReplyHorizonMs = 300;
        h->sim.injectFault(F::NoReply);
        request(false);
        QCoreApplication::processEvents();
        Link().RetryRequest();
        QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());
        QCOMPARE(h->takeFrames().size(), 2);
        request(false);
        request(false);
        QCOMPARE(h->takeFrames().size(), 0);
        QVERIFY(!SendFlag && Link().Timer2.isActive());
        if (formReturns) {
            Link().Timer2.stop();
            h->sim.injectFault(F::NoReply);
        }
        QStringList sent;
        QTRY_VERIFY(!(sent += h->takeFrames()).isEmpty());
        QCOMPARE(sent, QStringList{Frame(QStringLiteral("0007C02"))});
        if (formReturns)
            QVERIFY(!SendFlag && !Link().Timer2.isActive());
        else
            QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());
    }

    void outcomes_data() { TableRows(kOutcomes); }
    void outcomes()
    {
        const Outcome& c = TableRow(kOutcomes);
        h->sim.setLateMs(100);
        h->sim.injectFault(c.fault);
        request(c.write);
        QCoreApplication::processEvents();  // what the controller answers at once has come
        for (int i = 0; i < c.ticks; ++i) tick();
        QTRY_VERIFY(SendFlag);
        if (c.fault == F::Late)
            request(c.write);  // waits for the first send's reply, which comes late
        QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());
        QStringList seen = ringSummary(true);
        // The garbage and the long tail are the simulator's random characters: only their outcome counts.
        if (c.fault == F::Garbage || c.fault == F::Long)
            seen[0] = seen[0].section(QLatin1Char(' '), 0, 0);
        QCOMPARE(seen, QString::fromLatin1(c.ring).split('|'));
    }

    // A send while a request is out goes nowhere and leaves the clock alone, also once the form has stopped it.
    void droppedWhileBusy()
    {
        h->sim.injectFault(F::Unplugged);
        request(false);
        Link().Timer2.stop();
        StepNo = 61;
        send_recieve(BuildWriteFrame(QStringLiteral("S212"), QStringLiteral("0000"), 4));
        QTest::qWait(20);
        QCOMPARE(h->takeFrames().size(), 1);
        QVERIFY(!Link().Timer2.isActive());
        QCOMPARE(ringSummary(false), (QStringList{"sent/waiting", "dropped"}));
        tick();  // the time-out is the request's that is out, not the dropped one's
        QCOMPARE(ringSummary(false), (QStringList{"sent/timed out", "dropped"}));
    }

    // The controller stays silent: nine sends, nine time-outs, then the file in ProgramErr before the fault
    // box, and the error log names it. The link stops with the box.
    void faultLeavesTheTraceFile()
    {
        MbAnswerer mb;
        h->sim.injectFault(F::Unplugged);
        Link().Timer1.start();
        request(false);
        for (int i = 0; i < 9; ++i) tick();
        QTRY_COMPARE(mb.texts, QStringList{QStringLiteral("通讯发生错误请检查：\n1、下位机是否已断电；\n"
                                                          "2、下位机是否正常运行；\n3、通讯线是否接在端口:Com2,且接触良好。")});
        QCOMPARE(mb.errorIcons, QList<bool>{true});
        QCOMPARE(int(StepNo), 444);
        QCOMPARE(int(Link().RetryCount), 0);
        QVERIFY(!Link().Timer1.isActive() && !Link().Timer2.isActive() && !Link().Timer3.isActive());
        QCOMPARE(h->takeFrames().size(), 9);
        const QFileInfoList files = QDir(h->path(QStringLiteral("ProgramErr")))
                                        .entryInfoList({QStringLiteral("LinkTrace-*.txt")}, QDir::Files);
        QCOMPARE(files.size(), 1);
        const QString file = files[0].filePath();
        QStringList lines, want;
        QVERIFY(TextFile::readLines(file, &lines));
        QVERIFY(lines.takeFirst().startsWith(QStringLiteral("Link trace of ORVAPLCCOM, port Com2, written ")));
        lines.removeFirst();
        // Each line: milliseconds, direction, step, the characters and what became of them.
        QList<qint64> times;
        for (QString& l : lines) {
            times << l.section(' ', 0, 0, QString::SectionSkipEmpty).toLongLong();
            l.remove(QRegularExpression(QStringLiteral("^ *\\d+  ")));
        }
        for (int i = 0; i < 9; ++i)
            want << QStringLiteral("out    60  <STX>0007C02<ETX>6F  ") + (i ? "re-sent" : "sent")
                 << QStringLiteral("in     60  -  timed out");
        QCOMPARE(lines, want);
        QVERIFY(std::is_sorted(times.begin(), times.end()));
        QVERIFY2(ErrorLogText().contains(QStringLiteral("ProgramErr/") + QFileInfo(file).fileName()),
                 qPrintable(ErrorLogText()));
    }

    // The newest files stay; only trace files count, and only the oldest of them go.
    void keepsTheNewestFiles_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("gone");  // how many of the oldest went
        QTest::newRow("19 before: all stay") << 19 << 0;
        QTest::newRow("20 before: the oldest goes") << 20 << 1;
        QTest::newRow("25 before: six go") << 25 << 6;
    }
    void keepsTheNewestFiles()
    {
        QFETCH(int, before);
        QFETCH(int, gone);
        const QString folder = h->path(QStringLiteral("ProgramErr"));
        QDir().mkpath(folder);
        QStringList old;
        for (int i = 0; i < before; ++i) {
            old << QStringLiteral("LinkTrace-202601%1-090000-000.txt").arg(i + 1, 2, 10, QLatin1Char('0'));
            QVERIFY(TextFile::writeLines(folder + QLatin1Char('/') + old.last(), {QStringLiteral("x")}));
        }
        QVERIFY(TextFile::writeLines(folder + QStringLiteral("/20261ErrLog.txt"), {QStringLiteral("x")}));
        WriteTraceFile(LinkTrace(), folder, QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)));
        const QStringList kept =
            QStringList{"20261ErrLog.txt"} + old.mid(gone) + QStringList{"LinkTrace-20260305-140322-000.txt"};
        QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name), kept);
    }

private:
    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(LinkEngineTest)
#include "link_engine_test.moc"
