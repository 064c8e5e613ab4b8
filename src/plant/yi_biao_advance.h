#pragma once
// Skip-hoist position calibration. The controller runs the calibration trip itself: this form starts or
// cancels it with a pulse on S213 or S214, watches the five counters from D291 while the main form's
// Timer1 polls them on the calibration tab, and sets the two deceleration distances at D294.
#include "shell/form_base.h"

#include <QTimer>
#include <array>

class QCheckBox;
class QFrame;
class QLineEdit;

class YiBiaoAdvance : public FormBase {
    Q_OBJECT
public:
    YiBiaoAdvance();

    void ReadPulses();  // one read of the counters; the poll flag stays down until the reply
    void StartPoll();   // ReadPulses, then the main form's Timer1
    void SelectHoistTab(int tab);
    void SendHoistCmd();
    void WriteDecel();

    std::array<QLabel*, 5> LblPulseNum{};
    std::array<QLineEdit*, 2> txtPulseNum{};
    QLineEdit* txtBCSuccessRead = nullptr;  // four hex digits of a status word, when a step delivers one
    QLineEdit* txtZLv = nullptr;            // the current count, for the figure
    QLabel* ImageMove = nullptr;
    QLabel* LbLCssdS = nullptr;
    QLabel* LbLBZwc = nullptr;

    bool BcStart = false;        // the last command was a start, not a cancel
    bool BcResultShown = true;   // False from a confirmed command until its outcome is shown

protected:
    void showEvent(QShowEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QString text(const char* key, const char* deflt) const;
    void buildParamPage();
    void buildCalibrationPage();
    void loadCaptions();
    void tabClicked(int tab);
    void moveFigure();
    void startClicked();
    void cancelClicked();
    void statusChanged();
    void okClicked();
    bool decelInRange();
    void returnClicked();

    QLabel* lblFormTitle = nullptr;
    QList<ImageButton> ImgBd;  // the two tab heads with their LblBd captions
    std::array<QFrame*, 2> PicYiBiao{};
    std::array<QLabel*, 5> LblPulseTitle{};
    std::array<QLabel*, 2> LblDecelTitle{};
    QLabel *lblBiaoZero = nullptr, *ImageRail = nullptr, *txtTip1 = nullptr;
    QCheckBox* Check1 = nullptr;  // "simulated hoisting": kept hidden, its timer does nothing
    QTimer simTimer_;
    ImageButton ImgHelp1, ImgBdOk, ImgBdStart, ImgBdCancel, ImgReturn, ImageExit;
};
