#pragma once
// The plant's controller as the console sees it over the line: its byte memory, the two requests it
// answers, and the small part of its program the console relies on. Written from the controller's
// side on purpose: nothing here shares code with the console's own frames.
#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QRandomGenerator>
#include <QTimer>

#include <array>
#include <optional>

namespace plcsim {

inline constexpr char kStx = 0x02;
inline constexpr char kEtx = 0x03;
inline constexpr char kEnq = 0x05;
inline constexpr char kAck = 0x06;
inline constexpr char kNak = 0x15;

// Byte memory: S from 0000, X from 0080, Y from 00A0, T from 00C0, M from 0100, C from 01C0,
// M8000.. from 01E0, D8000.. from 0E00, D0..D511 from 1000.
inline constexpr int kMemorySize = 0x1400;
// Force on and off name one bit by its number in that memory: byte * 8 + bit, below 1000 hex.
inline constexpr int kForceBits = 0x1000;
inline constexpr int kSpecialM = 0x01E0;  // M8000

// What a controller always holds, running or stopped: the watchdog time, its identification, its
// program memory and its scan times. The identification is this simulator's own.
inline constexpr short kWatchdogMs = 200;       // D8000
inline constexpr short kIdentification = 100;   // D8001: simulator version 1.00
inline constexpr short kMemorySteps = 8;        // D8002: 8 k steps
inline constexpr short kScanTenthsMs = 20;      // D8010..D8012: current, shortest and longest scan, 0.1 ms
inline constexpr int kScales = 16;

enum class Fault { None, NoReply, Nak, Garbage, Short, Long, Late, Unplugged };
enum class Outcome { Success, Refuse, NoAnswer };

class Controller : public QObject {
    Q_OBJECT
public:
    explicit Controller(QObject* parent = nullptr);

    // Memory, for tests and the control channel. No program logic runs on these.
    quint8 byteAt(int address) const;
    void setByteAt(int address, quint8 value);
    short word(int dNumber) const;
    void setWord(int dNumber, short value);
    bool sBit(int n) const;
    void setSBit(int n, bool on);
    bool yBit(int octalNumber) const;  // yBit(66) is Y66
    bool mBit(int n) const;             // M0..M1535 and M8000..M8255

    // Running: M8000 on, M8001 off, and the program acts on what is written. Stopped: M8000 off,
    // M8001 on, memory is still read, written and forced, and the program does nothing.
    void setRunning(bool on);
    bool running() const { return running_; }

    // One complete frame in, the true reply out (empty for none). No faults, no pacing.
    QByteArray handleFrame(const QByteArray& frame);
    // Bytes as they come off the line; replies leave through reply().
    void feed(const QByteArray& bytes);

    QList<QByteArray> requests() const { return requests_; }
    void clearRequests() { requests_.clear(); }

    // The next `count` requests get the fault; Unplugged lasts until Fault::None or plugIn().
    void injectFault(Fault fault, int count = 1);
    void plugIn() { injectFault(Fault::None); }
    Fault fault() const { return fault_; }
    void setLateMs(int ms) { lateMs_ = ms; }
    // Paced: one character at a time at 9600 baud, 10 bits each. Unpaced: the whole reply at once.
    void setPaced(bool on);
    bool isPaced() const { return paced_; }
    // Requests taken only as fast as the line carries them, one character in 10 bits at 9600 baud, as a
    // real line delivers them where a pseudo-terminal delivers a frame at once.
    void setPacedRequests(bool on) { pacedRequests_ = on; }

    // The controller's program.
    void setLiveModel(bool on);
    bool liveModel() const { return liveTimer_.isActive(); }
    void setNoise(bool on) { noise_ = on; }
    void setLoad(int scale, int ad);
    void setCalOutcome(Outcome outcome) { outcome_ = outcome; }
    Outcome calOutcome() const { return outcome_; }
    void setInitDelayMs(int ms) { initTimer_.setInterval(ms); }
    void setInitNever(bool never) { initNever_ = never; }
    // A commissioned plant: every block the console edits holds the defaults of its kind, as the
    // console's block layer gives them (parameters of the fourteen scales, option words, times, vibrator
    // times, sensor loads, the hoist's counts and deceleration distances).
    void commission();
    // A hoist trip climbs pulsesPerTick every 200 ms for `ticks` ticks.
    void setHoistTrip(int ticks, int pulsesPerTick);
    bool hoistRunning() const { return hoistTimer_.isActive(); }

signals:
    void reply(const QByteArray& bytes);
    void requestReceived(const QByteArray& frame);

private:
    enum class Answer { Read, Write, Force, Enquiry, Nak };
    QByteArray execute(const QByteArray& frame, Answer* kind);
    void takeFrame(const QByteArray& frame);
    void send(const QByteArray& bytes);
    void pumpPaced();
    void receive(const QByteArray& bytes);
    void pumpRequests();
    QByteArray junk(int n);

    void afterWrite(const QByteArray& before, int address);
    void refreshScale(int k, int drift = 0);
    void calibrate(int k, bool span);
    void liveTick();
    void hoistTick();
    void finishInit();
    void setSystemBits();
    void setHoistDecel();

    std::array<quint8, kMemorySize> mem_{};
    QByteArray rx_;
    QList<QByteArray> requests_;

    Fault fault_ = Fault::None;
    int faultCount_ = 0;
    int lateMs_ = 1500;
    bool paced_ = false;
    QByteArray txQueue_;
    qint64 txSent_ = 0;
    QElapsedTimer txClock_;
    QTimer txTimer_;
    bool pacedRequests_ = false;
    QByteArray rxQueue_;
    qint64 rxTaken_ = 0;
    QElapsedTimer rxClock_;
    QTimer rxTimer_;

    struct Scale {
        int load = 0;    // level the raw signal drifts around
        int zeroAd = 0;  // AD at weight 0
        double factor = 1.0;
    };
    std::array<Scale, kScales> scales_{};
    // The test value the console wrote last for a scale, taken by its span pulse.
    std::array<std::optional<short>, kScales> testValue_{};
    bool noise_ = true;
    QRandomGenerator rng_{20240611};
    QTimer liveTimer_;

    bool running_ = true;
    Outcome outcome_ = Outcome::Success;
    QTimer initTimer_;
    bool initNever_ = false;

    QTimer hoistTimer_;
    int hoistTicks_ = 20;
    int hoistPulsesPerTick_ = 150;
    int hoistTicksDone_ = 0;
};

}  // namespace plcsim
