#include "plant/sensor.h"

#include "common/form_access.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/register_map.h"
#include "plant/plant_blocks.h"
#include "shell/key_filter.h"

#include <QCursor>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>
#include <cmath>

namespace {
constexpr int kFormWidth = 760;
constexpr int kPanelTop = 96;
constexpr int kRows = 7;

int decimalsOf(int i) { return ScaleDecimals.at(size_t(i)); }
QString rangeText(int i) { return PlantBlocks::rangeText(QLatin1String(kSensorBlock), i); }

// Six characters for what the operator types or pastes; a value the form writes (a negative read, a
// reformatted one) is shown whole.
constexpr int kMaxTyped = 6;
bool typedBeyondLimit(const QLineEdit* box, const QKeyEvent* e)
{
    const QString t = e->text();
    return !t.isEmpty() && t.front().isPrint() && box->text().size() - box->selectedText().size() >= kMaxTyped;
}
}  // namespace

Sensor::Sensor() : FormBase(QStringLiteral("Sensor"))
{
    lblFormTitle = addTitle(QStringLiteral("lblFormTitle"), QString(), {0, 10, kFormWidth, 36}, 20);
    ImageExit = addExitImage(QStringLiteral("ImageExit"), {kFormWidth - 44, 10});
    ImgBd = addTab(this, QStringLiteral("ImgBd"), QStringLiteral("LblBd"), {20, 58, 120, 34}, QString(), {});
    selectTab({ImgBd}, 0);

    PicSensor = addPanel(this, QStringLiteral("PicSensor"), {10, kPanelTop, kFormWidth - 20, 340});
    addHoverSurface(PicSensor);
    for (int i = 0; i < 14; ++i) {
        const int x = 20 + 370 * (i / kRows), y = 20 + 40 * (i % kRows);
        LblCansd[size_t(i)] = addLabel(IndexedName("LblCansd", i), QString(), {x, y, 170, 30}, PicSensor);
        LblCansd[size_t(i)]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        auto* box = new QLineEdit(PicSensor);
        box->setObjectName(IndexedName("TxtDCansd", i));
        box->setGeometry(x + 180, y, 120, 30);
        box->setAlignment(Qt::AlignRight);
        connect(box, &QLineEdit::textEdited, box, [box](const QString& t) {
            if (t.size() > kMaxTyped)
                box->setText(t.left(kMaxTyped));
        });
        RestrictKeys(box, QStringLiteral("1234567890."), true);
        box->installEventFilter(this);
        TxtDCansd[size_t(i)] = box;
        auto* twin = new QLineEdit(this);
        twin->setObjectName(IndexedName("TxtDCansdMulTen", i));
        twin->hide();
        TxtDCansdMulTen[size_t(i)] = twin;
    }
    LblUnit = addLabel(QStringLiteral("LblUnit"), QString(), {20, 302, 300, 28}, PicSensor);

    const int bottom = kPanelTop + 340 + 14;
    LbLCssdS = addLabel(QStringLiteral("LbLCssdS"), QString(), {20, bottom, 360, 32});
    LbLCssdS->setStyleSheet(QStringLiteral("font-weight: bold;"));
    LbLCssdS->hide();
    cmdDefault = addImageButton(this, QStringLiteral("cmdDefault"), QStringLiteral("lblDefault"),
                                {kFormWidth - 370, bottom, 110, 34}, ButtonSize::Small, QString(),
                                [this] { defaultClicked(); });
    ImgBdOk = addImageButton(this, QStringLiteral("ImgBdOk"), QStringLiteral("lblBdOk"),
                             {kFormWidth - 250, bottom, 110, 34}, ButtonSize::Small, QString(), [this] { okClicked(); });
    ImgReturn = addImageButton(this, QStringLiteral("ImgReturn"), QStringLiteral("lblReturn"),
                               {kFormWidth - 130, bottom, 110, 34}, ButtonSize::Small, QString(),
                               [this] { returnClicked(); });
    setFixedSize(kFormWidth, bottom + 34 + 16);

    loadCaptions();
    loadNames();
    FormatSensorFields();
    readSensors();
}

QString Sensor::text(const char* key, const char* deflt) const
{
    return LangText(QStringLiteral("LANSENSORFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}

void Sensor::loadCaptions()
{
    lblFormTitle->setText(text("SENSOR001", "传感器配置设定"));
    setWindowTitle(lblFormTitle->text());
    ImgBd.setText(text("SENSOR002", "传感器配置"));
    LblUnit->setText(ComText(QStringLiteral("COM025"), QStringLiteral("单位：")) + QStringLiteral("Kg"));
    ImgBdOk.setText(ComText(QStringLiteral("COM001"), QStringLiteral("确 定")));
    cmdDefault.setText(ComText(QStringLiteral("COM006"), QStringLiteral("参数初始化")));
    ImgReturn.setText(ComText(QStringLiteral("COM003"), QStringLiteral("返回")));
}

// A scale without a name keeps its row, greyed: its word is still read and written with the others.
void Sensor::loadNames()
{
    for (int i = 0; i < 14; ++i) {
        const bool spare = !PlantBlocks::fieldInUse(QLatin1String(kSensorBlock), i);
        TxtDCansd[size_t(i)]->setEnabled(!spare);
        LblCansd[size_t(i)]->setEnabled(!spare);
        LblCansd[size_t(i)]->setText(spare ? ComText(QStringLiteral("COM007"), QStringLiteral("备用"))
                                           : ScaleName.at(size_t(i)));
    }
}

void Sensor::FormatSensorFields()
{
    const QString prefix = ComText(QStringLiteral("COM023"), QStringLiteral("输入范围为:"));
    for (int i = 0; i < 14; ++i) {
        const int d = decimalsOf(i);
        QLineEdit* box = TxtDCansd[size_t(i)];
        box->setToolTip(prefix + rangeText(i));
        box->setText(Format(Val(box->text()), WeightFormat(d)));
    }
}

void Sensor::readSensors()
{
    StepNo = 73;
    SendFlag = true;
    send_recieve(BuildReadFrameWords(QLatin1String(kSensorBlock), kSensorWords));
}

void Sensor::showEvent(QShowEvent* e)
{
    FormBase::showEvent(e);
    CurrentForm = objectName();
}

bool Sensor::eventFilter(QObject* watched, QEvent* event)
{
    auto* box = qobject_cast<QLineEdit*>(watched);
    if (box && std::find(TxtDCansd.begin(), TxtDCansd.end(), box) != TxtDCansd.end()) {
        switch (event->type()) {
        case QEvent::KeyPress: {
            auto* key = static_cast<QKeyEvent*>(event);
            if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)
                FormatSensorFields();
            // The pointer follows the entry, so that the operator finds it on the field being typed.
            QCursor::setPos(box->mapToGlobal(QPoint(7, 7)));
            if (typedBeyondLimit(box, key))
                return true;
            break;
        }
        case QEvent::KeyRelease:
            LbLCssdS->hide();
            SensorSaved = false;
            break;
        case QEvent::FocusIn:
            QTimer::singleShot(0, box, &QLineEdit::selectAll);
            break;
        default:
            break;
        }
    }
    return FormBase::eventFilter(watched, event);
}

void Sensor::okClicked()
{
    QList<double> shown;
    for (const QLineEdit* box : TxtDCansd)
        shown << Val(box->text());
    const BlockFault fault = PlantBlocks::checkShown(QLatin1String(kSensorBlock), shown);
    if (!fault.ok()) {
        MbText = fault.message;
        MbIsOk = true;
        MbIsError = false;
        ShowMbQuestion();
        TxtDCansd[size_t(fault.field)]->setFocus();
        return;
    }
    for (int i = 0; i < 14; ++i) {
        const int d = decimalsOf(i);
        QLineEdit* box = TxtDCansd[size_t(i)];
        box->setText(Format(Val(box->text()), WeightFormat(d)));
        TxtDCansdMulTen[size_t(i)]->setText(NumText(Val(box->text()) * std::pow(10.0, d)));
    }
    MbText = text("SENSOR004", "是否设定当前参数?");
    MbIsOk = false;
    MbIsError = false;
    ShowMbQuestion();
    if (!MbResult)
        return;  // the twins keep the new values
    SendFlag = true;
    SensorSaved = false;
    StepNo = 74;
    send_recieve(GetWrite_PLCD(QLatin1String(kSensorBlock), kSensorWords));
    // Text and colour only: the line shows when the reply is in, or stays as the last key left it.
    const bool wasShown = !LbLCssdS->isHidden();
    setStatus(LbLCssdS, text("SENSOR005", "正在设定传感器配置,请稍候......"), false);
    LbLCssdS->setVisible(wasShown);
}

// Nothing is asked and nothing is sent: with two decimals 500 lies beyond the range, and the next
// "确 定" says so.
void Sensor::defaultClicked()
{
    for (QLineEdit* box : TxtDCansd)
        box->setText(QStringLiteral("500"));
    SensorSaved = false;
}

void Sensor::returnClicked()
{
    bool changed = false;
    for (int i = 0; i < 14 && !changed; ++i)
        changed = Val(TxtDCansd[size_t(i)]->text()) != SavedSensor.at(size_t(i));
    if (changed && !SensorSaved) {
        MbText = text("SENSOR006", "传感器配置更改后未设定，是否返回?");
        MbIsOk = false;
        MbIsError = false;
        ShowMbQuestion();
        if (!MbResult)
            return;
    }
    unloadLater();
    Forms::show(QStringLiteral("BcBut"));
}
