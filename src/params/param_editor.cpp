// The parameter editors' first page and what both pages share: the boxes with their key filter, range mark
// and help, the blocking check, the one-block write and the question on return.
#include "params/param_editor.h"

#include "common/error_log.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "common/form_access.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/live_data.h"
#include "common/lang.h"
#include "shell/key_filter.h"

#include <QApplication>
#include <QCheckBox>
#include <QCursor>
#include <QFocusEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTimer>

namespace {
constexpr int kFormWidth = 860;
constexpr int kPageTop = 100;
constexpr int kPageWidth = 840;
constexpr int kColumnWidth = 420;
constexpr QSize kTipSize(340, 132);

void setColor(QLabel* l, const QColor& c)
{
    QPalette p = l->palette();
    p.setColor(QPalette::WindowText, c);
    l->setPalette(p);
}
}  // namespace

ParamEditor::ParamEditor(const QString& formName, int boxCount, int rows, const char* loadLogName)
    : FormBase(formName), loadLogName_(loadLogName)
{

    lblFormTitle = addTitle(QStringLiteral("lblFormTitle"), QString(), {0, 10, kFormWidth, 36}, 20);
    ImageExit = addExitImage(QStringLiteral("ImageExit"), {kFormWidth - 44, 10});

    for (int i = 0; i < 2; ++i) {
        auto open = [this, i] {
            LbLCssdS->hide();
            LblTzxxTip->hide();
            lblCheckTip->hide();
            SelectPage(i);
        };
        tabs_ << addTab(this, IndexedName("ImgBd", i), IndexedName("LblBd", i), {20 + 126 * i, 60, 120, 34}, QString(), open);
    }

    for (int k = 0; k < boxCount; ++k) {
        TxtDCansd << nullptr;
        LblCansd << nullptr;
        Label8 << nullptr;
        lblOutRank << nullptr;
    }
    for (int k = 0; k < boxCount; ++k)
        checks_ << BoxCheck{};
    buildPages(rows);
    buildOptionPage();
}

void ParamEditor::buildPages(int rows)
{
    rowStep_ = rows > 8 ? 32 : 40;
    const int pageHeight = kRowTop + rows * rowStep_ + 56;
    for (int i = 0; i < 2; ++i) {
        auto* page = addPanel(this, IndexedName("picCansd", i), {10, kPageTop, kPageWidth, pageHeight});
        picCansd[i] = page;
        addHoverSurface(page);
    }
    QWidget* page = picCansd[0];
    for (int c = 0; c < 2; ++c) {
        LblSubTitle[c] = addLabel(IndexedName("LblSubTitle", c), QString(), {16 + kColumnWidth * c, 10, 380, 28}, page);
        LblSubTitle[c]->setStyleSheet(QStringLiteral("font-weight: bold; color: #17407a;"));
    }
    for (int k = 0; k < TxtDCansd.size(); ++k) {
        LblCansd[k] = addLabel(IndexedName("LblCansd", k), QString(), {}, page);
        LblCansd[k]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        // Zeros until the controller answers.
        auto* box = new QLineEdit(QStringLiteral("0"), page);
        box->setObjectName(IndexedName("TxtDCansd", k));
        box->setAlignment(Qt::AlignRight);
        box->installEventFilter(this);
        RestrictKeys(box, [this, k] { return KeyRule{allowedKeys(k), true}; });
        connect(box, &QLineEdit::textChanged, this, [box](const QString& t) {
            // ".5" is shown as "0.5" while it is typed.
            if (t.indexOf(QLatin1Char('.')) == 0)
                box->setText(QLatin1Char('0') + t);
        });
        TxtDCansd[k] = box;
        Label8[k] = addLabel(IndexedName("Label8", k), QString(), {}, page);
        lblOutRank[k] = addLabel(IndexedName("lblOutRank", k), QStringLiteral("!"), {}, page);
        lblOutRank[k]->setStyleSheet(QStringLiteral("color: red; font-weight: bold; font-size: 18px;"));
        lblOutRank[k]->hide();
    }
    const int bottom = kRowTop + rows * rowStep_ + 8;
    CheckTip = new QCheckBox(page);
    CheckTip->setObjectName(QStringLiteral("CheckTip(0)"));
    CheckTip->setGeometry(16, bottom, 400, 28);
    connect(CheckTip, &QCheckBox::clicked, this, [this](bool on) {
        ShowCsHelp = on ? QStringLiteral("1") : QStringLiteral("0");
        if (!on)
            txtTip[0]->hide();
    });
    lblCheckTip = addLabel(QStringLiteral("lblCheckTip"), QString(), {16 + kColumnWidth, bottom, 400, 28}, page);
    setColor(lblCheckTip, QColor(0xFF, 0, 0));
    lblCheckTip->hide();
    txtTip[0] = addHelpTip(QStringLiteral("txtTip(0)"), QRect(QPoint(0, 0), kTipSize), page);
    connect(static_cast<ClickLabel*>(txtTip[0]), &ClickLabel::clicked, this, [this] {
        if (CurrentBox >= 0 && CurrentBox < TxtDCansd.size())
            TxtDCansd[CurrentBox]->setFocus();
    });

    const int buttonsTop = kPageTop + pageHeight + 14;
    LbLCssdS = addLabel(QStringLiteral("LbLCssdS"), QString(), {20, buttonsTop, 380, 32});
    LbLCssdS->hide();
    LblTzxxTip = addLabel(QStringLiteral("LblTzxxTip"), QString(), {20, buttonsTop, 380, 32});
    LblTzxxTip->hide();
    ImgBdOk = addImageButton(this, QStringLiteral("ImgBdOk"), QStringLiteral("lblBdOk"), {410, buttonsTop, 96, 32},
                             ButtonSize::Small, QString(), [this] { okClicked(); });
    cmdDefault = addImageButton(this, QStringLiteral("cmdDefault"), QStringLiteral("lblDefault"),
                                {516, buttonsTop, 110, 32}, ButtonSize::Small, QString(), [this] { defaultClicked(); });
    // The read starts as the button goes down, which also brightens it until it comes up; a click as such
    // does nothing more.
    cmdRefresh = addImageButton(this, QStringLiteral("cmdRefresh"), QStringLiteral("lblRefresh"),
                                {636, buttonsTop, 96, 32}, ButtonSize::Small, QString(), nullptr);
    for (ClickLabel* l : {cmdRefresh.image, cmdRefresh.caption}) {
        connect(l, &ClickLabel::pressed, this, [this] {
            cmdRefresh.setBright(true);
            RefreshParams();
        });
        connect(l, &ClickLabel::released, this, [this] { cmdRefresh.setBright(false); });
    }
    ImgReturn = addImageButton(this, QStringLiteral("ImgReturn"), QStringLiteral("lblReturn"), {742, buttonsTop, 96, 32},
                               ButtonSize::Small, QString(), [this] { returnClicked(); });

    TxtSRead = new QLineEdit(QStringLiteral("0"), this);
    TxtSRead->setObjectName(QStringLiteral("TxtSRead"));
    TxtSRead->hide();
    connect(TxtSRead, &QLineEdit::textChanged, this, [this] { decodeOptions(); });
    TxtSWrite = new QLineEdit(this);
    TxtSWrite->setObjectName(QStringLiteral("TxtSWrite"));
    TxtSWrite->hide();

    setFixedSize(kFormWidth, buttonsTop + 32 + 16);
}

QString ParamEditor::text(const char* key, const char* deflt) const
{
    return LangText(QStringLiteral("LANCANSDFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}

void ParamEditor::loadForm()
{
    try {
        CurrentForm = objectName();
        setWindowTitle(text("CANSD001", "参数设定"));
        tabs_[0].setText(text("CANSD001", "参数设定"));
        tabs_[1].setText(text("CANSD002", "功能选项"));
        ImgBdOk.setText(ComText(QStringLiteral("COM001"), QStringLiteral("确 定")));
        ImgReturn.setText(ComText(QStringLiteral("COM003"), QStringLiteral("返 回")));
        cmdDefault.setText(ComText(QStringLiteral("COM006"), QStringLiteral("初始化参数")));
        cmdDefault.image->setToolTip(ComText(QStringLiteral("COM027"), QStringLiteral("设置出厂默认的经验值")));
        cmdRefresh.setText(ComText(QStringLiteral("COM024"), QStringLiteral("刷新参数")));
        cmdRefresh.image->setToolTip(ComText(QStringLiteral("COM026"), QStringLiteral("从PLC读取新的参数值")));
        CheckTip->setText(text("CANSD016", "点击参数输入框时显示相关说明"));
        for (QLabel* mark : lblOutRank)
            mark->setToolTip(text("CANSD066", "超出范围"));
        loadOptionCaptions();
        LoadCaptions();
        OptionBit = QStringList(8, QStringLiteral("0"));
        CheckTip->setChecked(Val(ShowCsHelp) == 1);
        LayoutForScale();
        SelectPage(0);
        RefreshParams();
        optionArmed() = true;
    } catch (const VbError& e) {
        LogProgramError(QLatin1String(loadLogName_), QStringLiteral("Form_Load"), QString::number(e.number),
                        e.description());
    }
}

void ParamEditor::placeRow(int k, int column, int row)
{
    const int x = 16 + kColumnWidth * column;
    const int y = kRowTop + (row - 1) * rowStep_;
    LblCansd[k]->setGeometry(x, y, 236, 28);
    TxtDCansd[k]->setGeometry(x + 242, y, 92, 28);
    Label8[k]->setGeometry(x + 340, y, 34, 28);
    lblOutRank[k]->setGeometry(x + 376, y, 14, 28);
}

void ParamEditor::setRowVisible(int k, bool visible)
{
    LblCansd[k]->setVisible(visible);
    TxtDCansd[k]->setVisible(visible);
    Label8[k]->setVisible(visible);
    if (!visible)
        lblOutRank[k]->hide();
}

void ParamEditor::showSpareRow(int k)
{
    // A spare row that a scale brings out takes the system's window background, as a box has it.
    const QColor window = QApplication::palette().color(QPalette::Base);
    for (QWidget* w : std::initializer_list<QWidget*>{LblCansd[k], TxtDCansd[k], Label8[k]}) {
        QPalette p = w->palette();
        p.setColor(QPalette::Window, window);
        p.setColor(QPalette::Base, window);
        w->setPalette(p);
        w->setAutoFillBackground(true);
    }
    setRowVisible(k, true);
}

void ParamEditor::SetRangeHints(const QStringList& low, const QStringList& high)
{
    const QString hint = ComText(QStringLiteral("COM023"), QStringLiteral("输入范围为:"));
    for (int k = 0; k < TxtDCansd.size(); ++k)
        TxtDCansd[k]->setToolTip(hint + QLatin1Char('(') + low.value(k) + QLatin1Char('-') + high.value(k) +
                                 checks_[k].ending);
}

void ParamEditor::SelectPage(int page)
{
    for (int i = 0; i < 2; ++i)
        picCansd[i]->setVisible(i == page);
    selectTab(tabs_, page);
    ImgBdOk.setVisible(page != 1);
    cmdDefault.setVisible(page != 1);
    cmdRefresh.setVisible(page != 1);
}

void ParamEditor::RefreshParams()
{
    StepNo = readStep();
    SendFlag = true;
    const QString frame = BuildReadFrameWords(Trim(blockDevice()), short(TxtDCansd.size()));
    send_recieve(frame);
}

// ---- typing in a box ----

// What a key does besides typing, which the box's key filter judges.
void ParamEditor::keyPressed(int k)
{
    CurrentBox = k;
    // The pointer follows the typing onto the box, also for a swallowed key.
    if (picCansd[0]->isVisible())
        QCursor::setPos(TxtDCansd[k]->mapToGlobal(QPoint(7, 7)));
}

void ParamEditor::FormatBox(int k)
{
    if (k < 0 || k >= TxtDCansd.size())
        return;
    TxtDCansd[k]->setText(Format(Val(TxtDCansd[k]->text()), boxFormat(k)));
}

void ParamEditor::MarkOutOfRange(int k, const QStringList& low, const QStringList& high)
{
    if (TxtDCansd[k]->isHidden())
        return;
    const double v = Val(TxtDCansd[k]->text());
    if (v > Val(high.value(k)) || v < Val(low.value(k)))
        lblOutRank[k]->show();
}

void ParamEditor::fillEmptyBoxes()
{
    for (QLineEdit* box : TxtDCansd)
        if (box->text().isEmpty())
            box->setText(QStringLiteral("0"));
}

void ParamEditor::mouseMoveEvent(QMouseEvent* e)
{
    fillEmptyBoxes();
    FormBase::mouseMoveEvent(e);
}

bool ParamEditor::eventFilter(QObject* watched, QEvent* event)
{
    const int k = TxtDCansd.indexOf(qobject_cast<QLineEdit*>(watched));
    if (k >= 0) {
        switch (event->type()) {
        case QEvent::KeyPress:
            keyPressed(k);
            break;
        case QEvent::KeyRelease:
            LbLCssdS->hide();
            ParamSetDone = false;
            break;
        case QEvent::FocusIn:
            QTimer::singleShot(0, TxtDCansd[k], &QLineEdit::selectAll);
            break;
        case QEvent::FocusOut: {
            // Another window taking the focus (a message box) is not leaving the box.
            const auto reason = static_cast<QFocusEvent*>(event)->reason();
            if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason)
                break;
            FormatBox(k);
            lblOutRank[k]->hide();
            MarkOutOfRange(k, LowLimit, HighLimit);
            break;
        }
        case QEvent::MouseButtonRelease: {
            // A click is the button let go over the box it went down on.
            const auto* m = static_cast<QMouseEvent*>(event);
            if (m->button() == Qt::LeftButton && TxtDCansd[k]->rect().contains(m->position().toPoint()))
                boxClicked(k);
            break;
        }
        default:
            break;
        }
    } else if (watched == picCansd[0]) {
        if (event->type() == QEvent::MouseMove)
            fillEmptyBoxes();
        else if (event->type() == QEvent::MouseButtonPress) {
            FormatBox(CurrentBox);
            CheckCrossTip();
        }
    } else if (watched == this && event->type() == QEvent::MouseMove) {
        fillEmptyBoxes();
    }
    return FormBase::eventFilter(watched, event);
}

void ParamEditor::boxClicked(int k)
{
    CurrentBox = k;
    switch (helpOnClick(k)) {
    case BoxHelp::HideTip:
        txtTip[0]->hide();
        return;
    case BoxHelp::Nothing:
        return;
    case BoxHelp::Show:
        break;
    }
    if (!CheckTip->isChecked())
        return;
    placeTip(k);
    showHelp(txtTip[0], TipText.value(k));
}

void ParamEditor::placeTip(int k)
{
    const QRect box = TxtDCansd[k]->geometry();
    const QWidget* page = picCansd[0];
    const int top = box.bottom() + 1 + kTipSize.height() > page->height() ? box.top() - kTipSize.height()
                                                                          : box.bottom() + 1;
    const int left = box.right() + 1 + kTipSize.width() > page->width() ? box.left() - kTipSize.width()
                                                                        : box.right() + 1;
    txtTip[0]->setGeometry(left, top, kTipSize.width(), kTipSize.height());
}

void ParamEditor::CheckCrossTip()
{
    lblCheckTip->hide();
    for (const Relation& r : liveRelations_) {
        if (Val(TxtDCansd[r.low]->text()) < Val(TxtDCansd[r.high]->text())) {
            lblCheckTip->setText(r.text);
            lblCheckTip->show();
            return;
        }
    }
}

// ---- the write ----

void ParamEditor::okClicked()
{
    try {
        if (!EnterChecked(LowLimit, HighLimit))
            return;
        MbText = text("CANSD045", "是否设定当前参数?");
        MbIsOk = false;
        ShowMbQuestion();
        if (MbResult)
            SetParams();
    } catch (const VbError& e) {
        LogProgramError(objectName(), QStringLiteral("ImgBdOk_Click"), QString::number(e.number), e.description());
    }
}

// An OK box for the first fault; its OK puts the focus on the box, which a hidden box can't take.
bool ParamEditor::failBox(int k, const QString& message)
{
    MbText = message;
    MbIsOk = true;
    MbIsError = false;
    ShowMbQuestion();
    const bool answered = MbResult;
    MbResult = false;
    if (answered) {
        if (TxtDCansd[k]->isHidden())
            throw VbError(5, QStringLiteral("Invalid procedure call or argument"));
        TxtDCansd[k]->setFocus(Qt::OtherFocusReason);
    }
    return false;
}

bool ParamEditor::EnterChecked(const QStringList& low, const QStringList& high)
{
    try {
        QList<double> shown;
        for (const QLineEdit* box : TxtDCansd)
            shown << Val(box->text());
        const BlockFault fault = ParamBlock::firstFault(shown, low, high, checks_, relations_);
        if (!fault.ok())
            return failBox(fault.field, fault.message);
        return true;
    } catch (const VbError& e) {
        LogProgramError(QStringLiteral("Cansd"), QStringLiteral("EnterChecked"), QString::number(e.number),
                        e.description());
    }
    return false;
}

void ParamEditor::SetParams()
{
    for (int k = 0; k < TxtDCansd.size(); ++k) {
        const QString shown = Format(Val(TxtDCansd[k]->text()), boxFormat(k));
        TxtDCansd[k]->setText(shown);
        Link().Pfd.at(size_t(k)) = NumText(Val(shown) * writeFactor(k));
    }
    SendFlag = true;
    ParamSetDone = false;
    StepNo = writeStep();
    const QString frame = GetWrite_PLCD(Trim(blockDevice()), short(TxtDCansd.size()));
    send_recieve(frame);
    // The caption may stay hidden after a key: its text is seen with the reply.
    LbLCssdS->setText(text("CANSD046", "正在设定参数,请稍候......"));
    setColor(LbLCssdS, QColor(0xFF, 0, 0));
}

void ParamEditor::defaultClicked()
{
    MbText = ComText(QStringLiteral("COM028"), QStringLiteral("是否要初始化参数?"));
    MbIsOk = false;
    ShowMbQuestion();
    if (!MbResult)
        return;
    for (int k = 0; k < TxtDCansd.size(); ++k)
        TxtDCansd[k]->setText(DefaultValue.value(k));
    ParamSetDone = false;
    SetParams();
}

void ParamEditor::returnClicked()
{
    try {
        Link().Timer2.stop();
        bool changed = false;
        for (int k = 0; k < TxtDCansd.size() && !changed; ++k)
            changed = Val(TxtDCansd[k]->text()) != Val(NumText(CansdBaseline.at(size_t(k))));
        if (!ParamSetDone && changed) {
            MbText = text("CANSD051", "参数更改后未设定，是否返回?");
            MbIsOk = false;
            ShowMbQuestion();
            if (!MbResult)
                return;
        }
        unloadLater();
        Forms::show(QStringLiteral("BcBut"));
    } catch (const VbError& e) {
        LogProgramError(objectName(), QStringLiteral("ImgReturn_Click"), QString::number(e.number), e.description());
    }
}

