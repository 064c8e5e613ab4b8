#pragma once
// The small menu of the moisture probes: two buttons, each storing its probe's devices and opening the
// moisture calibration.
#include "shell/form_base.h"

class BcButHumid : public FormBase {
    Q_OBJECT
public:
    BcButHumid();

private:
    void probeClicked(int index);

    QLabel* lblFormTitle = nullptr;
    QLabel* LblBdTitle = nullptr;
    ImageButton ImgBd[2];  // ImgBd(4), ImgBd(5)
    ImageButton ImgReturn, ImageExit;
};
