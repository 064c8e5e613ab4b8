#include "plant/yi_biao_advance.h"

#include "common/form_access.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/vbtext.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "plant/plant_blocks.h"
#include "shell/key_filter.h"

#include <QCheckBox>
#include <QEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <cmath>

namespace {
constexpr int kFormWidth = 740;
constexpr int kPageTop = 96;
constexpr QSize kPageSize(720, 340);
const QString kDecelRange = PlantBlocks::rangeText(QLatin1String(kHoistPulses), 3);
const QRect kRailArea(250, 40, 250, 270);
const QSize kSkipSize(44, 36);

// The figure works in the panel's twips: the skip's corner runs from the receive position (4260, 3450)
// to the discharge position (6260, 1050) in 40 steps.
QPoint skipAt(long long q) { return {int(std::lround((q * 50 + 4260) / 15.0)), int(std::lround((3450 - q * 60) / 15.0))}; }

// Our own artwork: the inclined track with the receive pit at its foot and the discharge chute at its head.
QPixmap railPicture()
{
    QPixmap pm(kRailArea.size());
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    // Centres of the skip at the ends of its travel and at the wait position, on this picture.
    const QPointF off(-kRailArea.left() + kSkipSize.width() / 2.0, -kRailArea.top() + kSkipSize.height() / 2.0);
    const QPointF low = QPointF(skipAt(0)) + off, high = QPointF(skipAt(40)) + off;
    const QPointF wait = QPointF(skipAt(16)) + off;
    const QPointF along = (high - low) / std::hypot(high.x() - low.x(), high.y() - low.y());
    const QPointF wheels(0, 17), lower(5, 9);
    const QPointF a0 = low + wheels - along * 30, a1 = high + wheels + along * 25;
    const QColor steel(90, 110, 140), light(214, 224, 238);
    const double ground = kRailArea.height() - 6;
    // legs under the track
    p.setPen(QPen(steel, 3));
    for (double t : {0.3, 0.65, 1.0}) {
        const QPointF at = a0 + lower + (a1 - a0) * t;
        p.drawLine(at, QPointF(at.x(), ground));
    }
    p.drawLine(QPointF(a0.x() - 40, ground), QPointF(kRailArea.width() - 4, ground));
    // the track: the rail the wheels run on and its guide
    p.setPen(QPen(steel, 4, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(a0, a1);
    p.drawLine(a0 + lower, a1 + lower);
    // receive pit at the foot, discharge chute at the head
    p.setBrush(light);
    p.setPen(QPen(steel, 2));
    p.drawPolygon(QPolygonF({low + QPointF(-34, 28), low + QPointF(30, 28), low + QPointF(20, 46), low + QPointF(-24, 46)}));
    p.drawPolygon(QPolygonF({high + QPointF(22, 14), high + QPointF(56, 14), high + QPointF(46, 54), high + QPointF(32, 54)}));
    // the wait position: a small flag beside the track
    const QPointF flag = wait + QPointF(-30, 0);
    p.setPen(QPen(QColor(200, 120, 20), 2));
    p.drawLine(flag + QPointF(0, 14), flag + QPointF(0, -10));
    p.setBrush(QColor(230, 160, 40));
    p.drawPolygon(QPolygonF({flag + QPointF(0, -10), flag + QPointF(14, -5), flag + QPointF(0, 0)}));
    return pm;
}

QPixmap skipPicture()
{
    QPixmap pm(kSkipSize);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    QPainterPath bucket;
    bucket.moveTo(3, 6);
    bucket.lineTo(41, 6);
    bucket.lineTo(35, 28);
    bucket.lineTo(9, 28);
    bucket.closeSubpath();
    p.setBrush(QColor(230, 170, 40));
    p.setPen(QPen(QColor(120, 80, 10), 2));
    p.drawPath(bucket);
    p.setBrush(QColor(60, 70, 85));
    p.setPen(Qt::NoPen);
    p.drawEllipse(QRectF(8, 27, 8, 8));
    p.drawEllipse(QRectF(28, 27, 8, 8));
    return pm;
}

void setTextColor(QLabel* l, const QColor& c)
{
    QPalette p = l->palette();
    p.setColor(QPalette::WindowText, c);
    l->setPalette(p);
}

QLabel* valueBox(QWidget* parent, const QString& name, const QRect& geometry)
{
    auto* l = new QLabel(parent);
    l->setObjectName(name);
    l->setGeometry(geometry);
    l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    l->setStyleSheet(QStringLiteral("QLabel { background: #10202c; color: #6fe36f; border-radius: 4px; "
                                    "padding-right: 8px; font-size: 16px; font-weight: bold; }"));
    return l;
}

// Four characters for what the operator types or pastes; a count the form shows (a negative read) is
// shown whole.
constexpr int kMaxTyped = 4;
bool typedBeyondLimit(const QLineEdit* box, const QKeyEvent* e)
{
    const QString t = e->text();
    return !t.isEmpty() && t.front().isPrint() && box->text().size() - box->selectedText().size() >= kMaxTyped;
}

bool ask(const QString& question)
{
    MbText = question;
    MbIsOk = false;
    MbIsError = false;
    ShowMbQuestion();
    return MbResult;
}
}  // namespace

YiBiaoAdvance::YiBiaoAdvance() : FormBase(QStringLiteral("YiBiaoAdvance"))
{
    lblFormTitle = addTitle(QStringLiteral("lblFormTitle"), QString(), {0, 10, kFormWidth, 36}, 20);
    ImageExit = addExitImage(QStringLiteral("ImageExit"), {kFormWidth - 44, 10});
    for (int i = 0; i < 2; ++i) {
        ImgBd << addTab(this, IndexedName("ImgBd", i), IndexedName("LblBd", i), {20 + 126 * i, 58, 120, 34}, QString(),
                        [this, i] { tabClicked(i); });
        PicYiBiao[size_t(i)] = addPanel(this, IndexedName("PicYiBiao", i), QRect(QPoint(10, kPageTop), kPageSize));
        addHoverSurface(PicYiBiao[size_t(i)]);
    }
    buildParamPage();
    buildCalibrationPage();

    const int bottom = kPageTop + kPageSize.height() + 14;
    ImgBdStart = addImageButton(this, QStringLiteral("ImgBdStart"), QStringLiteral("lblBdStart"),
                                {kFormWidth - 370, bottom, 110, 34}, ButtonSize::Small, QString(),
                                [this] { startClicked(); });
    ImgBdCancel = addImageButton(this, QStringLiteral("ImgBdCancel"), QStringLiteral("lblBdCancel"),
                                 {kFormWidth - 250, bottom, 110, 34}, ButtonSize::Small, QString(),
                                 [this] { cancelClicked(); });
    ImgBdOk = addImageButton(this, QStringLiteral("ImgBdOk"), QStringLiteral("lblBdOk"),
                             {kFormWidth - 250, bottom, 110, 34}, ButtonSize::Small, QString(), [this] { okClicked(); });
    ImgReturn = addImageButton(this, QStringLiteral("ImgReturn"), QStringLiteral("lblReturn"),
                               {kFormWidth - 130, bottom, 110, 34}, ButtonSize::Small, QString(),
                               [this] { returnClicked(); });
    setFixedSize(kFormWidth, bottom + 34 + 16);

    txtBCSuccessRead = new QLineEdit(QStringLiteral("0"), this);
    txtBCSuccessRead->setObjectName(QStringLiteral("txtBCSuccessRead"));
    txtBCSuccessRead->hide();
    connect(txtBCSuccessRead, &QLineEdit::textChanged, this, [this] { statusChanged(); });
    txtZLv = new QLineEdit(this);
    txtZLv->setObjectName(QStringLiteral("txtZLv"));
    txtZLv->hide();
    connect(txtZLv, &QLineEdit::textChanged, this, [this] { moveFigure(); });

    // Load
    BcResultShown = true;
    loadCaptions();
    SelectHoistTab(0);
    ReadPulses();  // once: the poll runs only on the calibration tab
    move(0, 0);
    setTopMost(true);
    const QString range = ComText(QStringLiteral("COM023"), QStringLiteral("输入范围为:")) + kDecelRange;
    for (QLineEdit* box : txtPulseNum)
        box->setToolTip(range);
}

// The error texts, the range and set questions and the progress line of this form have no number in the
// language file: they read the same in every language.
QString YiBiaoAdvance::text(const char* key, const char* deflt) const
{
    return LangText(QStringLiteral("LANYIBIAOADVAFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}

void YiBiaoAdvance::buildParamPage()
{
    QWidget* p = PicYiBiao[0];
    for (int i = 0; i < 2; ++i) {
        LblDecelTitle[size_t(i)] = addLabel(IndexedName("LblDecelTitle", i), QString(), {20, 40 + 60 * i, 330, 30}, p);
        LblDecelTitle[size_t(i)]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        auto* box = new QLineEdit(p);
        box->setObjectName(IndexedName("txtPulseNum", i));
        box->setGeometry(362, 40 + 60 * i, 110, 30);
        box->setAlignment(Qt::AlignRight);
        connect(box, &QLineEdit::textEdited, box, [box](const QString& t) {
            if (t.size() > kMaxTyped)
                box->setText(t.left(kMaxTyped));
        });
        RestrictKeys(box, QStringLiteral("1234567890"));
        box->installEventFilter(this);
        txtPulseNum[size_t(i)] = box;
    }
    txtTip1 = addHelpTip(QStringLiteral("txtTip1"), {40, 150, 640, 130}, p);
    ImgHelp1 = addImage(p, QStringLiteral("ImgHelp1"), {486, 41, 28, 28}, ButtonSize::HelpIcon, [this] {
        showHelp(txtTip1, text("YIBIAOADVA045", "上升提前减速脉冲数:斗提在上升过程中,当前脉冲数≥标定得出等待位(或卸料位)的脉冲数－"
                                                "上升提前减速脉冲数时,斗提开始减速.") +
                              QLatin1Char('\n') +
                              text("YIBIAOADVA046", "下降提前减速脉冲数:斗提在下降过程中,当前脉冲数≤下降提前减速脉冲数时,"
                                                    "斗提开始减速.[关闭]"));
    });
    LbLCssdS = addLabel(QStringLiteral("LbLCssdS"), QString(), {20, 292, 600, 30}, p);
    LbLCssdS->setStyleSheet(QStringLiteral("font-weight: bold;"));
    LbLCssdS->hide();
}

void YiBiaoAdvance::buildCalibrationPage()
{
    QWidget* p = PicYiBiao[1];
    for (int i = 0; i < 5; ++i) {
        LblPulseTitle[size_t(i)] = addLabel(IndexedName("LblPulseTitle", i), QString(), {16, 10 + 52 * i, 236, 22}, p);
        LblPulseNum[size_t(i)] = valueBox(p, IndexedName("LblPulseNum", i), {16, 33 + 52 * i, 120, 24});
    }
    ImageRail = addLabel(QStringLiteral("ImageRail"), QString(), kRailArea, p);
    ImageRail->setPixmap(railPicture());
    ImageMove = addLabel(QStringLiteral("ImageMove"), QString(), QRect(skipAt(0), kSkipSize), p);
    ImageMove->setPixmap(skipPicture());
    lblBiaoZero = addLabel(QStringLiteral("lblBiaoZero"), QString(), {512, 20, 196, 270}, p);
    lblBiaoZero->setWordWrap(true);
    lblBiaoZero->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setTextColor(lblBiaoZero, QColor(0x17, 0x40, 0x7a));
    LbLBZwc = addLabel(QStringLiteral("LbLBZwc"), QString(), {16, 300, 690, 32}, p);
    LbLBZwc->setStyleSheet(QStringLiteral("font-size: 16px; font-weight: bold;"));
    LbLBZwc->hide();
    Check1 = new QCheckBox(p);
    Check1->setObjectName(QStringLiteral("Check1"));
    Check1->hide();
    simTimer_.setInterval(50);
    connect(Check1, &QCheckBox::toggled, this, [this](bool on) { on ? simTimer_.start() : simTimer_.stop(); });
}

void YiBiaoAdvance::loadCaptions()
{
    lblFormTitle->setText(text("YIBIAOADVA001", "斗提位置标定"));
    setWindowTitle(lblFormTitle->text());
    ImgBd[0].setText(text("YIBIAOADVA002", "参数设定"));
    ImgBd[1].setText(text("YIBIAOADVA003", "斗提位置标定"));
    static const char* const kTitles[5][2] = {
        {"YIBIAOADVA005", "当前脉冲数:"},
        {"YIBIAOADVA006", "标定得出接料位到等待位的脉冲数:"},
        {"YIBIAOADVA007", "标定得出接料位到卸料位的脉冲数:"},
        {"YIBIAOADVA008", "上升提前减速脉冲数:"},
        {"YIBIAOADVA014", "下降提前减速脉冲数:"},
    };
    for (int i = 0; i < 5; ++i)
        LblPulseTitle[size_t(i)]->setText(text(kTitles[i][0], kTitles[i][1]));
    LblDecelTitle[0]->setText(LblPulseTitle[3]->text());
    LblDecelTitle[1]->setText(LblPulseTitle[4]->text());
    lblBiaoZero->setText(text("YIBIAOADVA015", "确定各位置开关工作正常后,将系统置于手动状态，并且将斗提置于接料位时,"
                                               "操作{开始标定}按钮,斗提自动上升到卸料位,自动完成标定过程。"));
    ImgBdStart.setText(text("YIBIAOADVA016", "开始标定"));
    ImgBdCancel.setText(text("YIBIAOADVA017", "取消标定"));
    ImgBdOk.setText(ComText(QStringLiteral("COM001"), QStringLiteral("确 定")));
    ImgReturn.setText(ComText(QStringLiteral("COM003"), QStringLiteral("返回")));
    Check1->setText(QStringLiteral("模拟提升"));
}

void YiBiaoAdvance::showEvent(QShowEvent* e)
{
    FormBase::showEvent(e);
    CurrentForm = objectName();
}

bool YiBiaoAdvance::eventFilter(QObject* watched, QEvent* event)
{
    for (QLineEdit* box : txtPulseNum) {
        if (watched != box)
            continue;
        if (event->type() == QEvent::FocusIn)
            QTimer::singleShot(0, box, &QLineEdit::selectAll);
        else if (event->type() == QEvent::KeyPress && typedBeyondLimit(box, static_cast<QKeyEvent*>(event)))
            return true;
    }
    return FormBase::eventFilter(watched, event);
}

// ---- the counters and the tabs ----

void YiBiaoAdvance::ReadPulses()
{
    StepNo = 157;
    SendFlag = true;
    send_recieve(BuildReadFrameWords(QLatin1String(kHoistPulses), kHoistPulseWords));
    HoistPollOn = false;
}

void YiBiaoAdvance::StartPoll()
{
    ReadPulses();
    Link().Timer1.start();
}

void YiBiaoAdvance::SelectHoistTab(int tab)
{
    for (int i = 0; i < 2; ++i) {
        const bool on = i == tab;
        ImgBd[i].image->setPixmap(ButtonPicture(ButtonSize::Tab, on));
        setTextColor(ImgBd[i].caption, on ? QColor(0, 0, 0xC0) : QColor(0x40, 0x40, 0x40));
        PicYiBiao[size_t(i)]->setVisible(on);
    }
    ImgBdOk.setVisible(tab == 0);
    ImgBdStart.setVisible(tab == 1);
    ImgBdCancel.setVisible(tab == 1);
}

// The counters run only on the calibration tab, so that the poll does not overwrite what is typed on
// the parameter tab. Leaving the calibration tab stops the display, not the trip.
void YiBiaoAdvance::tabClicked(int tab)
{
    LbLCssdS->hide();
    LbLBZwc->hide();
    if (tab == 0) {
        Link().Timer1.stop();
        HoistPollOn = false;
        ReadPulses();
    } else {
        StartPoll();
    }
    SelectHoistTab(tab);
}

void YiBiaoAdvance::moveFigure()
{
    const long long span = std::llround(std::floor(Val(LblPulseNum[2]->text())));
    if (Val(LblPulseNum[2]->text()) <= 0 || span == 0)
        return;  // nothing calibrated yet: the skip stays where it is
    const long long q = std::llround(std::floor(Val(txtZLv->text()) * 40)) / span;
    ImageMove->move(skipAt(q));
}

// ---- start and cancel ----

void YiBiaoAdvance::startClicked()
{
    CalSpanDevice = QLatin1String(kHoistStartBit);
    CalBitMask = BitOperand(CalSpanDevice);
    BcStart = true;
    SendHoistCmd();
}

void YiBiaoAdvance::cancelClicked()
{
    CalSpanDevice = QLatin1String(kHoistCancelBit);
    CalBitMask = BitOperand(CalSpanDevice);
    BcStart = false;
    SendHoistCmd();
}

// The poll stops first; Timer3 sends the command up to a second later, when no read is in flight.
void YiBiaoAdvance::SendHoistCmd()
{
    if (!ask(text("YIBIAOADVA018", "确定斗提位置标定吗?")))
        return;
    Link().Timer1.stop();
    HoistPollOn = false;
    HoistCmdPending = true;
    Link().Timer3.start();
    BcResultShown = false;
}

void YiBiaoAdvance::statusChanged()
{
    QString t = txtBCSuccessRead->text();
    if (t == QLatin1String("XXX"))
        return;  // the slot's own reset
    if (t.isEmpty()) {
        txtBCSuccessRead->setText(QStringLiteral("0"));
        t = txtBCSuccessRead->text();
    }
    if (t.size() != 4)
        return;
    int d = int(Val(QStringLiteral("&H") + t.front()));
    bool done = false, failed = false;
    if (d >= 8) {
        done = true;
        d -= 8;
        if (!BcResultShown) {
            BcResultShown = true;
            setStatus(LbLBZwc,
                      BcStart ? text("YIBIAOADVA020", "提升斗标定完成!") : text("YIBIAOADVA021", "提升斗取消标定完成!"),
                      true);
        }
        ReadPulses();
    }
    if (d >= 4) {
        failed = true;
        if (!BcResultShown) {
            BcResultShown = true;
            setStatus(LbLBZwc,
                      BcStart ? text("YIBIAOADVA022", "提升斗标定失败，请重新标定!")
                              : text("YIBIAOADVA023", "提升斗取消标定失败，请重新尝试!"),
                      false);
        }
        StartPoll();
    }
    if (!done && !failed) {
        setStatus(LbLBZwc,
                  BcStart ? QStringLiteral("提升斗标定错误，请重新标定!")
                          : QStringLiteral("提升斗取消标定错误，请重新尝试!"),
                  false);
        StartPoll();
    }
    txtBCSuccessRead->setText(QStringLiteral("XXX"));
}

// ---- the deceleration distances ----

bool YiBiaoAdvance::decelInRange()
{
    QList<double> shown;
    for (const QLabel* count : LblPulseNum)
        shown << Val(count->text());
    shown[3] = Val(txtPulseNum[0]->text());
    shown[4] = Val(txtPulseNum[1]->text());
    const BlockFault fault = PlantBlocks::checkShown(QLatin1String(kHoistPulses), shown);
    if (fault.ok())
        return true;
    // A question, not an OK box: Yes takes the operator to the field.
    if (ask(fault.message))
        txtPulseNum[size_t(fault.field - 3)]->setFocus();
    return false;
}

void YiBiaoAdvance::okClicked()
{
    if (!decelInRange())
        return;
    if (ask(QStringLiteral("是否设定当前参数?")))
        WriteDecel();
}

void YiBiaoAdvance::WriteDecel()
{
    for (QLineEdit* box : txtPulseNum)
        box->setText(Format(Val(box->text()), QStringLiteral("#0")));
    StepNo = 160;
    const QString frame = GetWrite_PLCD(QLatin1String(kHoistDecel), kHoistDecelWords);
    SendFlag = true;
    HoistParamSaved = false;
    send_recieve(frame);
    const bool wasShown = !LbLCssdS->isHidden();
    setStatus(LbLCssdS, QStringLiteral("正在设定参数,请稍候......"), false);
    LbLCssdS->setVisible(wasShown);
}

// No question on unsaved values here. StepNo 444 makes a late reply do nothing.
void YiBiaoAdvance::returnClicked()
{
    Link().Timer1.stop();
    Link().Timer2.stop();
    StepNo = 444;
    HoistPollOn = false;
    unloadLater();
    Forms::show(QStringLiteral("PLC"));
}
