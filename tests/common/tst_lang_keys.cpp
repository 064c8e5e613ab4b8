// The shipped language file against the code: every key the console looks up has an English entry in
// its form's section, and none of them is empty.
#include "common/profile.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

namespace {
// Key prefix -> section of the language file.
const QList<QPair<QString, QString>> kSections = {
    {QStringLiteral("YIBIAOADVA"), QStringLiteral("LANYIBIAOADVAFORM")},
    {QStringLiteral("YIBIAO"), QStringLiteral("LANYIBIAOFORM")},
    {QStringLiteral("COM"), QStringLiteral("LANCOMMON")},
    {QStringLiteral("PLC"), QStringLiteral("LANPLCFORM")},
    {QStringLiteral("CANSD"), QStringLiteral("LANCANSDFORM")},
    {QStringLiteral("BCBUT"), QStringLiteral("LANBCBUTFORM")},
    {QStringLiteral("ZDTIME"), QStringLiteral("LANZDTIMEFORM")},
    {QStringLiteral("SENSOR"), QStringLiteral("LANSENSORFORM")},
    {QStringLiteral("OTHER"), QStringLiteral("LANOTHERFORM")},
    {QStringLiteral("FACTORY"), QStringLiteral("LANFACTORYFORM")},
    {QStringLiteral("HUMID"), QStringLiteral("HUMIDFORM")},
    {QStringLiteral("MbQuestion"), QStringLiteral("LANMbQuestion")},
};

// Every key literal in the console's sources: "OTHER012", "COM016", ...
QStringList keysInSources()
{
    QStringList prefixes;
    for (const auto& [prefix, section] : kSections)
        prefixes << prefix;
    const QRegularExpression key(QStringLiteral("\"((?:%1)\\d{3})\"").arg(prefixes.join(QLatin1Char('|'))));
    QStringList keys;
    QDirIterator it(QStringLiteral(ORVA_SOURCE_DIR "/src"), {QStringLiteral("*.cpp"), QStringLiteral("*.h")},
                    QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile f(it.next());
        if (!f.open(QIODevice::ReadOnly))
            continue;
        const QString text = QString::fromUtf8(f.readAll());
        for (auto m = key.globalMatch(text); m.hasNext();)
            keys << m.next().captured(1);
    }
    keys.removeDuplicates();
    keys.sort();
    return keys;
}

// The numbers each section has in use; the language file has no others. Keys that the step table and
// the forms name beside their texts (the status lines, the port errors, three help texts, the moisture
// title) come on top.
const QList<QPair<QString, QString>> kCatalogue = {
    {QStringLiteral("COM"), QStringLiteral("1-8,11-12,14-20,23-28")},
    {QStringLiteral("PLC"), QStringLiteral("1-9,11-20,22,24,26,28-40")},
    {QStringLiteral("CANSD"), QStringLiteral("1-67,80-87")},
    {QStringLiteral("BCBUT"), QStringLiteral("1-4,7-8,21,24-28,30-32,35,37-45")},
    {QStringLiteral("ZDTIME"), QStringLiteral("8-13")},
    {QStringLiteral("SENSOR"), QStringLiteral("1-6")},
    {QStringLiteral("OTHER"), QStringLiteral("1-25,28-57,59-61")},
    {QStringLiteral("YIBIAOADVA"), QStringLiteral("1-3,5-8,14-18,20-23,45-46")},
    {QStringLiteral("FACTORY"), QStringLiteral("2-3,5-6")},
    {QStringLiteral("HUMID"), QStringLiteral("1-12,42-43")},
    {QStringLiteral("YIBIAO"), QStringLiteral("1-21,25-29,31-35,37-45,50-51")},
    {QStringLiteral("MbQuestion"), QStringLiteral("1-4")},
};

bool inCatalogue(const QString& key)
{
    for (const auto& [prefix, ranges] : kCatalogue) {
        if (!key.startsWith(prefix) || !key.mid(prefix.size()).front().isDigit())
            continue;
        const int n = key.mid(prefix.size()).toInt();
        for (const QString& r : ranges.split(QLatin1Char(','))) {
            const QStringList ends = r.split(QLatin1Char('-'));
            if (n >= ends.first().toInt() && n <= ends.last().toInt())
                return true;
        }
        return false;
    }
    return false;
}

QString sectionOf(const QString& key)
{
    for (const auto& [prefix, section] : kSections) {
        if (key.startsWith(prefix))
            return section;
    }
    return {};
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
        const QString english = ReadProfileValue(sectionOf(key), key + QStringLiteral("-2"), missing,
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
