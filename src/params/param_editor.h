#pragma once
// What the two parameter editors share: the boxes with their key filter, range mark and help pop-up,
// the blocking check before a write, the one-block write, the option page and the question on return.
// Each editor supplies its rows, formats, limits and messages as data.
#include "params/param_block.h"
#include "shell/form_base.h"

#include <QList>
#include <QStringList>

class QCheckBox;
class QFrame;
class QLineEdit;

// What a click on a box does besides taking the box as the current one.
enum class BoxHelp { Show, HideTip, Nothing };

class ParamEditor : public FormBase {
    Q_OBJECT
public:
    ParamEditor(const QString& name, int boxCount, int rows, const char* loadLogName);

    // The form's routines, public so that the reply continuations and a reader can find them.
    void SelectPage(int page);
    void RefreshParams();
    bool EnterChecked(const QStringList& low, const QStringList& high);
    void SetParams();
    void CheckCrossTip();
    void FormatBox(int k);
    void MarkOutOfRange(int k, const QStringList& low, const QStringList& high);
    void SetRangeHints(const QStringList& low, const QStringList& high);

    QList<QLineEdit*> TxtDCansd;
    QList<QLabel*> LblCansd, Label8, lblOutRank;
    QList<QCheckBox*> Check1;
    QList<QLabel*> LblTzfs;
    QList<ImageButton> ImgHelp;
    QList<QFrame*> FraTzfs;
    QLineEdit* TxtSRead = nullptr;
    QLineEdit* TxtSWrite = nullptr;
    QLabel *LbLCssdS = nullptr, *LblTzxxTip = nullptr, *lblCheckTip = nullptr, *lblFormTitle = nullptr;
    QCheckBox* CheckTip = nullptr;
    QLabel* txtTip[2] = {nullptr, nullptr};
    QWidget* picCansd[2] = {nullptr, nullptr};
    QLabel* LblSubTitle[2] = {nullptr, nullptr};

    QStringList LowLimit, HighLimit, DefaultValue;
    QStringList TipText;
    QStringList OptionBit;
    int CurrentBox = 0;
    QString LastWriteData;

protected:
    // Steps of the block read, the block write and the option write, and the block's device and size.
    virtual short readStep() const = 0;
    virtual short writeStep() const = 0;
    virtual short optionStep() const = 0;
    virtual QString blockDevice() const = 0;
    // The flag that arms the option boxes.
    virtual bool& optionArmed() = 0;
    // Scale 0 of Cansd keeps its record mode apart from bit 4.
    virtual bool recordModeApart() const { return false; }
    // Display format, register factor and key set of a box.
    virtual QString boxFormat(int k) const = 0;
    virtual double writeFactor(int k) const = 0;
    virtual QString allowedKeys(int k) const = 0;
    virtual BoxHelp helpOnClick(int k) const = 0;

    // Called by a derived constructor once its own rows exist: the load of the form.
    void loadForm();
    virtual void LoadCaptions() = 0;
    virtual void LayoutForScale() = 0;

    // Puts box k with its caption, unit and mark at a place of one of the two columns.
    void placeRow(int k, int column, int row);
    void setRowVisible(int k, bool visible);
    // Rows 11, 12 and 14 of Cansd are spare rows, hidden unless a scale uses them.
    void showSpareRow(int k);
    QString text(const char* key, const char* deflt) const;

    QList<BoxCheck> checks_;
    QList<Relation> relations_;      // blocking, in order, the focus going to the second box
    QList<Relation> liveRelations_;  // the warning of the page

    static constexpr int kRowTop = 48;
    int rowStep_ = 40;

    void mouseMoveEvent(QMouseEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildPages(int rows);
    void buildOptionPage();
    void loadOptionCaptions();
    void boxClicked(int k);
    void keyPressed(int k);
    void fillEmptyBoxes();
    void placeTip(int k);
    void decodeOptions();
    void optionClicked(int i);
    void optionHelp(int i);
    void okClicked();
    void defaultClicked();
    void returnClicked();
    bool failBox(int k, const QString& message);

    const char* loadLogName_;
    QList<ImageButton> tabs_;
    ImageButton ImgBdOk, cmdDefault, cmdRefresh, ImgReturn, ImageExit;
};
