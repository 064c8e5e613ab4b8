#pragma once
// Small helpers of the tests of src/common: raw files, fixtures, and a folder that is really read-only.
#include "test_support.h"

#include "common/app_paths.h"
#include "common/profile.h"
#include "common/text_file.h"

#include <QStringEncoder>

#include <memory>

// UTF-16 little-endian behind its mark, as a Windows editor saves "Unicode".
inline QByteArray u16(const QString& text)
{
    return "\xFF\xFE" + QStringEncoder(QStringEncoder::Utf16LE).encode(text);
}

inline QString fixture(const QString& name) { return QStringLiteral(ORVA_TEST_DATA "/common/") + name; }

// Permission bits do not stop root: the file accesses are checked as those of "nobody", so a folder with
// mode 0555 cannot be written, as on an operator station.
struct UnprivilegedFiles : FilesAsUser {
    UnprivilegedFiles() : FilesAsUser(65534, 65534) {}
};

// Read-only: the tree opened to everybody for reading, write permission taken away. Writable: the owner
// may write again, so that QTemporaryDir can remove the tree.
inline void setTreeWritable(const QString& path, bool writable)
{
    const bool dir = QFileInfo(path).isDir();
    const auto r = QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
    const auto x = QFileDevice::ExeOwner | QFileDevice::ExeGroup | QFileDevice::ExeOther;
    QFile::setPermissions(path, writable ? QFile::permissions(path) | QFileDevice::WriteOwner : dir ? r | x : r);
    if (dir)
        for (const QFileInfo& fi : QDir(path).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden))
            setTreeWritable(fi.filePath(), writable);
}
inline void makeReadOnly(const QString& root) { setTreeWritable(root, false); }
inline void makeWritable(const QString& root) { setTreeWritable(root, true); }

// A fresh application folder for each test function (renew() in init()); app("Data/x") is a path in it.
struct AppFolder {
    std::unique_ptr<QTemporaryDir> dir;
    void renew()
    {
        dir = std::make_unique<QTemporaryDir>();
        AppPaths::setAppFolder(dir->path());
    }
    QString operator()(const QString& relative = {}) const
    {
        return relative.isEmpty() ? dir->path() : dir->filePath(relative);
    }
};
