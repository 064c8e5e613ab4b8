#pragma once
// Small helpers the files of the calibration forms share: status colours, the status digit, the error
// trap of the form's routines and the two kinds of message box.
#include "common/error_log.h"
#include "common/module1.h"
#include "common/vbtext.h"

#include <QColor>
#include <QLabel>
#include <QString>
#include <exception>

namespace calform {

inline void setTextColor(QLabel* l, const QColor& c)
{
    QPalette p = l->palette();
    p.setColor(QPalette::WindowText, c);
    l->setPalette(p);
}

inline int hexDigitOf(const QString& text, bool first)
{
    const QString t = Trim(text);
    if (t.isEmpty())
        return 0;
    return int(Val(QStringLiteral("&H") + (first ? t.front() : t.back())));
}

template <class F> void trapped(const char* routine, F&& f)
{
    try {
        f();
    } catch (const VbError& e) {
        LogProgramError(QStringLiteral("YIBiao"), QLatin1String(routine), QString::number(e.number), e.description());
    } catch (const std::exception& e) {
        LogProgramError(QStringLiteral("YIBiao"), QLatin1String(routine), QStringLiteral("5"),
                        QString::fromLocal8Bit(e.what()));
    }
}

inline void askBox(const QString& text)
{
    MbText = text;
    MbIsOk = false;
    ShowMbQuestion();
}


}  // namespace calform
