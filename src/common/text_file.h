#pragma once
// The one reader and writer of text files shared with the plant's Windows stations: GB18030 with CRLF.
// A file that begins with a UTF-8 byte-order mark is read as UTF-8.
#include <QString>
#include <QStringList>

namespace TextFile {
bool exists(const QString& path);
// Whole file decoded; false if it cannot be opened.
bool read(const QString& path, QString* text);
// Lines without their line ends (CRLF, LF or lone CR all end a line).
bool readLines(const QString& path, QStringList* lines);
// Replaces the file. Each line gets CRLF. false on failure; an existing file is never left half written.
bool writeLines(const QString& path, const QStringList& lines);
// Appends text as it stands ("\n" in text is written as CRLF). Creates the file if absent.
bool append(const QString& path, const QString& text);
// The raw bytes, for the profile writer, which keeps every line it does not change byte for byte.
bool readBytes(const QString& path, QByteArray* bytes);
// Replaces the file with these bytes by the same safe way as writeLines.
bool writeBytes(const QString& path, const QByteArray& bytes);
QByteArray encode(const QString& text);   // GB18030
QString decode(const QByteArray& bytes);  // GB18030, or UTF-8 behind a BOM
}  // namespace TextFile
