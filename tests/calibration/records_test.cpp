#include "cal_rig.h"

#include "calibration/frm_jk.h"
#include "calibration/records_csv.h"

#include <QAbstractItemModel>
#include <QBuffer>
#include <QDateEdit>
#include <QDialog>
#include <QHeaderView>
#include <QPointer>
#include <QPushButton>
#include <QStringEncoder>
#include <QTableView>

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

// The fields of record i of the long list: Chinese and ASCII of varying length.
QStringList longListRecord(int i)
{
    return {QStringLiteral("骨料%1秤").arg(i % 6 + 1), QStringLiteral("2026/%1/%2 9:%3:07").arg(i % 12 + 1).arg(i % 28 + 1).arg(i % 60),
            i % 3 ? QStringLiteral("张工%1").arg(i % 97) : QStringLiteral("李"), i % 2 ? QStringLiteral("标重") : QStringLiteral("标零"),
            QString::number(i), QString::number(i % 20000 / 10.0, 'f', 1), QString::number(i % 3001)};
}

// CSV as a spreadsheet program imports it (RFC 4180), written here once more so that the writer is not
// checked by itself: fields by commas, quoted ones may hold commas, line ends and doubled quotes.
QList<QStringList> readCsv(const QString& text)
{
    QList<QStringList> rows;
    QStringList row;
    QString field;
    bool quoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (quoted) {
            if (c == QLatin1Char('"') && i + 1 < text.size() && text[i + 1] == QLatin1Char('"'))
                field += text[++i];
            else if (c == QLatin1Char('"'))
                quoted = false;
            else
                field += c;
        } else if (c == QLatin1Char('"')) {
            quoted = true;
        } else if (c == QLatin1Char(',')) {
            row << std::exchange(field, QString());
        } else if (c == QLatin1Char('\r') && i + 1 < text.size() && text[i + 1] == QLatin1Char('\n')) {
            row << std::exchange(field, QString());
            rows << std::exchange(row, QStringList());
            ++i;
        } else {
            field += c;
        }
    }
    return rows;
}

void writeList(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(f.write(bytes), bytes.size());
}

// file: null for none, in GB18030 unless a byte-order mark goes before it.
struct GridCase { const char *name, *file, *mark; QStringList rows; };
const GridCase kGrid[] = {
    {"no file", nullptr, "", {}},
    {"empty file", "", "", {}},
    {"zero then span, oldest first",
     "一号秤\r\n2026/3/5 9:00:00\r\n张工\r\n标零\r\n5000\r\n0.0\r\n0\r\n\r\n"
     "一号秤\r\n2026/3/5 9:10:00\r\n张工\r\n标重\r\n9000\r\n1500.5\r\n1500.5\r\n\r\n", "",
     {"一号秤|2026/3/5 9:00:00|张工|标零|5000|0.0|0", "一号秤|2026/3/5 9:10:00|张工|标重|9000|1500.5|1500.5"}},
    // An empty field pulls the next record's title into its row.
    {"empty operator shifts the row",
     "二号秤\r\n2026/3/5 9:00:00\r\n\r\n标重\r\n5000\r\n1500.5\r\n1500.5\r\n\r\n"
     "一号秤\r\n2026/3/5 9:10:00\r\n张工\r\n标重\r\n5000\r\n1.5\r\n1.5\r\n\r\n", "",
     {"二号秤|2026/3/5 9:00:00|标重|5000|1500.5|1500.5|一号秤", "2026/3/5 9:10:00|张工|标重|5000|1.5|1.5|"}},
    {"comma splits, quotes keep it, blanks trimmed", "A,B\r\n\"C,D\"x\r\n  E  \r\nF\r\nG\r\nH\r\n", "",
     {"A|B|C,D|E|F|G|H"}},
    {"LF and lone CR end lines too", "一\n二\r三\r\n四\n\n五\r\r六\n七", "", {"一|二|三|四|五|六|七"}},
    {"UTF-8 behind a byte-order mark", "秤\r\nt\r\n王\r\n标零\r\n1\r\n2\r\n3\r\n", "\xEF\xBB\xBF", {"秤|t|王|标零|1|2|3"}},
    {"UTF-16 behind its mark", "秤\r\nt\r\n王\r\n标零\r\n1\r\n2\r\n3\r\n", "\xFF\xFE", {"秤|t|王|标零|1|2|3"}},
};

// Scale and operator names whose GB18030 bytes are valid UTF-8 as well.
const struct { const char *name, *nameGb, *op, *opGb; } kPlantNames[] = {
    {"砂", "c9b0", "郑伟", "d6a3ceb0"},
    {"1#砂", "3123c9b0", "谢强", "d0bbc7bf"},
    {"小石", "d0a1caaf", "肖平", "d0a4c6bd"},
    {"外加剂1", "cde2bcd3bcc131", "张工", "d5c5b9a4"},
};

const struct { const char *name, *file, *routine; } kRefusedWrites[] = {
    {"monthly file", "Data/20263BiaoCen.txt", "AppendZeroRecord"},
    {"hidden copy", "drive_c/Program Files/MswSpool/20263MswSpool.txt", "AppendWeightRecord"},
    {"operation list", "Data/BiaoCeng.txt", "AppendOpRecord"},
    {"configuration", "Data/BLZConfig.dat", "SaveBLZConfig"},
};

const struct { const char *name, *field, *csv; } kCsvFields[] = {
    {"plain", "1500.5", "1500.5"},
    {"comma", "C,D", "\"C,D\""},
    {"quote doubled", "ab\"c", "\"ab\"\"c\""},
    {"CR LF kept inside quotes", "a\r\nb", "\"a\r\nb\""},
    {"lone LF", "a\nb", "\"a\nb\""},
    {"Chinese as UTF-8", "骨料1秤", "骨料1秤"},
    {"blanks kept", " x ", " x "},
    {"empty", "", ""},
};

// current and found: -1 for none; with none found, the selection stays.
const struct { const char* name; int current; const char* text; int found; } kFinds[] = {
    {"from the top", -1, "标重", 1},
    {"after the current row", 1, "标", 2},
    {"round to the top", 2, "一号", 0},
    {"letters in any case", 0, "ab", 2},
    {"no row holds it", 1, "三号", -1},
};

// out: the first two fields of each row after the headers, or the error.
const struct { const char *name, *from, *to, *scale, *out; } kCommands[] = {
    {"months inclusive", "2026-01", "2026-03", "",
     "一号秤 2026/1/31 8:00:00|二号秤 2026/3/1 8:00:00|2026/3/2 8:00:00 李"},
    {"one scale, by the field before the date", "2026-01", "2026-11", "一号秤",
     "一号秤 2026/1/31 8:00:00|2026/3/2 8:00:00 李|2026/11/2 8:00:00 李"},
    {"a shifted row goes by its date", "2026-03", "2026-03", "一号秤", "2026/3/2 8:00:00 李"},
    {"no bounds", "", "", "",
     "一号秤 2025/12/31 8:00:00|一号秤 2026/1/31 8:00:00|二号秤 2026/3/1 8:00:00|2026/3/2 8:00:00 李|2026/11/2 8:00:00 李"},
    {"nothing in range", "2027-01", "", "", ""},
    {"bad month", "2026-13", "", "", "error: --from: “2026-13”不是月份：请写成 YYYY-MM，例如 2026-03"},
    {"from after to", "2026-11", "2026-01", "", "error: --from 2026-11 晚于 --to 2026-01"},
};
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
    void gridColumns_data() { TableRows(kGrid); }
    void gridColumns()
    {
        const GridCase& c = TableRow(kGrid);
        if (c.file) {
            const QString text = QString::fromUtf8(c.file);
            const QByteArray mark(c.mark);
            writeList(h->path(QStringLiteral("Data/BiaoCeng.txt")),
                      mark.isEmpty()          ? TextFile::encode(text)
                      : mark.startsWith('\xEF') ? mark + text.toUtf8()
                                              : mark + QStringEncoder(QStringEncoder::Utf16LE).encode(text));
        }
        Forms::show(QStringLiteral("FrmJk"));
        QWidget* form = Forms::loaded(QStringLiteral("FrmJk"));
        auto* g = Ctl<QTableView>(form, QStringLiteral("MSGrid"));
        QCOMPARE(shownRows(g), c.rows);
        auto* picker = Ctl<QDateEdit>(form, QStringLiteral("DTPicker1"));
        picker->setDate(picker->date().addDays(-40));
        QCOMPARE(shownRows(g), c.rows);
        const QStringList headers{"秤名称", "标秤时间", "操作员", "具体操作", "AD信号值", "重量值", "砝码值"};
        const QList<int> widths{100, 133, 100, 100, 87, 87, 87};
        QCOMPARE(g->model()->columnCount(), 7);
        QVERIFY(!g->horizontalHeader()->stretchLastSection());
        for (int col = 0; col < 7; ++col) {
            QCOMPARE(g->model()->headerData(col, Qt::Horizontal).toString(), headers[col]);
            QCOMPARE(g->horizontalHeader()->sectionSize(col), widths[col]);
            if (!c.rows.isEmpty())
                QCOMPARE(g->model()->index(0, col).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        }
        QPointer<QAbstractItemModel> model = g->model();
        Forms::unload(QStringLiteral("FrmJk"));
        QVERIFY(model.isNull());
    }

    // Names whose GB18030 bytes are valid UTF-8 as well: from the operator list into the three records in
    // GB18030, and shown as they are by the viewer.
    void plantNamesInGb18030_data() { TableRows(kPlantNames); }
    void plantNamesInGb18030()
    {
        QFETCH(int, row);
        const QString name = QString::fromUtf8(kPlantNames[row].name), op = QString::fromUtf8(kPlantNames[row].op);
        const QByteArray nameGb = QByteArray::fromHex(kPlantNames[row].nameGb);
        CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
        const QByteArray opGb = QByteArray::fromHex(kPlantNames[row].opGb);
        writeList(h->path(QStringLiteral("Data/SysData.dat")), "UserNam:" + opGb + "\r\n");
        LoadSysData();
        ScaleName[0] = name;
        AppendZeroRecord(0);
        AppendOpRecord(name, QStringLiteral("2026/3/5 14:03:22"), OperatorName, QStringLiteral("标零"), "3000", "0", "0");
        const QByteArray zero = nameGb + "BiaoZeroTime=\r\n" + nameGb + "BiaoZeroADValue=\r\n" + nameGb +
                                "BiaoZeroWTValue=\r\n" + QByteArray(52, '#') + "\r\n";
        QCOMPARE(rawBytes(h->path(QStringLiteral("Data/20263BiaoCen.txt"))), zero);
        QCOMPARE(rawBytes(h->path(QStringLiteral("drive_c/Program Files/MswSpool/20263MswSpool.txt"))),
                 "CengIndex=1\r\n" + zero);
        QCOMPARE(rawBytes(OpRecordPath()),
                 nameGb + "\r\n2026/3/5 14:03:22\r\n" + opGb + "\r\n\xB1\xEA\xC1\xE3\r\n3000\r\n0\r\n0\r\n\r\n");
        Forms::show(QStringLiteral("FrmJk"));
        QCOMPARE(shownRows(Ctl<QTableView>(Forms::loaded(QStringLiteral("FrmJk")), QStringLiteral("MSGrid"))),
                 QStringList{name + "|2026/3/5 14:03:22|" + op + "|标零|3000|0|0"});
    }

    // A record or the save on exit that the file system refuses leaves the file as it was and a line in the
    // log with the system's reason and the path; the calibration itself stands.
    void refusedWritesAreLogged_data() { TableRows(kRefusedWrites); }
    void refusedWritesAreLogged()
    {
        QFETCH(int, row);
        const QString path = h->path(QLatin1String(kRefusedWrites[row].file));
        const QString routine = QLatin1String(kRefusedWrites[row].routine);
        CalClock = [] { return QDateTime(QDate(2026, 3, 5), QTime(14, 3, 22)); };
        writeList(path, "kept\r\n");
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
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

    // A field as CSV writes it, inside a row: quoted when it must be, quotes doubled, UTF-8, CRLF at the end.
    void csvQuoting_data() { TableRows(kCsvFields); }
    void csvQuoting()
    {
        QFETCH(int, row);
        QCOMPARE(CsvRow({QString::fromUtf8(kCsvFields[row].field), QStringLiteral("标零")}),
                 QByteArray(kCsvFields[row].csv) + ",标零\r\n");
    }

    // Ctrl+S on the viewer: the rows shown, every field as the grid shows it, read back by a spreadsheet's
    // rules; a write that fails says so and leaves no file.
    void exportRows_data()
    {
        QTest::addColumn<bool>("writable");
        QTest::newRow("100,000 records read back") << true;
        QTest::newRow("folder missing: the error box") << false;
    }
    void exportRows()
    {
        QFETCH(bool, writable);
        // The long list: Chinese and ASCII fields of varying length, every record back in order, field for
        // field; the second record's empty operator shifts all rows after it by one field.
        QStringList fields{"a,b",    "2026/3/5 9:00:00", "x\"y", "标零", "5000", "0.0", "0",
                           "二号秤", "2026/3/5 9:10:00", "标重", "1",    "2",    "3"};
        QStringEncoder gb("GB18030");
        QByteArray list = gb.encode(QStringLiteral("\"a,b\"\r\n2026/3/5 9:00:00\r\nx\"y\r\n标零\r\n5000\r\n0.0\r\n0\r\n\r\n"
                                                   "二号秤\r\n2026/3/5 9:10:00\r\n\r\n标重\r\n1\r\n2\r\n3\r\n\r\n"));
        for (int i = 0; i < 100000 - 2; ++i) {
            list += gb.encode(longListRecord(i).join(QStringLiteral("\r\n")) + QStringLiteral("\r\n\r\n"));
            fields += longListRecord(i);
        }
        writeList(h->path(QStringLiteral("Data/BiaoCeng.txt")), list);
        Forms::show(QStringLiteral("FrmJk"));
        auto* form = static_cast<FrmJk*>(Forms::loaded(QStringLiteral("FrmJk")));
        const QString path = h->path(writable ? QStringLiteral("out/records.csv") : QStringLiteral("gone/records.csv"));
        if (writable)
            QDir().mkpath(h->path(QStringLiteral("out")));
        FrmJk::ChooseExportPath = [&](QWidget*, const QString&) { return path; };
        MbAnswerer mb;
        form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(form));
        QTest::keyClick(form, Qt::Key_S, Qt::ControlModifier);
        FrmJk::ChooseExportPath = nullptr;
        QTRY_COMPARE(mb.texts.size(), 1);
        QCOMPARE(mb.errorIcons, QList<bool>{!writable});
        QCOMPARE(mb.texts[0].startsWith(QStringLiteral("导出失败")), !writable);
        QCOMPARE(QFile::exists(path), writable);
        if (!writable)
            return;

        const QByteArray bytes = rawBytes(path);
        QVERIFY(bytes.startsWith("\xEF\xBB\xBF"));
        QList<QStringList> grid{OpRecordHeaders()};
        QStringList shown;
        for (const QString& r : shownRows(Ctl<QTableView>(form, QStringLiteral("MSGrid")))) {
            grid << r.split(QLatin1Char('|'));
            shown += grid.last();
        }
        QCOMPARE(grid.size(), 100001);
        QCOMPARE(shown, fields << QString());
        QCOMPARE(readCsv(QString::fromUtf8(bytes.mid(3))), grid);
    }

    // Ctrl+F: the next row after the current one that holds the text, from the top again after the last.
    void findSelectsTheNextRow_data() { TableRows(kFinds); }
    void findSelectsTheNextRow()
    {
        const auto& c = TableRow(kFinds);
        writeList(h->path(QStringLiteral("Data/BiaoCeng.txt")),
                  TextFile::encode(QStringLiteral("一号秤\r\nt1\r\n张工\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "二号秤\r\nt2\r\n张工\r\n标重\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "AB秤\r\nt3\r\n王工\r\n标零\r\n1\r\n2\r\n3\r\n\r\n")));
        Forms::show(QStringLiteral("FrmJk"));
        QWidget* form = Forms::loaded(QStringLiteral("FrmJk"));
        auto* g = Ctl<QTableView>(form, QStringLiteral("MSGrid"));
        if (c.current >= 0)
            g->selectRow(c.current);
        form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(form));
        QTest::keyClick(form, Qt::Key_F, Qt::ControlModifier);
        auto* find = Ctl<QDialog>(form, QStringLiteral("FindRecords"));
        QVERIFY(find && find->isVisible());
        Ctl<QLineEdit>(find, QStringLiteral("TxtFind"))->setText(QString::fromUtf8(c.text));
        Ctl<QPushButton>(find, QStringLiteral("cmdFindNext"))->click();
        QCOMPARE(g->currentIndex().row(), c.found >= 0 ? c.found : c.current);
        QCOMPARE(g->selectionModel()->selectedRows().size(), c.found >= 0 || c.current >= 0 ? 1 : 0);
        QCOMPARE(Ctl<QLabel>(find, QStringLiteral("lblFindResult"))->text().isEmpty(), c.found >= 0);
    }

    // The records command: the rows of the months asked for, of one scale if asked, as the grid shows them;
    // a shifted row goes by the date in it. Bad months are told, nothing is printed.
    void recordsCommand_data() { TableRows(kCommands); }
    void recordsCommand()
    {
        const auto& c = TableRow(kCommands);
        const QString out = QString::fromUtf8(c.out);
        // The third record has no operator: its row ends with the fourth's title, and the rows after it start
        // with their dates.
        writeList(h->path(QStringLiteral("Data/BiaoCeng.txt")),
                  TextFile::encode(QStringLiteral("一号秤\r\n2025/12/31 8:00:00\r\n李\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "一号秤\r\n2026/1/31 8:00:00\r\n李\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "二号秤\r\n2026/3/1 8:00:00\r\n\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "一号秤\r\n2026/3/2 8:00:00\r\n李\r\n标零\r\n1\r\n2\r\n3\r\n\r\n"
                                                  "一号秤\r\n2026/11/2 8:00:00\r\n李\r\n标重\r\n1\r\n2\r\n3\r\n\r\n")));
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const QString error =
            PrintRecordsCsv(QLatin1String(c.from), QLatin1String(c.to), QString::fromUtf8(c.scale), buffer);
        if (out.startsWith(QStringLiteral("error: "))) {
            QCOMPARE(error, out.mid(7));
            QVERIFY(buffer.data().isEmpty());
            return;
        }
        QCOMPARE(error, QString());
        QVERIFY(buffer.data().startsWith("秤名称,标秤时间,操作员,具体操作,AD信号值,重量值,砝码值\r\n"));
        QStringList got;
        for (const QStringList& row : readCsv(QString::fromUtf8(buffer.data())).mid(1))
            got << row[0] + QLatin1Char(' ') + row[1];
        QCOMPARE(got.join(QLatin1Char('|')), out);
    }

private:
    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(RecordsTest)
#include "records_test.moc"
