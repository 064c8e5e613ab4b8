#include "cfg/plant_link.h"

#include "common/module1.h"
#include "link/frame_codec.h"
#include "link/register_map.h"

namespace {

bool isBitGroup(const BlockLayout& l) { return !l.fields.isEmpty() && l.fields[0].mask != 0; }

// Where a block's write is not its read: the hoist's form writes its two deceleration distances alone, as
// one frame at D294, and leaves a longer answer to that write to the time-out. Every other form writes its
// whole block.
struct WriteSpan {
    QString device;
    int first;
    int count;
    bool longAckWaits;
};
WriteSpan writeSpanOf(const BlockLayout& l)
{
    if (l.id == QLatin1String(kHoistPulses))
        return {QLatin1String(kHoistDecel), 3, kHoistDecelWords, true};
    return {l.device, 0, l.words, false};
}

QString fourDigits(int word) { return QStringLiteral("%1").arg(word & 0xFFFF, 4, 16, QLatin1Char('0')).toUpper(); }

}  // namespace

bool WrittenWordsEqual(const BlockLayout& l, const QList<int>& a, const QList<int>& b)
{
    for (int k = 0; k < l.fields.size(); ++k) {
        const BlockField& f = l.fields[k];
        const int mask = f.mask ? f.mask : ~0;
        if (f.written && (a.value(k) & mask) != (b.value(k) & mask))
            return false;
    }
    return true;
}

PlantLink::PlantLink(CommPort* port) { line_.setPort(port); }

std::optional<QString> PlantLink::ask(const QString& frame, bool longAckWaits)
{
    // The frame's builder has left the length of its reply behind.
    const RequestLine::Outcome o = line_.exchange(frame, ExpectedReplyLen, longAckWaits);
    if (!o.ok)
        return std::nullopt;
    return o.payload;
}

bool PlantLink::read(const BlockLayout& l, QList<int>* raw)
{
    raw->clear();
    const std::optional<QString> payload = isBitGroup(l) ? ask(BuildReadFrameBytes(l.device, 2))
                                                         : ask(BuildReadFrameWords(l.device, short(l.words)));
    if (!payload)
        return false;
    if (isBitGroup(l)) {
        *raw << payload->toInt(nullptr, 16);
        return true;
    }
    for (int i = 1; i <= l.words; ++i)
        *raw << GetWordFromPayload(i, *payload);
    return true;
}

PlantLink::Written PlantLink::write(const BlockLayout& l, const QList<int>& raw)
{
    QList<int> words = raw;
    std::optional<QString> ack;
    if (isBitGroup(l)) {
        // The two bytes hold the devices beside the block's own bits: they go back as they are now.
        QList<int> now;
        if (!read(l, &now))
            return Written::LinkFault;
        const int mask = l.fields[0].mask;
        words = {(now[0] & ~mask) | (raw.value(0) & mask)};
        if (words[0] == now[0])
            return Written::Done;  // already so: the same bits of another block were written before it
        ack = ask(BuildWriteFrame(l.device, fourDigits(words[0]), 4));
    } else {
        const WriteSpan span = writeSpanOf(l);
        bool keepsTheControllers = false;
        for (int k = span.first; k < span.first + span.count; ++k)
            keepsTheControllers = keepsTheControllers || !l.fields[k].written;
        if (keepsTheControllers) {
            QList<int> now;
            if (!read(l, &now))
                return Written::LinkFault;
            for (int k = 0; k < l.fields.size(); ++k)
                if (!l.fields[k].written)
                    words[k] = now.value(k);
        }
        QStringList texts;
        for (int k = span.first; k < span.first + span.count; ++k)
            texts << QString::number(words.value(k));
        ack = ask(BuildBlockWriteFrame(span.device, texts, short(span.count)), span.longAckWaits);
    }
    if (!ack)
        return Written::LinkFault;
    QList<int> back;
    if (!read(l, &back))
        return Written::LinkFault;
    return WrittenWordsEqual(l, words, back) ? Written::Done : Written::NotTaken;
}
