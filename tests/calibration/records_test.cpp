#include "test_support.h"

#include "calibration/cal_records.h"
#include "common/form_access.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "shell/app_setup.h"

#include <QAbstractItemModel>
#include <QDateEdit>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QPointer>
#include <QStringEncoder>
#include <QTableView>
#include <QTest>

namespace {
QStringList shownRows(QTableView* g)
{
    QStringList rows;
    const QAbstractItemModel* m = g->model();
    for (int r = 0; r < m->rowCount(); ++r) {
        QStringList cells;
        for (int c = 0; c < m->columnCount(); ++c)
            cells << m->index(r, c).data().toString();
        rows << cells.join(QLatin1Char('|'));
    }
    return rows;
}

// The fields of record i of the long list: Chinese and ASCII of varying length, so that pieces of the file
// end inside characters and lines at every offset.
QStringList longListRecord(int i)
{
    return {QStringLiteral("骨料%1秤").arg(i % 6 + 1), QStringLiteral("2026/%1/%2 9:%3:07").arg(i % 12 + 1).arg(i % 28 + 1).arg(i % 60),
            i % 3 ? QStringLiteral("张工%1").arg(i % 97) : QStringLiteral("李"), i % 2 ? QStringLiteral("标重") : QStringLiteral("标零"),
            QString::number(i), QString::number(i % 20000 / 10.0, 'f', 1), QString::number(i % 3001)};
}
}  // namespace

// The operation list as the record viewer shows it: order, the row shift of an empty field, the grid's
// columns, and a long file read whole.
class RecordsTest : public QObject {
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

    // The rows as read from the file, again on a new date (the date does not filter), in the design's
    // columns: widths in twips, 15 to the pixel, the last one not stretched. The rows go with the form.
    void gridColumns_data()
    {
        QTest::addColumn<QByteArray>("file");  // null: no file
        QTest::addColumn<QStringList>("rows");
        auto gb = [](const char* text) { return TextFile::encode(QString::fromUtf8(text)); };
        QTest::newRow("no file") << QByteArray() << QStringList();
        QTest::newRow("empty file") << QByteArray("") << QStringList();
        QTest::newRow("zero then span, oldest first")
            << gb("一号秤\r\n2026/3/5 9:00:00\r\n张工\r\n标零\r\n5000\r\n0.0\r\n0\r\n\r\n"
                  "一号秤\r\n2026/3/5 9:10:00\r\n张工\r\n标重\r\n9000\r\n1500.5\r\n1500.5\r\n\r\n")
            << QStringList{"一号秤|2026/3/5 9:00:00|张工|标零|5000|0.0|0", "一号秤|2026/3/5 9:10:00|张工|标重|9000|1500.5|1500.5"};
        // An empty field pulls the next record's title into its row.
        QTest::newRow("empty operator shifts the row")
            << gb("二号秤\r\n2026/3/5 9:00:00\r\n\r\n标重\r\n5000\r\n1500.5\r\n1500.5\r\n\r\n"
                  "一号秤\r\n2026/3/5 9:10:00\r\n张工\r\n标重\r\n5000\r\n1.5\r\n1.5\r\n\r\n")
            << QStringList{"二号秤|2026/3/5 9:00:00|标重|5000|1500.5|1500.5|一号秤", "2026/3/5 9:10:00|张工|标重|5000|1.5|1.5|"};
        QTest::newRow("comma splits, quotes keep it, blanks trimmed")
            << gb("A,B\r\n\"C,D\"x\r\n  E  \r\nF\r\nG\r\nH\r\n")
            << QStringList{"A|B|C,D|E|F|G|H"};
        QTest::newRow("LF and lone CR end lines too")
            << gb("一\n二\r三\r\n四\n\n五\r\r六\n七") << QStringList{"一|二|三|四|五|六|七"};
        QTest::newRow("UTF-8 behind a byte-order mark")
            << QByteArray("\xEF\xBB\xBF") + QStringLiteral("秤\r\nt\r\n王\r\n标零\r\n1\r\n2\r\n3\r\n").toUtf8()
            << QStringList{"秤|t|王|标零|1|2|3"};
        QTest::newRow("UTF-16 behind its mark")
            << QByteArray("\xFF\xFE") + QStringEncoder(QStringEncoder::Utf16LE).encode(QStringLiteral("秤\r\nt\r\n王\r\n标零\r\n1\r\n2\r\n3\r\n"))
            << QStringList{"秤|t|王|标零|1|2|3"};
    }

    void gridColumns()
    {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, rows);
        if (!file.isNull()) {
            QFile f(h->path(QStringLiteral("Data/BiaoCeng.txt")));
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(file);
        }
        Forms::show(QStringLiteral("FrmJk"));
        QWidget* form = Forms::loaded(QStringLiteral("FrmJk"));
        auto* g = Ctl<QTableView>(form, QStringLiteral("MSGrid"));
        QCOMPARE(shownRows(g), rows);
        auto* picker = Ctl<QDateEdit>(form, QStringLiteral("DTPicker1"));
        picker->setDate(picker->date().addDays(-40));
        QCOMPARE(shownRows(g), rows);
        const QStringList headers{"秤名称", "标秤时间", "操作员", "具体操作", "AD信号值", "重量值", "砝码值"};
        const QList<int> widths{100, 133, 100, 100, 87, 87, 87};
        QCOMPARE(g->model()->columnCount(), 7);
        QVERIFY(!g->horizontalHeader()->stretchLastSection());
        for (int c = 0; c < 7; ++c) {
            QCOMPARE(g->model()->headerData(c, Qt::Horizontal).toString(), headers[c]);
            QCOMPARE(g->horizontalHeader()->sectionSize(c), widths[c]);
            if (!rows.isEmpty())
                QCOMPARE(g->model()->index(0, c).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        }
        QPointer<QAbstractItemModel> model = g->model();
        Forms::unload(QStringLiteral("FrmJk"));
        QVERIFY(model.isNull());
    }

    // Scale and operator names whose GB18030 bytes are valid UTF-8 as well: from the operator list into the
    // three records in GB18030, and shown as they are by the viewer.
    void plantNamesInGb18030_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("nameGb");
        QTest::addColumn<QString>("op");
        QTest::addColumn<QByteArray>("opGb");
        const struct { const char *name, *nameGb, *op, *opGb; } rows[] = {
            {"砂", "c9b0", "郑伟", "d6a3ceb0"},
            {"1#砂", "3123c9b0", "谢强", "d0bbc7bf"},
            {"小石", "d0a1caaf", "肖平", "d0a4c6bd"},
            {"外加剂1", "cde2bcd3bcc131", "张工", "d5c5b9a4"},
        };
        for (const auto& r : rows)
            QTest::newRow(r.name) << QString::fromUtf8(r.name) << QByteArray::fromHex(r.nameGb) << QString::fromUtf8(r.op)
                                  << QByteArray::fromHex(r.opGb);
    }
    void plantNamesInGb18030()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, nameGb);
        QFETCH(QString, op);
        QFETCH(QByteArray, opGb);
        CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
        QFile sys(h->path(QStringLiteral("Data/SysData.dat")));
        QVERIFY(sys.open(QIODevice::WriteOnly) && sys.write("UserNam:" + opGb + "\r\n") > 0);
        sys.close();
        LoadSysData();
        ScaleName[0] = name;
        AppendZeroRecord(0);
        AppendOpRecord(name, QStringLiteral("2026/3/5 14:03:22"), OperatorName, QStringLiteral("标零"), "3000", "0", "0");
        const QByteArray zero = nameGb + "BiaoZeroTime=\r\n" + nameGb + "BiaoZeroADValue=\r\n" + nameGb +
                                "BiaoZeroWTValue=\r\n" + QByteArray(52, '#') + "\r\n";
        QCOMPARE(rawBytes(h->path(QStringLiteral("Data/20263BiaoCen.txt"))), zero);
        QCOMPARE(rawBytes(h->path(QStringLiteral("drive_c/Program Files/MswSpool/20263MswSpool.txt"))), "CengIndex=1\r\n" + zero);
        QCOMPARE(rawBytes(OpRecordPath()),
                 nameGb + "\r\n2026/3/5 14:03:22\r\n" + opGb + "\r\n\xB1\xEA\xC1\xE3\r\n3000\r\n0\r\n0\r\n\r\n");
        Forms::show(QStringLiteral("FrmJk"));
        QCOMPARE(shownRows(Ctl<QTableView>(Forms::loaded(QStringLiteral("FrmJk")), QStringLiteral("MSGrid"))),
                 QStringList{name + "|2026/3/5 14:03:22|" + op + "|标零|3000|0|0"});
    }

    // A record or the save on exit that the file system refuses leaves the file as it was and a line in the
    // log with the system's reason and the path; the calibration itself stands.
    void refusedWritesAreLogged_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("routine");
        QTest::newRow("monthly file") << "Data/20263BiaoCen.txt" << "AppendZeroRecord";
        QTest::newRow("hidden copy") << "drive_c/Program Files/MswSpool/20263MswSpool.txt" << "AppendWeightRecord";
        QTest::newRow("operation list") << "Data/BiaoCeng.txt" << "AppendOpRecord";
        QTest::newRow("configuration") << "Data/BLZConfig.dat" << "SaveBLZConfig";
    }
    void refusedWritesAreLogged()
    {
        QFETCH(QString, file);
        QFETCH(QString, routine);
        CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
        const QString path = h->path(file);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write("kept\r\n") == 6);
        f.close();
        QVERIFY(f.setPermissions(QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
        // An operator other than the superuser, whom permissions do not stop, in folders open to him.
        for (const QString& folder : {h->dir.path(), h->path(QStringLiteral("Data"))})
            QFile::setPermissions(folder, QFile::Permissions(0x7777));
        {
            FilesAsUser nobody(65534, 65534);
            if (routine == QLatin1String("SaveBLZConfig")) {
                SaveBLZConfig();
            } else if (routine == QLatin1String("AppendOpRecord")) {
                AppendOpRecord("秤", "t", "王", "标零", "1", "2", "3");
            } else {
                AppendZeroRecord(0);
                AppendWeightRecord(0);
            }
        }
        QCOMPARE(rawBytes(path), QByteArray("kept\r\n"));
        const QString log = ErrorLogText();
        QVERIFY2(log.contains("ErrNumber:70----Permission denied: " + path + "\r\nErrForm:Module1\r\nErrSub:" + routine), qPrintable(log));
    }

    void longFileReadWhole()
    {
        // About 25 MB: every record must come back, in order, field for field.
        QStringEncoder gb("GB18030");
        QByteArray bytes;
        int records = 0;
        while (bytes.size() < 25 * 1000 * 1000)
            bytes += gb.encode(longListRecord(records++).join(QStringLiteral("\r\n")) + QStringLiteral("\r\n\r\n"));
        const QString path = h->path(QStringLiteral("Data/BiaoCeng.txt"));
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        QCOMPARE(f.write(bytes), bytes.size());
        f.close();
        bytes.clear();

        const OpRecords list = ReadOpRecords(path);
        QCOMPARE(list.rowCount(), records);
        QCOMPARE(list.itemCount(), qsizetype(records) * 7);
        for (int r = 0; r < records; ++r) {
            const QStringList want = longListRecord(r);
            for (int c = 0; c < 7; ++c)
                if (list.field(r, c) != want[c])
                    QFAIL(qPrintable(QStringLiteral("record %1 field %2: %3, not %4").arg(r).arg(c).arg(list.field(r, c), want[c])));
        }
    }

private:
    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(RecordsTest)
#include "records_test.moc"
