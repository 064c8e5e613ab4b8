#pragma once
// The link's own record of its last exchanges with the controller: each frame out and what came back, with
// the monotonic time, the step, the form that asked and how it ended. It is kept in memory for the trace
// window and written to ProgramErr when the link gives up, so that a controller that stays silent can be
// looked into without a line monitor. The link engine feeds it; it decides nothing.
#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <vector>

class QDateTime;

enum class TraceOutcome : quint8 {
    Waiting,       // out, nothing back yet
    Acknowledged,  // a write's ACK, taken
    Nak,
    ReplyTaken,    // a read's reply, taken
    TimedOut,      // the re-send clock ran out before anything came
    Garbage,       // of the awaited length, but not of the awaited shape
    Short,         // less than awaited came before the clock ran out
    Long,
    Late,          // came after its request had been given up or answered
    Dropped,       // offered while the link was busy: it never went out
};
inline constexpr int kTraceOutcomes = int(TraceOutcome::Dropped) + 1;

struct TraceExchange {
    quint64 seq = 0;         // counts from 1 over the run
    qint64 sentMs = -1;      // monotonic milliseconds of the frame out; -1 for a reply nothing was sent for
    qint64 endMs = -1;       // of the reply or the time-out; -1 while waiting and for a dropped frame
    short step = 0;
    bool resent = false;
    bool write = false;
    TraceOutcome outcome = TraceOutcome::Waiting;
    int awaited = 0;         // characters of a good reply
    int count = 0;           // devices the request covers: registers of D, bits of S, M and Y
    QString form;            // the form that asked
    QString device;          // the first device the request addresses
    QByteArray request, reply;  // as on the line
};

class LinkTraceRing : public QObject {
    Q_OBJECT
public:
    static constexpr int kCapacity = 5000;
    LinkTraceRing();

    // What the link engine tells, as it happens.
    void sent(const QString& frame, short step, const QByteArray& clearedBefore);
    void resending();  // the next frame out is a re-send
    void dropped(const QString& frame);
    void received(const QByteArray& reply);
    void taken();      // the reply just received is the request's answer
    void clockTicked();
    void late(const QByteArray& bytes);

    // Exchanges firstSeq() to lastSeq() are held; older ones have gone round the ring. Empty: lastSeq() 0.
    quint64 firstSeq() const { return next_ - quint64(size()); }
    quint64 lastSeq() const { return next_ - 1; }
    int size() const { return int(std::min<quint64>(next_ - 1, kCapacity)); }
    const TraceExchange* at(quint64 seq) const;
    void clear();

    // Every frame held, one a line: time, direction, step, the characters, the outcome.
    QStringList lines() const;

signals:
    void appended(quint64 seq);  // the oldest exchange is gone first when the ring was full
    void updated(quint64 seq);
    void cleared();

private:
    TraceExchange* slot(quint64 seq) { return const_cast<TraceExchange*>(at(seq)); }
    // The latest request that went out: a frame dropped or a reply without a request since does not count.
    TraceExchange* lastSent();
    // The latest exchange that timed out with nothing back, among the last few.
    TraceExchange* lastUnanswered();
    void append(TraceExchange x);
    void end(TraceExchange* x, TraceOutcome outcome, const QByteArray& reply);

    std::vector<TraceExchange> ring_;
    quint64 next_ = 1;
    quint64 receivedSeq_ = 0;  // the exchange whose reply was just received, until taken or another send
    bool resending_ = false;
};

LinkTraceRing& LinkTrace();

// Monotonic milliseconds: the clock of the system's journal (journalctl -o short-monotonic), not the wall clock.
qint64 TraceClockMs();
// The outcome as the trace file writes it: "acknowledged", "NAK", "timed out", ...
QString TraceOutcomeText(TraceOutcome outcome);
// Characters as on the line, the control characters of the protocol by name ("<STX>") and every other
// character outside printable ASCII, and "<" itself, by its hex code ("<1B>", "<3C>").
QString ShowLineChars(const QByteArray& bytes);
// The lines of one exchange: the frame out, and what came back or the time-out.
QStringList TraceLines(const TraceExchange& x);

// Writes the ring as a dated file (LinkTrace-<date>-<time>.txt) in folder, keeping the newest kKeptTraceFiles
// there; returns its path, empty on failure.
inline constexpr int kKeptTraceFiles = 20;
QString WriteTraceFile(const LinkTraceRing& ring, const QString& folder, const QDateTime& now);
// The same with any name (the trace window's save); false on failure.
bool SaveTraceFile(const LinkTraceRing& ring, const QString& path, const QDateTime& now);
// Before the link's fault box: the ring into ProgramErr, and the error log names the file.
void WriteLinkFaultTrace();
