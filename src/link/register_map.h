#pragma once
// The registers and bits the console touches in the controller's fixed program.
#include <QString>
#include <array>

struct ScaleDevices {
    const char* zero;    // CalZeroDevice: starts the zero calibration
    const char* span;    // CalSpanDevice: starts the span calibration
    const char* weight;  // CalWeightDevice: takes the test weight
    const char* option;  // OptionDevice: first of the scale's eight option bits
    const char* param;   // ParamDevice: the scale's 15-word parameter block
};

// Indices 6 and 10 lie apart from the others: that is the allocation in the controller's program.
inline constexpr std::array<ScaleDevices, 14> kScaleDevices = {{
    {"S181", "S182", "D43", "S500", "D300"},
    {"S183", "S184", "D44", "S508", "D315"},
    {"S185", "S186", "D45", "S516", "D330"},
    {"S187", "S188", "D46", "S524", "D345"},
    {"S189", "S190", "D47", "S532", "D360"},
    {"S191", "S192", "D48", "S540", "D375"},
    {"S205", "S206", "D49", "S548", "D390"},
    {"S193", "S194", "D50", "S556", "D405"},
    {"S195", "S196", "D51", "S564", "D420"},
    {"S197", "S198", "D52", "S572", "D435"},
    {"S207", "S208", "D53", "S580", "D450"},
    {"S199", "S200", "D54", "S588", "D465"},
    {"S201", "S202", "D55", "S596", "D480"},
    {"S203", "S204", "D56", "S604", "D495"},
}};

// Blocks of registers
inline constexpr char kLiveBlock[] = "D11";  // 16 AD values, then 16 weights
inline constexpr short kLiveWords = 32;
inline constexpr char kSensorBlock[] = "D200";
inline constexpr short kSensorWords = 14;
inline constexpr char kTimesBlock[] = "D215";
inline constexpr short kTimesWords = 6;
inline constexpr char kVibratorBlock[] = "D272";
inline constexpr short kVibratorWords = 28;
inline constexpr char kHoistPulses[] = "D291";
inline constexpr short kHoistPulseWords = 5;
inline constexpr char kHoistDecel[] = "D294";
inline constexpr short kHoistDecelWords = 2;
inline constexpr short kParamWords = 15;
inline constexpr short kParamWordsAG = 20;

// Bit groups moved as two bytes
inline constexpr char kOtherOptions[] = "S500";
inline constexpr char kSystemOptions[] = "S612";  // zero tracking and system options
inline constexpr char kCalStatus[] = "S998";      // S999 accepted, S998 refused
inline constexpr char kInitStatus[] = "S999";     // the same two bytes as S998
inline constexpr char kJogOutputs[] = "Y62";

// Command bits, pulsed: operand, then "0000"
inline constexpr char kFanBit[] = "S209";
inline constexpr char kDustValveBit[] = "S210";
inline constexpr char kHardwareInitBit[] = "S211";  // the controller clears it itself
inline constexpr char kFactoryBit[] = "S212";
inline constexpr char kHoistStartBit[] = "S213";
inline constexpr char kHoistCancelBit[] = "S214";

inline QString ParamDeviceOf(int scale) { return QStringLiteral("D%1").arg(300 + 15 * scale); }
inline QString OptionDeviceOf(int scale) { return QStringLiteral("S%1").arg(500 + 8 * scale); }
