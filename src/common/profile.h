#pragma once
// Private-profile (INI) files with the semantics of the Windows profile routines:
// sections and keys compared without case, values cut at 455 characters, a key or section created
// on write, everything else in the file kept as it was.
#include <QString>

QString ReadProfileValue(const QString& section, const QString& key, const QString& deflt, const QString& file);
bool WriteProfileValue(const QString& section, const QString& key, const QString& value, const QString& file);
// First line that begins with key (case-sensitive); the rest of the line trimmed. Empty if none or on error.
QString ReadKeyLine(const QString& file, const QString& key);
