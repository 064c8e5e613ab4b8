#pragma once
// How a weight held in units of the scale's decimals is shown.
#include <QString>

// "#0" for no decimals, otherwise "#0." and one "0" per decimal.
QString WeightFormat(int decimals);
// The raw register v as the scale's weight text.
QString WeightText(double raw, int decimals);
