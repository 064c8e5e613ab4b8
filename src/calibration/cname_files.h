#pragma once
// CName.ini on disk: the writers of the names, the spool copy that keeps the first names as the factory
// set (here and on the partner station), the copy for the production control system, and the restore.
#include "common/shared_files.h"

#include <QString>
#include <chrono>
#include <functional>

// Copies over an existing file by way of a new one beside it, so that a copy that breaks off leaves the
// old file whole. A destination without write permission stays as it is.
FileError CopyFileOver(const QString& from, const QString& to);

// Section "Name" from ScaleName(0..13), then "RecordTime". The first write that failed, if one did.
FileError WriteScaleNamesToFile();
// The bin sections from BinName(0..21), then "RecordTime".
FileError WriteBinNamesToFile();

// The hidden spool folder of the factory names on this station.
QString CNameSpoolFolder();
// CName.ini into the spool folder here and on the partner station. Failures go to the error log only.
void BackupCNameIni();

// The copy to ReadNetPath() + "\Data" for the production control system. Only a folder that is not there
// (ENOENT, ENOTDIR) is a missing path; any other failure to look at it is a lost network.
enum class NetCopy { Done, NoPath, Failed };
struct NetCopyResult {
    NetCopy outcome = NetCopy::Done;
    FileError error;
};
NetCopyResult CopyCNameToNetwork();

// The spool copy back over CName.ini. After a failed copy the caller puts the present file into the
// spool (BackupCNameIni), so that a later restore has something to bring back.
enum class Restore { Done, NoSpool, CopyFailed };
Restore RestoreCNameFromSpool();

// How long a copy over the network may hold the console: about what a Windows station waits for a
// station that is off before it gives up. What is still running then finishes or fails unseen.
inline std::chrono::milliseconds NetworkWaitLimit{20000};
// The errno of stat() on a folder, 0 when it is there. Tests put a failing network in its place; empty: stat().
inline std::function<int(const QString& folder)> FolderStatError;
