#pragma once
// The command's own texts: Chinese in the program, the other languages from the console's language file,
// section "LANORVAPLCCFG", by the console's language choice.
#include <QString>

QString CfgText(const char* key, const char* chinese);
