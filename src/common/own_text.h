#pragma once
#include <QCoreApplication>

// Texts of the forms that have no number in the language file. The Chinese text stands in the code as
// the source, OwnText::tr("振动器振动时间设定"), or QT_TRANSLATE_NOOP("OwnText", ...) in a table; the
// English is in lang/orvaplccom_en.ts, compiled into the program. Language 2 shows the English, every
// other language the Chinese.
class OwnText {
    Q_DECLARE_TR_FUNCTIONS(OwnText)
};

// Puts the compiled English in the application, once; later calls do nothing. Like the language file, it
// follows LangNo at every lookup, so a change of language needs nothing more.
void InstallOwnTranslation();
