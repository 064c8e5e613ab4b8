#pragma once
// A plant's configuration as a text file for people and for version control: a format version, the date,
// the port, the scale and bin names, then one section per block with every word as the controller holds
// it, its value as the form shows it and the form's caption:
//
//     [scale03.params] 骨料4 D345
//     p00 =      3 | 0.3  | 超扣补卸脉冲时间
//
// The word decides. Either column may be left empty when editing by hand; when both stand they must agree.
// UTF-8 behind a byte-order mark, CRLF line ends.
#include "common/block_layout.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace Snapshot {

inline constexpr int kFormat = 1;

struct Block {
    QString id;
    QList<int> raw;    // one word per field of the block's layout, in its order
    int line = 0;      // the section's line in its file; 0 when read from the controller
    QList<int> lines;  // the line of each word
};

struct File {
    int format = kFormat;
    QString date;  // "2026-11-25 14:03:22"
    QString port;  // "Com2", or the device path given
    int language = 1;
    QStringList scaleNames;  // scales 0..13, as CName.ini names them
    QStringList binNames;    // bins 0..21
    QList<Block> blocks;
    QString path;  // where it was read from

    const Block* find(const QString& id) const;
};

// The file's bytes. `layouts` are the blocks in the order of the file; each of f.blocks has one.
QByteArray write(const File& f, const QList<BlockLayout>& layouts);

// What is wrong with a file: the line (0: the file as a whole) and the text.
struct Fault {
    int line = 0;
    QString text;
};
// Reads a file's bytes against the layouts of the blocks it may hold; false and the first fault otherwise.
bool read(const QByteArray& bytes, const QList<BlockLayout>& layouts, File* f, Fault* fault);
// Reads the file at path; the message is "path:line: text" for a fault.
bool load(const QString& path, const QList<BlockLayout>& layouts, File* f, QString* message);

// "path:line: text", or "path: text" for the whole file.
QString where(const QString& path, int line, const QString& text);

}  // namespace Snapshot
