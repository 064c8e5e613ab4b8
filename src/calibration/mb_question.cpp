#include "calibration/mb_question.h"

#include "common/module1.h"
#include "common/form_access.h"
#include "common/lang.h"

#include <QApplication>
#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStyle>

namespace {
// 15 twips a pixel: the box's measures kept in twips.
constexpr int tw(int twips) { return twips / 15; }

QPointer<MbQuestion> gShowing;

QString mbText(const char* key, const char* deflt)
{
    return LangText(QStringLiteral("LANMbQuestion"), QLatin1String(key), QString::fromUtf8(deflt));
}
}  // namespace

MbQuestion::MbQuestion(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("MbQuestion"));
    setWindowFlags(Qt::Dialog | Qt::WindowStaysOnTopHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setModal(true);
    setWindowTitle(mbText("MbQuestion001", "提示"));

    ImgICO = new QLabel(this);
    ImgICO->setObjectName(QStringLiteral("ImgICO"));
    ImgICO->setGeometry(14, 14, 32, 32);
    for (const char* name : {"Img2Qu", "Img3Err", "Img4OK"}) {
        auto* hidden = new QLabel(this);
        hidden->setObjectName(QLatin1String(name));
        hidden->hide();
    }
    LblAsk = new QLabel(MbText, this);
    LblAsk->setObjectName(QStringLiteral("LblAsk"));
    LblAsk->setTextFormat(Qt::PlainText);
    LblAsk->move(tw(900), tw(300));
    LblAsk->adjustSize();  // the label sizes itself to the text

    CmdMbOK = new QPushButton(mbText("MbQuestion002", "确定"), this);
    CmdMbOK->setObjectName(QStringLiteral("CmdMbOK"));
    CmdYes = new QPushButton(mbText("MbQuestion003", "是"), this);
    CmdYes->setObjectName(QStringLiteral("CmdYes"));
    CmdNo = new QPushButton(mbText("MbQuestion004", "否"), this);
    CmdNo->setObjectName(QStringLiteral("CmdNo"));
    CmdMbOK->resize(tw(1215), tw(400));
    CmdYes->resize(tw(855), tw(400));
    CmdNo->resize(tw(855), tw(400));

    connect(CmdMbOK, &QPushButton::clicked, this, [this] { MbResult = true; accept(); });
    connect(CmdYes, &QPushButton::clicked, this, [this] { MbResult = true; accept(); });
    connect(CmdNo, &QPushButton::clicked, this, [this] { MbResult = false; accept(); });

    CmdMbOK->setVisible(MbIsOk);
    CmdYes->setVisible(!MbIsOk);
    CmdNo->setVisible(!MbIsOk);
    (MbIsOk ? CmdMbOK : CmdYes)->setDefault(true);

    QStyle::StandardPixmap icon = QStyle::SP_MessageBoxQuestion;
    if (MbIsOk)
        icon = MbIsError ? QStyle::SP_MessageBoxCritical : QStyle::SP_DialogApplyButton;
    ImgICO->setPixmap(style()->standardIcon(icon).pixmap(32, 32));
    layoutAndPlace();
}

void MbQuestion::layoutAndPlace()
{
    const int w = LblAsk->width() + tw(1000);
    const int h = LblAsk->y() + LblAsk->height() + tw(1200);
    setFixedSize(w, h);
    const int top = LblAsk->y() + LblAsk->height() + tw(200);
    CmdYes->move((width() - tw(1600)) / 2, top);
    CmdNo->move(CmdYes->x() + tw(905), top);
    CmdMbOK->move((width() - CmdMbOK->width()) / 2, top);

    // Beside the calibration form the box must not hide the values being watched.
    QWidget* yibiao = Forms::loaded(QStringLiteral("YIBiao"));
    if (CurrentForm == QLatin1String("YIBiao") && yibiao) {
        move(yibiao->x(), yibiao->y() + tw(2700));
    } else if (const QScreen* s = QGuiApplication::primaryScreen()) {
        const QRect r = s->geometry();
        move(r.x() + (r.width() - width()) / 2, r.y() + (r.height() - height()) / 2);
    }
}

MbQuestion* MbQuestion::showing() { return gShowing.data(); }

void ShowOkBox(const QString& text, bool error)
{
    MbText = text;
    MbIsOk = true;
    MbIsError = error;
    ShowMbQuestion();
    MbResult = false;
}

void ShowMbQuestion()
{
    MbQuestion box;
    gShowing = &box;
    box.exec();
    gShowing = nullptr;
}

void UnloadMbQuestion()
{
    if (MbQuestion* box = gShowing.data())
        box->reject();
}
