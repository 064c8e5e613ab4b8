#pragma once
// Frames as the controller sees them, written out by hand so that the console's codec is not
// used to check itself.
#include <QList>
#include <QString>

// STX, body, ETX and the low byte of the sum of body and ETX.
inline QString Frame(const QString& body)
{
    int sum = 3;
    for (QChar c : body)
        sum += c.unicode();
    return QChar(2) + body + QChar(3) + QStringLiteral("%1").arg(sum & 0xFF, 2, 16, QLatin1Char('0')).toUpper();
}

// The data digits of a block of words, each low byte first.
inline QString WordsHex(const QList<int>& words)
{
    QString s;
    for (int w : words) {
        const int v = w & 0xFFFF;
        s += QStringLiteral("%1%2").arg(v & 0xFF, 2, 16, QLatin1Char('0')).arg(v >> 8, 2, 16, QLatin1Char('0'));
    }
    return s.toUpper();
}
