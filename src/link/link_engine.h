#pragma once
// One serial port, one request in flight, no queue. A form sets StepNo and SendFlag, builds a frame and
// calls send_recieve; the reply comes back only through the step dispatch.
#include "link/comm_port.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <array>

class LinkEngine : public QObject {
    Q_OBJECT
public:
    LinkEngine();
    ~LinkEngine() override;

    // The port: opened at login, closed by ExitSystem.
    PortOpenResult openPort(int portNo);
    void closePort();
    bool portOpen() const;
    CommPort* port() const { return port_; }

    void send_recieve(const QString& frame);
    QString GetWrite_PLCD(const QString& device, short count);
    QString GetWrite_TSCMXY(const QString& device, const QString& data, short digits);

    bool AckOk(const QString& reply);
    QString ReplyPayload(const QString& reply);
    void RetryRequest();

    // Restores the state of a fresh login: counters, flags, timers off, a zeroed write image.
    void resetForLogin();

    QTimer Timer1, Timer2, Timer3;
    // A reply later than this after its send is taken as never coming: two periods of the re-send clock.
    int LateReplyHorizonMs = 2000;

    QString LastFrame;
    short LastExpectedLen = 0;
    QString LastStep;
    short RetryCount = 0;
    short InitPollCount = 0;

    // The hidden register boxes of the main form: working store of block transfers.
    std::array<QString, 32> TxtR;
    std::array<QString, 20> Pfd;
    std::array<QString, 28> TxtDCansd;

    void onComm();  // the receive event
    void timer1Tick();
    void timer3Tick();

private:
    // One send of a request: when it went out and how long its reply is.
    struct Sent {
        qint64 at;
        short len;
    };
    void transmit(const QString& frame);
    void holdUntilAnswered(const QString& frame);
    void takeEarlierReplies(const QByteArray& bytes);
    void dropExpiredSends();
    void endHold();
    void forgetSends();

    QPointer<CommPort> port_;
    // Sends of the request in flight that no reply has come for yet, and sends of earlier requests whose
    // replies may still be on their way. A reply of an earlier request is never taken for a later one:
    // a new request waits until those replies are in or too old to come.
    QList<Sent> unanswered_, earlier_;
    bool resending_ = false;
    bool holding_ = false;
    QString held_;
    QTimer holdTimer_;
    QElapsedTimer clock_;
};


LinkEngine& Link();

// The routines forms call, forwarded to the one engine.
void send_recieve(const QString& frame);
// The link's fault text naming the port, in the own message box with OK alone.
void ShowLinkFaultBox();
QString GetWrite_PLCD(const QString& device, short count);
QString GetWrite_TSCMXY(const QString& device, const QString& data, short digits);
