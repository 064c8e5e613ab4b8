#pragma once
// The calibration records out of the station as CSV text (RFC 4180): a field is quoted when it holds a
// comma, a quote or a line end, a quote inside is doubled, every row ends with CRLF. The rows are the
// viewer's, field for field. The viewer's export starts with the UTF-8 byte-order mark, by which the
// common spreadsheet programs know the Chinese; the records command's output has none.
#include "calibration/cal_records.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <vector>

class QIODevice;

// The headers of the viewer's seven columns.
QStringList OpRecordHeaders();

// One field, quoted if it must be, as UTF-8.
QByteArray CsvField(QByteArrayView utf8);
// Fields joined by commas, CRLF at the end.
QByteArray CsvRow(const QStringList& fields);

// Months are counted as year * 12 + month - 1. "2026-01" (or "2026-1"); -1 and *error for anything else.
int ParseRecordMonth(const QString& text, QString* error);
// The month of a row: that of its time; in a row shifted by an empty field, that of the first field
// that reads as a date. -1 if none does. *timeColumn tells which field it was.
int RecordRowMonth(const OpRecords& records, int row, int* timeColumn = nullptr);

// The rows of the list whose month lies between from and to (-1: no bound), of one scale if scale is not
// empty (its title is the field before the time, which in a shifted row ends the row before), in the
// order of the file.
std::vector<int> SelectRecordRows(const OpRecords& records, int fromMonth, int toMonth, const QString& scale);

// The headers, then the rows given (all when rows is null). false when the device refused a write.
bool WriteRecordsCsv(QIODevice& out, const OpRecords& records, const std::vector<int>* rows, bool byteOrderMark);

// The viewer's export: the whole file or none of it, with the byte-order mark. An error text, or empty.
QString ExportRecordsCsv(const OpRecords& records, const QString& path);

// The records command: the operation list's records of the months from to to ("YYYY-MM", empty for no
// bound), of one scale if scale is not empty, as CSV without a byte-order mark. An error text, or empty.
QString PrintRecordsCsv(const QString& from, const QString& to, const QString& scale, QIODevice& out);
