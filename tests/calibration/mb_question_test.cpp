#include "cal_rig.h"

#include "calibration/mb_question.h"

#include <QPushButton>
#include <QTimer>

namespace {
struct Seen {
    QSize size;
    QPoint pos;
    QRect label, ok, yes, no;
    bool okShown = false, yesShown = false;
};

QPushButton* btn(MbQuestion* box, const char* n) { return box->findChild<QPushButton*>(QLatin1String(n)); }

// Shows the box as a caller does and, once it is up, records it and then closes it with `button`
// (empty: the window's own close).
Seen showAndAnswer(const QString& text, bool isOk, const char* button)
{
    MbText = text;
    MbIsOk = isOk;
    Seen seen;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        MbQuestion* box = MbQuestion::showing();
        if (!box || !box->isVisible())
            return;
        poll.stop();
        seen = {box->size(), box->pos(), box->findChild<QLabel*>(QStringLiteral("LblAsk"))->geometry(),
                btn(box, "CmdMbOK")->geometry(), btn(box, "CmdYes")->geometry(), btn(box, "CmdNo")->geometry(),
                btn(box, "CmdMbOK")->isVisible(), btn(box, "CmdYes")->isVisible() && btn(box, "CmdNo")->isVisible()};
        *button ? btn(box, button)->click() : void(box->close());
    });
    poll.start(5);
    ShowMbQuestion();
    return seen;
}

const struct { const char *name, *button; bool isOk, before, result; } kAnswers[] = {
    {"OK", "CmdMbOK", true, false, true},
    {"Yes", "CmdYes", false, false, true},
    {"No", "CmdNo", false, true, false},
    {"closed, result kept true", "", false, true, true},
    {"closed, result kept false", "", true, false, false},
};
}  // namespace

class MbQuestionTest : public QObject {
    Q_OBJECT
private slots:
    void init() { h = new ConsoleHarness; }
    void cleanup() { delete h; }

    void answers_data() { TableRows(kAnswers); }
    void answers()
    {
        const auto& c = TableRow(kAnswers);
        MbResult = c.before;
        const Seen s = showAndAnswer(QStringLiteral("是否退出秤控台?"), c.isOk, c.button);
        QCOMPARE(s.okShown, c.isOk);
        QCOMPARE(s.yesShown, !c.isOk);
        QCOMPARE(MbResult, c.result);
        QVERIFY(!MbQuestion::showing());
    }

    // No width of its own: a short text gets a narrow box. Over the calibration form it sits below the values.
    void sizeAndPlace()
    {
        Forms::registerForm(QStringLiteral("YIBiao"), [] { return new QWidget; });
        Forms::load(QStringLiteral("YIBiao"))->move(120, 90);
        CurrentForm = QStringLiteral("YIBiao");
        const Seen small = showAndAnswer(QStringLiteral("密码错误!"), false, "CmdYes");
        const Seen wide = showAndAnswer(QStringLiteral("参数更改后未设定，是否返回?").repeated(3), false, "CmdYes");
        const Seen tall =
            showAndAnswer(QStringLiteral("通讯发生错误请检查：\n1、下位机是否已断电；\n2、下位机是否正常运行；"), false, "CmdYes");
        QCOMPARE(small.pos, QPoint(120, 90 + 180));
        QVERIFY(wide.size.width() > small.size.width());
        QVERIFY(tall.size.height() > small.size.height());
        for (const Seen& s : {small, wide, tall}) {
            // Width: the label and 1000 twips; height: below the label 1200 twips; buttons 200 twips below it.
            QCOMPARE(s.size.width(), s.label.width() + 66);
            QCOMPARE(s.size.height(), s.label.bottom() + 1 + 80);
            QCOMPARE(s.yes.top(), s.label.bottom() + 1 + 13);
            QCOMPARE(s.yes.left(), (s.size.width() - 106) / 2);
            QCOMPARE(s.no.left(), s.yes.left() + 60);
            QCOMPARE(s.ok.left(), (s.size.width() - s.ok.width()) / 2);
        }
    }

private:
    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(MbQuestionTest)
#include "mb_question_test.moc"
