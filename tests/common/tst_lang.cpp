#include "common/app_paths.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {
const QByteArray kTexts = TextFile::encode(QString::fromUtf8(
    "[LANPLCFORM]\r\nPLC001-1=语言:\r\nPLC001-2=Language:\r\nPLC001-3=Язык:\r\n[LANCOMMON]\r\nCOM001-2=OK\r\n"));
}

// The language number and the texts it picks, and a language file that changes while the console runs.
class LangTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        dir_ = std::make_unique<QTemporaryDir>();
        AppPaths::setAppFolder(dir_->path());
        LangNo = 1;
        ProfileFile.clear();
        QVERIFY(putBytes(LangTextsFile(), kTexts));
    }

    void choice_data()
    {
        QTest::addColumn<QString>("lansel");  // null: no choice file
        QTest::addColumn<int>("langNo");
        QTest::addColumn<QString>("caption");
        QTest::newRow("no choice file") << QString() << 1 << "语言:";
        QTest::newRow("English") << "2" << 2 << "Language:";
        QTest::newRow("Russian, though not in the list") << "3" << 3 << "Язык:";
        QTest::newRow("2.4 rounds to English") << "2.4" << 2 << "Language:";
        QTest::newRow("beyond 16 bits") << "99999999" << 1 << "语言:";
        QTest::newRow("far beyond") << "1E300" << 1 << "语言:";
        QTest::newRow("zero") << "0" << 1 << "语言:";
        QTest::newRow("negative") << "-2" << 1 << "语言:";
        QTest::newRow("four") << "4" << 1 << "语言:";
        QTest::newRow("not a number") << "English" << 1 << "语言:";
    }
    void choice()
    {
        QFETCH(QString, lansel);
        QFETCH(int, langNo);
        QFETCH(QString, caption);
        if (!lansel.isNull())
            QVERIFY(putBytes(LangSelFile(), "[PLCCOMLANSEL]\r\nLANSEL=" + lansel.toLatin1() + "\r\n"));
        LoadLanguageChoice();
        QCOMPARE(int(LangNo), langNo);
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), caption);
    }

    // The file is read once, but a file replaced, grown or gone is seen at the next lookup.
    void changedFileIsSeen_data()
    {
        QTest::addColumn<QByteArray>("replacement");  // empty: the file is removed
        QTest::addColumn<QString>("caption");
        QTest::newRow("saved anew, same size")
            << QByteArray(kTexts).replace("Language:", "LANGUAGE:") << "LANGUAGE:";
        QTest::newRow("grown") << QByteArray(kTexts).replace("Language:", "Language now:") << "Language now:";
        QTest::newRow("removed") << QByteArray() << "默认";
    }
    void changedFileIsSeen()
    {
        QFETCH(QByteArray, replacement);
        QFETCH(QString, caption);
        LoadLanguageChoice();
        LangNo = 2;
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), QStringLiteral("Language:"));
        QCOMPARE(ComText("COM001", "确定"), QStringLiteral("OK"));
        if (replacement.isEmpty())
            QVERIFY(QFile::remove(LangTextsFile()));
        else
            QVERIFY(TextFile::writeBytes(LangTextsFile(), replacement));
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), caption);
        LangNo = 1;
        QCOMPARE(LangText("LANPLCFORM", "PLC001", "默认"), QString::fromUtf8(replacement.isEmpty() ? "默认" : "语言:"));
    }

private:
    std::unique_ptr<QTemporaryDir> dir_;
};

QTEST_GUILESS_MAIN(LangTest)
#include "tst_lang.moc"
