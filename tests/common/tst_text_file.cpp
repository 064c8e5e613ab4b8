// The text files the stations share: their bytes and lines, the modes of what is made, the profile reader
// and writer on them.
#include "common/profile.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace {
QByteArray gb(const QString& text) { return TextFile::encode(text); }
const QByteArray kNoFile = "<none>";

// The file's bytes, where to look, the value read or written, the bytes after the write, the default.
struct Case {
    QByteArray bytes;
    QString section, key, value;  // no section: the reader of a line that begins with the key
    QByteArray after{};
    QString deflt = "d";
};
// CRLF after every line, in the encoding of the replaced file's mark; a file without one is GB18030,
// however valid UTF-8 its bytes happen to be. Text is appended twice: the file is made, then added to.
// before null: no file; appended null: the lines 骨料1, "", 砂 written instead.
const QByteArray kLines = QByteArray::fromHex("b9c7c1cf31" "0d0a" "0d0a" "c9b0" "0d0a");
const struct { const char* name; QByteArray before; const char* appended; QByteArray after; } kWritten[] = {
    {"new file", {}, nullptr, kLines},
    {"long file replaced", QByteArray(5000, 'z'), nullptr, kLines},
    {"GB18030 that is valid UTF-8", QByteArray::fromHex("c9b00d0acaaf"), nullptr, kLines},
    {"behind a UTF-8 mark", "\xEF\xBB\xBFx", nullptr,
     QByteArray::fromHex("efbbbf" "e9aaa8e6969931" "0d0a" "0d0a" "e7a082" "0d0a")},
    {"behind a UTF-16 mark", u16("x"), nullptr, u16(QString::fromUtf8("骨料1\r\n\r\n砂\r\n"))},
    {"append LF as CRLF", {}, "a\nb\n", "a\r\nb\r\na\r\nb\r\n"},
    {"append CRLF and lone CR", {}, "a\r\nb\r", "a\r\nb\ra\r\nb\r"},
    {"append to GB18030 valid as UTF-8", "\xCA\xAF\r\n", "砂\n", "\xCA\xAF\r\n\xC9\xB0\r\n\xC9\xB0\r\n"},
    {"append behind a UTF-8 mark", "\xEF\xBB\xBF", "砂\n", "\xEF\xBB\xBF\xE7\xA0\x82\r\n\xE7\xA0\x82\r\n"},
};

// Names of a plant whose GB18030 bytes are valid UTF-8 as well: 砂 石 水, 郑伟.
const struct { const char* name; QByteArray bytes; QStringList lines; } kRead[] = {
    {"CRLF, no last line end", "a\r\nb", {"a", "b"}},
    {"LF and lone CR", "a\nb\rc\r", {"a", "b", "c"}},
    {"empty lines kept", "a\r\n\r\n\nb", {"a", "", "", "b"}},
    {"GB18030", QByteArray::fromHex("b9c7c1cf310d0acbaec4e0"), {"骨料1", "水泥"}},
    {"UTF-8 behind a BOM", "\xEF\xBB\xBF" + QString::fromUtf8("骨料1\r\n水泥").toUtf8(), {"骨料1", "水泥"}},
    {"GB18030 that is valid UTF-8", QByteArray::fromHex("c9b0caafcbae0d0ad6a3ceb0"), {"砂石水", "郑伟"}},
    {"UTF-16 LE behind a BOM", QByteArray::fromHex("fffe" "a89a9965" "3100" "0d000a00" "346ce56c"), {"骨料1", "水泥"}},
    {"UTF-16 BE behind a BOM", QByteArray::fromHex("feff" "9aa86599" "0031" "000d000a" "6c346ce5"), {"骨料1", "水泥"}},
};
}  // namespace
Q_DECLARE_METATYPE(Case)

class TextFileTest : public QObject {
    Q_OBJECT
private slots:
    void init() { app.renew(); }

    void written_data() { TableRows(kWritten); }
    void written()
    {
        const auto& c = TableRow(kWritten);
        if (!c.before.isNull()) QVERIFY(putBytes(app("a.txt"), c.before));
        if (!c.appended)
            QVERIFY(TextFile::writeLines(app("a.txt"), {QString::fromUtf8("骨料1"), QString(), QString::fromUtf8("砂")}));
        for (int i = 0; i < 2 && c.appended; ++i)
            QVERIFY(TextFile::append(app("a.txt"), QString::fromUtf8(c.appended)));
        QCOMPARE(rawBytes(app("a.txt")), c.after);
    }

    void readLines_data() { TableRows(kRead); }
    void readLines()
    {
        QVERIFY(putBytes(app("r.txt"), TableRow(kRead).bytes));
        QStringList got{"stale"};
        QVERIFY(TextFile::readLines(app("r.txt"), &got));
        QCOMPARE(got, TableRow(kRead).lines);
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
        QCOMPARE(rawBytes(app("ro/CName.ini")), filesWritable ? QByteArray("[Name]\r\n01=\xCA\xAF\xD7\xD3\r\n")
                                                             : cname);
        QCOMPARE(QDir(app("ro")).entryList(QDir::Files | QDir::Hidden), (QStringList{"BLZConfig.dat", "CName.ini"}));
    }

    void read_data()
    {
        QTest::addColumn<Case>("c");
        const QByteArray cname = gb("[Name]\r\n01=骨料A\r\n02=砂\r\n[ZDTime]\r\n01=3\r\n");
        QTest::newRow("second section") << Case{cname, "ZDTime", "01", "3"};
        QTest::newRow("section without case") << Case{cname, "NAME", "02", "砂"};
        QTest::newRow("key without case") << Case{gb("[S]\r\nMyKey=1\r\n"), "s", "MYKEY", "1"};
        QTest::newRow("blanks around all") << Case{gb("  [ Name ]  \r\n   01  =   水秤   \r\n"), "Name", "01", "水秤"};
        QTest::newRow("quotes removed") << Case{gb("[S]\r\nk=\" a b \"\r\n"), "S", "k", " a b "};
        QTest::newRow("unmatched quote kept") << Case{gb("[S]\r\nk=\"abc'\r\n"), "S", "k", "\"abc'"};
        QTest::newRow("first key wins") << Case{gb("[S]\r\nk=1\r\nk=2\r\n"), "S", "k", "1"};
        QTest::newRow("key of another section") << Case{gb("[A]\r\nk=1\r\n[B]\r\nj=2\r\n"), "B", "k", "d"};
        QTest::newRow("section prefix is no match") << Case{cname, "Nam", "01", "d"};
        QTest::newRow("empty value is a value") << Case{gb("[S]\r\nk=\r\n"), "S", "k", ""};
        QTest::newRow("comment is no key") << Case{gb("[S]\r\n;k=1\r\n"), "S", "k", "d"};
        QTest::newRow("Chinese value cut at 455")
            << Case{gb("[S]\r\nk=" + QString(456, QChar(0x9AA8))), "S", "k", QString(455, QChar(0x9AA8))};
        QTest::newRow("long default cut") << Case{cname, "S", "k", QString(455, 'z'), {}, QString(500, 'z')};
        QTest::newRow("missing file") << Case{kNoFile, "S", "k", "d"};
        QTest::newRow("UTF-8 behind a BOM") << Case{rawBytes(fixture("utf8_bom.ini")), "lancommon", "COM003-1", "返回"};
        // GB18030 that is valid UTF-8 as well ("砂" is C9 B0): no mark, no UTF-8.
        QTest::newRow("GB18030 valid as UTF-8") << Case{"[Name]\r\n01=\xC9\xB0\r\n", "Name", "01", "砂"};
        QTest::newRow("UTF-16 behind a BOM") << Case{u16("[Name]\r\n11=清水秤\r\n"), "name", "11", "清水秤"};
        QTest::newRow("a mark before text that is not UTF-8")
            << Case{"\xEF\xBB\xBF[Name]\r\n01=\xCA\xAF\r\n02=a\r\n", "Name", "02", "a"};
        QTest::newRow("10,000-character section name")
            << Case{rawBytes(fixture("CName_longlines.ini")), QString(10000, 'N'), "01", QString(455, 'y')};
        QTest::newRow("key behind binary junk")
            << Case{rawBytes(fixture("BLZConfig_binary.dat")) + gb("\r\n[Name]\r\n01=石子"), "Name", "01", "石子"};
        const QByteArray blz = gb("COMPort=3\r\nBiaoZeroTime=first\r\nBiaoZeroTime=second\r\nUserNam:  张三  \r\n");
        QTest::newRow("line: port") << Case{blz, {}, "COMPort=", "3"};
        QTest::newRow("line: case matters") << Case{blz, {}, "comport=", ""};
        QTest::newRow("line: bare keyword takes the first") << Case{blz, {}, "BiaoZeroTime=", "first"};
        QTest::newRow("line: blanks trimmed") << Case{blz, {}, "UserNam:", "张三"};
        QTest::newRow("line: key must start the line") << Case{" COMPort=4\r\n", {}, "COMPort=", ""};
        QTest::newRow("line: missing file") << Case{kNoFile, {}, "COMPort=", ""};
        QTest::newRow("line: 10,000 characters")
            << Case{rawBytes(fixture("CName_longlines.ini")), {}, "01=", QString(10000, QChar(0x9AA8))};
    }
    void read()
    {
        QFETCH(Case, c);
        const QString file = put(c.bytes);
        QCOMPARE(c.section.isNull() ? ReadKeyLine(file, c.key) : ReadProfileValue(c.section, c.key, c.deflt, file),
                 c.value);
    }

    // The file's own bytes stay, in its own encoding; the value written reads back.
    void writeKeepsTheEncoding_data()
    {
        QTest::addColumn<Case>("c");
        const QByteArray foreign = "; comment\r\njunk line\n[Name]\r\n01=a\r\n; inner\r\n02 = b \r\n\r\n[Other]\nx=1\n";
        QTest::newRow("new file, GB18030")
            << Case{kNoFile, "骨料", "01", "骨料1", QByteArray::fromHex("5bb9c7c1cf5d0d0a30313db9c7c1cf310d0a")};
        QTest::newRow("replace without case keeps the rest")
            << Case{foreign, "NAME", "02", "c", QByteArray(foreign).replace("02 = b ", "02=c")};
        QTest::newRow("new key after the section's last line")
            << Case{foreign, "Name", "03", "c", QByteArray(foreign).replace("02 = b \r\n", "02 = b \r\n03=c\r\n")};
        QTest::newRow("new section at the end")
            << Case{foreign, "ZDTime", "01", "3", foreign + "\r\n[ZDTime]\r\n01=3\r\n"};
        QTest::newRow("new key in last section without line end")
            << Case{"[S]\r\na=1", "S", "b", "2", "[S]\r\na=1\r\nb=2\r\n"};
        QTest::newRow("only the first of two sections")
            << Case{"[S]\r\nk=1\r\n[S]\r\nk=2\r\n", "S", "k", "9", "[S]\r\nk=9\r\n[S]\r\nk=2\r\n"};
        QTest::newRow("binary junk kept byte for byte")
            << Case{QByteArray("\x00\xff\x81\r\n[S]\r\nk=1\r\n\xfe", 16), "S", "k", "2",
                    QByteArray("\x00\xff\x81\r\n[S]\r\nk=2\r\n\xfe", 16)};
        QTest::newRow("UTF-8 file stays UTF-8")
            << Case{rawBytes(fixture("utf8_bom.ini")), "LANCOMMON", "COM001-1", "确定",
                    rawBytes(fixture("utf8_bom.ini")) + QString::fromUtf8("COM001-1=确定\r\n").toUtf8()};
        // The first naming: a file that holds only "砂" is valid UTF-8, and the next name is GB18030 all the same.
        QTest::newRow("GB18030 valid as UTF-8")
            << Case{gb("[Name]\r\n01=砂\r\n"), "Name", "02", "石", gb("[Name]\r\n01=砂\r\n02=石\r\n")};
        QTest::newRow("UTF-16") << Case{u16("[Name]\r\n01=砂"), "Name", "02", "石子", u16("[Name]\r\n01=砂\r\n02=石子\r\n")};
        QTest::newRow("UTF-16, new section") << Case{u16("[ZDTime]\r\n01=3\r\n"), "Name", "02", "石子",
                                                     u16("[ZDTime]\r\n01=3\r\n\r\n[Name]\r\n02=石子\r\n")};
    }
    void writeKeepsTheEncoding()
    {
        QFETCH(Case, c);
        QVERIFY(WriteProfileValue(c.section, c.key, c.value, put(c.bytes)));
        QCOMPARE(rawBytes(app("p.ini")), c.after);
        QCOMPARE(ReadProfileValue(c.section, c.key, "d", app("p.ini")), c.value);
    }

private:
    AppFolder app;
    QString put(const QByteArray& bytes)
    {
        if (bytes != kNoFile) putBytes(app("p.ini"), bytes);
        return app("p.ini");
    }
};

QTEST_GUILESS_MAIN(TextFileTest)
#include "tst_text_file.moc"
