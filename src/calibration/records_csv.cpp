#include "calibration/records_csv.h"

#include "common/own_text.h"

#include <QFile>
#include <QIODevice>
#include <QSaveFile>

namespace {
// The viewer's headers are its own texts: no number in the language file.
constexpr const char* kHeaders[OpRecords::kColumns] = {
    QT_TRANSLATE_NOOP("OwnText", "秤名称"),   QT_TRANSLATE_NOOP("OwnText", "标秤时间"), QT_TRANSLATE_NOOP("OwnText", "操作员"),
    QT_TRANSLATE_NOOP("OwnText", "具体操作"), QT_TRANSLATE_NOOP("OwnText", "AD信号值"), QT_TRANSLATE_NOOP("OwnText", "重量值"),
    QT_TRANSLATE_NOOP("OwnText", "砝码值")};
constexpr char kBom[] = "\xEF\xBB\xBF";

// Digits at p, at most max of them; false if there are none.
bool digits(QByteArrayView s, qsizetype& p, int max, int* value)
{
    int v = 0, n = 0;
    while (p < s.size() && n < max && s[p] >= '0' && s[p] <= '9') {
        v = v * 10 + (s[p++] - '0');
        ++n;
    }
    *value = v;
    return n > 0;
}

// "2026/3/5 14:03:22" as the records write it, or with - or . between the parts: the month, or -1.
int monthOfDate(QByteArrayView s)
{
    qsizetype p = 0;
    int year = 0, month = 0, day = 0;
    auto separator = [&] { return p < s.size() && (s[p] == '/' || s[p] == '-' || s[p] == '.') && ++p; };
    if (s.size() < 8 || !digits(s, p, 4, &year) || p != 4 || !separator() || !digits(s, p, 2, &month) ||
        !separator() || !digits(s, p, 2, &day))
        return -1;
    if (month < 1 || month > 12 || day < 1 || day > 31 || (p < s.size() && s[p] != ' '))
        return -1;
    return year * 12 + month - 1;
}

bool writeAll(QIODevice& out, const QByteArray& bytes) { return out.write(bytes) == bytes.size(); }
}  // namespace

QStringList OpRecordHeaders()
{
    QStringList headers;
    for (const char* h : kHeaders)
        headers << OwnText::tr(h);
    return headers;
}

QByteArray CsvField(QByteArrayView utf8)
{
    bool quote = false;
    for (const char c : utf8)
        quote = quote || c == ',' || c == '"' || c == '\r' || c == '\n';
    if (!quote)
        return utf8.toByteArray();
    QByteArray q;
    q.reserve(utf8.size() + 4);
    q += '"';
    for (const char c : utf8) {
        if (c == '"')
            q += '"';
        q += c;
    }
    q += '"';
    return q;
}

QByteArray CsvRow(const QStringList& fields)
{
    QByteArray row;
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (i)
            row += ',';
        row += CsvField(fields[i].toUtf8());
    }
    return row + "\r\n";
}

int ParseRecordMonth(const QString& text, QString* error)
{
    const QByteArray t = text.trimmed().toLatin1();
    qsizetype p = 0;
    int year = 0, month = 0;
    if (digits(t, p, 4, &year) && p == 4 && p < t.size() && t[p++] == '-' && digits(t, p, 2, &month) &&
        p == t.size() && month >= 1 && month <= 12)
        return year * 12 + month - 1;
    if (error)
        *error = OwnText::tr("“%1”不是月份：请写成 YYYY-MM，例如 2026-03").arg(text);
    return -1;
}

int RecordRowMonth(const OpRecords& records, int row, int* timeColumn)
{
    // The time's own column first; a row shifted by an empty field has it further left.
    for (int c : {1, 0, 2, 3, 4, 5, 6}) {
        const int m = monthOfDate(records.fieldBytes(row, c));
        if (m >= 0) {
            if (timeColumn)
                *timeColumn = c;
            return m;
        }
    }
    return -1;
}

std::vector<int> SelectRecordRows(const OpRecords& records, int fromMonth, int toMonth, const QString& scale)
{
    std::vector<int> rows;
    const QByteArray scaleUtf8 = scale.trimmed().toUtf8();
    const bool anyMonth = fromMonth < 0 && toMonth < 0;
    for (int r = 0; r < records.rowCount(); ++r) {
        int timeColumn = -1;
        const int m = RecordRowMonth(records, r, &timeColumn);
        if (!anyMonth && (m < 0 || (fromMonth >= 0 && m < fromMonth) || (toMonth >= 0 && m > toMonth)))
            continue;
        // The scale's title is the field before the time: at the end of the row before in a shifted row.
        const QByteArrayView title = timeColumn > 0    ? records.fieldBytes(r, timeColumn - 1)
                                     : timeColumn == 0 ? records.fieldBytes(r - 1, OpRecords::kColumns - 1)
                                                       : QByteArrayView();
        if (!scaleUtf8.isEmpty() && title != scaleUtf8)
            continue;
        rows.push_back(r);
    }
    return rows;
}

bool WriteRecordsCsv(QIODevice& out, const OpRecords& records, const std::vector<int>* rows, bool byteOrderMark)
{
    QByteArray chunk;
    if (byteOrderMark)
        chunk += kBom;
    chunk += CsvRow(OpRecordHeaders());
    const int n = rows ? int(rows->size()) : records.rowCount();
    for (int i = 0; i < n; ++i) {
        const int r = rows ? (*rows)[size_t(i)] : i;
        for (int c = 0; c < OpRecords::kColumns; ++c) {
            if (c)
                chunk += ',';
            chunk += CsvField(records.fieldBytes(r, c));
        }
        chunk += "\r\n";
        if (chunk.size() >= (1 << 20)) {
            if (!writeAll(out, chunk))
                return false;
            chunk.clear();
        }
    }
    return writeAll(out, chunk);
}

QString ExportRecordsCsv(const OpRecords& records, const QString& path)
{
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        return f.errorString();
    if (!WriteRecordsCsv(f, records, nullptr, true)) {
        const QString why = f.errorString();
        f.cancelWriting();
        return why;
    }
    if (!f.commit())
        return f.errorString();
    return {};
}

QString PrintRecordsCsv(const QString& from, const QString& to, const QString& scale, QIODevice& out)
{
    QString error;
    const int fromMonth = from.trimmed().isEmpty() ? -1 : ParseRecordMonth(from, &error);
    if (!error.isEmpty())
        return QStringLiteral("--from: ") + error;
    const int toMonth = to.trimmed().isEmpty() ? -1 : ParseRecordMonth(to, &error);
    if (!error.isEmpty())
        return QStringLiteral("--to: ") + error;
    if (fromMonth >= 0 && toMonth >= 0 && fromMonth > toMonth)
        return OwnText::tr("--from %1 晚于 --to %2").arg(from.trimmed(), to.trimmed());
    const QString path = OpRecordPath();
    // No list yet: no records, as the viewer shows none. One that is there must be readable.
    if (QFile probe(path); probe.exists() && !probe.open(QIODevice::ReadOnly))
        return QStringLiteral("%1: %2").arg(path, probe.errorString());
    const OpRecords records = ReadOpRecords(path);
    const std::vector<int> rows = SelectRecordRows(records, fromMonth, toMonth, scale);
    if (!WriteRecordsCsv(out, records, &rows, false))
        return OwnText::tr("输出无法写入：") + out.errorString();
    return {};
}
