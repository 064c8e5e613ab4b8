#pragma once
// System functions: the plant's option bits at S612 and S500, taking effect on the click; six plant
// times at D215 written together by "确 定"; the fan and dust-valve jog with the real outputs; the
// entries to the vibrator times and, hidden, to the factory setting.
#include "shell/form_base.h"

#include <QList>
#include <QStringList>
#include <array>

class QCheckBox;
class QFrame;
class QLineEdit;

class Other : public FormBase {
    Q_OBJECT
public:
    Other();

    // The form's routines, public so that the reply continuations and a reader can find them.
    void SelectTab(int tab);
    void EnableBellTimes(bool on);
    void EnableMonitorTime(bool on);
    void ReadTimes();
    void WriteTimes();
    void ReadOutputs();

    std::array<QFrame*, 5> PicZDTime{};
    QList<QLineEdit*> TxtDCansd, TxtDCansdMulTen;
    QList<QLabel*> LblCansd, Label2, LblTzfs, txtTip;
    QList<QCheckBox*> Check1;  // 0 to 9, 14 and 15; the places between stay empty
    std::array<QCheckBox*, 2> CheckPPd{};
    QLineEdit *TxtSRead = nullptr, *TxtSReadPPd = nullptr, *TxtSReadFengJi = nullptr;
    QLabel *LbLCssdS = nullptr, *LblTzxxTip = nullptr, *lblFengJiTip = nullptr, *lblChuChenTip = nullptr;
    QLabel *cmdFengJi = nullptr, *cmdChuChen = nullptr;

    bool CheckArmed = false;
    int CurrentTab = 0;
    QStringList OptionBit, BeltBit;
    std::array<int, 4> OutBit{};

protected:
    void showEvent(QShowEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Construction, in the order of the screen
    void buildTabs();
    void buildOptions();
    void buildTimes();
    void buildJog();
    void buildButtons();
    void loadCaptions();

    void ImgBd_Click(int index);
    void ImgHelp_Click(int index);

    // Options
    void decodeOptions();
    void decodeBelt();
    void optionClicked(QCheckBox* box);
    void writeFailed();

    // Times
    void okClicked();
    void defaultClicked();
    void returnClicked();
    bool timeKey(int i, QEvent* event);

    // Jog
    void jog(int step, const char* device, bool press);
    void decodeOutputs();

    // Entries
    void showFactoryEntry();
    void openFactory();
    void openZDTime();

    QString text(const char* key, const char* deflt) const;

    QList<ImageButton> ImgBd, ImgHelp;
    ImageButton ImgBdOk, cmdDefault, ImgReturn, ImageExit, ImageZDTime, ImgHard, ImageFengJiState;
    QLabel *lblFormTitle = nullptr, *lblShowFactory = nullptr;
    QLabel *lblFengJi = nullptr, *lblFengJiHint = nullptr, *lblChuChen = nullptr, *lblChuChenHint = nullptr;
    QString lastFailure_;
    // An option pair: the box that stands for bit 1, the one for bit 0, and the bit it sets.
    struct Pair {
        QCheckBox* one;
        QCheckBox* zero;
        int bit;
        bool belt;  // S500 rather than S612
    };
    QList<Pair> pairs_;
};
