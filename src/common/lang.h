#pragma once
#include <QString>

// The text of key ("COM016") in the chosen language: the entry key + "-" + LangNo of section in
// ProfileFile, or the Chinese default when the file or the entry is missing.
QString LangText(const QString& section, const QString& key, const QString& deflt);
// A text of the common section.
QString ComText(const QString& key, const QString& deflt);
// The link's fault text, one line a point to check, naming the port ("Com2").
QString LinkFaultText(const QString& port);

// The language choice file and its path.
QString LangSelFile();
QString LangTextsFile();
// The language number of a "LANSEL" text: 1, 2 or 3; anything else is 1.
short LanguageNumber(const QString& text);
void LoadLanguageChoice();  // LangNo and ProfileFile, as at the start of the main form
