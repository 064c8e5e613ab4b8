#include "common/profile.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {
QByteArray gb(const QString& text) { return TextFile::encode(text); }
const QByteArray kNoFile = "<none>";
}  // namespace

class ProfileTest : public QObject {
    Q_OBJECT
private slots:
    void init() { dir_ = std::make_unique<QTemporaryDir>(); }

    void read_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("deflt");
        QTest::addColumn<QString>("value");
        const QByteArray cname = gb("[Name]\r\n01=骨料A\r\n02=砂\r\n[ZDTime]\r\n01=3\r\n");
        QTest::newRow("second section") << cname << "ZDTime" << "01" << "d" << "3";
        QTest::newRow("section without case") << cname << "NAME" << "02" << "d" << "砂";
        QTest::newRow("key without case") << gb("[S]\r\nMyKey=1\r\n") << "s" << "MYKEY" << "d" << "1";
        QTest::newRow("blanks around all")
            << gb("  [ Name ]  \r\n   01  =   水秤   \r\n") << "Name" << "01" << "d" << "水秤";
        QTest::newRow("quotes removed") << gb("[S]\r\nk=\" a b \"\r\n") << "S" << "k" << "d" << " a b ";
        QTest::newRow("unmatched quote kept") << gb("[S]\r\nk=\"abc'\r\n") << "S" << "k" << "d" << "\"abc'";
        QTest::newRow("first key wins") << gb("[S]\r\nk=1\r\nk=2\r\n") << "S" << "k" << "d" << "1";
        QTest::newRow("key of another section") << gb("[A]\r\nk=1\r\n[B]\r\nj=2\r\n") << "B" << "k" << "d" << "d";
        QTest::newRow("section prefix is no match") << cname << "Nam" << "01" << "dflt" << "dflt";
        QTest::newRow("empty value is a value") << gb("[S]\r\nk=\r\n") << "S" << "k" << "dflt" << "";
        QTest::newRow("comment is no key") << gb("[S]\r\n;k=1\r\n") << "S" << "k" << "d" << "d";
        QTest::newRow("Chinese value cut at 455")
            << gb("[S]\r\nk=" + QString(456, QChar(0x9AA8))) << "S" << "k" << "d" << QString(455, QChar(0x9AA8));
        QTest::newRow("long default cut") << cname << "S" << "k" << QString(500, 'z') << QString(455, 'z');
        QTest::newRow("missing file") << kNoFile << "S" << "k" << "d" << "d";
        QTest::newRow("UTF-8 behind a BOM") << rawBytes(fixture("utf8_bom.ini")) << "lancommon" << "COM003-1" << "d"
                                            << "返回";
        // GB18030 that is valid UTF-8 as well ("砂" is C9 B0): no mark, no UTF-8.
        QTest::newRow("GB18030 valid as UTF-8") << QByteArray("[Name]\r\n01=\xC9\xB0\r\n") << "Name" << "01" << "d" << "砂";
        QTest::newRow("UTF-16 behind a BOM") << u16("[Name]\r\n11=清水秤\r\n") << "name" << "11" << "d" << "清水秤";
        QTest::newRow("a mark before text that is not UTF-8")
            << QByteArray("\xEF\xBB\xBF[Name]\r\n01=\xCA\xAF\r\n02=a\r\n") << "Name" << "02" << "d" << "a";
        QTest::newRow("10,000-character section name")
            << rawBytes(fixture("CName_longlines.ini")) << QString(10000, 'N') << "01" << "d" << QString(455, 'y');
        QTest::newRow("key behind binary junk")
            << rawBytes(fixture("BLZConfig_binary.dat")) + gb("\r\n[Name]\r\n01=石子") << "Name" << "01" << "d" << "石子";
    }
    void read()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, deflt);
        QFETCH(QString, value);
        QCOMPARE(ReadProfileValue(section, key, deflt, put(content)), value);
    }

    // The file's own bytes stay, in its own encoding; the value written reads back.
    void writeKeepsTheEncoding_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("after");
        const QByteArray foreign = "; comment\r\njunk line\n[Name]\r\n01=a\r\n; inner\r\n02 = b \r\n\r\n[Other]\nx=1\n";
        QTest::newRow("new file, GB18030")
            << kNoFile << "骨料" << "01" << "骨料1" << QByteArray::fromHex("5bb9c7c1cf5d0d0a30313db9c7c1cf310d0a");
        QTest::newRow("replace without case keeps the rest")
            << foreign << "NAME" << "02" << "c" << QByteArray(foreign).replace("02 = b ", "02=c");
        QTest::newRow("new key after the section's last line")
            << foreign << "Name" << "03" << "c" << QByteArray(foreign).replace("02 = b \r\n", "02 = b \r\n03=c\r\n");
        QTest::newRow("new section at the end")
            << foreign << "ZDTime" << "01" << "3" << foreign + "\r\n[ZDTime]\r\n01=3\r\n";
        QTest::newRow("new key in last section without line end")
            << QByteArray("[S]\r\na=1") << "S" << "b" << "2" << QByteArray("[S]\r\na=1\r\nb=2\r\n");
        QTest::newRow("only the first of two sections")
            << QByteArray("[S]\r\nk=1\r\n[S]\r\nk=2\r\n") << "S" << "k" << "9"
            << QByteArray("[S]\r\nk=9\r\n[S]\r\nk=2\r\n");
        QTest::newRow("binary junk kept byte for byte")
            << QByteArray("\x00\xff\x81\r\n[S]\r\nk=1\r\n\xfe", 16) << "S" << "k" << "2"
            << QByteArray("\x00\xff\x81\r\n[S]\r\nk=2\r\n\xfe", 16);
        QTest::newRow("UTF-8 file stays UTF-8")
            << rawBytes(fixture("utf8_bom.ini")) << "LANCOMMON" << "COM001-1" << "确定"
            << rawBytes(fixture("utf8_bom.ini")) + QString::fromUtf8("COM001-1=确定\r\n").toUtf8();
        // The first naming: a file that holds only "砂" is valid UTF-8, and the next name is GB18030 all the same.
        QTest::newRow("GB18030 valid as UTF-8")
            << gb("[Name]\r\n01=砂\r\n") << "Name" << "02" << "石" << gb("[Name]\r\n01=砂\r\n02=石\r\n");
        QTest::newRow("UTF-16") << u16("[Name]\r\n01=砂") << "Name" << "02" << "石子"
                                << u16("[Name]\r\n01=砂\r\n02=石子\r\n");
        QTest::newRow("UTF-16, new section") << u16("[ZDTime]\r\n01=3\r\n") << "Name" << "02" << "石子"
                                             << u16("[ZDTime]\r\n01=3\r\n\r\n[Name]\r\n02=石子\r\n");
    }
    void writeKeepsTheEncoding()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QByteArray, after);
        QVERIFY(WriteProfileValue(section, key, value, put(before)));
        QCOMPARE(rawBytes(path("p.ini")), after);
        QCOMPARE(ReadProfileValue(section, key, "d", path("p.ini")), value);
    }

    void readKeyLine_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        const QByteArray blz = gb("COMPort=3\r\nBiaoZeroTime=first\r\nBiaoZeroTime=second\r\nUserNam:  张三  \r\n");
        QTest::newRow("port") << blz << "COMPort=" << "3";
        QTest::newRow("case matters") << blz << "comport=" << "";
        QTest::newRow("bare keyword takes the first") << blz << "BiaoZeroTime=" << "first";
        QTest::newRow("blanks trimmed") << blz << "UserNam:" << "张三";
        QTest::newRow("key must start the line") << QByteArray(" COMPort=4\r\n") << "COMPort=" << "";
        QTest::newRow("missing file") << kNoFile << "COMPort=" << "";
        QTest::newRow("10,000-character line")
            << rawBytes(fixture("CName_longlines.ini")) << "01=" << QString(10000, QChar(0x9AA8));
    }
    void readKeyLine()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QCOMPARE(ReadKeyLine(put(content), key), value);
    }

private:
    std::unique_ptr<QTemporaryDir> dir_;
    QString path(const QString& name) const { return dir_->filePath(name); }
    QString put(const QByteArray& bytes)
    {
        if (bytes != kNoFile) putBytes(path("p.ini"), bytes);
        return path("p.ini");
    }
};

QTEST_GUILESS_MAIN(ProfileTest)
#include "tst_profile.moc"
