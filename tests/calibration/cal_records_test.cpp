#include "test_support.h"

#include "calibration/cal_records.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "link/form_access.h"
#include "shell/app_setup.h"

#include <QDir>
#include <QTableWidget>
#include <QTest>
#include <optional>

namespace {
QString rowText(QTableWidget* g, int r)
{
    QStringList cells;
    for (int c = 0; c < g->columnCount(); ++c)
        cells << (g->item(r, c) ? g->item(r, c)->text() : QString());
    return cells.join(QLatin1Char('|'));
}
}  // namespace

class CalRecordsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { RegisterCalibrationForms(); }
    void init() { QDir(h.emplace().dir.path()).mkpath(QStringLiteral("Data")); }
    void cleanup()
    {
        h.reset();
        CalClock = {};
    }

    void monthlyFileName_data();
    void monthlyFileName();
    void viewerRows_data();
    void viewerRows();
    void viewerReadsAHundredThousandRecords();

private:
    QTableWidget* openViewer()
    {
        Forms::show(QStringLiteral("FrmJk"));
        return Ctl<QTableWidget>(Forms::loaded(QStringLiteral("FrmJk")), "MSGrid");
    }
    std::optional<ConsoleHarness> h;
};

void CalRecordsTest::monthlyFileName_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<bool>("dataFolder");
    QTest::addColumn<QString>("monthly");
    QTest::addColumn<QString>("hiddenCopy");
    QTest::newRow("November, Data") << QDate(2026, 11, 1) << true << "Data/202611BiaoCen.txt" << "202611MswSpool.txt";
    QTest::newRow("no Data folder") << QDate(2025, 1, 9) << false << "20251BiaoCen.txt" << "20251MswSpool.txt";
}

void CalRecordsTest::monthlyFileName()
{
    QFETCH(QDate, date);
    QFETCH(bool, dataFolder);
    QFETCH(QString, monthly);
    QFETCH(QString, hiddenCopy);
    if (!dataFolder)
        QDir(h->path(QStringLiteral("Data"))).removeRecursively();
    CalClock = [date] { return QDateTime(date, QTime(8, 0)); };
    ScaleName[13] = QStringLiteral("外加剂3秤");
    BiaoZeroTime[13] = QStringLiteral("t");
    AppendZeroRecord(13);
    AppendWeightRecord(13);
    QString text;
    QVERIFY(TextFile::read(h->path(monthly), &text));
    QVERIFY(text.startsWith(QStringLiteral("外加剂3秤BiaoZeroTime=t\r\n")));
    QVERIFY(text.contains(QStringLiteral("\r\nCengIndex=14\r\n")));
    QVERIFY(TextFile::read(h->path(QStringLiteral("drive_c/Program Files/MswSpool/") + hiddenCopy), &text));
    QVERIFY(text.startsWith(QStringLiteral("CengIndex=14\r\n")));
}

void CalRecordsTest::viewerRows_data()
{
    QTest::addColumn<QStringList>("records");  // each: seven fields joined by '|'
    QTest::addColumn<QStringList>("rows");
    const QString zero = "一号秤|2026/3/5 9:00:00|张工|标零|3000|100.0|";
    const QString span = "一号秤|2026/3/5 9:10:00|张工|标重|5000|1500.5|1500.5";
    const QString spanTail = "2026/3/5 9:10:00|张工|标重|5000|1500.5|1500.5|";
    QTest::newRow("no file") << QStringList() << QStringList();
    // An empty field pulls the next record's title into its row.
    QTest::newRow("zero then span, oldest first")
        << QStringList{zero, span} << QStringList{"一号秤|2026/3/5 9:00:00|张工|标零|3000|100.0|一号秤", spanTail};
    QTest::newRow("empty operator shifts the row")
        << QStringList{"二号秤|2026/3/5 9:00:00||标重|5000|1500.5|1500.5", span}
        << QStringList{"二号秤|2026/3/5 9:00:00|标重|5000|1500.5|1500.5|一号秤", spanTail};
    QTest::newRow("comma in a name splits it") << QStringList{"A,B|2026/3/5 9:00:00|张工|标重|5000|1500.5|1500.5"}
                                               << QStringList{"A|B|2026/3/5 9:00:00|张工|标重|5000|1500.5", "1500.5||||||"};
}

void CalRecordsTest::viewerRows()
{
    QFETCH(QStringList, records);
    QFETCH(QStringList, rows);
    for (const QString& r : records) {
        const QStringList f = r.split(QLatin1Char('|'));
        AppendOpRecord(f[0], f[1], f[2], f[3], f[4], f[5], f[6]);
    }
    QTableWidget* g = openViewer();
    QCOMPARE(g->rowCount(), rows.size());
    for (int r = 0; r < rows.size(); ++r)
        QCOMPARE(rowText(g, r), rows[r]);
}

void CalRecordsTest::viewerReadsAHundredThousandRecords()
{
    QString text;
    for (int i = 0; i < 100000; ++i)
        text += QStringLiteral("秤%1\n2026/3/5 9:00:00\n张工\n标重\n%2\n%3\n1500.5\n\n").arg(i).arg(i % 30000).arg(i % 777);
    TextFile::append(h->path(QStringLiteral("Data/BiaoCeng.txt")), text);
    QTableWidget* g = openViewer();
    QCOMPARE(g->rowCount(), 100000);
    QCOMPARE(g->item(0, 0)->text(), QStringLiteral("秤0"));
    QCOMPARE(g->item(32759, 0)->text(), QStringLiteral("秤32759"));
    QCOMPARE(rowText(g, 99999), QStringLiteral("秤99999|2026/3/5 9:00:00|张工|标重|9999|543|1500.5"));
}

QTEST_MAIN(CalRecordsTest)
#include "cal_records_test.moc"
