#include "cal_rig.h"

#include "shell/plc_form.h"

#include <QDate>

namespace {
const QString kInitRunning = QStringLiteral("正在硬件初始化,请稍候...");

bool shown(BcBut* f, const char* control) { return !Ctl(f, QLatin1String(control))->isHidden(); }
QString status(BcBut* f) { return f->LbLCssdS->isHidden() ? QString() : f->LbLCssdS->text(); }

// Codes typed in turn, "dated": the code and today's month plus day. Outcome: "gate", "menu" or "ended".
struct GateCase {
    const char* name;
    short mode;
    bool passedEarlier, firstNaming;
    QStringList codes;
    int wrong;
    const char* outcome;
};
const QStringList kFourWrong(4, QStringLiteral("12345"));
const GateCase kGate[] = {
    {"calibration, first time", 0, false, false, {}, 0, "gate"},
    {"calibration, passed this run", 0, true, false, {}, 0, "menu"},
    {"parameters, never gated", 1, false, false, {}, 0, "menu"},
    {"the code", 0, false, false, {"90765"}, 0, "menu"},
    {"a near miss", 0, false, false, {"90766"}, 1, "gate"},
    {"first naming: month plus day", 0, false, true, {"dated"}, 0, "menu"},
    {"first naming: plain code", 0, false, true, {"90765"}, 1, "gate"},
    {"four wrong, then the code", 0, false, false, kFourWrong + QStringList{"90765"}, 4, "menu"},
    {"five wrong end the process", 0, false, false, kFourWrong + QStringList{"12345"}, 4, "ended"},
};

// Zero, span, weight, option; or parameter block, option. A blank name shows as unused, and neither its
// caption nor its picture chooses it.
struct ScaleCase { const char* name; short mode; int scale; QStringList devices; };
const ScaleCase kScales[] = {
    {"blank name", 0, 3, QStringList(4, QStringLiteral("unchanged"))},
    {"calibration 0", 0, 0, {"S181", "S182", "D43", "S500"}},
    {"calibration 6", 0, 6, {"S205", "S206", "D49", "S548"}},
    {"calibration 10", 0, 10, {"S207", "S208", "D53", "S580"}},
    {"calibration 13", 0, 13, {"S203", "S204", "D56", "S604"}},
    {"parameters 0", 1, 0, {"D300", "S500"}},
    {"parameters 6", 1, 6, {"D390", "S548"}},
    {"parameters 10", 1, 10, {"D450", "S580"}},
    {"parameters 13", 1, 13, {"D495", "S604"}},
};

// 0: the controller's own timing; n: S999 comes on before poll n; -1: never.
const struct { const char* name; int finishAt; } kInit[] = {
    {"controller finishes at once", 0},
    {"answer to the last poll still counts", 51},
    {"controller never finishes", -1},
};
}  // namespace

class BcButTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        // The forms the menu opens belong to other parts of the console; here they are plain stand-ins.
        Forms::registerForm(QStringLiteral("PLC"), [] { return new PLC; });
        Forms::registerForm(QStringLiteral("BcBut"), [] { return new BcBut; });
        for (const char* n : {"YIBiao", "Cansd", "Sensor", "FrmJk"})
            Forms::registerForm(QLatin1String(n), [] { return new QWidget; });
    }

    void init()
    {
        h = new ConsoleHarness;
        mb = new MbAnswerer;
        h->connectLink();
        // Ticks of the poll are driven by hand; the clock itself must not add any.
        Link().Timer1.setInterval(3600 * 1000);
        CNameMissing = false;
    }

    void cleanup()
    {
        delete mb;
        delete h;
    }

    void gate_data() { TableRows(kGate); }
    void gate()
    {
        const GateCase& c = TableRow(kGate);
        const QDate today = QDate::currentDate();
        GatePassed = c.passedEarlier;
        CNameMissing = c.firstNaming;
        BcBut* f = OpenBcBut(c.mode);
        if (c.firstNaming)
            emit Ctl<ClickLabel>(f, QStringLiteral("LblBdTap(1)"))->clicked();
        for (const QString& code : c.codes) {
            const QString dated = QStringLiteral("90765") + QString::number(today.month() + today.day());
            f->txtPassword->setText(code == QLatin1String("dated") ? dated : code);
            ClickOn(Ctl(f, QStringLiteral("cmdOK")));
        }
        const bool menu = c.outcome == QLatin1String("menu"), ended = c.outcome == QLatin1String("ended");
        QStringList boxes(c.wrong, QStringLiteral("密码错误!"));
        if (ended)
            boxes << QStringLiteral("密码错误已5次，程序将退出！");
        QCOMPARE(mb->texts, boxes);
        QCOMPARE(h->endedProcess, ended ? 0 : -1);
        QVERIFY(!h->programEnded);  // never through the saving exit path
        QCOMPARE(GatePassed, menu && c.mode == 0);
        if (ended) {
            QTRY_VERIFY(!Forms::loaded(QStringLiteral("BcBut")));
            return;
        }
        QCOMPARE(shown(f, "picCom"), !menu);
        QCOMPARE(shown(f, "PicBiaoC"), menu);
        QCOMPARE(shown(f, "ImgHard"), menu && c.mode == 0);
        // At the first naming the operator must finish the names before leaving.
        QCOMPARE(shown(f, "ImgReturn"), menu && !c.firstNaming);
    }

    void devicesStoredForScale_data() { TableRows(kScales); }
    void devicesStoredForScale()
    {
        const ScaleCase& c = TableRow(kScales);
        GatePassed = true;
        const bool blank = c.devices.first() == QLatin1String("unchanged");
        const size_t i = size_t(c.scale);
        ScaleName[i] = blank ? QStringLiteral("   ") : QStringLiteral("Scale %1").arg(c.scale);
        ScaleNo = 1;
        CalZeroDevice = CalSpanDevice = CalWeightDevice = OptionDevice = QStringLiteral("unchanged");
        BcBut* f = OpenBcBut(c.mode);
        auto* caption = Ctl<ClickLabel>(f, QStringLiteral("LblBd(%1)").arg(c.scale));
        QCOMPARE(caption->text(), blank ? QStringLiteral("未使用") : ScaleName[i]);
        ClickOn(caption);
        if (blank)
            emit Ctl<ClickLabel>(f, QStringLiteral("ImgBd(%1)").arg(c.scale))->clicked();
        QCOMPARE(int(ScaleNo), blank ? 1 : c.scale);
        if (!blank)
            QCOMPARE(ScaleTitle, ScaleName[i]);
        const QStringList stored{CalZeroDevice, CalSpanDevice, CalWeightDevice, OptionDevice};
        QCOMPARE(c.mode == 0 ? stored : (QStringList{ParamDevice, OptionDevice}), c.devices);
        const QString opens = c.mode == 0 ? QStringLiteral("YIBiao") : QStringLiteral("Cansd");
        QCOMPARE(Forms::loaded(opens) && Forms::loaded(opens)->isVisible(), !blank);
        QCOMPARE(f->isVisible(), blank);
    }

    void hardwareInitialisation_data() { TableRows(kInit); }
    void hardwareInitialisation()
    {
        QFETCH(int, row);
        const int finishAt = kInit[row].finishAt;
        GatePassed = true;
        h->sim.setInitNever(finishAt != 0);
        h->sim.setInitDelayMs(0);
        h->sim.setSBit(999, true);  // left on by an earlier calibration
        BcBut* f = OpenBcBut();
        ClickOn(Ctl(f, QStringLiteral("lblHard")));
        QCOMPARE(mb->texts, QStringList{QStringLiteral("是否进行硬件初始化?")});
        QCOMPARE(status(f), kInitRunning);
        // Each tick comes after the answer to the poll before it, as the poll flag makes it.
        int done = 0;
        for (;;) {
            QTRY_VERIFY(InitPollDue || status(f) != kInitRunning);
            if (!Link().Timer1.isActive())
                break;
            QCOMPARE(status(f), kInitRunning);
            QVERIFY2(done < 51, "still polling after 51 ticks");
            if (++done == finishAt) {
                h->sim.setSBit(999, true);
                h->sim.setSBit(211, false);
            }
            Link().timer1Tick();
        }
        QTRY_VERIFY(InitPollDue);  // the last poll is answered
        if (finishAt != 0)
            QCOMPARE(done, finishAt < 0 ? 51 : finishAt);
        QCOMPARE(status(f), finishAt < 0 ? QStringLiteral("硬件初始化失败!") : QStringLiteral("硬件初始化已完成!"));
        QCOMPARE(TextColor(f->LbLCssdS), finishAt < 0 ? QColor(0xFF, 0, 0) : QColor(0, 0x80, 0));
        const QStringList frames = h->takeFrames();
        QCOMPARE(frames.value(0), WriteFrame("001A", "0800"));  // S211 set, its pair of bytes clear
        QCOMPARE(frames.filter(QStringLiteral("\x02" "1001A")).size(), 1);  // S211 is cleared by the controller
        QCOMPARE(frames.count(Frame(QStringLiteral("0007C02"))), done + 1);  // S999 and its pair of bytes
        QCOMPARE(h->sim.sBit(211), finishAt < 0);
    }

private:
    ConsoleHarness* h = nullptr;
    MbAnswerer* mb = nullptr;
};

QTEST_MAIN(BcButTest)
#include "bc_but_test.moc"
