#pragma once
// Everything that crosses the serial line is built and taken apart here. Frames are text; every byte of
// the controller's memory travels as two upper-case hex characters, a 16-bit register low byte first.
#include <QString>
#include <QStringList>

inline constexpr QChar STX = QChar(2);
inline constexpr QChar ETX = QChar(3);
inline constexpr QChar ACK = QChar(6);

QString DeviceToAddress(const QString& device);
QString WordAddress(const QString& number, int base);
QString BitByteAddress(const QString& number, int base);
QString OctalBitByteAddress(const QString& number, int base);
int OctalToInt(const QString& text);
int HexByteToInt(const QString& text);

// Low byte of the sum of the characters, as two hex digits. Yields to the event loop once per character:
// the program stays live while a long frame is summed, and callers must survive being re-entered here.
QString FrameChecksum(const QString& text);

QString BuildReadFrame(const QString& device, short byteCount);       // sets ExpectedReplyLen to 2n + 4
QString BuildReadFrameWords(const QString& device, short wordCount);  // D blocks
QString BuildReadFrameBytes(const QString& device, short byteCount);  // S and Y reads, always 2
QString BuildWriteFrame(const QString& device, const QString& data, short digits);  // ExpectedReplyLen 1

// A request read back from its characters: the first device it addresses (a bit device by the first bit
// of its byte: "S999" is read as "S992"), how many devices it covers (registers of D, bits of S, M and Y)
// and the length of a good reply. device is empty for anything that is not a request frame.
struct RequestFrame {
    bool write = false;
    QString device;
    int count = 0;
    int awaited = 0;
};
RequestFrame DecodeRequestFrame(const QString& frame);
// The device at a byte address: the inverse of DeviceToAddress; the address itself outside the known areas.
QString AddressToDevice(int address);

// Puts the value of text into 1-based word index of WriteImage; returns the new image (or empty text).
QString ValueToDataSlot(const QString& text, int index);
// The write of a block of count words, assembled in WriteImage as every block write is: a blank image,
// then word i + 1 from the text of values[i] (an empty text blanks what was assembled before it).
QString BuildBlockWriteFrame(const QString& device, const QStringList& values, short count);
// Four data digits that set the bit and clear the other fifteen of its pair of bytes ("S211" -> "0800").
QString BitOperand(const QString& bitDevice);
// Signed 16-bit word index (1-based) of a reply's data digits; 0 on an empty payload.
int GetWordFromPayload(int index, const QString& payload);
