#include "link/link_engine.h"

#include "common/error_log.h"
#include "common/module1.h"
#include "common/vbtext.h"
#include "link/form_access.h"
#include "link/frame_codec.h"
#include "link/step_table.h"
#include "shell/lang.h"

namespace {
constexpr char kForm[] = "PLC";

template <class F> void trapped(const char* routine, F&& f)
{
    try {
        f();
    } catch (const VbError& e) {
        LogProgramError(kForm, routine, QString::number(e.number), e.description());
    } catch (const std::exception& e) {
        LogProgramError(kForm, routine, QStringLiteral("5"), QString::fromLocal8Bit(e.what()));
    }
}
}  // namespace

LinkEngine::LinkEngine()
{
    Timer1.setInterval(400);
    Timer2.setInterval(1000);
    Timer3.setInterval(1000);
    connect(&Timer1, &QTimer::timeout, this, &LinkEngine::timer1Tick);
    connect(&Timer2, &QTimer::timeout, this, &LinkEngine::RetryRequest);
    connect(&Timer3, &QTimer::timeout, this, &LinkEngine::timer3Tick);
}

LinkEngine::~LinkEngine() { delete port_.data(); }

LinkEngine& Link()
{
    static LinkEngine* engine = new LinkEngine;  // lives for the run, like the main form
    return *engine;
}

PortOpenResult LinkEngine::openPort(int portNo)
{
    if (port_ && port_->isOpen())
        return {};
    delete port_.data();
    port_ = MakePort(portNo);
    connect(port_.data(), &CommPort::received, this, &LinkEngine::onComm);
    PortOpenResult r = port_->open();
    if (r.error != PortOpenError::None) {
        delete port_.data();
        port_ = nullptr;
    }
    return r;
}

void LinkEngine::closePort()
{
    if (port_ && port_->isOpen())
        port_->close();
}

bool LinkEngine::portOpen() const { return port_ && port_->isOpen(); }

void LinkEngine::resetForLogin()
{
    RetryCount = 0;
    SendFlag = true;
    Timer1.setInterval(400);
    Timer1.stop();
    Timer2.stop();
    Timer3.stop();
    WriteImage = QString(152, QLatin1Char('0'));
}

void LinkEngine::send_recieve(const QString& frame)
{
    if (!SendFlag)
        return;
    trapped("send_recieve", [&] {
        SendFlag = false;
        if (port_) {
            port_->clearInput();
            port_->setThreshold(ExpectedReplyLen);
        }
        LastExpectedLen = ExpectedReplyLen;
        LastStep = QString::number(StepNo);
        LastFrame = frame;
        if (port_)
            port_->output(frame.toLatin1());
        // Enabling a running timer leaves its period alone.
        if (!Timer2.isActive())
            Timer2.start();
    });
}

void LinkEngine::onComm()
{
    if (!port_)
        return;
    trapped("MSComm1_OnComm", [&] {
        const QString reply = QString::fromLatin1(port_->takeInput());
        // A command-bit write answered with more than an ACK is left to the time-out.
        if (reply.size() > 2 && (StepNo == 54 || StepNo == 52 || StepNo == 160) && ExpectedReplyLen == 1)
            return;
        if (!reply.contains(STX) && !reply.contains(ETX) && StepNo == 20)
            return;
        DispatchReply(reply);
    });
}

bool LinkEngine::AckOk(const QString& reply)
{
    if (reply.size() == ExpectedReplyLen && !reply.isEmpty() && reply[0] == ACK) {
        SendFlag = true;
        RetryCount = 0;
        Timer2.stop();
        return true;
    }
    RetryRequest();
    return false;
}

QString LinkEngine::ReplyPayload(const QString& reply)
{
    // Positions count from 1, as the shape rule is written; 0 means absent.
    const int s = int(reply.indexOf(STX)) + 1;
    const int e = int(reply.indexOf(ETX)) + 1;
    if (reply.size() == ExpectedReplyLen && s > 0 && e > 0 && e > s && e - s == ExpectedReplyLen - 3) {
        SendFlag = true;
        RetryCount = 0;
        Timer2.stop();
        return Mid(reply, s + 1, e - s - 1);
    }
    return QString();
}

void LinkEngine::RetryRequest()
{
    if (RetryCount >= 0 && RetryCount <= 7) {
        if (CInt(Val(LastStep)) != StepNo)
            return;  // the form has moved on
        ++RetryCount;
        SendFlag = true;
        ExpectedReplyLen = LastExpectedLen;
        StepNo = CInt(Val(LastStep));
        send_recieve(LastFrame);
        return;
    }
    UnloadMbQuestion();
    Timer1.stop();
    Timer2.stop();
    Timer3.stop();
    RetryCount = 0;
    SendFlag = true;
    StepNo = 444;
    MbText = ComText("COM016", QStringLiteral("通讯发生错误请检查：")) + QLatin1Char('\n') +
             ComText("COM017", QStringLiteral("1、下位机是否已断电；")) + QLatin1Char('\n') +
             ComText("COM018", QStringLiteral("2、下位机是否正常运行；")) + QLatin1Char('\n') +
             ComText("COM019", QStringLiteral("3、通讯线是否接在端口:")) + QStringLiteral("Com") +
             QString::number(PortNo) + QLatin1Char(',') + ComText("COM020", QStringLiteral("且接触良好。"));
    MbIsOk = true;
    MbIsError = true;
    ShowMbQuestion();
    MbResult = false;
    // Keeps the option chain of the parameter editor from staying pending.
    if (StepNo == 11)
        OptionDone = true;
}

QString LinkEngine::GetWrite_PLCD(const QString& device, short count)
{
    QString frame;
    trapped("GetWrite_PLCD", [&] {
        const int d = 4 * count;
        WriteImage = QString(152, QLatin1Char(' '));
        for (int i = 0; i < count; ++i) {
            QString source;
            bool known = true;
            switch (StepNo) {
            case 9:
            case 109:
                source = Pfd.at(i);
                break;
            case 72:
                source = TxtDCansd.at(i);
                break;
            case 74:
                source = ControlText("Sensor", QStringLiteral("TxtDCansdMulTen(%1)").arg(i));
                break;
            case 76:
                source = ControlText("Other", QStringLiteral("TxtDCansdMulTen(%1)").arg(i));
                break;
            case 160:
                source = ControlText("YiBiaoAdvance", QStringLiteral("txtPulseNum(%1)").arg(i));
                break;
            case 54:
                source = ControlText(HumidActive ? QStringLiteral("YIBiaoHumidNew") : QStringLiteral("YIBiao"),
                                     QStringLiteral("TxtFm"));
                WriteImage = ValueToDataSlot(source, 1);
                known = false;
                break;
            default:
                known = false;
            }
            if (known)
                WriteImage = ValueToDataSlot(source, i + 1);
        }
        frame = BuildWriteFrame(device, WriteImage, short(d));
    });
    return frame;
}

QString LinkEngine::GetWrite_TSCMXY(const QString& device, const QString& data, short digits)
{
    return BuildWriteFrame(device, data, digits);
}

void LinkEngine::timer1Tick()
{
    switch (StepNo) {
    case 51:
        if (LiveReadDone) {
            SendFlag = true;
            LiveReadDone = false;
            send_recieve(BuildReadFrameWords(QStringLiteral("D11"), 32));
        }
        break;
    case 58:
        if (InitPollDue) {
            ++InitPollCount;
            InitPollDue = false;
            StepNo = 58;
            send_recieve(BuildReadFrameBytes(QStringLiteral("S999"), 2));
            if (InitPollCount >= 51) {
                Timer1.stop();
                ShowCaption(QStringLiteral("BcBut"), QStringLiteral("LbLCssdS"),
                            LangText(QStringLiteral("LANPLCFORM"), QStringLiteral("PLC037"),
                                     QStringLiteral("硬件初始化失败!")),
                            kRed);
            }
        }
        break;
    case 157:
        if (HoistPollOn) {
            HoistPollOn = false;
            send_recieve(BuildReadFrameWords(QStringLiteral("D291"), 5));
        }
        break;
    default:
        Timer1.stop();
    }
}

void LinkEngine::timer3Tick()
{
    if (ZeroRequest) {
        ZeroRequest = false;
        StepNo = 52;
        const QString frame = GetWrite_TSCMXY(CalZeroDevice, CalBitMask, 4);
        SendFlag = true;
        send_recieve(frame);
    }
    if (SpanRequest) {
        SpanRequest = false;
        StepNo = 54;
        const QString frame = GetWrite_PLCD(Trim(CalWeightDevice), 1);
        SendFlag = true;
        send_recieve(frame);
    }
    if (HoistCmdPending) {
        SendFlag = true;
        HoistCmdPending = false;
        StepNo = 158;
        send_recieve(GetWrite_TSCMXY(CalSpanDevice, CalBitMask, 4));
    }
    Timer3.stop();
}

void send_recieve(const QString& frame) { Link().send_recieve(frame); }
QString GetWrite_PLCD(const QString& device, short count) { return Link().GetWrite_PLCD(device, count); }
QString GetWrite_TSCMXY(const QString& device, const QString& data, short digits)
{
    return Link().GetWrite_TSCMXY(device, data, digits);
}
