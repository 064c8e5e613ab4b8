#pragma once
// The parameter editor of one scale: fifteen registers on the first page, eight option bits on the second.
// One form serves all fourteen scales; rows, captions, decimals and limits follow ScaleNo.
#include "params/param_editor.h"

class Cansd : public ParamEditor {
    Q_OBJECT
public:
    Cansd();

protected:
    short readStep() const override { return 8; }
    short writeStep() const override { return 9; }
    short optionStep() const override { return 11; }
    QString blockDevice() const override;
    bool& optionArmed() override;
    bool recordModeApart() const override;
    QString boxFormat(int k) const override;
    double writeFactor(int k) const override;
    QString allowedKeys(int k) const override;
    BoxHelp helpOnClick(int k) const override;
    void LoadCaptions() override;
    void LayoutForScale() override;

private:
    void LoadLimits();
    void loadChecks();
};
