#include "common/profile.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

class TextFileTest : public QObject {
    Q_OBJECT
private slots:
    void init() { dir_ = std::make_unique<QTemporaryDir>(); }

    void writeLinesGb18030Crlf()
    {
        QVERIFY(putBytes(path("a.txt"), QByteArray(5000, 'z')));
        QVERIFY(TextFile::writeLines(path("a.txt"), {QString::fromUtf8("骨料1"), QString(), QStringLiteral("x")}));
        QCOMPARE(rawBytes(path("a.txt")).toHex(), QByteArray("b9c7c1cf31" "0d0a" "0d0a" "78" "0d0a"));
    }

    void readLines_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("CRLF, no last line end") << QByteArray("a\r\nb") << QStringList{"a", "b"};
        QTest::newRow("LF and lone CR") << QByteArray("a\nb\rc\r") << QStringList{"a", "b", "c"};
        QTest::newRow("empty lines kept") << QByteArray("a\r\n\r\n\nb") << QStringList{"a", "", "", "b"};
        QTest::newRow("GB18030") << QByteArray::fromHex("b9c7c1cf310d0acbaec4e0") << QStringList{"骨料1", "水泥"};
        QTest::newRow("UTF-8 behind a BOM") << QByteArray("\xEF\xBB\xBF") + QString::fromUtf8("骨料1\r\n水泥").toUtf8()
                                            << QStringList{"骨料1", "水泥"};
        // Saved by editors of other stations.
        QTest::newRow("UTF-8 without a BOM") << QString::fromUtf8("骨料1\r\n水泥").toUtf8() << QStringList{"骨料1", "水泥"};
        QTest::newRow("UTF-16 LE behind a BOM")
            << QByteArray::fromHex("fffe" "a89a9965" "3100" "0d000a00" "346ce56c") << QStringList{"骨料1", "水泥"};
        QTest::newRow("UTF-16 BE behind a BOM")
            << QByteArray::fromHex("feff" "9aa86599" "0031" "000d000a" "6c346ce5") << QStringList{"骨料1", "水泥"};
        // "锘縖" in GB18030 are the bytes of a UTF-8 mark and "[": what follows decides.
        QTest::newRow("GB18030 that starts like a BOM") << QByteArray::fromHex("efbbbf5bcbaec4e0") << QStringList{"锘縖水泥"};
        QTest::newRow("BOM before plain ASCII") << QByteArray("\xEF\xBB\xBF[Name]") << QStringList{"[Name]"};
    }
    void readLines()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, lines);
        QVERIFY(putBytes(path("r.txt"), bytes));
        QStringList got{"stale"};
        QVERIFY(TextFile::readLines(path("r.txt"), &got));
        QCOMPARE(got, lines);
    }

    // Appended twice, to show that the file is created and then added to.
    void append_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("LF becomes CRLF") << "a\nb\n" << QByteArray("a\r\nb\r\na\r\nb\r\n");
        QTest::newRow("CRLF and lone CR stay") << "a\r\nb\r" << QByteArray("a\r\nb\ra\r\nb\r");
    }
    void append()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, bytes);
        QVERIFY(TextFile::append(path("ap.txt"), text));
        QVERIFY(TextFile::append(path("ap.txt"), text));
        QCOMPARE(rawBytes(path("ap.txt")), bytes);
    }

    // A folder the operator may not write to: a file he may write is rewritten in place, by the profile
    // writer too; one he may not, or a new one, is refused and nothing is lost.
    void readOnlyFolderWritableFile_data()
    {
        QTest::addColumn<bool>("filesWritable");
        QTest::newRow("files writable") << true;
        QTest::newRow("files read-only") << false;
    }
    void readOnlyFolderWritableFile()
    {
        QFETCH(bool, filesWritable);
        const QByteArray blz("COMPort=3\r\n"), cname("[Name]\r\n01=a\r\n");
        QVERIFY(putBytes(path("ro/BLZConfig.dat"), blz));
        QVERIFY(putBytes(path("ro/CName.ini"), cname));
        makeReadOnly(dir_->path());
        for (const char* f : {"ro/BLZConfig.dat", "ro/CName.ini"})
            if (filesWritable)
                QFile::setPermissions(path(f), QFile::permissions(path(f)) | QFileDevice::WriteOther);
        {
            UnprivilegedFiles asOperator;
            QCOMPARE(TextFile::writeLines(path("ro/BLZConfig.dat"), {"COMPort=4"}), filesWritable);
            QVERIFY(WriteProfileValue("Name", "01", QString::fromUtf8("石子"), path("ro/CName.ini")));  // told True
            QVERIFY(filesWritable || !TextFile::append(path("ro/BLZConfig.dat"), "x\n"));
            QVERIFY(!TextFile::writeLines(path("ro/new.dat"), {"x"}));
        }
        makeWritable(dir_->path());
        QCOMPARE(rawBytes(path("ro/BLZConfig.dat")), filesWritable ? QByteArray("COMPort=4\r\n") : blz);
        QCOMPARE(rawBytes(path("ro/CName.ini")), filesWritable ? QByteArray("[Name]\r\n01=\xCA\xAF\xD7\xD3\r\n") : cname);
        QCOMPARE(QDir(path("ro")).entryList(QDir::Files | QDir::Hidden), (QStringList{"BLZConfig.dat", "CName.ini"}));
    }

private:
    std::unique_ptr<QTemporaryDir> dir_;
    QString path(const QString& name) const { return dir_->filePath(name); }
};

QTEST_GUILESS_MAIN(TextFileTest)
#include "tst_text_file.moc"
