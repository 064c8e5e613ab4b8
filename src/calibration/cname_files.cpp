#include "calibration/cname_files.h"

#include "calibration/cal_records.h"
#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/partner_station.h"
#include "common/profile.h"
#include "common/scale_table.h"

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {
const QString kSpool = QStringLiteral("C:\\Program Files\\CNameSpool");
const QString kSpoolName = QStringLiteral("CNameSpool");

const FileError kNetworkLost{52, QStringLiteral("Bad file name or number")};

// The run-time error a Windows station gives for the same failure. A network that went away gives 52,
// which is what the operator's message singles out.
FileError vbError(int err, bool onSource)
{
    switch (err) {
    case ENOENT:
    case ENOTDIR:
        return onSource ? FileError{53, QStringLiteral("File not found")} : FileError{76, QStringLiteral("Path not found")};
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
        return {70, QStringLiteral("Permission denied")};
    case ENOSPC:
    case EDQUOT:
        return {61, QStringLiteral("Disk full")};
    case EIO:
    case ENXIO:
    case ENODEV:
    case ESTALE:
    case ETIMEDOUT:
    case EHOSTDOWN:
    case EHOSTUNREACH:
    case ENETDOWN:
    case ENETUNREACH:
    case ENETRESET:
    case ENOTCONN:
    case ECONNRESET:
    case ECONNABORTED:
    case ECONNREFUSED:
    case ENOLINK:
    case ECOMM:
    case EREMOTEIO:
    case ENAMETOOLONG:
        return kNetworkLost;
    default:
        return {75, QStringLiteral("Path/File access error")};
    }
}

QByteArray native(const QString& path) { return QFile::encodeName(path); }

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
        return kNetworkLost;
    if (AppPaths::Dir(folder, true) != kSpoolName) {
        const FileError made = MakeFolder(folder);
        if (!made.ok())
            return made;
        AppPaths::setHidden(folder);
    }
    return CopyFileOver(source, folder + QStringLiteral("/CName.ini"));
}

FileError overwriteInPlace(const QByteArray& data, const QString& to)
{
    const int out = ::open(native(to).constData(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (out < 0)
        return vbError(errno, false);
    for (qsizetype at = 0; at < data.size();) {
        const ssize_t n = ::write(out, data.constData() + at, size_t(data.size() - at));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            const int err = errno;
            ::close(out);
            return vbError(err, false);
        }
        at += n;
    }
    return ::close(out) == 0 ? FileError{} : vbError(errno, false);
}

void logBackup(const FileError& e)
{
    LogProgramError(QStringLiteral("BcBut"), QStringLiteral("BackupCNameIni"), QString::number(e.number), e.description);
}

void writeRecordTime()
{
    WriteProfileValue(QStringLiteral("RecordTime"), QStringLiteral("RecordTime"), CalTimeText(CalNow()), CNameIniPath());
}
}  // namespace

FileError CopyFileOver(const QString& from, const QString& to)
{
    QByteArray data;
    const int in = ::open(native(from).constData(), O_RDONLY | O_CLOEXEC);
    if (in < 0)
        return vbError(errno, true);
    struct stat st {};
    if (::fstat(in, &st) != 0 || S_ISDIR(st.st_mode)) {
        ::close(in);
        return vbError(EISDIR, true);
    }
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(in, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            const int err = errno;
            ::close(in);
            return vbError(err, true);
        }
        if (n == 0)
            break;
        data.append(buffer, n);
    }
    ::close(in);

    // Write permission is read from the mode, as the read-only attribute travels over a share; the
    // superuser's right to write anyway is not what the other station meant.
    if (::stat(native(to).constData(), &st) == 0) {
        if (S_ISDIR(st.st_mode))
            return vbError(EISDIR, false);
        if ((st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
            return vbError(EACCES, false);
    }
    const QFileInfo target(to);
    QByteArray temp = native(target.absolutePath() + QStringLiteral("/.") + target.fileName() + QStringLiteral(".XXXXXX"));
    const int out = ::mkstemp(temp.data());
    if (out < 0 && errno == EACCES && ::access(native(to).constData(), W_OK) == 0)
        return overwriteInPlace(data, to);  // a folder the operator may not write in, a file he may
    if (out < 0)
        return vbError(errno, false);
    const auto abandon = [&](int err) {
        ::close(out);
        ::unlink(temp.constData());
        return vbError(err, false);
    };
    for (qsizetype at = 0; at < data.size();) {
        const ssize_t n = ::write(out, data.constData() + at, size_t(data.size() - at));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return abandon(errno);
        at += n;
    }
    // A share reports a lost connection at the latest here.
    if (::fsync(out) != 0 && errno != EINVAL)
        return abandon(errno);
    ::fchmod(out, 0644);  // a share that keeps no modes refuses; the copy is good all the same
    if (::close(out) != 0) {
        const int err = errno;
        ::unlink(temp.constData());
        return vbError(err, false);
    }
    if (::rename(temp.constData(), native(to).constData()) != 0) {
        const int err = errno;
        ::unlink(temp.constData());
        return vbError(err, false);
    }
    return {};
}

FileError MakeFolder(const QString& folder)
{
    const QString clean = QFileInfo(folder).absoluteFilePath();
    qsizetype at = 1;
    for (;;) {
        const qsizetype slash = clean.indexOf(QLatin1Char('/'), at);
        const QString part = slash < 0 ? clean : clean.left(slash);
        if (::mkdir(native(part).constData(), 0755) != 0 && errno != EEXIST)
            return vbError(errno, false);
        if (slash < 0)
            break;
        at = slash + 1;
    }
    if (!QFileInfo(clean).isDir())
        return vbError(ENOTDIR, false);
    return {};
}

void WriteScaleNamesToFile()
{
    const QString file = CNameIniPath();
    for (int i = 0; i < 14; ++i)
        WriteProfileValue(QStringLiteral("Name"), ScaleNameKey(i), ScaleName[size_t(i)], file);
    writeRecordTime();
}

void WriteBinNamesToFile()
{
    const QString file = CNameIniPath();
    for (int i = 0; i < int(BinName.size()); ++i)
        WriteProfileValue(BinNameSection(i), BinNameKey(i), BinName[size_t(i)], file);
    writeRecordTime();
}

QString CNameSpoolFolder() { return AppPaths::systemDrive(kSpool); }

void BackupCNameIni()
{
    const QString folder = CNameSpoolFolder();
    if (AppPaths::Dir(folder, true) != kSpoolName) {
        const FileError made = MakeFolder(folder);
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
        logBackup(kNetworkLost);
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
    const std::optional<NetCopyResult> r = runWithin<NetCopyResult>(NetworkWaitLimit, [data, source] {
        if (AppPaths::Dir(data, true) != QLatin1String("Data"))
            return NetCopyResult{NetCopy::NoPath, {}};
        const FileError e = CopyFileOver(source, data + QStringLiteral("/CName.ini"));
        return NetCopyResult{e.ok() ? NetCopy::Done : NetCopy::Failed, e};
    });
    return r ? *r : NetCopyResult{NetCopy::Failed, kNetworkLost};
}

Restore RestoreCNameFromSpool()
{
    const QString folder = CNameSpoolFolder();
    if (AppPaths::Dir(folder, true) != kSpoolName)
        return Restore::NoSpool;
    const FileError copied = CopyFileOver(folder + QStringLiteral("/CName.ini"), CNameIniPath());
    return copied.ok() ? Restore::Done : Restore::CopyFailed;
}
