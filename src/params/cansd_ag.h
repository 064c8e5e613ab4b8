#pragma once
// The editor of an aggregate scale that feeds four materials, with a parameter set per material:
// twenty registers from ParamDeviceAG. Whoever opens it sets ParamDeviceAG first.
#include "params/param_editor.h"

class CansdAG : public ParamEditor {
    Q_OBJECT
public:
    CansdAG();

protected:
    short readStep() const override { return 108; }
    short writeStep() const override { return 109; }
    short optionStep() const override { return 111; }
    QString blockDevice() const override;
    bool& optionArmed() override { return CheckArmed; }
    QString boxFormat(int k) const override;
    double writeFactor(int k) const override;
    QString allowedKeys(int k) const override;
    BoxHelp helpOnClick(int k) const override;
    void LoadCaptions() override;
    void LayoutForScale() override;

private:
    // This form's own arming of the option boxes, where Cansd uses OptionDone.
    bool CheckArmed = false;
};
