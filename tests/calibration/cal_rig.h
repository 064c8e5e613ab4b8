#pragma once
// What the calibration tests share: the menu form opened as the main form does.
#include "test_support.h"

#include "calibration/bc_but.h"
#include "common/scale_table.h"
#include "common/text_file.h"

#include <QLineEdit>

// The menu in the calibration (0) or parameter (1) mode.
inline BcBut* OpenBcBut(short mode = 0)
{
    MenuMode = mode;
    MenuTitle = mode == 0 ? QStringLiteral("调校") : QStringLiteral("参数设定");
    Forms::show(QStringLiteral("BcBut"));
    return qobject_cast<BcBut*>(Forms::loaded(QStringLiteral("BcBut")));
}
