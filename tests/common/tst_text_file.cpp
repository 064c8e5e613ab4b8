#include "common/text_file.h"
#include "common_test_util.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

class TextFileTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void writeLinesGb18030Crlf();
    void readLines_data();
    void readLines();
    void readMissingOrFolder();
    void append_data();
    void append();
    void appendCreatesAndAdds();
    void writeLinesReplacesWhole();
    void writeLinesFailureKeepsOldFile();
    void damagedFilesDecode_data();
    void damagedFilesDecode();

private:
    std::unique_ptr<QTemporaryDir> dir_;
    QString path(const QString& name) const { return dir_->filePath(name); }
};

void TextFileTest::init() { dir_ = std::make_unique<QTemporaryDir>(); }

void TextFileTest::writeLinesGb18030Crlf()
{
    QVERIFY(TextFile::writeLines(path("a.txt"), {QString::fromUtf8("骨料1"), QString(), QStringLiteral("x")}));
    QCOMPARE(rawBytes(path("a.txt")).toHex(), QByteArray("b9c7c1cf31" "0d0a" "0d0a" "78" "0d0a"));
    QCOMPARE(TextFile::encode(QString::fromUtf8("骨料1")).toHex(), QByteArray("b9c7c1cf31"));
    QCOMPARE(TextFile::decode(QByteArray::fromHex("b9c7c1cf31")), QString::fromUtf8("骨料1"));
}

void TextFileTest::readLines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("CRLF") << QByteArray("a\r\nb\r\n") << QStringList{"a", "b"};
    QTest::newRow("no last line end") << QByteArray("a\r\nb") << QStringList{"a", "b"};
    QTest::newRow("LF") << QByteArray("a\nb\n") << QStringList{"a", "b"};
    QTest::newRow("lone CR") << QByteArray("a\rb\r") << QStringList{"a", "b"};
    QTest::newRow("empty lines kept") << QByteArray("a\r\n\r\n\nb") << QStringList{"a", "", "", "b"};
    QTest::newRow("empty file") << QByteArray() << QStringList{};
    QTest::newRow("GB18030") << QByteArray::fromHex("b9c7c1cf310d0acbaec4e0") << QStringList{"骨料1", "水泥"};
    QTest::newRow("UTF-8 behind a BOM") << QByteArray("\xEF\xBB\xBF") + QString::fromUtf8("骨料1\r\n水泥").toUtf8()
                                        << QStringList{"骨料1", "水泥"};
}

void TextFileTest::readLines()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, lines);
    QVERIFY(putBytes(path("r.txt"), bytes));
    QStringList got{"stale"};
    QVERIFY(TextFile::readLines(path("r.txt"), &got));
    QCOMPARE(got, lines);
}

void TextFileTest::readMissingOrFolder()
{
    QString text;
    QStringList lines;
    QVERIFY(!TextFile::read(path("none.txt"), &text));
    QVERIFY(!TextFile::readLines(path("none.txt"), &lines));
    QVERIFY(!TextFile::exists(path("none.txt")));
    QVERIFY(!TextFile::read(dir_->path(), &text));
    QVERIFY(!TextFile::exists(dir_->path()));
    QVERIFY(!TextFile::append(dir_->path(), "x"));
    QVERIFY(!TextFile::writeLines(dir_->path(), {"x"}));
    QVERIFY(QFileInfo(dir_->path()).isDir());
}

void TextFileTest::append_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("LF becomes CRLF") << "a\nb\n" << QByteArray("a\r\nb\r\n");
    QTest::newRow("CRLF stays") << "a\r\nb\r\n" << QByteArray("a\r\nb\r\n");
    QTest::newRow("lone CR stays") << "a\rb" << QByteArray("a\rb");
    QTest::newRow("leading LF") << "\nx" << QByteArray("\r\nx");
    QTest::newRow("double LF") << "\n\n" << QByteArray("\r\n\r\n");
    QTest::newRow("Chinese") << QString::fromUtf8("骨料1\n") << QByteArray::fromHex("b9c7c1cf310d0a");
}

void TextFileTest::append()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    QVERIFY(TextFile::append(path("ap.txt"), text));
    QCOMPARE(rawBytes(path("ap.txt")), bytes);
}

void TextFileTest::appendCreatesAndAdds()
{
    QVERIFY(TextFile::append(path("log.txt"), "one\n"));
    QVERIFY(TextFile::append(path("log.txt"), "two\n"));
    QCOMPARE(rawBytes(path("log.txt")), QByteArray("one\r\ntwo\r\n"));
    QVERIFY(!TextFile::append(path("no/such/folder/log.txt"), "x"));
}

void TextFileTest::writeLinesReplacesWhole()
{
    QVERIFY(putBytes(path("w.txt"), QByteArray(5000, 'z')));
    QVERIFY(TextFile::writeLines(path("w.txt"), {"a"}));
    QCOMPARE(rawBytes(path("w.txt")), QByteArray("a\r\n"));
    QVERIFY(TextFile::writeLines(path("w.txt"), {}));
    QCOMPARE(rawBytes(path("w.txt")), QByteArray());
}

void TextFileTest::writeLinesFailureKeepsOldFile()
{
    const QByteArray old("COMPort=3\r\nIsShowCsHelp=1\r\n");
    QVERIFY(putBytes(path("ro/BLZConfig.dat"), old));
    makeReadOnly(dir_->path());
    {
        UnprivilegedFiles asOperator;
        QVERIFY(!TextFile::writeLines(path("ro/BLZConfig.dat"), {"COMPort=4"}));
        QVERIFY(!TextFile::append(path("ro/BLZConfig.dat"), "x\n"));
        QVERIFY(!TextFile::writeLines(path("ro/new.dat"), {"x"}));
        QString text;
        QVERIFY(TextFile::read(path("ro/BLZConfig.dat"), &text));
        QCOMPARE(text, QString::fromLatin1(old));
    }
    makeWritable(dir_->path());
    QCOMPARE(rawBytes(path("ro/BLZConfig.dat")), old);
    QCOMPARE(QDir(path("ro")).entryList(QDir::Files | QDir::Hidden), QStringList{"BLZConfig.dat"});
}

void TextFileTest::damagedFilesDecode_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("binary") << fixture("BLZConfig_binary.dat");
    QTest::newRow("truncated inside a character") << fixture("BLZConfig_truncated.dat");
    QTest::newRow("10,000-character lines") << fixture("CName_longlines.ini");
}

void TextFileTest::damagedFilesDecode()
{
    QFETCH(QString, file);
    QString text;
    QStringList lines;
    QVERIFY(TextFile::read(file, &text));
    QVERIFY(!text.isEmpty());
    QVERIFY(TextFile::readLines(file, &lines));
    QVERIFY(!lines.isEmpty());
}

QTEST_GUILESS_MAIN(TextFileTest)
#include "tst_text_file.moc"
