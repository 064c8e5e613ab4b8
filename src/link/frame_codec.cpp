#include "link/frame_codec.h"

#include "common/event_yield.h"
#include "common/module1.h"
#include "common/vbtext.h"

#include <QCoreApplication>

namespace {

QString pad4(const QString& hex) { return Right(QStringLiteral("0000") + hex, 4); }

int digitValue(QChar c)
{
    const int code = c.unicode();
    return code < 58 ? code - 48 : code - 55;
}

// The number behind the device letter, as a 16-bit integer: too large a number is an overflow error.
int deviceNumber(const QString& numberText) { return CInt(Val(numberText)); }

}  // namespace

QString WordAddress(const QString& number, int base)
{
    return pad4(Hex(base + 2 * deviceNumber(number)));
}

QString BitByteAddress(const QString& number, int base)
{
    return pad4(Hex(base + deviceNumber(number) / 8));
}

QString OctalBitByteAddress(const QString& number, int base)
{
    return pad4(Hex(base + OctalToInt(number) / 8));
}

int OctalToInt(const QString& text)
{
    if (text.isEmpty())
        return 0;
    if (text.size() == 1)
        return digitValue(text[0]);
    return digitValue(text[0]) * 8 + digitValue(text[1]);
}

int HexByteToInt(const QString& text)
{
    if (text.isEmpty())
        return 0;
    if (text.size() == 1)
        return digitValue(text[0]);
    return digitValue(text[0]) * 16 + digitValue(text[1]);
}

QString DeviceToAddress(const QString& device)
{
    const QString letter = Left(device, 1);
    QString number = Mid(device, 2);
    const int n = deviceNumber(number);
    QString address;
    if (letter == QLatin1String("S")) {
        if (n > 999)
            number = QStringLiteral("0000");
        address = BitByteAddress(number, 0);
    } else if (letter == QLatin1String("M")) {
        if (n > 1023)
            number = QStringLiteral("0000");
        address = BitByteAddress(number, 256);
    } else if (letter == QLatin1String("Y")) {
        if (n > 177)
            number = QStringLiteral("0000");
        address = OctalBitByteAddress(number, 160);
    } else if (letter == QLatin1String("D")) {
        if (n >= 0 && n <= 511)
            address = WordAddress(number, 4096);
        else if (n >= 8000 && n <= 8255)
            address = WordAddress(NumText(n - 8000), 3584);
    }
    return pad4(address);
}

QString FrameChecksum(const QString& text)
{
    short sum = 0;
    for (int i = 0; i < text.size(); ++i) {
        YieldToEvents();
        sum = short(sum + text[i].unicode());
    }
    QString h = Hex(sum);
    if (h.size() == 1)
        h = QLatin1Char('0') + h;
    return Right(h, 2);
}

QString BuildReadFrame(const QString& device, short byteCount)
{
    const QString address = DeviceToAddress(device);
    const QString count = Right(QStringLiteral("00") + Hex(byteCount), 2);
    const QString body = QLatin1Char('0') + address + count + ETX;
    ExpectedReplyLen = short(2 * byteCount + 4);
    return STX + body + FrameChecksum(body);
}

QString BuildReadFrameWords(const QString& device, short wordCount)
{
    return BuildReadFrame(device, short(2 * wordCount));
}

QString BuildReadFrameBytes(const QString& device, short byteCount) { return BuildReadFrame(device, byteCount); }

QString BuildWriteFrame(const QString& device, const QString& data, short digits)
{
    const QString address = DeviceToAddress(device);
    const short n = CInt(digits / 2.0);
    const QString count = Right(QStringLiteral("00") + Hex(n), 2);
    const QString body = QLatin1Char('1') + address + count + Left(data, digits) + ETX;
    const QString sum = FrameChecksum(body);
    ExpectedReplyLen = 1;
    return STX + body + sum;
}

QString ValueToDataSlot(const QString& text, int index)
{
    if (text.isEmpty())
        return QString();
    QString h = Hex(CLng(Val(text)));
    if (h.size() >= 4)
        h = Right(h, 4);
    else
        h = pad4(h);
    const QString slot = Right(h, 2) + Left(h, 2);
    if (index < 1)
        return QString();
    if (index == 1)
        return slot + Right(WriteImage, 148);
    if (index <= 37)
        return Left(WriteImage, 4 * index - 4) + slot + Right(WriteImage, 152 - 4 * index);
    return Left(WriteImage, 148) + slot;
}

QString BuildBlockWriteFrame(const QString& device, const QStringList& values, short count)
{
    WriteImage = QString(152, QLatin1Char(' '));
    for (int i = 0; i < values.size(); ++i)
        StoreWriteImage(ValueToDataSlot(values[i], i + 1));
    return BuildWriteFrame(device, WriteImage, short(4 * count));
}

QString BitOperand(const QString& bitDevice)
{
    const int b = deviceNumber(Mid(bitDevice, 2)) & 7;
    QString bits(8, QLatin1Char('0'));
    bits[7 - b] = QLatin1Char('1');
    auto nibble = [](const QString& four) -> QString {
        if (four == QLatin1String("0001"))
            return QStringLiteral("1");
        if (four == QLatin1String("0010"))
            return QStringLiteral("2");
        if (four == QLatin1String("0100"))
            return QStringLiteral("4");
        if (four == QLatin1String("1000"))
            return QStringLiteral("8");
        return QStringLiteral("0");
    };
    return nibble(Left(bits, 4)) + nibble(Right(bits, 4)) + QStringLiteral("00");
}

int GetWordFromPayload(int index, const QString& payload)
{
    if (payload.isEmpty())
        return 0;
    const int low = HexByteToInt(Mid(payload, 4 * index - 3, 2));
    const int high = HexByteToInt(Mid(payload, 4 * index - 1, 2));
    int value = high * 256 + low;
    if (value > 32767 && value != 65536)
        value -= 65536;
    return value;
}

QString AddressToDevice(int address)
{
    if (address >= 4096 && address < 4096 + 2 * 512)
        return QStringLiteral("D%1").arg((address - 4096) / 2);
    if (address >= 3584 && address < 3584 + 2 * 256)
        return QStringLiteral("D%1").arg(8000 + (address - 3584) / 2);
    if (address >= 256 && address < 256 + 128)
        return QStringLiteral("M%1").arg((address - 256) * 8);
    if (address >= 160 && address < 160 + 16)
        return QStringLiteral("Y%1").arg((address - 160) * 8, 0, 8);
    if (address >= 0 && address < 125)
        return QStringLiteral("S%1").arg(address * 8);
    return pad4(Hex(address));
}

RequestFrame DecodeRequestFrame(const QString& frame)
{
    // STX, '0' read or '1' write, four hex digits of address, two of byte count, [data,] ETX, checksum.
    RequestFrame r;
    if (frame.size() < 11 || frame[0] != STX || (frame[1] != QLatin1Char('0') && frame[1] != QLatin1Char('1')))
        return r;
    bool okAddress = false, okCount = false;
    const int address = QStringView(frame).mid(2, 4).toInt(&okAddress, 16);
    const int bytes = QStringView(frame).mid(6, 2).toInt(&okCount, 16);
    if (!okAddress || !okCount)
        return r;
    r.write = frame[1] == QLatin1Char('1');
    r.device = AddressToDevice(address);
    r.count = r.device.startsWith(QLatin1Char('D')) ? (bytes + 1) / 2 : bytes * 8;
    r.awaited = r.write ? 1 : 2 * bytes + 4;
    return r;
}
