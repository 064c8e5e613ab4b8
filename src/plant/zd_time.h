#pragma once
// Vibrator times: the pause and vibration times of the bin vibrators, 28 registers from D272, whole
// seconds on the form and tenths in the controller. A spare vibrator's fields are greyed but its
// registers go back with the value they had.
#include "shell/form_base.h"

#include <QList>
#include <array>

class QFrame;
class QLineEdit;

class ZDTime : public FormBase {
    Q_OBJECT
public:
    ZDTime();

    void SelectTab(int tab);
    void WriteVib();

    std::array<QFrame*, 2> PicZDTime{};
    QList<QLineEdit*> TxtDCansd;
    QList<QLabel*> LblCansd, Label2;
    std::array<QLabel*, 16> lblTitleName{};  // by scale index; vibrators sit at 2 to 6 and 8 to 10
    QLabel* LbLCssdS = nullptr;

protected:
    void showEvent(QShowEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void loadCaptions();
    void okClicked();
    void defaultClicked();
    void returnClicked();
    QString text(const char* key, const char* deflt) const;

    QList<ImageButton> ImgBd;
    ImageButton ImgBdOk, cmdDefault, ImgReturn, ImageExit;
    QLabel* lblFormTitle = nullptr;
};
