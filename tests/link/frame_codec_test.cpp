#include "test_support.h"

#include "link/frame_codec.h"

namespace {
// A row's kind names the routine; request: device, devices covered, reply length as the trace reads them back;
// reply: to a read of 8, "free" when the link takes it; write, block (step|boxes to D300): the
// frame's body|reply length, the port's receive threshold; slot: value@index -> digits@place in the write
// image, none: stored, it blanks the image. Block sources other than the parameter editors' (proven by their
// tests): an empty one blanks what came before it, and nothing moves.
const struct { const char *name, *kind, *input, *result; } kCodec[] = {
    {"largest positive word", "word", "FF7F@1", "32767"},
    {"smallest negative word", "word", "0080@1", "-32768"},
    {"all bits", "word", "FFFF@1", "-1"},
    {"high byte alone", "word", "0001@1", "256"},
    {"empty payload", "word", "@1", "0"},
    {"largest byte", "byte", "FF", "255"},
    {"one digit", "byte", "A", "10"},
    {"third digit ignored", "byte", "123", "18"},
    {"nothing", "byte", "", "0"},
    {"first D word", "address", "D0", "1000"},
    {"last D word", "address", "D511", "13FE"},
    {"D beyond range falls to S0", "address", "D512", "0000"},
    {"first special D", "address", "D8000", "0E00"},
    {"last special D", "address", "D8255", "0FFE"},
    {"special D beyond", "address", "D8256", "0000"},
    {"last S", "address", "S999", "007C"},
    {"S beyond range", "address", "S1000", "0000"},
    {"last M", "address", "M1023", "017F"},
    {"M beyond range", "address", "M1024", "0100"},
    {"Y177 taken as octal 17", "address", "Y177", "00A1"},
    {"Y beyond range", "address", "Y200", "00A0"},
    {"unknown letter", "address", "X1", "0000"},
    {"live block read back", "request", "0101640", "D11 32 132"},
    {"special D written", "request", "10E000401000200", "D8000 2 1"},
    {"octal Y read back", "request", "000A602", "Y60 16 8"},
    {"last M byte", "request", "0017F01", "M1016 8 6"},
    {"outside the console's areas: the address", "request", "000C002", "00C0 16 8"},
    {"a reply is no request", "request", "0500", " 0 0"},
    {"good reply", "reply", "\x02" "8000\x03" "7B", "8000 free"},
    {"wrong checksum is accepted", "reply", "\x02" "8000\x03" "00", "8000 free"},
    {"ETX one place early", "reply", "\x02" "800\x03" "7B0", ""},
    {"one character short", "reply", "\x02" "8000\x03" "7", ""},
    {"no STX", "reply", "08000\x03" "7B", ""},
    {"NAK", "reply", "\x15" "0000000", ""},
    {"data shorter than digits", "write", "D43|12", "110560212|1"},
    {"vibrator times from the main form", "block", "72|5|-1", "11258040500FFFF|1"},
    {"empty first box", "block", "72||-1", "1125804    FFFF|1"},
    {"empty last box blanks all", "block", "72|5|", "1125804        |1"},
    {"parameter block, empty first word", "block", "9||-1", "1125804    FFFF|1"},
    {"aggregate block, empty last word", "block", "109|5|", "1125804        |1"},
    {"no source: blanks stay", "block", "8|5|-1", "1125804        |1"},
    {"test weight of a form not loaded", "block", "54|5|-1", "1125804        |1"},
    {"1234 low byte first", "slot", "1234@1", "D204@0"},
    {"-1 wraps", "slot", "-1@2", "FFFF@4"},
    {"70000 drops high bits", "slot", "70000@3", "7011@8"},
    {"half rounds to even", "slot", "2.5@4", "0200@12"},
    {"text with unit", "slot", "15kg@5", "0F00@16"},
    {"index beyond 38 lands in the last word", "slot", "2@40", "0200@148"},
    {"empty source", "slot", "@3", ""},
    {"index below 1", "slot", "7@0", ""},
};
}  // namespace

class FrameCodecTest : public QObject {
    Q_OBJECT
private slots:
    void codec_data() { TableRows(kCodec); }
    void codec()
    {
        const auto& c = TableRow(kCodec);
        const QString kind = QLatin1String(c.kind), in = QLatin1String(c.input), at = in.section('@', 1);
        const QStringList arg = in.split('|');
        QString got, want = QLatin1String(c.result);
        WriteImage = QString(152, QLatin1Char('0'));
        ExpectedReplyLen = 8;
        SendFlag = false;
        if (kind == "word") {
            got = QString::number(GetWordFromPayload(at.toInt(), in.section('@', 0, 0)));
        } else if (kind == "byte") {
            got = QString::number(HexByteToInt(in));
        } else if (kind == "address") {
            got = DeviceToAddress(in);
        } else if (kind == "request") {
            const RequestFrame r = DecodeRequestFrame(Frame(in));
            got = QStringLiteral("%1 %2 %3").arg(r.device).arg(r.count).arg(r.awaited);
        } else if (kind == "reply") {
            got = Link().ReplyPayload(in);
            got += SendFlag ? " free" : "";
        } else if (kind == "slot") {
            got = ValueToDataSlot(in.section('@', 0, 0), at.toInt());
            if (want.isEmpty()) {
                StoreWriteImage(got);
                got += WriteImage;
                want = QString(152, QLatin1Char(' '));
            } else {
                want = QString(152, QLatin1Char('0')).replace(want.section('@', 1).toInt(), 4, want.section('@', 0, 0));
            }
        } else {
            ExpectedReplyLen = 0;
            StepNo = short(arg[0].toInt());
            Link().TxtDCansd[0] = Link().Pfd[0] = arg.value(1);
            Link().TxtDCansd[1] = Link().Pfd[1] = arg.value(2);
            got = kind == "write" ? BuildWriteFrame(arg[0], arg[1], 4) : GetWrite_PLCD(QStringLiteral("D300"), 2);
            got += '|' + QString::number(ExpectedReplyLen);
            want = Frame(want.section('|', 0, 0)) + '|' + want.section('|', 1);
        }
        QCOMPARE(got, want);
    }

    // A tick that is due while a frame is summed runs inside the summing.
    void checksumYieldsPerCharacter()
    {
        bool ran = false;
        QTimer::singleShot(0, [&] { ran = true; });
        QCOMPARE(FrameChecksum(QStringLiteral("0101640") + QChar(3)), QStringLiteral("5F"));
        QVERIFY(ran);
    }
};

QTEST_MAIN(FrameCodecTest)
#include "frame_codec_test.moc"
