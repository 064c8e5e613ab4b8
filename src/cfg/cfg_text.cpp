#include "cfg/cfg_text.h"

#include "common/lang.h"

QString CfgText(const char* key, const char* chinese)
{
    return LangText(QStringLiteral("LANORVAPLCCFG"), QLatin1String(key), QString::fromUtf8(chinese));
}
