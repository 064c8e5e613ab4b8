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
    }
};

QTEST_MAIN(LangKeysTest)
#include "tst_lang_keys.moc"
