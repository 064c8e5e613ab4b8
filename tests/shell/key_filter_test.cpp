// Filtered boxes: what an operator can and cannot get into them by keys, paste and drop.
#include "test_support.h"

#include "shell/key_filter.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>

namespace {
// cursor -1: the whole text selected, as a box selects it on focus. action: "key:<text>", "del", "bs",
// "paste:<text>". singlePoint false: digits only, as the time boxes.
const struct { const char* name; const char* start; int cursor; const char* action; bool singlePoint;
               const char* result; } kEdits[] = {
    {"digit typed", "12", 2, "key:3", true, "123"},
    {"letter swallowed", "12", 2, "key:a", true, "12"},
    {"minus swallowed", "12", 0, "key:-", true, "12"},
    {"second point swallowed", "1.2", 3, "key:.", true, "1.2"},
    {"point over a selected text that holds one", "1.2", -1, "key:.", true, "1.2"},
    {"digit over a selected text", "1.2", -1, "key:7", true, "7"},
    // A value the program showed with a character of no key: the next keys are judged all the same.
    {"letter after a read negative value", "-5", 2, "key:a1", true, "-51"},
    {"point once", "12", 2, "key:.", true, "12."},
    {"no point in a digits box", "12", 2, "key:.", false, "12"},
    {"digit beside a read point", "5.5", 3, "key:1", false, "5.51"},
    {"Delete deletes", "123", 0, "del", true, "23"},
    {"Backspace deletes", "123", 3, "bs", true, "12"},
    {"paste of digits", "1", 1, "paste:23", true, "123"},
    {"paste with a letter refused", "", 0, "paste:abc-12", true, ""},
    {"paste of a second point refused", "1.5", 3, "paste:.5", true, "1.5"},
    {"paste over a selected text", "1.5", -1, "paste:2.5", true, "2.5"},
    // Values the program writes are shown as read, whatever the list.
    {"program text unfiltered", "-5.5", 0, "key:", false, "-5.5"},
};
}  // namespace

class KeyFilterTest : public QObject {
    Q_OBJECT
private slots:
    void edits_data() { TableRows(kEdits); }
    void edits()
    {
        const auto& c = TableRow(kEdits);
        const QString action = QLatin1String(c.action);
        QLineEdit box;
        RestrictKeys(&box, c.singlePoint ? QStringLiteral("1234567890.") : QStringLiteral("1234567890"), c.singlePoint);
        box.setText(QLatin1String(c.start));
        if (c.cursor < 0)
            box.selectAll();
        else
            box.setCursorPosition(c.cursor);
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
        QCOMPARE(box.text(), QLatin1String(c.result));
    }
};

QTEST_MAIN(KeyFilterTest)
#include "key_filter_test.moc"
