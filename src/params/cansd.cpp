#include "params/cansd.h"

#include "common/module1.h"
#include "common/own_text.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "link/live_data.h"
#include "common/lang.h"

#include <QCheckBox>
#include <QFrame>
#include <QLineEdit>
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

// Fixed places: column 0 is metering, column 1 discharge; rows count from 1.
struct Place {
    int column, row;
};
constexpr Place kPlaces[15] = {{1, 7}, {0, 3}, {1, 4}, {1, 1}, {1, 3}, {1, 2}, {1, 5}, {1, 6},
                               {0, 2}, {0, 4}, {0, 5}, {0, 6}, {0, 7}, {0, 1}, {0, 8}};

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
    &kPlanAggregate, &kPlanAggregate, &kPlanAggregate, &kPlanAggregate, &kPlanAggregate, &kPlanAggregate, &kPlan6,
    &kPlanAggregate, &kPlan8,         &kPlan9,         &kPlan10,        &kPlanAdditive,  &kPlanAdditive,  &kPlanAdditive,
};

// The material slots of the scales that name their materials.
struct Materials {
    int scale, first, count;
};
constexpr Materials kMaterials[] = {{6, 6, 2}, {8, 9, 4}, {9, 13, 3}, {10, 16, 2}};

bool in(int v, std::initializer_list<int> set) { return std::find(set.begin(), set.end(), v) != set.end(); }

int decimals()
{
    return ScaleNo >= 0 && ScaleNo < int(ScaleDecimals.size()) ? ScaleDecimals[size_t(ScaleNo)] : 0;
}
}  // namespace

Cansd::Cansd() : ParamEditor(QStringLiteral("Cansd"), 15, 8, "Cansd")
{
    for (int k = 0; k < 15; ++k)
        placeRow(k, kPlaces[k].column, kPlaces[k].row);
    for (int k : {11, 12, 14})
        setRowVisible(k, false);
    loadForm();
}

QString Cansd::blockDevice() const { return ParamDevice; }
bool& Cansd::optionArmed() { return OptionDone; }
bool Cansd::recordModeApart() const { return ScaleNo == 0; }

QString Cansd::boxFormat(int k) const
{
    if (k <= 1)
        return QStringLiteral("#0.0");
    if (k == 2)
        return QStringLiteral("#0");
    return WeightFormat(decimals());
}

double Cansd::writeFactor(int k) const { return k <= 2 ? 10.0 : std::pow(10.0, decimals()); }

QString Cansd::allowedKeys(int k) const
{
    return k == 2 ? QStringLiteral("1234567890") : QStringLiteral("1234567890.");
}

BoxHelp Cansd::helpOnClick(int k) const
{
    if (k == 11)
        return BoxHelp::HideTip;
    // Box 13 of the cement scale is a fall correction and has no help of its own.
    if (k == 13 && ScaleNo == 8)
        return BoxHelp::Nothing;
    return BoxHelp::Show;
}

void Cansd::LoadCaptions()
{
    LblSubTitle[0]->setText(text("CANSD003", "计量参数"));
    LblSubTitle[1]->setText(text("CANSD004", "卸料参数"));
    for (int k = 0; k < 15; ++k) {
        const Caption& c = kCaptions[k];
        LblCansd[k]->setText(QByteArray(c.key).startsWith("COM") ? ComText(QLatin1String(c.key), QString::fromUtf8(c.text))
                                                                 : text(c.key, c.text));
        Label8[k]->setText(k <= 2 ? QStringLiteral("S") : QStringLiteral("Kg"));
    }

    auto two = [this](const char* k1, const char* t1, const char* k2, const char* t2) {
        return text(k1, t1) + QStringLiteral("  ") + text(k2, t2);
    };
    const QString slowFeed =
        text("CANSD059", "说明:计量到剩余慢速配料值时快速口关闭，保留慢速口进行精配料。                               [关闭]");
    const QString feedRate =
        text("CANSD058", "说明:降低供料速度可减小和稳定落差,提高配料精度。                                                [关闭]");
    TipText = QStringList(15);
    TipText[0] = text("CANSD054", "超扣补卸脉冲时间:当扣秤多扣时，通过该时间来再次卸料，以达到更高的计量精度 。                       [关闭]");
    TipText[1] = text("CANSD055", "说明:补称时间和补称量成正比,每次的补称量不可以大于两倍的允许误差。                                        [关闭]");
    TipText[2] = text("CANSD060", "说明:卸料过程当重量显示值下降到零位范围时,系统经延时控制时间后关闭执行机构。                        [关闭]");
    TipText[3] = two("CANSD061", "说明:当称值小于设定范围时，允许操作归零键进行去皮操作。", "CANSD084",
                     "当按键归零和零位跟踪累加值大于此设定值时系统禁止按键归零和零位跟踪功能。          [关闭]");
    TipText[4] = text("CANSD062", "说明:卸料过程当重量显示值下降到零位范围时,系统经延时控制时间后关闭执行机构。                        [关闭]");
    TipText[5] = text("CANSD063", "说明:卸料前偏差大于允许误差值,将执行扣称功能。                                                    [关闭]");
    TipText[6] = text("CANSD064", "说明:防止提前量的错误调整,设定值为提前量调整值的两倍。                                            [关闭]");
    TipText[7] = text("CANSD065", "说明:执行扣称功能时，当重量显示值下降到超称值+提前量时卸料执行机构关闭。                          [关闭]");
    TipText[8] = two("CANSD056", "说明:计量停止后系统自动进行偏差检查,", "CANSD083",
                     "如果负偏差绝对值大于允许误差设定值,将根据设定的补称时间开启执行机构进行脉冲补称。                    [关闭]");
    TipText[9] = text("CANSD057", "说明:防止落差的错误调整,设定值为落差调整值的两倍。                                                        [关闭]");
    TipText[10] = feedRate;
    TipText[12] = ScaleNo == 10 ? slowFeed : feedRate;
    const bool slowMoved = ScaleNo == 8 || ScaleNo == 9;
    TipText[13] = slowMoved ? QString() : slowFeed;
    TipText[14] = slowMoved ? slowFeed : QString();
}

void Cansd::LayoutForScale()
{
    lblFormTitle->setText(ScaleTitle);
    fallCaption_ = text("CANSD053", "落差调整值");

    // The water scale neither deducts nor chooses a record mode.
    const bool deducts = ScaleNo != 7;
    for (int bit : {3, 4}) {
        FraTzfs[bit]->setVisible(deducts);
        LblTzfs[bit]->setVisible(deducts);
        Check1[2 * bit]->setVisible(deducts);
        Check1[2 * bit + 1]->setVisible(deducts);
    }
    ImgHelp[4].image->setVisible(deducts);
    ImgHelp[3].image->hide();

    if (ScaleNo >= 0 && ScaleNo < int(kPlanOfScale.size())) {
        // The materials of the scale take its caption: the global table is renamed on every load.
        for (const Materials& m : kMaterials)
            if (m.scale == ScaleNo)
                for (int p = 0; p < m.count; ++p)
                    if (!BinName[size_t(m.first + p)].isEmpty())
                        BinName[size_t(m.first + p)] = ScaleCaption + QStringLiteral("M%1").arg(p + 1);

        const MeteringPlan& plan = *kPlanOfScale[size_t(ScaleNo)];
        for (int i = 0; i < 5; ++i) {
            const int k = 10 + i;
            const RowPlan& r = plan[size_t(i)];
            bool shown = true;
            switch (r.cap) {
            case Cap::Hidden:
                shown = false;
                break;
            case Cap::Own:
                break;
            case Cap::Material:
                shown = !BinName[size_t(r.bin)].isEmpty();
                LblCansd[k]->setText(Left(BinName[size_t(r.bin)], 26) + fallCaption_);
                break;
            case Cap::M1:
                LblCansd[k]->setText(QStringLiteral("M1") + LblCansd[k]->text());
                break;
            case Cap::M2:
                LblCansd[k]->setText(QStringLiteral("M2") + LblCansd[k]->text());
                break;
            case Cap::SlowFeed10:
                // This caption is the form's own, chosen by the language number.
                LblCansd[k]->setText(LangNo == 2 ? QStringLiteral("The value of accurate feeding")
                                                 : QStringLiteral("慢速配料值"));
                break;
            }
            if (r.row > 0)
                placeRow(k, 0, r.row);
            if (shown && (k == 11 || k == 12 || k == 14))
                showSpareRow(k);
            else
                setRowVisible(k, shown);
        }
    }

    LoadLimits();
    loadChecks();
    SetRangeHints(LowLimit, HighLimit);
}

void Cansd::LoadLimits()
{
    const LimitTexts t = ::LoadLimits(ScaleNo);
    LowLimit = t.low;
    HighLimit = t.high;
    DefaultValue = t.deflt;
}

// The blocking check by box and scale, and the relations between boxes.
void Cansd::loadChecks()
{
    const QString s = QStringLiteral(")S"), kg = QStringLiteral(")Kg");
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
    for (int k = 0; k < 11; ++k)
        checks_[k] = {RangeTest::Always, text(kAlways[k].key, kAlways[k].text), k <= 2 ? s : kg};

    const QString slowFeed = OwnText::tr("请检查!慢速配料值范围为:");
    checks_[11] = {RangeTest::WhileVisible, text("CANSD037", "请检查!M2计量落差调整值为:"), kg};
    if (ScaleNo == 10)
        checks_[12] = {RangeTest::WhileVisible, slowFeed, kg};
    else if (ScaleNo >= 11)
        checks_[12] = {RangeTest::WhileVisible, text("CANSD037", "请检查!M2计量落差调整值为:"), kg};
    else
        checks_[12] = {RangeTest::WhileVisible, text("CANSD037", "请检查!M3计量落差调整值为:"), kg};
    if (ScaleNo == 8)
        checks_[13] = {RangeTest::Always, text("CANSD037", "请检查!M4计量落差调整值为:"), kg};
    else if (in(ScaleNo, {6, 9, 10}))
        checks_[13] = {RangeTest::Never, QString(), kg};
    else
        checks_[13] = {RangeTest::Always, text("CANSD038", "请检查!慢速配料值范围为:"), kg};
    if (ScaleNo == 8 || ScaleNo == 9)
        checks_[14] = {RangeTest::WhileVisible, slowFeed + QLatin1Char('('), kg};
    else
        checks_[14] = {RangeTest::Never, QString(), kg};

    const QString zero = text("CANSD039", "零位范围不应大于卸料允许误差值!");
    const QString lead = text("CANSD040", "扣称提前量不应大于扣称提前量最大值!");
    const QString fall = text("CANSD041", "落差调整值不应大于落差调整最大值!");
    const QString fall2 = text("CANSD042", "M2落差调整值不应大于落差调整最大值!");
    const QString fall3 = text("CANSD043", "M3落差调整值不应大于落差调整最大值!");
    const QString fall4 = text("CANSD044", "M4落差调整值不应大于落差调整最大值!");
    relations_ = {{5, 4, zero}, {6, 7, lead}, {9, 10, fall}};
    liveRelations_ = relations_;
    if (in(ScaleNo, {6, 8, 9, 10})) {
        relations_ << Relation{9, 11, fall2};
        liveRelations_ << Relation{9, 11, fall2};
    }
    // The additive scales only warn about their second material: the check lets it pass.
    if (in(ScaleNo, {11, 12, 13}))
        liveRelations_ << Relation{9, 12, fall2};
    if (ScaleNo == 8 || ScaleNo == 9) {
        relations_ << Relation{9, 12, fall3};
        liveRelations_ << Relation{9, 12, fall3};
    }
    if (ScaleNo == 8) {
        relations_ << Relation{9, 13, fall4};
        liveRelations_ << Relation{9, 13, fall4};
    }
}
