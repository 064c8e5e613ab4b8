// The texts of the forms: the routines they are built with, the language they are picked in, the shipped file.
#include "common_test_util.h"

#include "common/lang.h"
#include "common/vbtext.h"

#include <QDirIterator>
#include <QRegularExpression>

#include <cmath>

namespace {
// CInt for 16 bits, CLng for 32, as the text of the result or of the error raised.
QString integer(double value, bool wide = false)
{
    try {
        return QString::number(wide ? CLng(value) : CInt(value));
    } catch (const VbError& e) {
        return QStringLiteral("error %1").arg(e.number);
    }
}

// A routine's result and the text expected of it: Val and the integer conversions as Str shows them, Format,
// the substring routines, Hex as the 16-bit routines expect it.
const struct { const char* name; QString result, expected; } kResults[] = {
    {"Val digits then letters", NumText(Val("12abc")), "12"},
    {"Val blanks, sign, exponent", NumText(Val("  -1.5e2x")), "-150"},
    {"Val second point ends it", NumText(Val("1.2.3")), "1.2"},
    {"Val D exponent", NumText(Val("1.5D2")), "150"},
    {"Val e without digits", NumText(Val("3e+x")), "3"},
    {"Val blank after sign ends it", NumText(Val("- 5")), "0"},
    {"Val full-width digits are no digits", NumText(Val(QString::fromUtf8("１２"))), "0"},
    {"Val hex", NumText(Val("&H1F")), "31"},
    {"Val hex 16 bits negative", NumText(Val("&HFFFF")), "-1"},
    {"Val octal stops at 8", NumText(Val("&O178")), "15"},
    {"half to even up", integer(3.5), "4"},
    {"half to even down", integer(2.5), "2"},
    {"negative half to even", integer(-2.5), "-2"},
    {"16-bit top half overflows", integer(32767.5), "error 6"},
    {"16-bit bottom half to even", integer(-32768.5), "-32768"},
    {"not a number", integer(std::nan("")), "error 6"},
    {"32-bit beyond 16 bits", integer(70001.5, true), "70002"},
    {"32-bit top half overflows", integer(2147483647.5, true), "error 6"},
    {"32-bit bottom half to even", integer(-2147483648.5, true), "-2147483648"},
    {"half away, not to even", Format(2.5, "#0"), "3"},
    {"negative half away", Format(-2.5, "#0"), "-3"},
    {"negative rounding to zero", Format(-0.4, "#0"), "-0"},
    {"decimal half 1.005", Format(1.005, "#0.00"), "1.01"},
    {"just below a half", Format(1.0049999, "#0.00"), "1.00"},
    {"carry over all nines", Format(99.95, "#0.0"), "100.0"},
    {"Trim both ends", Trim("  a b  "), "a b"},
    {"RTrim", RTrim("  a b  "), "  a b"},
    {"tab is no blank", Trim("\ta\t"), "\ta\t"},
    {"full-width blank stays", Trim(QString::fromUtf8("\u3000名 ")), QString::fromUtf8("\u3000名")},
    {"Left 2", Left("abcdef", 2), "ab"},
    {"Left negative", Left("abc", -1), ""},
    {"Right 2", Right("abcdef", 2), "ef"},
    {"Mid from 1", Mid("abcdef", 1, 2), "ab"},
    {"Mid to end", Mid("abcdef", 5), "ef"},
    {"Mid start beyond", Mid("abc", 4, 1), ""},
    {"Mid start 0 clamped", Mid("abc", 0, 2), "ab"},
    {"Mid Chinese", Mid(QString::fromUtf8("骨料1"), 2, 1), QString::fromUtf8("料")},
    {"Hex of minus one as 16 bits", Hex(-1), "FFFF"},
    {"Hex beyond 16 bits", Hex(70000), "11170"},
    {"Hex of the 16-bit bottom", Hex(-32768), "8000"},
    {"Hex below 16 bits", Hex(-32769), "FFFF7FFF"},
    {"binary noise hidden", NumText(0.1 + 0.2), "0.3"},
    {"fifteen digits", NumText(1.0 / 3.0), "0.333333333333333"},
    {"exponent from 1E+15", NumText(1e15), "1E+15"},
    {"small exponent", NumText(0.00001), "1E-05"},
};

const QByteArray kTexts = TextFile::encode(QString::fromUtf8(
    "[LANPLCFORM]\r\nPLC001-1=语言:\r\nPLC001-2=Language:\r\nPLC001-3=Язык:\r\n[LANCOMMON]\r\nCOM001-2=OK\r\n"));
// The choice file's LANSEL, the language number taken and the caption it shows. The numbers in the list, and
// no file at all, are the login form's test.
const struct { const char *name, *lansel; int langNo; const char* caption; } kChoices[] = {
    {"2.4 rounds to English", "2.4", 2, "Language:"},
    {"beyond 16 bits", "99999999", 1, "语言:"},
    {"far beyond", "1E300", 1, "语言:"},
    {"zero", "0", 1, "语言:"},
    {"negative", "-2", 1, "语言:"},
    {"four", "4", 1, "语言:"},
    {"not a number", "English", 1, "语言:"},
};

// The file is read once, but a file replaced, grown or gone is seen at the next lookup.
const struct { const char* name; QByteArray replacement; const char* caption; } kChanges[] = {
    {"saved anew, same size", QByteArray(kTexts).replace("Language:", "LANGUAGE:"), "LANGUAGE:"},
    {"grown", QByteArray(kTexts).replace("Language:", "Language now:"), "Language now:"},
    {"removed", {}, "默认"},
};

// Key prefix, its section of the language file, and the numbers in use there. Keys that the step table and
// the forms name beside their texts (status lines, port errors, help texts, the moisture title) come on top.
const struct { const char *prefix, *section, *ranges; } kSections[] = {
    {"YIBIAOADVA", "LANYIBIAOADVAFORM", "1-3,5-8,14-18,20-23,45-46"},
    {"YIBIAO", "LANYIBIAOFORM", "1-21,25-29,31-35,37-45,50-51"},
    {"COM", "LANCOMMON", "1-8,11-12,14-20,23-28"},
    {"PLC", "LANPLCFORM", "1-9,11-20,22,24,26,28-40"},
    {"CANSD", "LANCANSDFORM", "1-67,80-87"},
    {"BCBUT", "LANBCBUTFORM", "1-4,7-8,21,24-28,30-32,35,37-45"},
    {"ZDTIME", "LANZDTIMEFORM", "8-13"},
    {"SENSOR", "LANSENSORFORM", "1-6"},
    {"OTHER", "LANOTHERFORM", "1-25,28-57,59-61"},
    {"FACTORY", "LANFACTORYFORM", "2-3,5-6"},
    {"HUMID", "HUMIDFORM", "1-12,42-43"},
    {"MbQuestion", "LANMbQuestion", "1-4"},
    {"CFG", "LANORVAPLCCFG", "1-2,10-24,30-41,50-72"},
};

// The section of a key of the form prefix and three digits when its number is one in use, else empty.
QString sectionInUse(const QString& key)
{
    const int n = key.right(3).toInt();
    for (const auto& s : kSections)
        if (key.chopped(3) == QLatin1String(s.prefix))
            for (const QString& r : QString::fromLatin1(s.ranges).split(QLatin1Char(',')))
                if (n >= r.section(QLatin1Char('-'), 0, 0).toInt() && n <= r.section(QLatin1Char('-'), -1).toInt())
                    return QLatin1String(s.section);
    return QString();
}

QStringList matches(const QRegularExpression& re, const QString& path)
{
    QFile f(path);
    QStringList found;
    if (f.open(QIODevice::ReadOnly))
        for (auto m = re.globalMatch(QString::fromUtf8(f.readAll())); m.hasNext();) found << m.next().captured(1);
    return found;
}
}  // namespace

class LangTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        app.renew();
        LangNo = 1;
        ProfileFile.clear();
        QVERIFY(putBytes(LangTextsFile(), kTexts));
    }

    void results_data() { TableRows(kResults); }
    void results() { QCOMPARE(TableRow(kResults).result, TableRow(kResults).expected); }

    void choice_data() { TableRows(kChoices); }
    void choice()
    {
        const auto& r = TableRow(kChoices);
        QVERIFY(putBytes(LangSelFile(), "[PLCCOMLANSEL]\r\nLANSEL=" + QByteArray(r.lansel) + "\r\n"));
        LoadLanguageChoice();
        QCOMPARE(int(LangNo), r.langNo);
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), QString::fromUtf8(r.caption));
    }

    void changedFileIsSeen_data() { TableRows(kChanges); }
    void changedFileIsSeen()
    {
        const auto& c = TableRow(kChanges);
        LoadLanguageChoice();
        LangNo = 2;
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认") + ComText("COM001", "确定"), QStringLiteral("Language:OK"));
        if (c.replacement.isEmpty())
            QVERIFY(QFile::remove(LangTextsFile()));
        else
            QVERIFY(TextFile::writeBytes(LangTextsFile(), c.replacement));
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), QString::fromUtf8(c.caption));
        LangNo = 1;
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), QString::fromUtf8(c.replacement.isEmpty() ? "默认" : "语言:"));
    }

    // Every key the console looks up has an English text in its form's section, and the file holds no other.
    void languageFileMatchesTheCode()
    {
        QStringList prefixes, keys, wrong;
        for (const auto& s : kSections) prefixes << QLatin1String(s.prefix);
        // Every key literal in the console's sources: "OTHER012", "COM016", ...
        const QRegularExpression literal(QStringLiteral("\"((?:%1)\\d{3})\"").arg(prefixes.join(QLatin1Char('|'))));
        QDirIterator it(QStringLiteral(ORVA_SOURCE_DIR "/src"), {QStringLiteral("*.cpp"), QStringLiteral("*.h")},
                        QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) keys << matches(literal, it.next());
        keys.removeDuplicates();
        QVERIFY(keys.size() > 100);
        for (const QString& key : keys) {
            const QString section = sectionInUse(key);
            const QString english = ReadProfileValue(section, key + QStringLiteral("-2"), QString(), ORVA_LANG_FILE);
            if (section.isEmpty() || english.trimmed().isEmpty()) wrong << key;
        }
        QVERIFY2(wrong.isEmpty(), qPrintable("no number in use, or no English: " + wrong.join(QLatin1Char(' '))));
        const QRegularExpression entry(QStringLiteral("^([A-Za-z]+\\d{3})-\\d="), QRegularExpression::MultilineOption);
        const QStringList entries = matches(entry, QStringLiteral(ORVA_LANG_FILE));
        QVERIFY(!entries.isEmpty());
        for (const QString& key : entries)
            if (sectionInUse(key).isEmpty()) wrong << key;
        QVERIFY2(wrong.isEmpty(), qPrintable("not in use: " + wrong.join(QLatin1Char(' '))));
    }

private:
    AppFolder app;
};

QTEST_GUILESS_MAIN(LangTest)
#include "tst_lang.moc"
