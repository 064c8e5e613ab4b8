#include "../common/common_test_util.h"
#include "common/lang.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "link/frame_codec.h"
#include "link/link_trace.h"
#include "plcsim/sim_port.h"
#include "shell/link_trace_window.h"
#include "shell/plc_form.h"
#include "shell/single_instance.h"

#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QLockFile>
#include <QMouseEvent>
#include <QTableView>

namespace {

// A port that refuses to open the way a real adapter can.
class RefusingPort : public CommPort {
public:
    explicit RefusingPort(PortOpenResult r) : result_(std::move(r)) {}
    PortOpenResult open() override { return result_; }
    void close() override {}
    bool isOpen() const override { return false; }
    QString deviceName() const override { return QStringLiteral("/dev/ttyS9"); }

protected:
    void writeBytes(const QByteArray&) override {}

private:
    PortOpenResult result_;
};

QString label(QWidget* f, const char* name) { return Ctl<QLabel>(f, QLatin1String(name))->text(); }

bool menuShown(PLC* f)
{
    for (QFrame* fr : f->FraCeng)
        if (fr->isHidden())
            return false;
    return !f->picCom->isVisible();
}

void chooseLanguage(const QString& lansel)
{
    TextFile::writeLines(LangSelFile(), {QStringLiteral("[PLCCOMLANSEL]"), QStringLiteral("LANSEL=") + lansel});
}

// English texts follow the port's name with their blank. The log keeps the port's own number and words.
// text: also the port's description, for other errors.
const struct { const char* name; PortOpenError error; bool english; const char* text; bool errorIcon; int number;
               const char* systemText; } kPortFailures[] = {
    {"in use", PortOpenError::InUse, false, "Com3端口已被其它程序占用!请重新设置端口！", false, 2,
     "Device or resource busy"},
    {"missing", PortOpenError::Missing, false, "Com3端口无效!请重新设置端口！", false, 1, "No such file or directory"},
    {"permission", PortOpenError::Other, false,
     "/dev/ttyS2: Permission denied. The user must be in the dialout group.", true, 2, "Permission denied"},
    {"in use, English", PortOpenError::InUse, true, "Com3 is in use by another program! Please choose another port!",
     false, 2, "Device or resource busy"},
    {"missing, English", PortOpenError::Missing, true, "Com3 is not a valid port! Please choose another port!", false,
     1, "No such file or directory"},
};

const char kZhTitle[] = "秤控台设定选项";
const char kZhPlant[] = "星河路桥工程有限公司QX240B7.1-42TR8CD517";
// comPort, lanSel: written first, "" none. Then fixture is copied over target ("binary": bytes of no text); no
// fixture: target removed; target "": the application folder read-only. A bad file falls back to its
// defaults without a word, and the login still leads to the menu. title null: not checked.
const struct { const char *name, *comPort, *lanSel; int comboPlc, comboLan, langNo; const char *title, *plant,
               *fixture = nullptr, *target = nullptr; } kStarts[] = {
    {"Com5, Chinese", "5", "1", 4, 0, 1, kZhTitle, kZhPlant},
    {"Com1, English", "1", "2", 0, 1, 2, "Weighing console settings", "English QX240B7.1-42TR8CD517"},
    {"port 0 keeps Com2", "0", "1", 1, 0, 1, kZhTitle, kZhPlant},
    {"port 7 keeps Com2", "7", "1", 1, 0, 1, kZhTitle, kZhPlant},
    {"language 3 taken, combo left", "2", "3", 1, 0, 3, kZhTitle, "Russian QX240B7.1-42TR8CD517"},
    {"no language choice file", "6", "", 5, 0, 1, kZhTitle, kZhPlant},
    {"binary BLZConfig.dat", "", "", 1, 0, 1, kZhTitle, kZhPlant, "BLZConfig_binary.dat", "Data/BLZConfig.dat"},
    {"truncated BLZConfig.dat", "", "", 4, 0, 1, kZhTitle, kZhPlant, "BLZConfig_truncated.dat", "Data/BLZConfig.dat"},
    {"CName.ini of 10000-char lines", "", "", 1, 0, 1, kZhTitle, kZhPlant, "CName_longlines.ini", "Data/CName.ini"},
    {"no Data folder", "", "", 1, 0, 1, kZhTitle, kZhPlant, "", "Data"},
    {"read-only application folder", "", "", 1, 0, 1, kZhTitle, kZhPlant, "", ""},
    {"no language file", "", "", 1, 0, 1, kZhTitle, kZhPlant, "", "Lang/PLCCOMLANGUAGE.ini"},
    {"language file is binary", "", "", 1, 0, 1, nullptr, nullptr, "binary", "Lang/PLCCOMLANGUAGE.ini"},
};

QStringList traceRows(QTableView* view)
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

class PlcFormTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterForms(); }
    void init()
    {
        h = new ConsoleHarness;
        QDir().mkpath(h->path(QStringLiteral("Lang")));
        QFile::copy(QStringLiteral(ORVA_LANG_FILE), h->path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini")));
    }
    void cleanup() { delete h; }

    // The panel gives the password the focus, by the pointer over it and by the form's activation; the
    // password boxes show stars. The right code opens the menu and the port, and starts no clock.
    void rightCode()
    {
        PLC* f = loadForm();
        QVERIFY(QTest::qWaitForWindowExposed(f));
        QVERIFY(f->picCom->isVisible());
        QVERIFY(f->FraCeng[0]->isHidden());
        for (const bool byActivation : {false, true}) {
            f->ComboPlc->setFocus();
            if (byActivation) {
                QWidget other;
                other.show();
                other.activateWindow();
                QTRY_VERIFY(other.isActiveWindow());
                f->ComboPlc->setFocus();
                f->activateWindow();
                QTRY_VERIFY(f->isActiveWindow());
            } else {
                QMouseEvent move(QEvent::MouseMove, QPointF(20, 20), f->picCom->mapToGlobal(QPointF(20, 20)),
                                 Qt::NoButton, Qt::NoButton, Qt::NoModifier);
                QApplication::sendEvent(f->picCom, &move);
            }
            QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(f->txtPassword));
        }
        for (const char* form : {"BcBut", "Factory"}) {
            auto* box = Ctl<QLineEdit>(Forms::load(QLatin1String(form)), QStringLiteral("txtPassword"));
            box->setText(QStringLiteral("90765"));
            QCOMPARE(box->displayText(), QStringLiteral("*****"));
        }
        MbAnswerer mb;
        f->txtPassword->setText(QStringLiteral("48213"));
        QCOMPARE(f->txtPassword->displayText(), QStringLiteral("*****"));
        QTest::keyClick(f->txtPassword, Qt::Key_Return);
        QVERIFY(mb.texts.isEmpty());
        QVERIFY(menuShown(f));
        QVERIFY(Link().portOpen());
        QCOMPARE(WriteImage, QString(152, QLatin1Char('0')));
        QVERIFY(Ctl(f, QStringLiteral("cmdExit"))->isVisible());
        QVERIFY(!Link().Timer1.isActive() && !Link().Timer2.isActive() && !Link().Timer3.isActive());
        QCOMPARE(Link().Timer1.interval(), 400);
        QVERIFY(h->endedProcess < 0 && !h->programEnded);
    }

    // A wrong code is told and left in the box for the operator to correct; the fifth ends the run.
    void wrongCodes()
    {
        MbAnswerer mb;
        PLC* f = loadForm();
        const QStringList codes{"", "4821", "48213 ", "４８２１３", "1111"};
        for (const QString& code : codes) {
            f->txtPassword->setText(code);
            QTest::keyClick(f->txtPassword, Qt::Key_Return);
            QCOMPARE(h->programEnded, code == codes.last());
            QVERIFY(!Link().portOpen());
            if (h->programEnded)
                break;
            QVERIFY(f->picCom->isVisible());
            QVERIFY(f->FraCeng[0]->isHidden());
            QCOMPARE(f->txtPassword->text(), code);
            QVERIFY(!MbResult);
        }
        QCOMPARE(mb.texts,
                 QStringList(4, QStringLiteral("密码错误!")) << QStringLiteral("密码错误已5次，程序将退出！"));
        QCOMPARE(mb.errorIcons, (QList<bool>{false, false, false, false, true}));
        QCOMPARE(h->endedProcess, -1);
        QVERIFY(QFile::exists(BLZConfigPath()));  // the way out saves the configuration
    }

    void portOpenFailures_data() { TableRows(kPortFailures); }
    void portOpenFailures()
    {
        const auto& c = TableRow(kPortFailures);
        const QString text = QString::fromUtf8(c.text);
        MbAnswerer mb;
        bool refuse = true;
        plcsim::Controller* sim = &h->sim;
        SetPortFactory([&](int) -> CommPort* {
            if (refuse)
                return new RefusingPort(
                    {c.error, c.error == PortOpenError::Other ? text : QString(), c.number, c.systemText});
            return new plcsim::SimPort(sim);
        });
        if (c.english)
            chooseLanguage(QStringLiteral("2"));
        PLC* f = loadForm();
        f->ComboPlc->setCurrentIndex(2);
        f->txtPassword->setText(QStringLiteral("48213"));
        f->cmdOk();
        QCOMPARE(mb.texts, QStringList{text});
        QCOMPARE(mb.errorIcons, QList<bool>{c.errorIcon});
        QVERIFY(f->picCom->isVisible());
        QVERIFY(f->FraCeng[1]->isHidden());
        QCOMPARE(int(PortNo), 3);
        const QString log = ErrorLogText();
        const QString record =
            QStringLiteral("ErrNumber:%1----%2\r\nErrForm:PLC\r\nErrSub:cmdOk").arg(c.number).arg(c.systemText);
        QVERIFY2(log.contains(record), qPrintable(log));
        QVERIFY2(!log.contains(text), qPrintable(log));

        // The code stays accepted: the next try with a good port goes straight to the menu.
        refuse = false;
        f->cmdOk();
        QCOMPARE(mb.texts.size(), 1);
        QVERIFY(menuShown(f));
    }

    void languageChoiceIsSavedAndApplied()
    {
        // Other entries of the choice file are the station's own and stay.
        QStringList lines{QStringLiteral("; chosen at the station"), QStringLiteral("[PLCCOMLANSEL]"),
                          QStringLiteral("LANSEL=1"), QStringLiteral("[Other]"), QStringLiteral("A=1")};
        TextFile::writeLines(LangSelFile(), lines);
        PLC* f = loadForm();
        QCOMPARE(label(f, "lblPassWord"), QStringLiteral("密码:"));
        f->ComboLan->setCurrentIndex(1);
        emit f->ComboLan->activated(1);
        QCOMPARE(int(LangNo), 2);
        QCOMPARE(label(f, "lblPassWord"), QStringLiteral("Password:"));
        QCOMPARE(label(f, "LblSel(1)"), QStringLiteral("Parameters"));
        QCOMPARE(ParamFormTitle, QStringLiteral("Parameters"));
        QStringList saved;
        QVERIFY(TextFile::readLines(LangSelFile(), &saved));
        lines[2] = QStringLiteral("LANSEL=2");
        QCOMPARE(saved, lines);
        emit f->ComboLan->activated(0);
        QCOMPARE(label(f, "lblPassWord"), QStringLiteral("密码:"));
    }

    void startFromFiles_data() { TableRows(kStarts); }
    void startFromFiles()
    {
        const auto& c = TableRow(kStarts);
        const QString fixture = QLatin1String(c.fixture), target = h->path(QLatin1String(c.target));
        const QString blz = h->path(QStringLiteral("Data/BLZConfig.dat"));
        const bool readOnly = c.target && !*c.target;
        QDir().mkpath(h->path(QStringLiteral("Data")));
        if (*c.comPort)
            TextFile::writeLines(blz, {QStringLiteral("COMPort=") + c.comPort});
        if (*c.lanSel)
            chooseLanguage(QLatin1String(c.lanSel));
        if (fixture == QLatin1String("binary"))
            putBytes(target, QByteArray("\xff\xfe\x00[LANPLCFORM]\x00\x01\x02", 17));
        else if (!fixture.isEmpty())
            QFile::copy(::fixture(fixture), target);
        else if (c.target && !readOnly && !QFile::remove(target))
            QDir(target).removeRecursively();
        const QByteArray before = rawBytes(blz);

        MbAnswerer mb;
        std::unique_ptr<UnprivilegedFiles> nobody;
        if (readOnly) {
            makeReadOnly(h->path(QString()));
            nobody = std::make_unique<UnprivilegedFiles>();
        }
        PLC* f = loadForm();
        QCOMPARE(f->ComboPlc->currentIndex(), c.comboPlc);
        QCOMPARE(f->ComboLan->currentIndex(), c.comboLan);
        QCOMPARE(int(LangNo), c.langNo);
        if (c.title) {
            QCOMPARE(label(f, "lblFormTitle"), QString::fromUtf8(c.title));
            QCOMPARE(label(f, "Label1(2)"), QString::fromUtf8(c.plant));
        }
        QVERIFY(mb.texts.isEmpty());
        QVERIFY(f->picCom->isVisible());
        QVERIFY(!ScaleName[0].isEmpty());  // the names fall back to the defaults

        f->txtPassword->setText(QStringLiteral("48213"));
        f->cmdOk();
        QVERIFY(menuShown(f));
        f->ExitSystem();
        QVERIFY(h->programEnded);
        nobody.reset();
        if (readOnly) {
            QCOMPARE(rawBytes(blz), before);  // nothing written, nothing lost
            makeWritable(h->path(QString()));
        }
    }

    void secondInstanceEnds()
    {
        QVERIFY(loadForm());
        ReleaseInstanceLock();
        QLockFile other(InstanceLockPath());
        QVERIFY(other.tryLock(0));
        Forms::unload(QStringLiteral("PLC"));
        QVERIFY(!Forms::get<PLC>(QStringLiteral("PLC"))->load());
        other.unlock();
        QVERIFY(Forms::get<PLC>(QStringLiteral("PLC"))->load());
    }

    // The trace window, opened by Ctrl+Shift+L on a form: a read that times out once and is answered on the
    // re-send, then a write acknowledged; three rows live, what each filter leaves, the copy and the save.
    void liveRowsAndFilters()
    {
        h->connectLink();
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

        h->sim.injectFault(plcsim::Fault::NoReply);
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
            QCOMPARE(traceRows(view), f.rows);
            view->selectAll();
            w->copySelected();
            QCOMPARE(QApplication::clipboard()->text().count(QLatin1Char('\n')), f.rows.size());
        }

        // The save holds the whole ring, whatever the filter.
        const QString saved = h->path(QStringLiteral("saved.txt"));
        LinkTraceWindow::ChooseSavePath = [&](QWidget*, const QString&) { return saved; };
        w->saveAll();
        LinkTraceWindow::ChooseSavePath = nullptr;
        QStringList lines;
        QVERIFY(TextFile::readLines(saved, &lines));
        QCOMPARE(lines.mid(2), LinkTrace().lines());
        QCOMPARE(lines.size(), 2 + 6);
    }

private:
    PLC* loadForm()
    {
        auto* f = Forms::get<PLC>(QStringLiteral("PLC"));
        if (!f->load())
            return nullptr;
        f->show();
        return f;
    }
    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(PlcFormTest)
#include "plc_form_test.moc"
