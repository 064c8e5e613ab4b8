#include "link/form_access.h"
#include "shell/app_setup.h"
#include "shell/plc_form.h"

#include <QApplication>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    InstallAppLook(app);
    RegisterForms();
    auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
    if (!plc->load())
        return 0;
    plc->show();
    const int rc = app.exec();
    Forms::unloadAll();
    return rc;
}
