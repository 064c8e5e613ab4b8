#include "link/comm_port.h"

#include "common/app_paths.h"
#include "common/error_log.h"

#include <QSerialPort>

#include <algorithm>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

void CommPort::setThreshold(int n)
{
    threshold_ = n;
    wakeAfter(stillAwaited());
}

int CommPort::clearInput()
{
    cleared_ = std::exchange(in_, QByteArray());
    cleared_ += dropUnread();
    wakeAfter(stillAwaited());
    return int(cleared_.size());
}

QByteArray CommPort::takeInput()
{
    QByteArray all = std::exchange(in_, QByteArray());
    wakeAfter(stillAwaited());
    return all;
}

void CommPort::output(const QByteArray& bytes)
{
    emit written(bytes);
    writeBytes(bytes);
}

void CommPort::bytesArrived(const QByteArray& bytes)
{
    ++arrivals_;
    // Nothing is awaited: it answers a request that has been dealt with already.
    if (threshold_ <= 0)
        return;
    in_.append(bytes);
    // The receive event fires only at the threshold, then with all that has arrived.
    if (in_.size() >= threshold_)
        emit received();
    else
        wakeAfter(stillAwaited());
}

SerialCommPort::SerialCommPort(const QString& device, QObject* parent) : CommPort(parent), device_(device) {}

SerialCommPort::~SerialCommPort() { release(); }

PortOpenResult SerialCommPort::open()
{
    if (port_ && port_->isOpen())
        return {};
    release();
    auto* p = new QSerialPort(this);
    p->setPortName(device_);
    // Opened at 8N1, which every line holds, and set to 7E1 once open: a pseudo-terminal keeps 8N1, and
    // asked for nothing but 7E1 it refuses the whole setting, which would refuse the opening with it.
    p->setBaudRate(QSerialPort::Baud9600);
    p->setDataBits(QSerialPort::Data8);
    p->setParity(QSerialPort::NoParity);
    p->setStopBits(QSerialPort::OneStop);
    p->setFlowControl(QSerialPort::NoFlowControl);
    if (!p->open(QIODevice::ReadWrite)) {
        PortOpenResult r;
        r.number = int(p->error());
        r.systemText = p->errorString();
        switch (p->error()) {
        case QSerialPort::DeviceNotFoundError:
            r.error = PortOpenError::Missing;
            break;
        case QSerialPort::PermissionError:
            // A busy device (another program's lock, or an exclusive open) comes back as a permission
            // error too; only the system's own "Permission denied" is about the user's rights.
            if (r.systemText.contains(QLatin1String("Permission denied"), Qt::CaseInsensitive)) {
                r.error = PortOpenError::Other;
                r.description =
                    QStringLiteral("%1: %2. The user must be in the dialout group.").arg(device_, r.systemText);
            } else {
                r.error = PortOpenError::InUse;
            }
            break;
        default:
            r.error = PortOpenError::Other;
            r.description = QStringLiteral("%1: %2").arg(device_, r.systemText);
            break;
        }
        delete p;
        return r;
    }
    port_ = p;
    wanted_ = true;
    if (!(p->setDataBits(QSerialPort::Data7) && p->setParity(QSerialPort::EvenParity)))
        LogProgramError(QStringLiteral("PLC"), QStringLiteral("cmdOk"), QString::number(int(p->error())),
                        device_ + QStringLiteral(": 9600,e,7,1: ") + p->errorString());
    p->setRequestToSend(true);  // a pseudo-terminal has no RTS line, which does no harm
    p->clearError();
    connect(p, &QSerialPort::readyRead, this, [this] {
        if (port_)
            bytesArrived(port_->readAll());
    });
    connect(p, &QSerialPort::errorOccurred, this, [this](QSerialPort::SerialPortError e) {
        // Looked at once the port's own handler has returned: the port may be let go of then.
        if (e == QSerialPort::ReadError || e == QSerialPort::WriteError || e == QSerialPort::ResourceError)
            QMetaObject::invokeMethod(this, &SerialCommPort::lost, Qt::QueuedConnection);
    });
    vmin_ = -1;
    wakeAfter(stillAwaited());
    return {};
}

void SerialCommPort::lost()
{
    if (!port_ || port_->error() == QSerialPort::NoError)
        return;
    const QSerialPort::SerialPortError e = port_->error();
    pollfd p{int(port_->handle()), POLLIN | POLLOUT, 0};
    const bool hungUp = ::poll(&p, 1, 0) < 0 || (p.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
    if (e != QSerialPort::ReadError && !hungUp) {
        port_->clearError();  // a full output buffer, not a lost device
        return;
    }
    // A read of nothing is the hang-up itself; errno then tells of something earlier.
    const QString why = e == QSerialPort::ReadError ? QStringLiteral("the device has hung up") : port_->errorString();
    LogProgramError(QStringLiteral("PLC"), QStringLiteral("MSComm1_OnComm"), QString::number(int(e)),
                    device_ + QStringLiteral(": ") + why);
    // Letting go ends the wake-ups of a dead device and the pile of output it can never take.
    release();
}

void SerialCommPort::release()
{
    QSerialPort* p = std::exchange(port_, nullptr);
    if (!p)
        return;
    p->disconnect(this);
    p->close();
    p->deleteLater();
}

void SerialCommPort::close()
{
    wanted_ = false;
    release();
}

bool SerialCommPort::isOpen() const { return port_ && port_->isOpen(); }

void SerialCommPort::writeBytes(const QByteArray& bytes)
{
    // The device went away; it may be back at the same path. A failed try costs one open a request.
    if (!port_ && wanted_ && open().error != PortOpenError::None)
        return;
    if (port_)
        port_->write(bytes);
}

void SerialCommPort::wakeAfter(int n)
{
    // The line wakes the program only once the awaited reply can be complete, not at every character;
    // with nothing awaited, only for a full buffer (255 is the most a line holds back).
    const int vmin = std::clamp(n > 0 ? n : 255, 1, 255);
    if (!port_ || vmin == vmin_)
        return;
    const int fd = int(port_->handle());
    termios t{};
    if (::tcgetattr(fd, &t) != 0)
        return;
    t.c_cc[VMIN] = cc_t(vmin);
    t.c_cc[VTIME] = 0;
    if (::tcsetattr(fd, TCSANOW, &t) == 0)
        vmin_ = vmin;
}

QByteArray SerialCommPort::dropUnread()
{
    if (!port_)
        return {};
    // Read rather than flushed, so that the trace can show a reply that stopped short.
    QByteArray unread = port_->bytesAvailable() > 0 ? port_->readAll() : QByteArray();
    int held = 0;
    if (::ioctl(int(port_->handle()), FIONREAD, &held) == 0 && held > 0) {
        const qsizetype at = unread.size();
        unread.resize(at + held);
        const ssize_t n = ::read(int(port_->handle()), unread.data() + at, size_t(held));
        unread.resize(at + std::max<qsizetype>(0, n));
    }
    port_->clear(QSerialPort::Input);
    return unread;
}

static PortFactory gFactory;

void SetPortFactory(PortFactory factory) { gFactory = std::move(factory); }

CommPort* MakePort(int portNo)
{
    if (gFactory)
        return gFactory(portNo);
    return new SerialCommPort(AppPaths::comPortDevice(portNo));
}
