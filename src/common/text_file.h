#pragma once
// The one reader and writer of text files shared with the plant's Windows stations: GB18030 with CRLF.
// Only a byte-order mark makes a file UTF-8 or UTF-16, and a write keeps what the mark said. The bytes are
// never taken as a hint: many short GBK names ("砂" C9 B0, "石" CA AF) are valid UTF-8 by chance.
#include "common/shared_files.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

namespace TextFile {
enum class Encoding { Gb18030, Utf8, Utf16Le, Utf16Be };

// How a file's bytes are to be read: the encoding and the length of the byte-order mark before the text.
struct Layout {
    Encoding encoding = Encoding::Gb18030;
    qsizetype bomLength = 0;
    int unit() const { return encoding == Encoding::Utf16Le || encoding == Encoding::Utf16Be ? 2 : 1; }
};
// UTF-16 or UTF-8 by their marks, GB18030 without one.
Layout detect(QByteArrayView bytes);

bool exists(const QString& path);
// Whole file decoded; false if it cannot be opened.
bool read(const QString& path, QString* text);
// Lines without their line ends (CRLF, LF or lone CR all end a line).
bool readLines(const QString& path, QStringList* lines);
// Replaces the file, in the encoding and with the mark of the file it replaces (GB18030 for a new one).
// Each line gets CRLF. false on failure, told in *error; an existing file is never left half written,
// except in a folder where no temporary file can be made, where the file is written in place.
bool writeLines(const QString& path, const QStringList& lines, FileError* error = nullptr);
// Appends text as it stands ("\n" in text is written as CRLF), in the encoding of the file's mark.
// Creates the file if absent.
bool append(const QString& path, const QString& text, FileError* error = nullptr);
// The raw bytes, for the profile writer, which keeps every line it does not change byte for byte.
bool readBytes(const QString& path, QByteArray* bytes, FileError* error = nullptr);
// Replaces the file with these bytes by the same safe way as writeLines.
bool writeBytes(const QString& path, const QByteArray& bytes, FileError* error = nullptr);
QByteArray encode(const QString& text);  // GB18030
QString decode(const QByteArray& bytes);  // by detect()
// Text without a byte-order mark in a given encoding, and back.
QString decodeAs(QByteArrayView bytes, Encoding encoding);
QByteArray encodeAs(QStringView text, Encoding encoding);
}  // namespace TextFile
