#include "link/step_table.h"

#include "common/event_yield.h"
#include "common/module1.h"
#include "common/vbtext.h"
#include "common/form_access.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/live_data.h"
#include "link/register_map.h"
#include "common/lang.h"

#include <QCoreApplication>
#include <algorithm>
#include <array>

namespace {

QString plcText(const char* key, const char* deflt)
{
    return LangText(QStringLiteral("LANPLCFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}

void caption(const char* form, const char* label, const char* key, const char* deflt, const QColor& color)
{
    ShowCaption(QLatin1String(form), QLatin1String(label), plcText(key, deflt), color);
}

// The next request of a chain, sent by the dispatch itself.
void chainRead(short step, const QString& device, short bytes)
{
    StepNo = step;
    SendFlag = true;
    send_recieve(BuildReadFrameBytes(device, bytes));
}

void chainWrite(short step, const QString& device, const QString& data)
{
    StepNo = step;
    SendFlag = true;
    send_recieve(GetWrite_TSCMXY(device, data, 4));
}

// Words of a block into a row of boxes; with yield, a timer tick or a click may run between two words.
template <size_t N> void wordsInto(std::array<QString, N>& boxes, const QString& payload, int count, bool yield)
{
    for (int i = 1; i <= count; ++i) {
        boxes.at(i - 1) = NumText(GetWordFromPayload(i, payload));
        if (yield)
            YieldToEvents();
    }
}

void wordsIntoControls(const char* form, const char* name, const QString& payload, int count)
{
    for (int i = 1; i <= count; ++i) {
        SetControlText(QLatin1String(form), IndexedName(name, i - 1), NumText(GetWordFromPayload(i, payload)));
        YieldToEvents();
    }
}

void retry() { Link().RetryRequest(); }

// Parameters of a scale: 8 then 10
void paramsRead(const QString& p)
{
    wordsInto(Link().Pfd, p, 15, true);
    BaselineTaken = false;
    ShowCansdValues();
    chainRead(10, OptionDevice, 2);
}
void paramsWritten(const QString&)
{
    caption("Cansd", "LbLCssdS", "PLC013", "参数设定成功!", kGreen);
    ParamSetDone = true;
}
void paramsRetrying()
{
    caption("Cansd", "LbLCssdS", "PLC014", "正在尝试继续参数设定!", kRed);
    ParamSetDone = false;
}
void optionsRead(const QString& p) { SetSlot("Cansd", "TxtSRead", p); }
void optionsWritten(const QString&)
{
    caption("Cansd", "LblTzxxTip", "PLC029", "选项更改完成!", kGreen);
    OptionDone = true;
}
void optionsRetrying() { caption("Cansd", "LblTzxxTip", "PLC030", "尝试更改选项!", kRed); }

// Calibration options: 20 then 22
void calOptionsRead(const QString& p)
{
    SetSlot("YIBiao", "txtTzxxRead", p);
    chainRead(22, QLatin1String(kSystemOptions), 2);
}
void calModeWritten(const QString&) { caption("YIBiao", "LblTzxxTip", "PLC031", "调校方式已更改!", kGreen); }
void calModeRetrying() { caption("YIBiao", "LblTzxxTip", "PLC032", "尝试更改调校方式!", kRed); }
void zeroTrackRead(const QString& p) { SetSlot("YIBiao", "txtTzxxZeroRead", p); }
// The click only words the tip; once the controller has taken the write it goes.
void zeroTrackWritten(const QString&) { HideControl("YIBiao", "LblTzxxZeroTip"); }
void zeroTrackRetrying() { caption("YIBiao", "LblTzxxZeroTip", "PLC033", "尝试更改零位跟踪功能!", kRed); }

// Plant function settings: 75, 24, 99
void systemOptionsRead(const QString& p)
{
    SetSlot("Other", "TxtSRead", p);
    chainRead(99, QLatin1String(kOtherOptions), 2);
}
void otherOptionsWritten(const QString&) { caption("Other", "LblTzxxTip", "PLC029", "选项更改完成!", kGreen); }
void otherOptionsRetrying() { caption("Other", "LblTzxxTip", "PLC034", "尝试更改时间设定选项!", kRed); }
void otherOptionWordRead(const QString& p) { SetSlot("Other", "TxtSReadPPd", p); }

// Live values
void liveRead(const QString& p)
{
    wordsInto(Link().TxtR, p, 32, true);
    LiveReadDone = true;
    DisplayADAndWeight();
}
void liveFailed()
{
    LiveReadDone = false;
    retry();
}

// Zero and span pulses: operand, "0000", then the status read
void zeroSet(const QString&) { chainWrite(53, CalZeroDevice, QStringLiteral("0000")); }
void zeroCleared(const QString&) { chainRead(59, QLatin1String(kCalStatus), 2); }
void weightWritten(const QString&) { chainWrite(55, CalSpanDevice, CalBitMask); }
void spanSet(const QString&) { chainWrite(56, CalSpanDevice, QStringLiteral("0000")); }
void spanCleared(const QString&) { chainRead(59, QLatin1String(kCalStatus), 2); }
void calStatusRead(const QString& p)
{
    SetSlot(HumidActive ? QStringLiteral("YIBiaoHumidNew") : QStringLiteral("YIBiao"), QStringLiteral("txtBCSuccessRead"), p);
}
void nothing(const QString&) {}

// Hardware initialisation: 57, then 58 polled by Timer1
void initStarted(const QString&)
{
    StepNo = 58;
    Link().Timer1.start();
    Link().InitPollCount = 0;
    SendFlag = true;
    send_recieve(BuildReadFrameBytes(QLatin1String(kInitStatus), 2));
}
void initRefused() { HideControl("BcBut", "LbLCssdS"); }
void initPolled(const QString& p)
{
    SetSlot("BcBut", "TxtSRead", p);
    InitPollDue = true;
}
void initPollFailed()
{
    InitPollDue = false;
    retry();
}

// Factory setting: 62, 61; the success shows as soon as the set is acknowledged
void factorySet(const QString&)
{
    chainWrite(61, QLatin1String(kFactoryBit), QStringLiteral("0000"));
    caption("Factory", "LbLCssdS", "PLC040", "出厂设置成功!", kGreen);
}

// Fan and dust valve: each jog is followed by a read of the outputs
void jogDone(const QString&) { chainRead(67, QLatin1String(kJogOutputs), 2); }
void fanOnRetrying() { caption("Other", "lblFengJiTip", "PLC022", "尝试开启风机!", kRed); }
void fanOffRetrying() { caption("Other", "lblFengJiTip", "PLC024", "尝试关闭风机!", kRed); }
// The valve rows hide the tip they have just written; the fan rows leave theirs showing.
void valveOpenRetrying()
{
    caption("Other", "lblChuChenTip", "PLC026", "尝试开启除尘阀!", kRed);
    HideControl("Other", "lblChuChenTip");
}
void valveCloseRetrying()
{
    caption("Other", "lblChuChenTip", "PLC028", "尝试关闭除尘阀!", kRed);
    HideControl("Other", "lblChuChenTip");
}
void outputsRead(const QString& p) { SetSlot("Other", "TxtSReadFengJi", p); }

// Vibrator times
void vibratorRead(const QString& p)
{
    wordsInto(Link().TxtDCansd, p, 28, true);
    ZDTimeLoaded = false;
    ShowZDTimeBlock();
}
void vibratorWritten(const QString&)
{
    caption("ZDTime", "LbLCssdS", "PLC015", "振动器时间设定成功!", kGreen);
    WriteDoneZDTime = true;
}
void vibratorRetrying()
{
    caption("ZDTime", "LbLCssdS", "PLC016", "正在尝试继续振动器时间设定!", kRed);
    WriteDoneZDTime = false;
}

// Sensor configuration
void sensorRead(const QString& p)
{
    wordsIntoControls("Sensor", "TxtDCansdMulTen", p, 14);
    SensorLoaded = false;
    ShowSensorBlock();
}
void sensorWritten(const QString&)
{
    caption("Sensor", "LbLCssdS", "PLC017", "传感器配置设定成功!", kGreen);
    WriteDoneSensor = true;
}
void sensorRetrying()
{
    caption("Sensor", "LbLCssdS", "PLC018", "正在尝试继续传感器配置设定!", kRed);
    WriteDoneSensor = false;
}

// Plant times
void timesRead(const QString& p)
{
    for (int i = 1; i <= 6; ++i) {
        YieldToEvents();
        const QString twin = IndexedName("TxtDCansdMulTen", i - 1), shown = IndexedName("TxtDCansd", i - 1);
        SetControlText("Other", twin, NumText(GetWordFromPayload(i, p)));
        SetControlText("Other", shown, NumText(Val(ControlText("Other", twin)) / 10));
        SavedTime.at(i - 1) = Val(ControlText("Other", shown));
    }
    chainRead(24, QLatin1String(kSystemOptions), 2);
}
void timesWritten(const QString&)
{
    caption("Other", "LbLCssdS", "PLC019", "时间设定成功!", kGreen);
    TimesSaved = true;
}
void timesRetrying()
{
    caption("Other", "LbLCssdS", "PLC020", "正在尝试继续时间设定!", kRed);
    TimesSaved = false;
}

// Aggregate scale editor: 108 then 110
void paramsAGRead(const QString& p)
{
    wordsInto(Link().Pfd, p, 20, false);
    BaselineTaken = false;
    ShowCansdAGBlock();
    chainRead(110, OptionDevice, 2);
}
void paramsAGWritten(const QString&)
{
    caption("CansdAG", "LbLCssdS", "PLC013", "参数设定成功!", kGreen);
    ParamSetDone = true;
}
void paramsAGRetrying()
{
    caption("CansdAG", "LbLCssdS", "PLC014", "正在尝试继续参数设定!", kRed);
    ParamSetDone = false;
}
void optionsAGRead(const QString& p) { SetSlot("CansdAG", "TxtSRead", p); }
void optionsAGWritten(const QString&) { caption("CansdAG", "LblTzxxTip", "PLC029", "选项更改完成!", kGreen); }
void optionsAGRetrying() { caption("CansdAG", "LblTzxxTip", "PLC030", "尝试更改选项!", kRed); }

// Skip hoist: 157 polled; start or cancel 158, 159, back to 157
void hoistRead(const QString& p)
{
    const QString form = QStringLiteral("YiBiaoAdvance");
    for (int i = 1; i <= 5; ++i) {
        const QString v = NumText(GetWordFromPayload(i, p));
        SetControlText(form, QStringLiteral("LblPulseNum(%1)").arg(i - 1), v);
        if (i == 4)
            SetControlText(form, QStringLiteral("txtPulseNum(0)"), v);
        if (i == 5)
            SetControlText(form, QStringLiteral("txtPulseNum(1)"), v);
    }
    SetControlText(form, QStringLiteral("txtZLv"), NumText(GetWordFromPayload(1, p)));
    HoistPollOn = true;
}
void hoistFailed()
{
    HoistPollOn = false;
    retry();
}
void hoistCmdSet(const QString&) { chainWrite(159, CalSpanDevice, QStringLiteral("0000")); }
void hoistCmdCleared(const QString&)
{
    StepNo = 157;
    SendFlag = true;
    HoistPollOn = false;
    send_recieve(BuildReadFrameWords(QLatin1String(kHoistPulses), kHoistPulseWords));
    Link().Timer1.start();
}
void hoistDecelWritten(const QString&)
{
    caption("YiBiaoAdvance", "LbLCssdS", "PLC013", "参数设定成功!", kGreen);
    HoistParamSaved = true;
}
void hoistDecelRetrying()
{
    caption("YiBiaoAdvance", "LbLCssdS", "PLC014", "正在尝试继续参数设定!", kRed);
    HoistParamSaved = false;
}

constexpr auto R = ReplyKind::Read;
constexpr auto W = ReplyKind::Write;

const StepRow kSteps[] = {
    {8, R, paramsRead, retry},
    {9, W, paramsWritten, paramsRetrying},
    {10, R, optionsRead, retry},
    {11, W, optionsWritten, optionsRetrying},
    {20, R, calOptionsRead, retry},
    {21, W, calModeWritten, calModeRetrying},
    {22, R, zeroTrackRead, retry},
    {23, W, zeroTrackWritten, zeroTrackRetrying},
    {24, R, systemOptionsRead, retry},
    {25, W, otherOptionsWritten, otherOptionsRetrying},
    {51, R, liveRead, liveFailed},
    {52, W, zeroSet, nullptr},
    {53, W, zeroCleared, nullptr},
    {54, W, weightWritten, nullptr},
    {55, W, spanSet, nullptr},
    {56, W, spanCleared, nullptr},
    {57, W, initStarted, initRefused},
    {58, R, initPolled, initPollFailed},
    {59, R, calStatusRead, retry},
    {60, R, nothing, retry},
    {61, W, nothing, nullptr},
    {62, W, factorySet, nullptr},
    {63, W, jogDone, fanOnRetrying},
    {64, W, jogDone, fanOffRetrying},
    {65, W, jogDone, valveOpenRetrying},
    {66, W, jogDone, valveCloseRetrying},
    {67, R, outputsRead, retry},
    {71, R, vibratorRead, retry},
    {72, W, vibratorWritten, vibratorRetrying},
    {73, R, sensorRead, retry},
    {74, W, sensorWritten, sensorRetrying},
    {75, R, timesRead, retry},
    {76, W, timesWritten, timesRetrying},
    {99, R, otherOptionWordRead, retry},
    {108, R, paramsAGRead, retry},
    {109, W, paramsAGWritten, paramsAGRetrying},
    {110, R, optionsAGRead, retry},
    {111, W, optionsAGWritten, optionsAGRetrying},
    {157, R, hoistRead, hoistFailed},
    {158, W, hoistCmdSet, nullptr},
    {159, W, hoistCmdCleared, nullptr},
    {160, W, hoistDecelWritten, hoistDecelRetrying},
};

}  // namespace

const StepRow* FindStep(short step)
{
    const auto it = std::find_if(std::begin(kSteps), std::end(kSteps), [&](const StepRow& r) { return r.step == step; });
    return it == std::end(kSteps) ? nullptr : &*it;
}

void DispatchReply(const QString& reply)
{
    const StepRow* row = FindStep(StepNo);
    if (!row) {
        Link().Timer2.stop();
        return;
    }
    if (row->kind == ReplyKind::Read) {
        const QString payload = Link().ReplyPayload(reply);
        if (payload.isEmpty()) {
            if (row->bad)
                row->bad();
            else
                retry();
            return;
        }
        row->good(payload);
        return;
    }
    if (Link().AckOk(reply))
        row->good(QString());
    else if (row->bad)
        row->bad();
}

// ReadS998Again: a sender of step 60 that stands ready; nothing in the console calls it.
void ReadS998Again() { chainRead(60, QLatin1String(kCalStatus), 2); }
