#include "plant/plant_blocks.h"

#include "common/lang.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "link/live_data.h"
#include "link/register_map.h"
#include "params/param_block.h"
#include "plant/other_layout.h"

#include <QRegularExpression>
#include <algorithm>
#include <cmath>

namespace {
using OtherLayout::kTimes;

const QString kTimesId = QStringLiteral("D215"), kVibId = QStringLiteral("D272"), kSensorId = QStringLiteral("D200"),
              kHoistId = QStringLiteral("D291");

constexpr int kVibFields = 28;
constexpr int kFirstHoistField = 291 - 272;  // D291 on: the hoist's registers lie under the last vibrators
constexpr int kDecelLow = 100, kDecelHigh = 2000;
// The sensor loads of a commissioned plant: the 500 kg of the form's "参数初始化", or the most the range
// takes where 500 lies beyond it (two decimals).
constexpr double kSensorLoad = 500;
// A hoist not yet calibrated, with the deceleration distances it leaves the works with.
constexpr int kHoistDefaults[5] = {0, 0, 0, 300, 300};

QString lang(const char* section, const char* key, const char* deflt)
{
    return LangText(QLatin1String(section), QLatin1String(key), QString::fromUtf8(deflt));
}

QString formTitle() { return lang("LANPLCFORM", "PLC006", "系统功能设定"); }

// Even fields are pauses, odd ones vibration times.
double vibLow(int i) { return i % 2 == 0 ? 1 : 0; }
int vibDefault(int i) { return i % 2 == 0 ? 3 : (i < 16 ? 6 : 1); }

int sensorDecimals(int i) { return ScaleDecimals.at(size_t(i)); }
// The upper bound keeps the register below 30000 whatever the decimals: "300" and 2 - d zeros.
QString sensorUpper(int d) { return QStringLiteral("300") + QString(std::max(0, 2 - d), QLatin1Char('0')); }

const char* const kDecelMessages[2] = {"请检查!上升提前减速脉冲数的输入范围为:",
                                       "请检查!下降提前减速脉冲数的输入范围为:"};

BlockField number(const QString& key, const QString& caption, int decimals, const QString& format, bool written = true,
                  bool shown = true)
{
    return BlockField{key, caption, decimals, format, written, shown, 0};
}

BlockLayout optionWord(const char* device)
{
    // The digits between this word's first and last are the devices beside it.
    return {QLatin1String(device),
            formTitle(),
            QLatin1String(device),
            1,
            {BlockField{QStringLiteral("bits"), formTitle(), 0, QString(), true, true, 0xF00F}}};
}

int wordsOf(const QString& id)
{
    if (id == kTimesId)
        return kTimesWords;
    if (id == kVibId)
        return kVibratorWords;
    if (id == kSensorId)
        return kSensorWords;
    if (id == kHoistId)
        return kHoistPulseWords;
    if (id == QLatin1String(kSystemOptions) || id == QLatin1String(kOtherOptions))
        return 1;
    return 0;
}

// The form's check; `judged` false for a word leaves it out.
BlockFault faultOf(const QString& id, const QList<double>& v, const QList<bool>& judged)
{
    auto judge = [&](int i) { return judged.value(i, true); };
    if (id == kTimesId) {
        const QString failText = lang("LANOTHERFORM", "OTHER059", "请检查!时间设定的输入范围为：");
        for (int i = 0; i < int(std::size(kTimes)) && i < v.size(); ++i) {
            if (!judge(i))
                continue;
            if (v[i] < kTimes[i].low || v[i] > kTimes[i].high)
                return {i, failText + QLatin1String(kTimes[i].range), 0};
            // The last guard: no time of the plant goes beyond a minute.
            if (v[i] < 0 || v[i] > 60)
                return {i, failText + QStringLiteral("(0-60)S"), 1};
        }
    } else if (id == kVibId) {
        for (int i = 0; i < kVibFields && i < v.size(); ++i) {
            if (!judge(i) || !PlantBlocks::fieldInUse(id, i) || (v[i] >= vibLow(i) && v[i] <= 60))
                continue;
            return {i, lang("LANZDTIMEFORM", "ZDTIME010", "请检查!振动时间设定的输入范围为:") +
                           PlantBlocks::rangeText(id, i)};
        }
    } else if (id == kSensorId) {
        for (int i = 0; i < kSensorWords && i < v.size(); ++i) {
            if (judge(i) && (v[i] > Val(sensorUpper(sensorDecimals(i))) || v[i] < 0))
                return {i, lang("LANSENSORFORM", "SENSOR003", "请检查!传感器配置设定的输入范围为:") +
                               PlantBlocks::rangeText(id, i)};
        }
    } else if (id == kHoistId) {
        for (int i = 3; i < 5 && i < v.size(); ++i) {
            if (judge(i) && (v[i] < kDecelLow || v[i] > kDecelHigh))
                return {i, QString::fromUtf8(kDecelMessages[i - 3]) + PlantBlocks::rangeText(id, i)};
        }
    }
    return {};
}
}  // namespace

namespace PlantBlocks {

QString vibratorTitle(int scale)
{
    const size_t s = size_t(scale);
    if (s < ScaleName.size() && !ScaleName[s].isEmpty() && ScaleVibrator[s] == 1)
        return ScaleName[s] + lang("LANZDTIMEFORM", "ZDTIME008", "振动器");
    return lang("LANZDTIMEFORM", "ZDTIME009", "备用振动器");
}

// The captions are the form's own and read the same in every language.
QString vibratorCaption(int field)
{
    static const char* const kFour[4] = {"计量振动间歇时间", "计量振动时间", "卸料振动间歇时间", "卸料振动时间"};
    static const char* const kTwo[2] = {"间歇时间", "振动时间"};
    return QString::fromUtf8(field < 20 ? kFour[field % 4] : kTwo[field % 2]);
}

bool fieldInUse(const QString& id, int field)
{
    if (id == kVibId) {
        for (const VibratorGroup& g : kVibratorGroups)
            if (field >= g.first && field <= g.last)
                return !ScaleName[size_t(g.scale)].isEmpty() && ScaleVibrator[size_t(g.scale)] == 1;
        return true;
    }
    if (id == kSensorId)
        return field >= 0 && field < kSensorWords && !Trim(ScaleName[size_t(field)]).isEmpty();
    return true;
}

QString rangeText(const QString& id, int field)
{
    if (id == kTimesId)
        return field >= 0 && field < int(std::size(kTimes)) ? QLatin1String(kTimes[field].range) : QString();
    if (id == kVibId)
        return field % 2 == 0 ? QStringLiteral("(1-60)S") : QStringLiteral("(0-60)S");
    if (id == kSensorId)
        return QStringLiteral("(0-") + sensorUpper(sensorDecimals(field)) + QStringLiteral("kg)");
    if (id == kHoistId && field >= 3)
        return QStringLiteral("(%1-%2)").arg(kDecelLow).arg(kDecelHigh);
    return QString();
}

BlockLayout layout(const QString& id)
{
    if (id == QLatin1String(kSystemOptions) || id == QLatin1String(kOtherOptions))
        return optionWord(id == QLatin1String(kSystemOptions) ? kSystemOptions : kOtherOptions);
    BlockLayout l{id, QString(), id, wordsOf(id), {}};
    if (id == kTimesId) {
        l.title = formTitle();
        // Times 4 and 5 stand on the form's hidden mixer group and hidden tab.
        for (int i = 0; i < kTimesWords; ++i)
            l.fields << number(QStringLiteral("t%1").arg(i), lang("LANOTHERFORM", kTimes[i].key, kTimes[i].caption), 1,
                               QString(), true, i < 4);
    } else if (id == kVibId) {
        l.title = QStringLiteral("振动器振动时间设定");
        for (int i = 0; i < kVibFields; ++i) {
            QString caption = vibratorCaption(i);
            for (const VibratorGroup& g : kVibratorGroups)
                if (i >= g.first && i <= g.last)
                    caption = vibratorTitle(g.scale) + QLatin1Char(' ') + caption;
            l.fields << number(QStringLiteral("vib%1").arg(i, 2, 10, QLatin1Char('0')), caption, 1,
                               QStringLiteral("#0"), i < kFirstHoistField, i < 26);
        }
    } else if (id == kSensorId) {
        l.title = lang("LANSENSORFORM", "SENSOR001", "传感器配置设定");
        for (int i = 0; i < kSensorWords; ++i) {
            const QString caption =
                fieldInUse(id, i) ? ScaleName[size_t(i)] : ComText(QStringLiteral("COM007"), QStringLiteral("备用"));
            l.fields << number(QStringLiteral("load%1").arg(i, 2, 10, QLatin1Char('0')), caption, sensorDecimals(i),
                               WeightFormat(sensorDecimals(i)));
        }
    } else if (id == kHoistId) {
        l.title = lang("LANYIBIAOADVAFORM", "YIBIAOADVA001", "斗提位置标定");
        static const char* const kHoist[5][3] = {
            {"count", "YIBIAOADVA005", "当前脉冲数:"},
            {"toWait", "YIBIAOADVA006", "标定得出接料位到等待位的脉冲数:"},
            {"toDischarge", "YIBIAOADVA007", "标定得出接料位到卸料位的脉冲数:"},
            {"decelUp", "YIBIAOADVA008", "上升提前减速脉冲数:"},
            {"decelDown", "YIBIAOADVA014", "下降提前减速脉冲数:"},
        };
        // The counts are the controller's: the calibration trip finds them, nobody writes them.
        for (int i = 0; i < 5; ++i)
            l.fields << number(QLatin1String(kHoist[i][0]), lang("LANYIBIAOADVAFORM", kHoist[i][1], kHoist[i][2]), 0,
                               QStringLiteral("#0"), i >= 3);
    } else {
        return {};
    }
    return l;
}

QList<BlockLayout> layouts()
{
    QList<BlockLayout> all;
    for (const char* id : {kSystemOptions, kOtherOptions, kTimesBlock, kVibratorBlock, kSensorBlock, kHoistPulses})
        all << layout(QLatin1String(id));
    return all;
}

QList<int> defaults(const QString& id)
{
    QList<int> raw;
    if (id == kTimesId) {
        for (const OtherLayout::TimeRow& r : kTimes)
            raw << CLng(Val(QLatin1String(r.deflt)) * 10);
    } else if (id == kVibId) {
        for (int i = 0; i < kVibFields; ++i)
            raw << vibDefault(i) * 10;
    } else if (id == kSensorId) {
        for (int i = 0; i < kSensorWords; ++i) {
            const int d = sensorDecimals(i);
            raw << CLng(std::min(kSensorLoad, Val(sensorUpper(d))) * std::pow(10.0, d));
        }
    } else if (id == kHoistId) {
        raw = QList<int>(std::begin(kHoistDefaults), std::end(kHoistDefaults));
    } else if (wordsOf(id) == 1) {
        raw << 0;
    }
    return raw;
}

BlockFault checkShown(const QString& id, const QList<double>& shown) { return faultOf(id, shown, {}); }

BlockFault check(const QString& id, const QList<int>& raw)
{
    const BlockLayout l = layout(id);
    if (l.words == 0)
        return {0, QStringLiteral("%1: no such block").arg(id)};
    if (raw.size() != l.words)
        return {std::min(l.words, int(raw.size())),
                QStringLiteral("%1 words expected, %2 given").arg(l.words).arg(raw.size())};
    QList<double> shown;
    QList<bool> judged;
    for (int i = 0; i < l.words; ++i) {
        shown << Val(Block::shown(l.fields[i], raw[i]));
        judged << l.fields[i].written;
    }
    return faultOf(id, shown, judged);
}

}  // namespace PlantBlocks

namespace Blocks {

namespace {
// "scale03.params" -> 3 and true; "scale03.options" -> 3 and false; -1 for a plant block.
int scaleOf(const QString& id, bool* params)
{
    static const QRegularExpression re(QStringLiteral("^scale(\\d\\d)\\.(params|options)$"));
    const QRegularExpressionMatch m = re.match(id);
    if (!m.hasMatch())
        return -1;
    *params = m.captured(2) == QLatin1String("params");
    const int n = m.captured(1).toInt();
    return n < ParamBlock::kScales ? n : -1;
}
}  // namespace

QList<BlockLayout> all()
{
    QList<BlockLayout> list;
    for (int n = 0; n < ParamBlock::kScales; ++n)
        list << ParamBlock::layout(n) << ParamBlock::optionLayout(n);
    return list + PlantBlocks::layouts();
}

QList<int> defaults(const QString& id)
{
    bool params = false;
    const int n = scaleOf(id, &params);
    if (n >= 0)
        return params ? ParamBlock::defaults(n) : ParamBlock::optionDefaults(n);
    return PlantBlocks::defaults(id);
}

BlockFault check(const QString& id, const QList<int>& raw)
{
    bool params = false;
    const int n = scaleOf(id, &params);
    if (n < 0)
        return PlantBlocks::check(id, raw);
    if (params)
        return ParamBlock::check(n, raw);
    if (raw.size() != 1)
        return {0, QStringLiteral("1 word expected, %1 given").arg(raw.size())};
    return {};
}

}  // namespace Blocks
