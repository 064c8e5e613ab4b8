#include "test_support.h"

#include "../common/common_test_util.h"
#include "plcsim/sim_port.h"

#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "common/form_access.h"
#include "link/link_engine.h"
#include "shell/app_setup.h"
#include "common/lang.h"
#include "shell/plc_form.h"
#include "shell/single_instance.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QLockFile>
#include <QMouseEvent>
#include <QTest>

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

void chooseLanguage(const char* lansel)
{
    TextFile::writeLines(LangSelFile(), {QStringLiteral("[PLCCOMLANSEL]"), QStringLiteral("LANSEL=") + lansel});
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

    void accessCode_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("right") << "48213" << true;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("one digit short") << "4821" << false;
        QTest::newRow("trailing blank") << "48213 " << false;
        QTest::newRow("full-width digits") << "４８２１３" << false;
    }
    void accessCode()
    {
        QFETCH(QString, code);
        QFETCH(bool, accepted);
        MbAnswerer mb;
        PLC* f = loadForm();
        QVERIFY(f);
        QVERIFY(f->picCom->isVisible());
        QVERIFY(f->FraCeng[0]->isHidden());
        f->txtPassword->setText(code);
        QTest::keyClick(f->txtPassword, Qt::Key_Return);
        if (accepted) {
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
        QCOMPARE(mb.texts, QStringList(4, QStringLiteral("密码错误!")) << QStringLiteral("密码错误已5次，程序将退出！"));
        QCOMPARE(mb.errorIcons.last(), true);
        QVERIFY(!Link().portOpen());
        QVERIFY(QFile::exists(BLZConfigPath()));  // the way out saves the configuration
    }

    // English texts follow the port's name with their blank.
    void portOpenFailures_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("description");
        QTest::addColumn<bool>("english");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("errorIcon");
        QTest::addColumn<int>("number");  // the port's own error, as it reports it
        QTest::addColumn<QString>("systemText");
        const int inUse = int(PortOpenError::InUse), missing = int(PortOpenError::Missing);
        QTest::newRow("in use") << inUse << "" << false << "Com3端口已被其它程序占用!请重新设置端口！" << false << 2
                                << "Device or resource busy";
        QTest::newRow("missing") << missing << "" << false << "Com3端口无效!请重新设置端口！" << false << 1
                                 << "No such file or directory";
        const QString denied = QStringLiteral("/dev/ttyS2: Permission denied. The user must be in the dialout group.");
        QTest::newRow("permission") << int(PortOpenError::Other) << denied << false << denied << true << 2
                                    << "Permission denied";
        QTest::newRow("in use, English") << inUse << "" << true
                                         << "Com3 is in use by another program! Please choose another port!" << false
                                         << 2 << "Device or resource busy";
        QTest::newRow("missing, English") << missing << "" << true
                                          << "Com3 is not a valid port! Please choose another port!" << false << 1
                                          << "No such file or directory";
    }
    void portOpenFailures()
    {
        QFETCH(int, error);
        QFETCH(QString, description);
        QFETCH(bool, english);
        QFETCH(QString, text);
        QFETCH(bool, errorIcon);
        QFETCH(int, number);
        QFETCH(QString, systemText);
        MbAnswerer mb;
        bool refuse = true;
        plcsim::Controller* sim = &h->sim;
        SetPortFactory([&](int) -> CommPort* {
            if (refuse)
                return new RefusingPort({PortOpenError(error), description, number, systemText});
            return new plcsim::SimPort(sim);
        });
        if (english)
            chooseLanguage("2");
        PLC* f = loadForm();
        f->ComboPlc->setCurrentIndex(2);
        f->txtPassword->setText(QStringLiteral("48213"));
        f->cmdOk();
        QCOMPARE(mb.texts, QStringList{text});
        QCOMPARE(mb.errorIcons, QList<bool>{errorIcon});
        QVERIFY(f->picCom->isVisible());
        QVERIFY(f->FraCeng[1]->isHidden());
        QCOMPARE(int(PortNo), 3);
        const QString log = ErrorLogText();
        // The log keeps the port's own number and words, not the operator's message.
        const QString record = QStringLiteral("ErrNumber:%1----%2\r\nErrForm:PLC\r\nErrSub:cmdOk").arg(number).arg(systemText);
        QVERIFY2(log.contains(record), qPrintable(log));
        QVERIFY2(!log.contains(text), qPrintable(log));

        // The code stays accepted: the next try with a good port goes straight to the menu.
        refuse = false;
        f->cmdOk();
        QCOMPARE(mb.texts.size(), 1);
        QVERIFY(menuShown(f));
    }

    void startingValuesFromFiles_data()
    {
        QTest::addColumn<QString>("comPort");
        QTest::addColumn<QString>("lanSel");
        QTest::addColumn<int>("comboPlc");
        QTest::addColumn<int>("comboLan");
        QTest::addColumn<int>("langNo");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("plant");
        const QString zhTitle = QStringLiteral("秤控台设定选项");
        const QString zhPlant = QStringLiteral("星河路桥工程有限公司QX240B7.1-42TR8CD517");
        QTest::newRow("Com5, Chinese") << "5" << "1" << 4 << 0 << 1 << zhTitle << zhPlant;
        QTest::newRow("Com1, English") << "1" << "2" << 0 << 1 << 2 << "Weighing console settings"
                                       << "English QX240B7.1-42TR8CD517";
        QTest::newRow("port 0 keeps Com2") << "0" << "1" << 1 << 0 << 1 << zhTitle << zhPlant;
        QTest::newRow("port 7 keeps Com2") << "7" << "1" << 1 << 0 << 1 << zhTitle << zhPlant;
        QTest::newRow("language 3 taken, combo left") << "2" << "3" << 1 << 0 << 3 << zhTitle
                                                      << "Russian QX240B7.1-42TR8CD517";
        QTest::newRow("no language choice file") << "6" << "" << 5 << 0 << 1 << zhTitle << zhPlant;
    }
    void startingValuesFromFiles()
    {
        QFETCH(QString, comPort);
        QFETCH(QString, lanSel);
        QFETCH(int, comboPlc);
        QFETCH(int, comboLan);
        QFETCH(int, langNo);
        QFETCH(QString, title);
        QFETCH(QString, plant);
        QDir().mkpath(h->path(QStringLiteral("Data")));
        TextFile::writeLines(h->path(QStringLiteral("Data/BLZConfig.dat")), {QStringLiteral("COMPort=") + comPort});
        if (!lanSel.isEmpty())
            chooseLanguage(qPrintable(lanSel));
        PLC* f = loadForm();
        QCOMPARE(f->ComboPlc->currentIndex(), comboPlc);
        QCOMPARE(f->ComboLan->currentIndex(), comboLan);
        QCOMPARE(int(LangNo), langNo);
        QCOMPARE(label(f, "lblFormTitle"), title);
        QCOMPARE(label(f, "Label1(2)"), plant);
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

    void badFilesStillStart_data()
    {
        QTest::addColumn<QString>("fixture");  // copied over target; empty: target removed
        QTest::addColumn<QString>("target");
        QTest::newRow("binary BLZConfig.dat") << "BLZConfig_binary.dat" << "Data/BLZConfig.dat";
        QTest::newRow("truncated BLZConfig.dat") << "BLZConfig_truncated.dat" << "Data/BLZConfig.dat";
        QTest::newRow("CName.ini of 10000-character lines") << "CName_longlines.ini" << "Data/CName.ini";
        QTest::newRow("no Data folder") << "" << "Data";
        QTest::newRow("read-only application folder") << "" << "";
        QTest::newRow("no language file") << "" << "Lang/PLCCOMLANGUAGE.ini";
        QTest::newRow("language file is binary") << "binary" << "Lang/PLCCOMLANGUAGE.ini";
    }
    void badFilesStillStart()
    {
        QFETCH(QString, fixture);
        QFETCH(QString, target);
        QDir().mkpath(h->path(QStringLiteral("Data")));
        const QString blz = h->path(QStringLiteral("Data/BLZConfig.dat"));
        const bool readOnly = target.isEmpty(), binLang = fixture == QLatin1String("binary");
        if (binLang)
            putBytes(h->path(target), QByteArray("\xff\xfe\x00[LANPLCFORM]\x00\x01\x02", 17));
        else if (!fixture.isEmpty())
            QFile::copy(::fixture(fixture), h->path(target));
        else if (!readOnly && !QFile::remove(h->path(target)))
            QDir(h->path(target)).removeRecursively();
        const QByteArray before = rawBytes(blz);

        MbAnswerer mb;
        std::unique_ptr<UnprivilegedFiles> nobody;
        if (readOnly) {
            makeReadOnly(h->path(QString()));
            nobody = std::make_unique<UnprivilegedFiles>();
        }
        PLC* f = loadForm();
        QVERIFY(f);
        if (!binLang)
            QCOMPARE(label(f, "lblFormTitle"), QStringLiteral("秤控台设定选项"));
        QVERIFY(mb.texts.isEmpty());
        QVERIFY(f->picCom->isVisible());
        QCOMPARE(ScaleName[0].isEmpty(), false);  // the names fall back to the defaults

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

    void loginPanelGivesThePasswordTheFocus_data()
    {
        QTest::addColumn<bool>("byActivation");  // else by the pointer over the panel
        QTest::newRow("pointer over the panel") << false;
        QTest::newRow("form activated") << true;
    }
    void loginPanelGivesThePasswordTheFocus()
    {
        QFETCH(bool, byActivation);
        PLC* f = loadForm();
        QVERIFY(QTest::qWaitForWindowExposed(f));
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
            QMouseEvent move(QEvent::MouseMove, QPointF(20, 20), f->picCom->mapToGlobal(QPointF(20, 20)), Qt::NoButton,
                             Qt::NoButton, Qt::NoModifier);
            QApplication::sendEvent(f->picCom, &move);
        }
        QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(f->txtPassword));
    }

    void passwordBoxesShowStars_data()
    {
        QTest::addColumn<QString>("form");
        QTest::newRow("login") << "PLC";
        QTest::newRow("calibration gate") << "BcBut";
        QTest::newRow("factory gate") << "Factory";
    }
    void passwordBoxesShowStars()
    {
        QFETCH(QString, form);
        QWidget* f = form == QLatin1String("PLC") ? loadForm() : Forms::load(form);
        auto* box = Ctl<QLineEdit>(f, QStringLiteral("txtPassword"));
        box->setText(QStringLiteral("90765"));
        QCOMPARE(box->displayText(), QStringLiteral("*****"));
    }

    // English texts that follow a name keep the blank between them (the port errors: portOpenFailures).
    void gluedEnglishKeepsItsBlank_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("text");
        QTest::newRow("fault dialog") << "fault" << "port:Com5, and makes good contact.";
        QTest::newRow("material row") << "material" << "水泥M1 fall correction";
        QTest::newRow("calibration title") << "title" << "骨料1 calibration";
        QTest::newRow("vibrator title") << "vibrator" << "水泥 vibrator";
        QTest::newRow("sensor unit") << "unit" << "Unit: Kg";
        // Range messages: the numbers follow the text.
        QTest::newRow("time range") << "LANOTHERFORM/OTHER059" << "is: (";
        QTest::newRow("vibrator time range") << "LANZDTIMEFORM/ZDTIME010" << "is: (";
        QTest::newRow("sensor range") << "LANSENSORFORM/SENSOR003" << "is: (";
    }
    void gluedEnglishKeepsItsBlank()
    {
        QFETCH(QString, where);
        QFETCH(QString, text);
        MbAnswerer mb;
        LangNo = 2;
        ProfileFile = h->path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini"));
        QString shown;
        const auto showAndRead = [&](const QString& form, const char* name) {
            Forms::show(form);
            shown = label(Forms::loaded(form), name);
        };
        if (where.contains(QLatin1Char('/'))) {
            const QStringList at = where.split(QLatin1Char('/'));
            shown = LangText(at[0], at[1], QStringLiteral("?")) + QStringLiteral("(1-300)");
        } else if (where == QLatin1String("vibrator") || where == QLatin1String("unit")) {
            h->connectLink();
            ScaleName[8] = QStringLiteral("水泥");
            ScaleVibrator[8] = 1;
            if (where == QLatin1String("unit"))
                showAndRead(QStringLiteral("Sensor"), "LblUnit");
            else
                showAndRead(QStringLiteral("ZDTime"), "lblTitleName(8)");
        } else {
            h->connectLink();
            UseScaleDevices(where == QLatin1String("material") ? 8 : 0);
            if (where == QLatin1String("fault")) {
                PortNo = 5;
                Link().RetryCount = 8;
                Link().RetryRequest();
                shown = mb.texts.value(0);
            } else if (where == QLatin1String("material")) {
                showAndRead(QStringLiteral("Cansd"), "LblCansd(10)");
            } else {
                showAndRead(QStringLiteral("YIBiao"), "LblBceng");
            }
        }
        QVERIFY2(shown.contains(text), qPrintable(shown));
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
