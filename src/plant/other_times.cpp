// The system function form's six plant times, its jog of the fan and the dust valve, and the way back.
#include "plant/other.h"

#include "common/error_log.h"
#include "common/form_access.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/vbtext.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "plant/other_layout.h"
#include "plant/plant_blocks.h"
#include "shell/key_filter.h"

#include <QCheckBox>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>

using namespace OtherLayout;

namespace {
constexpr int kMaxChars = 6;

// Our own pictures of the jog buttons: red when let go, green while held, green with a light when the
// output is on.
enum class Jog { Red, Green, GreenUp };
QPixmap jogPicture(Jog kind)
{
    QPixmap pm(56, 56);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor base = kind == Jog::Red ? QColor(200, 45, 40) : QColor(40, 160, 60);
    p.setBrush(QColor(70, 80, 95));
    p.setPen(Qt::NoPen);
    p.drawEllipse(QRectF(1, 1, 54, 54));
    const qreal inset = kind == Jog::Green ? 8 : 5;  // held: the cap sits lower
    QRadialGradient g(QPointF(24, 22), 26);
    g.setColorAt(0, base.lighter(kind == Jog::GreenUp ? 170 : 135));
    g.setColorAt(1, base.darker(kind == Jog::Green ? 130 : 105));
    p.setBrush(g);
    p.drawEllipse(QRectF(inset, inset, 56 - 2 * inset, 56 - 2 * inset));
    if (kind == Jog::GreenUp) {
        p.setBrush(QColor(255, 255, 255, 150));
        p.drawEllipse(QRectF(18, 14, 14, 10));
    }
    return pm;
}

// The picture and the name of its model image, which is what a reader of the screen goes by.
void setJogPicture(QLabel* button, Jog kind)
{
    static const char* const kNames[] = {"ImageRed", "ImageGreen", "ImageGreenUp"};
    button->setPixmap(jogPicture(kind));
    button->setProperty("picture", QLatin1String(kNames[int(kind)]));
}

void setTextColor(QWidget* w, const QColor& c)
{
    QPalette p = w->palette();
    p.setColor(QPalette::WindowText, c);
    w->setPalette(p);
}
}  // namespace

// ---- construction ----

void Other::buildTimes()
{
    for (int i = 0; i < 7; ++i) {
        LblCansd << nullptr;
        if (i < 6) {
            TxtDCansd << nullptr;
            TxtDCansdMulTen << nullptr;
            Label2 << nullptr;
        }
    }
    for (int i = 0; i < 6; ++i) {
        const TimeRow& r = kTimes[i];
        QWidget* page = PicZDTime[size_t(r.tab)];
        const int caption = i < 5 ? i : 6;
        LblCansd[caption] = addLabel(IndexedName("LblCansd", caption), QString(), {24, r.top, 330, 28}, page);
        LblCansd[caption]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        auto* box = new QLineEdit(QStringLiteral("0"), page);
        box->setObjectName(IndexedName("TxtDCansd", i));
        box->setGeometry(362, r.top, 80, 28);
        box->setAlignment(Qt::AlignRight);
        RestrictKeys(box, QStringLiteral("1234567890"));
        // The limit is on what the operator types or pastes; a value read from the controller shows whole.
        connect(box, &QLineEdit::textEdited, box, [box](const QString& t) {
            if (t.size() > kMaxChars)
                box->setText(t.left(kMaxChars));
        });
        box->installEventFilter(this);
        TxtDCansd[i] = box;
        Label2[i] = addLabel(IndexedName("Label2", i), i == 4 ? QStringLiteral("S,") : QStringLiteral("S"),
                             {448, r.top, 30, 28}, page);
        auto* twin = new QLineEdit(QStringLiteral("0"), this);
        twin->setObjectName(IndexedName("TxtDCansdMulTen", i));
        twin->hide();
        TxtDCansdMulTen[i] = twin;
    }
    LblCansd[5] = addLabel(QStringLiteral("LblCansd(5)"), QString(), {478, kTimes[4].top, 220, 28}, PicZDTime[2]);
}

void Other::buildJog()
{
    QWidget* page = PicZDTime[3];
    auto row = [&](int top, QLabel*& label, QLabel*& button, const char* name, QLabel*& tip, const char* tipName,
                   QLabel*& hint) {
        label = addLabel(QString(), QString(), {30, top + 13, 250, 30}, page);
        label->setStyleSheet(QStringLiteral("font-weight: bold;"));
        button = new QLabel(page);
        button->setObjectName(QLatin1String(name));
        button->setGeometry(290, top, 56, 56);
        setJogPicture(button, Jog::Red);
        button->setCursor(Qt::PointingHandCursor);
        button->installEventFilter(this);
        tip = addLabel(QLatin1String(tipName), QString(), {366, top + 13, 340, 30}, page);
        tip->setStyleSheet(QStringLiteral("font-weight: bold;"));
        tip->hide();
        hint = addLabel(QString(), QString(), {30, top + 62, kPageWidth - 60, 24}, page);
    };
    row(16, lblFengJi, cmdFengJi, "cmdFengJi", lblFengJiTip, "lblFengJiTip", lblFengJiHint);
    row(116, lblChuChen, cmdChuChen, "cmdChuChen", lblChuChenTip, "lblChuChenTip", lblChuChenHint);
    lblFengJi->setObjectName(QStringLiteral("lblFengJi"));
    lblChuChen->setObjectName(QStringLiteral("lblChuChen"));
    lblFengJiHint->setObjectName(QStringLiteral("lblFengJiHint"));
    lblChuChenHint->setObjectName(QStringLiteral("lblChuChenHint"));

    // The picture stays bright while the button is held; the read goes as it goes down, not on the click.
    ImageFengJiState = addImageButton(page, QStringLiteral("ImageFengJiState"), QStringLiteral("lblFengJiState"),
                                      {30, 236, 150, 46}, ButtonSize::Large, QString(), nullptr);
    for (ClickLabel* part : {ImageFengJiState.image, ImageFengJiState.caption}) {
        connect(part, &ClickLabel::pressed, this, [this] {
            ImageFengJiState.setBright(true);
            ReadOutputs();
        });
        connect(part, &ClickLabel::released, this, [this] { ImageFengJiState.setBright(false); });
    }

    TxtSReadFengJi = new QLineEdit(QStringLiteral("0"), this);
    TxtSReadFengJi->setObjectName(QStringLiteral("TxtSReadFengJi"));
    TxtSReadFengJi->hide();
    connect(TxtSReadFengJi, &QLineEdit::textChanged, this, [this] { decodeOutputs(); });
}

bool Other::eventFilter(QObject* watched, QEvent* event)
{
    const int i = TxtDCansd.indexOf(qobject_cast<QLineEdit*>(watched));
    if (i >= 0 && timeKey(i, event))
        return true;
    const bool left = (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease) &&
                      static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
    if (left) {
        const bool press = event->type() == QEvent::MouseButtonPress;
        if (watched == cmdFengJi) {
            jog(press ? 63 : 64, kFanBit, press);
            return true;
        }
        if (watched == cmdChuChen) {
            jog(press ? 65 : 66, kDustValveBit, press);
            return true;
        }
    }
    return FormBase::eventFilter(watched, event);
}

bool Other::timeKey(int i, QEvent* event)
{
    switch (event->type()) {
    case QEvent::FocusIn:
        QTimer::singleShot(0, TxtDCansd[i], &QLineEdit::selectAll);
        break;
    case QEvent::KeyRelease:
        LbLCssdS->hide();
        TimesSaved = false;
        break;
    default:
        break;
    }
    return false;
}

// ---- the times ----

void Other::ReadTimes()
{
    StepNo = 75;
    SendFlag = true;
    const QString frame = BuildReadFrameWords(QLatin1String(kTimesBlock), kTimesWords);
    send_recieve(frame);
}

void Other::okClicked()
{
    QList<double> shown;
    for (const QLineEdit* box : TxtDCansd)
        shown << Val(box->text());
    const BlockFault fault = PlantBlocks::checkShown(QLatin1String(kTimesBlock), shown);
    if (!fault.ok()) {
        const int i = fault.field;
        MbText = fault.message;
        MbIsOk = true;
        MbIsError = false;
        ShowMbQuestion();
        MbResult = false;
        // The last guard leaves the tab as it is.
        if (fault.rule == 0) {
            ImgBd_Click(kTimes[i].tab);
            if (i <= 4)
                SelectTab(kTimes[i].tab);
        }
        // A field the operator cannot see cannot take the focus either.
        if (TxtDCansd[i]->isVisible())
            TxtDCansd[i]->setFocus(Qt::OtherFocusReason);
        return;
    }
    MbText = text("OTHER060", "是否设定当前时间配置?");
    MbIsOk = false;
    MbIsError = false;
    ShowMbQuestion();
    if (MbResult)
        WriteTimes();
}

void Other::WriteTimes()
{
    for (int i = 0; i < 6; ++i)
        TxtDCansdMulTen[i]->setText(NumText(Val(TxtDCansd[i]->text()) * 10));
    SendFlag = true;
    TimesSaved = false;
    StepNo = 76;
    const QString frame = GetWrite_PLCD(QLatin1String(kTimesBlock), kTimesWords);
    send_recieve(frame);
    // The caption is seen once the reply shows it, or at once if it was showing.
    LbLCssdS->setText(text("OTHER057", "正在设定时间配置,请稍候......"));
    setTextColor(LbLCssdS, QColor(0xFF, 0, 0));
    LblTzxxTip->hide();
}

void Other::defaultClicked()
{
    MbText = ComText(QStringLiteral("COM028"), QStringLiteral("是否要初始化参数?"));
    MbIsOk = false;
    MbIsError = false;
    ShowMbQuestion();
    if (!MbResult)
        return;
    for (int i = 0; i < 6; ++i)
        TxtDCansd[i]->setText(QLatin1String(kTimes[i].deflt));
    TimesSaved = false;
    WriteTimes();
}

void Other::returnClicked()
{
    Link().Timer2.stop();
    bool changed = false;
    for (int i = 0; i < 6 && !changed; ++i)
        changed = Val(TxtDCansd[i]->text()) != Val(NumText(SavedTime.at(size_t(i))));
    if (changed && !TimesSaved) {
        MbText = text("OTHER061", "时间配置更改后未设定，是否返回?");
        MbIsOk = false;
        MbIsError = false;
        ShowMbQuestion();
        if (!MbResult)
            return;
    }
    unloadLater();
    Forms::show(QStringLiteral("PLC"));
}

// ---- jog and outputs ----

// Press and release each write both whole bytes from S208: a press sets its bit and clears the others,
// a release clears them all. Nothing is read first.
void Other::jog(int step, const char* device, bool press)
{
    QLabel* button = QByteArray(device) == kFanBit ? cmdFengJi : cmdChuChen;
    setJogPicture(button, press ? Jog::Green : Jog::Red);
    StepNo = short(step);
    const QString bit = QLatin1String(device);
    const QString data = press ? BitOperand(bit) : QStringLiteral("0000");
    const QString frame = GetWrite_TSCMXY(bit, data, 4);
    SendFlag = true;
    send_recieve(frame);
}

void Other::ReadOutputs()
{
    StepNo = 67;
    SendFlag = true;
    const QString frame = BuildReadFrameBytes(QLatin1String(kJogOutputs), 2);
    send_recieve(frame);
}

// Y64 to Y67 in the first digit; the fan runs on Y66, the dust valve opens on Y67.
void Other::decodeOutputs()
{
    const QString t = TxtSReadFengJi->text();
    if (t == QLatin1String("XXX"))
        return;
    if (t.isEmpty()) {
        TxtSReadFengJi->setText(QStringLiteral("0"));
        return;
    }
    if (t.size() != 4)
        return;
    lblFengJiTip->show();
    lblChuChenTip->hide();
    const QString trimmed = Trim(t);
    int d = trimmed.isEmpty() ? 0 : int(Val(QStringLiteral("&H") + trimmed.front()));
    auto take = [&d](int w) {
        const bool on = d >= w;
        if (on)
            d -= w;
        return on ? 1 : 0;
    };
    OutBit[3] = take(8);
    lblChuChenTip->setText(OutBit[3] ? text("OTHER052", "除尘阀已开启!") : text("OTHER053", "除尘阀已关闭!"));
    setTextColor(lblChuChenTip, OutBit[3] ? QColor(0, 0x80, 0) : QColor(0xFF, 0, 0));
    setJogPicture(cmdChuChen, OutBit[3] ? Jog::GreenUp : Jog::Red);
    OutBit[2] = take(4);
    lblFengJiTip->setText(OutBit[2] ? text("OTHER050", "风机已开启!") : text("OTHER051", "风机已关闭!"));
    setTextColor(lblFengJiTip, OutBit[2] ? QColor(0, 0x80, 0) : QColor(0xFF, 0, 0));
    setJogPicture(cmdFengJi, OutBit[2] ? Jog::GreenUp : Jog::Red);
    OutBit[1] = take(2);
    OutBit[0] = take(1);
    // Consumed: the next reply is a change even with the same digits.
    TxtSReadFengJi->setText(QStringLiteral("XXX"));
}
