// The console ending under a running routine: a click that unloads a form while it sums a frame runs inside
// that routine, so the form must outlive it. Shutdown and logout end the console as its exit button does.
#include "common_test_util.h"

#include "common/event_yield.h"
#include "common/scale_table.h"
#include "shell/plc_form.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>

#include <csignal>

namespace {
// The form, the control whose routine builds a frame, the frame still sent. Scale 0: live block D11, option
// byte S500 at 003E (read as "5AC3", bit 0 cleared by the click).
const struct { const char *name, *form, *control; QString frame; } kInsideTheChecksum[] = {
    {"calibration form, tab selection", "YIBiao", "LblBd(1)", Frame("0101640")},
    {"parameter editor, option box", "Cansd", "Check1(1)", WriteFrame("003E", "4AC3")},
};
const struct { const char* name; int sig; } kSignals[] = {
    {"shutdown", SIGTERM}, {"logout", SIGHUP}, {"Ctrl+C", SIGINT}};
}  // namespace

class ConsoleEndTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        RegisterForms();
        ExitOnTerminationSignals();
    }

    void returnClickedInsideTheChecksum_data() { TableRows(kInsideTheChecksum); }
    void returnClickedInsideTheChecksum()
    {
        const auto& c = TableRow(kInsideTheChecksum);
        const QString form = QLatin1String(c.form);
        ConsoleHarness h;
        MbAnswerer mb;
        h.sim.setSBit(612, true);  // zero tracking off, so the calibration tabs open
        h.sim.setByteAt(0x3E, 0x5A);
        h.sim.setByteAt(0x3F, 0xC3);
        UseScaleDevices(0);
        h.connectLink();
        Forms::show(form);
        QPointer<QWidget> f = Forms::loaded(form);
        QVERIFY(f);
        auto* last = Ctl<QLineEdit>(f, form == QLatin1String("YIBiao") ? "txtTzxxZeroRead" : "TxtSRead");
        QTRY_VERIFY_WITH_TIMEOUT(!last->text().isEmpty() && SendFlag && !Link().Timer2.isActive(), 3000);
        h.takeFrames();

        bool routineRunning = false, destroyedInsideRoutine = false;
        connect(f.data(), &QObject::destroyed, this, [&] { destroyedInsideRoutine = routineRunning; });
        // The click on the return is queued, not sent: it waits until the console next yields.
        QWidget* back = Ctl(f, QStringLiteral("lblReturn"));
        const QPointF at = QRectF(back->rect()).center();
        for (QEvent::Type t : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            const Qt::MouseButtons held = t == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
            QCoreApplication::postEvent(
                back, new QMouseEvent(t, at, back->mapToGlobal(at), Qt::LeftButton, held, Qt::NoModifier));
        }
        routineRunning = true;
        if (auto* box = Ctl<QCheckBox>(f, QLatin1String(c.control)))
            box->click();
        else
            ClickOn(Ctl(f, QLatin1String(c.control)));
        routineRunning = false;

        // The operator sees the return at once; the form goes when its routine is done.
        QVERIFY(!Forms::loaded(form));
        QTRY_VERIFY(f.isNull());
        QVERIFY(!destroyedInsideRoutine);
        QCOMPARE(YieldDepth(), 0);
        QVERIFY(Forms::loaded("BcBut") && Forms::loaded("BcBut")->isVisible());
        QVERIFY(h.takeFrames().contains(c.frame));

        Forms::show(form);
        QTRY_VERIFY_WITH_TIMEOUT(Forms::loaded(form) && SendFlag, 3000);
        QVERIFY(Forms::loaded(form)->isVisible());
    }

    void signalEndsAsTheExitButton_data() { TableRows(kSignals); }
    void signalEndsAsTheExitButton()
    {
        const int sig = TableRow(kSignals).sig;
        ConsoleHarness h;
        QVERIFY(QDir(h.dir.path()).mkpath(QStringLiteral("Data")));
        auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
        QVERIFY(plc->load());
        plc->show();
        h.connectLink();  // as after a good login
        QVERIFY(Link().portOpen());
        // A calibration taken in this run.
        BiaoZeroTime[0] = QStringLiteral("2026/3/5 14:03:22");
        BiaoZeroADValue[0] = QStringLiteral("3000");
        Link().Timer1.start();

        QCOMPARE(::raise(sig), 0);
        QTRY_VERIFY(h.programEnded);
        QVERIFY(!Link().portOpen() && !Link().Timer1.isActive());
        const QByteArray saved = rawBytes(h.path(QStringLiteral("Data/BLZConfig.dat")));
        QVERIFY(saved.startsWith("COMPort=2\r\n"));
        QVERIFY(saved.contains(TextFile::encode(QString::fromUtf8("骨料1BiaoZeroTime=2026/3/5 14:03:22\r\n"
                                                                  "骨料1BiaoZeroADValue=3000\r\n"))));
    }
};

QTEST_MAIN(ConsoleEndTest)
#include "console_end_test.moc"
