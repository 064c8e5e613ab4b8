#include "plcsim/controller.h"

#include "plant/plant_blocks.h"

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
constexpr int kHoistDecelUp = 294, kHoistDecelDown = 295;
constexpr int kFactoryRequest = 212;
// Total sensor loads at D200.., in the units of the console's default decimals: 3000 kg under the
// aggregate and cement scales, 1500.0 kg under the powder and water scales, 150.00 kg under the admixtures.
constexpr int kSensorD = 200;
constexpr std::array<short, 14> kSensorLoads = {3000, 3000, 3000,  3000,  3000,  3000,  15000,
                                                15000, 3000, 15000, 15000, 15000, 15000, 15000};

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
    rxTimer_.setTimerType(Qt::PreciseTimer);
    rxTimer_.setInterval(1);
    connect(&rxTimer_, &QTimer::timeout, this, &Controller::pumpRequests);

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
    setSystemBits();
    setHoistDecel();
    for (int i = 0; i < int(kSensorLoads.size()); ++i)
        setWord(kSensorD + i, kSensorLoads[i]);
}

// The controller's own registers and run bits, which no request changes for long.
void Controller::setSystemBits()
{
    setWord(8000, kWatchdogMs);
    setWord(8001, kIdentification);
    setWord(8002, kMemorySteps);
    for (int d = 8010; d <= 8012; ++d)
        setWord(d, kScanTenthsMs);
    quint8& runByte = mem_[kSpecialM];
    runByte &= quint8(~0x0F);
    // M8000 run, M8001 not run; M8002, the first scan, is long over; M8003 is its opposite.
    runByte |= running_ ? quint8(0x01 | 0x08) : quint8(0x02);
}

void Controller::setRunning(bool on)
{
    running_ = on;
    if (!on) {
        liveTimer_.stop();
        hoistTimer_.stop();
        initTimer_.stop();
    }
    setSystemBits();
}

bool Controller::mBit(int n) const
{
    if (n >= 0 && n <= 1535)
        return (byteAt(0x100 + n / 8) >> (n % 8)) & 1;
    if (n >= 8000 && n <= 8255)
        return (byteAt(kSpecialM + (n - 8000) / 8) >> ((n - 8000) % 8)) & 1;
    return false;
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
    if (frame == QByteArray(1, kEnq)) {
        *kind = Answer::Enquiry;
        return QByteArray(1, kAck);
    }
    const int n = int(frame.size());
    if (n < 9 || frame.at(0) != kStx || frame.at(n - 3) != kEtx)
        return nak;
    const int sum = hexValue(frame, n - 2, 2);
    if (sum < 0 || sum != frameSum(frame, n - 3))
        return nak;
    const char command = frame.at(1);

    if ((command == '7' || command == '8') && n == 9) {
        // The bit number travels low byte first.
        const int low = hexValue(frame, 2, 2), high = hexValue(frame, 4, 2);
        if (low < 0 || high < 0)
            return nak;
        const int bit = high * 256 + low;
        if (bit >= kForceBits)
            return nak;
        const QByteArray before(1, char(mem_[bit / 8]));
        const quint8 mask = quint8(1 << (bit % 8));
        mem_[bit / 8] = command == '7' ? quint8(mem_[bit / 8] | mask) : quint8(mem_[bit / 8] & ~mask);
        afterWrite(before, bit / 8);
        *kind = Answer::Force;
        return QByteArray(1, kAck);
    }

    if (n < 11)
        return nak;
    const int address = hexValue(frame, 2, 4);
    const int count = hexValue(frame, 6, 2);
    if (address < 0 || count <= 0 || address + count > kMemorySize)
        return nak;

    if (command == '0' && n == 11) {
        QByteArray r(1, kStx);
        for (int i = 0; i < count; ++i)
            r += hex2(mem_[address + i]);
        r += kEtx;
        r += hex2(frameSum(r, int(r.size()) - 1));
        *kind = Answer::Read;
        return r;
    }
    if (command == '1' && n == 11 + 2 * count) {
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
    if (!pacedRequests_) {
        receive(bytes);
        return;
    }
    // A character is in once the line has carried all of it; back to back, the next follows at once.
    rxQueue_ += bytes;
    if (!rxTimer_.isActive()) {
        rxTaken_ = 0;
        rxClock_.start();
        rxTimer_.start();
    }
}

void Controller::pumpRequests()
{
    const qint64 due = rxClock_.nsecsElapsed() / kCharNs;
    const qsizetype n = qsizetype(std::min<qint64>(due - rxTaken_, rxQueue_.size()));
    if (n > 0) {
        const QByteArray in = rxQueue_.left(n);
        rxQueue_.remove(0, n);
        rxTaken_ += n;
        receive(in);
    }
    if (rxQueue_.isEmpty())
        rxTimer_.stop();
}

void Controller::receive(const QByteArray& bytes)
{
    rx_ += bytes;
    for (;;) {
        const qsizetype stx = rx_.indexOf(kStx);
        // An enquiry between frames is answered on its own.
        const qsizetype enq = rx_.indexOf(kEnq);
        if (enq >= 0 && (stx < 0 || enq < stx)) {
            rx_.remove(0, enq + 1);
            takeFrame(QByteArray(1, kEnq));
            continue;
        }
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
    // The run bits and system registers are the controller's; a write to them lasts until the next scan.
    setSystemBits();
    if (!running_)
        return;
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

    // The factory state: the hoist forgets its calibration and takes the deceleration distances it
    // left the works with.
    if (rose(kFactoryRequest)) {
        hoistTimer_.stop();
        setWord(kHoistCount, 0);
        setWord(kHoistToWait, 0);
        setWord(kHoistToDischarge, 0);
        setHoistDecel();
    }
}

// The deceleration distances a hoist leaves the works with.
void Controller::setHoistDecel()
{
    const QList<int> hoist = PlantBlocks::defaults(QLatin1String("D291"));
    setWord(kHoistDecelUp, short(hoist.value(kHoistDecelUp - kHoistCount)));
    setWord(kHoistDecelDown, short(hoist.value(kHoistDecelDown - kHoistCount)));
}

void Controller::commission()
{
    // In the order of the list: the hoist's block comes after the vibrator times it overlaps.
    for (const BlockLayout& block : Blocks::all()) {
        const QList<int> raw = Blocks::defaults(block.id);
        const int first = block.device.mid(1).toInt();
        if (block.device.startsWith(QLatin1Char('D'))) {
            for (int i = 0; i < raw.size(); ++i)
                setWord(first + i, short(raw[i]));
            continue;
        }
        // A bit group: the four digits are the byte of the first bit and the next; only the block's own
        // bits change.
        const int mask = block.fields.value(0).mask;
        const int at = first / 8;
        const int old = byteAt(at) << 8 | byteAt(at + 1);
        const int word = (old & ~mask) | (raw.value(0) & mask);
        setByteAt(at, quint8(word >> 8));
        setByteAt(at + 1, quint8(word));
    }
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
    if (on && running_ && !liveTimer_.isActive())
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
