#include "plant/other.h"

#include "common/form_access.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/vbtext.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "plant/other_layout.h"
#include "shell/key_filter.h"

#include <QCheckBox>
#include <QFrame>
#include <QLineEdit>

using namespace OtherLayout;

namespace {
// The pairs of option boxes: heading, the box that stands for bit 1 and the one for bit 0, the bit of
// the S612 image (or of S500 for the belt), where the pair sits, and its help mark (-1: none).
struct PairRow {
    int tab;
    int head;  // LblTzfs index
    const char* headKey;
    const char* headText;
    int one;  // Check1 index, or -1 for CheckPPd(0)
    const char* oneKey;
    const char* oneText;
    int zero;  // Check1 index, or -2 for CheckPPd(1)
    const char* zeroKey;
    const char* zeroText;
    int bit;
    bool belt;
    int top;
    int help;
    bool stacked;  // long texts: one box a line
};
constexpr PairRow kPairs[] = {
    {0, 0, "OTHER006", "开机响铃方式：", 0, "OTHER007", "不响铃", 1, "OTHER008", "响铃", 6, false, 14, -1, false},
    {0, 1, "OTHER009", "每任务单搅拌完成后响铃方式：", 2, "OTHER010", "手动响铃", 3, "OTHER011", "自动响铃", 1, false, 96,
     -1, false},
    {1, 4, "OTHER014", "半自动状态时骨料的上料选择：", 4, "OTHER015", "暂停上料", 5, "OTHER016", "自动上料", 2, false, 14,
     1, false},
    {1, 6, "OTHER017", "平皮带工作方式选择：", -1, "OTHER018", "送料时启动工作：", -2, "OTHER019", "生产时连续工作：", 4, true,
     96, 4, false},
    {2, 2, "OTHER022", "外加剂卸料与拌缸投料选择：", 6, "OTHER023", "卸料结束才允许拌缸投料", 7, "OTHER024",
     "卸料开始即允许拌缸投料", 3, false, 14, 3, true},
    {2, 3, "OTHER025", "拌缸监视功能设定：", 8, "COM014", "关闭", 9, "COM015", "开启", 4, false, 140, -1, false},
    {4, 5, "OTHER030", "成品储存斗联动选择", 14, "OTHER031", "取消", 15, "OTHER032", "联动", 7, false, 14, 5, false},
};

// Where each help text sits.
constexpr int kHelpTab[6] = {0, 1, 1, 2, 1, 4};
constexpr QPoint kHelpAt[6] = {{680, 184}, {670, 22}, {680, 184}, {670, 8}, {670, 104}, {670, 22}};

int hexDigit(const QString& text, bool first)
{
    const QString t = Trim(text);
    if (t.isEmpty())
        return 0;
    return int(Val(QStringLiteral("&H") + (first ? t.front() : t.back())));
}

// Tested from the top, each bit taken off when set.
void spreadBits(int d, QStringList& bits, int lowest)
{
    for (int b = 3; b >= 0; --b) {
        const int w = 1 << b;
        const bool on = d >= w;
        if (on)
            d -= w;
        bits[lowest + b] = on ? QStringLiteral("1") : QStringLiteral("0");
    }
}

QString nibble(const QStringList& bits, int lowest)
{
    int v = 0;
    for (int b = 3; b >= 0; --b)
        v = 2 * v + int(Val(bits[lowest + b]));
    return Hex(v);
}

void setTextColor(QWidget* w, const QColor& c)
{
    QPalette p = w->palette();
    p.setColor(QPalette::WindowText, c);
    w->setPalette(p);
}
}  // namespace

Other::Other() : FormBase(QStringLiteral("Other"))
{
    setFixedSize(kFormWidth, kFormHeight);
    lblFormTitle = addTitle(QStringLiteral("lblFormTitle"), QString(), {0, 10, kFormWidth, 36}, 20);
    ImageExit = addExitImage(QStringLiteral("ImageExit"), {kFormWidth - 44, 10});

    buildTabs();
    buildOptions();
    buildTimes();
    buildJog();
    buildButtons();

    // A small bare corner that shows the factory entry to those who know it.
    lblShowFactory = new ClickLabel(this);
    lblShowFactory->setObjectName(QStringLiteral("lblShowFactory"));
    lblShowFactory->setGeometry(0, 0, 36, 36);
    lblShowFactory->raise();
    connect(static_cast<ClickLabel*>(lblShowFactory), &ClickLabel::clicked, this, [this] { showFactoryEntry(); });

    // Load
    OptionBit = QStringList(8, QStringLiteral("0"));
    BeltBit = QStringList(8, QStringLiteral("0"));
    loadCaptions();
    SelectTab(0);
    const QString hint = ComText(QStringLiteral("COM023"), QStringLiteral("输入范围为:"));
    for (int i = 0; i < 6; ++i)
        TxtDCansd[i]->setToolTip(hint + QLatin1String(kTimes[i].range));
    ImgBd[4].setVisible(false);
    // The mixer monitor is not offered; its bit and time still travel in every write.
    for (QWidget* w : std::initializer_list<QWidget*>{LblTzfs[3], Check1[8], Check1[9], LblCansd[4], TxtDCansd[4],
                                                      Label2[4], LblCansd[5], LblTzfs[3]->parentWidget()})
        w->hide();
    ReadTimes();
}

QString Other::text(const char* key, const char* deflt) const
{
    if (QByteArray(key).startsWith("COM"))
        return ComText(QLatin1String(key), QString::fromUtf8(deflt));
    return LangText(QStringLiteral("LANOTHERFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}

// ---- construction ----

void Other::buildTabs()
{
    for (int i = 0; i < 5; ++i) {
        ImgBd << addTab(this, IndexedName("ImgBd", i), IndexedName("LblBd", i),
                        {kTabLeft + kTabStep * i, kTabTop, kTabWidth, kTabHeight}, QString(), [this, i] { ImgBd_Click(i); });
        PicZDTime[size_t(i)] = addPanel(this, IndexedName("PicZDTime", i), {10, kPageTop, kPageWidth, kPageHeight});
        addHoverSurface(PicZDTime[size_t(i)]);
    }
}

void Other::buildOptions()
{
    for (int i = 0; i < 16; ++i)
        Check1 << nullptr;
    for (int i = 0; i < 7; ++i)
        LblTzfs << nullptr;
    for (const PairRow& r : kPairs) {
        auto* frame = new QFrame(PicZDTime[size_t(r.tab)]);
        frame->setObjectName(IndexedName("FraTzfs", r.head));
        frame->setGeometry(16, r.top, kPageWidth - 32, r.stacked ? 106 : 74);
        frame->setStyleSheet(QStringLiteral("QFrame#FraTzfs\\(%1\\) { border: 1px solid #c5d3e6; border-radius: 6px; }")
                                 .arg(r.head));
        auto* head = addLabel(IndexedName("LblTzfs", r.head), QString(), {12, 6, 640, 26}, frame);
        head->setStyleSheet(QStringLiteral("font-weight: bold;"));
        LblTzfs[r.head] = head;
        auto makeBox = [&](int index, int slot) {
            auto* box = new QCheckBox(frame);
            box->setObjectName(index >= 0 ? IndexedName("Check1", index) : IndexedName("CheckPPd", -1 - index));
            if (r.stacked)
                box->setGeometry(40, 36 + 32 * slot, 620, 28);
            else
                box->setGeometry(40 + 320 * slot, 38, 310, 28);
            // Only the operator's click: the boxes the program sets are not clicks.
            connect(box, &QCheckBox::clicked, this, [this, box] { optionClicked(box); });
            if (index >= 0)
                Check1[index] = box;
            else
                CheckPPd[size_t(-1 - index)] = box;
            return box;
        };
        pairs_.append({makeBox(r.one, 0), makeBox(r.zero, 1), r.bit, r.belt});
    }
    for (int i = 0; i < 6; ++i) {
        QWidget* page = PicZDTime[size_t(kHelpTab[i])];
        ImgHelp << addImage(page, IndexedName("ImgHelp", i), QRect(kHelpAt[i], QSize(28, 28)), ButtonSize::HelpIcon,
                            [this, i] { ImgHelp_Click(i); });
        ImgHelp.last().image->raise();
        txtTip << addHelpTip(IndexedName("txtTip", i), {40, 120, kPageWidth - 80, 150}, page);
    }

    TxtSRead = new QLineEdit(QStringLiteral("0"), this);
    TxtSRead->setObjectName(QStringLiteral("TxtSRead"));
    TxtSRead->hide();
    connect(TxtSRead, &QLineEdit::textChanged, this, [this] { decodeOptions(); });
    TxtSReadPPd = new QLineEdit(QStringLiteral("0"), this);
    TxtSReadPPd->setObjectName(QStringLiteral("TxtSReadPPd"));
    TxtSReadPPd->hide();
    connect(TxtSReadPPd, &QLineEdit::textChanged, this, [this] { decodeBelt(); });
}

void Other::buildButtons()
{
    LbLCssdS = addLabel(QStringLiteral("LbLCssdS"), QString(), {20, kStatusTop, kPageWidth, 28});
    LbLCssdS->setStyleSheet(QStringLiteral("font-weight: bold;"));
    LbLCssdS->hide();
    LblTzxxTip = addLabel(QStringLiteral("LblTzxxTip"), QString(), {20, kStatusTop, kPageWidth, 28});
    LblTzxxTip->setStyleSheet(QStringLiteral("font-weight: bold;"));

    ImageZDTime = addImageButton(this, QStringLiteral("ImageZDTime"), QStringLiteral("LblZDTime"),
                                 {20, kButtonsTop, 140, 34}, ButtonSize::Small, QString(), [this] { openZDTime(); });
    ImgHard = addImageButton(this, QStringLiteral("ImgHard"), QStringLiteral("lblHard"), {170, kButtonsTop, 120, 34},
                             ButtonSize::Small, QString(), [this] { openFactory(); });
    ImgHard.setVisible(false);
    ImgBdOk = addImageButton(this, QStringLiteral("ImgBdOk"), QStringLiteral("lblBdOk"), {380, kButtonsTop, 110, 34},
                             ButtonSize::Small, QString(), [this] { okClicked(); });
    cmdDefault = addImageButton(this, QStringLiteral("cmdDefault"), QStringLiteral("lblDefault"),
                                {500, kButtonsTop, 120, 34}, ButtonSize::Small, QString(), [this] { defaultClicked(); });
    ImgReturn = addImageButton(this, QStringLiteral("ImgReturn"), QStringLiteral("lblReturn"),
                               {kFormWidth - 130, kButtonsTop, 110, 34}, ButtonSize::Small, QString(),
                               [this] { returnClicked(); });
}

void Other::loadCaptions()
{
    const QString title = LangText(QStringLiteral("LANPLCFORM"), QStringLiteral("PLC006"), QStringLiteral("系统功能设定"));
    setWindowTitle(title);
    lblFormTitle->setText(title);
    ImgBd[0].setText(text("OTHER001", "电铃设定"));
    ImgBd[1].setText(text("OTHER002", "骨料上料选择"));
    ImgBd[2].setText(text("OTHER003", "拌缸功能设定"));
    ImgBd[3].setText(text("OTHER004", "除尘功能控制"));
    ImgBd[4].setText(text("OTHER005", "成品储存斗"));
    for (int k = 0; k < int(std::size(kPairs)); ++k) {
        const PairRow& r = kPairs[k];
        LblTzfs[r.head]->setText(text(r.headKey, r.headText));
        pairs_[k].one->setText(text(r.oneKey, r.oneText));
        pairs_[k].zero->setText(text(r.zeroKey, r.zeroText));
    }
    for (int i = 0; i < 6; ++i)
        LblCansd[i < 5 ? i : 6]->setText(text(kTimes[i].key, kTimes[i].caption));
    LblCansd[5]->setText(text("OTHER029", "开启监视窗口"));

    static constexpr const char* kHelp[6][4] = {
        {"OTHER034", "延时响铃时间：每车最后一盘搅拌完成,拌缸卸料门关闭,再延时设定的时间后才响铃。", "OTHER035",
         "持续响铃时间：响铃持续的时间。[关闭]"},
        {"OTHER036", "自动上料：系统在半自动状态时，选择自动上料时各种骨料计量完成后自动卸料将骨料送往过渡仓。", "OTHER037",
         "暂停上料：各种骨料计量完成后将进入等待状态，操作平皮带启动按钮后开始卸料将骨料送往过渡仓。[关闭]"},
        {"OTHER038", "平皮带卸料延时停止时间：系统在最后一个骨料秤卸料结束后开始延时,延时到此设定时间,平皮带停止。",
         "OTHER039", "过渡仓接料延时时间：平皮带停止后开始延时,延时到此设定时间,系统界面显示过渡仓接料完成信号。[关闭]"},
        {"OTHER040",
         "普通生产模式时：搅拌时间计时方式可以进行选择:可以选择过渡仓骨料投料完成开始计算搅拌时间或全部物料投料完成开始计算搅拌时间。",
         "OTHER041", "高铁或管桩生产模式时：物料开始投入搅拌缸后，即开始计算搅拌时间。[关闭]"},
        {"OTHER042",
         "平皮带工作方式选择：选择生产时连续工作，在生产时当前任务单中平皮带会连续运行，当前任务单完成时平皮带停止运行，"
         "新任务单骨料秤放料时平皮带继续连续运行? ",
         "OTHER043", "选择送料时启动工作，在骨料秤放料时平皮带才会运行，当骨料秤放完料后平皮带停止运行。    [关闭] "},
        {"OTHER044", "拌缸卸料后成品储存斗延时卸料时间： 成品储存斗选择联动，拌缸开始卸料后，经此设定时间后成品储存斗自动进行卸料?[关闭]",
         nullptr, nullptr},
    };
    for (int i = 0; i < 6; ++i) {
        QString t = text(kHelp[i][0], kHelp[i][1]);
        if (kHelp[i][2])
            t += QLatin1Char('\n') + text(kHelp[i][2], kHelp[i][3]);
        txtTip[i]->setText(t);
    }

    lblFengJi->setText(text("OTHER045", "风机点动调试按钮："));
    lblFengJiHint->setText(text("OTHER046", "按钮按住不放时,风机开启,放开按钮则风机关闭."));
    lblChuChen->setText(text("OTHER047", "除尘阀点动调试按钮："));
    lblChuChenHint->setText(text("OTHER048", "按钮按住不放时,除尘阀开启,放开按钮则除尘阀关闭."));
    ImageFengJiState.setText(text("OTHER049", "刷新运行状态"));
    ImageZDTime.setText(text("OTHER054", "振动时间设定"));
    ImgHard.setText(text("OTHER055", "出厂设置"));

    ImgBdOk.setText(ComText(QStringLiteral("COM001"), QStringLiteral("确 定")));
    cmdDefault.setText(ComText(QStringLiteral("COM006"), QStringLiteral("初始化参数")));
    cmdDefault.image->setToolTip(ComText(QStringLiteral("COM027"), QStringLiteral("设置出厂默认的经验值")));
    ImgReturn.setText(ComText(QStringLiteral("COM003"), QStringLiteral("返 回")));

    // The bit of the additive selection counts the mixing time: its captions are replaced, not looked up.
    if (LangNo == 2) {
        LblTzfs[2]->setText(QStringLiteral("Choice of mixing time accounting method"));
        Check1[6]->setText(QStringLiteral("All of material are discharged and it comes to account mixing time"));
        Check1[7]->setText(QStringLiteral("Discharge of transition hopper completed and it comes to account mixing time"));
    } else {
        LblTzfs[2]->setText(QStringLiteral("搅拌时间计时方式选择:"));
        Check1[6]->setText(QStringLiteral("全部物料投料完成开始计算搅拌时间"));
        Check1[7]->setText(QStringLiteral("过渡仓骨料投料完成开始计算搅拌时间"));
    }
}

// ---- tabs, help, activation ----

void Other::showEvent(QShowEvent* e)
{
    FormBase::showEvent(e);
    CurrentForm = objectName();
    SelectTab(CurrentTab > 0 ? CurrentTab : 0);
}

void Other::SelectTab(int tab)
{
    for (int i = 0; i < 5; ++i)
        PicZDTime[size_t(i)]->setVisible(i == tab);
    FormBase::selectTab(ImgBd, tab);
    for (int i = 0; i < 5; ++i)
        setTextColor(ImgBd[i].caption, i == tab ? QColor(0, 0, 0xC0) : QColor(0x40, 0x40, 0x40));
    const bool times = tab == 0 || tab == 1 || tab == 4;
    ImgBdOk.setVisible(times);
    cmdDefault.setVisible(times);
}

void Other::ImgBd_Click(int index)
{
    LblTzxxTip->hide();
    LbLCssdS->hide();
    SelectTab(index);
    if (index == 3)
        ReadOutputs();
    CurrentTab = index;
}

void Other::ImgHelp_Click(int index)
{
    for (QLabel* tip : txtTip)
        tip->hide();
    txtTip[index]->show();
    txtTip[index]->raise();
}

void Other::EnableBellTimes(bool on)
{
    for (int i : {0, 1}) {
        LblCansd[i]->setEnabled(on);
        TxtDCansd[i]->setEnabled(on);
    }
}

void Other::EnableMonitorTime(bool on)
{
    LblCansd[4]->setEnabled(on);
    TxtDCansd[4]->setEnabled(on);
}

// ---- options ----

void Other::decodeOptions()
{
    if (TxtSRead->text().isEmpty()) {
        TxtSRead->setText(QStringLiteral("0"));
        return;
    }
    if (TxtSRead->text().size() != 4)
        return;
    CheckArmed = false;
    auto show = [this](int bit) {
        for (const Pair& p : pairs_)
            if (!p.belt && p.bit == bit) {
                p.one->setChecked(OptionBit[bit] == QLatin1String("1"));
                p.zero->setChecked(OptionBit[bit] == QLatin1String("0"));
            }
    };
    spreadBits(hexDigit(TxtSRead->text(), true), OptionBit, 0);
    show(3);
    show(2);
    show(1);
    EnableBellTimes(OptionBit[1] == QLatin1String("0"));
    spreadBits(hexDigit(TxtSRead->text(), false), OptionBit, 4);
    show(7);
    show(6);
    show(4);
    EnableMonitorTime(OptionBit[4] == QLatin1String("0"));
    CheckArmed = true;
}

void Other::decodeBelt()
{
    if (TxtSReadPPd->text().isEmpty()) {
        TxtSReadPPd->setText(QStringLiteral("0"));
        return;
    }
    if (TxtSReadPPd->text().size() != 4)
        return;
    CheckArmed = false;
    spreadBits(hexDigit(TxtSReadPPd->text(), true), BeltBit, 0);
    spreadBits(hexDigit(TxtSReadPPd->text(), false), BeltBit, 4);
    CheckPPd[0]->setChecked(BeltBit[4] == QLatin1String("1"));
    CheckPPd[1]->setChecked(BeltBit[4] == QLatin1String("0"));
    CheckArmed = true;
}

void Other::optionClicked(QCheckBox* box)
{
    if (!CheckArmed)
        return;
    const auto it = std::find_if(pairs_.cbegin(), pairs_.cend(), [box](const Pair& p) { return p.one == box || p.zero == box; });
    if (it == pairs_.cend())
        return;
    const Pair& p = *it;
    QCheckBox* partner = box == p.one ? p.zero : p.one;
    QStringList& bits = p.belt ? BeltBit : OptionBit;
    // The pair is a two-way switch: never both ticked, never both empty.
    QCheckBox* ticked = box->isChecked() ? box : partner;
    partner->setChecked(ticked == partner);
    bits[p.bit] = ticked == p.one ? QStringLiteral("1") : QStringLiteral("0");
    // The box left ticked decides, also when the operator unticked its partner: the times follow the mode.
    if (ticked == Check1[2] || ticked == Check1[3])
        EnableBellTimes(ticked == Check1[3]);
    if (ticked == Check1[8] || ticked == Check1[9])
        EnableMonitorTime(ticked == Check1[9]);
    // The neighbours' digits go back as they were read: the slot itself is not updated by a write.
    QLineEdit* slot = p.belt ? TxtSReadPPd : TxtSRead;
    WriteData = nibble(bits, 0) + Mid(Trim(slot->text()), 2, 2) + nibble(bits, 4);
    LbLCssdS->hide();
    if (WriteData.size() == 4 && CheckArmed) {
        SendFlag = true;
        StepNo = 25;
        const QString frame = GetWrite_TSCMXY(QLatin1String(p.belt ? kOtherOptions : kSystemOptions), WriteData, 4);
        send_recieve(frame);
        if (!p.belt)
            LblTzxxTip->setText(text("OTHER056", "正在系统功能设定,请稍候......"));
        setTextColor(LblTzxxTip, QColor(0xFF, 0, 0));
        return;
    }
    writeFailed();
}

// The image was never read: its middle digits are missing and nothing can be sent. The box comes once
// for each new value, not again for a repeat of the same.
void Other::writeFailed()
{
    if (WriteData.size() != 2 || WriteData == lastFailure_)
        return;
    lastFailure_ = WriteData;
    ShowLinkFaultBox();
}

// ---- the entries ----

void Other::showFactoryEntry() { ImgHard.setVisible(true); }

void Other::openFactory()
{
    if (!Forms::load(QStringLiteral("Factory")))
        return;
    unloadLater();
    Forms::show(QStringLiteral("Factory"));
}

void Other::openZDTime()
{
    if (!Forms::load(QStringLiteral("ZDTime")))
        return;
    Forms::show(QStringLiteral("ZDTime"));
    hide();
}
