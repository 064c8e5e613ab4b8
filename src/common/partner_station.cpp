#include "common/partner_station.h"

#include "common/app_paths.h"

#include <QFileInfo>
#include <QNetworkInterface>
#include <sys/stat.h>

namespace {
PartnerStation::AddressSource g_addresses;
PartnerStation::MountCheck g_mountCheck;

struct StationPair {
    const char* a;
    const char* b;
};
constexpr StationPair kPairs[] = {
    {"192.168.10.1", "192.168.10.2"},
    {"192.168.10.3", "192.168.10.4"},
    {"192.168.10.5", "192.168.10.6"},
};
}  // namespace

namespace PartnerStation {

void setAddressSource(AddressSource source) { g_addresses = std::move(source); }

QList<QHostAddress> ownAddresses() { return g_addresses ? g_addresses() : QNetworkInterface::allAddresses(); }

QString partnerOf(const QList<QHostAddress>& own)
{
    for (const QHostAddress& address : own) {
        bool isV4 = false;
        const quint32 v4 = address.toIPv4Address(&isV4);
        if (!isV4 || address.isLoopback())
            continue;
        const QString text = QHostAddress(v4).toString();
        for (const StationPair& p : kPairs) {
            if (text == QLatin1String(p.a))
                return QLatin1String(p.b);
            if (text == QLatin1String(p.b))
                return QLatin1String(p.a);
        }
    }
    return QString();
}

QString partner() { return partnerOf(ownAddresses()); }

QString shareRoot(const QString& host) { return AppPaths::partnerShare(host, QStringLiteral("C:\\")); }

void setMountCheck(MountCheck check) { g_mountCheck = std::move(check); }

MountCheck mountCheck() { return g_mountCheck ? g_mountCheck : MountCheck(&isMountPoint); }

// A mount point lies on another device than its parent; a link to a mounted folder counts as well.
bool isMountPoint(const QString& folder)
{
    const QString real = QFileInfo(folder).canonicalFilePath();
    if (real.isEmpty())
        return false;
    struct stat self {}, parent {};
    if (::stat(QFile::encodeName(real).constData(), &self) != 0 || !S_ISDIR(self.st_mode))
        return false;
    if (::stat(QFile::encodeName(real + QStringLiteral("/..")).constData(), &parent) != 0)
        return false;
    return self.st_dev != parent.st_dev || self.st_ino == parent.st_ino;
}

}  // namespace PartnerStation
