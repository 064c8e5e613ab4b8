#include "test_support.h"

#include "calibration/bc_but.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/form_access.h"
#include "link/link_engine.h"
#include "shell/form_base.h"
#include "shell/plc_form.h"

#include <QDate>
#include <QLineEdit>
#include <QTest>

namespace {
const QString kWrongCode = QStringLiteral("密码错误!");
const QString kInitRunning = QStringLiteral("正在硬件初始化,请稍候...");

BcBut* openMenu(short mode)
{
    MenuMode = mode;
    MenuTitle = mode == 0 ? QStringLiteral("调校") : QStringLiteral("参数设定");
    Forms::show(QStringLiteral("BcBut"));
    return qobject_cast<BcBut*>(Forms::loaded(QStringLiteral("BcBut")));
}

bool shown(BcBut* f, const char* control) { return !Ctl(f, QLatin1String(control))->isHidden(); }

QString status(BcBut* f) { return f->LbLCssdS->isHidden() ? QString() : f->LbLCssdS->text(); }
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

    void gate_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("firstNaming");
        QTest::addColumn<QStringList>("codes");  // typed in turn; "passed": the gate was passed earlier in this run
        QTest::addColumn<int>("wrongBoxes");
        QTest::addColumn<QString>("outcome");  // "gate", "menu" or "ended"
        const QDate today = QDate::currentDate();
        const QString dated = QStringLiteral("90765") + QString::number(today.month() + today.day());
        const QStringList four(4, QStringLiteral("12345"));
        QTest::newRow("calibration, first time") << 0 << false << QStringList() << 0 << "gate";
        QTest::newRow("calibration, passed this run") << 0 << false << QStringList{"passed"} << 0 << "menu";
        QTest::newRow("parameters, never gated") << 1 << false << QStringList() << 0 << "menu";
        QTest::newRow("the code") << 0 << false << QStringList{"90765"} << 0 << "menu";
        QTest::newRow("a near miss") << 0 << false << QStringList{"90766"} << 1 << "gate";
        QTest::newRow("first naming: month plus day") << 0 << true << QStringList{dated} << 0 << "menu";
        QTest::newRow("first naming: plain code") << 0 << true << QStringList{"90765"} << 1 << "gate";
        QTest::newRow("four wrong, then the code") << 0 << false << four + QStringList{"90765"} << 4 << "menu";
        QTest::newRow("five wrong end the process") << 0 << false << four + QStringList{"12345"} << 4 << "ended";
    }

    void gate()
    {
        QFETCH(int, mode);
        QFETCH(bool, firstNaming);
        QFETCH(QStringList, codes);
        QFETCH(int, wrongBoxes);
        QFETCH(QString, outcome);
        GatePassed = codes.removeAll(QStringLiteral("passed")) > 0;
        CNameMissing = firstNaming;
        BcBut* f = openMenu(short(mode));
        if (firstNaming)
            emit Ctl<ClickLabel>(f, QStringLiteral("LblBdTap(1)"))->clicked();
        for (const QString& c : codes) {
            f->txtPassword->setText(c);
            ClickOn(Ctl(f, QStringLiteral("cmdOK")));
        }
        const bool menu = outcome == QLatin1String("menu"), ended = outcome == QLatin1String("ended");
        QStringList boxes(wrongBoxes, kWrongCode);
        if (ended)
            boxes << QStringLiteral("密码错误已5次，程序将退出！");
        QCOMPARE(mb->texts, boxes);
        QCOMPARE(h->endedProcess, ended ? 0 : -1);
        QVERIFY(!h->programEnded);  // never through the saving exit path
        QCOMPARE(GatePassed, menu && mode == 0);
        if (ended) {
            QTRY_VERIFY(!Forms::loaded(QStringLiteral("BcBut")));
            return;
        }
        QCOMPARE(shown(f, "picCom"), !menu);
        QCOMPARE(shown(f, "PicBiaoC"), menu);
        QCOMPARE(shown(f, "ImgHard"), menu && mode == 0);
        // At the first naming the operator must finish the names before leaving.
        QCOMPARE(shown(f, "ImgReturn"), menu && !firstNaming);
    }

    void devicesStoredForScale_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("scale");
        QTest::addColumn<QStringList>("devices");  // zero, span, weight, option; or parameter block, option
        // A blank name shows as unused, and neither its caption nor its picture chooses it.
        QTest::newRow("blank name") << 0 << 3 << QStringList(4, QStringLiteral("unchanged"));
        QTest::newRow("calibration 0") << 0 << 0 << QStringList{"S181", "S182", "D43", "S500"};
        QTest::newRow("calibration 6") << 0 << 6 << QStringList{"S205", "S206", "D49", "S548"};
        QTest::newRow("calibration 10") << 0 << 10 << QStringList{"S207", "S208", "D53", "S580"};
        QTest::newRow("calibration 13") << 0 << 13 << QStringList{"S203", "S204", "D56", "S604"};
        QTest::newRow("parameters 0") << 1 << 0 << QStringList{"D300", "S500"};
        QTest::newRow("parameters 6") << 1 << 6 << QStringList{"D390", "S548"};
        QTest::newRow("parameters 10") << 1 << 10 << QStringList{"D450", "S580"};
        QTest::newRow("parameters 13") << 1 << 13 << QStringList{"D495", "S604"};
    }

    void devicesStoredForScale()
    {
        QFETCH(int, mode);
        QFETCH(int, scale);
        QFETCH(QStringList, devices);
        GatePassed = true;
        const bool blank = devices.first() == QLatin1String("unchanged");
        ScaleName[size_t(scale)] = blank ? QStringLiteral("   ") : QStringLiteral("Scale %1").arg(scale);
        ScaleNo = 1;
        CalZeroDevice = CalSpanDevice = CalWeightDevice = OptionDevice = QStringLiteral("unchanged");
        BcBut* f = openMenu(short(mode));
        auto* caption = Ctl<ClickLabel>(f, QStringLiteral("LblBd(%1)").arg(scale));
        QCOMPARE(caption->text(), blank ? QStringLiteral("未使用") : ScaleName[size_t(scale)]);
        ClickOn(caption);
        if (blank)
            emit Ctl<ClickLabel>(f, QStringLiteral("ImgBd(%1)").arg(scale))->clicked();
        QCOMPARE(int(ScaleNo), blank ? 1 : scale);
        if (!blank)
            QCOMPARE(ScaleTitle, ScaleName[size_t(scale)]);
        const QStringList stored = mode == 0 ? QStringList{CalZeroDevice, CalSpanDevice, CalWeightDevice, OptionDevice}
                                             : QStringList{ParamDevice, OptionDevice};
        QCOMPARE(stored, devices);
        const QString opens = mode == 0 ? QStringLiteral("YIBiao") : QStringLiteral("Cansd");
        QCOMPARE(Forms::loaded(opens) && Forms::loaded(opens)->isVisible(), !blank);
        QCOMPARE(f->isVisible(), blank);
    }

    void hardwareInitialisation_data()
    {
        QTest::addColumn<int>("finishAt");  // 0: the controller's own timing; n: S999 comes on before poll n; -1 never
        QTest::newRow("controller finishes at once") << 0;
        QTest::newRow("answer to the last poll still counts") << 51;
        QTest::newRow("controller never finishes") << -1;
    }

    void hardwareInitialisation()
    {
        QFETCH(int, finishAt);
        GatePassed = true;
        h->sim.setInitNever(finishAt != 0);
        h->sim.setInitDelayMs(0);
        h->sim.setSBit(999, true);  // left on by an earlier calibration
        BcBut* f = openMenu(0);
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
            if (done + 1 == finishAt) {
                h->sim.setSBit(999, true);
                h->sim.setSBit(211, false);
            }
            Link().timer1Tick();
            ++done;
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
