#pragma once
// The plant's blocks: the times (D215), the vibrator times (D272), the sensor loads (D200), the hoist's
// counts and deceleration distances (D291) and the system option words (S612, S500), with the ranges,
// messages and defaults of the forms that edit them. The forms and the settings command both call these.
#include "common/block_layout.h"

#include <QList>
#include <QString>

namespace PlantBlocks {
// "S612", "S500", "D215", "D272", "D200", "D291", in that order.
QList<BlockLayout> layouts();
BlockLayout layout(const QString& id);  // empty for an unknown id
// Raw words of the defaults: what the form's "初始化参数" writes where it writes one (D215, D272);
// otherwise the values of a commissioned plant (D200, D291, every option bit 0).
QList<int> defaults(const QString& id);
// The form's ranges in its order, with its messages. Words a restore does not write (written false) are
// not judged: they go back as the controller holds them. Option words have no rule.
BlockFault check(const QString& id, const QList<int>& raw);

// ---- what the forms take from here ----

// The form's check on the values it shows (Val of its fields), one per word of the block, judging every
// word the form judges: D215 all six with their last guard, D272 the fields of vibrators in use, D200
// all fourteen, D291 the two deceleration distances (words 3 and 4).
BlockFault checkShown(const QString& id, const QList<double>& shown);
// The range text of a word as the form's tool tip and message end in: "(3-60)S", "(0-3000kg)", "(100-2000)".
QString rangeText(const QString& id, int field);
// D272: whether the field belongs to a vibrator in use (a named scale with ScaleVibrator 1); fields 26 and
// 27 belong to none and always count. D200: whether the scale has a name. Other blocks: always.
bool fieldInUse(const QString& id, int field);

// The vibrators of D272: the scale each belongs to and its first and last field. Fields 26 and 27 belong
// to none.
struct VibratorGroup {
    int scale;
    int first;
    int last;
};
inline constexpr VibratorGroup kVibratorGroups[8] = {{2, 0, 3},   {3, 4, 7},   {4, 8, 11},  {5, 12, 15},
                                                     {6, 16, 19}, {8, 20, 21}, {9, 22, 23}, {10, 24, 25}};
// The title of a vibrator's group: the scale's name and "振动器", or "备用振动器" when it is not in use.
QString vibratorTitle(int scale);
// The caption of a field of D272 beside its box: "计量振动间歇时间", "间歇时间"...
QString vibratorCaption(int field);
}  // namespace PlantBlocks

// Every block the console edits, in the order of a saved file: for each scale 0..13 its parameters and
// its options, then the plant blocks. Note that "scale00.options" and "S500" are the same two bytes, and
// that D272's words 19 to 27 are D291 to D299, which the hoist block reads too.
namespace Blocks {
QList<BlockLayout> all();
QList<int> defaults(const QString& id);
BlockFault check(const QString& id, const QList<int>& raw);
}  // namespace Blocks
