#pragma once
// The console's port wired straight to an in-process controller: what the console writes is fed
// to the controller, what the controller answers arrives as received bytes.
#include "link/comm_port.h"
#include "plcsim/controller.h"

#include <QPointer>

namespace plcsim {

class SimPort : public CommPort {
    Q_OBJECT
public:
    // Without a controller the port makes its own; a given one is not owned and may serve several ports.
    explicit SimPort(Controller* controller = nullptr, QObject* parent = nullptr);

    PortOpenResult open() override;
    void close() override;
    bool isOpen() const override { return open_; }
    QString deviceName() const override { return name_; }

    void setDeviceName(const QString& name) { name_ = name; }
    // Every later open() fails this way, until set back to PortOpenError::None.
    void setOpenError(PortOpenError error, const QString& description = {});
    Controller* controller() const { return controller_; }

protected:
    void writeBytes(const QByteArray& bytes) override;

private:
    QPointer<Controller> controller_;
    QMetaObject::Connection link_;
    PortOpenResult openError_;
    QString name_ = QStringLiteral("SIM");
    bool open_ = false;
};

}  // namespace plcsim
