#include "calibration/cname_files.h"

#include "calibration/cal_records.h"
#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/partner_station.h"
#include "common/profile.h"
#include "common/scale_table.h"
#include "common/text_file.h"

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <thread>

namespace {
const QString kSpool = QStringLiteral("C:\\Program Files\\CNameSpool");
const QString kSpoolName = QStringLiteral("CNameSpool");

FileError networkLost(const QString& path) { return SharedFiles::errorOf(ENETDOWN, path); }

int statError(const QString& folder)
{
    struct stat st {};
    return ::stat(QFile::encodeName(folder).constData(), &st) == 0 ? 0 : errno;
}

// The work runs on a thread of its own; the console waits for it at most `limit`. A mount whose
// station is off can hold a file call far longer than that.
template <class R> std::optional<R> runWithin(std::chrono::milliseconds limit, std::function<R()> work)
{
    auto task = std::make_shared<std::packaged_task<R()>>(std::move(work));
    std::future<R> done = task->get_future();
    try {
        std::thread([task] { (*task)(); }).detach();
    } catch (const std::system_error&) {
        (*task)();  // no thread to be had: the console waits as long as the copy takes
    }
    if (done.wait_for(limit) != std::future_status::ready)
        return std::nullopt;
    return done.get();
}

// The partner's part of the backup: nothing is written into a mount point that holds no share.
FileError copyToPartner(const PartnerStation::MountCheck& mounted, const QString& root, const QString& folder,
                        const QString& source)
{
    if (!mounted(root))
        return networkLost(root);
    if (AppPaths::Dir(folder, true) != kSpoolName) {
        const FileError made = SharedFiles::makeFolder(folder);
        if (!made.ok())
            return made;
        AppPaths::setHidden(folder);
    }
    return CopyFileOver(source, folder + QStringLiteral("/CName.ini"));
}

void logBackup(const FileError& e)
{
    LogProgramError(QStringLiteral("BcBut"), QStringLiteral("BackupCNameIni"), QString::number(e.number), e.description);
}

// Keeps the first failure of a run of writes.
void keepFirst(FileError* first, const FileError& e)
{
    if (first->ok() && !e.ok())
        *first = e;
}

void writeRecordTime(FileError* first)
{
    FileError e;
    WriteProfileValue(QStringLiteral("RecordTime"), QStringLiteral("RecordTime"), CalTimeText(CalNow()), CNameIniPath(), &e);
    keepFirst(first, e);
}
}  // namespace

FileError CopyFileOver(const QString& from, const QString& to)
{
    QByteArray data;
    FileError e;
    if (!TextFile::readBytes(from, &data, &e))
        return e;
    return SharedFiles::replaceFile(to, data);
}

FileError WriteScaleNamesToFile()
{
    const QString file = CNameIniPath();
    FileError first;
    for (int i = 0; i < 14; ++i) {
        FileError e;
        WriteProfileValue(QStringLiteral("Name"), ScaleNameKey(i), ScaleName[size_t(i)], file, &e);
        keepFirst(&first, e);
    }
    writeRecordTime(&first);
    return first;
}

FileError WriteBinNamesToFile()
{
    const QString file = CNameIniPath();
    FileError first;
    for (int i = 0; i < int(BinName.size()); ++i) {
        FileError e;
        WriteProfileValue(BinNameSection(i), BinNameKey(i), BinName[size_t(i)], file, &e);
        keepFirst(&first, e);
    }
    writeRecordTime(&first);
    return first;
}

QString CNameSpoolFolder() { return AppPaths::systemDrive(kSpool); }

void BackupCNameIni()
{
    const QString folder = CNameSpoolFolder();
    if (AppPaths::Dir(folder, true) != kSpoolName) {
        const FileError made = SharedFiles::makeFolder(folder);
        if (!made.ok())
            return logBackup(made);
        AppPaths::setHidden(folder);
    }
    const QString source = CNameIniPath();
    const FileError copied = CopyFileOver(source, folder + QStringLiteral("/CName.ini"));
    if (!copied.ok())
        return logBackup(copied);

    const QString host = PartnerStation::partner();
    if (host.isEmpty())
        return;
    const QString root = PartnerStation::shareRoot(host), partnerFolder = AppPaths::partnerShare(host, kSpool);
    const std::optional<FileError> partner =
        runWithin<FileError>(NetworkWaitLimit, [check = PartnerStation::mountCheck(), root, partnerFolder, source] {
            return copyToPartner(check, root, partnerFolder, source);
        });
    if (!partner)
        logBackup(networkLost(root));
    else if (!partner->ok())
        logBackup(*partner);
}

NetCopyResult CopyCNameToNetwork()
{
    const QString path = ReadNetPath();
    if (path.isEmpty())
        return {NetCopy::NoPath, {}};
    const QString data = AppPaths::fromWindows(path + QStringLiteral("\\Data"));
    const QString source = CNameIniPath();
    const auto probe = FolderStatError ? FolderStatError : std::function<int(const QString&)>(statError);
    const std::optional<NetCopyResult> r = runWithin<NetCopyResult>(NetworkWaitLimit, [probe, data, source] {
        // A share whose station is off, a connection gone or a mount that failed is not a missing path.
        const int err = probe(data);
        if (err == ENOENT || err == ENOTDIR)
            return NetCopyResult{NetCopy::NoPath, {}};
        if (err != 0)
            return NetCopyResult{NetCopy::Failed, networkLost(data)};
        const FileError e = CopyFileOver(source, data + QStringLiteral("/CName.ini"));
        return NetCopyResult{e.ok() ? NetCopy::Done : NetCopy::Failed, e};
    });
    return r ? *r : NetCopyResult{NetCopy::Failed, networkLost(data)};
}

Restore RestoreCNameFromSpool()
{
    const QString folder = CNameSpoolFolder();
    if (AppPaths::Dir(folder, true) != kSpoolName)
        return Restore::NoSpool;
    const FileError copied = CopyFileOver(folder + QStringLiteral("/CName.ini"), CNameIniPath());
    return copied.ok() ? Restore::Done : Restore::CopyFailed;
}
