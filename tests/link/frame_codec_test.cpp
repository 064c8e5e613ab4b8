#include "test_support.h"

#include "common/module1.h"
#include "link/frame_codec.h"

#include <QTest>
#include <QTimer>

class FrameCodecTest : public QObject {
    Q_OBJECT
private slots:
    void deviceAddress_data()
    {
        QTest::addColumn<QString>("device");
        QTest::addColumn<QString>("address");
        QTest::newRow("last D word") << "D511" << "13FE";
        QTest::newRow("D beyond range falls to S0") << "D512" << "0000";
        QTest::newRow("last special D") << "D8255" << "0FFE";
        QTest::newRow("special D beyond") << "D8256" << "0000";
        QTest::newRow("S999") << "S999" << "007C";
        QTest::newRow("S beyond range") << "S1000" << "0000";
        QTest::newRow("last M") << "M1023" << "017F";
        QTest::newRow("M beyond range") << "M1024" << "0100";
        QTest::newRow("octal Y") << "Y62" << "00A6";
        QTest::newRow("Y beyond range") << "Y200" << "00A0";
        QTest::newRow("Y177 taken as octal 17") << "Y177" << "00A1";
        QTest::newRow("unknown letter") << "X1" << "0000";
    }
    void deviceAddress()
    {
        QFETCH(QString, device);
        QFETCH(QString, address);
        QCOMPARE(DeviceToAddress(device), address);
    }

    // The reply length each request leaves behind is the receive threshold of the port.
    void frames_data()
    {
        QTest::addColumn<QString>("device");
        QTest::addColumn<int>("words");  // negative: bytes; 0: a write of data as four digits
        QTest::addColumn<QString>("data");
        QTest::addColumn<QString>("body");
        QTest::addColumn<int>("replyLen");
        QTest::newRow("live block") << "D11" << 32 << "" << "0101640" << 132;
        QTest::newRow("status bits") << "S998" << -2 << "" << "0007C02" << 8;
        QTest::newRow("hardware init pulse") << "S211" << 0 << "0800" << "1001A020800" << 1;
        QTest::newRow("data shorter than digits") << "D43" << 0 << "12" << "110560212" << 1;
    }
    void frames()
    {
        QFETCH(QString, device);
        QFETCH(int, words);
        QFETCH(QString, data);
        QFETCH(QString, body);
        QFETCH(int, replyLen);
        ExpectedReplyLen = 0;
        const QString f = words > 0   ? BuildReadFrameWords(device, short(words))
                          : words < 0 ? BuildReadFrameBytes(device, short(-words))
                                      : BuildWriteFrame(device, data, 4);
        QCOMPARE(f, Frame(body));
        QCOMPARE(int(ExpectedReplyLen), replyLen);
    }

    void dataSlot_data()
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
    void dataSlot()
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

    void checksumYieldsPerCharacter()
    {
        // A tick that is due while a frame is summed runs inside the summing.
        bool ran = false;
        QTimer::singleShot(0, [&] { ran = true; });
        const QString sum = FrameChecksum(QStringLiteral("0101640") + QChar(3));
        QVERIFY(ran);
        QCOMPARE(sum, QStringLiteral("5F"));
    }
};

QTEST_MAIN(FrameCodecTest)
#include "frame_codec_test.moc"
