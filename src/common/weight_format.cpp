#include "common/weight_format.h"

#include "common/vbtext.h"

#include <cmath>

QString WeightFormat(int decimals)
{
    if (decimals == 0)
        return QStringLiteral("#0");
    return QStringLiteral("#0.") + QString(decimals, QLatin1Char('0'));
}

QString WeightText(double raw, int decimals) { return Format(raw / std::pow(10.0, decimals), WeightFormat(decimals)); }
