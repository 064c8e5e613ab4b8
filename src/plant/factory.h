#pragma once
// The factory setting: behind its own access code, one pulse of S212 that makes the controller take its
// factory state. Reached only through the hidden entry of the plant function form.
#include "shell/form_base.h"

class QFrame;
class QLineEdit;

class Factory : public FormBase {
    Q_OBJECT
public:
    Factory();

    QFrame* picCom = nullptr;   // the gate
    QFrame* PicForm = nullptr;  // the action
    QLineEdit* txtPassword = nullptr;
    QLabel* LbLCssdS = nullptr;

protected:
    void showEvent(QShowEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QString text(const char* key, const char* deflt) const;
    void buildGate();
    void buildAction();
    void loadCaptions();
    void cmdOk();
    void factoryClicked();
    void returnClicked();

    QLabel *lblPassTitle = nullptr, *lblPassWord = nullptr, *LblFactoryTip = nullptr;
    ImageButton cmdOK, ImgReturn2, LblBd, ImgBdOk, ImgReturn, ImageExit;
};
