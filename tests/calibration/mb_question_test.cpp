#include "test_support.h"

#include "calibration/mb_question.h"
#include "common/module1.h"
#include "link/form_access.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <functional>

namespace {

struct Seen {
    QSize size;
    QPoint pos;
    QRect label, ok, yes, no;
    bool okShown = false, yesShown = false, noShown = false;
    QString title, text;
};

// Shows the box as a caller does and, once it is up, records it and acts on it.
Seen showAndAct(const std::function<void(MbQuestion*)>& act)
{
    Seen seen;
    QTimer poll;
    poll.setInterval(5);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        MbQuestion* box = MbQuestion::showing();
        if (!box || !box->isVisible())
            return;
        poll.stop();
        auto* lbl = box->findChild<QLabel*>(QStringLiteral("LblAsk"));
        auto btn = [&](const char* n) { return box->findChild<QPushButton*>(QLatin1String(n)); };
        seen = {box->size(), box->pos(), lbl->geometry(), btn("CmdMbOK")->geometry(), btn("CmdYes")->geometry(),
                btn("CmdNo")->geometry(), btn("CmdMbOK")->isVisible(), btn("CmdYes")->isVisible(),
                btn("CmdNo")->isVisible(), box->windowTitle(), lbl->text()};
        act(box);
    });
    poll.start();
    ShowMbQuestion();
    return seen;
}

void click(MbQuestion* box, const char* name) { box->findChild<QPushButton*>(QLatin1String(name))->click(); }

}  // namespace

class MbQuestionTest : public QObject {
    Q_OBJECT
private slots:
    void init() { h = new ConsoleHarness; }
    void cleanup() { delete h; }
    void answers_data();
    void answers();
    void sizeFollowsTheText();
    void placedBelowTheCalibrationValues();

private:
    ConsoleHarness* h = nullptr;
};

void MbQuestionTest::answers_data()
{
    QTest::addColumn<bool>("isOk");
    QTest::addColumn<QString>("button");  // empty: closed by the window's control
    QTest::addColumn<bool>("before");
    QTest::addColumn<bool>("result");
    QTest::newRow("OK") << true << "CmdMbOK" << false << true;
    QTest::newRow("Yes") << false << "CmdYes" << false << true;
    QTest::newRow("No") << false << "CmdNo" << true << false;
    QTest::newRow("closed, result kept true") << false << "" << true << true;
    QTest::newRow("closed, result kept false") << true << "" << false << false;
}

void MbQuestionTest::answers()
{
    QFETCH(bool, isOk);
    QFETCH(QString, button);
    QFETCH(bool, before);
    QFETCH(bool, result);
    MbText = QStringLiteral("是否退出秤控台?");
    MbIsOk = isOk;
    MbResult = before;
    const Seen s = showAndAct([&](MbQuestion* box) {
        if (button.isEmpty())
            box->close();
        else
            click(box, qPrintable(button));
    });
    QCOMPARE(s.text, MbText);
    QCOMPARE(s.title, QStringLiteral("提示"));
    QCOMPARE(s.okShown, isOk);
    QCOMPARE(s.yesShown, !isOk);
    QCOMPARE(s.noShown, !isOk);
    QCOMPARE(MbResult, result);
    QVERIFY(!MbQuestion::showing());
}

void MbQuestionTest::sizeFollowsTheText()
{
    MbIsOk = false;
    MbText = QStringLiteral("密码错误!");
    const Seen small = showAndAct([](MbQuestion* b) { click(b, "CmdYes"); });
    MbText = QStringLiteral("参数更改后未设定，是否返回?参数更改后未设定，是否返回?参数更改后未设定，是否返回?");
    const Seen wide = showAndAct([](MbQuestion* b) { click(b, "CmdYes"); });
    MbText = QStringLiteral("通讯发生错误请检查：\n1、下位机是否已断电；\n2、下位机是否正常运行；");
    const Seen tall = showAndAct([](MbQuestion* b) { click(b, "CmdYes"); });

    QVERIFY(wide.size.width() > small.size.width());
    QVERIFY(tall.size.height() > small.size.height());
    for (const Seen& s : {wide, tall}) {
        // Width: the label and 1000 twips; height: below the label 1200 twips; buttons 200 twips below it.
        QCOMPARE(s.size.width(), s.label.width() + 66);
        QCOMPARE(s.size.height(), s.label.bottom() + 1 + 80);
        QCOMPARE(s.yes.top(), s.label.bottom() + 1 + 13);
        QCOMPARE(s.yes.left(), (s.size.width() - 106) / 2);
        QCOMPARE(s.no.left(), s.yes.left() + 60);
        QCOMPARE(s.ok.left(), (s.size.width() - s.ok.width()) / 2);
    }
}

void MbQuestionTest::placedBelowTheCalibrationValues()
{
    Forms::registerForm(QStringLiteral("YIBiao"), [] { return new QWidget; });
    QWidget* cal = Forms::load(QStringLiteral("YIBiao"));
    cal->move(120, 90);
    MbText = QStringLiteral("标定成功!");
    MbIsOk = true;
    CurrentForm = QStringLiteral("YIBiao");
    const Seen beside = showAndAct([](MbQuestion* b) { click(b, "CmdMbOK"); });
    QCOMPARE(beside.pos, QPoint(120, 90 + 180));

    CurrentForm = QStringLiteral("Cansd");
    const Seen centred = showAndAct([](MbQuestion* b) { click(b, "CmdMbOK"); });
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QCOMPARE(centred.pos, QPoint((screen.width() - centred.size.width()) / 2, (screen.height() - centred.size.height()) / 2));
}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    MbQuestionTest t;
    return QTest::qExec(&t, argc, argv);
}

#include "mb_question_test.moc"
