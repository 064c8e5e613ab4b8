#include "calibration/bc_but_humid.h"

#include "common/module1.h"
#include "common/form_access.h"
#include "common/lang.h"

namespace {
struct Probe {
    short scale;
    const char* key;
    const char* caption;
    const char* zero;
    const char* span;
    const char* value;
};
// The probes reuse the bits of scale slots 4 and 5 and two words of the live block.
constexpr Probe kProbes[2] = {
    {4, "BCBUT007", "骨料3", "S189", "S190", "D29"},
    {5, "BCBUT008", "骨料4", "S191", "S192", "D30"},
};
constexpr int kWidth = 420;
}  // namespace

BcButHumid::BcButHumid() : FormBase(QStringLiteral("BcButHumid"))
{

    const QString title = LangText(QStringLiteral("HUMIDFORM"), QStringLiteral("HUMID001"), QStringLiteral("湿度标定 "));
    lblFormTitle = addTitle(QStringLiteral("lblFormTitle"), title, {0, 10, kWidth, 36}, 20);
    ImageExit = addExitImage(QStringLiteral("ImageExit"), {kWidth - 44, 10});
    LblBdTitle = addLabel(QStringLiteral("LblBdTitle"), title, {20, 60, kWidth - 40, 28});
    LblBdTitle->setStyleSheet(QStringLiteral("font-weight: bold; color: #404040;"));

    for (int i = 0; i < 2; ++i) {
        const Probe& p = kProbes[i];
        ImgBd[i] = addImageButton(this, QStringLiteral("ImgBd(%1)").arg(p.scale), QStringLiteral("LblBd(%1)").arg(p.scale),
                                  {40 + 180 * i, 100, 124, 44}, ButtonSize::Scale,
                                  LangText(QStringLiteral("LANBCBUTFORM"), QLatin1String(p.key), QString::fromUtf8(p.caption)),
                                  [this, i] { probeClicked(i); });
    }
    ImgReturn = addImageButton(this, QStringLiteral("ImgReturn"), QStringLiteral("lblReturn"), {kWidth - 116, 170, 96, 32},
                               ButtonSize::Small, ComText(QStringLiteral("COM003"), QStringLiteral("返回")), [this] {
                                   unloadLater();
                                   Forms::show(QStringLiteral("PLC"));
                               });
    setFixedSize(kWidth, 220);
}

void BcButHumid::probeClicked(int index)
{
    const Probe& p = kProbes[index];
    ScaleNo = p.scale;
    ScaleTitle = ImgBd[index].caption->text() + QLatin1Char(' ') + lblFormTitle->text();
    CalZeroDevice = QLatin1String(p.zero);
    CalSpanDevice = QLatin1String(p.span);
    CalWeightDevice = QLatin1String(p.value);
    Forms::show(QStringLiteral("YIBiaoHumidNew"));
    hide();
}
