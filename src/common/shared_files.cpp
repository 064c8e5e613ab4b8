#include "common/shared_files.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {
QByteArray native(const QString& path) { return QFile::encodeName(path); }

// Writes all of data; the errno of the failure, or 0.
int writeAll(int fd, const QByteArray& data)
{
    for (qsizetype at = 0; at < data.size();) {
        const ssize_t n = ::write(fd, data.constData() + at, size_t(data.size() - at));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return errno;
        at += n;
    }
    return 0;
}

// A share that keeps no modes refuses; the file is good all the same.
void share(int fd, unsigned mode) { (void)::fchmod(fd, mode_t(mode)); }

FileError writeInPlace(const QString& path, const QByteArray& data)
{
    const int out = ::open(native(path).constData(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (out < 0)
        return SharedFiles::errorOf(errno, path);
    const int err = writeAll(out, data);
    if (::close(out) != 0 && err == 0)
        return SharedFiles::errorOf(errno, path);
    return err ? SharedFiles::errorOf(err, path) : FileError{};
}
}  // namespace

namespace SharedFiles {

FileError errorOf(int err, const QString& path, bool onSource)
{
    FileError e{0, {}, QString::fromStdString(std::generic_category().message(err)), path};
    // The number a Windows station gives for the same failure. A network that went away gives 52, which
    // is what the operator's message singles out.
    switch (err) {
    case ENOENT:
    case ENOTDIR:
        e.number = onSource ? 53 : 76;
        e.description = onSource ? QStringLiteral("File not found") : QStringLiteral("Path not found");
        break;
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
        e.number = 70;
        e.description = QStringLiteral("Permission denied");
        break;
    case ENOSPC:
    case EDQUOT:
        e.number = 61;
        e.description = QStringLiteral("Disk full");
        break;
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
        e.number = 52;
        e.description = QStringLiteral("Bad file name or number");
        break;
    default:
        e.number = 75;
        e.description = QStringLiteral("Path/File access error");
        break;
    }
    return e;
}

FileError makeFolder(const QString& folder)
{
    const QString clean = QFileInfo(folder).absoluteFilePath();
    for (qsizetype at = 1;;) {
        const qsizetype slash = clean.indexOf(QLatin1Char('/'), at);
        const QString part = slash < 0 ? clean : clean.left(slash);
        if (::mkdir(native(part).constData(), 0775) == 0)
            (void)::chmod(native(part).constData(), mode_t(kFolderMode));  // mkdir's mode goes through the umask
        else if (errno != EEXIST)
            return errorOf(errno, part);
        if (slash < 0)
            break;
        at = slash + 1;
    }
    if (!QFileInfo(clean).isDir())
        return errorOf(ENOTDIR, clean);
    return {};
}

FileError replaceFile(const QString& path, const QByteArray& bytes)
{
    // Through a link the file it leads to is replaced, not the link.
    const QFileInfo link(path);
    const QString to = link.isSymLink() && link.exists() ? link.canonicalFilePath() : path;
    struct stat st {};
    if (::stat(native(to).constData(), &st) == 0) {
        if (S_ISDIR(st.st_mode))
            return errorOf(EISDIR, to);
        // Read-only is read from the mode: the superuser's right to write anyway is not what the other
        // station meant.
        if ((st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
            return errorOf(EACCES, to);
    }
    const QFileInfo target(to);
    QByteArray temp = native(target.absolutePath() + QStringLiteral("/.") + target.fileName() + QStringLiteral(".XXXXXX"));
    const int out = ::mkstemp(temp.data());
    if (out < 0 && errno == EACCES && QFileInfo::exists(to))
        return writeInPlace(to, bytes);  // a folder the operator may not write in, a file he may
    if (out < 0)
        return errorOf(errno, to);
    const auto abandon = [&](int err) {
        ::close(out);
        ::unlink(temp.constData());
        return errorOf(err, to);
    };
    if (const int err = writeAll(out, bytes))
        return abandon(err);
    // A share reports a lost connection at the latest here.
    if (::fsync(out) != 0 && errno != EINVAL)
        return abandon(errno);
    share(out, kFileMode);
    if (::close(out) != 0) {
        const int err = errno;
        ::unlink(temp.constData());
        return errorOf(err, to);
    }
    if (::rename(temp.constData(), native(to).constData()) != 0) {
        const int err = errno;
        ::unlink(temp.constData());
        return errorOf(err, to);
    }
    return {};
}

FileError appendToFile(const QString& path, const QByteArray& bytes)
{
    const QByteArray name = native(path);
    int out = ::open(name.constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (out < 0 && errno == ENOENT) {
        out = ::open(name.constData(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, 0664);
        if (out >= 0)
            share(out, kFileMode);
        else if (errno == EEXIST)
            out = ::open(name.constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
    }
    if (out < 0)
        return errorOf(errno, path);
    const int err = writeAll(out, bytes);
    if (::close(out) != 0 && err == 0)
        return errorOf(errno, path);
    return err ? errorOf(err, path) : FileError{};
}

}  // namespace SharedFiles
