#include "common/lang.h"
#include "common/module1.h"
#include "common/text_file.h"
#include "common_test_util.h"

namespace {
const QByteArray kTexts = TextFile::encode(QString::fromUtf8(
    "[LANPLCFORM]\r\nPLC001-1=语言:\r\nPLC001-2=Language:\r\nPLC001-3=Язык:\r\n[LANCOMMON]\r\nCOM001-2=OK\r\n"));
// The choice file's LANSEL (null: no file), the language number taken and the caption it shows.
const struct { const char *name, *lansel; int langNo; const char* caption; } kChoices[] = {
    {"no choice file", nullptr, 1, "语言:"},
    {"English", "2", 2, "Language:"},
    {"Russian, though not in the list", "3", 3, "Язык:"},
    {"2.4 rounds to English", "2.4", 2, "Language:"},
    {"beyond 16 bits", "99999999", 1, "语言:"},
    {"far beyond", "1E300", 1, "语言:"},
    {"zero", "0", 1, "语言:"},
    {"negative", "-2", 1, "语言:"},
    {"four", "4", 1, "语言:"},
    {"not a number", "English", 1, "语言:"},
};
}  // namespace

// The language number and the texts it picks, and a language file that changes while the console runs.
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

    void choice_data() { TableRows(kChoices); }
    void choice()
    {
        const auto& r = TableRow(kChoices);
        if (r.lansel) QVERIFY(putBytes(LangSelFile(), "[PLCCOMLANSEL]\r\nLANSEL=" + QByteArray(r.lansel) + "\r\n"));
        LoadLanguageChoice();
        QCOMPARE(int(LangNo), r.langNo);
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), QString::fromUtf8(r.caption));
    }

    // The file is read once, but a file replaced, grown or gone is seen at the next lookup.
    void changedFileIsSeen_data()
    {
        QTest::addColumn<QByteArray>("replacement");  // empty: the file is removed
        QTest::addColumn<QString>("caption");
        QTest::newRow("saved anew, same size") << QByteArray(kTexts).replace("Language:", "LANGUAGE:") << "LANGUAGE:";
        QTest::newRow("grown") << QByteArray(kTexts).replace("Language:", "Language now:") << "Language now:";
        QTest::newRow("removed") << QByteArray() << "默认";
    }
    void changedFileIsSeen()
    {
        QFETCH(QByteArray, replacement);
        QFETCH(QString, caption);
        LoadLanguageChoice();
        LangNo = 2;
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认") + ComText("COM001", "确定"), QStringLiteral("Language:OK"));
        if (replacement.isEmpty())
            QVERIFY(QFile::remove(LangTextsFile()));
        else
            QVERIFY(TextFile::writeBytes(LangTextsFile(), replacement));
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), caption);
        LangNo = 1;
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), QString::fromUtf8(replacement.isEmpty() ? "默认" : "语言:"));
    }

private:
    AppFolder app;
};

QTEST_GUILESS_MAIN(LangTest)
#include "tst_lang.moc"
