#include "test_support.h"

#include "../common/common_test_util.h"
#include "plcsim/sim_port.h"

#include "common/form_access.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "link/link_engine.h"
#include "shell/app_setup.h"
#include "shell/plc_form.h"
#include "shell/single_instance.h"

#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QLockFile>
#include <QMouseEvent>

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

const struct { const char* name; const char* code; } kCodes[] = {
    {"right", "48213"}, {"empty", ""}, {"one digit short", "4821"}, {"trailing blank", "48213 "},
    {"full-width digits", "４８２１３"},
};

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
// lanSel empty: no language choice file.
const struct { const char* name; const char* comPort; const char* lanSel; int comboPlc, comboLan, langNo;
               const char* title; const char* plant; } kStarts[] = {
    {"Com5, Chinese", "5", "1", 4, 0, 1, kZhTitle, kZhPlant},
    {"Com1, English", "1", "2", 0, 1, 2, "Weighing console settings", "English QX240B7.1-42TR8CD517"},
    {"port 0 keeps Com2", "0", "1", 1, 0, 1, kZhTitle, kZhPlant},
    {"port 7 keeps Com2", "7", "1", 1, 0, 1, kZhTitle, kZhPlant},
    {"language 3 taken, combo left", "2", "3", 1, 0, 3, kZhTitle, "Russian QX240B7.1-42TR8CD517"},
    {"no language choice file", "6", "", 5, 0, 1, kZhTitle, kZhPlant},
};

// fixture is copied over target ("binary": bytes of no text); no fixture: target removed; no target either:
// the application folder read-only.
const struct { const char* name; const char* fixture; const char* target; } kBadFiles[] = {
    {"binary BLZConfig.dat", "BLZConfig_binary.dat", "Data/BLZConfig.dat"},
    {"truncated BLZConfig.dat", "BLZConfig_truncated.dat", "Data/BLZConfig.dat"},
    {"CName.ini of 10000-character lines", "CName_longlines.ini", "Data/CName.ini"},
    {"no Data folder", "", "Data"},
    {"read-only application folder", "", ""},
    {"no language file", "", "Lang/PLCCOMLANGUAGE.ini"},
    {"language file is binary", "binary", "Lang/PLCCOMLANGUAGE.ini"},
};

// English texts that follow a name or precede a number keep the blank between them. form: the form shown
// (none: a link fault), or the section of a range message whose key is in control. scale -1: the cement
// scale 8 named and with a vibrator, no scale chosen.
const struct { const char* name; int scale; const char* form; const char* control; const char* text; } kGlued[] = {
    {"fault dialog", 0, "", "", "port:Com5, and makes good contact."},
    {"material row", 8, "Cansd", "LblCansd(10)", "水泥M1 fall correction"},
    {"calibration title", 0, "YIBiao", "LblBceng", "骨料1 calibration"},
    {"vibrator title", -1, "ZDTime", "lblTitleName(8)", "水泥 vibrator"},
    {"sensor unit", -1, "Sensor", "LblUnit", "Unit: Kg"},
    {"time range", 0, "LANOTHERFORM", "OTHER059", "is: ("},
    {"vibrator time range", 0, "LANZDTIMEFORM", "ZDTIME010", "is: ("},
    {"sensor range", 0, "LANSENSORFORM", "SENSOR003", "is: ("},
};

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

    void accessCode_data() { TableRows(kCodes); }
    void accessCode()
    {
        const QString code = QString::fromUtf8(TableRow(kCodes).code);
        MbAnswerer mb;
        PLC* f = loadForm();
        QVERIFY(f->picCom->isVisible());
        QVERIFY(f->FraCeng[0]->isHidden());
        f->txtPassword->setText(code);
        QTest::keyClick(f->txtPassword, Qt::Key_Return);
        if (code == QLatin1String("48213")) {
            QVERIFY(mb.texts.isEmpty());
            QVERIFY(menuShown(f));
            QVERIFY(Link().portOpen());
            QCOMPARE(WriteImage, QString(152, QLatin1Char('0')));
            QVERIFY(Ctl(f, QStringLiteral("cmdExit"))->isVisible());
            QVERIFY(!Link().Timer1.isActive() && !Link().Timer2.isActive() && !Link().Timer3.isActive());
            QCOMPARE(Link().Timer1.interval(), 400);
        } else {
            QCOMPARE(mb.texts, QStringList{QStringLiteral("密码错误!")});
            QCOMPARE(mb.errorIcons, QList<bool>{false});
            QVERIFY(f->picCom->isVisible());
            QVERIFY(f->FraCeng[0]->isHidden());
            QVERIFY(!Link().portOpen());
            QCOMPARE(f->txtPassword->text(), code);  // the operator corrects, not retypes
            QVERIFY(!MbResult);
        }
        QVERIFY(h->endedProcess < 0 && !h->programEnded);
    }

    void fifthWrongCodeEndsTheRun()
    {
        MbAnswerer mb;
        PLC* f = loadForm();
        for (int i = 0; i < 5; ++i) {
            f->txtPassword->setText(QStringLiteral("1111"));
            f->cmdOk();
            QCOMPARE(h->programEnded, i == 4);
        }
        QCOMPARE(mb.texts,
                 QStringList(4, QStringLiteral("密码错误!")) << QStringLiteral("密码错误已5次，程序将退出！"));
        QCOMPARE(mb.errorIcons.last(), true);
        QVERIFY(!Link().portOpen());
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

    void startingValuesFromFiles_data() { TableRows(kStarts); }
    void startingValuesFromFiles()
    {
        const auto& c = TableRow(kStarts);
        QDir().mkpath(h->path(QStringLiteral("Data")));
        TextFile::writeLines(h->path(QStringLiteral("Data/BLZConfig.dat")), {QStringLiteral("COMPort=") + c.comPort});
        if (*c.lanSel)
            chooseLanguage(QLatin1String(c.lanSel));
        PLC* f = loadForm();
        QCOMPARE(f->ComboPlc->currentIndex(), c.comboPlc);
        QCOMPARE(f->ComboLan->currentIndex(), c.comboLan);
        QCOMPARE(int(LangNo), c.langNo);
        QCOMPARE(label(f, "lblFormTitle"), QString::fromUtf8(c.title));
        QCOMPARE(label(f, "Label1(2)"), QString::fromUtf8(c.plant));
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

    void badFilesStillStart_data() { TableRows(kBadFiles); }
    void badFilesStillStart()
    {
        const auto& c = TableRow(kBadFiles);
        const QString fixture = QLatin1String(c.fixture), target = h->path(QLatin1String(c.target));
        const bool readOnly = !*c.target, binLang = fixture == QLatin1String("binary");
        QDir().mkpath(h->path(QStringLiteral("Data")));
        const QString blz = h->path(QStringLiteral("Data/BLZConfig.dat"));
        if (binLang)
            putBytes(target, QByteArray("\xff\xfe\x00[LANPLCFORM]\x00\x01\x02", 17));
        else if (!fixture.isEmpty())
            QFile::copy(::fixture(fixture), target);
        else if (!readOnly && !QFile::remove(target))
            QDir(target).removeRecursively();
        const QByteArray before = rawBytes(blz);

        MbAnswerer mb;
        std::unique_ptr<UnprivilegedFiles> nobody;
        if (readOnly) {
            makeReadOnly(h->path(QString()));
            nobody = std::make_unique<UnprivilegedFiles>();
        }
        PLC* f = loadForm();
        if (!binLang)
            QCOMPARE(label(f, "lblFormTitle"), QString::fromUtf8(kZhTitle));
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
        // Another process holds the lock of this application folder.
        ReleaseInstanceLock();
        QLockFile other(InstanceLockPath());
        QVERIFY(other.tryLock(0));
        Forms::unload(QStringLiteral("PLC"));
        QVERIFY(!Forms::get<PLC>(QStringLiteral("PLC"))->load());
        other.unlock();
        QVERIFY(Forms::get<PLC>(QStringLiteral("PLC"))->load());
    }

    // By the pointer over the panel, then by the form's activation.
    void loginPanelGivesThePasswordTheFocus()
    {
        PLC* f = loadForm();
        QVERIFY(QTest::qWaitForWindowExposed(f));
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
    }

    void passwordBoxesShowStars()
    {
        for (const char* form : {"PLC", "BcBut", "Factory"}) {
            QWidget* f = *form == 'P' ? loadForm() : Forms::load(QLatin1String(form));
            auto* box = Ctl<QLineEdit>(f, QStringLiteral("txtPassword"));
            box->setText(QStringLiteral("90765"));
            QCOMPARE(box->displayText(), QStringLiteral("*****"));
        }
    }

    void gluedEnglishKeepsItsBlank_data() { TableRows(kGlued); }
    void gluedEnglishKeepsItsBlank()
    {
        const auto& c = TableRow(kGlued);
        const QString form = QLatin1String(c.form);
        MbAnswerer mb;
        LangNo = 2;
        ProfileFile = h->path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini"));
        QString shown;
        if (form.startsWith(QLatin1String("LAN"))) {
            shown = LangText(form, QLatin1String(c.control), QStringLiteral("?")) + QStringLiteral("(1-300)");
        } else {
            h->connectLink();
            if (c.scale >= 0) {
                UseScaleDevices(c.scale);
            } else {
                ScaleName[8] = QStringLiteral("水泥");
                ScaleVibrator[8] = 1;
            }
            if (form.isEmpty()) {
                PortNo = 5;
                Link().RetryCount = 8;
                Link().RetryRequest();
                shown = mb.texts.value(0);
            } else {
                Forms::show(form);
                shown = label(Forms::loaded(form), c.control);
            }
        }
        QVERIFY2(shown.contains(QString::fromUtf8(c.text)), qPrintable(shown));
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
