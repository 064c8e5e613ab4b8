#pragma once
// The one reader and writer of text files shared with the plant's Windows stations: GB18030 with CRLF.
// Files saved by other editors are read as what they are: UTF-8 with or without a byte-order mark,
// UTF-16 behind its byte-order mark.
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
// UTF-16 by its mark; UTF-8 behind its mark or without one when every byte is valid UTF-8 and some are not
// ASCII; GB18030 otherwise, also when the bytes of a UTF-8 mark begin text that is not UTF-8.
Layout detect(QByteArrayView bytes);
bool isValidUtf8(QByteArrayView bytes);

bool exists(const QString& path);
// Whole file decoded; false if it cannot be opened.
bool read(const QString& path, QString* text);
// Lines without their line ends (CRLF, LF or lone CR all end a line).
bool readLines(const QString& path, QStringList* lines);
// Replaces the file. Each line gets CRLF. false on failure; an existing file is never left half written,
// except in a folder where no temporary file can be made, where the file is written in place.
bool writeLines(const QString& path, const QStringList& lines);
// Appends text as it stands ("\n" in text is written as CRLF). Creates the file if absent.
bool append(const QString& path, const QString& text);
// The raw bytes, for the profile writer, which keeps every line it does not change byte for byte.
bool readBytes(const QString& path, QByteArray* bytes);
// Replaces the file with these bytes by the same safe way as writeLines.
bool writeBytes(const QString& path, const QByteArray& bytes);
QByteArray encode(const QString& text);  // GB18030
QString decode(const QByteArray& bytes);  // by detect()
// Text without a byte-order mark in a given encoding, and back.
QString decodeAs(QByteArrayView bytes, Encoding encoding);
QByteArray encodeAs(QStringView text, Encoding encoding);
}  // namespace TextFile
