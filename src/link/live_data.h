#pragma once
// Blocks read from the controller, turned into what an operator reads.
#include <QString>
#include <array>

// "#0" for no decimals, otherwise "#0." and one "0" per decimal.
QString WeightFormat(int decimals);
// The raw register v as the scale's weight text.
QString WeightText(double raw, int decimals);

void DisplayADAndWeight();
void DisplayADAndWeightAdvance();  // stands ready for the hoist form; shows nothing
void ShowCansdValues();
void ShowCansdAGBlock();
void ShowZDTimeBlock();
void ShowSensorBlock();

// The forms' base copies: the values as first read, against which unsaved changes are found.
inline std::array<double, 20> CansdBaseline{};
inline std::array<double, 14> SensorBaseline{};
