#include "test_support.h"

#include "calibration/cal_records.h"
#include "common/app_paths.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "link/form_access.h"
#include "shell/app_setup.h"

#include <QDateEdit>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTableWidget>
#include <QTest>

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
    void init()
    {
        h = new ConsoleHarness;
        QDir(h->dir.path()).mkpath(QStringLiteral("Data"));
    }
    void cleanup()
    {
        delete h;
        CalClock = {};
    }

    void listInputItems_data();
    void listInputItems();
    void monthlyFileName_data();
    void monthlyFileName();
    void opRecordNeedsDataFolder();
    void viewerRows_data();
    void viewerRows();
    void viewerReadsAHundredThousandRecords();
    void viewerDateChangeShowsTheSame();

private:
    void writeList(const QString& text) { TextFile::append(h->path(QStringLiteral("Data/BiaoCeng.txt")), text); }
    QTableWidget* openViewer();
    ConsoleHarness* h = nullptr;
};

void CalRecordsTest::listInputItems_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("items");
    QTest::newRow("plain") << "骨料1秤" << QStringList{"骨料1秤"};
    QTest::newRow("empty line") << "" << QStringList{""};
    QTest::newRow("comma splits") << "张,三" << QStringList{"张", "三"};
    QTest::newRow("blanks trimmed") << "  3000  " << QStringList{"3000"};
    QTest::newRow("quotes removed") << "\"a, b\"" << QStringList{"a, b"};
    QTest::newRow("time keeps its blank") << "2026/3/5 14:03:22" << QStringList{"2026/3/5 14:03:22"};
}

void CalRecordsTest::listInputItems()
{
    QFETCH(QString, line);
    QFETCH(QStringList, items);
    QCOMPARE(SplitListInput(line), items);
}

void CalRecordsTest::monthlyFileName_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<bool>("dataFolder");
    QTest::addColumn<QString>("monthly");
    QTest::addColumn<QString>("hiddenCopy");
    QTest::newRow("March, Data") << QDate(2026, 3, 31) << true << "Data/20263BiaoCen.txt"
                                 << "drive_c/Program Files/MswSpool/20263MswSpool.txt";
    QTest::newRow("November, Data") << QDate(2026, 11, 1) << true << "Data/202611BiaoCen.txt"
                                    << "drive_c/Program Files/MswSpool/202611MswSpool.txt";
    QTest::newRow("no Data folder") << QDate(2025, 1, 9) << false << "20251BiaoCen.txt"
                                    << "drive_c/Program Files/MswSpool/20251MswSpool.txt";
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
    QVERIFY(TextFile::read(h->path(hiddenCopy), &text));
    QVERIFY(text.startsWith(QStringLiteral("CengIndex=14\r\n")));
    QVERIFY(AppPaths::isHidden(h->path(QStringLiteral("drive_c/Program Files/MswSpool"))));
}

void CalRecordsTest::opRecordNeedsDataFolder()
{
    QDir(h->path(QStringLiteral("Data"))).removeRecursively();
    AppendOpRecord("a", "b", "c", "d", "e", "f", "g");
    QVERIFY(!QFile::exists(h->path(QStringLiteral("Data/BiaoCeng.txt"))));
    QVERIFY(!QFile::exists(h->path(QStringLiteral("BiaoCeng.txt"))));
}

QTableWidget* CalRecordsTest::openViewer()
{
    Forms::show(QStringLiteral("FrmJk"));
    return Ctl<QTableWidget>(Forms::loaded(QStringLiteral("FrmJk")), "MSGrid");
}

void CalRecordsTest::viewerRows_data()
{
    QTest::addColumn<QStringList>("records");  // each: seven fields joined by '|'
    QTest::addColumn<QStringList>("rows");
    const QString zero = "一号秤|2026/3/5 9:00:00|张工|标零|3000|100.0|";
    const QString span = "一号秤|2026/3/5 9:10:00|张工|标重|5000|1500.5|1500.5";
    QTest::newRow("no file") << QStringList() << QStringList();
    // The empty test weight of the zero record pulls the span record's title into its row.
    QTest::newRow("zero then span, oldest first")
        << QStringList{zero, span}
        << QStringList{"一号秤|2026/3/5 9:00:00|张工|标零|3000|100.0|一号秤",
                       "2026/3/5 9:10:00|张工|标重|5000|1500.5|1500.5|"};
    QTest::newRow("two full records") << QStringList{span, span} << QStringList{span, span};
    QTest::newRow("empty operator shifts the row")
        << QStringList{"二号秤|2026/3/5 9:00:00||标重|5000|1500.5|1500.5", span}
        << QStringList{"二号秤|2026/3/5 9:00:00|标重|5000|1500.5|1500.5|一号秤",
                       "2026/3/5 9:10:00|张工|标重|5000|1500.5|1500.5|"};
    QTest::newRow("comma in a name splits it")
        << QStringList{"A,B|2026/3/5 9:00:00|张工|标重|5000|1500.5|1500.5"}
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
    QCOMPARE(g->columnCount(), 7);
    QCOMPARE(g->horizontalHeaderItem(0)->text(), QStringLiteral("秤名称"));
    QCOMPARE(g->horizontalHeaderItem(6)->text(), QStringLiteral("砝码值"));
    QCOMPARE(g->rowCount(), rows.size());
    for (int r = 0; r < rows.size(); ++r)
        QCOMPARE(rowText(g, r), rows[r]);
    if (!rows.isEmpty())
        QCOMPARE(Qt::Alignment(g->item(0, 0)->textAlignment()), Qt::Alignment(Qt::AlignCenter));
}

void CalRecordsTest::viewerReadsAHundredThousandRecords()
{
    QString text;
    text.reserve(100000 * 60);
    for (int i = 0; i < 100000; ++i)
        text += QStringLiteral("秤%1\n2026/3/5 9:00:00\n张工\n标重\n%2\n%3\n1500.5\n\n").arg(i).arg(i % 30000).arg(i % 777);
    writeList(text);
    QTableWidget* g = openViewer();
    QCOMPARE(g->rowCount(), 100000);
    QCOMPARE(g->item(0, 0)->text(), QStringLiteral("秤0"));
    QCOMPARE(g->item(32759, 0)->text(), QStringLiteral("秤32759"));
    QCOMPARE(rowText(g, 99999), QStringLiteral("秤99999|2026/3/5 9:00:00|张工|标重|9999|543|1500.5"));
}

void CalRecordsTest::viewerDateChangeShowsTheSame()
{
    AppendOpRecord("一号秤", "2026/3/5 9:00:00", "张工", "标零", "3000", "100.0", "1");
    QTableWidget* g = openViewer();
    const QString before = rowText(g, 0);
    auto* picker = Ctl<QDateEdit>(Forms::loaded(QStringLiteral("FrmJk")), "DTPicker1");
    QCOMPARE(picker->date(), QDate::currentDate());
    picker->setDate(QDate(2020, 1, 1));
    QCOMPARE(g->rowCount(), 1);
    QCOMPARE(rowText(g, 0), before);
}

QTEST_MAIN(CalRecordsTest)
#include "cal_records_test.moc"
