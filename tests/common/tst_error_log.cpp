#include "common/error_log.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <QRegularExpression>

namespace {
// Errors as form|routine|number, in order, and the routine of each record logged.
const struct { const char *name, *calls, *logged; } kRepeats[] = {
    {"same error twice", "Cansd|EnterChecked|13 Cansd|EnterChecked|13", "EnterChecked"},
    {"two numbers of a routine", "Cansd|EnterChecked|13 Cansd|EnterChecked|6", "EnterChecked EnterChecked"},
    {"two routines, one number", "Cansd|EnterChecked|13 Cansd|Form_Load|13", "EnterChecked Form_Load"},
    {"other form, same routine and number", "Cansd|ImgReturn_Click|5 CansdAG|ImgReturn_Click|5", "ImgReturn_Click"},
};
}  // namespace

class ErrorLogTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        app.renew();
        ResetErrorLogMemory();
    }

    void recordFormatAndFileName()
    {
        const QByteArray old = "ErrTime\xa3\xba" "2026-03-01   08:00:00\r\nold\r\n";
        QVERIFY(putBytes(ErrorLogPath(QDate::currentDate()), old));
        LogProgramError("Cansd", "ImgBdOk_Click", "13", QString::fromUtf8("类型不匹配"));
        const QByteArray bytes = rawBytes(ErrorLogPath(QDate::currentDate()));
        QVERIFY(bytes.startsWith(old));
        const QStringList lines = TextFile::decode(bytes.mid(old.size())).split("\r\n");
        // The date and time as the calibration records write them, three blanks between: "2026/3/5   9:03:22".
        QVERIFY2(QRegularExpression(QString::fromUtf8("^ErrTime：\\d{4}/[1-9]\\d?/[1-9]\\d?   [1-2]?\\d:\\d\\d:\\d\\d$"))
                     .match(lines[0]).hasMatch(), qPrintable(lines[0]));
        QCOMPARE(lines.mid(1), (QStringList{QString::fromUtf8("ErrNumber:13----类型不匹配"), "ErrForm:Cansd",
                                            "ErrSub:ImgBdOk_Click", QString(52, '#'), ""}));
        // The month has no leading zero.
        QCOMPARE(ErrorLogPath(QDate(2026, 3, 5)), app("ProgramErr/20263ErrLog.txt"));
    }

    void oncePerRoutineAndNumber_data() { TableRows(kRepeats); }
    void oncePerRoutineAndNumber()
    {
        QFETCH(int, row);
        // A new run logs them again.
        for (int run = 0; run < 2; ++run, ResetErrorLogMemory())
            for (const QString& call : QString(kRepeats[row].calls).split(' ')) {
                const QStringList f = call.split('|');
                LogProgramError(f[0], f[1], f[2], "description");
            }
        QStringList subs;
        for (const QString& line : ErrorLogText().split("\r\n"))
            if (line.startsWith("ErrSub:")) subs << line.mid(7);
        QCOMPARE(subs.join(' '), kRepeats[row].logged + QStringLiteral(" ") + kRepeats[row].logged);
    }

private:
    AppFolder app;
};

QTEST_GUILESS_MAIN(ErrorLogTest)
#include "tst_error_log.moc"
