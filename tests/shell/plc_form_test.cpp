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
#include "link/register_map.h"
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

void shipLanguageFile(ConsoleHarness& h)
{
    QDir().mkpath(h.path(QStringLiteral("Lang")));
    QFile::copy(QStringLiteral(ORVA_LANG_FILE), h.path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini")));
}

QString label(QWidget* f, const char* name) { return Ctl<QLabel>(f, QLatin1String(name))->text(); }

bool menuShown(PLC* f)
{
    for (QFrame* fr : f->FraCeng)
        if (fr->isHidden())
            return false;
    return !f->picCom->isVisible();
}

}  // namespace

class PlcFormTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterForms(); }
    void init()
    {
        h = new ConsoleHarness;
        shipLanguageFile(*h);
    }
    void cleanup()
    {
        delete h;
        h = nullptr;
    }

    void accessCode_data();
    void accessCode();
    void fifthWrongCodeEndsTheRun();
    void portOpenFailures_data();
    void portOpenFailures();
    void startingValuesFromFiles_data();
    void startingValuesFromFiles();
    void languageChoiceIsSavedAndApplied();
    void badFilesStillStart_data();
    void badFilesStillStart();
    void secondInstanceEnds();
    void loginPanelGivesThePasswordTheFocus_data();
    void loginPanelGivesThePasswordTheFocus();
    void passwordBoxesShowStars_data();
    void passwordBoxesShowStars();
    void gluedEnglishKeepsItsBlank_data();
    void gluedEnglishKeepsItsBlank();

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

void PlcFormTest::accessCode_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("right") << "48213" << true;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("one digit short") << "4821" << false;
    QTest::newRow("trailing blank") << "48213 " << false;
    QTest::newRow("full-width digits") << "４８２１３" << false;
}

void PlcFormTest::accessCode()
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

void PlcFormTest::fifthWrongCodeEndsTheRun()
{
    MbAnswerer mb;
    PLC* f = loadForm();
    for (int i = 0; i < 5; ++i) {
        f->txtPassword->setText(QStringLiteral("1111"));
        f->cmdOk();
        QCOMPARE(h->programEnded, i == 4);
    }
    QCOMPARE(mb.texts.size(), 5);
    QCOMPARE(mb.texts.mid(0, 4), QStringList(4, QStringLiteral("密码错误!")));
    QCOMPARE(mb.texts[4], QStringLiteral("密码错误已5次，程序将退出！"));
    QCOMPARE(mb.errorIcons.last(), true);
    QVERIFY(!Link().portOpen());
    // The way out saves the configuration.
    QVERIFY(QFile::exists(BLZConfigPath()));
}

void PlcFormTest::portOpenFailures_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("errorIcon");
    QTest::addColumn<int>("number");        // the port's own error, as it reports it
    QTest::addColumn<QString>("systemText");
    QTest::newRow("in use") << int(PortOpenError::InUse) << "" << "Com3端口已被其它程序占用!请重新设置端口！" << false
                            << 2 << "Device or resource busy";
    QTest::newRow("missing") << int(PortOpenError::Missing) << "" << "Com3端口无效!请重新设置端口！" << false << 1
                             << "No such file or directory";
    const QString denied = QStringLiteral("/dev/ttyS2: Permission denied. The user must be in the dialout group.");
    QTest::newRow("permission") << int(PortOpenError::Other) << denied << denied << true << 2 << "Permission denied";
}

void PlcFormTest::portOpenFailures()
{
    QFETCH(int, error);
    QFETCH(QString, description);
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
    PLC* f = loadForm();
    f->ComboPlc->setCurrentIndex(2);
    f->txtPassword->setText(QStringLiteral("48213"));
    f->cmdOk();
    QCOMPARE(mb.texts, QStringList{text});
    QCOMPARE(mb.errorIcons, QList<bool>{errorIcon});
    QVERIFY(f->picCom->isVisible());
    QVERIFY(f->FraCeng[1]->isHidden());
    QCOMPARE(int(PortNo), 3);
    QString log;
    TextFile::read(ErrorLogPath(QDate::currentDate()), &log);
    // The log keeps the port's own number and words, not the operator's message.
    QVERIFY2(log.contains(QStringLiteral("ErrNumber:%1----%2\r\nErrForm:PLC\r\nErrSub:cmdOk").arg(number).arg(systemText)),
             qPrintable(log));
    QVERIFY2(!log.contains(text), qPrintable(log));

    // The code stays accepted: the next try with a good port goes straight to the menu.
    refuse = false;
    f->cmdOk();
    QCOMPARE(mb.texts.size(), 1);
    QVERIFY(menuShown(f));
}

void PlcFormTest::startingValuesFromFiles_data()
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

void PlcFormTest::startingValuesFromFiles()
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
        TextFile::writeLines(LangSelFile(), {QStringLiteral("[PLCCOMLANSEL]"), QStringLiteral("LANSEL=") + lanSel});
    PLC* f = loadForm();
    QCOMPARE(f->ComboPlc->currentIndex(), comboPlc);
    QCOMPARE(f->ComboLan->currentIndex(), comboLan);
    QCOMPARE(int(LangNo), langNo);
    QCOMPARE(label(f, "lblFormTitle"), title);
    QCOMPARE(label(f, "Label1(2)"), plant);
}

void PlcFormTest::languageChoiceIsSavedAndApplied()
{
    // Other entries of the choice file are the station's own and stay.
    TextFile::writeLines(LangSelFile(), {QStringLiteral("; chosen at the station"), QStringLiteral("[PLCCOMLANSEL]"),
                                         QStringLiteral("LANSEL=1"), QStringLiteral("[Other]"), QStringLiteral("A=1")});
    PLC* f = loadForm();
    QCOMPARE(label(f, "lblPassWord"), QStringLiteral("密码:"));
    f->ComboLan->setCurrentIndex(1);
    emit f->ComboLan->activated(1);
    QCOMPARE(int(LangNo), 2);
    QCOMPARE(label(f, "lblPassWord"), QStringLiteral("Password:"));
    QCOMPARE(label(f, "LblSel(1)"), QStringLiteral("Parameters"));
    QCOMPARE(ParamFormTitle, QStringLiteral("Parameters"));
    QStringList lines;
    QVERIFY(TextFile::readLines(LangSelFile(), &lines));
    QCOMPARE(lines,
             (QStringList{QStringLiteral("; chosen at the station"), QStringLiteral("[PLCCOMLANSEL]"),
                          QStringLiteral("LANSEL=2"), QStringLiteral("[Other]"), QStringLiteral("A=1")}));
    emit f->ComboLan->activated(0);
    QCOMPARE(label(f, "lblPassWord"), QStringLiteral("密码:"));
}

void PlcFormTest::badFilesStillStart_data()
{
    QTest::addColumn<QString>("damage");
    QTest::newRow("binary BLZConfig.dat") << "binary";
    QTest::newRow("truncated BLZConfig.dat") << "truncated";
    QTest::newRow("CName.ini of 10000-character lines") << "longnames";
    QTest::newRow("no Data folder") << "nodata";
    QTest::newRow("read-only application folder") << "readonly";
    QTest::newRow("no language file") << "nolang";
    QTest::newRow("language file is binary") << "binlang";
}

void PlcFormTest::badFilesStillStart()
{
    QFETCH(QString, damage);
    QDir().mkpath(h->path(QStringLiteral("Data")));
    const QString blz = h->path(QStringLiteral("Data/BLZConfig.dat"));
    if (damage == QLatin1String("binary"))
        QFile::copy(fixture(QStringLiteral("BLZConfig_binary.dat")), blz);
    else if (damage == QLatin1String("truncated"))
        QFile::copy(fixture(QStringLiteral("BLZConfig_truncated.dat")), blz);
    else if (damage == QLatin1String("longnames"))
        QFile::copy(fixture(QStringLiteral("CName_longlines.ini")), h->path(QStringLiteral("Data/CName.ini")));
    else if (damage == QLatin1String("nodata"))
        QDir(h->path(QStringLiteral("Data"))).removeRecursively();
    else if (damage == QLatin1String("nolang"))
        QFile::remove(h->path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini")));
    else if (damage == QLatin1String("binlang"))
        putBytes(h->path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini")), QByteArray("\xff\xfe\x00[LANPLCFORM]\x00\x01\x02", 17));
    const QByteArray before = rawBytes(blz);

    MbAnswerer mb;
    std::unique_ptr<UnprivilegedFiles> nobody;
    if (damage == QLatin1String("readonly")) {
        makeReadOnly(h->path(QString()));
        nobody = std::make_unique<UnprivilegedFiles>();
    }
    PLC* f = loadForm();
    QVERIFY(f);
    if (damage != QLatin1String("binlang"))
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
    if (damage == QLatin1String("readonly")) {
        QCOMPARE(rawBytes(blz), before);  // nothing written, nothing lost
        makeWritable(h->path(QString()));
    }
}

void PlcFormTest::secondInstanceEnds()
{
    PLC* first = loadForm();
    QVERIFY(first);
    // Another process holds the lock of this application folder.
    ReleaseInstanceLock();
    QLockFile other(InstanceLockPath());
    QVERIFY(other.tryLock(0));
    Forms::unload(QStringLiteral("PLC"));
    QVERIFY(!Forms::get<PLC>(QStringLiteral("PLC"))->load());
    other.unlock();
    QVERIFY(Forms::get<PLC>(QStringLiteral("PLC"))->load());
}

void PlcFormTest::loginPanelGivesThePasswordTheFocus_data()
{
    QTest::addColumn<bool>("byActivation");  // else by the pointer over the panel
    QTest::newRow("pointer over the panel") << false;
    QTest::newRow("form activated") << true;
}

void PlcFormTest::loginPanelGivesThePasswordTheFocus()
{
    QFETCH(bool, byActivation);
    PLC* f = loadForm();
    QVERIFY(QTest::qWaitForWindowExposed(f));
    f->ComboPlc->setFocus();
    if (byActivation) {
        auto* other = new QWidget;
        other->show();
        other->activateWindow();
        QTRY_VERIFY(other->isActiveWindow());
        f->ComboPlc->setFocus();
        f->activateWindow();
        QTRY_VERIFY(f->isActiveWindow());
        delete other;
    } else {
        QMouseEvent move(QEvent::MouseMove, QPointF(20, 20), f->picCom->mapToGlobal(QPointF(20, 20)), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(f->picCom, &move);
    }
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(f->txtPassword));
}

void PlcFormTest::passwordBoxesShowStars_data()
{
    QTest::addColumn<QString>("form");
    QTest::newRow("login") << "PLC";
    QTest::newRow("calibration gate") << "BcBut";
    QTest::newRow("factory gate") << "Factory";
}

void PlcFormTest::passwordBoxesShowStars()
{
    QFETCH(QString, form);
    QWidget* f = form == QLatin1String("PLC") ? loadForm() : Forms::load(form);
    auto* box = Ctl<QLineEdit>(f, QStringLiteral("txtPassword"));
    box->setText(QStringLiteral("90765"));
    QCOMPARE(box->displayText(), QStringLiteral("*****"));
}

// English texts that follow a name keep the blank between them.
void PlcFormTest::gluedEnglishKeepsItsBlank_data()
{
    QTest::addColumn<QString>("where");
    QTest::addColumn<QString>("text");
    QTest::newRow("fault dialog") << "fault" << "port:Com2, and makes good contact.";
    QTest::newRow("port in use") << "inuse" << "Com2 is in use by another program!";
    QTest::newRow("port missing") << "missing" << "Com2 is not a valid port!";
    QTest::newRow("material row") << "material" << "水泥M1 fall correction";
    QTest::newRow("calibration title") << "title" << "骨料1 calibration";
    QTest::newRow("vibrator title") << "vibrator" << "水泥 vibrator";
    QTest::newRow("sensor unit") << "unit" << "Unit: Kg";
    // Range messages: the numbers follow the text.
    QTest::newRow("time range") << "LANOTHERFORM/OTHER059" << "is: (";
    QTest::newRow("vibrator time range") << "LANZDTIMEFORM/ZDTIME010" << "is: (";
    QTest::newRow("sensor range") << "LANSENSORFORM/SENSOR003" << "is: (";
}

void PlcFormTest::gluedEnglishKeepsItsBlank()
{
    QFETCH(QString, where);
    QFETCH(QString, text);
    MbAnswerer mb;
    QString shown;
    if (where == QLatin1String("inuse") || where == QLatin1String("missing")) {
        const PortOpenError e = where == QLatin1String("inuse") ? PortOpenError::InUse : PortOpenError::Missing;
        SetPortFactory([e](int) -> CommPort* { return new RefusingPort({e, QString(), 0, QString()}); });
        TextFile::writeLines(LangSelFile(), {QStringLiteral("[PLCCOMLANSEL]"), QStringLiteral("LANSEL=2")});
        PLC* f = loadForm();
        f->txtPassword->setText(QStringLiteral("48213"));
        f->cmdOk();
        shown = mb.texts.value(0);
    } else if (where.contains(QLatin1Char('/'))) {
        LangNo = 2;
        ProfileFile = h->path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini"));
        shown = LangText(where.section(QLatin1Char('/'), 0, 0), where.section(QLatin1Char('/'), 1), QStringLiteral("?")) +
                QStringLiteral("(1-300)");
    } else if (where == QLatin1String("vibrator") || where == QLatin1String("unit")) {
        LangNo = 2;
        ProfileFile = h->path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini"));
        h->connectLink();
        ScaleName[8] = QStringLiteral("水泥");
        ScaleVibrator[8] = 1;
        const QString form = where == QLatin1String("unit") ? QStringLiteral("Sensor") : QStringLiteral("ZDTime");
        Forms::show(form);
        shown = label(Forms::loaded(form), where == QLatin1String("unit") ? "LblUnit" : "lblTitleName(8)");
    } else {
        LangNo = 2;
        ProfileFile = h->path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini"));
        h->connectLink();
        const int scale = where == QLatin1String("material") ? 8 : 0;
        ScaleNo = short(scale);
        ScaleTitle = ScaleCaption = ScaleName[size_t(scale)];
        OptionDevice = QLatin1String(kScaleDevices[size_t(scale)].option);
        ParamDevice = QLatin1String(kScaleDevices[size_t(scale)].param);
        if (where == QLatin1String("fault")) {
            Link().RetryCount = 8;
            Link().RetryRequest();
            shown = mb.texts.value(0);
        } else if (where == QLatin1String("material")) {
            Forms::show(QStringLiteral("Cansd"));
            shown = label(Forms::loaded(QStringLiteral("Cansd")), "LblCansd(10)");
        } else {
            Forms::show(QStringLiteral("YIBiao"));
            shown = label(Forms::loaded(QStringLiteral("YIBiao")), "LblBceng");
        }
    }
    QVERIFY2(shown.contains(text), qPrintable(shown));
}

QTEST_MAIN(PlcFormTest)
#include "plc_form_test.moc"
