#include "common/form_access.h"
#include "params/cansd.h"
#include "params/cansd_ag.h"
#include "shell/app_setup.h"

void RegisterParamsForms()
{
    Forms::registerForm(QStringLiteral("Cansd"), [] { return new Cansd; });
    Forms::registerForm(QStringLiteral("CansdAG"), [] { return new CansdAG; });
}
