#pragma once
// The partner station: the other console of a plant, which must carry the same names. It is found by
// the pair table from this station's own addresses, and reached through its share mounted inside the
// application folder (AppPaths::partnerShare).
#include <QHostAddress>
#include <QList>
#include <QString>
#include <functional>

namespace PartnerStation {
// The addresses of this station; empty: the addresses of the machine's interfaces. Tests replace it.
using AddressSource = std::function<QList<QHostAddress>()>;
void setAddressSource(AddressSource source);
QList<QHostAddress> ownAddresses();

// The other member of the pair of the first own IPv4 address in the pair table; empty when none is.
QString partnerOf(const QList<QHostAddress>& own);
QString partner();

// The folder where the partner's system drive is mounted, and whether a share is mounted there. An
// empty mount point must not be taken for the partner: files written into it would stay here.
QString shareRoot(const QString& host);
using MountCheck = std::function<bool(const QString& folder)>;
void setMountCheck(MountCheck check);  // empty: the folder is a mount point. Tests replace it.
MountCheck mountCheck();  // the check in force, to be handed to a thread that does the copy
bool isMountPoint(const QString& folder);
}  // namespace PartnerStation
