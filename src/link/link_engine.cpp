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
    Timer2.setInterval(1000);
    Timer3.setInterval(1000);
    connect(&Timer1, &QTimer::timeout, this, &LinkEngine::timer1Tick);
    connect(&Timer2, &QTimer::timeout, this, [] { LinkTrace().clockTicked(); });
    connect(&Timer2, &QTimer::timeout, this, &LinkEngine::RetryRequest);
    connect(&Timer3, &QTimer::timeout, this, &LinkEngine::timer3Tick);
    holdTimer_.setSingleShot(true);
    connect(&holdTimer_, &QTimer::timeout, this, [this] {
        dropExpiredSends();
        if (earlier_.isEmpty())
            endHold();
        else
            holdTimer_.start(int(earlier_.last().at + LateReplyHorizonMs - clock_.elapsed()));
    });
    clock_.start();
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
    forgetSends();
    if (port_ && port_->isOpen())
        port_->close();
}

void LinkEngine::forgetSends()
{
    unanswered_.clear();
    earlier_.clear();
    holding_ = false;
    held_.clear();
    holdTimer_.stop();
    resending_ = false;
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
    forgetSends();
    WriteImage = QString(152, QLatin1Char('0'));
}

void LinkEngine::send_recieve(const QString& frame)
{
    const bool resend = std::exchange(resending_, false);
    if (!SendFlag) LinkTrace().dropped(frame);
    if (!SendFlag)
        return;
    trapped("send_recieve", [&] {
        SendFlag = false;
        LastExpectedLen = ExpectedReplyLen;
        LastStep = QString::number(StepNo);
        LastFrame = frame;
        if (!resend) {
            // A sender that forces its way in replaces a request still waiting to go out, as it
            // replaces one in flight.
            holding_ = false;
            held_.clear();
            holdTimer_.stop();
            // Earlier sends of the request before may still be answered; any reply of theirs
            // arriving now would be taken for this one.
            earlier_ += unanswered_;
            unanswered_.clear();
            dropExpiredSends();
            if (!earlier_.isEmpty()) {
                holdUntilAnswered(frame);
                return;
            }
        }
        transmit(frame);
    });
}

void LinkEngine::transmit(const QString& frame)
{
    if (port_) {
        // Some of a reply had come, too little to be read: that send was answered, if badly.
        if (port_->clearInput() > 0 && !unanswered_.isEmpty())
            unanswered_.removeLast();
        port_->setThreshold(LastExpectedLen);
        port_->output(frame.toLatin1());
    }
    LinkTrace().sent(frame, LastStep.toShort(), port_ ? port_->lastCleared() : QByteArray());
    unanswered_.append({clock_.elapsed(), LastExpectedLen});
    // Enabling a running timer leaves its period alone.
    if (!Timer2.isActive())
        Timer2.start();
}

// The request goes out once the replies still owed to earlier sends have come, or are too late to come.
// Nothing changes on the wire but the moment; the link is busy meanwhile, as if the request were out.
void LinkEngine::holdUntilAnswered(const QString& frame)
{
    holding_ = true;
    held_ = frame;
    if (port_) {
        port_->clearInput();
        port_->setThreshold(earlier_.first().len);
    }
    holdTimer_.start(int(earlier_.last().at + LateReplyHorizonMs - clock_.elapsed()));
    // Busy as if the request were out: the re-send clock runs, and a form that returns may stop it.
    Timer2.start();
}

void LinkEngine::takeEarlierReplies(const QByteArray& bytes)
{
    LinkTrace().late(bytes);
    // They come in the order of their requests, each at least as long as it was awaited.
    qsizetype left = bytes.size();
    while (!earlier_.isEmpty()) {
        left -= earlier_.first().len;
        earlier_.removeFirst();
        if (earlier_.isEmpty() || left < earlier_.first().len)
            break;
    }
    dropExpiredSends();
    if (earlier_.isEmpty())
        endHold();
    else if (port_)
        port_->setThreshold(earlier_.first().len);
}

void LinkEngine::dropExpiredSends()
{
    const qint64 now = clock_.elapsed();
    earlier_.removeIf([this, now](const Sent& s) { return now - s.at >= LateReplyHorizonMs; });
}

void LinkEngine::endHold()
{
    holdTimer_.stop();
    if (!holding_)
        return;
    holding_ = false;
    const QString frame = std::exchange(held_, QString());
    // What a frame built meanwhile has left there is not what this request awaits.
    ExpectedReplyLen = LastExpectedLen;
    // The re-send clock counts from the send; stopped meanwhile by a form's return, it stays stopped.
    const bool timing = Timer2.isActive();
    Timer2.stop();
    trapped("send_recieve", [&] { transmit(frame); });
    if (!timing)
        Timer2.stop();
}

void LinkEngine::onComm()
{
    if (!port_)
        return;
    if (holding_) {
        takeEarlierReplies(port_->takeInput());
        return;
    }
    trapped("MSComm1_OnComm", [&] {
        const QString reply = QString::fromLatin1(port_->takeInput());
        LinkTrace().received(reply.toLatin1());
        // The latest send is taken as the one answered: an earlier one is the more likely to stay silent.
        if (!unanswered_.isEmpty())
            unanswered_.removeLast();
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
        LinkTrace().taken();
        SendFlag = true;
        RetryCount = 0;
        Timer2.stop();
        if (port_)
            port_->setThreshold(0);
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
        LinkTrace().taken();
        SendFlag = true;
        RetryCount = 0;
        Timer2.stop();
        if (port_)
            port_->setThreshold(0);
        return Mid(reply, s + 1, e - s - 1);
    }
    return QString();
}

void LinkEngine::RetryRequest()
{
    if (holding_)
        return;  // the request has not gone out yet
    if (RetryCount >= 0 && RetryCount <= 7) {
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
    Timer2.stop();
    Timer3.stop();
    RetryCount = 0;
    SendFlag = true;
    StepNo = 444;
    if (port_)
        port_->setThreshold(0);
    ShowLinkFaultBox();
    // Keeps the option chain of the parameter editor from staying pending.
    if (StepNo == 11)
        OptionDone = true;
}

void ShowLinkFaultBox()
{
    WriteLinkFaultTrace();
    ShowOkBox(ComText("COM016", QStringLiteral("通讯发生错误请检查：")) + QLatin1Char('\n') +
                  ComText("COM017", QStringLiteral("1、下位机是否已断电；")) + QLatin1Char('\n') +
                  ComText("COM018", QStringLiteral("2、下位机是否正常运行；")) + QLatin1Char('\n') +
                  ComText("COM019", QStringLiteral("3、通讯线是否接在端口:")) + QStringLiteral("Com") +
                  QString::number(PortNo) + QLatin1Char(',') + ComText("COM020", QStringLiteral("且接触良好。")),
              true);
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
                StoreWriteImage(ValueToDataSlot(source, 1));
                known = false;
                break;
            default:
                known = false;
            }
            if (known)
                StoreWriteImage(ValueToDataSlot(source, i + 1));
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
