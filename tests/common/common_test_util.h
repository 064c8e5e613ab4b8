#pragma once
// Small helpers of the tests of src/common: raw files, fixtures, and a folder that is really read-only.
#include "test_support.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <sys/fsuid.h>
#include <unistd.h>

inline bool putBytes(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
    return f.write(bytes) == bytes.size();
}

inline QString fixture(const QString& name) { return QStringLiteral(ORVA_TEST_DATA "/common/") + name; }

// Permission bits do not stop root. While this lives, the file accesses of this (the only) thread are
// checked as those of "nobody", so a folder with mode 0555 cannot be written, as on an operator station.
class UnprivilegedFiles {
public:
    UnprivilegedFiles()
    {
        if (::geteuid() == 0) {
            oldGid_ = ::setfsgid(65534);
            oldUid_ = ::setfsuid(65534);
        }
    }
    ~UnprivilegedFiles()
    {
        if (oldUid_ >= 0) ::setfsuid(uid_t(oldUid_));
        if (oldGid_ >= 0) ::setfsgid(gid_t(oldGid_));
    }
    UnprivilegedFiles(const UnprivilegedFiles&) = delete;
    UnprivilegedFiles& operator=(const UnprivilegedFiles&) = delete;

private:
    int oldUid_ = -1, oldGid_ = -1;
};

// Opens a test's folder tree to everybody for reading, then takes write permission away from the folders
// and files named.
inline void makeReadOnly(const QString& root)
{
    const auto ro = QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
    const auto x = QFileDevice::ExeOwner | QFileDevice::ExeGroup | QFileDevice::ExeOther;
    QFile::setPermissions(root, ro | x);
    QDir dir(root);
    for (const QFileInfo& fi : dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
        if (fi.isDir())
            makeReadOnly(fi.filePath());
        else
            QFile::setPermissions(fi.filePath(), ro);
    }
}

// Gives the owner write permission again, so that QTemporaryDir can remove the tree.
inline void makeWritable(const QString& root)
{
    QFile::setPermissions(root, QFile::permissions(root) | QFileDevice::WriteOwner);
    QDir dir(root);
    for (const QFileInfo& fi : dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
        if (fi.isDir())
            makeWritable(fi.filePath());
        else
            QFile::setPermissions(fi.filePath(), QFile::permissions(fi.filePath()) | QFileDevice::WriteOwner);
    }
}
