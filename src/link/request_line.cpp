#include "link/request_line.h"

#include "link/frame_codec.h"

#include <QEventLoop>

#include <utility>

RequestLine::RequestLine(QObject* parent) : QObject(parent)
{
    clock.setInterval(1000);
    holdTimer_.setSingleShot(true);
    connect(&holdTimer_, &QTimer::timeout, this, [this] {
        dropExpiredSends();
        if (earlier_.isEmpty())
            endHold();
        else
            holdTimer_.start(int(earlier_.last().at + lateReplyHorizonMs - elapsed_.elapsed()));
    });
    elapsed_.start();
}

void RequestLine::setPort(CommPort* port)
{
    disconnect(receiving_);
    port_ = port;
    if (port)
        receiving_ = connect(port, &CommPort::received, this, &RequestLine::onReceived);
}

void RequestLine::send(const QString& frame, short replyLen)
{
    // A sender that forces its way in replaces a request still waiting to go out, as it replaces one in
    // flight.
    holding_ = false;
    held_.clear();
    holdTimer_.stop();
    // Earlier sends of the request before may still be answered; any reply of theirs arriving now would be
    // taken for this one.
    earlier_ += unanswered_;
    unanswered_.clear();
    dropExpiredSends();
    if (!earlier_.isEmpty()) {
        hold(frame, replyLen);
        return;
    }
    transmit(frame, replyLen, false);
}

void RequestLine::resend(const QString& frame, short replyLen) { transmit(frame, replyLen, true); }

void RequestLine::transmit(const QString& frame, short replyLen, bool resend)
{
    if (port_) {
        // Some of a reply had come, too little to be read: that send was answered, if badly.
        if (port_->clearInput() > 0 && !unanswered_.isEmpty())
            unanswered_.removeLast();
        port_->setThreshold(replyLen);
        port_->output(frame.toLatin1());
    }
    unanswered_.append({elapsed_.elapsed(), replyLen});
    emit sent(frame, resend);
    // Starting a running clock would move its next tick; it keeps its period.
    if (!clock.isActive())
        clock.start();
}

// Nothing changes on the wire but the moment the request goes out.
void RequestLine::hold(const QString& frame, short replyLen)
{
    holding_ = true;
    held_ = frame;
    heldLen_ = replyLen;
    if (port_) {
        port_->clearInput();
        port_->setThreshold(earlier_.first().len);
    }
    holdTimer_.start(int(earlier_.last().at + lateReplyHorizonMs - elapsed_.elapsed()));
    // Busy as if the request were out: the clock runs, and whoever waits may stop it.
    clock.start();
}

void RequestLine::onReceived()
{
    if (!port_)
        return;
    if (holding_) {
        const QByteArray late = port_->takeInput();
        emit lateReplies(late);
        takeEarlierReplies(late);
        return;
    }
    const QString reply = QString::fromLatin1(port_->takeInput());
    // The latest send is taken as the one answered: an earlier one is the more likely to stay silent.
    if (!unanswered_.isEmpty())
        unanswered_.removeLast();
    emit replied(reply);
}

void RequestLine::takeEarlierReplies(const QByteArray& bytes)
{
    // They come in the order of their requests, each at least as long as it was awaited.
    qsizetype left = bytes.size();
    while (!earlier_.isEmpty()) {
        left -= earlier_.first().len;
        earlier_.removeFirst();
        if (earlier_.isEmpty() || left < earlier_.first().len)
            break;
    }
    dropExpiredSends();
    if (earlier_.isEmpty())
        endHold();
    else if (port_)
        port_->setThreshold(earlier_.first().len);
}

void RequestLine::dropExpiredSends()
{
    const qint64 now = elapsed_.elapsed();
    earlier_.removeIf([this, now](const Sent& s) { return now - s.at >= lateReplyHorizonMs; });
}

void RequestLine::endHold()
{
    holdTimer_.stop();
    if (!holding_)
        return;
    holding_ = false;
    const QString frame = std::exchange(held_, QString());
    emit released();
    // The clock counts from the send; stopped meanwhile by whoever waits, it stays stopped.
    const bool timing = clock.isActive();
    clock.stop();
    transmit(frame, heldLen_, false);
    if (!timing)
        clock.stop();
}

void RequestLine::answered()
{
    resends = 0;
    clock.stop();
    if (port_)
        port_->setThreshold(0);
}

void RequestLine::giveUp()
{
    clock.stop();
    resends = 0;
    if (port_)
        port_->setThreshold(0);
}

void RequestLine::forget()
{
    unanswered_.clear();
    earlier_.clear();
    holding_ = false;
    held_.clear();
    holdTimer_.stop();
}

bool RequestLine::isAck(const QString& reply, int replyLen)
{
    return reply.size() == replyLen && !reply.isEmpty() && reply[0] == ACK;
}

std::optional<QString> RequestLine::payloadOf(const QString& reply, int replyLen)
{
    // Positions count from 1, as the shape rule is written; 0 means absent.
    const qsizetype s = reply.indexOf(STX) + 1;
    const qsizetype e = reply.indexOf(ETX) + 1;
    if (reply.size() == replyLen && s > 0 && e > 0 && e > s && e - s == replyLen - 3)
        return reply.mid(s, e - s - 1);
    return std::nullopt;
}

RequestLine::Outcome RequestLine::exchange(const QString& frame, short replyLen, bool longAckWaits)
{
    Outcome outcome;
    QEventLoop loop;
    bool done = false;
    auto finish = [&](bool ok, const QString& payload) {
        outcome = {ok, payload};
        done = true;
        loop.quit();
    };
    // The console's rule: eight re-sends, and the ninth failure is the fault.
    auto retry = [&] {
        if (holding_ || done)
            return;
        if (!resendsLeft()) {
            giveUp();
            finish(false, QString());
            return;
        }
        ++resends;
        resend(frame, replyLen);
    };
    const auto onReply = connect(this, &RequestLine::replied, &loop, [&](const QString& reply) {
        if (done)
            return;
        if (replyLen == 1) {
            if (longAckWaits && reply.size() > 2)
                return;
            if (!isAck(reply, replyLen)) {
                retry();
                return;
            }
            answered();
            finish(true, QString());
            return;
        }
        const std::optional<QString> payload = payloadOf(reply, replyLen);
        if (!payload) {
            retry();
            return;
        }
        answered();
        finish(true, *payload);
    });
    const auto onTick = connect(&clock, &QTimer::timeout, &loop, retry);
    resends = 0;
    send(frame, replyLen);
    if (!done)
        loop.exec();
    disconnect(onReply);
    disconnect(onTick);
    return outcome;
}
