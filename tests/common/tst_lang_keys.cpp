// The shipped language file against the code: every key the console looks up has an English entry in
// its form's section, and none of them is empty.
#include "common/profile.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

namespace {
// Key prefix, its section of the language file, and the numbers in use there; the language file has no
// others. Keys that the step table and the forms name beside their texts (the status lines, the port
// errors, three help texts, the moisture title) come on top. A longer prefix before its own start.
struct Section {
    const char *prefix, *section, *ranges;
};
const Section kSections[] = {
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

// The entry of a key: its prefix followed by digits.
const Section* sectionOf(const QString& key)
{
    for (const Section& s : kSections) {
        const QString prefix = QLatin1String(s.prefix);
        if (key.startsWith(prefix) && key.mid(prefix.size()).front().isDigit())
            return &s;
    }
    return nullptr;
}

// Every key literal in the console's sources: "OTHER012", "COM016", ...
QStringList keysInSources()
{
    QStringList prefixes;
    for (const Section& s : kSections)
        prefixes << QLatin1String(s.prefix);
    const QRegularExpression key(QStringLiteral("\"((?:%1)\\d{3})\"").arg(prefixes.join(QLatin1Char('|'))));
    QStringList keys;
    QDirIterator it(QStringLiteral(ORVA_SOURCE_DIR "/src"), {QStringLiteral("*.cpp"), QStringLiteral("*.h")},
                    QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile f(it.next());
        if (!f.open(QIODevice::ReadOnly))
            continue;
        for (auto m = key.globalMatch(QString::fromUtf8(f.readAll())); m.hasNext();)
            keys << m.next().captured(1);
    }
    keys.removeDuplicates();
    keys.sort();
    return keys;
}

bool inCatalogue(const QString& key)
{
    const Section* s = sectionOf(key);
    if (!s)
        return false;
    const int n = key.mid(int(qstrlen(s->prefix))).toInt();
    for (const QString& r : QString::fromLatin1(s->ranges).split(QLatin1Char(','))) {
        const QStringList ends = r.split(QLatin1Char('-'));
        if (n >= ends.first().toInt() && n <= ends.last().toInt())
            return true;
    }
    return false;
}
}  // namespace

class LangKeysTest : public QObject {
    Q_OBJECT
private slots:
    void everyKeyHasEnglish_data()
    {
        QTest::addColumn<QString>("key");
        const QStringList keys = keysInSources();
        QVERIFY(keys.size() > 100);
        for (const QString& k : keys)
            QTest::newRow(qPrintable(k)) << k;
    }
    void everyKeyHasEnglish()
    {
        QFETCH(QString, key);
        const QString missing = QStringLiteral("\x01");
        const Section* s = sectionOf(key);
        QVERIFY(s);
        const QString english = ReadProfileValue(QLatin1String(s->section), key + QStringLiteral("-2"), missing,
                                                 QStringLiteral(ORVA_LANG_FILE));
        QVERIFY2(english != missing, qPrintable(key + QStringLiteral(" has no English entry")));
        QVERIFY2(!english.trimmed().isEmpty(), qPrintable(key + QStringLiteral(" has an empty English entry")));
        QVERIFY2(inCatalogue(key), qPrintable(key + QStringLiteral(" is a number the language file does not have")));
    }
    void shippedFileHoldsCatalogueNumbersOnly()
    {
        QFile f(QStringLiteral(ORVA_LANG_FILE));
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QRegularExpression entry(QStringLiteral("^([A-Za-z]+\\d{3})-\\d="), QRegularExpression::MultilineOption);
        QStringList strays;
        for (auto m = entry.globalMatch(QString::fromUtf8(f.readAll())); m.hasNext();) {
            const QString key = m.next().captured(1);
            if (!inCatalogue(key))
                strays << key;
        }
        QVERIFY2(strays.isEmpty(), qPrintable(strays.join(QLatin1Char(' '))));
    }
};

QTEST_MAIN(LangKeysTest)
#include "tst_lang_keys.moc"
