#pragma once
// The shared store: link state, flags by which forms and timers talk, devices of the selected scale,
// language and message-box globals. Flags, 16-bit booleans in BASIC, are held as bool.
#include <QString>
#include <array>
#include <functional>

// Link state
inline short StepNo = 444;  // 444: no reply is wanted
inline bool SendFlag = true;
inline short ExpectedReplyLen = 0;
inline QString WriteImage = QString(152, QLatin1Char(' '));
// WriteImage is a fixed-length text: what is stored in it is padded with blanks or cut to 152, so an
// empty slot result blanks the whole image and the frame keeps its width.
inline void StoreWriteImage(const QString& text) { WriteImage = text.left(152).leftJustified(152, QLatin1Char(' ')); }
inline short PortNo = 2;

// Polling and one-shot command flags
inline bool LiveReadDone = false, InitPollDue = false, HoistPollOn = false;
inline bool ZeroRequest = false, SpanRequest = false, HoistCmdPending = false;

// Saved flags of the editors and first-load flags of the spreading routines
inline bool ParamSetDone = false, WriteDoneZDTime = false, WriteDoneSensor = false, TimesSaved = false,
            HoistParamSaved = false, OptionDone = false;
inline bool BaselineTaken = false, ZDTimeLoaded = false, SensorLoaded = false;
inline bool HumidActive = false;
inline bool IsCurrentCal = false;

// Plant forms: the sensor form's names for the flags the dispatch sets, and the tries at the factory
// gate, which count for the whole run however often the form is left.
inline bool& SensorSaved = WriteDoneSensor;
inline bool& SensorReadDone = SensorLoaded;
inline short FactoryWrongCodes = 0;

// Plant times and vibrator times
inline std::array<double, 7> SavedTime{};  // the plant times as last read, in seconds; 0 to 5 in use
inline std::array<double, 28> SavedVib{};  // the vibrator times as first shown after a read
// The vibrator form's names for the flags the dispatch sets after steps 71 and 72.
inline bool& VibSaved = WriteDoneZDTime;
inline bool& VibReadDone = ZDTimeLoaded;

// Selected scale and its devices
inline short ScaleNo = 0;
inline QString ScaleTitle, ScaleTitle2;
inline QString ScaleCaption;  // caption of the clicked menu entry; names the materials of a scale
inline QString WriteData;     // data digits of the option write in flight
inline QString ParamDevice, ParamDeviceAG, OptionDevice, CalZeroDevice, CalSpanDevice, CalWeightDevice, CalBitMask;
inline QString CalOperation;

// Navigation
inline short MenuMode = 0;
inline QString MenuTitle;       // caption of the main menu entry that opened BcBut
inline QString ParamFormTitle;  // caption of LblSel(1), title of the parameter forms
inline QString CurrentForm;     // name of the form last activated
inline bool GatePassed = false;

// Language
inline short LangNo = 1;
inline QString ProfileFile;
inline const QString LangCommon = QStringLiteral("LANCOMMON");

// Own message box
inline QString MbText;
inline bool MbIsOk = true, MbIsError = false, MbResult = false;
// Shows MbQuestion modally with the globals above; returns when it is unloaded.
void ShowMbQuestion();
// The box with OK alone; its answer means nothing, so MbResult is cleared afterwards.
void ShowOkBox(const QString& text, bool error);
void UnloadMbQuestion();  // unloads the box if it is showing

// Ends the program after the main form's exit path: forms unloaded, event loop left. Tests replace it.
inline std::function<void()> EndProgramHook;
void EndProgram();

// Ends the process at once (the fifth wrong access code at a gate). Tests replace it.
inline std::function<void(int)> EndProcess;
void EndProcessNow(int code);

constexpr int kColorGreen = 0x008000;
constexpr int kColorRed = 0x0000FF;  // BGR value FF: red
