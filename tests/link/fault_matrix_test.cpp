// The requests whose steps chain, show a caption or are read apart, against every way the line can fail
// them: the re-sends on the wire, the red caption while a write is repeated, the green one when it is
// taken. Time is driven by the re-send clock's handler, so the matrix runs in seconds. And every step's
// good reply with its form absent: the requests the dispatch chains on its own.
#include "test_support.h"

#include "common/form_access.h"
#include "common/module1.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/step_table.h"
#include "shell/app_setup.h"

#include <QLabel>

namespace {

// The device gone is the same nine sends and box whatever the step: see tst_link_engine.
enum Fault { NoReply, Nak, Garbage, Short, Long, Late };
const char* const kFaultNames[] = {"no reply", "NAK", "garbage", "short", "long", "late"};

struct Step {
    int step;
    int bytes;          // bytes read; 0 for a write
    const char* chain;  // devices of the requests the dispatch sends itself once the reply is taken
    const char* form;   // the caption of a write
    const char* label;
    const char* good;   // shown green when the write is taken
    const char* bad;    // shown red when it has to be repeated
    bool goodHides = false;  // the caption goes when the write is taken
    bool badHides = false;   // the caption goes, its text written, when the write has to be repeated
};

// A step not here takes a spoilt reply as tst_link_engine's outcomes show; its good one is below.
const Step kSteps[] = {
    {8, 30, "S500", "", "", "", ""},
    {9, 0, "", "Cansd", "LbLCssdS", "参数设定成功!", "正在尝试继续参数设定!"},
    {11, 0, "", "Cansd", "LblTzxxTip", "选项更改完成!", "尝试更改选项!"},
    {20, 2, "S612", "", "", "", ""},
    {21, 0, "", "YIBiao", "LblTzxxTip", "调校方式已更改!", "尝试更改调校方式!"},
    {23, 0, "", "YIBiao", "LblTzxxZeroTip", "", "尝试更改零位跟踪功能!", true},
    {24, 2, "S500", "", "", "", ""},
    {25, 0, "", "Other", "LblTzxxTip", "选项更改完成!", "尝试更改时间设定选项!"},
    {52, 0, "S181 S998", "", "", "", ""},
    {53, 0, "S998", "", "", "", ""},
    {54, 0, "S182 S182 S998", "", "", "", ""},
    {55, 0, "S182 S998", "", "", "", ""},
    {56, 0, "S998", "", "", "", ""},
    {57, 0, "S999", "BcBut", "LbLCssdS", "", "", false, true},
    {62, 0, "S212", "Factory", "LbLCssdS", "出厂设置成功!", ""},
    {63, 0, "Y62", "Other", "lblFengJiTip", "", "尝试开启风机!"},
    {64, 0, "Y62", "Other", "lblFengJiTip", "", "尝试关闭风机!"},
    {65, 0, "Y62", "Other", "lblChuChenTip", "", "尝试开启除尘阀!", false, true},
    {66, 0, "Y62", "Other", "lblChuChenTip", "", "尝试关闭除尘阀!", false, true},
    {72, 0, "", "ZDTime", "LbLCssdS", "振动器时间设定成功!", "正在尝试继续振动器时间设定!"},
    {74, 0, "", "Sensor", "LbLCssdS", "传感器配置设定成功!", "正在尝试继续传感器配置设定!"},
    {75, 12, "S612 S500", "", "", "", ""},
    {76, 0, "", "Other", "LbLCssdS", "时间设定成功!", "正在尝试继续时间设定!"},
    {108, 40, "S500", "", "", "", ""},
    {109, 0, "", "CansdAG", "LbLCssdS", "参数设定成功!", "正在尝试继续参数设定!"},
    {111, 0, "", "CansdAG", "LblTzxxTip", "选项更改完成!", "尝试更改选项!"},
    {158, 0, "S182 D291", "", "", "", ""},
    {159, 0, "D291", "", "", "", ""},
    {160, 0, "", "YiBiaoAdvance", "LbLCssdS", "参数设定成功!", "正在尝试继续参数设定!"},
};

// A spoilt reply that the link takes and finds bad is re-sent at once; one that never reaches the
// receive threshold, or that the receive event leaves alone, waits for the clock.
bool resentAtOnce(const Step& s, Fault f)
{
    const bool read = s.bytes > 0;
    switch (f) {
    case Nak:
        return !read;  // one character: below the threshold of any read
    case Garbage:
        return !(read && s.step == 20);  // step 20 leaves a reply without STX and ETX to the clock
    case Long:
        return read || !(s.step == 52 || s.step == 54 || s.step == 160);  // command bits: longer than an ACK
    default:
        return false;  // no reply, a short one (none at all to a write), a late one
    }
}

// Neighbours of the replies the receive event leaves to the clock (the matrix's long answer to the zero bit,
// garbage to step 20): these it takes, finds bad and re-sends at once.
const struct { const char* name; int step, bytes; const char* reply; } kGuards[] = {
    {"two characters to the zero bit", 52, 0, "\x06" "A"},
    {"step 20 with ETX only", 20, 2, "050000\x03" "0"},
    {"step 22 without STX and ETX", 22, 2, "05000000"},
};
}  // namespace

class FaultMatrixTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterForms(); }
    void init()
    {
        h = new ConsoleHarness;
        h->connectLink();
        // Only the test's own ticks count: no poll and no time-out of their own during a row.
        Link().Timer1.setInterval(3600 * 1000);
        Link().Timer2.setInterval(3600 * 1000);
        h->sim.setLateMs(100);
        Link().LateReplyHorizonMs = 250;  // the late reply comes within it
        UseScaleDevices(0);
        ParamDeviceAG = ParamDevice;
        CalBitMask = BitOperand(CalSpanDevice);
    }
    void cleanup()
    {
        delete h;
        Link().Timer1.setInterval(400);
        Link().Timer2.setInterval(1000);
        Link().LateReplyHorizonMs = 2000;
    }

    void everyStepEveryFault_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("fault");
        for (int r = 0; r < int(std::size(kSteps)); ++r)
            for (int f = NoReply; f <= Late; ++f)
                QTest::addRow("step %d, %s", kSteps[r].step, kFaultNames[f]) << r << f;
    }

    void everyStepEveryFault()
    {
        QFETCH(int, row);
        QFETCH(int, fault);
        const Step& s = kSteps[row];
        const Fault f = Fault(fault);
        MbAnswerer mb;
        QLabel* caption = captionLabel(s);
        const bool atOnce = resentAtOnce(s, f);
        // A write repeated at once: the re-send is left unanswered, so that its red caption can be seen.
        const bool watchRed = caption && (*s.bad || s.badHides) && atOnce;
        // A caption that is to go must be showing first.
        if (caption && (s.goodHides || s.badHides))
            caption->show();

        QList<QByteArray> wire;
        connect(Link().port(), &CommPort::written, this, [&](const QByteArray& b) { wire << b; });
        int replies = 0;
        connect(&h->sim, &plcsim::Controller::reply, this, [&] { ++replies; });
        int heard = 0;
        connect(&h->sim, &plcsim::Controller::requestReceived, this, [&] {
            if (++heard == 2 && watchRed)
                h->sim.injectFault(plcsim::Fault::Unplugged);
        });
        static const plcsim::Fault kSim[] = {plcsim::Fault::NoReply, plcsim::Fault::Nak, plcsim::Fault::Garbage,
                                             plcsim::Fault::Short, plcsim::Fault::Long, plcsim::Fault::Late};
        h->sim.injectFault(kSim[f]);

        StepNo = short(s.step);
        SendFlag = true;
        const QString request = s.bytes ? BuildReadFrameBytes(QStringLiteral("S181"), short(s.bytes))
                                        : BuildWriteFrame(QStringLiteral("S181"), QStringLiteral("0000"), 4);
        send_recieve(request);
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();

        int resends = 1;
        if (watchRed) {
            QVERIFY(QTest::qWaitFor([&] { return wire.size() == 2; }));
            if (*s.bad) {
                QCOMPARE(caption->text(), QString::fromUtf8(s.bad));
                QCOMPARE(TextColor(caption), QColor(0xFF, 0, 0));
            }
            QCOMPARE(caption->isHidden(), s.badHides);
            h->sim.plugIn();
            Link().RetryRequest();
            resends = 2;
        } else if (!atOnce) {
            QCOMPARE(wire.size(), 1);
            Link().RetryRequest();
        }

        const QStringList chain = QString::fromLatin1(s.chain).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (f == Late)  // the late reply, the re-send's and the chain's
            QVERIFY(QTest::qWaitFor([&] { return replies == 2 + int(chain.size()); }));
        QVERIFY(QTest::qWaitFor([] { return SendFlag && !Link().Timer2.isActive(); }));
        QCoreApplication::processEvents();

        // The request and its re-sends as they were, then the chained requests by the address they read.
        QStringList expected(resends + 1, request), seen;
        for (const QString& d : chain) expected << DeviceToAddress(d);
        for (qsizetype i = 0; i < wire.size(); ++i)
            seen << QString::fromLatin1(i > resends ? wire[i].mid(2, 4) : wire[i]);
        QCOMPARE(seen, expected);

        QCOMPARE(mb.texts, QStringList());
        QCOMPARE(int(Link().RetryCount), 0);
        if (*s.form && !caption)
            QSKIP("the caption's form is not in the console yet");
        if (caption && *s.good) {
            QCOMPARE(caption->text(), QString::fromUtf8(s.good));
            QCOMPARE(TextColor(caption), QColor(0, 0x80, 0));
            QVERIFY(!caption->isHidden());
        }
        if (caption && s.goodHides)
            QVERIFY(caption->isHidden());
    }

    void everyStepWithoutItsForm_data()
    {
        QTest::addColumn<int>("step");
        QTest::addColumn<int>("bytes");  // bytes read, 0 for a write
        QTest::addColumn<QStringList>("chain");
        QList<Step> rows(std::begin(kSteps), std::end(kSteps));
        // The steps that only take their reply; 60, which stands ready but is never sent; and the default
        // row: 444 and the numbers nothing waits for.
        const std::pair<int, int> more[] = {{10, 2},  {22, 2},  {51, 64}, {58, 2},  {59, 2}, {61, 0},  {67, 2},
                                            {71, 56}, {73, 28}, {99, 2},  {110, 2}, {157, 10}, {60, 2}, {444, 2},
                                            {7, 2},   {300, 0}};
        for (const auto& [step, bytes] : more)
            rows.append({step, bytes, "", "", "", "", ""});
        for (const Step& r : rows)
            QTest::addRow("step %d", r.step)
                << r.step << r.bytes << QString::fromLatin1(r.chain).split(' ', Qt::SkipEmptyParts);
    }

    void everyStepWithoutItsForm()
    {
        QFETCH(int, step);
        QFETCH(int, bytes);
        QFETCH(QStringList, chain);
        MbAnswerer mb;
        // A good reply: ACK to a write, else that many data bytes of words of 5.
        exchange(short(step), bytes,
                 bytes ? "\x02" + QByteArray("0500").repeated(bytes / 2) + "\x03" "00" : QByteArray(1, 0x06), true);
        // The chain runs against the controller to its end; then the link is idle.
        QTRY_VERIFY(!Link().Timer2.isActive());
        QStringList sent, expected;
        for (const QString& f : h->takeFrames()) sent << f.mid(2, 4);
        for (const QString& d : chain) expected << DeviceToAddress(d);
        QCOMPARE(sent, expected);
        QVERIFY(mb.texts.isEmpty());
        QCOMPARE(int(Link().RetryCount), 0);
        QCOMPARE(SendFlag, FindStep(short(step)) != nullptr);  // else the reply was dropped, not taken
        if (!FindStep(short(step)))
            QCOMPARE(int(StepNo), step);
    }

    void receiveGuards_data() { TableRows(kGuards); }
    void receiveGuards()
    {
        const auto& c = TableRow(kGuards);
        const QStringList first = exchange(short(c.step), c.bytes, c.reply, false);
        QCOMPARE(h->takeFrames(), first);
        QCOMPARE(int(Link().RetryCount), 1);
        QCOMPARE(int(StepNo), c.step);
        QVERIFY(Link().Timer2.isActive());
    }

private:
    // The form of a caption, loaded and at rest, or nullptr when it is not there yet.
    QLabel* captionLabel(const Step& s)
    {
        if (!*s.form)
            return nullptr;
        QWidget* f = Forms::load(QLatin1String(s.form));
        if (!f)
            return nullptr;
        // A form that reads as it is made is left to finish first.
        if (!QTest::qWaitFor([] { return SendFlag && !Link().Timer2.isActive(); }))
            qWarning("%s did not come to rest", s.form);
        Link().Timer1.stop();
        h->takeFrames();
        return f->findChild<QLabel*>(QLatin1String(s.label));
    }

    // Sends a request for step with the controller deaf, then delivers reply as the line would. With
    // answerChain the controller hears again first, so that a chain runs to its end.
    QStringList exchange(short step, int bytes, const QByteArray& reply, bool answerChain)
    {
        h->sim.injectFault(plcsim::Fault::Unplugged);
        StepNo = step;
        SendFlag = true;
        send_recieve(bytes ? BuildReadFrameBytes("S181", short(bytes)) : BuildWriteFrame("S181", "0000", 4));
        const QStringList sent = h->takeFrames();
        if (answerChain)
            h->sim.plugIn();
        emit h->sim.reply(reply);
        return sent;
    }

    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(FaultMatrixTest)
#include "fault_matrix_test.moc"
