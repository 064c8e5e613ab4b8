#include "plant/factory.h"

#include "common/form_access.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/own_text.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/register_map.h"

#include <QEvent>
#include <QFrame>
#include <QLineEdit>

namespace {
constexpr char kFactoryCode[] = "61730428";
constexpr int kFormWidth = 600, kFormHeight = 380;
const QRect kPanel(20, 60, kFormWidth - 40, 300);
}  // namespace

Factory::Factory() : FormBase(QStringLiteral("Factory"))
{
    setFixedSize(kFormWidth, kFormHeight);
    ImageExit = addExitImage(QStringLiteral("ImageExit"), {kFormWidth - 44, 10});
    buildAction();
    buildGate();
    loadCaptions();
    PicForm->hide();
    LblBd.setVisible(false);
    picCom->show();
}

QString Factory::text(const char* key, const char* deflt) const
{
    return LangText(QStringLiteral("LANFACTORYFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}

void Factory::buildGate()
{
    picCom = addPanel(this, QStringLiteral("picCom"), kPanel);
    addHoverSurface(picCom);
    picCom->installEventFilter(this);
    lblPassTitle = addTitle(QStringLiteral("lblPassTitle"), QString(), {0, 26, kPanel.width(), 32}, 18, picCom);
    lblPassWord = addLabel(QStringLiteral("lblPassWord"), QString(), {40, 104, 150, 30}, picCom);
    lblPassWord->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    txtPassword = new QLineEdit(picCom);
    txtPassword->setObjectName(QStringLiteral("txtPassword"));
    showStars(txtPassword);
    txtPassword->setGeometry(202, 104, 220, 30);
    connect(txtPassword, &QLineEdit::returnPressed, this, [this] { cmdOk(); });
    cmdOK = addImageButton(picCom, QStringLiteral("cmdOK"), QStringLiteral("lblOK"), {150, 200, 110, 36},
                           ButtonSize::Small, QString(), [this] { cmdOk(); });
    ImgReturn2 = addImageButton(picCom, QStringLiteral("ImgReturn2"), QStringLiteral("lblReturn2"), {300, 200, 110, 36},
                                ButtonSize::Small, QString(), [this] { returnClicked(); });
}

void Factory::buildAction()
{
    LblBd = addTab(this, QStringLiteral("ImgBd"), QStringLiteral("LblBd"), {kPanel.left(), 22, 120, 34}, QString(), {});
    selectTab({LblBd}, 0);
    PicForm = addPanel(this, QStringLiteral("PicForm"), kPanel);
    addHoverSurface(PicForm);
    LblFactoryTip = addLabel(QStringLiteral("LblFactoryTip"), QString(), {30, 40, kPanel.width() - 60, 90}, PicForm);
    LblFactoryTip->setWordWrap(true);
    LblFactoryTip->setAlignment(Qt::AlignCenter);
    LblFactoryTip->setStyleSheet(QStringLiteral("font-size: 17px; font-weight: bold; color: #c00000;"));
    ImgBdOk = addImageButton(PicForm, QStringLiteral("ImgBdOk"), QStringLiteral("lblBdOk"),
                             {(kPanel.width() - 150) / 2, 150, 150, 46}, ButtonSize::Large, QString(),
                             [this] { factoryClicked(); });
    LbLCssdS = addLabel(QStringLiteral("LbLCssdS"), QString(), {30, 214, 360, 30}, PicForm);
    LbLCssdS->setStyleSheet(QStringLiteral("font-weight: bold;"));
    LbLCssdS->hide();
    ImgReturn = addImageButton(PicForm, QStringLiteral("ImgReturn"), QStringLiteral("lblReturn"),
                               {kPanel.width() - 130, 250, 110, 36}, ButtonSize::Small, QString(),
                               [this] { returnClicked(); });
}

void Factory::loadCaptions()
{
    lblPassTitle->setText(text("FACTORY002", "出厂设置验证"));
    setWindowTitle(text("FACTORY003", "出厂设置"));
    lblPassWord->setText(ComText(QStringLiteral("COM008"), QStringLiteral("密码:")));
    cmdOK.setText(ComText(QStringLiteral("COM001"), QStringLiteral("确定")));
    ImgReturn2.setText(ComText(QStringLiteral("COM003"), QStringLiteral("返回")));
    ImgReturn.setText(ComText(QStringLiteral("COM003"), QStringLiteral("返回")));
    LblBd.setText(text("FACTORY003", "出厂设置"));
    ImgBdOk.setText(text("FACTORY003", "出厂设置"));
    LblFactoryTip->setText(text("FACTORY005", "设备在出厂前进行此设置,在工地严禁此操作"));
}

void Factory::showEvent(QShowEvent* e)
{
    FormBase::showEvent(e);
    CurrentForm = objectName();
    if (!picCom->isHidden())
        txtPassword->setFocus();
}

// Moving over the gate puts the focus back into the code box.
bool Factory::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == picCom && event->type() == QEvent::MouseMove)
        txtPassword->setFocus();
    return FormBase::eventFilter(watched, event);
}

// The wrong codes are counted for the whole run: leaving the form and coming back does not start afresh.
void Factory::cmdOk()
{
    if (txtPassword->text() == QLatin1String(kFactoryCode)) {
        txtPassword->clear();
        picCom->hide();
        PicForm->show();
        LblBd.setVisible(true);
        return;
    }
    refuseWrongCode(++FactoryWrongCodes);
}

void Factory::factoryClicked()
{
    MbText = text("FACTORY006", "是否进行出厂设置?");
    MbIsOk = false;
    MbIsError = false;
    ShowMbQuestion();
    if (!MbResult)
        return;
    // The pattern sets S212 and clears the other bits of its two bytes; the dispatch clears it again.
    StepNo = 62;
    const QString frame = GetWrite_TSCMXY(QLatin1String(kFactoryBit), BitOperand(QLatin1String(kFactoryBit)), 4);
    SendFlag = true;
    send_recieve(frame);
    // The language file has no number for this line.
    setStatus(LbLCssdS, OwnText::tr("正在出厂设置,请稍候..."), false);
}

void Factory::returnClicked()
{
    unloadLater();
    Forms::show(QStringLiteral("Other"));
}
