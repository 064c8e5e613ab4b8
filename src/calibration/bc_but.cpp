#include "calibration/bc_but.h"

#include "common/module1.h"
#include "common/own_text.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "common/form_access.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "common/lang.h"

#include <QApplication>
#include <QDate>
#include <QFileInfo>
#include <QFrame>
#include <QLineEdit>

namespace {
constexpr char kGateCode[] = "90765";

// Captions of the scale buttons as the form was designed; at run time they come from ScaleName.
constexpr const char* kDesignCaptions[14] = {
    QT_TRANSLATE_NOOP("OwnText", "骨料1秤"),   QT_TRANSLATE_NOOP("OwnText", "骨料2秤"),
    QT_TRANSLATE_NOOP("OwnText", "骨料3秤"),   QT_TRANSLATE_NOOP("OwnText", "骨料4秤"),
    QT_TRANSLATE_NOOP("OwnText", "骨料5秤"),   QT_TRANSLATE_NOOP("OwnText", "骨料6秤"),
    QT_TRANSLATE_NOOP("OwnText", "外加粉秤"),  QT_TRANSLATE_NOOP("OwnText", "水秤"),
    QT_TRANSLATE_NOOP("OwnText", "水泥秤"),    QT_TRANSLATE_NOOP("OwnText", "粉灰秤"),
    QT_TRANSLATE_NOOP("OwnText", "矿粉秤"),    QT_TRANSLATE_NOOP("OwnText", "外加剂1秤"),
    QT_TRANSLATE_NOOP("OwnText", "外加剂2秤"), QT_TRANSLATE_NOOP("OwnText", "外加剂3秤")};

constexpr int kFormWidth = 800, kFormHeight = 560;
const QColor kChosenScale(192, 0, 0);

void setTextColor(QLabel* l, const QColor& c)
{
    QPalette p = l->palette();
    p.setColor(QPalette::WindowText, c);
    l->setPalette(p);
}
}  // namespace

BcBut::BcBut() : FormBase(QStringLiteral("BcBut"))
{
    setFixedSize(kFormWidth, kFormHeight);

    lblXMName = addTitle(QStringLiteral("lblXMName"), QString(), {0, 12, kFormWidth, 40}, 22);
    ImageExit = addExitImage(QStringLiteral("ImageExit"), {kFormWidth - 44, 10});

    buildMenu();
    buildGate();

    LbLCssdS = addLabel(QStringLiteral("LbLCssdS"), QString(), {20, 508, 620, 28});
    LbLCssdS->setStyleSheet(QStringLiteral("font-weight: bold;"));
    LbLCssdS->hide();
    ImgReturn = addImageButton(this, QStringLiteral("ImgReturn"), QStringLiteral("lblReturn"), {664, 506, 116, 36},
                               ButtonSize::Small, QString(), [this] { returnClicked(); });
    ImgReturn.setVisible(false);

    // Continuation slot of the hardware initialisation: the link writes the S999 byte pair here.
    TxtSRead = new QLineEdit(this);
    TxtSRead->setObjectName(QStringLiteral("TxtSRead"));
    TxtSRead->hide();
    connect(TxtSRead, &QLineEdit::textChanged, this, [this] { hardwareReplied(); });

    txtTip = addHelpTip(QStringLiteral("txtTip"), {232, 102, 380, 96});

    // Loading
    ImgElect.setVisible(false);
    loadCaptions();
    for (const ImageButton& b : ImgBd)
        b.caption->setToolTip(b.caption->text());
    fillNameBoxes();
    selectTab(0);
    if (CNameMissing)
        ImageCNameIni.setVisible(false);
}

QString BcBut::text(const char* key, const char* deflt) const
{
    return LangText(QStringLiteral("LANBCBUTFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}

void BcBut::buildGate()
{
    picCom = addPanel(this, QStringLiteral("picCom"), {120, 162, 560, 236});
    addHoverSurface(picCom);
    lblPassTitle = addTitle(QStringLiteral("lblPassTitle"), QString(), {0, 20, 560, 32}, 18, picCom);
    lblPassWord = addLabel(QStringLiteral("lblPassWord"), QString(), {60, 86, 140, 30}, picCom);
    lblPassWord->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    txtPassword = new QLineEdit(picCom);
    txtPassword->setObjectName(QStringLiteral("txtPassword"));
    showStars(txtPassword);
    txtPassword->setGeometry(212, 86, 220, 30);
    connect(txtPassword, &QLineEdit::returnPressed, this, [this] { cmdOk(); });
    cmdOK = addImageButton(picCom, QStringLiteral("cmdOK"), QStringLiteral("lblOK"), {150, 164, 110, 36},
                           ButtonSize::Small, QString(), [this] { cmdOk(); });
    ImgReturn2 = addImageButton(picCom, QStringLiteral("ImgReturn2"), QStringLiteral("lblReturn2"), {300, 164, 110, 36},
                                ButtonSize::Small, QString(), [this] { gateReturnClicked(); });
}

void BcBut::buildMenu()
{
    PicBiaoC = new QWidget(this);
    PicBiaoC->setObjectName(QStringLiteral("PicBiaoC"));
    PicBiaoC->setGeometry(20, 60, 620, 440);
    addHoverSurface(PicBiaoC);
    for (int i = 0; i < 3; ++i)
        ImgBdTap[size_t(i)] = addTab(PicBiaoC, IndexedName("ImgBdTap", i), IndexedName("LblBdTap", i),
                                     {126 * i, 0, 120, 34}, QString(), [this, i] { tabClicked(i); });
    for (int i = 0; i < 3; ++i) {
        PicBcBut[size_t(i)] = addPanel(PicBiaoC, IndexedName("PicBcBut", i), {0, 40, 620, 350});
        addHoverSurface(PicBcBut[size_t(i)]);
    }
    for (int i = 0; i < 14; ++i) {
        const QRect at(22 + 148 * (i % 4), 26 + 78 * (i / 4), 124, 44);
        ImgBd[size_t(i)] =
            addImageButton(PicBcBut[0], IndexedName("ImgBd", i), IndexedName("LblBd", i), at, ButtonSize::Scale,
                           OwnText::tr(kDesignCaptions[i]), [this, i] { scaleClicked(i); });
    }
    buildNameTabs();
    ImageCNameIni = addImageButton(PicBcBut[1], QStringLiteral("ImageCNameIni"), QStringLiteral("LblCNameIni"),
                                   {440, 300, 160, 36}, ButtonSize::Small, QString(), [this] { restoreFactoryNames(); });
    ImgBdOk = addImageButton(PicBiaoC, QStringLiteral("ImgBdOk"), QStringLiteral("lblBdOk"), {504, 400, 116, 36},
                             ButtonSize::Small, QString(), [this] { bdOkClicked(); });
    PicBiaoC->hide();

    // The calibration entries beside the working area, shown once the gate is passed.
    ImgSensor = addImageButton(this, QStringLiteral("ImgSensor"), QStringLiteral("lblSensor"), {656, 100, 124, 40},
                               ButtonSize::Small, QString(), [this] { sensorClicked(); });
    ImgHard = addImageButton(this, QStringLiteral("ImgHard"), QStringLiteral("lblHard"), {656, 156, 124, 40},
                             ButtonSize::Small, QString(), [this] { hardwareClicked(); });
    ImgHelp = addImage(this, QStringLiteral("ImgHelp"), {704, 204, 28, 28}, ButtonSize::HelpIcon, [this] { helpClicked(); });
    ImgBdjk = addImageButton(this, QStringLiteral("ImgBdjk"), QStringLiteral("LbLBdjk"), {656, 252, 124, 40},
                             ButtonSize::Small, QString(), [this] { recordClicked(); });
    ImgElect = addImageButton(this, QStringLiteral("ImgElect"), QStringLiteral("lblElect"), {656, 308, 124, 40},
                              ButtonSize::Small, QString(), [this] { currentCalClicked(); });
    for (const ImageButton* b : {&ImgSensor, &ImgHard, &ImgHelp, &ImgBdjk, &ImgElect})
        b->setVisible(false);
}

void BcBut::loadCaptions()
{
    setWindowTitle(MenuTitle);
    lblPassTitle->setText(ComText(QStringLiteral("COM004"), QStringLiteral("系统验证")));
    lblPassWord->setText(ComText(QStringLiteral("COM008"), QStringLiteral("密码:")));
    cmdOK.setText(ComText(QStringLiteral("COM001"), QStringLiteral("确定")));
    ImgReturn2.setText(ComText(QStringLiteral("COM003"), QStringLiteral("返回")));
    ImgReturn.setText(ComText(QStringLiteral("COM003"), QStringLiteral("返回")));
    ImgBdOk.setText(ComText(QStringLiteral("COM001"), QStringLiteral("确定")));
    ImgBdTap[0].setText(text("BCBUT001", "电子秤选择"));
    ImgBdTap[1].setText(text("BCBUT002", "秤名称设定"));
    ImgBdTap[2].setText(text("BCBUT003", "料仓名设定"));
    ImgSensor.setText(text("BCBUT021", "传感器配置"));
    ImgHard.setText(text("BCBUT024", "硬件初始化"));
    ImgBdjk.setText(text("BCBUT025", "标定记录"));
    ImgElect.setText(text("BCBUT026", "电流标定"));
    ImageCNameIni.setText(text("BCBUT027", "恢复出厂名称"));
}

void BcBut::showEvent(QShowEvent* e)
{
    FormBase::showEvent(e);
    Form_Activate();
}

void BcBut::Form_Activate()
{
    CurrentForm = objectName();
    lblXMName->setText(MenuTitle);
    setWindowTitle(MenuTitle);
    if (MenuMode == 1) {
        picCom->hide();
        ImgReturn.setVisible(true);
        PicBiaoC->show();
        // Parameter setting is only the list of scales.
        ImgBdTap[1].setVisible(false);
        ImgBdTap[2].setVisible(false);
        lblXMName->show();
    } else {
        showCalibrationMenu(GatePassed);
        ImgReturn.setVisible(GatePassed);
        picCom->setVisible(!GatePassed);
        if (!GatePassed)
            txtPassword->setFocus();
    }
    ImgElect.setVisible(false);
    rebuildScaleButtons();
    LoadSysData();
}

void BcBut::showCalibrationMenu(bool on)
{
    lblXMName->setVisible(on);
    for (const ImageButton* b : {&ImgSensor, &ImgHard, &ImgHelp, &ImgBdjk})
        b->setVisible(on);
    PicBiaoC->setVisible(on);
}

// An unused scale keeps its place, greyed, and cannot be chosen.
void BcBut::rebuildScaleButtons()
{
    for (size_t i = 0; i < ImgBd.size(); ++i) {
        const ImageButton& b = ImgBd[i];
        if (Trim(ScaleName[i]).isEmpty()) {
            b.image->setEnabled(false);
            b.image->setPixmap(GreyPicture(ButtonSize::Scale));
            b.image->setVisible(false);
            b.caption->setEnabled(false);
            b.setText(text("BCBUT004", "未使用"));
        } else {
            b.image->setEnabled(true);
            b.image->setPixmap(ButtonPicture(ButtonSize::Scale, false));
            b.image->setVisible(true);
            b.caption->setEnabled(true);
            b.setText(ScaleName[i]);
        }
    }
}

// ---- the gate ----

void BcBut::cmdOk()
{
    QString code = QLatin1String(kGateCode);
    if (firstNaming_) {
        const QDate today = QDate::currentDate();
        code += QString::number(today.month() + today.day());
    }
    if (txtPassword->text() != code) {
        refuseWrongCode(++wrongCodes_);
        return;
    }
    txtPassword->clear();
    if (firstNaming_)
        selectTab(1);
    picCom->hide();
    GatePassed = true;
    showCalibrationMenu(true);
    ImgReturn.setVisible(!firstNaming_);
    ImgElect.setVisible(false);
}

// ---- the scales ----

void BcBut::scaleClicked(int i)
{
    if (!ImgBd[size_t(i)].caption->isEnabled())
        return;
    ScaleNo = short(i);
    LbLCssdS->hide();
    const QColor plain = QApplication::palette().color(QPalette::ButtonText);
    for (const ImageButton& b : ImgBd)
        setTextColor(b.caption, plain);
    setTextColor(ImgBd[size_t(i)].caption, kChosenScale);
    const QString caption = ImgBd[size_t(i)].caption->text();
    const ScaleDevices& d = kScaleDevices[size_t(i)];
    ScaleTitle = caption;
    if (MenuMode == 0) {
        CalZeroDevice = QLatin1String(d.zero);
        CalSpanDevice = QLatin1String(d.span);
        CalWeightDevice = QLatin1String(d.weight);
        OptionDevice = QLatin1String(d.option);
        openForm(QStringLiteral("YIBiao"), true);
    } else {
        ScaleCaption = caption;
        ParamDevice = ParamDeviceOf(i);
        OptionDevice = OptionDeviceOf(i);
        openForm(QStringLiteral("Cansd"), true);
    }
}

// ---- tabs ----

// Until the first naming has written CName.ini the bins have no file to go into.
void BcBut::tabClicked(int i)
{
    const bool unnamed = CNameMissing && !QFileInfo::exists(CNameIniPath());
    if (unnamed && i == 1) {
        firstNaming_ = true;
        selectTab(1);
        return;
    }
    if (unnamed && i == 2) {
        MbText = text("BCBUT035", "必须先设定电子秤名称,然后再设定料仓名称!");
        MbIsOk = true;
        MbIsError = false;
        ShowMbQuestion();
        return;
    }
    selectTab(i);
}

void BcBut::selectTab(int i)
{
    nameTab_ = i == 1;
    binTab_ = i == 2;
    for (int k = 0; k < 3; ++k)
        PicBcBut[size_t(k)]->setVisible(k == i);
    FormBase::selectTab(QList<ImageButton>(ImgBdTap.begin(), ImgBdTap.end()), i);
    if (i == 0)
        rebuildScaleButtons();
    ImgBdOk.setVisible(i != 0);
}

// ---- the other entries ----

bool BcBut::openForm(const QString& form, bool hideMenu)
{
    if (!Forms::load(form))
        return false;
    Forms::show(form);
    if (hideMenu)
        hide();
    return true;
}

void BcBut::sensorClicked()
{
    LbLCssdS->hide();
    openForm(QStringLiteral("Sensor"), true);
}

void BcBut::recordClicked() { openForm(QStringLiteral("FrmJk"), false); }

// Kept, but nothing offers it: the entry stays hidden.
void BcBut::currentCalClicked()
{
    ScaleNo = 13;
    CalWeightDevice = QStringLiteral("D56");
    CalZeroDevice = QStringLiteral("S203");
    CalSpanDevice = QStringLiteral("S204");
    OptionDevice = QStringLiteral("S604");
    ScaleTitle = QStringLiteral("电流标定");
    IsCurrentCal = true;
    openForm(QStringLiteral("YIBiao"), true);
}

// ---- hardware initialisation ----

void BcBut::hardwareClicked()
{
    MbText = text("BCBUT030", "是否进行硬件初始化?");
    MbIsOk = false;
    MbIsError = false;
    ShowMbQuestion();
    if (!MbResult)
        return;
    // The controller clears S211 itself, so no second write follows.
    StepNo = 57;
    const QString frame = GetWrite_TSCMXY(QLatin1String(kHardwareInitBit), BitOperand(QLatin1String(kHardwareInitBit)), 4);
    SendFlag = true;
    send_recieve(frame);
    setStatus(LbLCssdS, text("BCBUT031", "正在硬件初始化,请稍候..."), false);
}

// The S999 byte pair, polled by the main form's Timer1 until its high bit is on.
void BcBut::hardwareReplied()
{
    if (TxtSRead->text().isEmpty()) {
        TxtSRead->setText(QStringLiteral("0"));
        return;
    }
    const QString t = TxtSRead->text();
    if (t.size() != 4)
        return;
    bool ok = false;
    const int high = t.left(1).toInt(&ok, 16);
    if (!ok || high < 8)
        return;
    setStatus(LbLCssdS, text("BCBUT032", "硬件初始化已完成!"), true);
    Link().Timer1.stop();
}

void BcBut::helpClicked()
{
    showHelp(txtTip, text("BCBUT028", "注意:系统初次使用或更换硬件时必须初始化硬件。     [关闭]"));
}

// ---- leaving ----

void BcBut::returnClicked()
{
    Link().Timer1.stop();
    unloadLater();
    Forms::show(QStringLiteral("PLC"));
}

void BcBut::gateReturnClicked()
{
    unloadLater();
    Forms::show(QStringLiteral("PLC"));
}
