// The calibration forms as the operator meets them: their layout, captions and pictures. The procedures
// are in yi_biao_procedure.cpp, the option tab in yi_biao_options.cpp.
#include "calibration/yi_biao.h"
#include "calibration/yi_biao_support.h"

#include "common/module1.h"
#include "common/own_text.h"
#include "common/form_access.h"
#include "common/lang.h"
#include "common/scale_table.h"
#include "shell/key_filter.h"

#include <QCheckBox>
#include <QFrame>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>

using namespace calform;

namespace {
constexpr int kFormWidth = 660;
constexpr int kPageTop = 100;
constexpr QSize kPageSize(640, 330);

// Our own artwork: the hopper empty, the hopper with a test weight, and a meter for the current variant.
enum class Art { Empty, Loaded, Meter };
QPixmap artwork(Art art)
{
    QPixmap pm(150, 170);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor steel(90, 110, 140), light(214, 224, 238);
    if (art == Art::Meter) {
        p.setBrush(light);
        p.setPen(QPen(steel, 3));
        p.drawEllipse(QRectF(15, 25, 120, 120));
        p.setPen(QPen(QColor(200, 40, 40), 3, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(75, 85), QPointF(110, 50));
        QFont f = p.font();
        f.setPixelSize(30);
        f.setBold(true);
        p.setFont(f);
        p.setPen(steel);
        p.drawText(QRectF(15, 90, 120, 40), Qt::AlignCenter, QStringLiteral("A"));
        return pm;
    }
    // hangers and load cells
    p.setPen(QPen(steel, 2));
    p.drawLine(25, 5, 25, 30);
    p.drawLine(125, 5, 125, 30);
    p.setBrush(QColor(230, 170, 40));
    p.drawRect(18, 28, 14, 10);
    p.drawRect(118, 28, 14, 10);
    QPainterPath hopper;
    hopper.moveTo(10, 40);
    hopper.lineTo(140, 40);
    hopper.lineTo(140, 100);
    hopper.lineTo(90, 150);
    hopper.lineTo(60, 150);
    hopper.lineTo(10, 100);
    hopper.closeSubpath();
    p.setBrush(light);
    p.setPen(QPen(steel, 3));
    p.drawPath(hopper);
    p.drawRect(60, 150, 30, 14);
    if (art == Art::Loaded) {
        p.setBrush(QColor(70, 80, 95));
        p.setPen(Qt::NoPen);
        QPainterPath weight;
        weight.addRoundedRect(QRectF(45, 62, 60, 44), 6, 6);
        p.drawPath(weight);
        p.setPen(Qt::white);
        QFont f = p.font();
        f.setPixelSize(18);
        f.setBold(true);
        p.setFont(f);
        p.drawText(QRectF(45, 62, 60, 44), Qt::AlignCenter, QStringLiteral("kg"));
    }
    return pm;
}

// A small picture of the display unit beside the values.
QPixmap displayPicture()
{
    QPixmap pm(80, 60);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(QColor(60, 70, 85));
    p.setPen(Qt::NoPen);
    p.drawRoundedRect(QRectF(2, 2, 76, 56), 8, 8);
    p.setBrush(QColor(120, 220, 120));
    p.drawRoundedRect(QRectF(10, 10, 60, 22), 3, 3);
    p.setBrush(QColor(220, 90, 70));
    p.drawEllipse(QRectF(14, 38, 12, 12));
    p.setBrush(QColor(230, 200, 60));
    p.drawEllipse(QRectF(34, 38, 12, 12));
    return pm;
}

QLabel* valueBox(QWidget* parent, const QString& objectName, const QRect& geometry)
{
    auto* l = new QLabel(parent);
    l->setObjectName(objectName);
    l->setGeometry(geometry);
    l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    l->setStyleSheet(QStringLiteral("QLabel { background: #10202c; color: #6fe36f; border-radius: 4px; "
                                    "padding-right: 8px; font-size: 20px; font-weight: bold; }"));
    return l;
}
}  // namespace

// ---- what both calibration forms share ----

CalibrationForm::CalibrationForm(const QString& formName) : FormBase(formName) {}

QString CalibrationForm::text(const char* key, const char* deflt) const
{
    return LangText(section(), QLatin1String(key), QString::fromUtf8(deflt));
}

int CalibrationForm::decimals() const
{
    if (ScaleNo < 0 || ScaleNo > 15)
        return 0;
    return std::clamp<int>(ScaleDecimals[size_t(ScaleNo)], 0, 2);
}

void CalibrationForm::buildForm()
{

    LblBceng = addTitle(QStringLiteral("LblBceng"), QString(), {0, 10, kFormWidth, 36}, 20);
    ImageExit = addExitImage(QStringLiteral("ImageExit"), {kFormWidth - 44, 10});

    for (int i = 0; i < 3; ++i)
        ImgBd << addTab(this, IndexedName("ImgBd", i), IndexedName("LblBd", i), {20 + 126 * i, 56, 120, 34}, QString(),
                        [this, i] { tabClicked(i); });

    for (int i = 0; i < 2; ++i) {
        PicYiBiao[i] = addPanel(this, IndexedName("PicYiBiao", i), QRect(QPoint(10, kPageTop), kPageSize));
        addHoverSurface(PicYiBiao[i]);
    }
    QWidget* p = PicYiBiao[1];
    ImageZero = addLabel(QStringLiteral("ImageZero"), QString(), {20, 20, 150, 170}, p);
    ImageZero->setPixmap(artwork(Art::Empty));
    ImageWeight = addLabel(QStringLiteral("ImageWeight"), QString(), {20, 20, 150, 170}, p);
    ImageWeight->setPixmap(artwork(Art::Loaded));
    ImageWeight->hide();

    for (int i = 0; i < 2; ++i) {
        LblCansd[i] = addLabel(IndexedName("LblCansd", i), QString(), {180, 24 + 46 * i, 140, 28}, p);
        LblCansd[i]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    LbLADv = valueBox(p, QStringLiteral("LbLADv"), {330, 20, 150, 36});
    LblZLv = valueBox(p, QStringLiteral("LblZLv"), {330, 66, 150, 36});
    lblFmzLUnit2 = addLabel(QStringLiteral("lblFmzLUnit2"), QStringLiteral("Kg"), {488, 70, 40, 28}, p);
    ImgHelpLarge = addImage(p, QStringLiteral("ImgHelpLarge(2)"), {488, 24, 28, 28}, ButtonSize::HelpIcon, [this] {
        static const char* const kLines[][2] = {
            {"YIBIAO039", "AD信号值相关说明：             [关闭]"},
            {"YIBIAO040", "模拟和数字信号的计算方法："},
            {"YIBIAO041", "传感器反馈信号(mV)应该等于："},
            {"YIBIAO042", "20mV÷传感器载荷量×实际载荷重量"},
            {"YIBIAO043", "数字信号的计算方法："},
            {"YIBIAO044", "在变送器SPAN接线端子⑾⑿短接的情况下："},
            {"YIBIAO045", "数字信号值≈传感器反馈信号值(mV)×800"},
            {"YIBIAO050", "变送器SPAN接线端子⑾⑿⒀不接线的情况下："},
            {"YIBIAO051", "数字信号值≈传感器反馈信号值(mV)×1600"},
            {"YIBIAO037", "通过上述计算方法可分析和判断"},
            {"YIBIAO038", "称重系统的硬件和线路是否正常"},
        };
        QStringList lines;
        for (const auto& l : kLines)
            lines << LangText(QStringLiteral("LANYIBIAOFORM"), QLatin1String(l[0]), QString::fromUtf8(l[1]));
        showHelp(txtTipLarge, lines.join(QLatin1Char('\n')));
    });
    Image2 = addLabel(QStringLiteral("Image2"), QString(), {548, 30, 80, 60}, p);
    Image2->setPixmap(displayPicture());

    Picbz = new QFrame(p);
    Picbz->setObjectName(QStringLiteral("Picbz"));
    Picbz->setGeometry(180, 112, 440, 44);
    Picbz->setMouseTracking(true);
    Picbz->installEventFilter(this);
    lblFmzL = addLabel(QStringLiteral("lblFmzL"), QString(), {0, 8, 140, 28}, Picbz);
    lblFmzL->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    TxtFmzL = new QLineEdit(Picbz);
    TxtFmzL->setObjectName(QStringLiteral("TxtFmzL"));
    TxtFmzL->setGeometry(150, 6, 150, 32);
    TxtFmzL->setAlignment(Qt::AlignRight);
    TxtFmzL->installEventFilter(this);
    RestrictKeys(TxtFmzL, QStringLiteral("1234567890."), true);
    connect(TxtFmzL, &QLineEdit::textChanged, this, [this](const QString& t) {
        if (t.startsWith(QLatin1Char('.')))
            TxtFmzL->setText(QLatin1Char('0') + t);
    });
    lblFmzLUnit = addLabel(QStringLiteral("lblFmzLUnit"), QStringLiteral("Kg"), {308, 8, 40, 28}, Picbz);
    p->setMouseTracking(true);
    p->installEventFilter(this);

    lblBiaoZero = addLabel(QStringLiteral("lblBiaoZero"), QString(), {20, 196, 600, 66}, p);
    lblBiaoZero->setWordWrap(true);
    lblBiaoZero->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setTextColor(lblBiaoZero, QColor(0x17, 0x40, 0x7a));
    LbLBLwc = addLabel(QStringLiteral("LbLBLwc"), QString(), {20, 276, 600, 32}, p);
    LbLBZwc = addLabel(QStringLiteral("LbLBZwc"), QString(), {20, 276, 600, 32}, p);
    for (QLabel* l : {LbLBLwc, LbLBZwc}) {
        l->setStyleSheet(QStringLiteral("font-size: 16px; font-weight: bold;"));
        l->hide();
    }

    const int buttonsTop = kPageTop + kPageSize.height() + 14;
    ImgBdOk = addImageButton(this, QStringLiteral("ImgBdOk"), QStringLiteral("lblBdOk"), {430, buttonsTop, 96, 32},
                             ButtonSize::Small, QString(), [this] { okClicked(); });
    ImgReturn = addImageButton(this, QStringLiteral("ImgReturn"), QStringLiteral("lblReturn"),
                               {540, buttonsTop, 96, 32}, ButtonSize::Small,
                               ComText(QStringLiteral("COM003"), QStringLiteral("返回")), [this] { returnClicked(); });
    txtTipLarge = addHelpTip(QStringLiteral("txtTipLarge"), {80, 0, 440, 290});

    TxtFm = new QLineEdit(this);
    TxtFm->setObjectName(QStringLiteral("TxtFm"));
    TxtFm->hide();
    txtBCSuccessRead = new QLineEdit(this);
    txtBCSuccessRead->setObjectName(QStringLiteral("txtBCSuccessRead"));
    txtBCSuccessRead->hide();
    connect(txtBCSuccessRead, &QLineEdit::textChanged, this, [this] { statusChanged(); });
    TxtSRead = new QLineEdit(this);
    TxtSRead->setObjectName(QStringLiteral("TxtSRead"));
    TxtSRead->hide();
    setFixedSize(kFormWidth, buttonsTop + 32 + 16);
}

void CalibrationForm::showEvent(QShowEvent* e)
{
    LoadSysData();  // the operator's name for the records
    FormBase::showEvent(e);
}

// ---- YIBiao: the weight form, with the option tab and the current variant ----

YIBiao::YIBiao() : CalibrationForm(QStringLiteral("YIBiao"))
{
    current_ = IsCurrentCal;
    buildForm();
    buildOptionPage();
    LoadCaptions();

    const int d = decimals();
    const QString zeros(std::max(0, 2 - d), QLatin1Char('0'));
    TxtFmzL->setToolTip(current_ ? QStringLiteral("Input Range:(1-400)")
                                 : ComText(QStringLiteral("COM023"), QStringLiteral("输入范围为:")) +
                                       QStringLiteral("(1-300") + zeros + QStringLiteral("kg)"));
    PrepareEntry();
    LblBceng->setText(ScaleTitle + text("YIBIAO001", "调校"));
    TxtSRead->setText(QStringLiteral("0"));
    setTopMost(true);

    if (current_) {
        ImgBd[0].setVisible(false);
        tabClicked(1);
        return;
    }
    SelectTab(0);
    ShowStepHint();
    ReadOptions();
}

void YIBiao::LoadCaptions()
{
    ImgBd[0].setText(text("YIBIAO002", "调校选项"));
    ImgBd[1].setText(text("YIBIAO003", "零位调校"));
    ImgBd[2].setText(text("YIBIAO004", "分度调校"));
    LblCansd[0]->setText(text("YIBIAO005", "AD信号值:"));
    LblCansd[1]->setText(text("YIBIAO006", "重量显示值:"));
    lblFmzL->setText(text("YIBIAO007", "砝码重量:"));
    ImgBdOk.setText(text("YIBIAO008", "确 定"));
    texts.askZero = text("YIBIAO012", "确定要进行零位调校吗?");
    texts.busyZero = text("YIBIAO013", "正在零位调校，请稍候......");
    texts.doneZero = text("YIBIAO014", "零位调校完成，请再进行实际验秤!");
    texts.refusedZero = text("YIBIAO015", "零位调校失败，请重新调校!");
    texts.errorZero = text("YIBIAO016", "零位调校出错，请重新调校!");
    texts.askSpan = text("YIBIAO018", "确定要称量分度调校吗?");
    texts.busySpan = text("YIBIAO019", "正在称量分度调校，请稍候......");
    texts.doneSpan = text("YIBIAO020", "分度调校完成，请再进行实际验秤!");
    texts.refusedSpan = text("YIBIAO021", "分度调校失败，请重新调校!");
    texts.errorSpan = text("YIBIAO025", "分度调校出错，请重新调校!");
    Check1[0]->setText(text("YIBIAO026", "普通方式"));
    Check1[1]->setText(text("YIBIAO027", "校验方式"));
    Check2[0]->setText(ComText(QStringLiteral("COM014"), QStringLiteral("关闭")));
    Check2[1]->setText(ComText(QStringLiteral("COM015"), QStringLiteral("开启")));
    LblTzxxZeroNote->setText(
        text("YIBIAO028", "说明：开启时，重量显示值在5个分度值内将被跟踪到零，此功能一经设定将对所有电子秤起作用。"));
    LblTzxxZeroTip->setText(OwnText::tr("零位跟踪功能已更改！"));
}

void YIBiao::buildOptionPage()
{
    QWidget* p = PicYiBiao[0];
    auto group = [p](int i, const QRect& r) {
        auto* f = new QFrame(p);
        f->setObjectName(IndexedName("FraTzfs", i));
        f->setGeometry(r);
        f->setStyleSheet(QStringLiteral("QFrame#FraTzfs\\(%1\\) { border: 1px solid #c5d3e6; border-radius: 6px; }").arg(i));
        return f;
    };
    QFrame* mode = group(0, {20, 20, 600, 110});
    QFrame* track = group(1, {20, 146, 600, 166});
    for (int i = 0; i < 2; ++i) {
        Check1[i] = new QCheckBox(mode);
        Check1[i]->setObjectName(IndexedName("Check1", 10 + i));
        Check1[i]->setGeometry(24 + 170 * i, 16, 160, 30);
        connect(Check1[i], &QCheckBox::clicked, this, [this, i](bool on) { modeClicked(i, on); });
        Check2[i] = new QCheckBox(track);
        Check2[i]->setObjectName(IndexedName("Check2", i));
        Check2[i]->setGeometry(24 + 170 * i, 16, 160, 30);
        connect(Check2[i], &QCheckBox::clicked, this, [this, i](bool on) { trackClicked(i, on); });
    }
    txtTip = addHelpTip(QStringLiteral("txtTip"), {80, 33, 500, 150});
    ImgHelp[0] = addImage(mode, IndexedName("ImgHelp", 0), {380, 17, 28, 28}, ButtonSize::HelpIcon, [this] {
        showHelp(txtTip, text("YIBIAO034", "校验方式：零位调校和分度调校时系统根据所输入的传感器配置和实测的信号值进行校验，"
                                           "如果不在规定的范围内则不允许进行调校并进行提示。") +
                             QLatin1Char('\n') +
                             text("YIBIAO035", "普通方式：采用普通调校方式进行调校系统不进行信号的比较和校验。[关闭]"));
    });
    ImgHelp[1] = addImage(track, IndexedName("ImgHelp", 1), {380, 17, 28, 28}, ButtonSize::HelpIcon, [this] {
        showHelp(txtTip,
                 text("YIBIAO028", "说明：开启时，重量显示值在5个分度值内将被跟踪到零，此功能一经设定将对所有电子秤起作用。") +
                     QLatin1Char('\n') +
                     text("YIBIAO033", "调校之前,零位跟踪功能需关闭,以免影响到调校的准确性,全部调校完成之后再开启![关闭]"));
    });
    LblTzxxTip = addLabel(QStringLiteral("LblTzxxTip"), QString(), {24, 64, 560, 30}, mode);
    LblTzxxTip->hide();
    LblTzxxZeroNote = addLabel(QStringLiteral("LblTzxxZeroNote"), QString(), {24, 54, 560, 56}, track);
    LblTzxxZeroNote->setWordWrap(true);
    setTextColor(LblTzxxZeroNote, QColor(0x50, 0x50, 0x50));
    LblTzxxZeroTip = addLabel(QStringLiteral("LblTzxxZeroTip"), QString(), {24, 118, 560, 30}, track);
    LblTzxxZeroTip->hide();
    for (QLabel* l : {LblTzxxTip, LblTzxxZeroTip})
        l->setStyleSheet(QStringLiteral("font-weight: bold;"));

    txtTzxxRead = new QLineEdit(this);
    txtTzxxRead->setObjectName(QStringLiteral("txtTzxxRead"));
    txtTzxxRead->hide();
    connect(txtTzxxRead, &QLineEdit::textChanged, this, [this] { switchWordRead(false); });
    txtTzxxZeroRead = new QLineEdit(this);
    txtTzxxZeroRead->setObjectName(QStringLiteral("txtTzxxZeroRead"));
    txtTzxxZeroRead->hide();
    connect(txtTzxxZeroRead, &QLineEdit::textChanged, this, [this] { switchWordRead(true); });
}

void YIBiao::ShowStepHint()
{
    CalibrationForm::ShowStepHint();
    if (ZeroMode)
        lblBiaoZero->setText(text("YIBIAO009", "确定秤斗在空载状态下，等待信号稳定后操作{确定}键进行零位调校。"));
    else if (SpanMode)
        lblBiaoZero->setText(text("YIBIAO010", "将不小于该秤最大量程50%的标准砝码置于承载器上,输入所置砝码重量，"
                                               "等待信号稳定后操作{确定}键进行称量分度间距调校。"));
    if (!current_)
        return;
    lblBiaoZero->hide();
    ImageZero->setPixmap(artwork(Art::Meter));
    ImageWeight->setPixmap(artwork(Art::Meter));
    Image2->hide();
    lblFmzLUnit->setText(QStringLiteral("A"));
    lblFmzLUnit2->setText(QStringLiteral("A"));
    ImgHelpLarge.setVisible(false);
    // Chosen by the language number, not by the language file.
    lblFmzL->setText(LangNo == 2 ? QStringLiteral("Please input current fact value") : QStringLiteral("请输入实测电流值:"));
    LblCansd[1]->setText(LangNo == 2 ? QStringLiteral("Current value:") : QStringLiteral("电流显示值:"));
}
