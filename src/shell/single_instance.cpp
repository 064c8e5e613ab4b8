#include "shell/single_instance.h"

#include "common/app_paths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLockFile>
#include <memory>

namespace {
std::unique_ptr<QLockFile> gLock;
}

// The lock lives in the temporary folder so that a read-only application folder still works.
QString InstanceLockPath()
{
    const QByteArray key = QCryptographicHash::hash(QDir(AppPaths::appFolder()).canonicalPath().toUtf8(),
                                                    QCryptographicHash::Sha1).toHex().left(16);
    return QDir::temp().filePath(QStringLiteral("ORVAPLCCOM-%1.lock").arg(QLatin1String(key)));
}

bool AnotherInstanceRunning()
{
    if (gLock)
        return false;
    auto lock = std::make_unique<QLockFile>(InstanceLockPath());
    lock->setStaleLockTime(0);
    if (!lock->tryLock(0)) {
        if (lock->error() == QLockFile::LockFailedError)
            return true;
        return false;  // a lock that cannot be made does not keep the console from starting
    }
    gLock = std::move(lock);
    return false;
}

void ReleaseInstanceLock() { gLock.reset(); }
