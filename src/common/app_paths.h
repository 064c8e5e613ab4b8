#pragma once
// Where the console's Windows notions live on Linux. Each mapping is made here and only here.
#include <QByteArray>
#include <QDate>
#include <QString>
#include <functional>

namespace AppPaths {
// The application folder: the folder holding the executable, unless a test set another.
QString appFolder();
void setAppFolder(const QString& folder);  // seam for tests

// appFolder + "/" + relative, with Windows backslashes turned into slashes.
QString inApp(const QString& relative);

// "C:\..." paths: the system drive is the folder "drive_c" in the application folder.
QString systemDrive(const QString& windowsPath);  // "C:\Program Files\MswSpool" -> <app>/drive_c/Program Files/MswSpool

// The partner station's administrative share ("\\host\C$\..."): mounted at stations/<host>/drive_c.
QString partnerShare(const QString& host, const QString& windowsPath);

// A folder as the plant's Windows stations write it, at its place here: "\\host\X$\..." on the share of
// that host (stations/<host>/drive_x/...), "\\host\share\..." at stations/<host>/share/..., "X:\..." on
// drive_x. A path that begins with "/" is already one of this station; any other is below the application folder.
QString fromWindows(const QString& path);

// The hidden attribute: the name is listed in the folder's ".hidden" file, which file managers honour, and
// on a share of a Windows station it takes the DOS attribute too, where the mount lets it be set.
void setHidden(const QString& path);
// The DOS attributes as a CIFS mount shows them (extended attribute "user.cifs.dosattrib", a little-endian
// 32-bit value): get is false where there are none. Tests replace them; empty: the file system's.
struct DosAttributes {
    std::function<bool(const QString& path, QByteArray* value)> get;
    std::function<bool(const QString& path, const QByteArray& value)> set;
};
void setDosAttributes(DosAttributes access);
bool isHidden(const QString& path);

// BASIC's Dir(path, attributes): the last name of an existing path, empty if there is none.
// Folders are reported only when withFolders is set.
QString Dir(const QString& path, bool withFolders);

// Com1..Com6 -> device path, from Data/ComPorts.ini (section "ComPorts", keys "Com1".."Com6");
// an unmapped port n is /dev/ttyS(n-1).
QString comPortDevice(int portNo);

// Year and month of the monthly files: "20263" in March 2026, "202611" in November (no leading zero).
QString yearMonth(const QDate& date);
}  // namespace AppPaths
