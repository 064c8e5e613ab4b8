// The option page of the parameter editors: eight option bits of the scale as pairs of switches, read as
// a two-byte image and written the moment one is clicked.
#include "params/param_editor.h"

#include "common/form_access.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/own_text.h"
#include "common/scale_table.h"
#include "common/vbtext.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"

#include <QCheckBox>
#include <QFrame>
#include <QLineEdit>

namespace {
// Rows of the option page: the bit, its heading, the texts of the box for 1 and the box for 0, and the
// help image of the row (-1: none). Bits 5 and 7 stand beyond the right edge, out of the operator's reach.
struct OptionRow {
    int bit;
    const char* headKey;
    const char* head;
    const char* onKey;
    const char* on;
    const char* offKey;
    const char* off;
    int help;
    int line;  // -1: beyond the edge
};
constexpr OptionRow kOptionRows[] = {
    {0, "CANSD017", "计量落差调整方式：", "CANSD023", "固定值", "CANSD024", "自动调整", 0, 0},
    {1, "CANSD018", "扣称提前量调整方式：", "CANSD023", "固定值", "CANSD024", "自动调整", 1, 1},
    {2, "CANSD019", "补称功能选择：", "COM014", "关闭", "COM015", "开启", 2, 2},
    {3, "CANSD020", "扣称功能选择：", "COM014", "关闭", "COM015", "开启", 3, 3},
    {4, "CANSD021", "记录方式选择：", "CANSD025", "记录方式二", "CANSD026", "记录方式一", 4, 4},
    {5, nullptr, QT_TRANSLATE_NOOP("OwnText", "标定方式选择"), nullptr, "S505 ON", nullptr, "S505 OFF", -1, -1},
    {6, "CANSD022", "重量变动检测方式：", "COM014", "关闭", "COM015", "开启", 5, 5},
    {7, nullptr, QT_TRANSLATE_NOOP("OwnText", "S507调整方式"), nullptr, "S507 ON", nullptr, "S507 OFF", -1, -1},
};

int hexNibble(const QString& t, bool first)
{
    if (t.isEmpty())
        return 0;
    bool ok = false;
    const int v = QString(first ? t.front() : t.back()).toInt(&ok, 16);
    return ok ? v : 0;
}
}  // namespace

void ParamEditor::buildOptionPage()
{
    QWidget* page = picCansd[1];
    const int pageWidth = page->width();
    for (int i = 0; i < 16; ++i)
        Check1 << nullptr;
    for (int i = 0; i < 6; ++i)
        ImgHelp << ImageButton{};
    for (const OptionRow& r : kOptionRows) {
        const int x = r.line < 0 ? pageWidth + 60 : 20;
        const int y = r.line < 0 ? 20 + 52 * (r.bit == 5 ? 0 : 1) : 20 + 54 * r.line;
        auto* frame = new QFrame(page);
        frame->setObjectName(IndexedName("FraTzfs", r.bit));
        frame->setGeometry(x, y, 780, 46);
        frame->setStyleSheet(QStringLiteral("QFrame#FraTzfs\\(%1\\) { border: 1px solid #c5d3e6; border-radius: 6px; }")
                                 .arg(r.bit));
        FraTzfs << frame;
        auto* head = addLabel(IndexedName("LblTzfs", r.bit), QString(), {12, 9, 280, 28}, frame);
        head->setStyleSheet(QStringLiteral("font-weight: bold;"));
        LblTzfs << head;
        for (int side = 0; side < 2; ++side) {
            const int i = 2 * r.bit + side;
            auto* box = new QCheckBox(frame);
            box->setObjectName(IndexedName("Check1", i));
            box->setGeometry(300 + 170 * side, 9, 165, 28);
            // A box set by the program runs this too, as an operator's click does; the armed flag keeps
            // those runs quiet.
            connect(box, &QCheckBox::toggled, this, [this, i] { optionClicked(i); });
            Check1[i] = box;
        }
        if (r.help >= 0)
            ImgHelp[r.help] = addImage(frame, IndexedName("ImgHelp", r.help), {660, 9, 28, 28}, ButtonSize::HelpIcon,
                                       [this, h = r.help] { optionHelp(h); });
    }
    ImgHelp[3].image->hide();
    txtTip[1] = addHelpTip(QStringLiteral("txtTip(1)"), {60, 20 + 54 * 6, 720, 150}, page);
}

void ParamEditor::loadOptionCaptions()
{
    for (const OptionRow& r : kOptionRows) {
        auto pick = [this](const char* key, const char* deflt) {
            if (!key)
                return OwnText::tr(deflt);
            if (QByteArray(key).startsWith("COM"))
                return ComText(QLatin1String(key), QString::fromUtf8(deflt));
            return text(key, deflt);
        };
        findChild<QLabel*>(IndexedName("LblTzfs", r.bit))->setText(pick(r.headKey, r.head));
        Check1[2 * r.bit]->setText(pick(r.onKey, r.on));
        Check1[2 * r.bit + 1]->setText(pick(r.offKey, r.off));
    }
}

void ParamEditor::decodeOptions()
{
    if (TxtSRead->text().isEmpty()) {
        TxtSRead->setText(QStringLiteral("0"));
        return;
    }
    if (TxtSRead->text().size() != 4)
        return;
    bool& armed = optionArmed();
    armed = false;
    const QString t = Trim(TxtSRead->text());
    auto spread = [this](int v, std::initializer_list<int> bits) {
        int w = 8;
        for (int bit : bits) {
            const bool on = v >= w;
            if (on)
                v -= w;
            w /= 2;
            OptionBit[bit] = on ? QStringLiteral("1") : QStringLiteral("0");
            Check1[2 * bit]->setChecked(on);
            Check1[2 * bit + 1]->setChecked(!on);
        }
    };
    spread(hexNibble(t, true), {3, 2, 1, 0});
    spread(hexNibble(t, false), {7, 6, 5, 4});
    if (recordModeApart()) {
        if (Agg1RecordMode.isEmpty())
            Agg1RecordMode = QStringLiteral("0");
        const bool modeTwo = Agg1RecordMode == QLatin1String("0");
        Check1[8]->setChecked(modeTwo);
        Check1[9]->setChecked(!modeTwo);
    }
    armed = true;
}

void ParamEditor::optionClicked(int i)
{
    if (!optionArmed())
        return;
    const int bit = i / 2;
    // Setting the other box runs this handler for it first; that inner run sends the frame.
    Check1[i ^ 1]->setChecked(!Check1[i]->isChecked());
    if (bit == 4 && recordModeApart())
        Agg1RecordMode = Check1[8]->isChecked() ? QStringLiteral("0") : QStringLiteral("1");
    else
        OptionBit[bit] = Check1[2 * bit]->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    auto nibble = [this](int from) {
        int v = 0;
        for (int b = 3; b >= 0; --b)
            v = 2 * v + int(Val(OptionBit[from + b]));
        return Hex(v);
    };
    WriteData = nibble(0) + Mid(Trim(TxtSRead->text()), 2, 2) + nibble(4);
    if (WriteData.size() == 4 && optionArmed()) {
        SendFlag = true;
        StepNo = optionStep();
        const QString frame = GetWrite_TSCMXY(OptionDevice, WriteData, 4);
        send_recieve(frame);
        setStatus(LblTzxxTip, text("CANSD052", "正在调整选项,请稍候......"), false);
    } else if (WriteData.size() == 2 && WriteData != LastWriteData) {
        // The image was never read: the neighbours' digits are missing and nothing can be sent.
        LastWriteData = WriteData;
        ShowLinkFaultBox();
    }
    optionArmed() = false;
}

void ParamEditor::optionHelp(int i)
{
    QString first, second;
    switch (i) {
    case 0:
        first = text("CANSD047", "计量落差调整方式：正常情况下推荐使用落差自动调整方式，在设备晃动或落差变化较大的场合推荐使用固定方式，"
                                 "使用固定方式时必须通过观察配料情况将落差调整值逐渐调整到相对合适的数值。[关闭]");
        second = text("CANSD080", "使用固定方式时必须通过观察配料情况将落差调整值逐渐调整到相对合适的数值。[关闭]");
        break;
    case 1:
        first = text("CANSD048", "扣称提前量调整方式：正常情况下推荐使用提前量自动调整方式，在设备晃动或提前量变化较大的场合推荐使用"
                                 "固定方式，使用固定方式时必须通过观察配料情况将提前量调整值逐渐调整到相对合适的数值。[关闭]");
        second = text("CANSD081", "使用固定方式时必须通过观察配料情况将提前量调整值逐渐调整到相对合适的数值。[关闭]");
        break;
    case 4: {
        const QString note = text("CANSD087", "说明:在扣称功能选择关闭时,记录方式一才有效。                       [关闭]");
        if (ScaleNo >= 8 && ScaleNo <= 10) {
            first = text("CANSD049", "记录方式一:即记录计量结束时的重量值。");
            second = text("CANSD085", "记录方式二:即记录卸料前的重量值-卸料后的重量值。") + QLatin1Char('\n') + note;
        } else {
            first = text("CANSD067", "记录方式一:即记录卸料前的重量值。");
            second = text("CANSD086", "记录方式二:即记录卸料前的重量值-卸料后的重量值。") + QLatin1Char('\n') + note;
        }
        break;
    }
    case 5:
        first = text("CANSD050", "重量变动检测方式:开启时，物料计量(或卸料)结束后，必须等待重量信号稳定后再进行超差检查以保证超差检查"
                                 "是在重量稳定的情况下进行的；关闭时，只须经过延时检查超差时间(或延时控制时间)后，即可进行超差检查。[关闭]");
        second = text("CANSD082", "关闭时，只须经过延时检查超差时间(或延时控制时间)后，即可进行超差检查。[关闭]");
        break;
    default:
        break;  // the top-up and deduction rows have no text: a line break alone
    }
    showHelp(txtTip[1], first + QLatin1Char('\n') + second);
}
