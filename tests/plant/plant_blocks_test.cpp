// The plant blocks' rules as the settings command meets them, and the commissioned simulator they judge.
#include "plant_rig.h"

#include "plant/plant_blocks.h"

namespace {
// The block's defaults with "i=shown" edits, turned into raw words the way a file's values are.
QList<int> edited(const QString& id, const QString& edits)
{
    const BlockLayout l = PlantBlocks::layout(id);
    QList<int> raw = PlantBlocks::defaults(id);
    for (const QString& e : edits.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const int i = e.section(QLatin1Char('='), 0, 0).toInt();
        if (!Block::toRaw(l.fields.at(i), e.section(QLatin1Char('='), 1), &raw[i]))
            qFatal("not a value: %s", qPrintable(e));
    }
    return raw;
}
// Rules no form test reaches: the first field out of its range (-1: none) and the message it gives.
const struct { const char *name, *id, *edits; int field; const char* message; } kFaults[] = {
    {"times: bell duration at its floor", "D215", "1=3", -1, ""},
    {"times: tenths count", "D215", "3=4.9", 3, "请检查!时间设定的输入范围为：(5-60)S"},
    {"vibrators: words from D291 go back as held", "D272", "20=0 23=99 26=0", -1, ""},
    {"sensors: one decimal above", "D200", "7=3000.1", 7, "请检查!传感器配置设定的输入范围为:(0-3000kg)"},
    {"sensors: a spare scale is judged", "D200", "13=301", 13, "请检查!传感器配置设定的输入范围为:(0-300kg)"},
    {"hoist: the counts are not judged", "D291", "0=-5 1=9999", -1, ""},
    {"option word", "S612", "0=FFFF", -1, ""},
};
}  // namespace

class PlantBlocksTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { SetDefaultNames(); }

    void firstFault_data() { TableRows(kFaults); }
    void firstFault()
    {
        const auto& [name, id, edits, field, message] = TableRow(kFaults);
        const BlockFault f = Blocks::check(id, edited(id, edits));
        QCOMPARE(QString::number(f.field) + ' ' + f.message, QString::number(field) + ' ' + QString::fromUtf8(message));
    }

    // The blocks as a plant commissioned by the simulator holds them: every one passes the editors' rules,
    // and where blocks overlap the later one holds.
    void commissionedPlantPasses()
    {
        plcsim::Controller sim;
        sim.commission();
        for (const BlockLayout& block : Blocks::all()) {
            const int first = block.device.mid(1).toInt();
            QList<int> raw;
            if (block.device.startsWith(QLatin1Char('D'))) {
                for (int i = 0; i < block.words; ++i)
                    raw << sim.word(first + i);
            } else {
                raw << (sim.byteAt(first / 8) << 8 | sim.byteAt(first / 8 + 1));
            }
            QVERIFY2(Blocks::check(block.id, raw).ok(), qPrintable(block.id));
            if (block.id != QLatin1String("D272"))
                QCOMPARE(raw, Blocks::defaults(block.id));
        }
        // 500 kg a sensor, capped at 300 kg with two decimals: with none, one (D206) and two (D211).
        QCOMPARE((QList<short>{sim.word(200), sim.word(206), sim.word(211)}), (QList<short>{500, 5000, 30000}));
        QCOMPARE(sim.word(468), short(50));   // scale 11's key zeroing, 0.5 kg in two decimals
        QCOMPARE(sim.word(294), short(300));  // the hoist's distance, over the vibrator block
        QCOMPARE(sim.word(296), short(30));   // the vibrator block beyond the hoist's
    }
};

QTEST_GUILESS_MAIN(PlantBlocksTest)
#include "plant_blocks_test.moc"
