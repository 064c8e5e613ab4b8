#include "params/cansd_ag.h"

#include "common/module1.h"
#include "common/own_text.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "link/live_data.h"
#include "common/lang.h"

#include <QLineEdit>
#include <cmath>

namespace {
int decimals()
{
    return ScaleNo >= 0 && ScaleNo < int(ScaleDecimals.size()) ? ScaleDecimals[size_t(ScaleNo)] : 0;
}
}  // namespace

CansdAG::CansdAG() : ParamEditor(QStringLiteral("CansdAG"), 20, 12, "Cansdag")
{
    // The common rows on the left, the per-material rows on the right.
    for (int k = 0; k < 8; ++k)
        placeRow(k, 0, k + 1);
    for (int k = 8; k < 20; ++k)
        placeRow(k, 1, k - 7);
    for (QLabel* l : LblSubTitle)
        l->hide();
    loadForm();
}

QString CansdAG::blockDevice() const { return ParamDeviceAG; }

QString CansdAG::boxFormat(int k) const
{
    if (k == 0 || k == 5)
        return QStringLiteral("#0");
    if (k <= 4)
        return QStringLiteral("#0.0");
    return WeightFormat(decimals());
}

// Box 0 is shown in tenths but written by the digits of the scale: the form's settled behaviour.
double CansdAG::writeFactor(int k) const { return k >= 1 && k <= 5 ? 10.0 : std::pow(10.0, decimals()); }

QString CansdAG::allowedKeys(int k) const
{
    return k == 0 || k == 5 ? QStringLiteral("1234567890") : QStringLiteral("1234567890.");
}

BoxHelp CansdAG::helpOnClick(int k) const { return TipText.value(k).isEmpty() ? BoxHelp::HideTip : BoxHelp::Show; }

void CansdAG::LoadCaptions()
{
    auto material = [](int m) { return QStringLiteral("M%1 ").arg(m); };
    // These three captions are the form's own: the language file has no entry for them.
    LblCansd[0]->setText(OwnText::tr("延时检查超差时间"));
    LblCansd[5]->setText(OwnText::tr("卸料延时控制时间"));
    LblCansd[6]->setText(OwnText::tr("按键归零范围"));
    LblCansd[7]->setText(text("CANSD009", "零位范围"));
    // The blank that glues a language text to a name is not wanted after "M1 ".
    for (int m = 1; m <= 4; ++m) {
        LblCansd[m]->setText(material(m) + Trim(text("CANSD006", "脉冲补称时间")));
        LblCansd[7 + m]->setText(material(m) + Trim(text("CANSD013", "计量允许误差值")));
        LblCansd[11 + m]->setText(material(m) + Trim(text("CANSD014", "落差调整最大值")));
        LblCansd[15 + m]->setText(material(m) + Trim(text("CANSD053", "落差调整值")));
    }
    for (int k = 0; k < 20; ++k)
        Label8[k]->setText(k <= 5 ? QStringLiteral("S") : QStringLiteral("Kg"));

    // The help of each row is that of the same quantity on Cansd.
    const QString topUp = text("CANSD055", "说明:补称时间和补称量成正比,每次的补称量不可以大于两倍的允许误差。                                        [关闭]");
    const QString tolerance = text("CANSD056", "说明:计量停止后系统自动进行偏差检查,") + QStringLiteral("  ") +
                              text("CANSD083", "如果负偏差绝对值大于允许误差设定值,将根据设定的补称时间开启执行机构进行脉冲补称。                    [关闭]");
    const QString fallMax = text("CANSD057", "说明:防止落差的错误调整,设定值为落差调整值的两倍。                                                        [关闭]");
    const QString fall = text("CANSD058", "说明:降低供料速度可减小和稳定落差,提高配料精度。                                                [关闭]");
    TipText = QStringList(20);
    TipText[5] = text("CANSD060", "说明:卸料过程当重量显示值下降到零位范围时,系统经延时控制时间后关闭执行机构。                        [关闭]");
    TipText[6] = text("CANSD061", "说明:当称值小于设定范围时，允许操作归零键进行去皮操作。") + QStringLiteral("  ") +
                 text("CANSD084", "当按键归零和零位跟踪累加值大于此设定值时系统禁止按键归零和零位跟踪功能。          [关闭]");
    TipText[7] = text("CANSD062", "说明:卸料过程当重量显示值下降到零位范围时,系统经延时控制时间后关闭执行机构。                        [关闭]");
    for (int m = 0; m < 4; ++m) {
        TipText[1 + m] = topUp;
        TipText[8 + m] = tolerance;
        TipText[12 + m] = fallMax;
        TipText[16 + m] = fall;
    }
}

void CansdAG::LayoutForScale()
{
    lblFormTitle->setText(ScaleTitle);
    const LimitTexts t = LoadLimitsAG();
    LowLimit = t.low;
    HighLimit = t.high;
    DefaultValue = t.deflt;

    const QString s = QStringLiteral(")S"), kg = QStringLiteral(")Kg");
    checks_[0] = {RangeTest::Always, text("CANSD027", "请检查!计量延时检查超差时间的范围为:"), s};
    checks_[5] = {RangeTest::Always, text("CANSD029", "请检查!卸料延时控制时间的范围为:"), s};
    checks_[6] = {RangeTest::Always, text("CANSD030", "请检查!按键归零允许范围为:"), kg};
    checks_[7] = {RangeTest::Always, text("CANSD031", "请检查!卸料时的零位范围为:"), kg};
    for (int m = 0; m < 4; ++m) {
        checks_[1 + m] = {RangeTest::Always, text("CANSD028", "请检查!脉冲补称时间的范围为:"), s};
        checks_[8 + m] = {RangeTest::Always, text("CANSD035", "请检查!计量允许误差值为:"), kg};
        checks_[12 + m] = {RangeTest::Always, text("CANSD036", "请检查!计量落差调整最大值为:"), kg};
        checks_[16 + m] = {RangeTest::Always, text("CANSD037", "请检查!计量落差调整值为:"), kg};
    }
    relations_ = {{12, 16, text("CANSD041", "M1落差调整值不应大于落差调整最大值!")},
                  {13, 17, text("CANSD042", "M2落差调整值不应大于落差调整最大值!")},
                  {14, 18, text("CANSD043", "M3落差调整值不应大于落差调整最大值!")},
                  {15, 19, text("CANSD044", "M4落差调整值不应大于落差调整最大值!")}};
    liveRelations_ = relations_;
    liveRelations_[0].text = text("CANSD041", "落差调整值不应大于落差调整最大值!");
    SetRangeHints(LowLimit, HighLimit);
}
