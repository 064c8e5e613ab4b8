#pragma once
// The controller's end of a pseudo-terminal: the console opens the slave as if it were a serial port.
#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

class QSocketNotifier;

namespace plcsim {

class PtyEndpoint : public QObject {
    Q_OBJECT
public:
    explicit PtyEndpoint(QObject* parent = nullptr);
    ~PtyEndpoint() override;

    bool open(QString* error);
    // The controller's end goes away: the console's side of the line hangs up. open() makes a new one.
    void close();
    QString slavePath() const { return slave_; }
    void write(const QByteArray& bytes);

signals:
    // Seven-bit characters: the pty passes eight bits, of which the top one is not ours.
    void bytesReceived(const QByteArray& bytes);

private:
    void readable();

    int fd_ = -1;
    QString slave_;
    QSocketNotifier* notifier_ = nullptr;
    QTimer hupWait_;
};

}  // namespace plcsim
