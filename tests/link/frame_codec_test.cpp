#include "test_support.h"

#include "common/module1.h"
#include "link/frame_codec.h"

#include <QTest>
#include <QTimer>

class FrameCodecTest : public QObject {
    Q_OBJECT
private slots:
    // Decoding where it turns: the sign of a word, a hex byte, each device's last and first bad number, and
    // a request read back for the link's trace (device, devices covered, reply length).
    void decodingAtItsBoundaries_data()
    {
        QTest::addColumn<QString>("kind");  // word (payload@index), byte, address or request (frame body)
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("result");
        const struct { const char *kind, *input, *result, *name; } rows[] = {
            {"word", "FF7F@1", "32767", "largest positive word"},
            {"word", "0080@1", "-32768", "smallest negative word"},
            {"word", "FFFF@1", "-1", "all bits"},
            {"word", "0001@1", "256", "high byte alone"},
            {"word", "D204@1", "1234", "low byte first"},
            {"word", "D2040080@2", "-32768", "second word of a block"},
            {"word", "@1", "0", "empty payload"},
            {"byte", "FF", "255", "largest byte"},
            {"byte", "7F", "127", "hex digits"},
            {"byte", "A", "10", "one digit"},
            {"byte", "123", "18", "third digit ignored"},
            {"byte", "", "0", "nothing"},
            {"address", "D0", "1000", "first D word"},
            {"address", "D511", "13FE", "last D word"},
            {"address", "D512", "0000", "D beyond range falls to S0"},
            {"address", "D8000", "0E00", "first special D"},
            {"address", "D8255", "0FFE", "last special D"},
            {"address", "D8256", "0000", "special D beyond"},
            {"address", "S999", "007C", "last S"},
            {"address", "S1000", "0000", "S beyond range"},
            {"address", "M1023", "017F", "last M"},
            {"address", "M1024", "0100", "M beyond range"},
            {"address", "Y62", "00A6", "octal Y"},
            {"address", "Y177", "00A1", "Y177 taken as octal 17"},
            {"address", "Y200", "00A0", "Y beyond range"},
            {"address", "X1", "0000", "unknown letter"},
            {"request", "0101640", "D11 32 132", "live block read back"},
            {"request", "0007C02", "S992 16 8", "a bit device by its byte's first bit"},
            {"request", "1001A020800", "S208 16 1", "write of a command bit"},
            {"request", "10E000401000200", "D8000 2 1", "special D written"},
            {"request", "000A602", "Y60 16 8", "octal Y"},
            {"request", "0017F01", "M1016 8 6", "last M byte"},
            {"request", "000C002", "00C0 16 8", "outside the console's areas: the address"},
            {"request", "0500", " 0 0", "a reply is no request"},
        };
        for (const auto& r : rows)
            QTest::newRow(r.name) << r.kind << r.input << r.result;
    }
    void decodingAtItsBoundaries()
    {
        QFETCH(QString, kind);
        QFETCH(QString, input);
        QFETCH(QString, result);
        if (kind == QLatin1String("word"))
            QCOMPARE(QString::number(GetWordFromPayload(input.section('@', 1).toInt(), input.section('@', 0, 0))),
                     result);
        else if (kind == QLatin1String("byte"))
            QCOMPARE(QString::number(HexByteToInt(input)), result);
        else if (kind == QLatin1String("request")) {
            const RequestFrame r = DecodeRequestFrame(Frame(input));
            QCOMPARE(QStringLiteral("%1 %2 %3").arg(r.device).arg(r.count).arg(r.awaited), result);
        } else
            QCOMPARE(DeviceToAddress(input), result);
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
        // No word: the result is empty, and stored it leaves the image blank at its full width.
        QTest::newRow("empty source") << "" << 3 << "";
        QTest::newRow("index below 1") << "7" << 0 << "";
    }
    void dataSlot()
    {
        QFETCH(QString, value);
        QFETCH(int, index);
        QFETCH(QString, word);
        WriteImage = QString(152, QLatin1Char('0'));
        const QString image = ValueToDataSlot(value, index);
        if (word.isEmpty()) {
            QVERIFY(image.isEmpty());
            StoreWriteImage(image);
            QCOMPARE(WriteImage, QString(152, QLatin1Char(' ')));
            return;
        }
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
