#pragma once
// The port behind the link: a receive threshold and an input buffer, as the link expects of a
// serial port. Implementations only feed arriving bytes in and push written bytes out.
#include <QByteArray>
#include <QObject>
#include <QString>

#include <algorithm>

enum class PortOpenError { None, InUse, Missing, Other };

struct PortOpenResult {
    PortOpenError error = PortOpenError::None;
    QString description;  // the operator's text for Other
    int number = 0;       // the error's own number, for the error log
    QString systemText;   // and the system's own text of it
};

class CommPort : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~CommPort() override = default;

    virtual PortOpenResult open() = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    virtual QString deviceName() const = 0;

    // The receive event fires once the buffer holds at least this many characters; 0: nothing is
    // awaited, and whatever arrives is thrown away.
    void setThreshold(int n);
    int threshold() const { return threshold_; }
    int inBufferCount() const { return int(in_.size()); }
    // Throws away what has arrived, also what the device holds unread; returns how many characters.
    int clearInput();
    // What the last clearInput threw away, for the link's trace.
    const QByteArray& lastCleared() const { return cleared_; }
    // Everything that has arrived, and the buffer is empty afterwards.
    QByteArray takeInput();
    void output(const QByteArray& bytes);
    // How often the device has handed characters over: about once a reply, when it keeps the threshold.
    int arrivals() const { return arrivals_; }

signals:
    void received();  // the receive event (CommEvent 2)
    void written(const QByteArray& bytes);  // every frame handed to the line, for observers

protected:
    virtual void writeBytes(const QByteArray& bytes) = 0;
    // A device that can hold back its wake-ups is told how many more characters are worth one (0: none).
    virtual void wakeAfter(int n) { (void)n; }
    // Characters the device holds that have not been read yet are dropped, and returned.
    virtual QByteArray dropUnread() { return {}; }
    // Implementations call this with whatever has arrived.
    void bytesArrived(const QByteArray& bytes);

    // What the device is to wait for now: the rest of the awaited reply.
    int stillAwaited() const { return threshold_ > 0 ? std::max(1, threshold_ - int(in_.size())) : 0; }

private:
    QByteArray in_;
    QByteArray cleared_;
    int threshold_ = 0;
    int arrivals_ = 0;
};

// A real serial line (any device path, a pseudo-terminal included) at 9600 7E1. When the device goes
// away (an adapter pulled, the far end of a pseudo-terminal closed) the port lets go of it, says so
// once in the error log, and opens the same path again at the next write.
class QSerialPort;
class SerialCommPort : public CommPort {
    Q_OBJECT
public:
    explicit SerialCommPort(const QString& device, QObject* parent = nullptr);
    ~SerialCommPort() override;
    PortOpenResult open() override;
    void close() override;
    bool isOpen() const override;
    QString deviceName() const override { return device_; }

protected:
    void writeBytes(const QByteArray& bytes) override;
    void wakeAfter(int n) override;
    QByteArray dropUnread() override;

private:
    void lost();
    void release();

    QString device_;
    QSerialPort* port_ = nullptr;
    int vmin_ = -1;  // as last set on the line
    bool wanted_ = false;  // opened by the console and not closed since: a lost device is looked for again
};

// Which port the link opens for a port number; tests replace it with the in-process simulator.
#include <functional>
using PortFactory = std::function<CommPort*(int portNo)>;
void SetPortFactory(PortFactory factory);
CommPort* MakePort(int portNo);
