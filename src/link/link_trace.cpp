#include "link/link_trace.h"

#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/module1.h"
#include "common/text_file.h"
#include "link/frame_codec.h"
#include "link/step_table.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <ctime>

namespace {
constexpr char kNak = 0x15;
// How far back a late reply looks for the request it answers: a request is re-sent eight times at most.
constexpr int kLateLookBack = 16;

// What came instead of the awaited reply, by its shape alone.
TraceOutcome refused(const QByteArray& reply, int awaited)
{
    if (reply.startsWith(kNak))
        return TraceOutcome::Nak;
    if (reply.size() < awaited)
        return TraceOutcome::Short;
    if (reply.size() > awaited)
        return TraceOutcome::Long;
    return TraceOutcome::Garbage;
}
}  // namespace

LinkTraceRing::LinkTraceRing() { ring_.resize(kCapacity); }

LinkTraceRing& LinkTrace()
{
    static LinkTraceRing* ring = new LinkTraceRing;  // lives for the run, like the link
    return *ring;
}

qint64 TraceClockMs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return qint64(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

const TraceExchange* LinkTraceRing::at(quint64 seq) const
{
    if (seq == 0 || seq >= next_ || seq < firstSeq())
        return nullptr;
    return &ring_[size_t((seq - 1) % kCapacity)];
}

void LinkTraceRing::clear()
{
    for (TraceExchange& x : ring_)
        x = TraceExchange();
    next_ = 1;
    receivedSeq_ = 0;
    resending_ = false;
    emit cleared();
}

void LinkTraceRing::append(TraceExchange x)
{
    x.seq = next_;
    ring_[size_t((next_ - 1) % kCapacity)] = std::move(x);
    ++next_;
    emit appended(next_ - 1);
}

void LinkTraceRing::end(TraceExchange* x, TraceOutcome outcome, const QByteArray& reply)
{
    x->outcome = outcome;
    x->reply = reply;
    x->endMs = TraceClockMs();
    emit updated(x->seq);
}

TraceExchange* LinkTraceRing::lastSent()
{
    for (quint64 s = lastSeq(); s >= firstSeq() && s > 0 && lastSeq() - s < kLateLookBack; --s) {
        TraceExchange* x = slot(s);
        if (x->sentMs >= 0 && x->outcome != TraceOutcome::Dropped)
            return x;
    }
    return nullptr;
}

TraceExchange* LinkTraceRing::lastUnanswered()
{
    for (quint64 s = lastSeq(); s >= firstSeq() && s > 0 && lastSeq() - s < kLateLookBack; --s) {
        TraceExchange* x = slot(s);
        if (x->outcome == TraceOutcome::TimedOut && x->reply.isEmpty())
            return x;
    }
    return nullptr;
}

void LinkTraceRing::sent(const QString& frame, short step, const QByteArray& clearedBefore)
{
    // What the port threw away before this frame went out is the rest of the last request's answer,
    // too little to be read.
    if (TraceExchange* prev = lastSent(); prev && !clearedBefore.isEmpty() && prev->reply.isEmpty() &&
                                      (prev->outcome == TraceOutcome::Waiting || prev->outcome == TraceOutcome::TimedOut)) {
        prev->outcome = clearedBefore.startsWith(kNak) ? TraceOutcome::Nak : TraceOutcome::Short;
        prev->reply = clearedBefore;
        if (prev->endMs < 0)
            prev->endMs = TraceClockMs();
        emit updated(prev->seq);
    }
    TraceExchange x;
    x.sentMs = TraceClockMs();
    x.step = step;
    x.resent = std::exchange(resending_, false);
    x.form = CurrentForm;
    x.request = frame.toLatin1();
    const RequestFrame r = DecodeRequestFrame(frame);
    x.write = r.write;
    x.device = r.device;
    x.count = r.count;
    x.awaited = r.awaited;
    receivedSeq_ = 0;
    append(std::move(x));
}

void LinkTraceRing::resending() { resending_ = true; }

void LinkTraceRing::dropped(const QString& frame)
{
    TraceExchange x;
    x.sentMs = TraceClockMs();
    x.step = StepNo;
    x.form = CurrentForm;
    x.request = frame.toLatin1();
    const RequestFrame r = DecodeRequestFrame(frame);
    x.write = r.write;
    x.device = r.device;
    x.count = r.count;
    x.awaited = r.awaited;
    x.outcome = TraceOutcome::Dropped;
    append(std::move(x));
}

void LinkTraceRing::received(const QByteArray& reply)
{
    TraceExchange* x = lastSent();
    // A reply while no step waits for one is thrown away by the dispatch.
    const bool wanted = FindStep(StepNo) != nullptr;
    if (x && x->outcome == TraceOutcome::Waiting) {
        end(x, wanted ? refused(reply, x->awaited) : TraceOutcome::Late, reply);
        receivedSeq_ = wanted ? x->seq : 0;
        return;
    }
    late(reply);
}

void LinkTraceRing::taken()
{
    TraceExchange* x = slot(std::exchange(receivedSeq_, 0));
    if (!x)
        return;
    x->outcome = x->write ? TraceOutcome::Acknowledged : TraceOutcome::ReplyTaken;
    emit updated(x->seq);
}

void LinkTraceRing::clockTicked()
{
    TraceExchange* x = lastSent();
    if (x && x->outcome == TraceOutcome::Waiting)
        end(x, TraceOutcome::TimedOut, {});
}

void LinkTraceRing::late(const QByteArray& bytes)
{
    if (TraceExchange* x = lastUnanswered()) {
        end(x, TraceOutcome::Late, bytes);
        return;
    }
    TraceExchange x;
    x.endMs = TraceClockMs();
    x.step = StepNo;
    x.form = CurrentForm;
    x.reply = bytes;
    x.outcome = TraceOutcome::Late;
    append(std::move(x));
}

QString TraceOutcomeText(TraceOutcome outcome)
{
    static const char* const kText[kTraceOutcomes] = {"waiting", "acknowledged", "NAK",  "reply taken", "timed out",
                                                      "garbage", "short",        "long", "late",        "dropped"};
    return QLatin1String(kText[int(outcome)]);
}

QString ShowLineChars(const QByteArray& bytes)
{
    static const struct {
        quint8 code;
        const char* name;
    } kControls[] = {{0x02, "<STX>"}, {0x03, "<ETX>"}, {0x05, "<ENQ>"}, {0x06, "<ACK>"}, {0x15, "<NAK>"}};
    QString s;
    s.reserve(bytes.size() + 16);
    for (const char ch : bytes) {
        const auto c = quint8(ch);
        const auto named = std::find_if(std::begin(kControls), std::end(kControls),
                                        [c](const auto& k) { return k.code == c; });
        if (named != std::end(kControls))
            s += QLatin1String(named->name);
        else if (c < 0x20 || c > 0x7E || c == '<')
            s += QStringLiteral("<%1>").arg(c, 2, 16, QLatin1Char('0')).toUpper();
        else
            s += QLatin1Char(char(c));
    }
    return s;
}

QStringList TraceLines(const TraceExchange& x)
{
    auto line = [&x](qint64 ms, const char* direction, const QByteArray& chars, const QString& outcome) {
        return QStringLiteral("%1  %2  %3  ").arg(ms, 12).arg(QLatin1String(direction), -3).arg(x.step, 4) +
               (chars.isEmpty() ? QStringLiteral("-") : ShowLineChars(chars)) + QStringLiteral("  ") + outcome;
    };
    QStringList lines;
    if (x.sentMs >= 0) {
        const TraceOutcome out = x.outcome == TraceOutcome::Dropped ? TraceOutcome::Dropped : TraceOutcome::Waiting;
        lines << line(x.sentMs, "out", x.request,
                      out == TraceOutcome::Dropped ? TraceOutcomeText(out)
                                                   : QLatin1String(x.resent ? "re-sent" : "sent"));
    }
    if (x.endMs >= 0)
        lines << line(x.endMs, "in", x.reply, TraceOutcomeText(x.outcome));
    return lines;
}

QStringList LinkTraceRing::lines() const
{
    QStringList all;
    all.reserve(2 * size());
    for (quint64 s = firstSeq(); s <= lastSeq() && s > 0; ++s)
        all += TraceLines(*at(s));
    return all;
}

namespace {
QStringList traceText(const LinkTraceRing& ring, const QDateTime& now)
{
    QStringList text{QStringLiteral("Link trace of ORVAPLCCOM, port Com%1, written %2 (monotonic %3 ms)")
                         .arg(PortNo)
                         .arg(now.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")))
                         .arg(TraceClockMs()),
                     QStringLiteral("monotonic ms, direction, step, characters on the line, outcome")};
    return text + ring.lines();
}
}  // namespace

bool SaveTraceFile(const LinkTraceRing& ring, const QString& path, const QDateTime& now)
{
    return TextFile::writeLines(path, traceText(ring, now));
}

QString WriteTraceFile(const LinkTraceRing& ring, const QString& folder, const QDateTime& now)
{
    const QString stem = QStringLiteral("LinkTrace-") + now.toString(QStringLiteral("yyyyMMdd-HHmmss-zzz"));
    QString path = folder + QLatin1Char('/') + stem + QStringLiteral(".txt");
    // Two faults in one millisecond: the second file takes a letter, and still sorts after the first.
    for (char c = 'a'; QFileInfo::exists(path) && c <= 'z'; ++c)
        path = folder + QLatin1Char('/') + stem + QLatin1Char(c) + QStringLiteral(".txt");
    if (!SaveTraceFile(ring, path, now))
        return {};
    // The names sort by their date: the oldest go first.
    QStringList kept = QDir(folder).entryList({QStringLiteral("LinkTrace-*.txt")}, QDir::Files, QDir::Name);
    while (kept.size() > kKeptTraceFiles)
        QFile::remove(folder + QLatin1Char('/') + kept.takeFirst());
    return path;
}

void WriteLinkFaultTrace()
{
    const QString folder = AppPaths::inApp(QStringLiteral("ProgramErr"));
    if (!QFileInfo(folder).isDir()) {
        if (!QDir().mkpath(folder))
            return;
        AppPaths::setHidden(folder);
    }
    const QString path = WriteTraceFile(LinkTrace(), folder, QDateTime::currentDateTime());
    if (path.isEmpty())
        return;
    LogProgramError(QStringLiteral("PLC"), QStringLiteral("ShowLinkFaultBox"), QStringLiteral("0"),
                    QStringLiteral("link fault; the last exchanges are in ProgramErr/") + QFileInfo(path).fileName());
}
