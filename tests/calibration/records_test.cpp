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


// file: null for none, in GB18030 unless a byte-order mark goes before it.
struct GridCase { const char *name, *file, *mark; QStringList rows; };
const GridCase kGrid[] = {
    {"no file", nullptr, "", {}},
    {"empty file", "", "", {}},
    // Names whose GB18030 bytes are valid UTF-8 as well.
    {"zero then span, oldest first",
     "砂\r\n2026/3/5 9:00:00\r\n郑伟\r\n标零\r\n5000\r\n0.0\r\n0\r\n\r\n"
     "1#砂\r\n2026/3/5 9:10:00\r\n谢强\r\n标重\r\n9000\r\n1500.5\r\n1500.5\r\n\r\n", "",
     {"砂|2026/3/5 9:00:00|郑伟|标零|5000|0.0|0", "1#砂|2026/3/5 9:10:00|谢强|标重|9000|1500.5|1500.5"}},
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
            PutFile(h->path(QStringLiteral("Data/BiaoCeng.txt")),
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
        QVERIFY(!g->horizontalHeader()->stretchLastSection());
        QStringList columns;
        for (int col = 0; col < g->model()->columnCount(); ++col) {
            columns << g->model()->headerData(col, Qt::Horizontal).toString() + QLatin1Char(' ') +
                           QString::number(g->horizontalHeader()->sectionSize(col));
            if (!c.rows.isEmpty())
                QCOMPARE(g->model()->index(0, col).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        }
        QCOMPARE(columns.join(QLatin1Char('|')),
                 QStringLiteral("秤名称 100|标秤时间 133|操作员 100|具体操作 100|AD信号值 87|重量值 87|砝码值 87"));
        QPointer<QAbstractItemModel> model = g->model();
        Forms::unload(QStringLiteral("FrmJk"));
        QVERIFY(model.isNull());
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
        PutFile(path, "kept\r\n");
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

    // Ctrl+S on the viewer: a write that fails says so and leaves no file; then the rows shown, every field as
    // the grid shows it.
    void exportRows()
    {
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
        PutFile(h->path(QStringLiteral("Data/BiaoCeng.txt")), list);
        Forms::show(QStringLiteral("FrmJk"));
        auto* form = static_cast<FrmJk*>(Forms::loaded(QStringLiteral("FrmJk")));
        const QString gone = h->path(QStringLiteral("gone/records.csv"));
        const QString path = h->path(QStringLiteral("out/records.csv"));
        QDir().mkpath(h->path(QStringLiteral("out")));
        MbAnswerer mb;
        for (const QString& to : {gone, path}) {
            FrmJk::ChooseExportPath = [to](QWidget*, const QString&) { return to; };
            form->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(form));
            QTest::keyClick(form, Qt::Key_S, Qt::ControlModifier);
            QTRY_COMPARE(mb.texts.size(), to == gone ? 1 : 2);
        }
        FrmJk::ChooseExportPath = nullptr;
        QCOMPARE(mb.errorIcons, (QList<bool>{true, false}));
        QVERIFY(mb.texts[0].startsWith(QStringLiteral("导出失败：\n") + gone));
        QCOMPARE(mb.texts[1], QStringLiteral("已导出100000条记录到：\n") + path);
        QVERIFY(!QFile::exists(gone));

        // UTF-8 behind its mark, the headers, then each row as the grid shows it.
        QByteArray csv = "\xEF\xBB\xBF" "秤名称,标秤时间,操作员,具体操作,AD信号值,重量值,砝码值\r\n";
        QStringList shown;
        for (const QString& r : shownRows(Ctl<QTableView>(form, QStringLiteral("MSGrid")))) {
            shown += r.split(QLatin1Char('|'));
            csv += CsvRow(r.split(QLatin1Char('|')));
        }
        QCOMPARE(shown, fields << QString());
        QVERIFY(csv.contains("\r\n\"a,b\",2026/3/5 9:00:00,\"x\"\"y\",标零,5000,0.0,0\r\n"));
        QCOMPARE(rawBytes(path), csv);
    }

    // Ctrl+F: the next row after the current one that holds the text, from the top again after the last.
    void findSelectsTheNextRow_data() { TableRows(kFinds); }
    void findSelectsTheNextRow()
    {
        const auto& c = TableRow(kFinds);
        PutFile(h->path(QStringLiteral("Data/BiaoCeng.txt")),
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
        PutFile(h->path(QStringLiteral("Data/BiaoCeng.txt")),
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
        const QStringList lines = QString::fromUtf8(buffer.data()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        for (const QString& row : lines.mid(1))
            got << row.section(QLatin1Char(','), 0, 1).replace(QLatin1Char(','), QLatin1Char(' '));
        QCOMPARE(got.join(QLatin1Char('|')), out);
    }

private:
    ConsoleHarness* h = nullptr;
};

QTEST_MAIN(RecordsTest)
#include "records_test.moc"
