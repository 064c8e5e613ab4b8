#include "common/own_text.h"

#include "common/module1.h"

#include <QPointer>
#include <QTranslator>

namespace {

// The English, given only while English is the language.
class EnglishWhileChosen : public QTranslator {
public:
    using QTranslator::QTranslator;
    QString translate(const char* context, const char* source, const char* disambiguation, int n) const override
    {
        return LangNo == 2 ? QTranslator::translate(context, source, disambiguation, n) : QString();
    }
};

}  // namespace

void InstallOwnTranslation()
{
    static QPointer<QTranslator> installed;
    auto* app = QCoreApplication::instance();
    if (!app || installed)
        return;
    auto* english = new EnglishWhileChosen(app);
    if (english->load(QStringLiteral(":/i18n/orvaplccom_en.qm")) && QCoreApplication::installTranslator(english))
        installed = english;
    else
        delete english;
}
