#include "link/comm_port.h"

#include "common/app_paths.h"
#include "common/error_log.h"

#include <QSerialPort>
#include <QSerialPortInfo>

QByteArray CommPort::takeInput()
{
    QByteArray all = in_;
    in_.clear();
    return all;
}

void CommPort::output(const QByteArray& bytes)
{
    emit written(bytes);
    writeBytes(bytes);
}

void CommPort::bytesArrived(const QByteArray& bytes)
{
    in_.append(bytes);
    // The receive event fires only at the threshold, then with all that has arrived.
    if (threshold_ > 0 && in_.size() >= threshold_)
        emit received();
}

SerialCommPort::SerialCommPort(const QString& device, QObject* parent) : CommPort(parent), device_(device) {}

PortOpenResult SerialCommPort::open()
{
    if (port_ && port_->isOpen())
        return {};
    delete port_;
    port_ = new QSerialPort(this);
    port_->setPortName(device_);
    // A pseudo-terminal refuses 7 data bits and even parity once open, but takes them before.
    port_->setBaudRate(QSerialPort::Baud9600);
    port_->setDataBits(QSerialPort::Data7);
    port_->setParity(QSerialPort::EvenParity);
    port_->setStopBits(QSerialPort::OneStop);
    port_->setFlowControl(QSerialPort::NoFlowControl);
    if (!port_->open(QIODevice::ReadWrite)) {
        PortOpenResult r;
        const QString why = port_->errorString();
        switch (port_->error()) {
        case QSerialPort::DeviceNotFoundError:
            r.error = PortOpenError::Missing;
            break;
        case QSerialPort::PermissionError:
            // A busy device (another program's lock, or an exclusive open) comes back as a permission
            // error too; only the system's own "Permission denied" is about the user's rights.
            if (why.contains(QLatin1String("Permission denied"), Qt::CaseInsensitive)) {
                r.error = PortOpenError::Other;
                r.description = QStringLiteral("%1: %2. The user must be in the dialout group.").arg(device_, why);
            } else {
                r.error = PortOpenError::InUse;
            }
            break;
        default:
            r.error = PortOpenError::Other;
            r.description = QStringLiteral("%1: %2").arg(device_, why);
            break;
        }
        delete port_;
        port_ = nullptr;
        return r;
    }
    port_->setRequestToSend(true);
    if (port_->dataBits() != QSerialPort::Data7 || port_->parity() != QSerialPort::EvenParity) {
        if (!settingsLogged_) {
            settingsLogged_ = true;
            LogProgramError("PLC", "PortSettings", "8020", device_ + ": the line cannot be set to 9600,e,7,1");
        }
    }
    connect(port_, &QSerialPort::readyRead, this, [this] { bytesArrived(port_->readAll()); });
    return {};
}

void SerialCommPort::close()
{
    if (port_)
        port_->close();
}

bool SerialCommPort::isOpen() const { return port_ && port_->isOpen(); }

void SerialCommPort::writeBytes(const QByteArray& bytes)
{
    if (port_ && port_->isOpen())
        port_->write(bytes);
}

static PortFactory gFactory;

void SetPortFactory(PortFactory factory) { gFactory = std::move(factory); }

CommPort* MakePort(int portNo)
{
    if (gFactory)
        return gFactory(portNo);
    return new SerialCommPort(AppPaths::comPortDevice(portNo));
}
