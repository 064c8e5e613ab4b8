#include "link/link_engine.h"

#include "common/error_log.h"
#include "common/module1.h"
#include "common/vbtext.h"
#include "common/form_access.h"
#include "link/frame_codec.h"
#include "link/link_trace.h"
#include "link/step_table.h"
#include "common/lang.h"

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
    Timer3.setInterval(1000);
    connect(&Timer1, &QTimer::timeout, this, &LinkEngine::timer1Tick);
    connect(&Timer2, &QTimer::timeout, this, [] { LinkTrace().clockTicked(); });
    connect(&Timer2, &QTimer::timeout, this, &LinkEngine::RetryRequest);
    connect(&Timer3, &QTimer::timeout, this, &LinkEngine::timer3Tick);
    connect(&line_, &RequestLine::replied, this, &LinkEngine::onReply);
    connect(&line_, &RequestLine::sent, this, [this](const QString& frame) {
        LinkTrace().sent(frame, LastStep.toShort(), port_ ? port_->lastCleared() : QByteArray());
    });
    connect(&line_, &RequestLine::lateReplies, this, [](const QByteArray& bytes) { LinkTrace().late(bytes); });
    // What a frame built meanwhile has left there is not what the held request awaits.
    connect(&line_, &RequestLine::released, this, [this] { ExpectedReplyLen = LastExpectedLen; });
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
    line_.setPort(port_);
    PortOpenResult r = port_->open();
    if (r.error != PortOpenError::None) {
        delete port_.data();
        port_ = nullptr;
        line_.setPort(nullptr);
    }
    return r;
}

void LinkEngine::closePort()
{
    line_.forget();
    resending_ = false;
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
    line_.forget();
    resending_ = false;
    WriteImage = QString(152, QLatin1Char('0'));
}

void LinkEngine::send_recieve(const QString& frame)
{
    const bool resend = std::exchange(resending_, false);
    if (!SendFlag) {
        LinkTrace().dropped(frame);
        return;
    }
    trapped("send_recieve", [&] {
        SendFlag = false;
        LastExpectedLen = ExpectedReplyLen;
        LastStep = QString::number(StepNo);
        LastFrame = frame;
        if (resend)
            line_.resend(frame, LastExpectedLen);
        else
            line_.send(frame, LastExpectedLen);
    });
}

// The receive event, once a reply for the request in flight is in.
void LinkEngine::onReply(const QString& reply)
{
    LinkTrace().received(reply.toLatin1());
    trapped("MSComm1_OnComm", [&] {
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
    if (RequestLine::isAck(reply, ExpectedReplyLen)) {
        LinkTrace().taken();
        SendFlag = true;
        line_.answered();
        return true;
    }
    RetryRequest();
    return false;
}

QString LinkEngine::ReplyPayload(const QString& reply)
{
    const std::optional<QString> payload = RequestLine::payloadOf(reply, ExpectedReplyLen);
    if (!payload)
        return QString();
    LinkTrace().taken();
    SendFlag = true;
    line_.answered();
    return *payload;
}

void LinkEngine::RetryRequest()
{
    if (line_.holding())
        return;  // the request has not gone out yet
    if (line_.resendsLeft()) {
        if (CInt(Val(LastStep)) != StepNo)
            return;  // the form has moved on
        ++RetryCount;
        SendFlag = true;
        ExpectedReplyLen = LastExpectedLen;
        StepNo = CInt(Val(LastStep));
        resending_ = true;
        LinkTrace().resending();
        send_recieve(LastFrame);
        return;
    }
    UnloadMbQuestion();
    Timer1.stop();
    Timer3.stop();
    line_.giveUp();
    SendFlag = true;
    StepNo = 444;
    ShowLinkFaultBox();
    // Keeps the option chain of the parameter editor from staying pending.
    if (StepNo == 11)
        OptionDone = true;
}

void ShowLinkFaultBox()
{
    WriteLinkFaultTrace();
    ShowOkBox(LinkFaultText(QStringLiteral("Com") + QString::number(PortNo)), true);
}

QString LinkEngine::GetWrite_PLCD(const QString& device, short count)
{
    QString frame;
    trapped("GetWrite_PLCD", [&] {
        QStringList sources;
        auto boxes = [&](const auto& text) {
            for (int i = 0; i < count; ++i)
                sources << text(i);
        };
        auto control = [](const char* form, const char* name) {
            return [=](int i) { return ControlText(QLatin1String(form), QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(i)); };
        };
        switch (StepNo) {
        case 9:
        case 109:
            boxes([this](int i) { return Pfd.at(i); });
            break;
        case 72:
            boxes([this](int i) { return TxtDCansd.at(i); });
            break;
        case 74:
            boxes(control("Sensor", "TxtDCansdMulTen"));
            break;
        case 76:
            boxes(control("Other", "TxtDCansdMulTen"));
            break;
        case 160:
            boxes(control("YiBiaoAdvance", "txtPulseNum"));
            break;
        case 54:
            // The test weight alone, in the first word.
            sources << ControlText(HumidActive ? QStringLiteral("YIBiaoHumidNew") : QStringLiteral("YIBiao"),
                                   QStringLiteral("TxtFm"));
            break;
        default:
            break;
        }
        frame = BuildBlockWriteFrame(device, sources, count);
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
