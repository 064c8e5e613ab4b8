#include "common/form_access.h"
#include "plant/factory.h"
#include "plant/other.h"
#include "plant/sensor.h"
#include "plant/yi_biao_advance.h"
#include "plant/zd_time.h"
#include "shell/app_setup.h"

void RegisterPlantForms()
{
    Forms::registerForm(QStringLiteral("Sensor"), [] { return new Sensor; });
    Forms::registerForm(QStringLiteral("Factory"), [] { return new Factory; });
    Forms::registerForm(QStringLiteral("YiBiaoAdvance"), [] { return new YiBiaoAdvance; });
    Forms::registerForm(QStringLiteral("Other"), [] { return new Other; });
    Forms::registerForm(QStringLiteral("ZDTime"), [] { return new ZDTime; });
}
