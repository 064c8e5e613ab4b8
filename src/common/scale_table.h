#pragma once
// The scale table and the small files that carry it between runs.
#include <QString>
#include <array>

inline std::array<QString, 16> ScaleName;
inline std::array<QString, 22> BinName;
inline std::array<short, 16> ScaleDecimals{};
inline std::array<short, 16> ScaleVibrator{};
inline std::array<QString, 16> BiaoZeroTime, BiaoZeroADValue, BiaoZeroWTValue;
inline std::array<QString, 16> BiaoWeightTime, BiaoWeightADValue, BiaoWeightWTValue, BiaoWeightFMValue;
inline bool CNameMissing = false;  // CName.ini was not found when LoadCNameIni ran
inline QString OperatorName;
inline short ComPortSetting = 2;   // "COMPort=" of BLZConfig.dat
inline QString ShowCsHelp = "1";   // "IsShowCsHelp="
inline QString Agg1RecordMode;     // "Agg1RecordMode="

void SetDefaultNames();
void LoadCNameIni();
void LoadZDTimeIni();
void LoadBLZConfig();  // runs SetDefaultNames and LoadCNameIni first
void SaveBLZConfig();
void LoadSysData();
QString ReadNetPath();

// Paths of the files, with the fallback from "\Data" to the application folder where the file has one.
QString BLZConfigPath();
QString SysDataPath();
QString CNameIniPath();
QString NetPathIniPath();

// Where each name stands in CName.ini, for its writers: the key of ScaleName(i) in section "Name"
// (i 0..13), and the section and key of BinName(i) (i 0..21).
QString ScaleNameKey(int i);
QString BinNameSection(int i);
QString BinNameKey(int i);
