// The option tab of the weight form: the calibration mode of the scale and the plant's zero tracking,
// each a pair of switches written the moment it is clicked.
#include "calibration/yi_biao.h"
#include "calibration/yi_biao_support.h"

#include "common/form_access.h"
#include "common/lang.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/register_map.h"

#include <QCheckBox>
#include <QLineEdit>

using namespace calform;

void YIBiao::ReadOptions()
{
    StepNo = 20;
    SendFlag = true;
    send_recieve(BuildReadFrameBytes(OptionDevice, 2));
}

// ---- the option tab ----

void YIBiao::switchWordRead(bool tracking)
{
    QLineEdit* slot = tracking ? txtTzxxZeroRead : txtTzxxRead;
    if (slot->text().isEmpty())
        slot->setText(QStringLiteral("0"));
    const QString t = slot->text();
    if (t.size() != 4)
        return;
    SwitchesLive = false;
    std::array<QString, 8>& bits = tracking ? TrackBits : OptionBits;
    const int hi = hexDigitOf(t, true), lo = hexDigitOf(t, false);
    for (int k = 0; k < 4; ++k) {
        bits[size_t(k)] = (hi >> k) & 1 ? QStringLiteral("1") : QStringLiteral("0");
        bits[size_t(k + 4)] = (lo >> k) & 1 ? QStringLiteral("1") : QStringLiteral("0");
    }
    QCheckBox* const* pair = tracking ? Check2 : Check1;
    const bool on = bits[tracking ? 0 : 5] == QLatin1String("1");
    pair[0]->setChecked(on);
    pair[1]->setChecked(!on);
    SwitchesLive = true;
}

void YIBiao::modeClicked(int index, bool checked)
{
    if (!SwitchesLive)
        return;
    Check1[1 - index]->setChecked(!checked);
    // Check1(10) is the plain mode: bit on.
    OptionBits[5] = (index == 0) == checked ? QStringLiteral("1") : QStringLiteral("0");
    writeSwitchWord(false);
}

void YIBiao::trackClicked(int index, bool checked)
{
    if (!SwitchesLive)
        return;
    Check2[1 - index]->setChecked(!checked);
    // The bit is on when tracking is off: Check2(0) "off" ticked.
    TrackBits[0] = (index == 0) == checked ? QStringLiteral("1") : QStringLiteral("0");
    // Caption and colour only: the tip shows nothing the controller has not taken.
    if (index == 0) {
        LblTzxxZeroTip->setText(checked ? text("YIBIAO031", "零位跟踪功能已关闭！") : text("YIBIAO032", "零位跟踪功能已开启！"));
        setTextColor(LblTzxxZeroTip, checked ? kRed : kGreen);
    }
    writeSwitchWord(true);
}

void YIBiao::writeSwitchWord(bool tracking)
{
    const std::array<QString, 8>& bits = tracking ? TrackBits : OptionBits;
    auto v = [&](int k) { return int(Val(bits[size_t(k)])); };
    const int a = v(0) + 2 * v(1) + 4 * v(2) + 8 * v(3);
    const int b = v(4) + 2 * v(5) + 4 * v(6) + 8 * v(7);
    // The middle digits are foreign bits of the snapshot taken at the read: carried, not changed.
    const QString word = Hex(a) + Mid(Trim((tracking ? txtTzxxZeroRead : txtTzxxRead)->text()), 2, 2) + Hex(b);
    if (tracking)
        TrackWord = word;
    if (word.size() == 4 && SwitchesLive) {
        StepNo = tracking ? 23 : 21;
        SendFlag = true;
        send_recieve(GetWrite_TSCMXY(tracking ? QLatin1String(kSystemOptions) : OptionDevice, word, 4));
        if (!tracking)
            setStatus(LblTzxxTip, text("YIBIAO029", "正在调整调校方式,请稍候......"), false);
        return;
    }
    QString& reported = tracking ? reportedTrackWord_ : reportedModeWord_;
    if (word.size() == 2 && word != reported) {
        // The read did not arrive: the link's fault text, once for a given word.
        reported = word;
        ShowLinkFaultBox();
    }
}
