#pragma once
// Two-point calibration of a moisture probe: dry sand, then sand of known moisture. The chain is that of
// the weight form; HumidActive sends the live values, the value written and the status reply here.
#include "calibration/yi_biao.h"

class YIBiaoHumidNew : public CalibrationForm {
    Q_OBJECT
public:
    YIBiaoHumidNew();
    void ShowStepHint() override;

protected:
    QString section() const override { return QStringLiteral("HUMIDFORM"); }
    void tabClicked(int index) override;
    bool spanEntryValid() override;
    bool writesOpRecord() const override { return false; }
    QString returnForm() const override { return QStringLiteral("BcButHumid"); }
};
