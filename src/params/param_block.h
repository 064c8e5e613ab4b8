#pragma once
// A scale's parameter block (fifteen words from D(300 + 15n)) and its option bits, with the rules the
// parameter editor applies before a write. The editor form and the settings command both call these.
#include "common/block_layout.h"
#include "params/limits.h"

#include <QList>
#include <QStringList>

// Whether the blocking check tests a box's range on a scale.
enum class RangeTest { Always, Never };

struct BoxCheck {
    RangeTest test = RangeTest::Always;
    QString message;  // followed by "(", low, "-", high and the ending
    QString ending;   // ")S" or ")Kg"
};

// A relation fails when the value of box `low` is below that of box `high`: the second must not exceed
// the first. The focus goes to `high`.
struct Relation {
    int low;
    int high;
    QString text;
};

namespace ParamBlock {
inline constexpr int kScales = 14;
inline constexpr int kWords = 15;

// "scaleNN.params" and "scaleNN.options" of scale 0..13; an empty layout outside.
BlockLayout layout(int scaleNo);
BlockLayout optionLayout(int scaleNo);
// Raw words of the kind's defaults, as "初始化参数" writes them; the option word: every bit 0.
QList<int> defaults(int scaleNo);
QList<int> optionDefaults(int scaleNo);
// Ranges in box order, then the relations, with the messages of the form's check. A list that is not
// fifteen words long is a fault at the first missing or extra word.
BlockFault check(int scaleNo, const QList<int>& raw);

// ---- what the editor form takes from here ----

// Whether box k shows on the scale: by its rows and by the materials named in BinName.
bool rowShown(int scaleNo, int k);
// Caption of box k on the scale, once the form has named the materials.
QString caption(int scaleNo, int k);
// The row of the metering column box k (10 to 14) takes on the scale; 0 where it keeps its place.
int screenRow(int scaleNo, int k);
// Display pattern and register decimals of box k.
QString rowFormat(int scaleNo, int k);
int rowDecimals(int scaleNo, int k);
QString rowEnding(int k);  // ")S" or ")Kg"
QList<BoxCheck> boxChecks(int scaleNo);
QList<Relation> relations(int scaleNo);      // blocking
QList<Relation> liveRelations(int scaleNo);  // the page's warning

// The check on shown values (Val of the box texts), as the form runs it.
BlockFault checkShown(int scaleNo, const QList<double>& shown);
// The same for any editor's data: each tested box against low..high, then the relations in order.
BlockFault firstFault(const QList<double>& shown, const QStringList& low, const QStringList& high,
                      const QList<BoxCheck>& checks, const QList<Relation>& relations);
}  // namespace ParamBlock
