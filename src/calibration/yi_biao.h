#pragma once
// Zero and span calibration of a scale. The controller does the arithmetic; the form arms it, hands over
// the test weight, pulses one bit per procedure through Timer3, reads the status pair once and records
// a success. CalibrationForm holds what the weight form and the moisture form share.
#include "shell/form_base.h"

#include <QList>
#include <array>

class QCheckBox;
class QFrame;
class QLineEdit;

class CalibrationForm : public FormBase {
    Q_OBJECT
public:
    // Fields of the procedure
    bool ZeroMode = false, SpanMode = false;
    bool ZeroDone = true, SpanDone = true;  // False only between the operator's Yes and the outcome
    std::array<QString, 8> OptionBits;       // entries 2 and 3 also keep the last status bits

    void ReadLiveOnce();
    void StartLivePolling();
    void SelectTab(int index);
    virtual void ShowStepHint();
    void PrepareEntry();
    void StoreCalValues(int scale);

protected:
    explicit CalibrationForm(const QString& name);

    // Texts that differ between the weight and the moisture form.
    struct Texts {
        QString askZero, askSpan, busyZero, busySpan, doneZero, doneSpan, refusedZero, refusedSpan, errorZero,
            errorSpan;
    };
    Texts texts;
    virtual QString section() const = 0;
    QString text(const char* key, const char* deflt) const;
    virtual void tabClicked(int index) = 0;
    // Checks TxtFmzL before a span; false when the operator was told and the procedure ends.
    virtual bool spanEntryValid() = 0;
    virtual bool writesOpRecord() const { return true; }
    virtual QString returnForm() const = 0;
    int decimals() const;

    void buildForm();
    void hideResults();

    QLabel* LblBceng = nullptr;
    QList<ImageButton> ImgBd;  // the three tabs with their LblBd captions
    QFrame* PicYiBiao[2] = {};
    QFrame* Picbz = nullptr;
    QLabel* lblBiaoZero = nullptr;
    QLabel* LbLBLwc = nullptr;
    QLabel* LbLBZwc = nullptr;
    QLabel* LblCansd[2] = {};
    QLabel* LbLADv = nullptr;
    QLabel* LblZLv = nullptr;
    QLabel* lblFmzL = nullptr;
    QLabel* lblFmzLUnit = nullptr;
    QLabel* lblFmzLUnit2 = nullptr;
    QLabel* ImageZero = nullptr;
    QLabel* ImageWeight = nullptr;
    QLabel* Image2 = nullptr;
    ImageButton ImgHelpLarge;
    QLabel* txtTipLarge = nullptr;
    QLineEdit* TxtFmzL = nullptr;
    QLineEdit* TxtFm = nullptr;
    QLineEdit* txtBCSuccessRead = nullptr;
    QLineEdit* TxtSRead = nullptr;
    ImageButton ImgBdOk, ImgReturn, ImageExit;

    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* e) override;

private:
    void okClicked();
    void BLHandle();
    void BZHandle();
    void start(bool span);
    void returnClicked();
    void statusChanged();
    bool entryKey(QKeyEvent* e);
};

class YIBiao : public CalibrationForm {
    Q_OBJECT
public:
    YIBiao();
    void ReadOptions();

protected:
    QString section() const override { return QStringLiteral("LANYIBIAOFORM"); }
    void tabClicked(int index) override;
    bool spanEntryValid() override;
    QString returnForm() const override { return QStringLiteral("BcBut"); }
    void ShowStepHint() override;

private:
    void LoadCaptions();
    void buildOptionPage();
    void switchWordRead(bool tracking);
    void modeClicked(int index, bool checked);
    void trackClicked(int index, bool checked);
    void writeSwitchWord(bool tracking);

    std::array<QString, 8> TrackBits;
    QString TrackWord;
    bool SwitchesLive = false;
    QString reportedModeWord_, reportedTrackWord_;
    bool current_ = false;  // the current variant, fixed at load

    QCheckBox* Check1[2] = {};  // Check1(10), Check1(11)
    QCheckBox* Check2[2] = {};
    QLabel* LblTzxxTip = nullptr;
    QLabel* LblTzxxZeroTip = nullptr;
    QLabel* LblTzxxZeroNote = nullptr;
    QLabel* txtTip = nullptr;
    QLineEdit* txtTzxxRead = nullptr;
    QLineEdit* txtTzxxZeroRead = nullptr;
    ImageButton ImgHelp[2];
};
