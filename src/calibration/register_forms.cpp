#include "calibration/bc_but.h"
#include "calibration/bc_but_humid.h"
#include "calibration/frm_jk.h"
#include "calibration/yi_biao.h"
#include "calibration/yi_biao_humid_new.h"
#include "common/form_access.h"
#include "shell/app_setup.h"

void RegisterCalibrationForms()
{
    Forms::registerForm(QStringLiteral("BcBut"), [] { return new BcBut; });
    Forms::registerForm(QStringLiteral("YIBiao"), [] { return new YIBiao; });
    Forms::registerForm(QStringLiteral("BcButHumid"), [] { return new BcButHumid; });
    Forms::registerForm(QStringLiteral("YIBiaoHumidNew"), [] { return new YIBiaoHumidNew; });
    Forms::registerForm(QStringLiteral("FrmJk"), [] { return new FrmJk; });
}
