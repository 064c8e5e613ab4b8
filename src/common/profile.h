#pragma once
// Private-profile (INI) files with the semantics of the Windows profile routines:
// sections and keys compared without case, values cut at 455 characters, a key or section created
// on write, everything else in the file kept as it was.
#include "common/shared_files.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

QString ReadProfileValue(const QString& section, const QString& key, const QString& deflt, const QString& file);
// True whatever happens, as the Windows routine is used; a caller that must know reads *error.
bool WriteProfileValue(const QString& section, const QString& key, const QString& value, const QString& file,
                       FileError* error = nullptr);
// First line that begins with key (case-sensitive); the rest of the line trimmed. Empty if none or on error.
QString ReadKeyLine(const QString& file, const QString& key);

// A profile file read once for many lookups, each answered as ReadProfileValue would, in time that does
// not grow with the file. Kept: the file's bytes, one small record per section and key line, and the
// answers given so far.
class ProfileIndex {
public:
    // nullptr when the file is missing or cannot be read.
    static std::shared_ptr<const ProfileIndex> load(const QString& file);
    static std::shared_ptr<const ProfileIndex> fromBytes(QByteArray bytes);
    // The value as ReadProfileValue gives it; a null index gives the default.
    static QString read(const ProfileIndex* index, const QString& section, const QString& key, const QString& deflt);
    // The value as ReadProfileValue gives it (quotes gone, cut), if the key is there.
    std::optional<QString> value(const QString& section, const QString& key) const;

    struct Entry {
        quint32 hash;     // of the name without case
        quint32 section;  // sections numbered from 1 in file order
        qsizetype at;     // where the line begins in the file
    };

private:
    QByteArrayView lineAt(qsizetype at) const;
    QByteArray bytes_;
    int encoding_ = 0;
    std::vector<Entry> sections_;  // by hash, then file order
    std::vector<Entry> keys_;      // by section, hash, then file order
    mutable QHash<QString, std::optional<QString>> answers_;
};
