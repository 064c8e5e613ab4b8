#include "calibration/yi_biao_humid_new.h"

#include "common/module1.h"
#include "common/vbtext.h"
#include "common/lang.h"

#include <QFrame>
#include <QLineEdit>

YIBiaoHumidNew::YIBiaoHumidNew() : CalibrationForm(QStringLiteral("YIBiaoHumidNew"))
{
    buildForm();
    ImgBd[0].setVisible(false);  // no option tab here
    ImgBd[1].setText(text("HUMID042", "零位标定"));
    ImgBd[2].setText(text("HUMID043", "分度标定"));
    LblCansd[0]->setText(text("HUMID004", "AD信号值:"));
    LblCansd[1]->setText(text("HUMID005", "当前湿度值:"));
    lblFmzL->setText(text("HUMID006", "已知湿度值:"));
    lblFmzLUnit->setText(QStringLiteral("%"));
    lblFmzLUnit2->setText(QStringLiteral("%"));
    ImgBdOk.setText(LangText(QStringLiteral("LANYIBIAOFORM"), QStringLiteral("YIBIAO008"), QStringLiteral("确 定")));
    texts.askZero = texts.askSpan = text("HUMID007", "确定要湿度标定吗?");
    texts.busyZero = texts.busySpan = text("HUMID008", "正在湿度标定，请稍候......");
    texts.doneZero = texts.doneSpan = text("HUMID009", "湿度标定完成!");
    texts.refusedZero = texts.refusedSpan = text("HUMID010", "湿度标定失败，请重新标定!");
    texts.errorZero = texts.errorSpan = text("HUMID011", "湿度标定错误，请重新标定!");
    TxtFmzL->setToolTip(ComText(QStringLiteral("COM023"), QStringLiteral("输入范围为:")) + QStringLiteral("(1-20)%"));
    PrepareEntry();
    LblBceng->setText(ScaleTitle);
    TxtSRead->setText(QStringLiteral("0"));
    setTopMost(true);
    tabClicked(1);
}

void YIBiaoHumidNew::tabClicked(int index)
{
    if (index == 0)
        return;
    hideResults();
    StartLivePolling();
    SelectTab(index);
    ShowStepHint();
}

void YIBiaoHumidNew::ShowStepHint()
{
    CalibrationForm::ShowStepHint();
    if (ZeroMode)
        lblBiaoZero->setText(text("HUMID002", "标定前请确认测湿仪探针包裹在干燥的砂子中,等待信号稳定后操作{确定}键进行湿度标定。"));
    else if (SpanMode)
        lblBiaoZero->setText(text("HUMID003", "标定前请确认测湿仪探针包裹在已知湿度值的砂子中,然后输入砂子已知湿度值,"
                                              "等待信号稳定后操作{确定}键进行湿度标定。"));
}

bool YIBiaoHumidNew::spanEntryValid()
{
    const double v = Val(TxtFmzL->text());
    if (v >= 1 && v <= 20) {
        PrepareEntry();
        return true;
    }
    MbText = text("HUMID012", "请检查!实际湿度值的输入范围为:") + QStringLiteral("(1-20)%");
    MbIsOk = false;
    ShowMbQuestion();
    if (MbResult)
        TxtFmzL->setFocus();
    return false;
}
