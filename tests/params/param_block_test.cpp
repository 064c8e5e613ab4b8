// The parameter block's rules as the settings command meets them: raw words in, the editor's first
// fault out, with the form's own message. The bounds of every row, and the rules the editor meets the same
// way, are in the editor's own test.
#include "test_support.h"

#include "common/scale_table.h"
#include "params/param_block.h"

#include <climits>

namespace {
// The kind's defaults with "k=shown" edits, turned into raw words the way a file's values are.
QList<int> edited(int scale, const char* edits)
{
    const BlockLayout l = ParamBlock::layout(scale);
    QList<int> raw = ParamBlock::defaults(scale);
    for (const QString& e : QString::fromUtf8(edits).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const int k = e.section(QLatin1Char('='), 0, 0).toInt();
        if (!Block::toRaw(l.fields.at(k), e.section(QLatin1Char('='), 1), &raw[k]))
            qFatal("not a value: %s", qPrintable(e));
    }
    return raw;
}

// The kind's defaults with edits, the field of the first fault (-1: none) and its message.
const struct { const char* name; int scale; const char* edits; int field; const char* message; } kFaults[] = {
    {"defaults pass", 0, "", -1, ""},
    {"zero range above the tolerance", 0, "4=31", 4, "零位范围不应大于卸料允许误差值!"},
    {"lead above its ceiling", 0, "6=50 7=60", 7, "扣称提前量不应大于扣称提前量最大值!"},
    {"fall above its ceiling", 0, "9=100 10=101", 10, "落差调整值不应大于落差调整最大值!"},
    {"second material, its row hidden", 6, "9=20 11=21", 11, "M2落差调整值不应大于落差调整最大值!"},
    {"third material of cement", 8, "9=20 12=21", 12, "M3落差调整值不应大于落差调整最大值!"},
    {"fourth material of cement", 8, "9=20 13=21", 13, "M4落差调整值不应大于落差调整最大值!"},
    {"third material of powder", 9, "9=20 12=21", 12, "M3落差调整值不应大于落差调整最大值!"},
    {"pulse time above, where the top is written \"2\"", 7, "0=2.1", 0, "请检查!超扣补秤脉冲时间的范围为:(0.1-2)S"},
    {"whole seconds, above", 0, "2=10", 2, "请检查!卸料延时控制时间的范围为:(0-9)S"},
    {"key zero above", 0, "3=201", 3, "请检查!按键归零允许范围为:(20-200)Kg"},
    {"water, one decimal above", 7, "3=50.1", 3, "请检查!按键归零允许范围为:(10.0-50.0)Kg"},
    {"additive, two decimals below", 11, "8=0.04", 8, "请检查!计量允许误差值为:(0.05-0.50)Kg"},
    {"additive, two decimals at the floor", 11, "8=0.05", -1, ""},
    {"a hidden row is not judged", 0, "12=999", -1, ""},
    {"a never-judged row", 6, "13=999", -1, ""},
};

// What the form shows of a register and what it writes for a typed text (INT_MIN: refused).
const struct { const char* name; int scale, k, raw; const char *shown, *typed; int written; } kShownAndRaw[] = {
    {"tenths", 0, 0, 3, "0.3", "0.35", 4},
    {"whole seconds held in tenths", 0, 2, 55, "6", "4", 40},
    {"negative weight", 0, 3, -25536, "-25536", "-25536", -25536},
    {"two decimals", 11, 3, 50, "0.50", "0.5", 50},
    {"a word too large", 7, 3, 0, "0.0", "3276.8", INT_MIN},
    {"not a number", 0, 3, 0, "0", "12abc", INT_MIN},
};
}  // namespace

class ParamBlockTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { SetDefaultNames(); }

    void firstFault_data() { TableRows(kFaults); }
    void firstFault()
    {
        const auto& c = TableRow(kFaults);
        const BlockFault f = ParamBlock::check(c.scale, edited(c.scale, c.edits));
        QCOMPARE(f.field, c.field);
        QCOMPARE(f.message, QString::fromUtf8(c.message));
    }

    void shownAndRaw_data() { TableRows(kShownAndRaw); }
    void shownAndRaw()
    {
        const auto& c = TableRow(kShownAndRaw);
        const BlockField f = ParamBlock::layout(c.scale).fields.at(c.k);
        QCOMPARE(Block::shown(f, c.raw), QString(c.shown));
        int got = INT_MIN;
        QCOMPARE(Block::toRaw(f, c.typed, &got), c.written != INT_MIN);
        QCOMPARE(got, c.written);
    }
};

QTEST_GUILESS_MAIN(ParamBlockTest)
#include "param_block_test.moc"
