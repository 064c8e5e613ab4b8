#include "params/param_block.h"

#include "common/lang.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "link/live_data.h"
#include "link/register_map.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {
struct Caption {
    const char* key;
    const char* text;
};
// Captions of the fifteen rows as the form holds them; rows 10 to 14 are renamed by scale below.
constexpr Caption kCaptions[15] = {
    {"CANSD005", "超扣补卸脉冲时间"}, {"CANSD006", "脉冲补称时间"}, {"CANSD007", "延时控制时间"},
    {"CANSD008", "按键归零允许范围"}, {"CANSD009", "零位范围"},     {"CANSD010", "卸料允许误差值"},
    {"CANSD011", "扣称提前量最大值"}, {"CANSD012", "扣称提前量"},   {"CANSD013", "计量允许误差值"},
    {"CANSD014", "落差调整最大值"},   {"CANSD053", "落差调整值"},   {"COM007", "备用"},
    {"CANSD053", "落差调整值"},       {"CANSD015", "慢速配料值"},   {"CANSD015", "慢速配料值"},
};

// What rows 10 to 14 of the metering column are on a scale.
enum class Cap { Own, Hidden, Material, M1, M2, SlowFeed10 };
struct RowPlan {
    Cap cap;
    int bin;  // BinName index of a material row
    int row;  // screen row in the metering column
};
using MeteringPlan = std::array<RowPlan, 5>;
constexpr RowPlan H{Cap::Hidden, 0, 0};
constexpr MeteringPlan kPlanAggregate = {{{Cap::Own, 0, 5}, H, H, {Cap::Own, 0, 1}, H}};
constexpr MeteringPlan kPlan6 = {{{Cap::Material, 6, 5}, {Cap::Material, 7, 6}, H, H, H}};
constexpr MeteringPlan kPlan8 = {
    {{Cap::Material, 9, 5}, {Cap::Material, 10, 6}, {Cap::Material, 11, 7}, {Cap::Material, 12, 8}, {Cap::Own, 0, 1}}};
constexpr MeteringPlan kPlan9 = {
    {{Cap::Material, 13, 5}, {Cap::Material, 14, 6}, {Cap::Material, 15, 7}, H, {Cap::Own, 0, 1}}};
constexpr MeteringPlan kPlan10 = {{{Cap::Material, 16, 5}, {Cap::Material, 17, 6}, {Cap::SlowFeed10, 0, 1}, H, H}};
constexpr MeteringPlan kPlanAdditive = {{{Cap::M1, 0, 5}, H, {Cap::M2, 0, 6}, {Cap::Own, 0, 1}, H}};
constexpr std::array<const MeteringPlan*, 14> kPlanOfScale = {
    &kPlanAggregate, &kPlanAggregate, &kPlanAggregate, &kPlanAggregate, &kPlanAggregate,
    &kPlanAggregate, &kPlan6,         &kPlanAggregate, &kPlan8,         &kPlan9,
    &kPlan10,        &kPlanAdditive,  &kPlanAdditive,  &kPlanAdditive,
};

bool validScale(int scaleNo) { return scaleNo >= 0 && scaleNo < ParamBlock::kScales; }

// The plan of box k on the scale; null for the fixed rows 0 to 9 and outside the menu's scales.
const RowPlan* planOf(int scaleNo, int k)
{
    if (!validScale(scaleNo) || k < 10 || k > 14)
        return nullptr;
    return &(*kPlanOfScale[size_t(scaleNo)])[size_t(k - 10)];
}

bool in(int v, std::initializer_list<int> set) { return std::find(set.begin(), set.end(), v) != set.end(); }

QString text(const char* key, const char* deflt)
{
    return LangText(QStringLiteral("LANCANSDFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}

QString ownCaption(int k)
{
    const Caption& c = kCaptions[k];
    return QByteArray(c.key).startsWith("COM") ? ComText(QLatin1String(c.key), QString::fromUtf8(c.text))
                                               : text(c.key, c.text);
}

int scaleDecimals(int scaleNo)
{
    return scaleNo >= 0 && scaleNo < int(ScaleDecimals.size()) ? ScaleDecimals[size_t(scaleNo)] : 0;
}

QString twoDigits(int n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); }

QString scaleTitle(int scaleNo)
{
    const QString name = ScaleName[size_t(scaleNo)];
    return name.isEmpty()
               ? LangText(QStringLiteral("LANBCBUTFORM"), QStringLiteral("BCBUT004"), QStringLiteral("未使用"))
               : name;
}

QList<double> shownValues(int scaleNo, const QList<int>& raw)
{
    QList<double> values;
    for (int k = 0; k < raw.size(); ++k) {
        BlockField f;
        f.decimals = ParamBlock::rowDecimals(scaleNo, k);
        f.format = ParamBlock::rowFormat(scaleNo, k);
        values << Val(Block::shown(f, raw[k]));
    }
    return values;
}

BlockFault wrongSize(int words, int given)
{
    return {std::min(words, given), QStringLiteral("%1 words expected, %2 given").arg(words).arg(given)};
}
}  // namespace

namespace ParamBlock {

bool rowShown(int scaleNo, int k)
{
    const RowPlan* p = planOf(scaleNo, k);
    if (!p)
        return !validScale(scaleNo) ? !in(k, {11, 12, 14}) : true;
    if (p->cap == Cap::Hidden)
        return false;
    if (p->cap == Cap::Material)
        return !BinName[size_t(p->bin)].isEmpty();
    return true;
}

QString caption(int scaleNo, int k)
{
    if (k < 0 || k >= kWords)
        return QString();
    const RowPlan* p = planOf(scaleNo, k);
    if (!p)
        return ownCaption(k);
    switch (p->cap) {
    case Cap::Material:
        return Left(BinName[size_t(p->bin)], 26) + text("CANSD053", "落差调整值");
    case Cap::M1:
        return QStringLiteral("M1") + ownCaption(k);
    case Cap::M2:
        return QStringLiteral("M2") + ownCaption(k);
    case Cap::SlowFeed10:
        // This caption is the form's own, chosen by the language number.
        return LangNo == 2 ? QStringLiteral("The value of accurate feeding") : QStringLiteral("慢速配料值");
    case Cap::Own:
    case Cap::Hidden:
        break;
    }
    return ownCaption(k);
}

int screenRow(int scaleNo, int k)
{
    const RowPlan* p = planOf(scaleNo, k);
    return p ? p->row : 0;
}

QString rowFormat(int scaleNo, int k)
{
    if (k <= 1)
        return QStringLiteral("#0.0");
    if (k == 2)
        return QStringLiteral("#0");
    return WeightFormat(scaleDecimals(scaleNo));
}

// Row 2 shows whole seconds and is yet stored in tenths.
int rowDecimals(int scaleNo, int k) { return k <= 2 ? 1 : scaleDecimals(scaleNo); }

QString rowEnding(int k) { return k <= 2 ? QStringLiteral(")S") : QStringLiteral(")Kg"); }

QList<BoxCheck> boxChecks(int scaleNo)
{
    struct Fixed {
        const char* key;
        const char* text;
    };
    constexpr Fixed kAlways[11] = {
        {"CANSD027", "请检查!超扣补秤脉冲时间的范围为:"}, {"CANSD028", "请检查!脉冲补称时间的范围为:"},
        {"CANSD029", "请检查!卸料延时控制时间的范围为:"}, {"CANSD030", "请检查!按键归零允许范围为:"},
        {"CANSD031", "请检查!卸料时的零位范围为:"},       {"CANSD032", "请检查!卸料允许误差值范围为:"},
        {"CANSD033", "请检查!扣称提前量最大值为:"},       {"CANSD034", "请检查!扣称提前量调整值为:"},
        {"CANSD035", "请检查!计量允许误差值为:"},         {"CANSD036", "请检查!计量落差调整最大值为:"},
        {"CANSD037", "请检查!计量落差调整值为:"},
    };
    QList<BoxCheck> checks;
    for (int k = 0; k < 11; ++k)
        checks << BoxCheck{RangeTest::Always, text(kAlways[k].key, kAlways[k].text), rowEnding(k)};

    // Rows 11, 12 and 14 are judged only where the scale shows them.
    const QString kg = rowEnding(3);
    auto whileShown = [&](int k, const QString& message) {
        return BoxCheck{rowShown(scaleNo, k) ? RangeTest::Always : RangeTest::Never, message, kg};
    };
    const QString slowFeed = QStringLiteral("请检查!慢速配料值范围为:");
    checks << whileShown(11, text("CANSD037", "请检查!M2计量落差调整值为:"));
    if (scaleNo == 10)
        checks << whileShown(12, slowFeed);
    else if (scaleNo >= 11)
        checks << whileShown(12, text("CANSD037", "请检查!M2计量落差调整值为:"));
    else
        checks << whileShown(12, text("CANSD037", "请检查!M3计量落差调整值为:"));
    if (scaleNo == 8)
        checks << BoxCheck{RangeTest::Always, text("CANSD037", "请检查!M4计量落差调整值为:"), kg};
    else if (in(scaleNo, {6, 9, 10}))
        checks << BoxCheck{RangeTest::Never, QString(), kg};
    else
        checks << BoxCheck{RangeTest::Always, text("CANSD038", "请检查!慢速配料值范围为:"), kg};
    if (scaleNo == 8 || scaleNo == 9)
        checks << whileShown(14, slowFeed + QLatin1Char('('));
    else
        checks << BoxCheck{RangeTest::Never, QString(), kg};
    return checks;
}

namespace {
struct RelationTexts {
    QString zero, lead, fall, fall2, fall3, fall4;
};
RelationTexts relationTexts()
{
    return {text("CANSD039", "零位范围不应大于卸料允许误差值!"),
            text("CANSD040", "扣称提前量不应大于扣称提前量最大值!"),
            text("CANSD041", "落差调整值不应大于落差调整最大值!"),
            text("CANSD042", "M2落差调整值不应大于落差调整最大值!"),
            text("CANSD043", "M3落差调整值不应大于落差调整最大值!"),
            text("CANSD044", "M4落差调整值不应大于落差调整最大值!")};
}

QList<Relation> relationsOf(int scaleNo, bool live)
{
    const RelationTexts t = relationTexts();
    QList<Relation> r = {{5, 4, t.zero}, {6, 7, t.lead}, {9, 10, t.fall}};
    if (in(scaleNo, {6, 8, 9, 10}))
        r << Relation{9, 11, t.fall2};
    // The additive scales only warn about their second material: the check lets it pass.
    if (live && in(scaleNo, {11, 12, 13}))
        r << Relation{9, 12, t.fall2};
    if (scaleNo == 8 || scaleNo == 9)
        r << Relation{9, 12, t.fall3};
    if (scaleNo == 8)
        r << Relation{9, 13, t.fall4};
    return r;
}
}  // namespace

QList<Relation> relations(int scaleNo) { return relationsOf(scaleNo, false); }
QList<Relation> liveRelations(int scaleNo) { return relationsOf(scaleNo, true); }

BlockFault firstFault(const QList<double>& shown, const QStringList& low, const QStringList& high,
                      const QList<BoxCheck>& checks, const QList<Relation>& relations)
{
    for (int k = 0; k < shown.size() && k < checks.size(); ++k) {
        const BoxCheck& c = checks[k];
        if (c.test == RangeTest::Never)
            continue;
        const double v = shown[k];
        if (Val(high.value(k)) < v || Val(low.value(k)) > v)
            return {k, c.message + QLatin1Char('(') + low.value(k) + QLatin1Char('-') + high.value(k) + c.ending};
    }
    for (const Relation& r : relations)
        if (shown.value(r.low) < shown.value(r.high))
            return {r.high, r.text};
    return {};
}

BlockFault checkShown(int scaleNo, const QList<double>& shown)
{
    const LimitTexts limits = LoadLimits(scaleNo);
    return firstFault(shown, limits.low, limits.high, boxChecks(scaleNo), relations(scaleNo));
}

BlockFault check(int scaleNo, const QList<int>& raw)
{
    if (raw.size() != kWords)
        return wrongSize(kWords, int(raw.size()));
    return checkShown(scaleNo, shownValues(scaleNo, raw));
}

BlockLayout layout(int scaleNo)
{
    if (!validScale(scaleNo))
        return {};
    BlockLayout l{QStringLiteral("scale%1.params").arg(twoDigits(scaleNo)),
                  scaleTitle(scaleNo),
                  ParamDeviceOf(scaleNo),
                  kWords,
                  {}};
    for (int k = 0; k < kWords; ++k)
        l.fields << BlockField{QStringLiteral("p") + twoDigits(k),
                               caption(scaleNo, k),
                               rowDecimals(scaleNo, k),
                               rowFormat(scaleNo, k),
                               true,
                               rowShown(scaleNo, k),
                               0};
    return l;
}

BlockLayout optionLayout(int scaleNo)
{
    if (!validScale(scaleNo))
        return {};
    // Bits 0 to 3 are the first digit, bits 4 to 7 the last; the middle two belong to the scales beside it.
    return {QStringLiteral("scale%1.options").arg(twoDigits(scaleNo)),
            scaleTitle(scaleNo),
            OptionDeviceOf(scaleNo),
            1,
            {BlockField{QStringLiteral("bits"), text("CANSD002", "功能选项"), 0, QString(), true, true, 0xF00F}}};
}

QList<int> defaults(int scaleNo)
{
    if (!validScale(scaleNo))
        return {};
    // As "初始化参数" writes them: the box takes the text, is formatted by its row and scaled.
    const LimitTexts limits = LoadLimits(scaleNo);
    QList<int> raw;
    for (int k = 0; k < kWords; ++k) {
        const double shown = Val(Format(Val(limits.deflt.value(k)), rowFormat(scaleNo, k)));
        raw << CLng(shown * std::pow(10.0, rowDecimals(scaleNo, k)));
    }
    return raw;
}

QList<int> optionDefaults(int scaleNo) { return validScale(scaleNo) ? QList<int>{0} : QList<int>{}; }

}  // namespace ParamBlock
