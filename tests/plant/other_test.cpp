#include "plant_rig.h"

#include "plant/other.h"

#include <QCheckBox>

namespace {
const QString kReadTimes = Frame(QStringLiteral("011AE0C"));  // D215, 12 bytes
const QString kReadS612 = Frame(QStringLiteral("0004C02"));
const QString kReadS500 = Frame(QStringLiteral("0003E02"));
const QString kReadY62 = Frame(QStringLiteral("000A602"));
const QList<int> kTimes{55, 50, 80, 180, 50, 50};
const QString kAskSet = QStringLiteral("是否设定当前时间配置?");
const QString kRange = QStringLiteral("请检查!时间设定的输入范围为：");
const QString kLinkFault = QStringLiteral("通讯发生错误请检查：\n1、下位机是否已断电；\n2、下位机是否正常运行；\n"
                                          "3、通讯线是否接在端口:Com2,且接触良好。");

QString timesWrite(const QList<int>& words) { return Frame(QStringLiteral("111AE0C") + WordsHex(words)); }

// The four digits of a byte pair as the controller sends them, into its memory.
void seedPair(plcsim::Controller& sim, int address, const QString& digits)
{
    sim.setByteAt(address, quint8(digits.left(2).toInt(nullptr, 16)));
    sim.setByteAt(address + 1, quint8(digits.mid(2).toInt(nullptr, 16)));
}

// Ticks: Check1(0..9, 14, 15), CheckPPd(0, 1); the click on a box of the tab, and the frame it sends.
const struct { const char *name, *s612, *s500, *ticks; int tab; const char* click; QString frame; } kOptions[] = {
    {"8000, mixing from transition hopper", "8000", "0000", "01010110010101", 2, "Check1(7)",
     WriteFrame("004C", "0000")},
    {"F00F, automatic bell", "F00F", "0001", "10101010101010", 0, "Check1(3)", WriteFrame("004C", "D00F")},
    {"F00F, the ticked box turns the pair over", "F00F", "0001", "10101010101010", 0, "Check1(2)",
     WriteFrame("004C", "D00F")},
    {"5AC3, no bell at power-on", "5AC3", "FFF0", "01011001100101", 0, "Check1(0)", WriteFrame("004C", "5AC7")},
    {"5AC3, automatic loading", "5AC3", "FFF0", "01011001100101", 1, "Check1(5)", WriteFrame("004C", "1AC3")},
    {"belt runs while feeding, S500", "8000", "1234", "01010110010101", 1, "CheckPPd(0)", WriteFrame("003E", "1235")},
};

const QString kAskReturn = QStringLiteral("时间配置更改后未设定，是否返回?");
const QString kBusy = QStringLiteral("正在设定时间配置,请稍候....../#ff0000/hidden");
const QString kDone = QStringLiteral("时间设定成功!/#008000/shown");
const QString kRetry = QStringLiteral("正在尝试继续时间设定!/#ff0000/shown");
// The twins go out in tenths, a value read as 55 back as 55. Then the return, answered No: a changed value
// is asked about unless acknowledged, and again after a key in a box.
const struct { const char* name; QString button; QStringList edits; int naks; QList<int> words;
    QStringList statuses; bool saved, key, asked; } kTimesSet[] = {
    {"unchanged", "lblBdOk", {}, 0, kTimes, {kBusy, kDone}, true, false, false},
    {"edited", "ImgBdOk", {"0=60", "3=5"}, 0, {600, 50, 80, 50, 50, 50}, {kBusy, kDone}, true, false, false},
    {"defaults at once, a key after", "lblDefault", {"0=0"}, 0, {50, 50, 80, 180, 50, 50}, {kBusy, kDone}, true, true,
     true},
    {"defaults refused every time", "cmdDefault", {}, 9, {50, 50, 80, 180, 50, 50},
     QStringList{kBusy} + QStringList(9, kRetry), false, false, true},
};

// focus -1: the field is hidden.
const struct { const char* name; QList<int> registers; QStringList edits; QString range; int tab, focus; }
    kTimeFaults[] = {
    {"61 in field 0", kTimes, {"0=61", "1=60"}, "(0-60)S", 0, 0},
    {"field 3 on tab 1, field 5 after it", kTimes, {"3=4", "5=31"}, "(5-60)S", 1, 3},
    {"31 opens the hopper tab", kTimes, {"5=31"}, "(0-30)S", 4, 5},
    {"hidden monitor time below range", {55, 50, 80, 180, 40, 50}, {}, "(5-60)S", 2, -1},
};

// A jog button writes both bytes from S208 (data: "" for the refresh) as it goes down and as it is let go;
// a refused write leaves the fan's retry tip in sight, the valve's is hidden at once. The refresh reads Y62
// as it goes down and stays bright until let go. Y64 to Y67 are its first digit.
const struct { const char *name, *button; bool press; int naks, y60; const char *data, *retryTip, *shown; } kJogs[] = {
    {"fan pressed", "cmdFengJi", true, 0, 0, "0200", "",
     "风机已开启!/#008000/shown|除尘阀已关闭!/hidden|ImageGreenUp|ImageRed"},
    {"fan released", "cmdFengJi", false, 0, 0, "0000", "",
     "风机已关闭!/#ff0000/shown|除尘阀已关闭!/hidden|ImageRed|ImageRed"},
    {"valve pressed", "cmdChuChen", true, 0, 0, "0400", "",
     "风机已关闭!/#ff0000/shown|除尘阀已开启!/hidden|ImageRed|ImageGreenUp"},
    {"valve release refused", "cmdChuChen", false, 1, 0, "0000", "尝试关闭除尘阀!/#ff0000/hidden",
     "风机已关闭!/#ff0000/shown|除尘阀已关闭!/hidden|ImageRed|ImageRed"},
    {"C000 refreshed: both on", "ImageFengJiState", true, 0, 0xC0, "", "",
     "风机已开启!/#008000/shown|除尘阀已开启!/hidden|ImageGreenUp|ImageGreenUp"},
    {"4000 refreshed: fan on, valve closed", "lblFengJiState", true, 0, 0x40, "", "",
     "风机已开启!/#008000/shown|除尘阀已关闭!/hidden|ImageGreenUp|ImageRed"},
    {"0000 refreshed: the same digits again", "ImageFengJiState", true, 0, 0x00, "", "",
     "风机已关闭!/#ff0000/shown|除尘阀已关闭!/hidden|ImageRed|ImageRed"},
    {"3F00 refreshed: other outputs only", "lblFengJiState", true, 0, 0x3F, "", "",
     "风机已关闭!/#ff0000/shown|除尘阀已关闭!/hidden|ImageRed|ImageRed"},
};

const struct { const char* name; int help, tab; QString text; } kHelps[] = {
    {"bell times", 0, 0,
     "延时响铃时间：每车最后一盘搅拌完成,拌缸卸料门关闭,再延时设定的时间后才响铃。\n"
     "持续响铃时间：响铃持续的时间。[关闭]"},
    {"loading", 1, 1,
     "自动上料：系统在半自动状态时，选择自动上料时各种骨料计量完成后自动卸料将骨料送往过渡仓。\n"
     "暂停上料：各种骨料计量完成后将进入等待状态，操作平皮带启动按钮后开始卸料将骨料送往过渡仓。[关闭]"},
    {"belt times", 2, 1,
     "平皮带卸料延时停止时间：系统在最后一个骨料秤卸料结束后开始延时,延时到此设定时间,平皮带停止。\n"
     "过渡仓接料延时时间：平皮带停止后开始延时,延时到此设定时间,系统界面显示过渡仓接料完成信号。[关闭]"},
    {"mixing time", 3, 2,
     "普通生产模式时：搅拌时间计时方式可以进行选择:可以选择过渡仓骨料投料完成开始计算搅拌时间或全部物料投料完成"
     "开始计算搅拌时间。\n高铁或管桩生产模式时：物料开始投入搅拌缸后，即开始计算搅拌时间。[关闭]"},
    {"belt mode", 4, 1,
     "平皮带工作方式选择：选择生产时连续工作，在生产时当前任务单中平皮带会连续运行，当前任务单完成时平皮带停止运行，"
     "新任务单骨料秤放料时平皮带继续连续运行? \n"
     "选择送料时启动工作，在骨料秤放料时平皮带才会运行，当骨料秤放完料后平皮带停止运行。    [关闭] "},
    {"hopper, one text", 5, 4,
     "拌缸卸料后成品储存斗延时卸料时间： "
     "成品储存斗选择联动，拌缸开始卸料后，经此设定时间后成品储存斗自动进行卸料?[关闭]"},
};
}  // namespace

class OtherTest : public QObject, PlantRig {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterPlantWith({"PLC"}); }
    void init()
    {
        setUp();
        SavedTime.fill(0);
    }
    void cleanup() { tearDown(); }

    // The chain on opening, the boxes as decoded, then a click after the controller's middle digits have
    // changed: they go back as they were read.
    void openThenClickAnOption_data() { TableRows(kOptions); }
    void openThenClickAnOption()
    {
        const auto& c = TableRow(kOptions);
        seedPair(h->sim, 0x4C, c.s612);
        seedPair(h->sim, 0x3E, c.s500);
        open(kTimes);
        QCOMPARE(h->takeFrames(), (QStringList{kReadTimes, kReadS612, kReadS500}));
        QStringList times;
        for (int i = 0; i < 6; ++i)
            times << Box(f, i)->text();
        QCOMPARE(times.join('|'), QStringLiteral("5.5|5|8|18|5|5"));
        QString state;
        for (const char* b : {"Check1(0)", "Check1(1)", "Check1(2)", "Check1(3)", "Check1(4)", "Check1(5)", "Check1(6)",
                              "Check1(7)", "Check1(8)", "Check1(9)", "Check1(14)", "Check1(15)", "CheckPPd(0)",
                              "CheckPPd(1)"})
            state += check(b)->isChecked() ? '1' : '0';
        QCOMPARE(state, QLatin1String(c.ticks));
        QCOMPARE(Box(f, 0)->isEnabled(), c.ticks[3] == '1');  // bell times only with the automatic bell
        QCOMPARE(check("Check1(6)")->text(), QStringLiteral("全部物料投料完成开始计算搅拌时间"));
        QCOMPARE(Box(f, 3)->toolTip(), QStringLiteral("输入范围为:(5-60)S"));
        QVERIFY(Ctl(f, "LblBd(4)")->isHidden() && Box(f, 4)->isHidden());

        seedPair(h->sim, 0x4C, QStringLiteral("0FF0"));
        seedPair(h->sim, 0x3E, QStringLiteral("0FF0"));
        ClickOn(Ctl(f, QStringLiteral("LblBd(%1)").arg(c.tab)));
        const bool wasTicked = check(c.click)->isChecked();
        check(c.click)->click();
        QTRY_COMPARE(Status(f->LblTzxxTip), QStringLiteral("选项更改完成!/#008000"));
        QCOMPARE(h->takeFrames(), QStringList{c.frame});
        QCOMPARE(check(c.click)->isChecked(), !wasTicked);
        QCOMPARE(Box(f, 0)->isEnabled(), check("Check1(3)")->isChecked());  // also when the ticked box was clicked
        QVERIFY(mb->texts.isEmpty());
        QCOMPARE(leave(Ctl(f, "ImgReturn")), QStringList());  // the options are not times
        QTRY_VERIFY(!Forms::loaded(QStringLiteral("Other")));
    }

    // S612 has been read, S500 not yet: the belt pair has no middle digits to send.
    void beltClickBeforeItsReadSendsNothing()
    {
        connect(&h->sim, &plcsim::Controller::requestReceived, this, [this](const QByteArray& frame) {
            if (QString::fromLatin1(frame) == kReadS500)
                h->sim.injectFault(Fault::NoReply, 1);
        });
        seedPair(h->sim, 0x4C, QStringLiteral("8000"));
        f = show<Other>("Other");
        QTRY_COMPARE(h->sim.requests().size(), 3);
        QCOMPARE(h->takeFrames(), (QStringList{kReadTimes, kReadS612, kReadS500}));
        Link().Timer2.stop();  // no re-send while the operator clicks
        QTRY_VERIFY(f->CheckArmed);
        check("CheckPPd(0)")->click();
        QCOMPARE(mb->texts, QStringList{kLinkFault});
        QCOMPARE(mb->errorIcons, QList<bool>{true});
        // The pair stands as before the click; the same two digits again open nothing, a new value is told.
        check("CheckPPd(0)")->setChecked(false);
        check("CheckPPd(0)")->click();
        QCOMPARE(mb->texts.size(), 1);
        check("CheckPPd(1)")->click();
        QCOMPARE(mb->texts.size(), 2);
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());
    }

    void timesWritten_data() { TableRows(kTimesSet); }
    void timesWritten()
    {
        const auto& c = TableRow(kTimesSet);
        open(kTimes);
        h->takeFrames();
        Edit(f, c.edits);
        QCOMPARE(statusPerReply(f->LbLCssdS, Ctl(f, c.button), c.naks), c.statuses);
        QCOMPARE(TimesSaved, c.saved);
        QCOMPARE(mb->texts.value(0), c.button.endsWith("Default") ? QStringLiteral("是否要初始化参数?") : kAskSet);
        QCOMPARE(mb->texts.size(), c.saved ? 1 : 2);  // the link fault after the ninth refusal
        QCOMPARE(h->takeFrames(), QStringList(qMin(c.naks + 1, 9), timesWrite(c.words)));
        QCOMPARE(h->sim.word(218), short(c.words[3]));
        if (c.key)
            QTest::keyClick(Box(f, 2), Qt::Key_Shift);
        QCOMPARE(leave(Ctl(f, "ImgReturn")), c.asked ? QStringList{kAskReturn} : QStringList());
        QTest::qWait(20);
        QCOMPARE(Forms::loaded(QStringLiteral("Other")) != nullptr, c.asked);
    }

    void timeCheckStopsAtFirstFault_data() { TableRows(kTimeFaults); }
    void timeCheckStopsAtFirstFault()
    {
        const auto& c = TableRow(kTimeFaults);
        open(c.registers);
        h->takeFrames();
        Edit(f, c.edits);
        for (int round = 0; round < 2; ++round) {  // the same refusal each time
            ClickOn(Ctl(f, "LblBd(0)"));
            ClickOn(Ctl(f, "ImgBdOk"));
        }
        QCOMPARE(mb->texts, QStringList(2, kRange + c.range));
        QCOMPARE(mb->okOnly, QList<bool>(2, true));
        for (int t = 0; t < 5; ++t)
            QCOMPARE(f->PicZDTime[size_t(t)]->isVisible(), t == c.tab);
        if (c.focus >= 0)
            QTRY_COMPARE(f->focusWidget(), Box(f, c.focus));
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());
        if (c.focus >= 0) {
            QCOMPARE(leave(Ctl(f, "ImgReturn")), QStringList{kAskReturn});
            return;
        }
        // The operator cannot see the monitor time: only the defaults bring it back into its range.
        ClickOn(Ctl(f, "LblBd(1)"));
        ClickOn(Ctl(f, "cmdDefault"));
        QTRY_VERIFY(TimesSaved);
        mb->queue(false);
        ClickOn(Ctl(f, "ImgBdOk"));
        QCOMPARE(mb->texts, QStringList(2, kRange + c.range) << QStringLiteral("是否要初始化参数?") << kAskSet);
        QCOMPARE(h->takeFrames(), QStringList{timesWrite({50, 50, 80, 180, 50, 50})});
    }

    void jogAndRefresh_data() { TableRows(kJogs); }
    void jogAndRefresh()
    {
        const auto& c = TableRow(kJogs);
        open(kTimes);
        ClickOn(Ctl(f, "LblBd(3)"));
        QTRY_VERIFY(SendFlag && f->TxtSReadFengJi->text() == QLatin1String("XXX"));
        QCOMPARE(h->takeFrames().last(), kReadY62);
        h->sim.setByteAt(0xA6, quint8(c.y60));
        f->lblFengJiTip->setText(QString());  // told again even when the digits are those of the tab's read
        QLabel* tip = c.button == QLatin1String("cmdChuChen") ? f->lblChuChenTip : f->lblFengJiTip;
        QStringList tips;  // the tip after each reply
        connect(&h->sim, &plcsim::Controller::reply, this, [&] { tips << Status(tip) + shownOrHidden(tip); });
        if (c.naks)
            h->sim.injectFault(Fault::Nak, c.naks);
        QWidget* b = Ctl(f, c.button);
        if (c.press)
            QTest::mousePress(b, Qt::LeftButton, {}, b->rect().center());
        else
            QTest::mouseRelease(b, Qt::LeftButton, {}, b->rect().center());
        const bool jog = *c.data;
        if (jog)
            QCOMPARE(b->property("picture").toString(), QLatin1String(c.press ? "ImageGreen" : "ImageRed"));
        QTRY_COMPARE(Status(f->lblFengJiTip) + shownOrHidden(f->lblFengJiTip) + '|' + f->lblChuChenTip->text() +
                         shownOrHidden(f->lblChuChenTip) + '|' + f->cmdFengJi->property("picture").toString() + '|' +
                         f->cmdChuChen->property("picture").toString(),
                     QString::fromUtf8(c.shown));
        WaitIdle();
        QCOMPARE(h->takeFrames(), QStringList(jog ? c.naks + 1 : 0, WriteFrame("001A", c.data)) << kReadY62);
        if (c.naks)
            QCOMPARE(tips.value(0), QString::fromUtf8(c.retryTip));
        if (jog)
            return;
        const auto bright = [this] {
            return Ctl<QLabel>(f, "ImageFengJiState")->pixmap().toImage() ==
                   ButtonPicture(ButtonSize::Large, true).toImage();
        };
        QVERIFY(bright());
        QTest::mouseRelease(b, Qt::LeftButton, {}, b->rect().center());
        QVERIFY(!bright());
        QTest::qWait(20);
        QVERIFY(h->takeFrames().isEmpty());
    }

    // Each help mark shows its own text alone, the two halves a line each; a click on the text closes it.
    void helpPopsUp_data() { TableRows(kHelps); }
    void helpPopsUp()
    {
        const auto& c = TableRow(kHelps);
        open(kTimes);
        f->SelectTab(c.tab);
        for (QLabel* tip : f->txtTip)  // one left open elsewhere closes when this one opens
            tip->show();
        ClickOn(Ctl(f, QStringLiteral("ImgHelp(%1)").arg(c.help)));
        for (int i = 0; i < 6; ++i)
            QCOMPARE(f->txtTip[i]->isHidden(), i != c.help);
        QVERIFY(f->txtTip[c.help]->isVisible());
        QCOMPARE(f->txtTip[c.help]->text(), c.text);
        ClickOn(f->txtTip[c.help]);
        QVERIFY(f->txtTip[c.help]->isHidden());
    }

    void factoryAndVibratorEntries()
    {
        open(kTimes);
        QWidget* hard = Ctl(f, "lblHard");
        QVERIFY(hard->isHidden());
        ClickOn(Ctl(f, "lblShowFactory"));
        QVERIFY(hard->isVisible());
        ClickOn(Ctl(f, "LblZDTime"));
        QVERIFY(Forms::loaded(QStringLiteral("ZDTime"))->isVisible());
        QVERIFY(f->isHidden());
        QTRY_VERIFY(SendFlag);
        Forms::show(QStringLiteral("Other"));
        ClickOn(hard);
        QTRY_VERIFY(!Forms::loaded(QStringLiteral("Other")));
        QVERIFY(Forms::loaded(QStringLiteral("Factory")));
    }

private:
    void open(const QList<int>& times)
    {
        for (int i = 0; i < times.size(); ++i)
            h->sim.setWord(215 + i, short(times[i]));
        f = show<Other>("Other");
        QVERIFY(f);
        QTRY_VERIFY(f->TxtSReadPPd->text().size() == 4 && SendFlag);
    }
    QCheckBox* check(const QString& name) { return Ctl<QCheckBox>(f, name); }
    static QString shownOrHidden(QLabel* l) { return l->isVisible() ? "/shown" : "/hidden"; }

    Other* f = nullptr;
};

QTEST_MAIN(OtherTest)
#include "other_test.moc"
