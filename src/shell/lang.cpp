#include "shell/lang.h"

#include "common/app_paths.h"
#include "common/module1.h"
#include "common/profile.h"
#include "common/vbtext.h"

QString LangText(const QString& section, const QString& key, const QString& deflt)
{
    if (ProfileFile.isEmpty())
        return deflt;
    return ReadProfileValue(section, key + QLatin1Char('-') + QString::number(LangNo), deflt, ProfileFile);
}

QString ComText(const QString& key, const QString& deflt) { return LangText(LangCommon, key, deflt); }

QString LangSelFile() { return AppPaths::inApp(QStringLiteral("\\Lang\\PLCCOMLANSEL.ini")); }
QString LangTextsFile() { return AppPaths::inApp(QStringLiteral("\\Lang\\PLCCOMLANGUAGE.ini")); }

void LoadLanguageChoice()
{
    LangNo = CInt(Val(ReadProfileValue(QStringLiteral("PLCCOMLANSEL"), QStringLiteral("LANSEL"),
                                       QStringLiteral("1"), LangSelFile())));
    ProfileFile = LangTextsFile();
}
