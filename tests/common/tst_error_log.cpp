#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class ErrorLogTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        dir_ = std::make_unique<QTemporaryDir>();
        AppPaths::setAppFolder(dir_->path());
        ResetErrorLogMemory();
    }
    void cleanup() { AppPaths::setAppFolder(QString()); }

    void recordFormatAndFileName()
    {
        const QByteArray old = "ErrTime\xa3\xba" "2026-03-01   08:00:00\r\nold\r\n";
        QVERIFY(putBytes(ErrorLogPath(QDate::currentDate()), old));
        LogProgramError("Cansd", "ImgBdOk_Click", "13", QString::fromUtf8("类型不匹配"));
        const QByteArray bytes = logBytes();
        QVERIFY(bytes.startsWith(old));
        const QStringList lines = TextFile::decode(bytes.mid(old.size())).split("\r\n");
        // The date and time as the calibration records write them, three blanks between: "2026/3/5   9:03:22".
        QVERIFY2(QRegularExpression(QString::fromUtf8("^ErrTime：\\d{4}/[1-9]\\d?/[1-9]\\d?   [1-2]?\\d:\\d\\d:\\d\\d$"))
                     .match(lines[0]).hasMatch(), qPrintable(lines[0]));
        QCOMPARE(lines.mid(1), (QStringList{QString::fromUtf8("ErrNumber:13----类型不匹配"), "ErrForm:Cansd",
                                            "ErrSub:ImgBdOk_Click", QString(52, '#'), ""}));
        // The month has no leading zero.
        QCOMPARE(ErrorLogPath(QDate(2026, 3, 5)), dir_->path() + "/ProgramErr/20263ErrLog.txt");
    }

    void oncePerRoutineAndNumber_data()
    {
        QTest::addColumn<QStringList>("calls");   // form|routine|number, in order
        QTest::addColumn<QStringList>("logged");  // ErrSub of each record, in order
        QTest::newRow("same error twice") << QStringList{"Cansd|EnterChecked|13", "Cansd|EnterChecked|13"}
                                          << QStringList{"EnterChecked"};
        QTest::newRow("two numbers of a routine") << QStringList{"Cansd|EnterChecked|13", "Cansd|EnterChecked|6"}
                                                  << QStringList{"EnterChecked", "EnterChecked"};
        QTest::newRow("two routines, one number") << QStringList{"Cansd|EnterChecked|13", "Cansd|Form_Load|13"}
                                                  << QStringList{"EnterChecked", "Form_Load"};
        QTest::newRow("other form, same routine and number")
            << QStringList{"Cansd|ImgReturn_Click|5", "CansdAG|ImgReturn_Click|5"} << QStringList{"ImgReturn_Click"};
    }
    void oncePerRoutineAndNumber()
    {
        QFETCH(QStringList, calls);
        QFETCH(QStringList, logged);
        // A new run logs them again.
        for (int run = 0; run < 2; ++run, ResetErrorLogMemory())
            for (const QString& call : calls) {
                const QStringList f = call.split('|');
                LogProgramError(f[0], f[1], f[2], "description");
            }
        QStringList subs;
        for (const QString& line : TextFile::decode(logBytes()).split("\r\n"))
            if (line.startsWith("ErrSub:")) subs << line.mid(7);
        QCOMPARE(subs, logged + logged);
    }

private:
    std::unique_ptr<QTemporaryDir> dir_;
    QByteArray logBytes() const { return rawBytes(ErrorLogPath(QDate::currentDate())); }
};

QTEST_GUILESS_MAIN(ErrorLogTest)
#include "tst_error_log.moc"
