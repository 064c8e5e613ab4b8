#pragma once
#include <QDate>
#include <QString>

// The one error log: each number and routine is written once per run, to ProgramErr/<year><month>ErrLog.txt.
void LogProgramError(const QString& form, const QString& routine, const QString& number, const QString& description);
void ResetErrorLogMemory();  // seam for tests: a new run
// The log file of that month: <app>/ProgramErr/<year><month>ErrLog.txt, the month without a leading zero.
QString ErrorLogPath(const QDate& date);
