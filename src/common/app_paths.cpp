#include "common/app_paths.h"

#include "common/profile.h"
#include "common/shared_files.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>

#include <sys/xattr.h>

namespace {
QString g_appFolder;
AppPaths::DosAttributes g_dos;

constexpr const char* kDosAttrib = "user.cifs.dosattrib";
constexpr quint32 kDosHidden = 0x2;  // FILE_ATTRIBUTE_HIDDEN

bool readDosAttrib(const QString& path, QByteArray* value)
{
    char v[4];
    if (::getxattr(QFile::encodeName(path).constData(), kDosAttrib, v, sizeof v) != ssize_t(sizeof v)) return false;
    *value = QByteArray(v, sizeof v);
    return true;
}

bool writeDosAttrib(const QString& path, const QByteArray& value)
{
    return ::setxattr(QFile::encodeName(path).constData(), kDosAttrib, value.constData(), size_t(value.size()), 0) == 0;
}

// A Windows station that mounts no share of ours sees only the attribute. A mount without it (no such
// attribute, or refused) leaves the name in ".hidden" alone; that is no error.
void setDosHidden(const QString& path)
{
    const auto get = g_dos.get ? g_dos.get : decltype(g_dos.get)(readDosAttrib);
    const auto set = g_dos.set ? g_dos.set : decltype(g_dos.set)(writeDosAttrib);
    QByteArray v;
    if (!get(path, &v) || v.size() != 4) return;
    const quint32 attributes = qFromLittleEndian<quint32>(v.constData());
    if (attributes & kDosHidden) return;
    qToLittleEndian<quint32>(attributes | kDosHidden, v.data());
    (void)set(path, v);
}

QString slashes(QString path) { return path.replace(QLatin1Char('\\'), QLatin1Char('/')); }

// The ".hidden" file of the folder that holds path, and the name to list in it.
void hiddenListOf(const QString& path, QString* listFile, QString* name)
{
    const QFileInfo fi(QDir::cleanPath(path));
    *listFile = fi.absolutePath() + QStringLiteral("/.hidden");
    *name = fi.fileName();
}

// ".hidden" belongs to the Linux file managers, which read it as UTF-8 with one name a line.
QStringList hiddenNames(const QString& listFile)
{
    QFile f(listFile);
    if (!f.open(QIODevice::ReadOnly)) return {};
    QStringList names;
    for (const QByteArray& line : f.readAll().split('\n')) {
        const QString name = QString::fromUtf8(line).remove(QLatin1Char('\r'));
        if (!name.isEmpty()) names << name;
    }
    return names;
}
}  // namespace

namespace AppPaths {

QString appFolder()
{
    if (!g_appFolder.isEmpty()) return g_appFolder;
    if (QCoreApplication::instance()) return QCoreApplication::applicationDirPath();
    return QDir::currentPath();
}

void setAppFolder(const QString& folder)
{
    g_appFolder = folder;
    while (g_appFolder.size() > 1 && g_appFolder.endsWith(QLatin1Char('/'))) g_appFolder.chop(1);
}

QString inApp(const QString& relative)
{
    QString rel = slashes(relative);
    while (rel.startsWith(QLatin1Char('/'))) rel.remove(0, 1);
    if (rel.isEmpty()) return appFolder();
    return appFolder() + QLatin1Char('/') + rel;
}

QString systemDrive(const QString& windowsPath)
{
    QString rel = slashes(windowsPath);
    QString drive = QStringLiteral("c");
    static const QRegularExpression driveLetter(QStringLiteral("^([A-Za-z]):"));
    const auto m = driveLetter.match(rel);
    if (m.hasMatch()) {
        drive = m.captured(1).toLower();
        rel.remove(0, 2);
    }
    while (rel.startsWith(QLatin1Char('/'))) rel.remove(0, 1);
    return inApp(QStringLiteral("drive_") + drive + (rel.isEmpty() ? QString() : QLatin1Char('/') + rel));
}

QString partnerShare(const QString& host, const QString& windowsPath)
{
    const QString local = systemDrive(windowsPath);  // <app>/drive_x/...
    return inApp(QStringLiteral("stations/") + host) + local.mid(appFolder().size());
}

QString fromWindows(const QString& path)
{
    const QString p = path.trimmed();
    // What callers append to it ("\\Data") comes with a backslash even behind a path of this station.
    if (p.startsWith(QLatin1Char('/')) && !p.startsWith(QLatin1String("//"))) return QDir::cleanPath(slashes(p));
    static const QRegularExpression unc(QStringLiteral("^[\\\\/]{2}([^\\\\/]+)[\\\\/]+([^\\\\/]+)(.*)$"));
    const auto m = unc.match(p);
    if (m.hasMatch()) {
        const QString host = m.captured(1), share = m.captured(2), rest = m.captured(3);
        static const QRegularExpression adminShare(QStringLiteral("^([A-Za-z])\\$$"));
        const auto a = adminShare.match(share);
        if (a.hasMatch()) return partnerShare(host, a.captured(1) + QLatin1Char(':') + rest);
        return inApp(QStringLiteral("stations/") + host + QLatin1Char('/') + share + slashes(rest));
    }
    static const QRegularExpression drive(QStringLiteral("^[A-Za-z]:"));
    if (drive.match(p).hasMatch()) return systemDrive(p);
    return inApp(p);
}

void setHidden(const QString& path)
{
    QString listFile, name;
    hiddenListOf(path, &listFile, &name);
    if (name.isEmpty()) return;
    setDosHidden(QDir::cleanPath(path));
    if (hiddenNames(listFile).contains(name)) return;
    QFile r(listFile);
    QByteArray line = name.toUtf8() + '\n';
    // A list that lost its last line end must not glue the new name to the old one.
    if (r.open(QIODevice::ReadOnly) && r.size() > 0 && r.seek(r.size() - 1) && r.read(1) != "\n") line.prepend('\n');
    // The attribute is cosmetic: a read-only folder just keeps it visible.
    (void)SharedFiles::appendToFile(listFile, line);
}

void setDosAttributes(DosAttributes access) { g_dos = std::move(access); }

bool isHidden(const QString& path)
{
    QString listFile, name;
    hiddenListOf(path, &listFile, &name);
    if (name.isEmpty()) return false;
    return name.startsWith(QLatin1Char('.')) || hiddenNames(listFile).contains(name);
}

QString Dir(const QString& path, bool withFolders)
{
    if (path.isEmpty()) return QString();
    const QFileInfo fi(QDir::cleanPath(path));
    if (!fi.exists()) return QString();
    if (fi.isDir() && !withFolders) return QString();
    return fi.fileName();
}

QString comPortDevice(int portNo)
{
    const QString device = ReadProfileValue(QStringLiteral("ComPorts"), QStringLiteral("Com") + QString::number(portNo),
                                            QString(), inApp(QStringLiteral("Data/ComPorts.ini")))
                               .trimmed();
    if (!device.isEmpty()) return device;
    return QStringLiteral("/dev/ttyS") + QString::number(portNo > 0 ? portNo - 1 : 0);
}

QString yearMonth(const QDate& date) { return QString::number(date.year()) + QString::number(date.month()); }

}  // namespace AppPaths
