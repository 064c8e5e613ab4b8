// The parameter block's rules as the settings command meets them: raw words in, the editor's first
// fault out, with the form's own message.
#include "common/scale_table.h"
#include "params/param_block.h"

#include <QTest>
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
}  // namespace

class ParamBlockTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { SetDefaultNames(); }

    void firstFault_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<QString>("edits");
        QTest::addColumn<int>("field");
        QTest::addColumn<QString>("message");
        const struct {
            const char* name;
            int scale;
            const char* edits;
            int field;
            const char* message;
        } rows[] = {
            {"defaults pass", 0, "", -1, ""},
            {"zero range above the tolerance", 0, "4=31", 4, "零位范围不应大于卸料允许误差值!"},
            {"lead above its ceiling", 0, "6=50 7=60", 7, "扣称提前量不应大于扣称提前量最大值!"},
            {"fall above its ceiling", 0, "9=100 10=101", 10, "落差调整值不应大于落差调整最大值!"},
            {"second material, its row hidden", 6, "9=20 11=21", 11, "M2落差调整值不应大于落差调整最大值!"},
            {"third material of cement", 8, "9=20 12=21", 12, "M3落差调整值不应大于落差调整最大值!"},
            {"fourth material of cement", 8, "9=20 13=21", 13, "M4落差调整值不应大于落差调整最大值!"},
            {"third material of powder", 9, "9=20 12=21", 12, "M3落差调整值不应大于落差调整最大值!"},
            {"additive's second material only warns", 12, "9=1.00 12=2.00", -1, ""},
            {"a range fault hides a relation", 8, "4=31 14=501", 14, "请检查!慢速配料值范围为:((1-500)Kg"},
            {"pulse time below", 0, "0=0.0", 0, "请检查!超扣补秤脉冲时间的范围为:(0.1-2.0)S"},
            {"pulse time at its top", 0, "0=2.0", -1, ""},
            {"pulse time above, where the top is written \"2\"", 7, "0=2.1", 0, "请检查!超扣补秤脉冲时间的范围为:(0.1-2)S"},
            {"whole seconds, top", 0, "2=9", -1, ""},
            {"whole seconds, above", 0, "2=10", 2, "请检查!卸料延时控制时间的范围为:(0-9)S"},
            {"key zero at its floor", 0, "3=20", -1, ""},
            {"key zero below", 0, "3=19", 3, "请检查!按键归零允许范围为:(20-200)Kg"},
            {"key zero at its top", 0, "3=200", -1, ""},
            {"key zero above", 0, "3=201", 3, "请检查!按键归零允许范围为:(20-200)Kg"},
            {"water, one decimal below", 7, "3=9.9", 3, "请检查!按键归零允许范围为:(10.0-50.0)Kg"},
            {"water, one decimal above", 7, "3=50.1", 3, "请检查!按键归零允许范围为:(10.0-50.0)Kg"},
            {"additive, two decimals below", 11, "8=0.04", 8, "请检查!计量允许误差值为:(0.05-0.50)Kg"},
            {"additive, two decimals at the floor", 11, "8=0.05", -1, ""},
            {"additive, two decimals above", 11, "8=0.51", 8, "请检查!计量允许误差值为:(0.05-0.50)Kg"},
            {"slow feed of scale 10 below", 10, "12=0", 12, "请检查!慢速配料值范围为:(1-500)Kg"},
            {"slow feed of aggregate above", 0, "13=501", 13, "请检查!慢速配料值范围为:(0-500)Kg"},
            {"a hidden row is not judged", 0, "12=999", -1, ""},
            {"a never-judged row", 6, "13=999", -1, ""},
            {"a named material's row is judged", 8, "11=101", 11, "请检查!M2计量落差调整值为:(0-100)Kg"},
            {"cement's fourth material", 8, "13=101", 13, "请检查!M4计量落差调整值为:(0-100)Kg"},
        };
        for (const auto& r : rows)
            QTest::newRow(r.name) << r.scale << QString(r.edits) << r.field << QString::fromUtf8(r.message);
    }
    void firstFault()
    {
        QFETCH(int, scale);
        QFETCH(QString, edits);
        QFETCH(int, field);
        QFETCH(QString, message);
        const BlockFault f = ParamBlock::check(scale, edited(scale, qPrintable(edits)));
        QCOMPARE(f.field, field);
        QCOMPARE(f.message, message);
    }

    // What the form shows of a register and what it writes for a shown text.
    void shownAndRaw_data()
    {
        QTest::addColumn<int>("scale");
        QTest::addColumn<int>("k");
        QTest::addColumn<int>("raw");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("written");  // INT_MIN: refused
        const struct {
            const char* name;
            int scale, k, raw;
            const char* shown;
            const char* typed;
            int written;
        } rows[] = {
            {"tenths", 0, 0, 3, "0.3", "0.35", 4},
            {"whole seconds held in tenths", 0, 2, 55, "6", "4", 40},
            {"negative weight", 0, 3, -25536, "-25536", "-25536", -25536},
            {"two decimals", 11, 3, 50, "0.50", "0.5", 50},
            {"a word too large", 7, 3, 0, "0.0", "3276.8", INT_MIN},
            {"not a number", 0, 3, 0, "0", "12abc", INT_MIN},
        };
        for (const auto& r : rows)
            QTest::newRow(r.name) << r.scale << r.k << r.raw << QString(r.shown) << QString(r.typed) << r.written;
    }
    void shownAndRaw()
    {
        QFETCH(int, scale);
        QFETCH(int, k);
        QFETCH(int, raw);
        QFETCH(QString, shown);
        QFETCH(QString, typed);
        QFETCH(int, written);
        const BlockField f = ParamBlock::layout(scale).fields.at(k);
        QCOMPARE(Block::shown(f, raw), shown);
        int got = INT_MIN;
        QCOMPARE(Block::toRaw(f, typed, &got), written != INT_MIN);
        QCOMPARE(got, written);
    }
};

QTEST_GUILESS_MAIN(ParamBlockTest)
#include "param_block_test.moc"
