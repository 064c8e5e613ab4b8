// A click that arrives while a form is summing a frame runs inside that routine. When the click
// unloads the form, the form must outlive the routine: hidden at once, destroyed afterwards.
#include "test_support.h"

#include "common/event_yield.h"
#include "common/form_access.h"
#include "common/module1.h"
#include "link/link_engine.h"
#include "shell/app_setup.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>
#include <QTest>

namespace {
// Queued, not sent: the click waits in the event queue until the console next yields.
void postClick(QWidget* w)
{
    const QPointF at = QRectF(w->rect()).center();
    for (QEvent::Type t : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
        QCoreApplication::postEvent(w, new QMouseEvent(t, at, w->mapToGlobal(at), Qt::LeftButton,
                                                       t == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                                                       Qt::NoModifier));
}
}  // namespace

class ReentryTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        RegisterParamsForms();
        RegisterCalibrationForms();
    }

    void returnClickedInsideTheChecksum_data()
    {
        QTest::addColumn<QStringList>("c");  // form, the control whose routine builds a frame, the frame still sent
        // Scale 0: live block D11, option byte S500 at 003E (read as "5AC3", bit 0 cleared by the click).
        QTest::newRow("calibration form, tab selection") << QStringList{"YIBiao", "LblBd(1)", Frame("0101640")};
        QTest::newRow("parameter editor, option box") << QStringList{"Cansd", "Check1(1)", WriteFrame("003E", "4AC3")};
    }
    void returnClickedInsideTheChecksum()
    {
        QFETCH(QStringList, c);
        const QString form = c[0];
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
        // The form's first reads are done and nothing is in flight.
        auto* last = Ctl<QLineEdit>(f, form == QLatin1String("YIBiao") ? "txtTzxxZeroRead" : "TxtSRead");
        QTRY_VERIFY_WITH_TIMEOUT(!last->text().isEmpty() && SendFlag && !Link().Timer2.isActive(), 3000);
        h.takeFrames();

        bool routineRunning = false, destroyedInsideRoutine = false;
        connect(f.data(), &QObject::destroyed, this, [&] { destroyedInsideRoutine = routineRunning; });
        postClick(Ctl(f, QStringLiteral("lblReturn")));
        routineRunning = true;
        if (auto* box = Ctl<QCheckBox>(f, c[1]))
            box->click();
        else
            ClickOn(Ctl(f, c[1]));
        routineRunning = false;

        // The operator sees the return at once; the form goes when its routine is done.
        QVERIFY(!Forms::loaded(form));
        QTRY_VERIFY(f.isNull());
        QVERIFY(!destroyedInsideRoutine);
        QCOMPARE(YieldDepth(), 0);
        QVERIFY(Forms::loaded("BcBut") && Forms::loaded("BcBut")->isVisible());
        QVERIFY(h.takeFrames().contains(c[2]));

        // A new load starts fresh and works.
        Forms::show(form);
        QTRY_VERIFY_WITH_TIMEOUT(Forms::loaded(form) && SendFlag, 3000);
        QVERIFY(Forms::loaded(form)->isVisible());
    }
};

QTEST_MAIN(ReentryTest)
#include "reentry_test.moc"
