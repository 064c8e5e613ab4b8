#pragma once
// Blocks read from the controller, turned into what an operator reads.
#include "common/weight_format.h"

#include <QString>
#include <array>

void DisplayADAndWeight();
void DisplayADAndWeightAdvance();  // stands ready for the hoist form; shows nothing
void ShowCansdValues();
void ShowCansdAGBlock();
void ShowZDTimeBlock();
void ShowSensorBlock();

// The forms' base copies: the values as first read, against which unsaved changes are found.
inline std::array<double, 20> CansdBaseline{};
inline std::array<double, 14> SensorBaseline{};
