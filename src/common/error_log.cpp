#include "common/error_log.h"

#include "common/app_paths.h"
#include "common/shared_files.h"
#include "common/text_file.h"
#include "common/vbtext.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSet>

namespace {
QSet<QString> g_logged;  // number & routine of each error written in this run
}

void ResetErrorLogMemory() { g_logged.clear(); }

QString ErrorLogPath(const QDate& date)
{
    return AppPaths::inApp(QStringLiteral("ProgramErr/") + AppPaths::yearMonth(date) + QStringLiteral("ErrLog.txt"));
}

void LogProgramError(const QString& form, const QString& routine, const QString& number, const QString& description)
{
    try {
        // One entry per message number and routine, run together.
        const QString key = number + routine;
        if (g_logged.contains(key)) return;
        g_logged.insert(key);

        const QString folder = AppPaths::inApp(QStringLiteral("ProgramErr"));
        if (!QFileInfo(folder).isDir()) {
            if (!SharedFiles::makeFolder(folder).ok()) return;
            AppPaths::setHidden(folder);
        }
        const QDateTime now = QDateTime::currentDateTime();
        // The same date and time as in the calibration records, whatever the locale.
        const QString text = QStringLiteral("ErrTime：") + DateTimeText(now, QStringLiteral("   ")) + QLatin1Char('\n') +
                             QStringLiteral("ErrNumber:") + number + QStringLiteral("----") + description +
                             QLatin1Char('\n') + QStringLiteral("ErrForm:") + form + QLatin1Char('\n') +
                             QStringLiteral("ErrSub:") + routine + QLatin1Char('\n') + QString(52, QLatin1Char('#')) +
                             QLatin1Char('\n');
        TextFile::append(ErrorLogPath(now.date()), text);
    } catch (...) {
        // The log must never become the error.
    }
}
