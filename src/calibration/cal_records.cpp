#include "calibration/cal_records.h"

#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "common/vbtext.h"

#include <QFile>

#include <limits>

namespace {
const QString kSeparator(52, QLatin1Char('#'));
const QString kHiddenFolder = QStringLiteral("C:\\Program Files\\MswSpool");

// The monthly files go to \Data when the folder is there, else beside the program.
QString monthlyBase()
{
    const QString data = AppPaths::inApp(QStringLiteral("Data"));
    if (AppPaths::Dir(data, true).contains(QLatin1String("Data")))
        return data + QLatin1Char('/');
    return AppPaths::appFolder() + QLatin1Char('/');
}

// A record that cannot be written leaves the calibration standing; the log tells the system's reason.
void logFailure(const char* routine, const FileError& e)
{
    if (!e.ok())
        LogProgramError(QStringLiteral("Module1"), QLatin1String(routine), QString::number(e.number), e.logText());
}

void appendRecord(const char* routine, const QString& path, const QString& text)
{
    FileError e;
    TextFile::append(path, text, &e);
    logFailure(routine, e);
}

void ensureHiddenFolder(const char* routine)
{
    const QString folder = AppPaths::systemDrive(kHiddenFolder);
    if (AppPaths::Dir(folder, true).contains(QLatin1String("MswSpool")))
        return;
    const FileError made = SharedFiles::makeFolder(folder);
    logFailure(routine, made);
    if (made.ok())
        AppPaths::setHidden(folder);
}

QString lines(const QStringList& l) { return l.join(QLatin1Char('\n')) + QLatin1Char('\n'); }

bool validScale(int scale) { return scale >= 0 && scale < int(ScaleName.size()); }
}  // namespace

QDateTime CalNow() { return CalClock ? CalClock() : QDateTime::currentDateTime(); }

QString CalTimeText(const QDateTime& t) { return DateTimeText(t); }

QString MonthlyRecordPath(const QDateTime& t)
{
    return monthlyBase() + AppPaths::yearMonth(t.date()) + QStringLiteral("BiaoCen.txt");
}

QString HiddenRecordPath(const QDateTime& t)
{
    return AppPaths::systemDrive(kHiddenFolder + QLatin1Char('\\') + AppPaths::yearMonth(t.date()) +
                                 QStringLiteral("MswSpool.txt"));
}

QString OpRecordPath() { return AppPaths::inApp(QStringLiteral("Data/BiaoCeng.txt")); }

void AppendZeroRecord(int scale)
{
    if (!validScale(scale))
        return;
    const QDateTime now = CalNow();
    const QString& n = ScaleName[scale];
    const QStringList values = {n + QStringLiteral("BiaoZeroTime=") + BiaoZeroTime[scale],
                                n + QStringLiteral("BiaoZeroADValue=") + BiaoZeroADValue[scale],
                                n + QStringLiteral("BiaoZeroWTValue=") + BiaoZeroWTValue[scale]};
    appendRecord("AppendZeroRecord", MonthlyRecordPath(now), lines(values + QStringList{kSeparator}));
    ensureHiddenFolder("AppendZeroRecord");
    appendRecord("AppendZeroRecord", HiddenRecordPath(now),
                 lines(QStringList{QStringLiteral("CengIndex=%1").arg(scale + 1)} + values + QStringList{kSeparator}));
}

void AppendWeightRecord(int scale)
{
    if (!validScale(scale))
        return;
    const QDateTime now = CalNow();
    const QString& n = ScaleName[scale];
    const QString record = lines({QStringLiteral("CengIndex=%1").arg(scale + 1),
                                  n + QStringLiteral("BiaoWeightTime=") + BiaoWeightTime[scale],
                                  n + QStringLiteral("BiaoWeightADValue=") + BiaoWeightADValue[scale],
                                  n + QStringLiteral("BiaoWeightWTValue=") + BiaoWeightWTValue[scale],
                                  n + QStringLiteral("BiaoWeightFMValue=") + BiaoWeightFMValue[scale], kSeparator});
    appendRecord("AppendWeightRecord", MonthlyRecordPath(now), record);
    ensureHiddenFolder("AppendWeightRecord");
    appendRecord("AppendWeightRecord", HiddenRecordPath(now), record);
}

void AppendOpRecord(const QString& scaleTitle, const QString& time, const QString& operatorName,
                    const QString& operation, const QString& ad, const QString& weight, const QString& testWeight)
{
    // No fallback: without \Data the append cannot open the file and the record is lost.
    appendRecord("AppendOpRecord", OpRecordPath(),
                 lines({scaleTitle, time, operatorName, operation, ad, weight, testWeight}) + QLatin1Char('\n'));
}

namespace {
// Calls f with each item of a line, as SplitListInput splits it, without copying.
template <class F> void forEachListItem(QStringView line, F&& f)
{
    auto blank = [](QChar c) { return c == QLatin1Char(' ') || c == QLatin1Char('\t'); };
    qsizetype i = 0;
    const qsizetype n = line.size();
    while (true) {
        while (i < n && blank(line[i]))
            ++i;
        if (i < n && line[i] == QLatin1Char('"')) {
            const qsizetype close = line.indexOf(QLatin1Char('"'), i + 1);
            const qsizetype end = close < 0 ? n : close;
            f(line.sliced(i + 1, end - i - 1));
            i = close < 0 ? n : close + 1;
            // Whatever follows the closing quote up to the comma is skipped.
            while (i < n && line[i] != QLatin1Char(','))
                ++i;
        } else {
            const qsizetype comma = line.indexOf(QLatin1Char(','), i);
            const qsizetype end = comma < 0 ? n : comma;
            f(line.sliced(i, end - i).trimmed());
            i = end;
        }
        if (i >= n)
            break;
        ++i;  // past the comma
        if (i >= n)
            break;  // a comma at the end of the line ends the item list
    }
}

bool lineEnd(QChar c) { return c == QLatin1Char('\r') || c == QLatin1Char('\n'); }

}  // namespace

QString OpRecords::field(int row, int column) const { return QString::fromUtf8(fieldBytes(row, column)); }

QByteArrayView OpRecords::fieldBytes(int row, int column) const
{
    const size_t k = size_t(row) * kColumns + size_t(column);
    if (row < 0 || column < 0 || column >= kColumns || k >= ends_.size())
        return {};
    const quint32 begin = k == 0 ? 0 : ends_[k - 1];
    return QByteArrayView(text_.constData() + begin, qsizetype(ends_[k] - begin));
}

void OpRecords::clear()
{
    text_ = QByteArray();
    ends_ = std::vector<quint32>();
}

void OpRecords::squeeze()
{
    text_.squeeze();
    ends_.shrink_to_fit();
}

void OpRecords::append(QStringView item)
{
    const qsizetype at = text_.size();
    // Beyond four gigabytes of items the table is full, as the old grid was at its row limit.
    if (quint64(at) + quint64(item.size()) * 3 >= std::numeric_limits<quint32>::max())
        return;
    bool ascii = true;
    for (QChar c : item)
        ascii = ascii && c.unicode() < 0x80;
    if (ascii) {
        text_.resize(at + item.size());
        char* p = text_.data() + at;
        for (QChar c : item)
            *p++ = char(c.unicode());
    } else {
        text_.append(item.toUtf8());
    }
    ends_.push_back(quint32(text_.size()));
}

QStringList SplitListInput(const QString& line)
{
    QStringList items;
    forEachListItem(line, [&](QStringView item) { items << item.toString(); });
    return items;
}

namespace {
// One pass: lines end at CR or LF, and an empty line is one empty item, which is dropped like the others.
OpRecords parse(QStringView text)
{
    OpRecords records;
    auto take = [&records](QStringView item) {
        if (!item.isEmpty())
            records.append(item);
    };
    qsizetype start = 0;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !lineEnd(text[i]))
            continue;
        if (i > start)
            forEachListItem(text.sliced(start, i - start), take);
        start = i + 1;
    }
    records.squeeze();
    return records;
}
}  // namespace

OpRecords ParseOpRecords(const QByteArray& bytes) { return parse(TextFile::decode(bytes)); }

OpRecords ReadOpRecords(const QString& path)
{
    QString text;
    if (!TextFile::read(path, &text))
        return {};
    return parse(text);
}
