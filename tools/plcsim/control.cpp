#include "plcsim/control.h"

#include <QStringList>

namespace plcsim {

namespace {

struct Named {
    const char* name;
    Fault fault;
};
constexpr Named kFaults[] = {
    {"none", Fault::None},   {"noreply", Fault::NoReply}, {"nak", Fault::Nak},   {"garbage", Fault::Garbage},
    {"short", Fault::Short}, {"long", Fault::Long},       {"late", Fault::Late}, {"unplugged", Fault::Unplugged},
};

std::optional<int> number(const QString& text)
{
    bool ok = false;
    const int v = text.toInt(&ok);
    return ok ? std::optional<int>(v) : std::nullopt;
}

std::optional<bool> onOff(const QString& text)
{
    if (text == QLatin1String("on") || text == QLatin1String("1"))
        return true;
    if (text == QLatin1String("off") || text == QLatin1String("0"))
        return false;
    return std::nullopt;
}

ControlAnswer ok(const QString& value = {})
{
    return {value.isEmpty() ? QStringLiteral("ok") : QStringLiteral("ok ") + value};
}

ControlAnswer error(const QString& why)
{
    return {QStringLiteral("error: ") + why};
}

// "D43", "S999", "Y66": the letter and the number as written.
struct Device {
    QChar letter;
    int number = -1;
};
std::optional<Device> device(const QString& text)
{
    if (text.size() < 2)
        return std::nullopt;
    const QChar letter = text.at(0).toUpper();
    const auto n = number(text.mid(1));
    if (!n || *n < 0)
        return std::nullopt;
    const bool octal = !text.contains(QLatin1Char('8')) && !text.contains(QLatin1Char('9'));
    if ((letter == QLatin1Char('D') && (*n <= 511 || (*n >= 8000 && *n <= 8255))) ||
        (letter == QLatin1Char('S') && *n <= 1023) || (letter == QLatin1Char('Y') && octal && *n <= 177) ||
        (letter == QLatin1Char('M') && (*n <= 1535 || (*n >= 8000 && *n <= 8255))))
        return Device{letter, *n};
    return std::nullopt;
}

}  // namespace

std::optional<Fault> faultFromName(const QString& name)
{
    for (const Named& f : kFaults)
        if (name.compare(QLatin1String(f.name), Qt::CaseInsensitive) == 0)
            return f.fault;
    return std::nullopt;
}

std::optional<Outcome> outcomeFromName(const QString& name)
{
    if (name == QLatin1String("success"))
        return Outcome::Success;
    if (name == QLatin1String("refuse"))
        return Outcome::Refuse;
    if (name == QLatin1String("none"))
        return Outcome::NoAnswer;
    return std::nullopt;
}

ControlAnswer runControlCommand(Controller& c, const QString& line)
{
    const QStringList w = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (w.isEmpty())
        return error(QStringLiteral("empty command"));
    const QString& cmd = w.at(0);

    if (cmd == QLatin1String("fault") && (w.size() == 2 || w.size() == 3)) {
        const auto f = faultFromName(w.at(1));
        const auto count = w.size() == 3 ? number(w.at(2)) : std::optional<int>(1);
        if (!f || !count || *count < 1)
            return error(QStringLiteral("fault KIND [COUNT]"));
        c.injectFault(*f, *count);
        return ok();
    }
    if (cmd == QLatin1String("unplug") && w.size() == 1) {
        c.injectFault(Fault::Unplugged);
        return ok();
    }
    if (cmd == QLatin1String("plug") && w.size() == 1) {
        c.plugIn();
        return ok();
    }
    if (cmd == QLatin1String("outcome") && w.size() == 2) {
        const auto o = outcomeFromName(w.at(1));
        if (!o)
            return error(QStringLiteral("outcome success|refuse|none"));
        c.setCalOutcome(*o);
        return ok();
    }
    if (cmd == QLatin1String("set") && w.size() == 3) {
        const auto d = device(w.at(1));
        const auto v = number(w.at(2));
        if (!d || !v || d->letter == QLatin1Char('Y') || d->letter == QLatin1Char('M'))
            return error(QStringLiteral("set Dn VALUE | set Sn 0|1"));
        if (d->letter == QLatin1Char('D'))
            c.setWord(d->number, short(*v));
        else
            c.setSBit(d->number, *v != 0);
        return ok();
    }
    if (cmd == QLatin1String("get") && w.size() == 2) {
        const auto d = device(w.at(1));
        if (!d)
            return error(QStringLiteral("get Dn | Sn | Yn | Mn"));
        if (d->letter == QLatin1Char('D'))
            return ok(QString::number(c.word(d->number)));
        if (d->letter == QLatin1Char('M'))
            return ok(QString::number(c.mBit(d->number)));
        return ok(QString::number(d->letter == QLatin1Char('S') ? c.sBit(d->number) : c.yBit(d->number)));
    }
    if (cmd == QLatin1String("load") && w.size() == 3) {
        const auto k = number(w.at(1));
        const auto ad = number(w.at(2));
        if (!k || !ad || *k < 0 || *k >= kScales)
            return error(QStringLiteral("load SCALE AD"));
        c.setLoad(*k, *ad);
        return ok();
    }
    if (cmd == QLatin1String("late") && w.size() == 2) {
        const auto ms = number(w.at(1));
        if (!ms || *ms < 0)
            return error(QStringLiteral("late MS"));
        c.setLateMs(*ms);
        return ok();
    }
    if (cmd == QLatin1String("init-delay") && w.size() == 2) {
        const auto ms = number(w.at(1));
        if (!ms || *ms < 0)
            return error(QStringLiteral("init-delay MS"));
        c.setInitDelayMs(*ms);
        return ok();
    }
    for (const auto& [name, setter] : std::initializer_list<std::pair<const char*, void (Controller::*)(bool)>>{
             {"init-never", &Controller::setInitNever},
             {"paced", &Controller::setPaced},
             {"live", &Controller::setLiveModel},
             {"noise", &Controller::setNoise}}) {
        if (cmd == QLatin1String(name) && w.size() == 2) {
            const auto on = onOff(w.at(1));
            if (!on)
                return error(QString::fromLatin1(name) + QStringLiteral(" on|off"));
            (c.*setter)(*on);
            return ok();
        }
    }
    if ((cmd == QLatin1String("run") || cmd == QLatin1String("stop")) && w.size() == 1) {
        c.setRunning(cmd == QLatin1String("run"));
        return ok();
    }
    if (cmd == QLatin1String("quit") && w.size() == 1)
        return {QStringLiteral("ok"), true};
    return error(QStringLiteral("unknown command: ") + line.simplified());
}

QString protocolHelp()
{
    return QStringLiteral(
        "Requests answered (STX command ... ETX and two sum digits, the low byte of the sum after STX):\n"
        "  0 read bytes       STX 0 AAAA NN ETX SS: STX, 2*NN hex digits, ETX, SS\n"
        "  1 write bytes      STX 1 AAAA NN DD.. ETX SS: ACK\n"
        "  7 force on, 8 force off   STX 7 BBBB ETX SS, BBBB the bit number low byte first: ACK\n"
        "  ENQ                ACK\n"
        "  anything else, a wrong sum, length or address: NAK\n"
        "Byte memory: S 0000, X 0080, Y 00A0, T 00C0, M 0100, C 01C0, M8000 01E0, D8000 0E00, D 1000.\n"
        "Bit numbers of force: byte address * 8 + bit, below 1000 hex (S0 0000, Y0 0500, M0 0800, M8000 0F00).\n"
        "Always there: M8000 on and M8001 off while running, the reverse when stopped; M8002 off, M8003\n"
        "on while running; D8000 200 (watchdog, ms), D8001 100 (this simulator, version 1.00), D8002 8\n"
        "(program memory, k steps), D8010..D8012 20 (scan time, 0.1 ms).\n"
        "Not modelled: other commands (extended addressing, program transfer, passwords); inputs X,\n"
        "timers and counters, which hold what is written; any program but the console's part (calibration,\n"
        "hardware initialisation, live values, hoist, fan and valve, factory state); parity and framing\n"
        "of the line (a pseudo-terminal carries 8N1); the controller's own answer delay.\n");
}

QString controlCommandHelp()
{
    return QStringLiteral(
        "Control commands (one a line, each answered \"ok\" or \"error: ...\"):\n"
        "  fault KIND [COUNT]   spoil the next COUNT answers (default 1); KIND: none, noreply, nak,\n"
        "                       garbage, short, long, late, unplugged\n"
        "  unplug | plug        no answers at all until plug\n"
        "  hangup | reopen      the pseudo-terminal closes; a new one, answered \"ok DEVICE\", --link\n"
        "                       PATH then leads to it\n"
        "  outcome success|refuse|none   answer of the next zero or span calibrations\n"
        "  set Dn VALUE | set Sn 0|1     change memory\n"
        "  get Dn | Sn | Yn | Mn   answered \"ok VALUE\"\n"
        "  run | stop           the controller's mode: the run bits follow, and a stopped program does nothing\n"
        "  load SCALE AD        raw signal level of scale index SCALE\n"
        "  late MS | init-delay MS\n"
        "  init-never on|off | paced on|off | live on|off | noise on|off\n"
        "  quit\n");
}

}  // namespace plcsim
