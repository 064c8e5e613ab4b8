#include "plcsim/pty_endpoint.h"

#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

namespace plcsim {

PtyEndpoint::PtyEndpoint(QObject* parent) : QObject(parent)
{
    // With no slave open the master reports a hang-up at every poll; looking again a little later
    // keeps the program from spinning while the console is away.
    hupWait_.setSingleShot(true);
    hupWait_.setInterval(50);
    connect(&hupWait_, &QTimer::timeout, this, [this] {
        if (notifier_)
            notifier_->setEnabled(true);
    });
}

PtyEndpoint::~PtyEndpoint()
{
    delete notifier_;
    if (fd_ >= 0)
        ::close(fd_);
}

bool PtyEndpoint::open(QString* error)
{
    auto fail = [&](const char* what) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(QLatin1String(what), QString::fromLocal8Bit(std::strerror(errno)));
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = -1;
        return false;
    };
    fd_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0)
        return fail("posix_openpt");
    if (grantpt(fd_) != 0)
        return fail("grantpt");
    if (unlockpt(fd_) != 0)
        return fail("unlockpt");
    const char* name = ptsname(fd_);
    if (!name)
        return fail("ptsname");
    slave_ = QString::fromLocal8Bit(name);

    termios t{};
    if (tcgetattr(fd_, &t) != 0)
        return fail("tcgetattr");
    cfmakeraw(&t);
    cfsetispeed(&t, B9600);
    cfsetospeed(&t, B9600);
    if (tcsetattr(fd_, TCSANOW, &t) != 0)
        return fail("tcsetattr");

    notifier_ = new QSocketNotifier(fd_, QSocketNotifier::Read);
    connect(notifier_, &QSocketNotifier::activated, this, &PtyEndpoint::readable);
    return true;
}

void PtyEndpoint::close()
{
    hupWait_.stop();
    delete notifier_;
    notifier_ = nullptr;
    if (fd_ >= 0)
        ::close(fd_);
    fd_ = -1;
}

void PtyEndpoint::readable()
{
    pollfd p{fd_, POLLIN, 0};
    if (::poll(&p, 1, 0) <= 0)
        return;
    if (p.revents & POLLIN) {
        char buf[512];
        for (;;) {
            const ssize_t n = ::read(fd_, buf, sizeof buf);
            if (n > 0) {
                QByteArray bytes(buf, n);
                for (char& c : bytes)
                    c = char(c & 0x7F);
                emit bytesReceived(bytes);
                continue;
            }
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0 && errno == EAGAIN)
                return;
            break;  // EIO: the last slave has gone
        }
    }
    notifier_->setEnabled(false);
    hupWait_.start();
}

void PtyEndpoint::write(const QByteArray& bytes)
{
    qsizetype done = 0;
    while (fd_ >= 0 && done < bytes.size()) {
        const ssize_t n = ::write(fd_, bytes.constData() + done, size_t(bytes.size() - done));
        if (n > 0)
            done += n;
        else if (n < 0 && errno == EINTR)
            continue;
        else
            return;  // nobody listening or the buffer is full: the line drops it
    }
}

}  // namespace plcsim
