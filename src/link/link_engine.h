#pragma once
// One serial port, one request in flight, no queue. A form sets StepNo and SendFlag, builds a frame and
// calls send_recieve; the reply comes back only through the step dispatch.
#include "link/comm_port.h"
#include "link/request_line.h"

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

private:
    RequestLine line_;  // the request in flight, its re-sends and the replies owed to earlier sends

public:
    QTimer Timer1;
    QTimer& Timer2 = line_.clock;  // the re-send clock
    QTimer Timer3;
    int& LateReplyHorizonMs = line_.lateReplyHorizonMs;

    QString LastFrame;
    short LastExpectedLen = 0;
    QString LastStep;
    short& RetryCount = line_.resends;
    short InitPollCount = 0;

    // The hidden register boxes of the main form: working store of block transfers.
    std::array<QString, 32> TxtR;
    std::array<QString, 20> Pfd;
    std::array<QString, 28> TxtDCansd;

    void timer1Tick();
    void timer3Tick();

    // The line itself, for observers of what goes out and comes back.
    RequestLine& line() { return line_; }

private:
    void onReply(const QString& reply);

    QPointer<CommPort> port_;
    bool resending_ = false;
};


LinkEngine& Link();

// The routines forms call, forwarded to the one engine.
void send_recieve(const QString& frame);
// The link's fault text naming the port, in the own message box with OK alone.
void ShowLinkFaultBox();
QString GetWrite_PLCD(const QString& device, short count);
QString GetWrite_TSCMXY(const QString& device, const QString& data, short digits);
