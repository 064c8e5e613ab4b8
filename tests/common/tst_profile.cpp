#include "common/profile.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

class ProfileTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void read_data();
    void read();
    void readMissingFile();
    void readUtf8Bom();
    void readLongLinesAndJunk();
    void write_data();
    void write();
    void writeRoundTrip_data();
    void writeRoundTrip();
    void writeGb18030Bytes();
    void writeKeepsUtf8Bom();
    void writeFailureKeepsFile();
    void readKeyLine_data();
    void readKeyLine();
    void readKeyLineMissingAndDamaged();

private:
    std::unique_ptr<QTemporaryDir> dir_;
    QString path(const QString& name) const { return dir_->filePath(name); }
};

void ProfileTest::init() { dir_ = std::make_unique<QTemporaryDir>(); }

void ProfileTest::read_data()
{
    QTest::addColumn<QString>("content");  // written as GB18030
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("deflt");
    QTest::addColumn<QString>("value");
    const QString cname = "[Name]\r\n01=骨料A\r\n02=砂\r\n[ZDTime]\r\n01=3\r\n";
    QTest::newRow("plain") << cname << "Name" << "01" << "d" << "骨料A";
    QTest::newRow("second section") << cname << "ZDTime" << "01" << "d" << "3";
    QTest::newRow("section without case") << cname << "NAME" << "02" << "d" << "砂";
    QTest::newRow("key without case") << "[S]\r\nMyKey=1\r\n" << "s" << "MYKEY" << "d" << "1";
    QTest::newRow("blanks around all") << "  [ Name ]  \r\n   01  =   水秤   \r\n" << "Name" << "01" << "d" << "水秤";
    QTest::newRow("tab around value") << "[S]\r\nk=\tv\t\r\n" << "S" << "k" << "d" << "v";
    QTest::newRow("blanks of the asked names") << cname << " Name " << " 01 " << "d" << "骨料A";
    QTest::newRow("double quotes removed") << "[S]\r\nk=\" a b \"\r\n" << "S" << "k" << "d" << " a b ";
    QTest::newRow("single quotes removed") << "[S]\r\nk='x'\r\n" << "S" << "k" << "d" << "x";
    QTest::newRow("unmatched quote kept") << "[S]\r\nk=\"abc\r\n" << "S" << "k" << "d" << "\"abc";
    QTest::newRow("mixed quotes kept") << "[S]\r\nk=\"abc'\r\n" << "S" << "k" << "d" << "\"abc'";
    QTest::newRow("lone quote kept") << "[S]\r\nk=\"\r\n" << "S" << "k" << "d" << "\"";
    QTest::newRow("inner quotes kept") << "[S]\r\nk=a\"b\"\r\n" << "S" << "k" << "d" << "a\"b\"";
    QTest::newRow("first key wins") << "[S]\r\nk=1\r\nk=2\r\n" << "S" << "k" << "d" << "1";
    QTest::newRow("first section wins") << "[S]\r\nk=1\r\n[S]\r\nk=2\r\n" << "S" << "k" << "d" << "1";
    QTest::newRow("key of another section") << "[A]\r\nk=1\r\n[B]\r\nj=2\r\n" << "B" << "k" << "d" << "d";
    QTest::newRow("key before any section") << "k=1\r\n[S]\r\n" << "S" << "k" << "d" << "d";
    QTest::newRow("missing key") << cname << "Name" << "03" << "dflt" << "dflt";
    QTest::newRow("missing section") << cname << "Nope" << "01" << "dflt" << "dflt";
    QTest::newRow("section prefix is no match") << cname << "Nam" << "01" << "dflt" << "dflt";
    QTest::newRow("key prefix is no match") << "[S]\r\nkey=1\r\n" << "S" << "ke" << "d" << "d";
    QTest::newRow("empty value is a value") << "[S]\r\nk=\r\n" << "S" << "k" << "dflt" << "";
    QTest::newRow("comment is no key") << "[S]\r\n;k=1\r\n" << "S" << "k" << "d" << "d";
    QTest::newRow("equals in value") << "[S]\r\nk=a=b\r\n" << "S" << "k" << "d" << "a=b";
    QTest::newRow("default loses trailing blanks") << cname << "Name" << "09" << "abc  " << "abc";
    QTest::newRow("default keeps leading blanks") << cname << "Name" << "09" << "  abc" << "  abc";
    QTest::newRow("LF line ends") << "[S]\nk=v\n" << "S" << "k" << "d" << "v";
    QTest::newRow("no last line end") << "[S]\r\nk=v" << "S" << "k" << "d" << "v";
    QTest::newRow("unclosed section header") << "[S\r\nk=v\r\n" << "S" << "k" << "d" << "d";
    QTest::newRow("value cut at 455") << "[S]\r\nk=" + QString(600, 'x') + "\r\n" << "S" << "k" << "d"
                                      << QString(455, 'x');
    QTest::newRow("Chinese value cut at 455")
        << "[S]\r\nk=" + QString(456, QChar(0x9AA8)) + "\r\n" << "S" << "k" << "d" << QString(455, QChar(0x9AA8));
    QTest::newRow("455 kept whole") << "[S]\r\nk=" + QString(455, 'y') + "\r\n" << "S" << "k" << "d"
                                    << QString(455, 'y');
    QTest::newRow("long default cut") << cname << "S" << "k" << QString(500, 'z') << QString(455, 'z');
    QTest::newRow("value cut at NUL") << QString("[S]\r\nk=ab") + QChar(0) + "cd\r\n" << "S" << "k" << "d" << "ab";
}

void ProfileTest::read()
{
    QFETCH(QString, content);
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, deflt);
    QFETCH(QString, value);
    QVERIFY(putBytes(path("p.ini"), TextFile::encode(content)));
    QCOMPARE(ReadProfileValue(section, key, deflt, path("p.ini")), value);
}

void ProfileTest::readMissingFile()
{
    QCOMPARE(ReadProfileValue("S", "k", "d", path("none.ini")), QString("d"));
    QCOMPARE(ReadProfileValue("S", "k", "d", dir_->path()), QString("d"));
    QCOMPARE(ReadProfileValue("S", "k", "d", QString()), QString("d"));
}

void ProfileTest::readUtf8Bom()
{
    QCOMPARE(ReadProfileValue("LANCOMMON", "COM001-2", "d", fixture("utf8_bom.ini")), QString("OK"));
    QCOMPARE(ReadProfileValue("lancommon", "COM003-1", "d", fixture("utf8_bom.ini")), QString::fromUtf8("返回"));
}

void ProfileTest::readLongLinesAndJunk()
{
    const QString longFile = fixture("CName_longlines.ini");
    QCOMPARE(ReadProfileValue("Name", "01", "dflt", longFile), QString("dflt"));
    QCOMPARE(ReadProfileValue("Other", "01", "d", longFile), QString(455, QChar(0x9AA8)));
    QCOMPARE(ReadProfileValue(QString(10000, 'N'), "01", "d", longFile), QString(455, 'y'));
    QCOMPARE(ReadProfileValue("Name", "01", "dflt", fixture("BLZConfig_binary.dat")), QString("dflt"));
    QCOMPARE(ReadProfileValue("Name", "01", "dflt", fixture("BLZConfig_truncated.dat")), QString("dflt"));

    // A key behind the junk is still found.
    QByteArray bytes = rawBytes(fixture("BLZConfig_binary.dat"));
    bytes += "\r\n[Name]\r\n01=" + TextFile::encode(QString::fromUtf8("石子")) + "\r\n";
    QVERIFY(putBytes(path("junk.ini"), bytes));
    QCOMPARE(ReadProfileValue("Name", "01", "d", path("junk.ini")), QString::fromUtf8("石子"));
}

void ProfileTest::write_data()
{
    QTest::addColumn<QByteArray>("before");  // bytes on disk; "<none>" for no file
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("after");
    const QByteArray foreign = "; comment of the plant\r\n"
                               "junk line without equals\n"
                               "[Name]\r\n"
                               "01=a\r\n"
                               "; inner comment\r\n"
                               "02 = b \r\n"
                               "\r\n"
                               "[Other]\n"
                               "x=1\n";
    QTest::newRow("new file") << QByteArray("<none>") << "LANSEL" << "LANSEL" << "2"
                              << QByteArray("[LANSEL]\r\nLANSEL=2\r\n");
    QTest::newRow("replace keeps every other line")
        << foreign << "Name" << "01" << "z"
        << QByteArray("; comment of the plant\r\njunk line without equals\n[Name]\r\n01=z\r\n; inner comment\r\n"
                      "02 = b \r\n\r\n[Other]\n"
                      "x=1\n");
    QTest::newRow("replace without case keeps the file's key")
        << foreign << "NAME" << "02" << "c"
        << QByteArray("; comment of the plant\r\njunk line without equals\n[Name]\r\n01=a\r\n; inner comment\r\n"
                      "02=c\r\n\r\n[Other]\n"
                      "x=1\n");
    QTest::newRow("new key after the section's last line")
        << foreign << "Name" << "03" << "c"
        << QByteArray("; comment of the plant\r\njunk line without equals\n[Name]\r\n01=a\r\n; inner comment\r\n"
                      "02 = b \r\n03=c\r\n\r\n[Other]\n"
                      "x=1\n");
    QTest::newRow("new key in last section without line end")
        << QByteArray("[S]\r\na=1") << "S" << "b" << "2" << QByteArray("[S]\r\na=1\r\nb=2\r\n");
    QTest::newRow("new key in empty section") << QByteArray("[S]\r\n[T]\r\n") << "S" << "k" << "v"
                                              << QByteArray("[S]\r\nk=v\r\n[T]\r\n");
    QTest::newRow("new section at the end")
        << foreign << "ZDTime" << "01" << "3" << foreign + QByteArray("\r\n[ZDTime]\r\n01=3\r\n");
    QTest::newRow("new section after a blank line")
        << QByteArray("[S]\r\na=1\r\n\r\n") << "T" << "k" << "v" << QByteArray("[S]\r\na=1\r\n\r\n[T]\r\nk=v\r\n");
    QTest::newRow("new section after a line without end")
        << QByteArray("[S]\r\na=1") << "T" << "k" << "v" << QByteArray("[S]\r\na=1\r\n\r\n[T]\r\nk=v\r\n");
    QTest::newRow("empty file") << QByteArray() << "S" << "k" << "v" << QByteArray("[S]\r\nk=v\r\n");
    QTest::newRow("only the first of two sections")
        << QByteArray("[S]\r\nk=1\r\n[S]\r\nk=2\r\n") << "S" << "k" << "9"
        << QByteArray("[S]\r\nk=9\r\n[S]\r\nk=2\r\n");
    QTest::newRow("empty value") << QByteArray("[S]\r\nk=1\r\n") << "S" << "k" << "" << QByteArray("[S]\r\nk=\r\n");
    QTest::newRow("binary junk kept byte for byte")
        << QByteArray("\x00\xff\x81\r\n[S]\r\nk=1\r\n\xfe", 16) << "S" << "k" << "2"
        << QByteArray("\x00\xff\x81\r\n[S]\r\nk=2\r\n\xfe", 16);
}

void ProfileTest::write()
{
    QFETCH(QByteArray, before);
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(QByteArray, after);
    if (before != "<none>") QVERIFY(putBytes(path("w.ini"), before));
    QVERIFY(WriteProfileValue(section, key, value, path("w.ini")));
    QCOMPARE(rawBytes(path("w.ini")), after);
}

void ProfileTest::writeRoundTrip_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("readBack");
    QTest::newRow("Chinese") << "骨料1" << "骨料1";
    QTest::newRow("blanks trimmed on reading") << "  水泥  " << "水泥";
    QTest::newRow("quotes removed on reading") << "\"x y\"" << "x y";
    QTest::newRow("long value cut on reading") << QString(1000, 'q') << QString(455, 'q');
    QTest::newRow("date") << "2026-03-05 10:11:12" << "2026-03-05 10:11:12";
}

void ProfileTest::writeRoundTrip()
{
    QFETCH(QString, value);
    QFETCH(QString, readBack);
    const QString file = path("Data/CName.ini");
    QDir().mkpath(path("Data"));
    QVERIFY(WriteProfileValue("Name", "01", "first", file));
    QVERIFY(WriteProfileValue("ZDTime", "01", "3", file));
    QVERIFY(WriteProfileValue("name", "01", value, file));
    QCOMPARE(ReadProfileValue("Name", "01", "d", file), readBack);
    QCOMPARE(ReadProfileValue("ZDTime", "01", "d", file), QString("3"));
    QStringList lines;
    QVERIFY(TextFile::readLines(file, &lines));
    QCOMPARE(lines.size(), 5);  // [Name], 01, blank, [ZDTime], 01: the key was replaced, not added
}

void ProfileTest::writeGb18030Bytes()
{
    QVERIFY(WriteProfileValue(QString::fromUtf8("骨料"), "01", QString::fromUtf8("骨料1"), path("g.ini")));
    QCOMPARE(rawBytes(path("g.ini")).toHex(), QByteArray("5b" "b9c7c1cf" "5d0d0a" "30313d" "b9c7c1cf31" "0d0a"));
}

void ProfileTest::writeKeepsUtf8Bom()
{
    QVERIFY(putBytes(path("u.ini"), rawBytes(fixture("utf8_bom.ini"))));
    QVERIFY(WriteProfileValue("LANCOMMON", "COM001-1", QString::fromUtf8("确定"), path("u.ini")));
    const QByteArray expected = QByteArray("\xEF\xBB\xBF") +
                                QString::fromUtf8("[LANCOMMON]\nCOM001-2=OK\nCOM003-1=返回\nCOM001-1=确定\r\n").toUtf8();
    QCOMPARE(rawBytes(path("u.ini")), expected);
}

void ProfileTest::writeFailureKeepsFile()
{
    const QByteArray old = TextFile::encode(QString::fromUtf8("[PLCCOMLANSEL]\r\nLANSEL=1\r\n"));
    QVERIFY(putBytes(path("Lang/PLCCOMLANSEL.ini"), old));
    makeReadOnly(dir_->path());
    {
        UnprivilegedFiles asOperator;
        QVERIFY(WriteProfileValue("PLCCOMLANSEL", "LANSEL", "2", path("Lang/PLCCOMLANSEL.ini")));
        QVERIFY(WriteProfileValue("S", "k", "v", path("Lang/new.ini")));
        QCOMPARE(ReadProfileValue("PLCCOMLANSEL", "LANSEL", "1", path("Lang/PLCCOMLANSEL.ini")), QString("1"));
    }
    makeWritable(dir_->path());
    QCOMPARE(rawBytes(path("Lang/PLCCOMLANSEL.ini")), old);
    QCOMPARE(QDir(path("Lang")).entryList(QDir::Files | QDir::Hidden), QStringList{"PLCCOMLANSEL.ini"});
}

void ProfileTest::readKeyLine_data()
{
    QTest::addColumn<QString>("content");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    const QString blz = "COMPort=3\r\n"
                        "IsShowCsHelp=\r\n"
                        "骨料1BiaoZeroTime=2026-03-05\r\n"
                        "骨料10BiaoZeroTime=2026-04-01\r\n"
                        "BiaoZeroTime=first\r\n"
                        "BiaoZeroTime=second\r\n"
                        "UserNam:  张三  \r\n";
    QTest::newRow("port") << blz << "COMPort=" << "3";
    QTest::newRow("case matters") << blz << "comport=" << "";
    QTest::newRow("empty value") << blz << "IsShowCsHelp=" << "";
    QTest::newRow("name that is a prefix of another") << blz << "骨料1BiaoZeroTime=" << "2026-03-05";
    QTest::newRow("the longer name") << blz << "骨料10BiaoZeroTime=" << "2026-04-01";
    QTest::newRow("bare keyword takes the first") << blz << "BiaoZeroTime=" << "first";
    QTest::newRow("blanks trimmed") << blz << "UserNam:" << "张三";
    QTest::newRow("missing key") << blz << "NetworkPath=" << "";
    QTest::newRow("key must start the line") << " COMPort=4\r\n" << "COMPort=" << "";
    QTest::newRow("tab is kept") << "k=\tv\r\n" << "k=" << "\tv";
    QTest::newRow("LF line ends") << "a=1\nk=2\n" << "k=" << "2";
    QTest::newRow("after a 10,000-character line") << QString(10000, 'x') + "\r\nk=2\r\n" << "k=" << "2";
    QTest::newRow("in a 10,000-character line") << "k=" + QString(10000, 'x') + "\r\n" << "k=" << QString(10000, 'x');
}

void ProfileTest::readKeyLine()
{
    QFETCH(QString, content);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QVERIFY(putBytes(path("k.dat"), TextFile::encode(content)));
    QCOMPARE(ReadKeyLine(path("k.dat"), key), value);
}

void ProfileTest::readKeyLineMissingAndDamaged()
{
    QCOMPARE(ReadKeyLine(path("none.dat"), "COMPort="), QString());
    QCOMPARE(ReadKeyLine(dir_->path(), "COMPort="), QString());
    QCOMPARE(ReadKeyLine(fixture("BLZConfig_binary.dat"), "COMPort="), QString());
    QCOMPARE(ReadKeyLine(fixture("BLZConfig_truncated.dat"), "COMPort="), QString("5"));
    QCOMPARE(ReadKeyLine(fixture("BLZConfig_truncated.dat"), QString::fromUtf8("骨料2BiaoZeroTime=")), QString());
    QCOMPARE(ReadKeyLine(fixture("CName_longlines.ini"), "01="), QString(10000, QChar(0x9AA8)));
}

QTEST_GUILESS_MAIN(ProfileTest)
#include "tst_profile.moc"
