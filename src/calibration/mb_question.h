#pragma once
// The own message box: topmost, in the chosen language, placed by the program's own rule.
// Called through the globals MbText, MbIsOk, MbIsError; answers in MbResult.
#include <QDialog>

class QLabel;
class QPushButton;

class MbQuestion : public QDialog {
    Q_OBJECT
public:
    explicit MbQuestion(QWidget* parent = nullptr);
    static MbQuestion* showing();  // the box on screen, if any

private:
    void layoutAndPlace();
    QLabel* LblAsk;
    QLabel* ImgICO;
    QPushButton* CmdMbOK;
    QPushButton* CmdYes;
    QPushButton* CmdNo;
};
