#include "plcsim/controller.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace plcsim {

namespace {

// 10 bits a character at 9600 baud (start, 7 data, parity, stop).
constexpr qint64 kCharNs = 1'041'667;
constexpr int kScanMs = 200;
// A frame that has not ended by then was cut; its STX is given up.
constexpr int kLongestFrame = 11 + 2 * 255;

// Zero bit of each scale index; the span bit is the next one. Indices 6 and 10 lie apart.
constexpr std::array<int, 14> kZeroBit = {181, 183, 185, 187, 189, 191, 205, 193, 195, 197, 207, 199, 201, 203};
constexpr int kTestWeightD = 43;  // D43 + k
constexpr int kAdD = 11;          // D11 + k
constexpr int kWeightD = 27;      // D27 + k
// The moisture probes of scale slots 4 and 5 get their known value at D29 and D30.
constexpr int kMoistureD = 29;
constexpr int kMoistureFirstScale = 4;

constexpr int kFanRequest = 209, kDustRequest = 210, kInitRequest = 211, kHoistStart = 213, kHoistCancel = 214;
constexpr int kCalRefused = 998, kCalDone = 999;
constexpr int kYFan = 066, kYDust = 067;
constexpr int kHoistCount = 291, kHoistToWait = 292, kHoistToDischarge = 293;

int wordAddress(int dNumber)
{
    if (dNumber >= 0 && dNumber <= 511)
        return 0x1000 + 2 * dNumber;
    if (dNumber >= 8000 && dNumber <= 8255)
        return 0x0E00 + 2 * (dNumber - 8000);
    return -1;
}

// The decimal digits of n read as octal: 66 is Y66.
int octalValue(int n)
{
    int value = 0, scale = 1;
    for (; n > 0; n /= 10, scale *= 8)
        value += (n % 10) * scale;
    return value;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

// -1 when any character is not a hex digit.
int hexValue(const QByteArray& s, int pos, int len)
{
    int v = 0;
    for (int i = pos; i < pos + len; ++i) {
        const int d = hexDigit(s.at(i));
        if (d < 0)
            return -1;
        v = v * 16 + d;
    }
    return v;
}

QByteArray hex2(int v)
{
    static const char digits[] = "0123456789ABCDEF";
    const char pair[2] = {digits[(v >> 4) & 0xF], digits[v & 0xF]};
    return QByteArray(pair, 2);
}

// Low byte of the sum of everything after STX up to and including ETX.
int frameSum(const QByteArray& frame, int etxPos)
{
    int sum = 0;
    for (int i = 1; i <= etxPos; ++i)
        sum += quint8(frame.at(i));
    return sum & 0xFF;
}

short clampShort(double v)
{
    return short(std::clamp(std::lround(v), -32768L, 32767L));
}

}  // namespace

Controller::Controller(QObject* parent) : QObject(parent)
{
    txTimer_.setTimerType(Qt::PreciseTimer);
    txTimer_.setInterval(1);
    connect(&txTimer_, &QTimer::timeout, this, &Controller::pumpPaced);

    liveTimer_.setInterval(kScanMs);
    connect(&liveTimer_, &QTimer::timeout, this, &Controller::liveTick);

    initTimer_.setSingleShot(true);
    initTimer_.setInterval(2000);
    connect(&initTimer_, &QTimer::timeout, this, &Controller::finishInit);

    hoistTimer_.setInterval(kScanMs);
    connect(&hoistTimer_, &QTimer::timeout, this, &Controller::hoistTick);

    // A plant at rest: every scale a little above its zero point.
    for (int k = 0; k < kScales; ++k) {
        scales_[k].zeroAd = 2000;
        scales_[k].load = 3000 + 250 * k;
        refreshScale(k);
    }
    setWord(294, 300);  // deceleration distances of a commissioned hoist
    setWord(295, 300);
}

quint8 Controller::byteAt(int address) const
{
    return address >= 0 && address < kMemorySize ? mem_[address] : 0;
}

void Controller::setByteAt(int address, quint8 value)
{
    if (address >= 0 && address < kMemorySize)
        mem_[address] = value;
}

short Controller::word(int dNumber) const
{
    const int a = wordAddress(dNumber);
    return a < 0 ? 0 : short(mem_[a] | (mem_[a + 1] << 8));
}

void Controller::setWord(int dNumber, short value)
{
    const int a = wordAddress(dNumber);
    if (a < 0)
        return;
    mem_[a] = quint8(value & 0xFF);
    mem_[a + 1] = quint8((quint16(value) >> 8) & 0xFF);
}

bool Controller::sBit(int n) const
{
    return n >= 0 && (byteAt(n / 8) >> (n % 8)) & 1;
}

void Controller::setSBit(int n, bool on)
{
    if (n < 0 || n / 8 >= 0xA0)
        return;
    const quint8 mask = quint8(1 << (n % 8));
    mem_[n / 8] = on ? (mem_[n / 8] | mask) : (mem_[n / 8] & ~mask);
}

bool Controller::yBit(int octalNumber) const
{
    const int v = octalValue(octalNumber);
    return (byteAt(0xA0 + v / 8) >> (v % 8)) & 1;
}

// ---- the line ----

QByteArray Controller::handleFrame(const QByteArray& frame)
{
    requests_.append(frame);
    emit requestReceived(frame);
    Answer kind;
    return execute(frame, &kind);
}

QByteArray Controller::execute(const QByteArray& frame, Answer* kind)
{
    *kind = Answer::Nak;
    const QByteArray nak(1, kNak);
    const int n = int(frame.size());
    if (n < 11 || frame.at(0) != kStx || frame.at(n - 3) != kEtx)
        return nak;
    const int sum = hexValue(frame, n - 2, 2);
    if (sum < 0 || sum != frameSum(frame, n - 3))
        return nak;
    const int address = hexValue(frame, 2, 4);
    const int count = hexValue(frame, 6, 2);
    if (address < 0 || count <= 0 || address + count > kMemorySize)
        return nak;

    if (frame.at(1) == '0' && n == 11) {
        QByteArray r(1, kStx);
        for (int i = 0; i < count; ++i)
            r += hex2(mem_[address + i]);
        r += kEtx;
        r += hex2(frameSum(r, int(r.size()) - 1));
        *kind = Answer::Read;
        return r;
    }
    if (frame.at(1) == '1' && n == 11 + 2 * count) {
        QByteArray data;
        for (int i = 0; i < count; ++i) {
            const int b = hexValue(frame, 8 + 2 * i, 2);
            if (b < 0)
                return nak;
            data += char(b);
        }
        const QByteArray before(reinterpret_cast<const char*>(mem_.data()) + address, count);
        for (int i = 0; i < count; ++i)
            mem_[address + i] = quint8(data.at(i));
        afterWrite(before, address);
        *kind = Answer::Write;
        return QByteArray(1, kAck);
    }
    return nak;
}

void Controller::feed(const QByteArray& bytes)
{
    rx_ += bytes;
    for (;;) {
        const qsizetype stx = rx_.indexOf(kStx);
        if (stx < 0) {
            rx_.clear();  // nothing but junk so far
            return;
        }
        rx_.remove(0, stx);
        const qsizetype etx = rx_.indexOf(kEtx, 1);
        const qsizetype nextStx = rx_.indexOf(kStx, 1);
        // A new STX before the end of this frame, or among its sum characters: the frame was cut.
        // The controller drops it without an answer and listens to the new one.
        if (nextStx > 0 && (etx < 0 || nextStx <= etx + 2)) {
            rx_.remove(0, nextStx);
            continue;
        }
        if (etx < 0) {
            if (rx_.size() > kLongestFrame)
                rx_.remove(0, 1);
            else
                return;
            continue;
        }
        if (rx_.size() < etx + 3)
            return;
        const QByteArray frame = rx_.left(etx + 3);
        rx_.remove(0, etx + 3);
        takeFrame(frame);
    }
}

void Controller::takeFrame(const QByteArray& frame)
{
    requests_.append(frame);
    emit requestReceived(frame);

    const Fault f = fault_;
    if (f != Fault::None && f != Fault::Unplugged && --faultCount_ <= 0)
        fault_ = Fault::None;
    // Unplugged never hears the request; a NAK means the controller refused it. Every other fault
    // spoils only the answer on its way back, so the request has taken effect.
    if (f == Fault::Unplugged)
        return;
    if (f == Fault::Nak) {
        send(QByteArray(1, kNak));
        return;
    }
    Answer kind;
    const QByteArray r = execute(frame, &kind);
    switch (f) {
    case Fault::None:
        send(r);
        break;
    case Fault::NoReply:
    case Fault::Unplugged:
    case Fault::Nak:
        break;
    case Fault::Garbage:
        send(junk(int(r.size())));
        break;
    case Fault::Short:
        if (kind == Answer::Read)
            send(r.chopped(2));
        break;
    case Fault::Long:
        send(r + junk(2));
        break;
    case Fault::Late:
        QTimer::singleShot(lateMs_, Qt::PreciseTimer, this, [this, r] { send(r); });
        break;
    }
}

void Controller::injectFault(Fault fault, int count)
{
    fault_ = fault;
    faultCount_ = fault == Fault::None ? 0 : std::max(count, 1);
}

// Printable characters only: never STX, ETX, ACK or NAK, so the console cannot mistake them.
QByteArray Controller::junk(int n)
{
    QByteArray j;
    for (int i = 0; i < n; ++i)
        j += char(rng_.bounded('!', '~' + 1));
    return j;
}

void Controller::send(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return;
    if (!paced_) {
        // Never from inside feed(): the console is not ready for an answer while it is still writing.
        QTimer::singleShot(0, this, [this, bytes] { emit reply(bytes); });
        return;
    }
    txQueue_ += bytes;
    if (!txTimer_.isActive()) {
        txSent_ = 0;
        txClock_.start();
        txTimer_.start();
    }
}

void Controller::setPaced(bool on)
{
    paced_ = on;
    if (!on && !txQueue_.isEmpty()) {
        txTimer_.stop();
        const QByteArray rest = std::exchange(txQueue_, {});
        send(rest);
    }
}

// Characters go out when their last bit would have: the clock, not the timer's ticks, sets the rate.
void Controller::pumpPaced()
{
    const qint64 due = txClock_.nsecsElapsed() / kCharNs;
    while (txSent_ < due && !txQueue_.isEmpty()) {
        const QByteArray one(1, txQueue_.at(0));
        txQueue_.remove(0, 1);
        ++txSent_;
        emit reply(one);
    }
    if (txQueue_.isEmpty())
        txTimer_.stop();
}

// ---- the controller's program ----

void Controller::afterWrite(const QByteArray& before, int address)
{
    const int count = int(before.size());
    auto inWrite = [&](int byte) { return byte >= address && byte < address + count; };
    auto rose = [&](int s) {
        return inWrite(s / 8) && !((quint8(before.at(s / 8 - address)) >> (s % 8)) & 1) && sBit(s);
    };

    for (int k = 0; k < int(kZeroBit.size()); ++k) {
        const int a = wordAddress(kTestWeightD + k);
        if (inWrite(a) || inWrite(a + 1))
            testValue_[k] = word(kTestWeightD + k);
    }
    for (int i = 0; i < 2; ++i) {
        const int a = wordAddress(kMoistureD + i);
        if (inWrite(a) || inWrite(a + 1))
            testValue_[kMoistureFirstScale + i] = word(kMoistureD + i);
    }

    for (int k = 0; k < int(kZeroBit.size()); ++k) {
        if (rose(kZeroBit[k]))
            calibrate(k, false);
        if (rose(kZeroBit[k] + 1))
            calibrate(k, true);
    }

    // The outputs follow the jog requests in the same scan.
    const int yByte = 0xA0 + kYFan / 8;
    quint8 y = mem_[yByte] & ~quint8((1 << (kYFan % 8)) | (1 << (kYDust % 8)));
    if (sBit(kFanRequest))
        y |= quint8(1 << (kYFan % 8));
    if (sBit(kDustRequest))
        y |= quint8(1 << (kYDust % 8));
    mem_[yByte] = y;

    if (inWrite(kInitRequest / 8) && sBit(kInitRequest)) {
        setSBit(kCalDone, false);
        if (initNever_)
            initTimer_.stop();
        else
            initTimer_.start();
    }

    if (rose(kHoistStart)) {
        setWord(kHoistCount, 0);
        hoistTicksDone_ = 0;
        hoistTimer_.start();
    }
    if (rose(kHoistCancel))
        hoistTimer_.stop();
}

void Controller::finishInit()
{
    setSBit(kCalDone, true);
    setSBit(kInitRequest, false);  // the controller ends the request itself
}

void Controller::calibrate(int k, bool span)
{
    setSBit(kCalRefused, false);
    setSBit(kCalDone, false);
    if (outcome_ == Outcome::Refuse) {
        setSBit(kCalRefused, true);
        return;
    }
    if (outcome_ == Outcome::NoAnswer)
        return;

    Scale& s = scales_[k];
    const int ad = word(kAdD + k);  // the value the console shows at this moment
    if (!span) {
        s.zeroAd = ad;
    } else {
        const short target = testValue_[k].value_or(word(kTestWeightD + k));
        // With the load at the zero point there is nothing to scale by: the factor stays.
        if (ad != s.zeroAd)
            s.factor = double(target) / double(ad - s.zeroAd);
    }
    setWord(kWeightD + k, clampShort((ad - s.zeroAd) * s.factor));
    setSBit(kCalDone, true);
}

void Controller::setLoad(int scale, int ad)
{
    if (scale < 0 || scale >= kScales)
        return;
    scales_[scale].load = ad;
    refreshScale(scale);
}

void Controller::refreshScale(int k, int drift)
{
    const Scale& s = scales_[k];
    const int ad = std::clamp(s.load + drift, -32768, 32767);
    setWord(kAdD + k, short(ad));
    setWord(kWeightD + k, clampShort((ad - s.zeroAd) * s.factor));
}

void Controller::setLiveModel(bool on)
{
    if (on && !liveTimer_.isActive())
        liveTimer_.start();
    else if (!on)
        liveTimer_.stop();
}

void Controller::liveTick()
{
    for (int k = 0; k < kScales; ++k)
        refreshScale(k, noise_ ? int(rng_.bounded(5)) - 2 : 0);
}

void Controller::setHoistTrip(int ticks, int pulsesPerTick)
{
    hoistTicks_ = std::max(ticks, 1);
    hoistPulsesPerTick_ = pulsesPerTick;
}

// The skip climbs from the receive position past the wait position to the discharge position;
// the controller keeps the counts at both as the calibrated distances.
void Controller::hoistTick()
{
    ++hoistTicksDone_;
    setWord(kHoistCount, clampShort(double(word(kHoistCount)) + hoistPulsesPerTick_));
    if (hoistTicksDone_ == std::max(1, hoistTicks_ * 2 / 5))
        setWord(kHoistToWait, word(kHoistCount));
    if (hoistTicksDone_ >= hoistTicks_) {
        setWord(kHoistToDischarge, word(kHoistCount));
        hoistTimer_.stop();
    }
}

}  // namespace plcsim
