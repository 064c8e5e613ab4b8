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

static QString framed(QString s) { return s.replace("<STX>", QChar(2)).replace("<ETX>", QChar(3)); }

void FrameCodecTest::deviceAddress_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("address");
    QTest::newRow("last D word") << "D511" << "13FE";
    QTest::newRow("D beyond range falls to S0") << "D512" << "0000";
    QTest::newRow("last special D") << "D8255" << "0FFE";
    QTest::newRow("special D beyond") << "D8256" << "0000";
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
    QTest::newRow("hardware init pulse") << "S211" << "0800" << 4 << "<STX>1001A020800<ETX>30";
    QTest::newRow("clear of a pulse") << "S181" << "0000" << 4 << "<STX>10016020000<ETX>1D";
    QTest::newRow("data shorter than digits") << "D43" << "12" << 4 << "<STX>110560212<ETX>C5";
}

void FrameCodecTest::writeFrame()
{
    QFETCH(QString, device);
    QFETCH(QString, data);
    QFETCH(int, digits);
    QFETCH(QString, frame);
    ExpectedReplyLen = 0;
    QCOMPARE(BuildWriteFrame(device, data, short(digits)), framed(frame));
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
    QTest::newRow("index beyond 38 lands in the last word") << "2" << 40 << "0200";
}

void FrameCodecTest::dataSlot()
{
    QFETCH(QString, value);
    QFETCH(int, index);
    QFETCH(QString, word);
    WriteImage = QString(152, QLatin1Char('0'));
    const QString image = ValueToDataSlot(value, index);
    const int at = 4 * (qMin(index, 38) - 1);
    QCOMPARE(image.mid(at, 4), word);
    QCOMPARE(QString(image).remove(at, 4), QString(148, QLatin1Char('0')));
}

void FrameCodecTest::bitOperand_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("operand");
    QTest::newRow("S209") << "S209" << "0200";
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
