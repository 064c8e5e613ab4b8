// Filtered boxes: what an operator can and cannot get into them by keys, paste and drop.
#include "shell/key_filter.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTest>

class KeyFilterTest : public QObject {
    Q_OBJECT
private slots:
    void edits_data()
    {
        QTest::addColumn<QString>("start");
        QTest::addColumn<int>("cursor");  // -1: the whole text selected, as a box selects it on focus
        QTest::addColumn<QString>("action");  // "key:<text>", "del", "bs", "paste:<text>"
        QTest::addColumn<bool>("singlePoint");  // false: digits only, as the time boxes
        QTest::addColumn<QString>("result");
        QTest::newRow("digit typed") << "12" << 2 << "key:3" << true << "123";
        QTest::newRow("letter swallowed") << "12" << 2 << "key:a" << true << "12";
        QTest::newRow("minus swallowed") << "12" << 0 << "key:-" << true << "12";
        QTest::newRow("second point swallowed") << "1.2" << 3 << "key:." << true << "1.2";
        QTest::newRow("point over a selected text that holds one") << "1.2" << -1 << "key:." << true << "1.2";
        QTest::newRow("digit over a selected text") << "1.2" << -1 << "key:7" << true << "7";
        // A value the program showed with a character of no key: the next keys are judged all the same.
        QTest::newRow("letter after a read negative value") << "-5" << 2 << "key:a1" << true << "-51";
        QTest::newRow("point once") << "12" << 2 << "key:." << true << "12.";
        QTest::newRow("no point in a digits box") << "12" << 2 << "key:." << false << "12";
        QTest::newRow("digit beside a read point") << "5.5" << 3 << "key:1" << false << "5.51";
        QTest::newRow("Delete deletes") << "123" << 0 << "del" << true << "23";
        QTest::newRow("Backspace deletes") << "123" << 3 << "bs" << true << "12";
        QTest::newRow("paste of digits") << "1" << 1 << "paste:23" << true << "123";
        QTest::newRow("paste with a letter refused") << "" << 0 << "paste:abc-12" << true << "";
        QTest::newRow("paste of a second point refused") << "1.5" << 3 << "paste:.5" << true << "1.5";
        QTest::newRow("paste over a selected text") << "1.5" << -1 << "paste:2.5" << true << "2.5";
        // Values the program writes are shown as read, whatever the list.
        QTest::newRow("program text unfiltered") << "-5.5" << 0 << "key:" << false << "-5.5";
    }
    void edits()
    {
        QFETCH(QString, start);
        QFETCH(int, cursor);
        QFETCH(QString, action);
        QFETCH(bool, singlePoint);
        QFETCH(QString, result);
        QLineEdit box;
        RestrictKeys(&box, singlePoint ? QStringLiteral("1234567890.") : QStringLiteral("1234567890"), singlePoint);
        box.setText(start);
        if (cursor < 0)
            box.selectAll();
        else
            box.setCursorPosition(cursor);
        if (action.startsWith(QLatin1String("key:")))
            QTest::keyClicks(&box, action.mid(4));
        else if (action == QLatin1String("del"))
            QTest::keyClick(&box, Qt::Key_Delete);
        else if (action == QLatin1String("bs"))
            QTest::keyClick(&box, Qt::Key_Backspace);
        else {
            QApplication::clipboard()->setText(action.mid(6));
            box.paste();
        }
        QCOMPARE(box.text(), result);
    }
};

QTEST_MAIN(KeyFilterTest)
#include "key_filter_test.moc"
