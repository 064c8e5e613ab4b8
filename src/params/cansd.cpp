#include "params/cansd.h"

#include "common/module1.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "common/lang.h"
#include "params/param_block.h"

#include <QCheckBox>
#include <QFrame>
#include <QLineEdit>
#include <cmath>

namespace {
// Fixed places: column 0 is metering, column 1 discharge; rows count from 1.
struct Place {
    int column, row;
};
constexpr Place kPlaces[15] = {{1, 7}, {0, 3}, {1, 4}, {1, 1}, {1, 3}, {1, 2}, {1, 5}, {1, 6},
                               {0, 2}, {0, 4}, {0, 5}, {0, 6}, {0, 7}, {0, 1}, {0, 8}};

// The material slots of the scales that name their materials.
struct Materials {
    int scale, first, count;
};
constexpr Materials kMaterials[] = {{6, 6, 2}, {8, 9, 4}, {9, 13, 3}, {10, 16, 2}};
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

QString Cansd::boxFormat(int k) const { return ParamBlock::rowFormat(ScaleNo, k); }

double Cansd::writeFactor(int k) const { return std::pow(10.0, ParamBlock::rowDecimals(ScaleNo, k)); }

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
        LblCansd[k]->setText(ParamBlock::caption(ScaleNo, k));
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

    if (ScaleNo >= 0 && ScaleNo < ParamBlock::kScales) {
        // The materials of the scale take its caption: the global table is renamed on every load.
        for (const Materials& m : kMaterials)
            if (m.scale == ScaleNo)
                for (int p = 0; p < m.count; ++p)
                    if (!BinName[size_t(m.first + p)].isEmpty())
                        BinName[size_t(m.first + p)] = ScaleCaption + QStringLiteral("M%1").arg(p + 1);

        for (int k = 10; k < 15; ++k) {
            LblCansd[k]->setText(ParamBlock::caption(ScaleNo, k));
            const bool shown = ParamBlock::rowShown(ScaleNo, k);
            if (ParamBlock::screenRow(ScaleNo, k) > 0)
                placeRow(k, 0, ParamBlock::screenRow(ScaleNo, k));
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
    checks_ = ParamBlock::boxChecks(ScaleNo);
    relations_ = ParamBlock::relations(ScaleNo);
    liveRelations_ = ParamBlock::liveRelations(ScaleNo);
}
