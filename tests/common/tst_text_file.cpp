#include "common/profile.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <functional>
#include <sys/stat.h>
#include <unistd.h>

class TextFileTest : public QObject {
    Q_OBJECT
private slots:
    void init() { app.renew(); }

    // CRLF after every line, in the encoding of the replaced file's mark; a file without one is GB18030,
    // however valid UTF-8 its bytes happen to be. Text is appended twice: the file is made, then added to.
    void written_data()
    {
        QTest::addColumn<QByteArray>("before");  // null: no file
        QTest::addColumn<QString>("appended");   // null: the lines 骨料1, "", 砂 written instead
        QTest::addColumn<QByteArray>("after");
        const QString none;
        const QByteArray lines = QByteArray::fromHex("b9c7c1cf31" "0d0a" "0d0a" "c9b0" "0d0a");
        QTest::newRow("new file") << QByteArray() << none << lines;
        QTest::newRow("long file replaced") << QByteArray(5000, 'z') << none << lines;
        QTest::newRow("GB18030 that is valid UTF-8") << QByteArray::fromHex("c9b00d0acaaf") << none << lines;
        QTest::newRow("behind a UTF-8 mark") << QByteArray("\xEF\xBB\xBFx") << none
                                             << QByteArray::fromHex("efbbbf" "e9aaa8e6969931" "0d0a" "0d0a" "e7a082" "0d0a");
        QTest::newRow("behind a UTF-16 mark") << u16("x") << none << u16(QString::fromUtf8("骨料1\r\n\r\n砂\r\n"));
        QTest::newRow("append LF as CRLF") << QByteArray() << "a\nb\n" << QByteArray("a\r\nb\r\na\r\nb\r\n");
        QTest::newRow("append CRLF and lone CR") << QByteArray() << "a\r\nb\r" << QByteArray("a\r\nb\ra\r\nb\r");
        QTest::newRow("append to GB18030 valid as UTF-8") << QByteArray("\xCA\xAF\r\n") << QString::fromUtf8("砂\n")
                                                          << QByteArray("\xCA\xAF\r\n\xC9\xB0\r\n\xC9\xB0\r\n");
        QTest::newRow("append behind a UTF-8 mark") << QByteArray("\xEF\xBB\xBF") << QString::fromUtf8("砂\n")
                                                    << QByteArray("\xEF\xBB\xBF\xE7\xA0\x82\r\n\xE7\xA0\x82\r\n");
    }
    void written()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, appended);
        QFETCH(QByteArray, after);
        if (!before.isNull()) QVERIFY(putBytes(app("a.txt"), before));
        if (appended.isNull())
            QVERIFY(TextFile::writeLines(app("a.txt"), {QString::fromUtf8("骨料1"), QString(), QString::fromUtf8("砂")}));
        for (int i = 0; i < 2 && !appended.isNull(); ++i) QVERIFY(TextFile::append(app("a.txt"), appended));
        QCOMPARE(rawBytes(app("a.txt")), after);
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
        // Names of a plant whose GB18030 bytes are valid UTF-8 as well:砂 石 水, 郑伟.
        QTest::newRow("GB18030 that is valid UTF-8") << QByteArray::fromHex("c9b0caafcbae0d0ad6a3ceb0") << QStringList{"砂石水", "郑伟"};
        QTest::newRow("UTF-16 LE behind a BOM")
            << QByteArray::fromHex("fffe" "a89a9965" "3100" "0d000a00" "346ce56c") << QStringList{"骨料1", "水泥"};
        QTest::newRow("UTF-16 BE behind a BOM")
            << QByteArray::fromHex("feff" "9aa86599" "0031" "000d000a" "6c346ce5") << QStringList{"骨料1", "水泥"};
    }
    void readLines()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, lines);
        QVERIFY(putBytes(app("r.txt"), bytes));
        QStringList got{"stale"};
        QVERIFY(TextFile::readLines(app("r.txt"), &got));
        QCOMPARE(got, lines);
    }

    // Whatever the umask, the next operator of the group can write what the console made, and what it
    // replaced: files 0664, folders 2775.
    void madeGroupWritable()
    {
        FilesAsUser operatorsUmask(::geteuid(), ::getegid());
        const struct { const char* made; std::function<void(const QString&)> make; unsigned mode; } rows[] = {
            {"f/lines.txt", [](const QString& p) { TextFile::writeLines(p, {"x"}); }, 0664},
            {"f/old.txt", [](const QString& p) { putBytes(p, "0644"); TextFile::writeLines(p, {"x"}); }, 0664},
            {"f/log.txt", [](const QString& p) { TextFile::append(p, "x\n"); }, 0664},
            {"f/p.ini", [](const QString& p) { WriteProfileValue("S", "k", "v", p); }, 0664},
            {"a/b/c", [](const QString& p) { SharedFiles::makeFolder(p); }, 02775},
            {"a/b", [](const QString&) {}, 02775},
            {"a/b/.hidden", [](const QString& p) { AppPaths::setHidden(p.chopped(7) + "c"); }, 0664},
        };
        QVERIFY(QDir().mkpath(app("f")));
        for (const auto& r : rows) {
            r.make(app(r.made));
            struct stat st {};
            const unsigned mode = ::stat(QFile::encodeName(app(r.made)).constData(), &st) == 0 ? st.st_mode & 07777 : 0;
            QVERIFY2(mode == r.mode, qPrintable(QStringLiteral("%1: %2").arg(QLatin1String(r.made)).arg(mode, 0, 8)));
        }
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
        QVERIFY(putBytes(app("ro/BLZConfig.dat"), blz));
        QVERIFY(putBytes(app("ro/CName.ini"), cname));
        makeReadOnly(app());
        for (const char* f : {"ro/BLZConfig.dat", "ro/CName.ini"})
            if (filesWritable)
                QFile::setPermissions(app(f), QFile::permissions(app(f)) | QFileDevice::WriteOther);
        {
            UnprivilegedFiles asOperator;
            QCOMPARE(TextFile::writeLines(app("ro/BLZConfig.dat"), {"COMPort=4"}), filesWritable);
            QVERIFY(WriteProfileValue("Name", "01", QString::fromUtf8("石子"), app("ro/CName.ini")));  // told True
            QVERIFY(filesWritable || !TextFile::append(app("ro/BLZConfig.dat"), "x\n"));
            QVERIFY(!TextFile::writeLines(app("ro/new.dat"), {"x"}));
        }
        makeWritable(app());
        QCOMPARE(rawBytes(app("ro/BLZConfig.dat")), filesWritable ? QByteArray("COMPort=4\r\n") : blz);
        QCOMPARE(rawBytes(app("ro/CName.ini")), filesWritable ? QByteArray("[Name]\r\n01=\xCA\xAF\xD7\xD3\r\n") : cname);
        QCOMPARE(QDir(app("ro")).entryList(QDir::Files | QDir::Hidden), (QStringList{"BLZConfig.dat", "CName.ini"}));
    }

private:
    AppFolder app;
};

QTEST_GUILESS_MAIN(TextFileTest)
#include "tst_text_file.moc"
