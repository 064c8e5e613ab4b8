// English throughout: with English chosen no form shows a Chinese character, and every English text of
// the translation file is finished.
#include "test_support.h"

#include "calibration/cname_files.h"
#include "common/form_access.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "shell/app_setup.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QRegularExpression>
#include <QXmlStreamReader>

namespace {

// Han characters, and the punctuation and full-width forms that Chinese texts use.
const QRegularExpression
    kChinese(QStringLiteral("[\\x{3000}-\\x{303F}\\x{3400}-\\x{9FFF}\\x{F900}-\\x{FAFF}\\x{FF00}-\\x{FFEF}]"));

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

// Each row walks to a state (see Walk), through the calibration gate first where gate is set.
const struct { const char* name; bool gate; const char* steps; } kStates[] = {
    {"main form", false, ""},
    {"calibration gate", false, "PLC:LblSel(0)"},
    {"calibration menu, bin names", true, "BcBut:LblBdTap(2)"},
    {"scale names set, no network path", true, "BcBut:LblBdTap(1)|BcBut:lblBdOk"},
    {"factory names not restored", true, "BcBut:LblBdTap(1)|BcBut:LblCNameIni"},
    {"records", true, "BcBut:LbLBdjk"},
    {"sensors", true, "BcBut:lblSensor|idle"},
    {"weight calibration", true, "BcBut:LblBd(0)|idle"},
    {"slag scale: slow feed out of range", false,
     "PLC:LblSel(1)|BcBut:LblBd(10)|idle|Cansd:lblDefault|idle|Cansd:TxtDCansd(12)=9999|Cansd:lblBdOk"},
    {"admixture scale parameters", false, "PLC:LblSel(1)|BcBut:LblBd(11)|idle"},
    {"aggregate editor", false, "PLC:LblSel(1)|open:CansdAG"},
    {"moisture calibration", false, "PLC:lblAdvance|BcButHumid:LblBd(4)|idle"},
    {"system functions, vibrator times", false, "PLC:LblSel(2)|idle|Other:LblZDTime|idle"},
    {"factory setting sent", false,
     "PLC:LblSel(2)|Other:lblShowFactory|Other:lblHard|Factory:txtPassword=61730428|Factory:lblOK|Factory:lblBdOk"},
    {"hoist: ranges refused, set, error reported", false,
     "open:YiBiaoAdvance|idle|YiBiaoAdvance:txtPulseNum(0)=50|YiBiaoAdvance:lblBdOk|"
     "YiBiaoAdvance:txtPulseNum(0)=300|YiBiaoAdvance:txtPulseNum(1)=50|YiBiaoAdvance:lblBdOk|"
     "YiBiaoAdvance:txtPulseNum(1)=300|YiBiaoAdvance:lblBdOk|YiBiaoAdvance:txtBCSuccessRead=0000"},
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
    void noChineseShown_data() { TableRows(kStates); }
    void noChineseShown()
    {
        const auto& c = TableRow(kStates);
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
        const QString gate = c.gate ? QStringLiteral("PLC:LblSel(0)|BcBut:txtPassword=90765|BcBut:lblOK|") : QString();
        Walk((gate + QLatin1String(c.steps)).split(QLatin1Char('|'), Qt::SkipEmptyParts));
        if (QTest::currentTestFailed())
            return;
        QStringList faults;
        for (const QString& t : std::as_const(mb.texts))
            if (t.contains(kChinese))
                faults << QStringLiteral("message box: ") + t;
        for (QWidget* window : QApplication::topLevelWidgets()) {
            QList<QWidget*> all = window->findChildren<QWidget*>();
            all.prepend(window);
            for (QWidget* w : std::as_const(all))
                for (const QString& t : shownTexts(w))
                    if (t.contains(kChinese))
                        faults << window->objectName() + QLatin1Char('/') + w->objectName() + QStringLiteral(": ") + t;
        }
        faults.removeDuplicates();
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QLatin1Char('\n'))));
    }
};

QTEST_MAIN(EnglishTest)
#include "english_test.moc"
