#pragma once
// The port behind the link: a receive threshold and an input buffer, as the link expects of a
// serial port. Implementations only feed arriving bytes in and push written bytes out.
#include <QByteArray>
#include <QObject>
#include <QString>

enum class PortOpenError { None, InUse, Missing, Other };

struct PortOpenResult {
    PortOpenError error = PortOpenError::None;
    QString description;  // the system's own text for Other
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

    // The receive event fires once the buffer holds at least this many characters.
    void setThreshold(int n) { threshold_ = n; }
    int threshold() const { return threshold_; }
    int inBufferCount() const { return int(in_.size()); }
    void clearInput() { in_.clear(); }
    // Everything that has arrived, and the buffer is empty afterwards.
    QByteArray takeInput();
    void output(const QByteArray& bytes);

signals:
    void received();  // the receive event (CommEvent 2)
    void written(const QByteArray& bytes);  // every frame handed to the line, for observers

protected:
    virtual void writeBytes(const QByteArray& bytes) = 0;
    // Implementations call this with whatever has arrived.
    void bytesArrived(const QByteArray& bytes);

private:
    QByteArray in_;
    int threshold_ = 0;
};

// A real serial line (any device path, a pseudo-terminal included) at 9600 7E1.
class QSerialPort;
class SerialCommPort : public CommPort {
    Q_OBJECT
public:
    explicit SerialCommPort(const QString& device, QObject* parent = nullptr);
    PortOpenResult open() override;
    void close() override;
    bool isOpen() const override;
    QString deviceName() const override { return device_; }

protected:
    void writeBytes(const QByteArray& bytes) override;

private:
    QString device_;
    QSerialPort* port_ = nullptr;
    bool settingsLogged_ = false;
};

// Which port the link opens for a port number; tests replace it with the in-process simulator.
#include <functional>
using PortFactory = std::function<CommPort*(int portNo)>;
void SetPortFactory(PortFactory factory);
CommPort* MakePort(int portNo);
