// Zero and span calibration: the tabs, the entry, the pulse chain through Timer3, the outcome and the record.
#include "calibration/yi_biao.h"
#include "calibration/yi_biao_support.h"

#include "calibration/cal_records.h"
#include "common/form_access.h"
#include "common/lang.h"
#include "common/scale_table.h"
#include "link/frame_codec.h"
#include "link/link_engine.h"
#include "link/register_map.h"

#include <QCheckBox>
#include <QCursor>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <cmath>

using namespace calform;

void CalibrationForm::hideResults()
{
    LbLBLwc->hide();
    LbLBZwc->hide();
}

void CalibrationForm::ReadLiveOnce()
{
    StepNo = 51;
    SendFlag = true;
    send_recieve(BuildReadFrameWords(QLatin1String(kLiveBlock), kLiveWords));
    LiveReadDone = false;
}

void CalibrationForm::StartLivePolling()
{
    ReadLiveOnce();
    Link().Timer1.start();
}

void CalibrationForm::SelectTab(int index)
{
    ZeroMode = index == 1;
    SpanMode = index == 2;
    ImageZero->setVisible(ZeroMode);
    ImageWeight->setVisible(SpanMode);
    selectTab(ImgBd, index);
    PicYiBiao[0]->setVisible(index == 0);
    PicYiBiao[1]->setVisible(index != 0);
    ImgBdOk.setVisible(index != 0);
}

void CalibrationForm::ShowStepHint()
{
    Picbz->setVisible(SpanMode);
    lblBiaoZero->show();
    if (ZeroMode)
        CalBitMask = BitOperand(CalZeroDevice);
    else if (SpanMode)
        CalBitMask = BitOperand(CalSpanDevice);
}

void CalibrationForm::PrepareEntry()
{
    trapped("PrepareEntry", [&] {
        const int d = decimals();
        const QString shown = Format(Val(TxtFmzL->text()), d == 0 ? QStringLiteral("#0")
                                                                  : QStringLiteral("#0.") + QString(d, QLatin1Char('0')));
        if (TxtFmzL->text() != shown)
            TxtFmzL->setText(shown);
        TxtFm->setText(NumText(std::round(Val(TxtFmzL->text()) * std::pow(10.0, d))));
    });
}

void CalibrationForm::StoreCalValues(int scale)
{
    if (scale < 0 || scale > 15)
        throw VbError(kErrSubscript, QStringLiteral("Subscript out of range"));
    const QString now = CalTimeText(CalNow());
    if (ZeroMode) {
        BiaoZeroTime[scale] = now;
        BiaoZeroADValue[scale] = LbLADv->text();
        BiaoZeroWTValue[scale] = LblZLv->text();
    }
    if (SpanMode) {
        BiaoWeightTime[scale] = now;
        BiaoWeightADValue[scale] = LbLADv->text();
        BiaoWeightWTValue[scale] = LblZLv->text();
        BiaoWeightFMValue[scale] = TxtFmzL->text();
    }
}

void CalibrationForm::okClicked()
{
    if (ZeroMode) {
        hideResults();
        BLHandle();
    } else if (SpanMode) {
        BZHandle();
    }
}

void CalibrationForm::BLHandle()
{
    trapped("BLHandle", [&] {
        askBox(texts.askZero);
        if (MbResult)
            start(false);
    });
}

void CalibrationForm::BZHandle()
{
    trapped("BZHandle", [&] {
        if (!spanEntryValid())
            return;
        askBox(texts.askSpan);
        if (MbResult)
            start(true);
    });
}

// Timer1 goes off before the request is raised, so that no live read is in flight when Timer3 sends.
void CalibrationForm::start(bool span)
{
    Link().Timer1.stop();
    LiveReadDone = false;
    (span ? SpanRequest : ZeroRequest) = true;
    Link().Timer3.start();
    (span ? SpanDone : ZeroDone) = false;
    setStatus(span ? LbLBZwc : LbLBLwc, span ? texts.busySpan : texts.busyZero, false);
}

void CalibrationForm::statusChanged()
{
    QString t = txtBCSuccessRead->text();
    if (t == QLatin1String("XXX"))
        return;  // the form's own reset
    if (t.isEmpty()) {
        txtBCSuccessRead->setText(QStringLiteral("0"));
        t = txtBCSuccessRead->text();
    }
    if (t.size() != 4)
        return;
    trapped("txtBCSuccessRead_Change", [&] {
        int d = hexDigitOf(t, true);
        if (d >= 8) {  // S999: the controller took the calibration
            OptionBits[3] = QStringLiteral("1");
            d -= 8;
            StoreCalValues(ScaleNo);
            const bool zero = ZeroMode && !ZeroDone;
            const bool span = SpanMode && !SpanDone;
            if (zero || span) {
                (zero ? ZeroDone : SpanDone) = true;
                setStatus(zero ? LbLBLwc : LbLBZwc, zero ? texts.doneZero : texts.doneSpan, true);
            }
            // The record holds the values of the calibration, taken before the next read can change them;
            // that read goes out first, so the files do not hold up the link.
            const QString ad = LbLADv->text(), weight = LblZLv->text(), testWeight = TxtFmzL->text();
            const QString at = CalTimeText(CalNow());
            // One read only: AD and weight stand at the values of the calibration.
            ReadLiveOnce();
            if (zero || span) {
                zero ? AppendZeroRecord(ScaleNo) : AppendWeightRecord(ScaleNo);
                if (writesOpRecord()) {
                    CalOperation = zero ? QStringLiteral("标零") : QStringLiteral("标重");
                    AppendOpRecord(ScaleTitle, at, OperatorName, CalOperation, ad, weight, testWeight);
                }
            }
        } else {
            OptionBits[3] = QStringLiteral("0");
        }
        if (d >= 4) {  // S998: refused
            OptionBits[2] = QStringLiteral("1");
            d -= 4;
            if (ZeroMode && !ZeroDone) {
                ZeroDone = true;
                setStatus(LbLBLwc, texts.refusedZero, false);
            }
            if (SpanMode && !SpanDone) {
                SpanDone = true;
                setStatus(LbLBZwc, texts.refusedSpan, false);
            }
            StartLivePolling();
        } else {
            OptionBits[2] = QStringLiteral("0");
        }
        if (OptionBits[2] == QLatin1String("0") && OptionBits[3] == QLatin1String("0")) {
            if (ZeroMode && !ZeroDone) {
                ZeroDone = true;
                setStatus(LbLBLwc, texts.errorZero, false);
            }
            if (SpanMode && !SpanDone) {
                SpanDone = true;
                setStatus(LbLBZwc, texts.errorSpan, false);
            }
            StartLivePolling();
        }
    });
    txtBCSuccessRead->setText(QStringLiteral("XXX"));
}

void CalibrationForm::returnClicked()
{
    Link().Timer1.stop();
    Link().Timer2.stop();
    StepNo = 444;
    LiveReadDone = false;
    const QString back = returnForm();
    unloadLater();
    Forms::show(back);
}

// Enter tidies the entry up; the characters themselves are the key filter's.
bool CalibrationForm::entryKey(QKeyEvent* e)
{
    if (e->key() != Qt::Key_Return && e->key() != Qt::Key_Enter)
        return false;
    PrepareEntry();
    // The pointer goes onto the box, ready for the OK button.
    QCursor::setPos(TxtFmzL->mapToGlobal(QPoint(7, 7)));
    return true;
}

bool CalibrationForm::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == TxtFmzL) {
        if (event->type() == QEvent::KeyPress) {
            if (entryKey(static_cast<QKeyEvent*>(event)))
                return true;
        } else if (event->type() == QEvent::FocusIn) {
            QTimer::singleShot(0, TxtFmzL, [e = TxtFmzL] { e->selectAll(); });
        }
    } else if (event->type() == QEvent::MouseMove && (watched == Picbz || watched == PicYiBiao[1])) {
        PrepareEntry();
    }
    return FormBase::eventFilter(watched, event);
}

void YIBiao::tabClicked(int index)
{
    hideResults();
    if (index == 0) {
        Link().Timer1.stop();
        LiveReadDone = false;
        ReadOptions();
    } else {
        if (!current_ && !(Check2[0]->isChecked() && !Check2[1]->isChecked())) {
            ShowOkBox(text("YIBIAO011", "调校之前,零位跟踪功能需关闭,全部调校完成之后再开启!"), false);
            return;
        }
        StartLivePolling();
    }
    SelectTab(index);
    ShowStepHint();
}

bool YIBiao::spanEntryValid()
{
    const double v = Val(TxtFmzL->text());
    if (current_) {
        if (v >= 1 && v <= 400) {
            PrepareEntry();
            TxtFm->setText(NumText(Val(TxtFmzL->text())));
            return true;
        }
        askBox(LangNo == 2 ? QStringLiteral("Please check! Current range is:(1-400)A")
                           : QStringLiteral("请检查!当前电流的输入范围为:(1-400)A"));
        if (MbResult)
            TxtFmzL->setFocus();
        return false;
    }
    const QString zeros(std::max(0, 2 - decimals()), QLatin1Char('0'));
    if (v >= 1 && v <= Val(QStringLiteral("300") + zeros)) {
        PrepareEntry();
        return true;
    }
    ShowOkBox(text("YIBIAO017", "请检查!当前砝码重量的输入范围为:") + QStringLiteral("(1-300") + zeros + QStringLiteral(")Kg"),
          false);
    TxtFmzL->setFocus();
    return false;
}
