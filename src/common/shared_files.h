#pragma once
// Files and folders that the operators of a station share. Several accounts of one group save the same
// files, so whatever the umask, all the console makes stays writable for the group: files 0664, folders
// 2775 (the set-group-ID bit hands the folder's group on to what is made in it). Every file and folder
// the console makes goes through here.
#include <QByteArray>
#include <QString>

// A file operation as the messages and the error log tell it: number 0 when it was done, otherwise the
// run-time error number a Windows station gives for the same failure and its description, with the
// system's own text and the path it failed on.
struct FileError {
    int number = 0;
    QString description;
    QString systemText;
    QString path;
    bool ok() const { return number == 0; }
    // For the error log: "Permission denied: /path/file".
    QString logText() const { return systemText + QStringLiteral(": ") + path; }
};

namespace SharedFiles {
constexpr unsigned kFileMode = 0664;
constexpr unsigned kFolderMode = 02775;

// errno as a FileError. On the file read (onSource) a missing path is 53 "File not found", elsewhere 76.
FileError errorOf(int err, const QString& path, bool onSource = false);

// Creates the folder and those above it; each folder made takes kFolderMode.
FileError makeFolder(const QString& folder);
// Replaces the file by these bytes through a new file beside it, so that a write that breaks off leaves
// the old file whole; the new file takes kFileMode. In a folder where no new file can be made, a file that
// may be written is written in place. A file without any write permission is read-only, as the attribute
// travels over a share, and stays as it is.
FileError replaceFile(const QString& path, const QByteArray& bytes);
// Appends; a file made here takes kFileMode.
FileError appendToFile(const QString& path, const QByteArray& bytes);
}  // namespace SharedFiles
