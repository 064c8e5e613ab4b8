#include "common/form_access.h"
#include "shell/app_setup.h"
#include "shell/plc_form.h"

#include <QApplication>

#include <sys/stat.h>

int main(int argc, char** argv)
{
    // The operators of a station share the configuration, names and records: what one saves, another
    // must be able to save again.
    umask(umask(0) & ~mode_t(S_IWGRP));
    QApplication app(argc, argv);
    InstallAppLook(app);
    RegisterForms();
    ExitOnTerminationSignals();
    auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
    if (!plc->load())
        return 0;
    plc->show();
    const int rc = app.exec();
    Forms::unloadAll();
    return rc;
}
