// The link's trace as the engineer reads it: what each way of failing leaves in the ring, the file written
// before the fault box, and how many such files stay. The re-send clock is ticked by hand.
#include "test_support.h"

#include "common/app_paths.h"
#include "common/module1.h"
#include "common/text_file.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/link_trace.h"

#include <QDir>
#include <QRegularExpression>
#include <QTest>

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
}  // namespace

class LinkTraceTest : public QObject {
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

    void outcomes_data()
    {
        QTest::addColumn<bool>("write");
        QTest::addColumn<int>("fault");  // plcsim::Fault of the first answer
        QTest::addColumn<int>("ticks");  // of the re-send clock before the controller answers
        QTest::addColumn<QStringList>("ring");
        using F = plcsim::Fault;
        const struct { const char* name; bool write; F fault; int ticks; const char* ring; } rows[] = {
            {"read answered", false, F::None, 0, "sent/reply taken <STX>0000<ETX>C3"},
            {"write acknowledged", true, F::None, 0, "sent/acknowledged <ACK>"},
            {"NAK to a write, re-sent at once", true, F::Nak, 0, "sent/NAK <NAK>|re-sent/acknowledged <ACK>"},
            {"NAK to a read, seen when the re-send throws it away", false, F::Nak, 1, "sent/NAK <NAK>|re-sent/reply taken <STX>0000<ETX>C3"},
            {"no reply, then the re-send answered", false, F::NoReply, 1, "sent/timed out|re-sent/reply taken <STX>0000<ETX>C3"},
            {"short read, thrown away at the re-send", false, F::Short, 1, "sent/short <STX>0000<ETX>|re-sent/reply taken <STX>0000<ETX>C3"},
            {"long reply to a write", true, F::Long, 0, "sent/long|re-sent/acknowledged <ACK>"},
            {"garbage of the right length", false, F::Garbage, 0, "sent/garbage|re-sent/reply taken <STX>0000<ETX>C3"},
            {"late: owed while the next request waits", false, F::Late, 1, "sent/late <STX>0000<ETX>C3|re-sent/reply taken <STX>0000<ETX>C3|sent/reply taken <STX>0000<ETX>C3"},
        };
        for (const auto& r : rows)
            QTest::newRow(r.name) << r.write << int(r.fault) << r.ticks << QString::fromLatin1(r.ring).split('|');
    }
    void outcomes()
    {
        QFETCH(bool, write);
        QFETCH(int, fault);
        QFETCH(int, ticks);
        QFETCH(QStringList, ring);
        h->sim.setLateMs(100);
        h->sim.injectFault(plcsim::Fault(fault));
        request(write);
        QCoreApplication::processEvents();  // what the controller answers at once has come
        for (int i = 0; i < ticks; ++i) tick();
        QTRY_VERIFY(SendFlag);
        if (plcsim::Fault(fault) == plcsim::Fault::Late)
            request(write);  // waits for the first send's reply, which comes late
        QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());
        // The garbage and the long tail are the simulator's random characters: only their outcome counts.
        const bool random = plcsim::Fault(fault) == plcsim::Fault::Garbage || plcsim::Fault(fault) == plcsim::Fault::Long;
        QStringList seen = ringSummary(true);
        if (random)
            seen[0] = seen[0].section(QLatin1Char(' '), 0, 0);
        QCOMPARE(seen, ring);
    }

    void droppedWhileBusy()
    {
        h->sim.injectFault(plcsim::Fault::Unplugged);
        request(false);
        StepNo = 61;
        send_recieve(BuildWriteFrame(QStringLiteral("S212"), QStringLiteral("0000"), 4));
        QCOMPARE(ringSummary(false), (QStringList{"sent/waiting", "dropped"}));
        tick();  // the time-out is the request's that is out, not the dropped one's
        QCOMPARE(ringSummary(false), (QStringList{"sent/timed out", "dropped"}));
    }

    // The controller stays silent: nine sends, nine time-outs, then the file in ProgramErr before the box,
    // and the error log names it.
    void faultLeavesTheTraceFile()
    {
        MbAnswerer mb;
        h->sim.injectFault(plcsim::Fault::Unplugged);
        request(false);
        for (int i = 0; i < 9; ++i) tick();
        QTRY_COMPARE(mb.texts.size(), 1);
        const QStringList files =
            QDir(h->path(QStringLiteral("ProgramErr"))).entryList({QStringLiteral("LinkTrace-*.txt")}, QDir::Files);
        QCOMPARE(files.size(), 1);
        QStringList lines;
        QVERIFY(TextFile::readLines(h->path(QStringLiteral("ProgramErr/") + files[0]), &lines));
        QVERIFY(lines[0].startsWith(QStringLiteral("Link trace of ORVAPLCCOM, port Com2, written ")));
        lines = lines.mid(2);
        QCOMPARE(lines.size(), 18);
        const QRegularExpression shape(QStringLiteral(R"(^ *(\d+)  (out|in )    60  (\S+)  (.+)$)"));
        qint64 last = 0;
        for (int i = 0; i < 18; ++i) {
            const QRegularExpressionMatch m = shape.match(lines[i]);
            QVERIFY2(m.hasMatch(), qPrintable(lines[i]));
            const bool out = i % 2 == 0;
            QCOMPARE(m.captured(2), out ? QStringLiteral("out") : QStringLiteral("in "));
            QCOMPARE(m.captured(3), out ? QStringLiteral("<STX>0007C02<ETX>6F") : QStringLiteral("-"));
            QCOMPARE(m.captured(4), out ? (i ? QStringLiteral("re-sent") : QStringLiteral("sent")) : QStringLiteral("timed out"));
            QVERIFY(m.captured(1).toLongLong() >= last);
            last = m.captured(1).toLongLong();
        }
        QVERIFY2(ErrorLogText().contains(QStringLiteral("ProgramErr/") + files[0]), qPrintable(ErrorLogText()));
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
        const QString path = WriteTraceFile(LinkTrace(), folder, QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)));
        QCOMPARE(QFileInfo(path).fileName(), QStringLiteral("LinkTrace-20260305-140322-000.txt"));
        const QStringList kept = QDir(folder).entryList(QDir::Files, QDir::Name);
        const QStringList want = QStringList{QStringLiteral("20261ErrLog.txt")} + old.mid(gone) + QStringList{QFileInfo(path).fileName()};
        QCOMPARE(kept, want);
    }

private:
    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(LinkTraceTest)
#include "link_trace_test.moc"
