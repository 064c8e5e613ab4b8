#pragma once
// The controller's line as everyone on it speaks: one request in flight, its reply awaited at the length
// it must have, a request without a good reply asked again (at once after a bad reply, after each second
// without one), eight re-sends at most, and a reply still owed to an earlier send never taken for a later
// request. Knows nothing of forms or steps: the console's link engine and the configuration command both
// stand on it.
#include "link/comm_port.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <optional>

class RequestLine : public QObject {
    Q_OBJECT
public:
    static constexpr short kResends = 8;

    explicit RequestLine(QObject* parent = nullptr);

    // Not owned; its receive event is taken here.
    void setPort(CommPort* port);
    CommPort* port() const { return port_; }

    // The re-send clock: a tick a second from a send until a good reply, the fault or a caller stops it.
    QTimer clock;
    short resends = 0;  // re-sends of the request in flight so far
    // A reply later than this after its send is taken as never coming: two periods of the re-send clock.
    int lateReplyHorizonMs = 2000;

    // A new request: out at once or, while replies are owed to earlier sends, as soon as they are in or
    // too late to come. The line is busy meanwhile as if the request were out.
    void send(const QString& frame, short replyLen);
    // The request in flight once more, at once.
    void resend(const QString& frame, short replyLen);
    bool holding() const { return holding_; }
    bool resendsLeft() const { return resends >= 0 && resends < kResends; }
    // A good reply: nothing more is awaited, the count starts again and the clock stops.
    void answered();
    // After the eighth re-send has failed too: nothing more is awaited.
    void giveUp();
    // Every send and a held request forgotten: the port closed, a fresh login.
    void forget();

    // A write's reply: ACK alone at the awaited length.
    static bool isAck(const QString& reply, int replyLen);
    // A read's reply: the awaited length, STX before ETX and exactly the data between them; the checksum
    // is not looked at. The data digits, or nothing when the shape is wrong.
    static std::optional<QString> payloadOf(const QString& reply, int replyLen);

    // For a caller that waits (no form, no step): sends the request and runs the event loop until its good
    // reply or the fault, re-sending as the console does. longAckWaits: a write answered with more than an
    // ACK is left to the clock, as the console does for its command-bit and hoist writes.
    struct Outcome {
        bool ok = false;
        QString payload;  // the data digits of a read
    };
    Outcome exchange(const QString& frame, short replyLen, bool longAckWaits = false);

signals:
    // Every frame handed to the port, a re-send flagged.
    void sent(const QString& frame, bool resend);
    // What arrived for the request in flight, at its awaited length or more.
    void replied(const QString& reply);
    // A held request has just gone out.
    void released();
    // Replies owed to earlier sends, come while a request waits for them: never taken for it.
    void lateReplies(const QByteArray& bytes);

private:
    // One send of a request: when it went out and how long its reply is.
    struct Sent {
        qint64 at;
        short len;
    };
    void transmit(const QString& frame, short replyLen, bool resend);
    void hold(const QString& frame, short replyLen);
    void onReceived();
    void takeEarlierReplies(const QByteArray& bytes);
    void dropExpiredSends();
    void endHold();

    QPointer<CommPort> port_;
    QMetaObject::Connection receiving_;
    // Sends of the request in flight that no reply has come for yet, and sends of earlier requests whose
    // replies may still be on their way.
    QList<Sent> unanswered_, earlier_;
    bool holding_ = false;
    QString held_;
    short heldLen_ = 0;
    QTimer holdTimer_;
    QElapsedTimer elapsed_;
};
