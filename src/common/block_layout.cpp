#include "common/block_layout.h"

#include "common/vbtext.h"

#include <QRegularExpression>
#include <cmath>

namespace {
double factor(const BlockField& f) { return std::pow(10.0, f.decimals); }
}  // namespace

namespace Block {

QString shown(const BlockField& f, int raw)
{
    if (f.mask != 0)
        return QStringLiteral("%1").arg(raw & 0xFFFF, 4, 16, QLatin1Char('0')).toUpper();
    const double value = raw / factor(f);
    return f.format.isEmpty() ? NumText(value) : Format(value, f.format);
}

QString registerText(const BlockField& f, const QString& shown) { return NumText(Val(shown) * factor(f)); }

bool toRaw(const BlockField& f, const QString& shown, int* raw)
{
    const QString t = shown.trimmed();
    if (f.mask != 0) {
        static const QRegularExpression hex(QStringLiteral("^[0-9A-Fa-f]{4}$"));
        if (!hex.match(t).hasMatch())
            return false;
        *raw = t.toInt(nullptr, 16);
        return true;
    }
    // Val would read "12abc" as 12: a file's value is a number or nothing.
    static const QRegularExpression number(QStringLiteral("^-?[0-9]+(\\.[0-9]*)?$"));
    if (!number.match(t).hasMatch())
        return false;
    double value = Val(t);
    // The box rounds to its pattern before the form writes it.
    if (!f.format.isEmpty())
        value = Val(Format(value, f.format));
    const double r = value * factor(f);
    if (!(r > -32768.5 && r < 32767.5))
        return false;
    *raw = CLng(r);
    return *raw >= -32768 && *raw <= 32767;
}

}  // namespace Block
