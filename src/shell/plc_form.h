#pragma once
// The start-up form: login screen, menu of the three setting areas, and owner of the link for the run.
#include "shell/form_base.h"

#include <array>

class QComboBox;
class QFrame;
class QLineEdit;

class PLC : public FormBase {
    Q_OBJECT
public:
    PLC();
    ~PLC() override;

    // Loads the form as at start: refuses a second instance, reads the configuration and the language.
    // Returns false when the program is to end at once.
    bool load();
    void setCaptions();
    void cmdOk();
    void ExitSystem();

    QComboBox* ComboPlc;
    QComboBox* ComboLan;
    QLineEdit* txtPassword;
    QWidget* picCom;
    std::array<QFrame*, 3> FraCeng{};

protected:
    void closeEvent(QCloseEvent* e) override;
    void changeEvent(QEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void openMenu(int i);
    void openMoisture();
    void languageChosen(int index);

    std::array<ImageButton, 3> Image1{};
    std::array<QLabel*, 3> lblTip{};
    ImageButton cmdOK, ImgReturn2, cmdExit, ImgAdvance;
    QLabel *lblFormTitle, *lblFormTitlePass, *lblPassWord, *LblCom, *lblLan, *plantLabel;
    int wrongPasswords_ = 0;
    bool exiting_ = false;
};

// Ends the program through the main form's exit path.
void ExitSystem();
