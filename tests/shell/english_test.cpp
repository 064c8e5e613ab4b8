// A walk through the console as an operator clicks it, with English chosen: every menu entry of the main
// form and of the hubs, every way back, by caption and by image, against the real forms and the simulator.
// No form shows a Chinese character, and every English text of the translation file is finished.
#include "test_support.h"

#include "calibration/cname_files.h"
#include "common/scale_table.h"
#include "common/text_file.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QRegularExpression>
#include <QXmlStreamReader>

namespace {

// Han characters, and the punctuation and full-width forms that Chinese texts use.
const QRegularExpression
    kChinese(QStringLiteral("[\\x{3000}-\\x{303F}\\x{3400}-\\x{9FFF}\\x{F900}-\\x{FAFF}\\x{FF00}-\\x{FFEF}]"));

bool shown(const QString& form)
{
    QWidget* w = Forms::loaded(form);
    return w && w->isVisible();
}

QStringList split(const char* s) { return QString::fromUtf8(s).split(QLatin1Char('|'), Qt::SkipEmptyParts); }

// Every text a widget can show: caption, title, tool tip, list entries and column headers. Boxes hold data.
QStringList shownTexts(QWidget* w)
{
    QStringList t{w->toolTip()};
    if (w->isWindow())
        t << w->windowTitle();
    if (auto* l = qobject_cast<QLabel*>(w))
        t << l->text();
    if (auto* b = qobject_cast<QAbstractButton*>(w))
        t << b->text();
    if (auto* g = qobject_cast<QGroupBox*>(w))
        t << g->title();
    // The language list names each language in its own script as well.
    if (auto* c = qobject_cast<QComboBox*>(w); c && c->objectName() != QLatin1String("ComboLan"))
        for (int i = 0; i < c->count(); ++i)
            t << c->itemText(i);
    if (auto* v = qobject_cast<QAbstractItemView*>(w); v && v->model())
        for (int c = 0; c < v->model()->columnCount(); ++c)
            t << v->model()->headerData(c, Qt::Horizontal).toString();
    return t;
}

// Every form of the console is a step of some row: one that cannot be opened fails there. steps: see Walk,
// after the calibration gate where gate is set; then, where lost, a request that is never answered. gone:
// not loaded (the main form: hidden). texts: shown by a widget or a message box; English texts that follow
// a name or precede a number keep the blank between them.
const struct { const char* name; bool gate; const char *steps, *shown, *gone, *texts = ""; bool lost = false; }
    kWalks[] = {
    {"main form, the link lost", false, "", "PLC", "", "port:Com2, and makes good contact.", true},
    {"calibration: back from the gate", false, "PLC:LblSel(0)|hidden:PLC|BcBut:lblReturn2", "PLC", "BcBut"},
    {"calibration: bin names", true, "BcBut:LblBdTap(2)", "BcBut", ""},
    {"scale names set, no network path", true, "BcBut:LblBdTap(1)|BcBut:lblBdOk", "BcBut", ""},
    {"factory names not restored", true, "BcBut:LblBdTap(1)|BcBut:LblCNameIni", "BcBut", ""},
    {"calibration: a scale", true, "BcBut:LblBd(0)|idle", "YIBiao", "", "Scale 0 calibration"},
    {"calibration: a scale, back, back", true,
     "BcBut:LblBd(8)|hidden:BcBut|YIBiao:lblReturn|hidden:PLC|BcBut:lblReturn", "PLC", "YIBiao|BcBut"},
    {"calibration: sensors, range refused", true, "BcBut:lblSensor|idle|Sensor:TxtDCansd(0)=99999|Sensor:lblBdOk",
     "Sensor", "", "Unit: Kg|is: ("},
    {"calibration: records over the menu", true, "BcBut:LbLBdjk", "FrmJk|BcBut", "PLC"},
    {"parameters: no gate, a scale, back, back", false,
     "PLC:LblSel(1)|BcBut:LblBd(1)|hidden:BcBut|Cansd:lblReturn|hidden:PLC|BcBut:lblReturn", "PLC", "Cansd|BcBut"},
    {"parameters: slag scale, slow feed out of range", false,
     "PLC:LblSel(1)|BcBut:LblBd(10)|idle|Cansd:lblDefault|idle|Cansd:TxtDCansd(12)=9999|Cansd:lblBdOk", "Cansd", ""},
    {"parameters: cement scale", false, "PLC:LblSel(1)|BcBut:LblBd(8)|idle", "Cansd", "", "Scale 8M1 fall correction"},
    {"parameters: admixture scale", false, "PLC:LblSel(1)|BcBut:LblBd(11)|idle", "Cansd", ""},
    // Rows 0, 5 and 6 of the aggregate editor have captions of its own, which have no number in the
    // language file.
    {"aggregate editor", false, "PLC:LblSel(1)|open:CansdAG", "CansdAG", "",
     "Tolerance check delay|M1 Top-up pulse time|Discharge delay time|Key zeroing range|Zero range"},
    {"moisture: a probe", false, "PLC:lblAdvance|BcButHumid:LblBd(4)|idle", "YIBiaoHumidNew", ""},
    {"moisture: a probe, back, back", false,
     "PLC:lblAdvance|BcButHumid:LblBd(4)|hidden:BcButHumid|YIBiaoHumidNew:lblReturn|hidden:PLC|BcButHumid:lblReturn",
     "PLC", "YIBiaoHumidNew|BcButHumid"},
    {"system functions, a time refused", false, "PLC:LblSel(2)|idle|Other:TxtDCansd(0)=999|Other:lblBdOk", "Other", "",
     "is: ("},
    {"vibrator times, a time refused", false,
     "PLC:LblSel(2)|idle|Other:LblZDTime|idle|ZDTime:TxtDCansd(0)=999|ZDTime:lblBdOk", "ZDTime", "",
     "Scale 8 vibrator|is: ("},
    {"vibrator times, back, back", false,
     "PLC:LblSel(2)|Other:LblZDTime|hidden:Other|ZDTime:lblReturn|hidden:PLC|Other:lblReturn", "PLC", "ZDTime|Other"},
    {"factory setting: the hidden entry, back from the gate", false,
     "PLC:LblSel(2)|Other:lblShowFactory|Other:lblHard|hidden:Other|Factory:lblReturn2", "Other", "Factory|PLC"},
    {"factory setting sent", false,
     "PLC:LblSel(2)|Other:lblShowFactory|Other:lblHard|Factory:txtPassword=61730428|Factory:lblOK|Factory:lblBdOk",
     "Factory", ""},
    {"factory setting: the code, back from the setting", false,
     "PLC:LblSel(2)|Other:lblShowFactory|Other:ImgHard|Factory:txtPassword=61730428|Factory:lblOK|Factory:lblReturn",
     "Other", "Factory|PLC"},
    {"factory setting, back, back", false,
     "PLC:LblSel(2)|Other:lblShowFactory|Other:lblHard|Factory:txtPassword=61730428|Factory:cmdOK|"
     "Factory:ImgReturn|Other:ImgReturn", "PLC", "Factory|Other"},
    // The gate is passed once a run: the next entry goes straight to the menu.
    {"calibration: the gate once a run", true,
     "BcBut:lblReturn|PLC:LblSel(0)|BcBut:lblSensor|hidden:BcBut|Sensor:lblReturn", "BcBut", "Sensor|PLC"},
    // The images do what their captions do.
    {"images: calibration, sensors, back, back", false,
     "PLC:Image1(0)|BcBut:txtPassword=90765|BcBut:cmdOK|BcBut:ImgSensor|Sensor:ImgReturn|BcBut:ImgReturn", "PLC",
     "Sensor|BcBut"},
    {"images: calibration gate and back", false, "PLC:Image1(0)|BcBut:ImgReturn2", "PLC", "BcBut"},
    {"images: a scale and back", true, "BcBut:ImgBd(2)|YIBiao:ImgReturn", "BcBut", "YIBiao"},
    {"images: records and closed", true, "BcBut:ImgBdjk|hidden:PLC|FrmJk:ImageExit", "BcBut", "FrmJk"},
    {"images: parameters, a scale, back, back", false, "PLC:Image1(1)|BcBut:ImgBd(8)|Cansd:ImgReturn|BcBut:ImgReturn",
     "PLC", "Cansd|BcBut"},
    {"images: moisture, a probe, back, back", false,
     "PLC:ImgAdvance|BcButHumid:ImgBd(4)|YIBiaoHumidNew:ImgReturn|BcButHumid:ImgReturn", "PLC",
     "YIBiaoHumidNew|BcButHumid"},
    {"images: system functions, vibrators, back, back", false,
     "PLC:Image1(2)|Other:ImageZDTime|ZDTime:ImgReturn|Other:ImgReturn", "PLC", "ZDTime|Other"},
    {"images: factory gate and back", false, "PLC:Image1(2)|Other:lblShowFactory|Other:ImgHard|Factory:ImgReturn2",
     "Other", "Factory"},
    {"images: hoist calibration back", false, "open:YiBiaoAdvance|YiBiaoAdvance:ImgReturn", "PLC", "YiBiaoAdvance"},
    {"images: aggregate editor back", false, "PLC:Image1(1)|open:CansdAG|CansdAG:ImgReturn", "BcBut", "CansdAG"},
    {"hoist: ranges refused, set, error reported", false,
     "open:YiBiaoAdvance|idle|YiBiaoAdvance:txtPulseNum(0)=50|YiBiaoAdvance:lblBdOk|"
     "YiBiaoAdvance:txtPulseNum(0)=300|YiBiaoAdvance:txtPulseNum(1)=50|YiBiaoAdvance:lblBdOk|"
     "YiBiaoAdvance:txtPulseNum(1)=300|YiBiaoAdvance:lblBdOk|YiBiaoAdvance:txtBCSuccessRead=0000", "YiBiaoAdvance", ""},
    {"hoist calibration, kept without a menu entry", false, "open:YiBiaoAdvance|YiBiaoAdvance:lblReturn", "PLC",
     "YiBiaoAdvance"},
    {"aggregate editor, kept without a menu entry", false, "PLC:LblSel(1)|open:CansdAG|CansdAG:lblReturn", "BcBut",
     "CansdAG"},
};

}  // namespace

class EnglishTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterForms(); }

    // Every entry translated; lupdate leaves a new text "unfinished", a text gone from the code "vanished".
    void translationsFinished()
    {
        QFile file(QStringLiteral(ORVA_TS_FILE));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QXmlStreamReader xml(&file);
        QString source;
        QStringList faults;
        int messages = 0;
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (xml.name() == QLatin1String("source")) {
                source = xml.readElementText();
            } else if (xml.name() == QLatin1String("translation")) {
                const QString type = xml.attributes().value(QLatin1String("type")).toString();
                const QString english = xml.readElementText();
                ++messages;
                if (!type.isEmpty() || english.trimmed().isEmpty() || english.contains(kChinese))
                    faults << source + QStringLiteral(" -> \"") + english + QStringLiteral("\" ") + type;
            }
        }
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        QVERIFY(messages > 0);
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QLatin1Char('\n'))));
    }

    // Every widget of every window, hidden ones too, and each message box on the way, in a plant whose
    // scales and bins are all named in English: any Chinese character is a text without an English form.
    void walk_data() { TableRows(kWalks); }
    void walk()
    {
        const auto& c = TableRow(kWalks);
        ConsoleHarness h;
        MbAnswerer mb;
        QDir().mkpath(h.path(QStringLiteral("Data")));
        QDir().mkpath(h.path(QStringLiteral("Lang")));
        QVERIFY(QFile::copy(QStringLiteral(ORVA_LANG_FILE), h.path(QStringLiteral("Lang/PLCCOMLANGUAGE.ini"))));
        TextFile::writeLines(h.path(QStringLiteral("Lang/PLCCOMLANSEL.ini")), {"[PLCCOMLANSEL]", "LANSEL=2"});
        for (size_t i = 0; i < ScaleName.size(); ++i)
            ScaleName[i] = QStringLiteral("Scale %1").arg(i);
        for (size_t i = 0; i < BinName.size(); ++i)
            BinName[i] = QStringLiteral("Bin %1").arg(i);
        WriteScaleNamesToFile();
        WriteBinNamesToFile();
        LogIn();
        QCOMPARE(LangNo, short(2));
        Walk((c.gate ? split("PLC:LblSel(0)|BcBut:txtPassword=90765|BcBut:lblOK") : QStringList()) + split(c.steps));
        if (QTest::currentTestFailed())
            return;
        if (c.lost) {
            Link().RetryCount = 8;
            Link().RetryRequest();
        }
        for (const QString& f : split(c.shown))
            QTRY_VERIFY2(shown(f), qPrintable(f + QStringLiteral(" is not showing")));
        // A form that was left by its return is gone, so that its next entry starts afresh.
        for (const QString& f : split(c.gone))
            QTRY_VERIFY2(f == QLatin1String("PLC") ? !shown(f) : !Forms::loaded(f),
                         qPrintable(f + QStringLiteral(" is still there")));
        QCOMPARE(h.endedProcess, -1);
        QVERIFY(!h.programEnded);

        QStringList all = mb.texts, faults;
        for (const QString& t : std::as_const(mb.texts))
            if (t.contains(kChinese))
                faults << QStringLiteral("message box: ") + t;
        for (QWidget* window : QApplication::topLevelWidgets()) {
            QList<QWidget*> widgets = window->findChildren<QWidget*>();
            widgets.prepend(window);
            for (QWidget* w : std::as_const(widgets))
                for (const QString& t : shownTexts(w)) {
                    all << t;
                    if (t.contains(kChinese))
                        faults << window->objectName() + QLatin1Char('/') + w->objectName() + QStringLiteral(": ") + t;
                }
        }
        for (const QString& t : split(c.texts))
            if (!all.join(QLatin1Char('\n')).contains(t))
                faults << QStringLiteral("not shown: ") + t;
        faults.removeDuplicates();
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QLatin1Char('\n'))));
    }
};

QTEST_MAIN(EnglishTest)
#include "english_test.moc"
