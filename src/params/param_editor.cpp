#include "params/param_editor.h"

#include "common/error_log.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "link/form_access.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/live_data.h"
#include "shell/lang.h"

#include <QCheckBox>
#include <QCursor>
#include <QFocusEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>

namespace {
constexpr int kFormWidth = 860;
constexpr int kPageTop = 100;
constexpr int kPageWidth = 840;
constexpr int kColumnWidth = 420;
constexpr QSize kTipSize(340, 132);

// Rows of the option page: the bit, its heading, the texts of the box for 1 and the box for 0, and the
// help image of the row (-1: none). Bits 5 and 7 stand beyond the right edge, out of the operator's reach.
struct OptionRow {
    int bit;
    const char* headKey;
    const char* head;
    const char* onKey;
    const char* on;
    const char* offKey;
    const char* off;
    int help;
    int line;  // -1: beyond the edge
};
constexpr OptionRow kOptionRows[] = {
    {0, "CANSD017", "计量落差调整方式：", "CANSD023", "固定值", "CANSD024", "自动调整", 0, 0},
    {1, "CANSD018", "扣称提前量调整方式：", "CANSD023", "固定值", "CANSD024", "自动调整", 1, 1},
    {2, "CANSD019", "补称功能选择：", "COM014", "关闭", "COM015", "开启", 2, 2},
    {3, "CANSD020", "扣称功能选择：", "COM014", "关闭", "COM015", "开启", 3, 3},
    {4, "CANSD021", "记录方式选择：", "CANSD025", "记录方式二", "CANSD026", "记录方式一", 4, 4},
    {5, nullptr, "标定方式选择", nullptr, "S505 ON", nullptr, "S505 OFF", -1, -1},
    {6, "CANSD022", "重量变动检测方式：", "COM014", "关闭", "COM015", "开启", 5, 5},
    {7, nullptr, "S507调整方式", nullptr, "S507 ON", nullptr, "S507 OFF", -1, -1},
};

int hexNibble(const QString& t, bool first)
{
    if (t.isEmpty())
        return 0;
    bool ok = false;
    const int v = QString(first ? t.front() : t.back()).toInt(&ok, 16);
    return ok ? v : 0;
}

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
        auto* box = new QLineEdit(page);
        box->setObjectName(IndexedName("TxtDCansd", k));
        box->setAlignment(Qt::AlignRight);
        box->installEventFilter(this);
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
    // The read starts as the button goes down.
    cmdRefresh = addImageButton(this, QStringLiteral("cmdRefresh"), QStringLiteral("lblRefresh"),
                                {636, buttonsTop, 96, 32}, ButtonSize::Small, QString(), [this] { RefreshParams(); });
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

void ParamEditor::buildOptionPage()
{
    QWidget* page = picCansd[1];
    for (int i = 0; i < 16; ++i)
        Check1 << nullptr;
    for (int i = 0; i < 6; ++i)
        ImgHelp << ImageButton{};
    for (const OptionRow& r : kOptionRows) {
        const int x = r.line < 0 ? kPageWidth + 60 : 20;
        const int y = r.line < 0 ? 20 + 52 * (r.bit == 5 ? 0 : 1) : 20 + 54 * r.line;
        auto* frame = new QFrame(page);
        frame->setObjectName(IndexedName("FraTzfs", r.bit));
        frame->setGeometry(x, y, 780, 46);
        frame->setStyleSheet(QStringLiteral("QFrame#FraTzfs\\(%1\\) { border: 1px solid #c5d3e6; border-radius: 6px; }")
                                 .arg(r.bit));
        FraTzfs << frame;
        auto* head = addLabel(IndexedName("LblTzfs", r.bit), QString(), {12, 9, 280, 28}, frame);
        head->setStyleSheet(QStringLiteral("font-weight: bold;"));
        LblTzfs << head;
        for (int side = 0; side < 2; ++side) {
            const int i = 2 * r.bit + side;
            auto* box = new QCheckBox(frame);
            box->setObjectName(IndexedName("Check1", i));
            box->setGeometry(300 + 170 * side, 9, 165, 28);
            // A box set by the program runs this too, as the design's click does; the armed flag keeps
            // those runs quiet.
            connect(box, &QCheckBox::toggled, this, [this, i] { optionClicked(i); });
            Check1[i] = box;
        }
        if (r.help >= 0)
            ImgHelp[r.help] = addImage(frame, IndexedName("ImgHelp", r.help), {660, 9, 28, 28}, ButtonSize::HelpIcon,
                                       [this, h = r.help] { optionHelp(h); });
    }
    ImgHelp[3].image->hide();
    txtTip[1] = addHelpTip(QStringLiteral("txtTip(1)"), {60, 20 + 54 * 6, 720, 150}, page);
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

void ParamEditor::loadOptionCaptions()
{
    for (const OptionRow& r : kOptionRows) {
        auto pick = [this](const char* key, const char* deflt) {
            if (!key)
                return QString::fromUtf8(deflt);
            if (QByteArray(key).startsWith("COM"))
                return ComText(QLatin1String(key), QString::fromUtf8(deflt));
            return text(key, deflt);
        };
        findChild<QLabel*>(IndexedName("LblTzfs", r.bit))->setText(pick(r.headKey, r.head));
        Check1[2 * r.bit]->setText(pick(r.onKey, r.on));
        Check1[2 * r.bit + 1]->setText(pick(r.offKey, r.off));
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

bool ParamEditor::keyPressed(int k, QKeyEvent* e)
{
    CurrentBox = k;
    bool swallow = false;
    const QString typed = e->text();
    if (!typed.isEmpty() && typed[0] != QLatin1Char('\t')) {
        const QChar c = typed[0];
        if (c != QChar(8) && !allowedKeys(k).contains(c))
            swallow = true;
        if (c == QLatin1Char('.') && TxtDCansd[k]->text().contains(QLatin1Char('.')))
            swallow = true;
    }
    // The pointer follows the typing onto the box, also for a swallowed key.
    if (picCansd[0]->isVisible())
        QCursor::setPos(TxtDCansd[k]->mapToGlobal(QPoint(7, 7)));
    return swallow;
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
            if (keyPressed(k, static_cast<QKeyEvent*>(event)))
                return true;
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
        case QEvent::MouseButtonPress:
            boxClicked(k);
            break;
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
        for (int k = 0; k < TxtDCansd.size(); ++k) {
            const BoxCheck& c = checks_[k];
            if (c.test == RangeTest::Never || (c.test == RangeTest::WhileVisible && TxtDCansd[k]->isHidden()))
                continue;
            const double v = Val(TxtDCansd[k]->text());
            if (Val(high.value(k)) < v || Val(low.value(k)) > v)
                return failBox(k, c.message + QLatin1Char('(') + low.value(k) + QLatin1Char('-') + high.value(k) +
                                      c.ending);
        }
        for (const Relation& r : relations_)
            if (Val(TxtDCansd[r.low]->text()) < Val(TxtDCansd[r.high]->text()))
                return failBox(r.high, r.text);
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

// ---- the option page ----

void ParamEditor::decodeOptions()
{
    if (TxtSRead->text().isEmpty()) {
        TxtSRead->setText(QStringLiteral("0"));
        return;
    }
    if (TxtSRead->text().size() != 4)
        return;
    bool& armed = optionArmed();
    armed = false;
    const QString t = Trim(TxtSRead->text());
    auto spread = [this](int v, std::initializer_list<int> bits) {
        int w = 8;
        for (int bit : bits) {
            const bool on = v >= w;
            if (on)
                v -= w;
            w /= 2;
            OptionBit[bit] = on ? QStringLiteral("1") : QStringLiteral("0");
            Check1[2 * bit]->setChecked(on);
            Check1[2 * bit + 1]->setChecked(!on);
        }
    };
    spread(hexNibble(t, true), {3, 2, 1, 0});
    spread(hexNibble(t, false), {7, 6, 5, 4});
    if (recordModeApart()) {
        if (Agg1RecordMode.isEmpty())
            Agg1RecordMode = QStringLiteral("0");
        const bool modeTwo = Agg1RecordMode == QLatin1String("0");
        Check1[8]->setChecked(modeTwo);
        Check1[9]->setChecked(!modeTwo);
    }
    armed = true;
}

void ParamEditor::optionClicked(int i)
{
    if (!optionArmed())
        return;
    const int bit = i / 2;
    // Setting the other box runs this handler for it first; that inner run sends the frame.
    Check1[i ^ 1]->setChecked(!Check1[i]->isChecked());
    if (bit == 4 && recordModeApart())
        Agg1RecordMode = Check1[8]->isChecked() ? QStringLiteral("0") : QStringLiteral("1");
    else
        OptionBit[bit] = Check1[2 * bit]->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    auto nibble = [this](int from) {
        int v = 0;
        for (int b = 3; b >= 0; --b)
            v = 2 * v + int(Val(OptionBit[from + b]));
        return Hex(v);
    };
    WriteData = nibble(0) + Mid(Trim(TxtSRead->text()), 2, 2) + nibble(4);
    if (WriteData.size() == 4 && optionArmed()) {
        SendFlag = true;
        StepNo = optionStep();
        const QString frame = GetWrite_TSCMXY(OptionDevice, WriteData, 4);
        send_recieve(frame);
        setStatus(LblTzxxTip, text("CANSD052", "正在调整选项,请稍候......"), false);
    } else if (WriteData.size() == 2 && WriteData != LastWriteData) {
        // The image was never read: the neighbours' digits are missing and nothing can be sent.
        LastWriteData = WriteData;
        MbText = ComText(QStringLiteral("COM016"), QStringLiteral("通讯发生错误请检查：")) + QLatin1Char('\n') +
                 ComText(QStringLiteral("COM017"), QStringLiteral("1、下位机是否已断电；")) + QLatin1Char('\n') +
                 ComText(QStringLiteral("COM018"), QStringLiteral("2、下位机是否正常运行；")) + QLatin1Char('\n') +
                 ComText(QStringLiteral("COM019"), QStringLiteral("3、通讯线是否接在端口:")) + QStringLiteral("Com") +
                 QString::number(PortNo) + QLatin1Char(',') + ComText(QStringLiteral("COM020"), QStringLiteral("且接触良好。"));
        MbIsOk = true;
        MbIsError = true;
        ShowMbQuestion();
        MbResult = false;
    }
    optionArmed() = false;
}

void ParamEditor::optionHelp(int i)
{
    QString first, second;
    switch (i) {
    case 0:
        first = text("CANSD047", "计量落差调整方式：正常情况下推荐使用落差自动调整方式，在设备晃动或落差变化较大的场合推荐使用固定方式，"
                                 "使用固定方式时必须通过观察配料情况将落差调整值逐渐调整到相对合适的数值。[关闭]");
        second = text("CANSD080", "使用固定方式时必须通过观察配料情况将落差调整值逐渐调整到相对合适的数值。[关闭]");
        break;
    case 1:
        first = text("CANSD048", "扣称提前量调整方式：正常情况下推荐使用提前量自动调整方式，在设备晃动或提前量变化较大的场合推荐使用"
                                 "固定方式，使用固定方式时必须通过观察配料情况将提前量调整值逐渐调整到相对合适的数值。[关闭]");
        second = text("CANSD081", "使用固定方式时必须通过观察配料情况将提前量调整值逐渐调整到相对合适的数值。[关闭]");
        break;
    case 4: {
        const QString note = text("CANSD087", "说明:在扣称功能选择关闭时,记录方式一才有效。                       [关闭]");
        if (ScaleNo >= 8 && ScaleNo <= 10) {
            first = text("CANSD049", "记录方式一:即记录计量结束时的重量值。");
            second = text("CANSD085", "记录方式二:即记录卸料前的重量值-卸料后的重量值。") + QLatin1Char('\n') + note;
        } else {
            first = text("CANSD067", "记录方式一:即记录卸料前的重量值。");
            second = text("CANSD086", "记录方式二:即记录卸料前的重量值-卸料后的重量值。") + QLatin1Char('\n') + note;
        }
        break;
    }
    case 5:
        first = text("CANSD050", "重量变动检测方式:开启时，物料计量(或卸料)结束后，必须等待重量信号稳定后再进行超差检查以保证超差检查"
                                 "是在重量稳定的情况下进行的；关闭时，只须经过延时检查超差时间(或延时控制时间)后，即可进行超差检查。[关闭]");
        second = text("CANSD082", "关闭时，只须经过延时检查超差时间(或延时控制时间)后，即可进行超差检查。[关闭]");
        break;
    default:
        break;  // the top-up and deduction rows have no text: a line break alone
    }
    showHelp(txtTip[1], first + QLatin1Char('\n') + second);
}
