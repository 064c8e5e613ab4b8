#pragma once
// The calibration gate and the scale menu. Calibration mode: access code, then the menu of scales, names,
// sensors, hardware initialisation and the record. Parameter mode: the list of scales only.
#include "common/shared_files.h"
#include "shell/form_base.h"

#include <QList>
#include <array>

class QFrame;
class QLineEdit;

class BcBut : public FormBase {
    Q_OBJECT
public:
    BcBut();

    // The panels and status line that other parts of the menu fill in.
    QWidget* picCom;
    QWidget* PicBiaoC;
    std::array<QFrame*, 3> PicBcBut{};
    QLabel* LbLCssdS;
    QLineEdit* txtPassword;
    QLineEdit* TxtSRead;

    // The name tab was opened while CName.ini was missing: the first naming of the scales.
    bool firstNaming() const { return firstNaming_; }
    bool nameTabOpen() const { return nameTab_; }
    bool binTabOpen() const { return binTab_; }

protected:
    void showEvent(QShowEvent* e) override;

private:
    void buildGate();
    void buildMenu();
    void loadCaptions();
    void Form_Activate();
    void rebuildScaleButtons();
    void showCalibrationMenu(bool on);

    void cmdOk();
    void scaleClicked(int i);
    void tabClicked(int i);
    void selectTab(int i);
    void sensorClicked();
    void recordClicked();
    void currentCalClicked();
    void hardwareClicked();
    void hardwareReplied();
    void helpClicked();
    void returnClicked();

    // The name and bin tabs (bc_but_names.cpp)
    void buildNameTabs();
    void fillNameBoxes();
    void rebuildNameCaptions();
    void bdOkClicked();
    void setScaleNames();
    void setBinNames();
    FileError WriteCNameIni();
    FileError WriteCNameSepIni();
    void networkCopy();
    void restoreFactoryNames();
    void gateReturnClicked();
    // Opens a form of the menu if it is part of this build; true when it was opened.
    bool openForm(const QString& name, bool hideMenu);

    QString text(const char* key, const char* deflt) const;

    QLabel *lblXMName, *lblPassTitle, *lblPassWord, *txtTip;
    ImageButton cmdOK, ImgReturn2, ImgReturn, ImageExit;
    ImageButton ImgSensor, ImgHard, ImgHelp, ImgBdjk, ImgElect, ImageCNameIni, ImgBdOk;
    std::array<ImageButton, 3> ImgBdTap{};
    std::array<ImageButton, 14> ImgBd{};
    std::array<QLabel*, 14> LblCansd{};
    std::array<QLineEdit*, 14> TxtDCansd{};
    std::array<QLabel*, 22> LblCansdName{};
    std::array<QLineEdit*, 22> TxtDCansdName{};

    int wrongCodes_ = 0;
    bool firstNaming_ = false;
    bool nameTab_ = false;
    bool binTab_ = false;
};
