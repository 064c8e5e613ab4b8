#include "common/module1.h"
#include "link/frame_codec.h"

#include <QTest>
#include <QTimer>

class FrameCodecTest : public QObject {
    Q_OBJECT
private slots:
    void deviceAddress_data();
    void deviceAddress();
    void readFrame_data();
    void readFrame();
    void writeFrame_data();
    void writeFrame();
    void dataSlot_data();
    void dataSlot();
    void bitOperand_data();
    void bitOperand();
    void payloadWord_data();
    void payloadWord();
    void checksumYieldsPerCharacter();
};

static QString framed(const QString& s)
{
    QString t = s;
    t.replace(QLatin1String("<STX>"), QString(QChar(2)));
    t.replace(QLatin1String("<ETX>"), QString(QChar(3)));
    return t;
}

void FrameCodecTest::deviceAddress_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("address");
    QTest::newRow("last D word") << "D511" << "13FE";
    QTest::newRow("D beyond range falls to S0") << "D512" << "0000";
    QTest::newRow("first special D") << "D8000" << "0E00";
    QTest::newRow("last special D") << "D8255" << "0FFE";
    QTest::newRow("special D beyond") << "D8256" << "0000";
    QTest::newRow("live block") << "D11" << "1016";
    QTest::newRow("parameters of scale 13") << "D495" << "13DE";
    QTest::newRow("S999") << "S999" << "007C";
    QTest::newRow("S998 same bytes") << "S998" << "007C";
    QTest::newRow("S beyond range") << "S1000" << "0000";
    QTest::newRow("last M") << "M1023" << "017F";
    QTest::newRow("M beyond range") << "M1024" << "0100";
    QTest::newRow("octal Y") << "Y62" << "00A6";
    QTest::newRow("Y beyond range") << "Y200" << "00A0";
    QTest::newRow("Y177 taken as octal 17") << "Y177" << "00A1";
    QTest::newRow("unknown letter") << "X1" << "0000";
    QTest::newRow("lower-case letter") << "d11" << "0000";
    QTest::newRow("option bits of scale 13") << "S604" << "004B";
    QTest::newRow("command bits byte") << "S211" << "001A";
}

void FrameCodecTest::deviceAddress()
{
    QFETCH(QString, device);
    QFETCH(QString, address);
    QCOMPARE(DeviceToAddress(device), address);
}

void FrameCodecTest::readFrame_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<int>("words");
    QTest::addColumn<QString>("frame");
    QTest::addColumn<int>("replyLen");
    QTest::newRow("live block") << "D11" << 32 << "<STX>0101640<ETX>5F" << 132;
    QTest::newRow("status bits") << "S998" << -2 << "<STX>0007C02<ETX>6F" << 8;
    QTest::newRow("jog outputs") << "Y62" << -2 << "<STX>000A602<ETX>6C" << 8;
    QTest::newRow("parameter block") << "D300" << 15 << "<STX>012581E<ETX>79" << 64;
}

void FrameCodecTest::readFrame()
{
    QFETCH(QString, device);
    QFETCH(int, words);
    QFETCH(QString, frame);
    QFETCH(int, replyLen);
    ExpectedReplyLen = 0;
    const QString f = words > 0 ? BuildReadFrameWords(device, short(words)) : BuildReadFrameBytes(device, short(-words));
    QCOMPARE(f, framed(frame));
    QCOMPARE(int(ExpectedReplyLen), replyLen);
}

void FrameCodecTest::writeFrame_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("data");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("frame");
    QTest::newRow("one word to D291") << "D291" << "D204" << 4 << "<STX>1124602D204<ETX>3D";
    QTest::newRow("hardware init pulse") << "S211" << "0800" << 4 << "<STX>1001A020800<ETX>30";
    QTest::newRow("clear of a pulse") << "S181" << "0000" << 4 << "<STX>10016020000<ETX>";
    QTest::newRow("data shorter than digits") << "D43" << "12" << 4 << "<STX>110560212<ETX>";
}

void FrameCodecTest::writeFrame()
{
    QFETCH(QString, device);
    QFETCH(QString, data);
    QFETCH(int, digits);
    QFETCH(QString, frame);
    ExpectedReplyLen = 0;
    const QString f = BuildWriteFrame(device, data, short(digits));
    // Rows without a sum get it here: the low byte of the character codes after STX, ETX included.
    QString expected = framed(frame);
    if (expected.endsWith(QChar(3))) {
        int sum = 0;
        for (QChar c : expected.mid(1))
            sum += c.unicode();
        expected += QString::asprintf("%02X", sum & 0xFF);
    }
    QCOMPARE(f, expected);
    QCOMPARE(int(ExpectedReplyLen), 1);
}

void FrameCodecTest::dataSlot_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("word");  // the 4 digits expected at the index
    QTest::newRow("1234 low byte first") << "1234" << 1 << "D204";
    QTest::newRow("-1 wraps") << "-1" << 2 << "FFFF";
    QTest::newRow("70000 drops high bits") << "70000" << 3 << "7011";
    QTest::newRow("half rounds to even") << "2.5" << 4 << "0200";
    QTest::newRow("text with unit") << "15kg" << 5 << "0F00";
    QTest::newRow("last word") << "1" << 38 << "0100";
    QTest::newRow("index beyond 38 lands in the last word") << "2" << 40 << "0200";
}

void FrameCodecTest::dataSlot()
{
    QFETCH(QString, value);
    QFETCH(int, index);
    QFETCH(QString, word);
    WriteImage = QString(152, QLatin1Char('0'));
    const QString image = ValueToDataSlot(value, index);
    QCOMPARE(image.size(), 152);
    const int at = 4 * (qMin(index, 38) - 1);
    QCOMPARE(image.mid(at, 4), word);
    QCOMPARE(QString(image).remove(at, 4), QString(148, QLatin1Char('0')));
}

void FrameCodecTest::bitOperand_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("operand");
    QTest::newRow("S209") << "S209" << "0200";
    QTest::newRow("S210") << "S210" << "0400";
    QTest::newRow("S211") << "S211" << "0800";
    QTest::newRow("S212") << "S212" << "1000";
    QTest::newRow("S213") << "S213" << "2000";
    QTest::newRow("S214") << "S214" << "4000";
    QTest::newRow("S215") << "S215" << "8000";
    QTest::newRow("S216") << "S216" << "0100";
    QTest::newRow("zero bit of scale 6") << "S205" << "2000";
}

void FrameCodecTest::bitOperand()
{
    QFETCH(QString, device);
    QFETCH(QString, operand);
    QCOMPARE(BitOperand(device), operand);
}

void FrameCodecTest::payloadWord_data()
{
    QTest::addColumn<QString>("payload");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("value");
    QTest::newRow("FFFF is -1") << "FFFF" << 1 << -1;
    QTest::newRow("0080 is -32768") << "0080" << 1 << -32768;
    QTest::newRow("D204 is 1234") << "0000D204" << 2 << 1234;
    QTest::newRow("empty payload") << "" << 1 << 0;
}

void FrameCodecTest::payloadWord()
{
    QFETCH(QString, payload);
    QFETCH(int, index);
    QFETCH(int, value);
    QCOMPARE(GetWordFromPayload(index, payload), value);
}

void FrameCodecTest::checksumYieldsPerCharacter()
{
    // A tick that is due while a frame is summed runs inside the summing.
    bool ran = false;
    QTimer::singleShot(0, [&] { ran = true; });
    const QString sum = FrameChecksum(QStringLiteral("0101640") + QChar(3));
    QVERIFY(ran);
    QCOMPARE(sum, QStringLiteral("5F"));
}

QTEST_MAIN(FrameCodecTest)
#include "frame_codec_test.moc"
