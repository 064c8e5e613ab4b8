#include "plant/zd_time.h"

#include "common/form_access.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/vbtext.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "plant/plant_blocks.h"
#include "shell/key_filter.h"

#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>

namespace {
constexpr int kFormWidth = 800, kFormHeight = 560;
constexpr int kPageTop = 100, kPageWidth = 780, kPageHeight = 360;
constexpr int kGroupWidth = 364, kRowStep = 30;
constexpr int kFields = 28;
constexpr int kMaxChars = 6;

// Where each vibrator's group sits, in the order of PlantBlocks::kVibratorGroups.
struct GroupPlace {
    int tab;
    int column;
    int top;
};
constexpr GroupPlace kGroupPlaces[] = {{0, 0, 14}, {0, 1, 14}, {0, 0, 184}, {0, 1, 184},
                                       {1, 0, 14}, {1, 1, 14}, {1, 1, 124}, {1, 1, 234}};
static_assert(std::size(kGroupPlaces) == std::size(PlantBlocks::kVibratorGroups));
// Titles as the form was designed; at run time they come from the scale names.
constexpr const char* kDesignTitles[] = {"骨料3振动器",    "骨料4振动器",    "骨料5振动器",    "骨料6振动器",
                                         "外加粉振动器",   "水泥卸料振动器", "粉灰卸料振动器", "矿粉卸料振动器"};

QString rangeOf(int i) { return PlantBlocks::rangeText(QLatin1String(kVibratorBlock), i); }
QString defaultOf(int i)
{
    static const QList<int> raw = PlantBlocks::defaults(QLatin1String(kVibratorBlock));
    return NumText(raw.value(i) / 10.0);
}
// Fields 26 and 27 belong to no tab.
int tabOf(int i) { return i < 16 ? 0 : (i < 26 ? 1 : -1); }

void setTextColor(QWidget* w, const QColor& c)
{
    QPalette p = w->palette();
    p.setColor(QPalette::WindowText, c);
    w->setPalette(p);
}
}  // namespace

ZDTime::ZDTime() : FormBase(QStringLiteral("ZDTime"))
{
    setFixedSize(kFormWidth, kFormHeight);
    lblFormTitle = addTitle(QStringLiteral("lblFormTitle"), QString(), {0, 10, kFormWidth, 36}, 20);
    ImageExit = addExitImage(QStringLiteral("ImageExit"), {kFormWidth - 44, 10});

    for (int t = 0; t < 2; ++t) {
        ImgBd << addTab(this, IndexedName("ImgBd", t), IndexedName("LblBd", t), {20 + 142 * t, 58, 136, 36}, QString(),
                        [this, t] { SelectTab(t); });
        PicZDTime[size_t(t)] = addPanel(this, IndexedName("PicZDTime", t), {10, kPageTop, kPageWidth, kPageHeight});
        addHoverSurface(PicZDTime[size_t(t)]);
    }
    for (int i = 0; i < kFields; ++i) {
        TxtDCansd << nullptr;
        LblCansd << nullptr;
        Label2 << nullptr;
    }
    auto addField = [this](int i, QWidget* parent, int x, int y) {
        LblCansd[i] = addLabel(IndexedName("LblCansd", i), QString(), {x, y, 210, 26}, parent);
        LblCansd[i]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        auto* box = new QLineEdit(parent);
        box->setObjectName(IndexedName("TxtDCansd", i));
        box->setGeometry(x + 216, y, 70, 26);
        box->setAlignment(Qt::AlignRight);
        RestrictKeys(box, QStringLiteral("1234567890"));
        connect(box, &QLineEdit::textEdited, box, [box](const QString& t) {
            if (t.size() > kMaxChars)
                box->setText(t.left(kMaxChars));
        });
        box->installEventFilter(this);
        TxtDCansd[i] = box;
        Label2[i] = addLabel(IndexedName("Label2", i), QString(), {x + 292, y, 50, 26}, parent);
    };
    for (size_t g = 0; g < std::size(kGroupPlaces); ++g) {
        const PlantBlocks::VibratorGroup& v = PlantBlocks::kVibratorGroups[g];
        const GroupPlace& place = kGroupPlaces[g];
        auto* group = new QFrame(PicZDTime[size_t(place.tab)]);
        group->setObjectName(IndexedName("FraZD", v.scale));
        const int rows = v.last - v.first + 1;
        group->setGeometry(16 + 380 * place.column, place.top, kGroupWidth, 40 + kRowStep * rows);
        group->setStyleSheet(QStringLiteral("QFrame#FraZD\\(%1\\) { border: 1px solid #c5d3e6; border-radius: 6px; }")
                                 .arg(v.scale));
        QLabel* title = addLabel(IndexedName("lblTitleName", v.scale), QString(), {12, 6, kGroupWidth - 24, 26}, group);
        title->setStyleSheet(QStringLiteral("QLabel { font-weight: bold; color: #17407a; } QLabel:disabled { color: #9aa4b2; }"));
        lblTitleName[size_t(v.scale)] = title;
        for (int i = v.first; i <= v.last; ++i)
            addField(i, group, 6, 36 + kRowStep * (i - v.first));
    }
    // The last pair belongs to no vibrator and lies below the visible area; it is read and written all the same.
    addField(26, this, 20, kFormHeight + 20);
    addField(27, this, 20, kFormHeight + 20 + kRowStep);

    LbLCssdS = addLabel(QStringLiteral("LbLCssdS"), QString(), {20, 470, kPageWidth, 28});
    LbLCssdS->setStyleSheet(QStringLiteral("font-weight: bold;"));
    LbLCssdS->hide();
    ImgBdOk = addImageButton(this, QStringLiteral("ImgBdOk"), QStringLiteral("lblBdOk"), {420, 508, 110, 34},
                             ButtonSize::Small, QString(), [this] { okClicked(); });
    cmdDefault = addImageButton(this, QStringLiteral("cmdDefault"), QStringLiteral("lblDefault"), {540, 508, 120, 34},
                                ButtonSize::Small, QString(), [this] { defaultClicked(); });
    ImgReturn = addImageButton(this, QStringLiteral("ImgReturn"), QStringLiteral("lblReturn"), {670, 508, 110, 34},
                               ButtonSize::Small, QString(), [this] { returnClicked(); });

    // Load
    loadCaptions();
    for (const PlantBlocks::VibratorGroup& v : PlantBlocks::kVibratorGroups) {
        const size_t s = size_t(v.scale);
        lblTitleName[s]->setText(PlantBlocks::vibratorTitle(v.scale));
        if (PlantBlocks::fieldInUse(QLatin1String(kVibratorBlock), v.first))
            continue;
        for (int i = v.first; i <= v.last; ++i) {
            TxtDCansd[i]->setEnabled(false);
            LblCansd[i]->setEnabled(false);
        }
        lblTitleName[s]->setEnabled(false);
    }
    SelectTab(0);
    const QString hint = ComText(QStringLiteral("COM023"), QStringLiteral("输入范围为:"));
    for (int i = 0; i < kFields; ++i)
        TxtDCansd[i]->setToolTip(hint + rangeOf(i));
    StepNo = 71;
    SendFlag = true;
    send_recieve(BuildReadFrameWords(QLatin1String(kVibratorBlock), kVibratorWords));
}

QString ZDTime::text(const char* key, const char* deflt) const
{
    return LangText(QStringLiteral("LANZDTIMEFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}

void ZDTime::loadCaptions()
{
    // The language file has numbers for the six texts of the vibrator titles and the messages only; the
    // title, tabs and field captions are the form's own and read the same in every language.
    const QString title = QStringLiteral("振动器振动时间设定");
    setWindowTitle(title);
    lblFormTitle->setText(title);
    ImgBd[0].setText(QStringLiteral("骨料振动器"));
    ImgBd[1].setText(QStringLiteral("粉料振动器"));
    const QString second = QStringLiteral("秒");
    for (int i = 0; i < kFields; ++i) {
        LblCansd[i]->setText(PlantBlocks::vibratorCaption(i));
        Label2[i]->setText(second);
    }
    for (size_t k = 0; k < std::size(kDesignTitles); ++k)
        lblTitleName[size_t(PlantBlocks::kVibratorGroups[k].scale)]->setText(QString::fromUtf8(kDesignTitles[k]));
    ImgBdOk.setText(ComText(QStringLiteral("COM001"), QStringLiteral("确 定")));
    cmdDefault.setText(ComText(QStringLiteral("COM006"), QStringLiteral("初始化参数")));
    cmdDefault.image->setToolTip(ComText(QStringLiteral("COM027"), QStringLiteral("设置出厂默认的经验值")));
    ImgReturn.setText(ComText(QStringLiteral("COM003"), QStringLiteral("返 回")));
}

void ZDTime::showEvent(QShowEvent* e)
{
    FormBase::showEvent(e);
    CurrentForm = objectName();
}

void ZDTime::SelectTab(int tab)
{
    for (int t = 0; t < 2; ++t) {
        PicZDTime[size_t(t)]->setVisible(t == tab);
    }
    FormBase::selectTab(ImgBd, tab);
    for (int t = 0; t < 2; ++t)
        setTextColor(ImgBd[t].caption, t == tab ? QColor(0, 0, 0xC0) : QColor(0x40, 0x40, 0x40));
}

bool ZDTime::eventFilter(QObject* watched, QEvent* event)
{
    const int i = TxtDCansd.indexOf(qobject_cast<QLineEdit*>(watched));
    if (i >= 0) {
        if (event->type() == QEvent::FocusIn)
            QTimer::singleShot(0, TxtDCansd[i], &QLineEdit::selectAll);
        else if (event->type() == QEvent::KeyRelease) {
            LbLCssdS->hide();
            VibSaved = false;
        }
    }
    return FormBase::eventFilter(watched, event);
}

void ZDTime::okClicked()
{
    QList<double> shown;
    for (const QLineEdit* box : TxtDCansd)
        shown << Val(box->text());
    const BlockFault fault = PlantBlocks::checkShown(QLatin1String(kVibratorBlock), shown);
    if (!fault.ok()) {
        const int i = fault.field;
        MbText = fault.message;
        MbIsOk = true;
        MbIsError = false;
        ShowMbQuestion();
        MbResult = false;
        if (tabOf(i) >= 0)
            SelectTab(tabOf(i));
        TxtDCansd[i]->setFocus(Qt::OtherFocusReason);
        return;
    }
    MbText = text("ZDTIME011", "是否设定当前时间参数?");
    MbIsOk = false;
    MbIsError = false;
    ShowMbQuestion();
    if (MbResult)
        WriteVib();
}

void ZDTime::WriteVib()
{
    for (int i = 0; i < kFields; ++i)
        Link().TxtDCansd.at(size_t(i)) = NumText(Val(TxtDCansd[i]->text()) * 10);
    SendFlag = true;
    VibSaved = false;
    StepNo = 72;
    send_recieve(GetWrite_PLCD(QLatin1String(kVibratorBlock), kVibratorWords));
    LbLCssdS->setText(text("ZDTIME012", "正在设定振动器时间,请稍候......"));
    setTextColor(LbLCssdS, QColor(0xFF, 0, 0));
}

void ZDTime::defaultClicked()
{
    MbText = ComText(QStringLiteral("COM028"), QStringLiteral("是否要初始化参数?"));
    MbIsOk = false;
    MbIsError = false;
    ShowMbQuestion();
    if (!MbResult)
        return;
    for (int i = 0; i < kFields; ++i)
        TxtDCansd[i]->setText(defaultOf(i));
    VibSaved = false;
    WriteVib();
}

void ZDTime::returnClicked()
{
    bool changed = false;
    for (int i = 0; i < kFields && !changed; ++i)
        changed = Val(TxtDCansd[i]->text()) != SavedVib.at(size_t(i));
    if (changed && !VibSaved) {
        MbText = text("ZDTIME013", "振动器时间更改后未设定，是否返回?");
        MbIsOk = false;
        MbIsError = false;
        ShowMbQuestion();
        if (!MbResult)
            return;
    }
    unloadLater();
    Forms::show(QStringLiteral("Other"));
}
