#include "shell/plc_form.h"

#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/module1.h"
#include "common/profile.h"
#include "common/scale_table.h"
#include "common/form_access.h"
#include "link/link_engine.h"
#include "common/lang.h"
#include "shell/single_instance.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>

namespace {
constexpr char kAccessCode[] = "48213";
QString plcText(const char* key, const char* deflt)
{
    return LangText(QStringLiteral("LANPLCFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}
}  // namespace

PLC::PLC() : FormBase(QStringLiteral("PLC"))
{
    setFixedSize(800, 560);

    lblFormTitle = addTitle(QStringLiteral("lblFormTitle"), QStringLiteral("秤控台V1.1.16"), {0, 14, 800, 40}, 22);
    plantLabel = addLabel(QStringLiteral("Label1(2)"), QString(), {20, 520, 760, 24});
    plantLabel->setAlignment(Qt::AlignCenter);
    plantLabel->setStyleSheet(QStringLiteral("color: #4a5a70;"));

    // The three menu frames, hidden until login.
    for (int i = 0; i < 3; ++i) {
        auto* f = addPanel(this, IndexedName("FraCeng", i), {40, 70 + i * 140, 720, 126});
        FraCeng[i] = f;
        Image1[i] = addImageButton(f, QStringLiteral("Image1(%1)").arg(i), QStringLiteral("LblSel(%1)").arg(i),
                                   {20, 40, 150, 46}, ButtonSize::Large, QString(), [this, i] { openMenu(i); });
        lblTip[i] = addLabel(QStringLiteral("lblTip(%1)").arg(i), QString(), {190, 12, 510, 102}, f);
        lblTip[i]->setWordWrap(true);
        lblTip[i]->setAlignment(Qt::AlignVCenter | Qt::AlignLeft);
        addHoverSurface(f);
        f->hide();
    }
    ImgAdvance = addImageButton(this, QStringLiteral("ImgAdvance"), QStringLiteral("lblAdvance"), {40, 486, 120, 32},
                                ButtonSize::Small, QString(), [this] { openMoisture(); });
    ImgAdvance.setVisible(false);
    cmdExit = addImageButton(this, QStringLiteral("cmdExit"), QStringLiteral("LblExit"), {664, 486, 96, 32},
                             ButtonSize::Small, QString(), [this] { ExitSystem(); });
    cmdExit.setVisible(false);

    // The login panel.
    picCom = addPanel(this, QStringLiteral("picCom"), {200, 110, 400, 300}, 10);
    lblFormTitlePass = addTitle(QStringLiteral("lblFormTitlePass"), QString(), {0, 16, 400, 32}, 18, picCom);
    lblPassWord = addLabel(QStringLiteral("lblPassWord"), QString(), {30, 74, 130, 28}, picCom);
    lblPassWord->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    txtPassword = new QLineEdit(picCom);
    txtPassword->setObjectName(QStringLiteral("txtPassword"));
    showStars(txtPassword);
    txtPassword->setGeometry(170, 74, 190, 28);
    connect(txtPassword, &QLineEdit::returnPressed, this, [this] { cmdOk(); });
    LblCom = addLabel(QStringLiteral("LblCom"), QString(), {30, 120, 130, 28}, picCom);
    LblCom->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    ComboPlc = new QComboBox(picCom);
    ComboPlc->setObjectName(QStringLiteral("ComboPlc"));
    ComboPlc->setGeometry(170, 120, 190, 28);
    for (int i = 1; i <= 6; ++i)
        ComboPlc->addItem(QStringLiteral("Com%1").arg(i));
    ComboPlc->setCurrentIndex(1);  // Com2 until the files say otherwise
    lblLan = addLabel(QStringLiteral("lblLan"), QString(), {30, 166, 130, 28}, picCom);
    lblLan->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    ComboLan = new QComboBox(picCom);
    ComboLan->setObjectName(QStringLiteral("ComboLan"));
    ComboLan->setGeometry(170, 166, 190, 28);
    ComboLan->addItem(QStringLiteral("Chinese(中文)"));
    ComboLan->addItem(QStringLiteral("English(英文)"));
    cmdOK = addImageButton(picCom, QStringLiteral("cmdOK"), QStringLiteral("lblOK"), {80, 230, 96, 32},
                           ButtonSize::Small, QString(), [this] { cmdOk(); });
    ImgReturn2 = addImageButton(picCom, QStringLiteral("ImgReturn2"), QStringLiteral("lblReturn2"), {224, 230, 96, 32},
                                ButtonSize::Small, QString(), [this] { ExitSystem(); });
    addHoverSurface(picCom);
    connect(ComboLan, &QComboBox::activated, this, [this](int index) { languageChosen(index); });

    // The diagnostic panel: labelled boxes that no routine reads.
    for (const auto& [name, text] : {std::pair{"TxtRSA", "D57"}, {"TxtDN", "32"}, {"TxtWSA", "D300"}, {"TxtWN", "15"}}) {
        auto* e = new QLineEdit(QLatin1String(text), this);
        e->setObjectName(QLatin1String(name));
        e->hide();
    }

    ExitSystemHook = [] { ::ExitSystem(); };
}

PLC::~PLC() = default;

bool PLC::load()
{
    if (AnotherInstanceRunning())
        return false;
    try {
        LoadBLZConfig();
        if (PortNo >= 1 && PortNo <= 6)
            ComboPlc->setCurrentIndex(PortNo - 1);
        LoadLanguageChoice();
        if (LangNo == 1 || LangNo == 2)
            ComboLan->setCurrentIndex(LangNo - 1);
        setCaptions();
    } catch (const std::exception& e) {
        MbText = QString::fromLocal8Bit(e.what());
        MbIsOk = true;
        MbIsError = true;
        ShowMbQuestion();
    }
    return true;
}

void PLC::setCaptions()
{
    LblCom->setText(plcText("PLC002", "通讯口选择:"));
    lblLan->setText(plcText("PLC001", "语言:"));
    lblFormTitle->setText(plcText("PLC003", "秤控台设定选项"));
    static const char* const frames[3][3] = {
        {"PLC004", "电子秤调校", nullptr}, {"PLC005", "电子秤参数设定", nullptr}, {"PLC006", "系统功能设定", nullptr}};
    static const char* const buttons[3][2] = {{"PLC038", "调校"}, {"PLC035", "参数设定"}, {"PLC036", "功能设定"}};
    static const char* const tips[3][2] = {
        {"PLC007", "各电子秤初次安装或称重系统中部分零件发生改变或观察到有漂移时都应进行调校."},
        {"PLC008", "各电子秤在使用过程中,为了能准确地称量和正常的流程控制而必须设置的计量与卸料参数."},
        {"PLC009", "集中处理电铃、皮带、拌缸、除尘器以及振动器等系统功能的设定与控制."}};
    for (int i = 0; i < 3; ++i) {
        FraCeng[i]->setToolTip(plcText(frames[i][0], frames[i][1]));
        FraCeng[i]->setAccessibleName(plcText(frames[i][0], frames[i][1]));
        Image1[i].setText(plcText(buttons[i][0], buttons[i][1]));
        lblTip[i]->setText(QStringLiteral("<b>%1</b><br>%2")
                               .arg(plcText(frames[i][0], frames[i][1]).toHtmlEscaped(),
                                    plcText(tips[i][0], tips[i][1]).toHtmlEscaped()));
    }
    ParamFormTitle = Image1[1].caption->text();
    ImgAdvance.setText(LangText(QStringLiteral("HUMIDFORM"), QStringLiteral("HUMID001"), QStringLiteral("湿度标定 ")));
    lblFormTitlePass->setText(ComText("COM004", QStringLiteral("系统验证")));
    lblPassWord->setText(ComText("COM008", QStringLiteral("密码:")));
    cmdOK.setText(ComText("COM001", QStringLiteral("确定")));
    ImgReturn2.setText(ComText("COM002", QStringLiteral("取消")));
    cmdExit.setText(ComText("COM005", QStringLiteral("退出")));
    if (LangNo == 3)
        plantLabel->setText(QStringLiteral("Russian QX240B7.1-42TR8CD517"));
    else if (LangNo == 2)
        plantLabel->setText(QStringLiteral("English QX240B7.1-42TR8CD517"));
    else
        plantLabel->setText(QStringLiteral("星河路桥工程有限公司QX240B7.1-42TR8CD517"));
}

void PLC::languageChosen(int index)
{
    LangNo = short(index + 1);
    setCaptions();
    WriteProfileValue(QStringLiteral("PLCCOMLANSEL"), QStringLiteral("LANSEL"), QString::number(LangNo), LangSelFile());
}

void PLC::cmdOk()
{
    if (txtPassword->text() != QLatin1String(kAccessCode)) {
        ++wrongPasswords_;
        MbIsOk = true;
        if (wrongPasswords_ >= 5) {
            MbText = ComText("COM011", QStringLiteral("密码错误已5次，程序将退出！"));
            MbIsError = true;
            ShowMbQuestion();
            ExitSystem();
            return;
        }
        MbText = ComText("COM012", QStringLiteral("密码错误!"));
        MbIsError = false;
        ShowMbQuestion();
        MbResult = false;
        return;
    }
    PortNo = short(ComboPlc->currentIndex() + 1);
    const PortOpenResult r = Link().openPort(PortNo);
    if (r.error != PortOpenError::None) {
        MbIsOk = true;
        MbIsError = false;
        if (r.error == PortOpenError::InUse) {
            Link().Timer1.stop();
            MbText = QStringLiteral("Com") + QString::number(PortNo) +
                     plcText("PLC011", "端口已被其它程序占用!请重新设置端口！");
        } else if (r.error == PortOpenError::Missing) {
            Link().Timer1.stop();
            MbText = QStringLiteral("Com") + QString::number(PortNo) + plcText("PLC012", "端口无效!请重新设置端口！");
        } else {
            MbText = r.description;
            MbIsError = true;
        }
        // The log keeps the port's own number and words; the operator's message says it for him.
        LogProgramError(QStringLiteral("PLC"), QStringLiteral("cmdOk"), QString::number(r.number),
                        r.systemText.isEmpty() ? r.description : r.systemText);
        ShowMbQuestion();
        picCom->show();
        return;
    }
    picCom->hide();
    Link().resetForLogin();
    cmdExit.setVisible(true);
    for (QFrame* f : FraCeng)
        f->show();
    ImgAdvance.setVisible(true);
}

void PLC::openMenu(int i)
{
    if (i == 2) {
        if (!Forms::load(QStringLiteral("Other")))
            return;
        Forms::show(QStringLiteral("Other"));
        hide();
        return;
    }
    if (!Forms::load(QStringLiteral("BcBut")))
        return;
    HumidActive = false;
    MenuTitle = Image1[i].caption->text();
    MenuMode = short(i);
    Forms::show(QStringLiteral("BcBut"));
    hide();
}

void PLC::openMoisture()
{
    if (!Forms::load(QStringLiteral("BcButHumid")))
        return;
    Forms::show(QStringLiteral("BcButHumid"));
    hide();
    HumidActive = true;
}

void PLC::ExitSystem()
{
    if (exiting_)
        return;
    exiting_ = true;
    Link().Timer1.stop();
    Link().Timer2.stop();
    Link().Timer3.stop();
    Link().closePort();
    SaveBLZConfig();
    EndProgram();
}

void PLC::closeEvent(QCloseEvent* e)
{
    ExitSystem();
    e->accept();
}

void PLC::changeEvent(QEvent* e)
{
    FormBase::changeEvent(e);
    if (e->type() == QEvent::ActivationChange && isActiveWindow() && txtPassword->isVisible())
        txtPassword->setFocus();
}

// The pointer over the login panel puts the cursor in the password box, ready for typing.
bool PLC::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == picCom && event->type() == QEvent::MouseMove)
        txtPassword->setFocus();
    return FormBase::eventFilter(watched, event);
}

void ExitSystem()
{
    if (auto* plc = qobject_cast<PLC*>(Forms::loaded(QStringLiteral("PLC"))))
        plc->ExitSystem();
    else
        EndProgram();
}
