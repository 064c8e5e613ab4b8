#include "plcsim/sim_port.h"

namespace plcsim {

SimPort::SimPort(Controller* controller, QObject* parent)
    : CommPort(parent), controller_(controller ? controller : new Controller(this))
{
}

void SimPort::setOpenError(PortOpenError error, const QString& description)
{
    openError_.error = error;
    openError_.description = description;
}

PortOpenResult SimPort::open()
{
    if (openError_.error != PortOpenError::None)
        return openError_;
    if (!open_ && controller_) {
        link_ = connect(controller_, &Controller::reply, this, [this](const QByteArray& bytes) {
            bytesArrived(bytes);
        });
    }
    open_ = true;
    return {};
}

void SimPort::close()
{
    // Answers still on the way are lost with the line, as on a real port.
    disconnect(link_);
    open_ = false;
}

void SimPort::writeBytes(const QByteArray& bytes)
{
    if (open_ && controller_)
        controller_->feed(bytes);
}

}  // namespace plcsim
