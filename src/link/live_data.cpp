#include "link/live_data.h"

#include "common/module1.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "common/form_access.h"
#include "link/link_engine.h"

#include <cmath>

namespace {
short decimalsOf(int scale)
{
    if (scale < 0 || scale > 15)
        throw VbError(kErrSubscript, QStringLiteral("Subscript out of range"));
    return ScaleDecimals[scale];
}

// Writes a value into a form's box and, on the first load, keeps what the box shows as the base copy.
template <size_t N>
void spread(const QString& form, const QString& control, const QString& text, std::array<double, N>& base,
            size_t i, bool firstLoad)
{
    SetControlText(form, control, text);
    if (firstLoad && i < N)
        base[i] = Val(ControlText(form, control));
}
}  // namespace

void DisplayADAndWeight()
{
    const QString form = HumidActive ? QStringLiteral("YIBiaoHumidNew") : QStringLiteral("YIBiao");
    const short d = decimalsOf(ScaleNo);
    SetControlText(form, QStringLiteral("LbLADv"), NumText(Val(Link().TxtR.at(ScaleNo))));
    const double weight = Val(Link().TxtR.at(ScaleNo + 16));
    SetControlText(form, QStringLiteral("LblZLv"), WeightText(weight, d));
}

void DisplayADAndWeightAdvance() {}

void ShowCansdValues()
{
    const short d = decimalsOf(ScaleNo);
    const bool first = !BaselineTaken;
    for (int i = 0; i <= 14; ++i) {
        const double v = Val(Link().Pfd.at(i));
        QString text;
        if (i <= 1)
            text = Format(v / 10, QStringLiteral("#0.0"));
        else if (i == 2)
            text = Format(v / 10, QStringLiteral("#0"));
        else
            text = WeightText(v, d);
        spread(QStringLiteral("Cansd"), IndexedName("TxtDCansd", i), text, CansdBaseline, i, first);
    }
    BaselineTaken = true;
}

void ShowCansdAGBlock()
{
    const short d = decimalsOf(ScaleNo);
    const bool first = !BaselineTaken;
    for (int i = 0; i <= 19; ++i) {
        const double v = Val(Link().Pfd.at(i));
        QString text;
        if (i == 0 || i == 5)
            text = Format(v / 10, QStringLiteral("#0"));
        else if (i <= 4)
            text = Format(v / 10, QStringLiteral("#0.0"));
        else
            text = WeightText(v, d);
        spread(QStringLiteral("CansdAG"), IndexedName("TxtDCansd", i), text, CansdBaseline, i, first);
    }
    BaselineTaken = true;
}

void ShowZDTimeBlock()
{
    const bool first = !ZDTimeLoaded;
    for (int i = 0; i <= 27; ++i) {
        const QString text = Format(Val(Link().TxtDCansd.at(i)) / 10, QStringLiteral("#0"));
        spread(QStringLiteral("ZDTime"), IndexedName("TxtDCansd", i), text, SavedVib, i, first);
    }
    ZDTimeLoaded = true;
}

void ShowSensorBlock()
{
    const bool first = !SensorLoaded;
    for (int i = 0; i <= 13; ++i) {
        const double v = Val(ControlText(QStringLiteral("Sensor"), IndexedName("TxtDCansdMulTen", i)));
        spread(QStringLiteral("Sensor"), IndexedName("TxtDCansd", i), WeightText(v, decimalsOf(i)), SensorBaseline, i,
               first);
    }
    SensorLoaded = true;
}
