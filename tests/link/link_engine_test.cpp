// The link with its re-send clock ticked by hand: its trace, and every step against every way the line fails.
#include "test_support.h"

#include "common/text_file.h"
#include "link/frame_codec.h"
#include "link/link_trace.h"
#include "link/step_table.h"

#include <QLabel>
#include <QRegularExpression>

namespace {
void tick() { QMetaObject::invokeMethod(&Link().Timer2, "timeout"); }

// Step's request as its form sends it: a read of that many bytes, or a word written.
QString send(short step, int bytes, const char* device = "S181")
{
    StepNo = step;
    SendFlag = true;
    const QString frame = bytes ? BuildReadFrameBytes(device, short(bytes)) : BuildWriteFrame(device, "0000", 4);
    send_recieve(frame);
    return frame;
}
// Step 60 reads two bytes of S998; step 61 writes a word to S212. Neither has a form behind it.
void request(bool write) { send(write ? 61 : 60, write ? 0 : 2, write ? "S212" : "S998"); }

// The ring as "sent/outcome" per exchange, with the reply's characters where the row asks for them.
QStringList ringSummary(bool withReply)
{
    QStringList out;
    const LinkTraceRing& r = LinkTrace();
    for (quint64 s = r.firstSeq(); s <= r.lastSeq() && s > 0; ++s) {
        const TraceExchange& x = *r.at(s);
        const char* send = x.outcome == TraceOutcome::Dropped ? "" : x.resent ? "re-sent/" : "sent/";
        out << QLatin1String(send) + TraceOutcomeText(x.outcome) +
                   (withReply && !x.reply.isEmpty() ? QLatin1Char(' ') + ShowLineChars(x.reply) : QString());
    }
    return out;
}

using F = plcsim::Fault;
// The fault of the first answer, the ticks of the re-send clock before the controller answers, the ring.
const struct { const char* name; bool write; F fault; int ticks; const char* ring; } kOutcomes[] = {
    {"read answered", false, F::None, 0, "sent/reply taken <STX>0000<ETX>C3"},
    {"write acknowledged", true, F::None, 0, "sent/acknowledged <ACK>"},
    {"NAK to a write, re-sent at once", true, F::Nak, 0, "sent/NAK <NAK>|re-sent/acknowledged <ACK>"},
    {"NAK to a read, seen at the re-send", false, F::Nak, 1, "sent/NAK <NAK>|re-sent/reply taken <STX>0000<ETX>C3"},
    {"no reply, then answered", false, F::NoReply, 1, "sent/timed out|re-sent/reply taken <STX>0000<ETX>C3"},
    {"short read, seen at the re-send", false, F::Short, 1,
     "sent/short <STX>0000<ETX>|re-sent/reply taken <STX>0000<ETX>C3"},
    {"long reply to a write", true, F::Long, 0, "sent/long|re-sent/acknowledged <ACK>"},
    {"garbage of the right length", false, F::Garbage, 0, "sent/garbage|re-sent/reply taken <STX>0000<ETX>C3"},
    {"late: owed while the next request waits", false, F::Late, 1,
     "sent/late <STX>0000<ETX>C3|re-sent/reply taken <STX>0000<ETX>C3|sent/reply taken <STX>0000<ETX>C3"},
};

const struct { F fault; const char* name; } kFaults[] = {
    {F::NoReply, "no reply"}, {F::Nak, "NAK"}, {F::Garbage, "garbage"}, {F::Short, "short"}, {F::Long, "long"},
    {F::Late, "late"}};

// Bytes read (0: a write); the requests the dispatch chains on its own once the reply is taken; a write's
// caption, its green text when taken and red one when repeated, and whether it goes then instead. A step not
// here fares as in outcomes.
struct Step { int step, bytes; const char *chain, *form, *label, *good, *bad; bool goodHides = false;
              bool badHides = false; };
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
bool resentAtOnce(const Step& s, F f)
{
    const bool read = s.bytes > 0;
    switch (f) {
    case F::Nak:
        return !read;  // one character: below the threshold of any read
    case F::Garbage:
        return !(read && s.step == 20);  // step 20 leaves a reply without STX and ETX to the clock
    case F::Long:
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
Q_DECLARE_METATYPE(Step)

class LinkEngineTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterForms(); }
    void init()
    {
        h = new ConsoleHarness;
        h->connectLink();
        // Only the test's own ticks count.
        Link().Timer1.setInterval(3600 * 1000);
        Link().Timer2.setInterval(3600 * 1000);
        h->sim.setLateMs(100);
        Link().LateReplyHorizonMs = 250;  // the late reply comes within it
        UseScaleDevices(0);
        ParamDeviceAG = ParamDevice;
        CalBitMask = BitOperand(CalSpanDevice);
        LinkTrace().clear();
    }
    void cleanup()
    {
        delete h;
        Link().Timer1.setInterval(400);
        Link().Timer2.setInterval(1000);
        Link().LateReplyHorizonMs = 2000;
    }

    // The periods the controller's program and the operators count on: a live reading every 400 ms, a
    // re-send a second after an unanswered request, the countdown by the second; a login sets them anew.
    void clockPeriods()
    {
        LinkEngine fresh;
        QList<int> periods{fresh.Timer1.interval(), fresh.Timer2.interval(), fresh.Timer3.interval()};
        fresh.Timer1.setInterval(50);
        fresh.resetForLogin();
        periods << fresh.Timer1.interval();
        QCOMPARE(periods, (QList<int>{400, 1000, 1000, 400}));
    }

    // A re-sent request's first send may still be answered late: the next request waits for that reply, the
    // link busy meanwhile, and a sender forcing its way in replaces it. A form that returns stops its clock.
    void nextRequestWaitsForAnOwedReply_data()
    {
        QTest::addColumn<bool>("formReturns");
        QTest::newRow("sent once the owed reply is too late, and answered") << false;
        QTest::newRow("the form returns meanwhile: sent, unanswered, never re-sent") << true;
    }
    void nextRequestWaitsForAnOwedReply()
    {
        QFETCH(bool, formReturns);
        Link().LateReplyHorizonMs = 300;
        h->sim.injectFault(F::NoReply);
        request(false);
        QCoreApplication::processEvents();
        Link().RetryRequest();
        QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());
        QCOMPARE(h->takeFrames().size(), 2);
        request(false);
        request(false);
        QCOMPARE(h->takeFrames().size(), 0);
        QVERIFY(!SendFlag && Link().Timer2.isActive());
        if (formReturns) {
            Link().Timer2.stop();
            h->sim.injectFault(F::NoReply);
        }
        QStringList sent;
        QTRY_VERIFY(!(sent += h->takeFrames()).isEmpty());
        QCOMPARE(sent, QStringList{Frame(QStringLiteral("0007C02"))});
        if (formReturns)
            QVERIFY(!SendFlag && !Link().Timer2.isActive());
        else
            QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());
    }

    void outcomes_data() { TableRows(kOutcomes); }
    void outcomes()
    {
        const auto& c = TableRow(kOutcomes);
        h->sim.injectFault(c.fault);
        request(c.write);
        QCoreApplication::processEvents();  // what the controller answers at once has come
        for (int i = 0; i < c.ticks; ++i) tick();
        QTRY_VERIFY(SendFlag);
        if (c.fault == F::Late)
            request(c.write);  // waits for the first send's reply, which comes late
        QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());
        QStringList seen = ringSummary(true);
        // The garbage and the long tail are the simulator's random characters: only their outcome counts.
        if (c.fault == F::Garbage || c.fault == F::Long)
            seen[0] = seen[0].section(QLatin1Char(' '), 0, 0);
        QCOMPARE(seen, QString::fromLatin1(c.ring).split('|'));
    }

    // A send while a request is out goes nowhere and leaves the clock alone, also once the form has stopped it.
    // The form has moved on: the request that is out times out, is not re-sent, and the clock runs on.
    void droppedWhileBusy()
    {
        h->sim.injectFault(F::Unplugged);
        request(false);
        Link().Timer2.stop();
        StepNo = 61;
        send_recieve(BuildWriteFrame(QStringLiteral("S212"), QStringLiteral("0000"), 4));
        QTest::qWait(20);
        QCOMPARE(h->takeFrames().size(), 1);
        QVERIFY(!Link().Timer2.isActive());
        QCOMPARE(ringSummary(false), (QStringList{"sent/waiting", "dropped"}));
        Link().Timer2.start();
        tick();
        tick();
        QCOMPARE(ringSummary(false), (QStringList{"sent/timed out", "dropped"}));
        QCOMPARE(h->takeFrames().size(), 0);
        QVERIFY(Link().Timer2.isActive());
        QCOMPARE(int(Link().RetryCount), 0);
    }

    // Nine unanswered sends: the trace file goes to ProgramErr before the fault box, and the error log names it.
    void faultLeavesTheTraceFile()
    {
        MbAnswerer mb;
        h->sim.injectFault(F::Unplugged);
        Link().Timer1.start();
        request(false);
        for (int i = 0; i < 9; ++i) tick();
        QTRY_COMPARE(mb.texts, QStringList{QStringLiteral("通讯发生错误请检查：\n1、下位机是否已断电；\n"
                                                          "2、下位机是否正常运行；\n3、通讯线是否接在端口:Com2,且接触良好。")});
        QCOMPARE(mb.errorIcons, QList<bool>{true});
        QCOMPARE(int(StepNo), 444);
        QCOMPARE(int(Link().RetryCount), 0);
        QVERIFY(!Link().Timer1.isActive() && !Link().Timer2.isActive() && !Link().Timer3.isActive());
        QCOMPARE(h->takeFrames().size(), 9);
        const QFileInfoList files = QDir(h->path(QStringLiteral("ProgramErr")))
                                        .entryInfoList({QStringLiteral("LinkTrace-*.txt")}, QDir::Files);
        QCOMPARE(files.size(), 1);
        const QString file = files[0].filePath();
        QStringList lines, want;
        QVERIFY(TextFile::readLines(file, &lines));
        QVERIFY(lines.takeFirst().startsWith(QStringLiteral("Link trace of ORVAPLCCOM, port Com2, written ")));
        lines.removeFirst();
        QList<qint64> times;
        for (QString& l : lines) {
            times << l.section(' ', 0, 0, QString::SectionSkipEmpty).toLongLong();
            l.remove(QRegularExpression(QStringLiteral("^ *\\d+  ")));
        }
        for (int i = 0; i < 9; ++i)
            want << QStringLiteral("out    60  <STX>0007C02<ETX>6F  ") + (i ? "re-sent" : "sent")
                 << QStringLiteral("in     60  -  timed out");
        QCOMPARE(lines, want);
        QVERIFY(std::is_sorted(times.begin(), times.end()));
        QVERIFY2(ErrorLogText().contains(QStringLiteral("ProgramErr/") + QFileInfo(file).fileName()),
                 qPrintable(ErrorLogText()));
    }

    // Nineteen trace files stay beside the new one, the oldest go; other files do not count.
    void keepsTheNewestFiles()
    {
        const QString folder = h->path(QStringLiteral("ProgramErr"));
        for (const auto& [before, gone] : {std::pair{19, 0}, {20, 1}, {25, 6}}) {
            QDir(folder).removeRecursively();
            QDir().mkpath(folder);
            QStringList old;
            for (int i = 0; i < before; ++i) {
                old << QStringLiteral("LinkTrace-202601%1-090000-000.txt").arg(i + 1, 2, 10, QLatin1Char('0'));
                QVERIFY(TextFile::writeLines(folder + QLatin1Char('/') + old.last(), {QStringLiteral("x")}));
            }
            QVERIFY(TextFile::writeLines(folder + QStringLiteral("/20261ErrLog.txt"), {QStringLiteral("x")}));
            WriteTraceFile(LinkTrace(), folder, QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)));
            const QStringList kept =
                QStringList{"20261ErrLog.txt"} + old.mid(gone) + QStringList{"LinkTrace-20260305-140322-000.txt"};
            QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name), kept);
        }
    }

    void everyStepEveryFault_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("fault");
        for (int r = 0; r < int(std::size(kSteps)); ++r)
            for (int f = 0; f < int(std::size(kFaults)); ++f)
                QTest::addRow("step %d, %s", kSteps[r].step, kFaults[f].name) << r << f;
    }

    void everyStepEveryFault()
    {
        QFETCH(int, row);
        QFETCH(int, fault);
        const Step& s = kSteps[row];
        const F f = kFaults[fault].fault;
        MbAnswerer mb;
        QLabel* caption = captionLabel(s);
        const bool atOnce = resentAtOnce(s, f);
        // A write repeated at once: the re-send is left unanswered, so that its red caption can be seen.
        const bool watchRed = caption && (*s.bad || s.badHides) && atOnce;
        if (caption && (s.goodHides || s.badHides))
            caption->show();

        QList<QByteArray> wire;
        connect(Link().port(), &CommPort::written, this, [&](const QByteArray& b) { wire << b; });
        int replies = 0;
        connect(&h->sim, &plcsim::Controller::reply, this, [&] { ++replies; });
        int heard = 0;
        connect(&h->sim, &plcsim::Controller::requestReceived, this, [&] {
            if (++heard == 2 && watchRed)
                h->sim.injectFault(F::Unplugged);
        });
        h->sim.injectFault(f);

        const QString request = send(short(s.step), s.bytes);
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
        if (f == F::Late)  // the late reply, the re-send's and the chain's
            QVERIFY(QTest::qWaitFor([&] { return replies == 2 + int(chain.size()); }));
        QVERIFY(QTest::qWaitFor([] { return SendFlag && !Link().Timer2.isActive(); }));
        QCoreApplication::processEvents();

        // The chained requests by the address they read.
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
        QTest::addColumn<Step>("s");
        QList<Step> rows(std::begin(kSteps), std::end(kSteps));
        // The steps that only take their reply; 60, which stands ready but is never sent; and the default
        // row: 444 and the numbers nothing waits for.
        const std::pair<int, int> more[] = {{10, 2},  {22, 2},  {51, 64}, {58, 2},  {59, 2}, {61, 0},  {67, 2},
                                            {71, 56}, {73, 28}, {99, 2},  {110, 2}, {157, 10}, {60, 2}, {444, 2},
                                            {7, 2},   {300, 0}};
        for (const auto& [step, bytes] : more)
            rows.append({step, bytes, "", "", "", "", ""});
        for (const Step& r : rows) QTest::addRow("step %d", r.step) << r;
    }

    void everyStepWithoutItsForm()
    {
        QFETCH(Step, s);
        MbAnswerer mb;
        exchange(short(s.step), s.bytes,
                 s.bytes ? "\x02" + QByteArray("0500").repeated(s.bytes / 2) + "\x03" "00" : QByteArray(1, 0x06), true);
        QTRY_VERIFY(!Link().Timer2.isActive());
        QStringList sent, expected;
        for (const QString& f : h->takeFrames()) sent << f.mid(2, 4);
        for (const QString& d : QString::fromLatin1(s.chain).split(' ', Qt::SkipEmptyParts))
            expected << DeviceToAddress(d);
        QCOMPARE(sent, expected);
        QVERIFY(mb.texts.isEmpty());
        QCOMPARE(int(Link().RetryCount), 0);
        QCOMPARE(SendFlag, FindStep(short(s.step)) != nullptr);  // else the reply was dropped, not taken
        if (!FindStep(short(s.step)))
            QCOMPARE(int(StepNo), s.step);
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
    QLabel* captionLabel(const Step& s)
    {
        if (!*s.form)
            return nullptr;
        QWidget* f = Forms::load(QLatin1String(s.form));
        if (!f)
            return nullptr;
        // A form that reads as it is made is left to finish first.
        (void)QTest::qWaitFor([] { return SendFlag && !Link().Timer2.isActive(); });
        Link().Timer1.stop();
        h->takeFrames();
        return f->findChild<QLabel*>(QLatin1String(s.label));
    }

    // Sends a request for step with the controller deaf, then delivers reply as the line would. With
    // answerChain the controller hears again first, so that a chain runs to its end.
    QStringList exchange(short step, int bytes, const QByteArray& reply, bool answerChain)
    {
        h->sim.injectFault(F::Unplugged);
        send(step, bytes);
        const QStringList sent = h->takeFrames();
        if (answerChain)
            h->sim.plugIn();
        emit h->sim.reply(reply);
        return sent;
    }

    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(LinkEngineTest)
#include "link_engine_test.moc"
