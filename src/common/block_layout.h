#pragma once
// The blocks of controller words that the console edits, described once for the editor forms and for the
// settings command: where a block lies, what each word is called and how the form shows it. No form
// knowledge here; the rules and defaults live beside the editors (params/param_block.h,
// plant/plant_blocks.h).
//
// Changes against the first draft of this interface:
// - BlockField has `format` (the form's display pattern: "#0" for a value stored in tenths but shown
//   whole) and `mask` (bit groups).
// - shown/toRaw are generic, Block::shown and Block::toRaw here, not in ParamBlock.
// - BlockFault has `rule`, which tells the plant times' last guard from their own range.
// - ParamBlock::optionLayout gives "scaleNN.options"; PlantBlocks::layout(id) one plant block;
//   Blocks::all/defaults/check (plant_blocks.h) cover every block by its id.
// - PlantBlocks::check leaves out the words whose `written` is false: D272's words 19 to 27 (D291 to
//   D299) and the hoist's counts go back as the controller holds them, so their file value is not judged.
// - Below the "what the forms take from here" lines stand the helpers the forms call; the settings
//   command needs only the functions above them.
#include <QList>
#include <QString>

struct BlockField {
    QString key;          // stable id of the word inside its block, for files: "p03", "t0", "vib07", "decelUp"
    QString caption;      // the form's caption of the word in the chosen language (catalogue lookup with
                          // the Chinese default, as the form does)
    int decimals = 0;     // register = shown value × 10^decimals (1 for the times held in tenths)
    QString format;       // the form's display pattern of the shown value ("#0.0", "#0", "#0.00");
                          // empty: the plain number ("5.5" for 55 tenths)
    bool written = true;  // false: a restore never writes the file's value; where the block goes out in
                          // one frame, the word carries what the controller holds at that moment
    bool shown = true;    // false: a word the form keeps hidden for this scale; carried raw all the same
    int mask = 0;         // bit groups only: the bits of the raw word that belong to this block; the other
                          // bits are neighbouring devices, written back as the controller holds them
};

struct BlockLayout {
    QString id;      // "scale03.params", "scale03.options", "S612", "S500", "D215", "D272", "D200", "D291"
    QString title;   // for people: the scale's name, the form's title
    QString device;  // first device as the forms use it: "D345", "S524", "D291"
    int words = 0;   // 16-bit words the form's frames move: a bit group is one word (two bytes)
    QList<BlockField> fields;
};

// The first fault of a block; field < 0 when the block is valid.
struct BlockFault {
    int field = -1;   // the word (the box the form puts the focus on)
    QString message;  // the editor's own message, exactly as the form shows it
    int rule = 0;     // 0: the word's range or a relation; 1: the plant times' last guard (0-60)S
    bool ok() const { return field < 0; }
};

// Raw words are the controller's registers as the frame codec decodes them: signed 16-bit for D words;
// for a bit group the four data digits of the form's two-byte read as one number ("8000" is 0x8000).
namespace Block {
// The value as the form shows it: raw / 10^decimals in the field's pattern; a bit group as four hex digits.
QString shown(const BlockField& f, int raw);
// The register text the form writes for a box: Val of its text × 10^decimals. A form that rounds formats
// the box first; toRaw does both.
QString registerText(const BlockField& f, const QString& shown);
// For files: the whole text must be a number (a bit group: four hex digits) and its register must fit
// 16 bits; rounds as the form's write does. False leaves *raw alone.
bool toRaw(const BlockField& f, const QString& shown, int* raw);
}  // namespace Block
