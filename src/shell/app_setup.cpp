#include "shell/app_setup.h"

#include "link/form_access.h"
#include "shell/plc_form.h"

#include <QApplication>
#include <QFontDatabase>
#include <QStyleFactory>

void InstallAppLook(QApplication& app)
{
    app.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QFont f = app.font();
    // The CJK font of the installation; Qt falls back on its own if it is missing.
    for (const char* family : {"WenQuanYi Micro Hei", "Noto Sans CJK SC", "WenQuanYi Zen Hei"}) {
        if (QFontDatabase::families().contains(QLatin1String(family))) {
            f.setFamily(QLatin1String(family));
            break;
        }
    }
    f.setPixelSize(14);
    app.setFont(f);
}

void RegisterForms()
{
    Forms::registerForm(QStringLiteral("PLC"), [] { return new PLC; });
    RegisterParamsForms();
    RegisterPlantForms();
    RegisterCalibrationForms();
}
