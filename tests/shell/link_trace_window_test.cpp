// The trace window as the engineer uses it: opened by Ctrl+Shift+L on a form, rows appearing as the link
// works, the reply beside its request, the filters, the copy and the save.
#include "test_support.h"

#include "common/form_access.h"
#include "common/module1.h"
#include "common/text_file.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/link_trace.h"
#include "shell/app_setup.h"
#include "shell/link_trace_window.h"

#include <QApplication>
#include <QClipboard>
#include <QTableView>

namespace {
// The columns the engineer reads, a row a line.
QStringList shown(QTableView* view)
{
    QStringList rows;
    const QAbstractItemModel* m = view->model();
    for (int r = 0; r < m->rowCount(); ++r) {
        QStringList cells;
        for (int c = LinkTraceModel::Step; c < LinkTraceModel::Columns; ++c)
            if (c != LinkTraceModel::ReplyAfter)
                cells << m->index(r, c).data().toString();
        rows << cells.join(QLatin1Char('|'));
    }
    return rows;
}
}  // namespace

class LinkTraceWindowTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterForms(); }

    // A read that times out once and is answered on the re-send, then a write acknowledged: three rows
    // live, and what each filter leaves.
    void liveRowsAndFilters()
    {
        ConsoleHarness h;
        h.connectLink();
        Link().Timer2.setInterval(3600 * 1000);
        Link().LateReplyHorizonMs = 100;  // the write waits that long for the first read's owed reply
        LinkTrace().clear();
        Forms::show(QStringLiteral("FrmJk"));
        QWidget* form = Forms::loaded(QStringLiteral("FrmJk"));
        form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(form));
        QTest::keyClick(form, Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
        LinkTraceWindow* w = LinkTraceWindow::existing();
        QVERIFY(w && w->isVisible());
        QCOMPARE(w->objectName(), QStringLiteral("LinkTrace"));
        auto* view = Ctl<QTableView>(w, QStringLiteral("TraceRows"));

        h.sim.injectFault(plcsim::Fault::NoReply);
        StepNo = 60;
        SendFlag = true;
        send_recieve(BuildReadFrameBytes(QStringLiteral("S998"), 2));
        QMetaObject::invokeMethod(&Link().Timer2, "timeout");
        QTRY_VERIFY(SendFlag);
        StepNo = 61;
        send_recieve(BuildWriteFrame(QStringLiteral("S212"), QStringLiteral("0000"), 4));
        QTRY_VERIFY(SendFlag && !Link().Timer2.isActive());

        const QString timedOut = "60|FrmJk|S992|16|<STX>0007C02<ETX>6F||超时";
        const QString taken = "60|FrmJk|S992|16|<STX>0007C02<ETX>6F|<STX>0000<ETX>C3|重发，已取回复";
        const QString acked = "61|FrmJk|S208|16|<STX>1001A020000<ETX>28|<ACK>|已确认";
        const struct { int step, outcome; QStringList rows; } filters[] = {
            {-1, -1, {timedOut, taken, acked}},
            {-1, int(TraceOutcome::TimedOut), {timedOut}},
            {-1, LinkTraceWindow::kResentFilter, {taken}},
            {61, -1, {acked}},
        };
        for (const auto& f : filters) {
            w->setStepFilter(f.step);
            w->setOutcomeFilter(f.outcome);
            QCOMPARE(shown(view), f.rows);
            view->selectAll();
            w->copySelected();
            QCOMPARE(QApplication::clipboard()->text().count(QLatin1Char('\n')), f.rows.size());
        }

        // The save holds the whole ring, whatever the filter.
        const QString saved = h.path(QStringLiteral("saved.txt"));
        LinkTraceWindow::ChooseSavePath = [&](QWidget*, const QString&) { return saved; };
        w->saveAll();
        LinkTraceWindow::ChooseSavePath = nullptr;
        QStringList lines;
        QVERIFY(TextFile::readLines(saved, &lines));
        QCOMPARE(lines.mid(2), LinkTrace().lines());
        QCOMPARE(lines.size(), 2 + 6);
    }
};

QTEST_MAIN(LinkTraceWindowTest)
#include "link_trace_window_test.moc"
