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
    void init();
    void cleanup();
    void fiveLines();
    void oncePerRoutineAndNumber_data();
    void oncePerRoutineAndNumber();
    void appendsToExistingLog();
    void fileName_data();
    void fileName();
    void readOnlyAppFolder();

private:
    std::unique_ptr<QTemporaryDir> dir_;
    QStringList logLines();
};

void ErrorLogTest::init()
{
    dir_ = std::make_unique<QTemporaryDir>();
    AppPaths::setAppFolder(dir_->path());
    ResetErrorLogMemory();
}

void ErrorLogTest::cleanup()
{
    AppPaths::setAppFolder(QString());
    ResetErrorLogMemory();
}

// The lines of this month's log; the month may turn while a test runs.
QStringList ErrorLogTest::logLines()
{
    QStringList lines;
    for (const QDate& d : {QDate::currentDate(), QDate::currentDate().addDays(-1)})
        if (TextFile::readLines(ErrorLogPath(d), &lines)) return lines;
    return lines;
}

void ErrorLogTest::fiveLines()
{
    LogProgramError("Cansd", "ImgBdOk_Click", "13", QString::fromUtf8("类型不匹配"));
    const QStringList lines = logLines();
    QCOMPARE(lines.size(), 5);
    QVERIFY2(QRegularExpression(QString::fromUtf8("^ErrTime：\\d{4}-\\d{2}-\\d{2}   \\d{2}:\\d{2}:\\d{2}$"))
                 .match(lines[0])
                 .hasMatch(),
             qPrintable(lines[0]));
    QCOMPARE(lines[1], QString::fromUtf8("ErrNumber:13----类型不匹配"));
    QCOMPARE(lines[2], QString("ErrForm:Cansd"));
    QCOMPARE(lines[3], QString("ErrSub:ImgBdOk_Click"));
    QCOMPARE(lines[4], QString(52, '#'));

    const QByteArray bytes = rawBytes(ErrorLogPath(QDate::currentDate()));
    QVERIFY(bytes.startsWith(QByteArray("ErrTime") + QByteArray::fromHex("a3ba")));  // the full-width colon
    QVERIFY(bytes.endsWith(QByteArray(52, '#') + "\r\n"));
    QCOMPARE(bytes.count("\r\n"), 5);
    QCOMPARE(bytes.count('\n'), 5);
    QVERIFY(bytes.contains(QByteArray("ErrNumber:13----") + QByteArray::fromHex("c0e0d0cdb2bbc6a5c5e4")));

    QVERIFY(AppPaths::isHidden(AppPaths::inApp("ProgramErr")));
    QCOMPARE(rawBytes(dir_->path() + "/.hidden"), QByteArray("ProgramErr\n"));
}

void ErrorLogTest::oncePerRoutineAndNumber_data()
{
    QTest::addColumn<QStringList>("calls");  // form|routine|number, in order
    QTest::addColumn<QStringList>("logged");  // ErrSub:routine of each record, in order
    QTest::newRow("same error twice") << QStringList{"Cansd|EnterChecked|13", "Cansd|EnterChecked|13"}
                                      << QStringList{"EnterChecked"};
    QTest::newRow("two numbers of a routine") << QStringList{"Cansd|EnterChecked|13", "Cansd|EnterChecked|6"}
                                              << QStringList{"EnterChecked", "EnterChecked"};
    QTest::newRow("two routines, one number") << QStringList{"Cansd|EnterChecked|13", "Cansd|Form_Load|13"}
                                              << QStringList{"EnterChecked", "Form_Load"};
    QTest::newRow("other form, same routine and number")
        << QStringList{"Cansd|ImgReturn_Click|5", "CansdAG|ImgReturn_Click|5"} << QStringList{"ImgReturn_Click"};
    QTest::newRow("many repeats") << QStringList{"PLC|send_recieve|8005", "PLC|MSComm1_OnComm|8005",
                                                 "PLC|send_recieve|8005", "PLC|MSComm1_OnComm|8005"}
                                  << QStringList{"send_recieve", "MSComm1_OnComm"};
}

void ErrorLogTest::oncePerRoutineAndNumber()
{
    QFETCH(QStringList, calls);
    QFETCH(QStringList, logged);
    for (const QString& call : calls) {
        const QStringList f = call.split('|');
        LogProgramError(f[0], f[1], f[2], "description");
    }
    QStringList subs;
    for (const QString& line : logLines())
        if (line.startsWith("ErrSub:")) subs << line.mid(7);
    QCOMPARE(subs, logged);
    QCOMPARE(logLines().size(), 5 * logged.size());

    // A new run logs them again.
    ResetErrorLogMemory();
    const QStringList f = calls.first().split('|');
    LogProgramError(f[0], f[1], f[2], "description");
    QCOMPARE(logLines().size(), 5 * (logged.size() + 1));
}

void ErrorLogTest::appendsToExistingLog()
{
    const QByteArray old = "ErrTime\xa3\xba" "2026-03-01   08:00:00\r\nold\r\n";
    QVERIFY(putBytes(ErrorLogPath(QDate::currentDate()), old));
    LogProgramError("BcBut", "BackupCNameIni", "52", "Bad file name or number");
    const QByteArray bytes = rawBytes(ErrorLogPath(QDate::currentDate()));
    QVERIFY(bytes.startsWith(old));
    QCOMPARE(bytes.count("\r\n"), 7);
    QVERIFY(bytes.contains("\r\nErrSub:BackupCNameIni\r\n"));
    QVERIFY(!AppPaths::isHidden(AppPaths::inApp("ProgramErr")));  // only a folder it creates is hidden
}

void ErrorLogTest::fileName_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<QString>("name");
    QTest::newRow("March") << QDate(2026, 3, 5) << "ProgramErr/20263ErrLog.txt";
    QTest::newRow("November") << QDate(2026, 11, 5) << "ProgramErr/202611ErrLog.txt";
}

void ErrorLogTest::fileName()
{
    QFETCH(QDate, date);
    QFETCH(QString, name);
    QCOMPARE(ErrorLogPath(date), dir_->path() + "/" + name);
}

void ErrorLogTest::readOnlyAppFolder()
{
    makeReadOnly(dir_->path());
    {
        UnprivilegedFiles asOperator;
        LogProgramError("PLC", "Form_Load", "75", "Path/File access error");
        LogProgramError("PLC", "Form_Load", "76", "Path not found");
    }
    makeWritable(dir_->path());
    QVERIFY(QDir(dir_->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).isEmpty());

    // The folder exists but cannot be written: the log is lost, nothing else happens.
    QVERIFY(QDir().mkpath(dir_->path() + "/ProgramErr"));
    makeReadOnly(dir_->path());
    {
        UnprivilegedFiles asOperator;
        LogProgramError("PLC", "Form_Load", "77", "x");
    }
    makeWritable(dir_->path());
    QVERIFY(QDir(dir_->path() + "/ProgramErr").isEmpty());
}

QTEST_GUILESS_MAIN(ErrorLogTest)
#include "tst_error_log.moc"
