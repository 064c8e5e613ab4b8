#include "calibration/cal_records.h"

#include "common/app_paths.h"
#include "common/scale_table.h"
#include "common/text_file.h"

#include <QDir>
#include <QFile>

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

void ensureHiddenFolder()
{
    const QString folder = AppPaths::systemDrive(kHiddenFolder);
    if (AppPaths::Dir(folder, true).contains(QLatin1String("MswSpool")))
        return;
    if (QDir().mkpath(folder))
        AppPaths::setHidden(folder);
}

QString lines(const QStringList& l) { return l.join(QLatin1Char('\n')) + QLatin1Char('\n'); }

bool validScale(int scale) { return scale >= 0 && scale < int(ScaleName.size()); }
}  // namespace

QDateTime CalNow() { return CalClock ? CalClock() : QDateTime::currentDateTime(); }

QString CalTimeText(const QDateTime& t) { return t.toString(QStringLiteral("yyyy/M/d H:mm:ss")); }

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
    // A failed write leaves the calibration standing; nothing is reported.
    TextFile::append(MonthlyRecordPath(now), lines(values + QStringList{kSeparator}));
    ensureHiddenFolder();
    TextFile::append(HiddenRecordPath(now), lines(QStringList{QStringLiteral("CengIndex=%1").arg(scale + 1)} + values +
                                                  QStringList{kSeparator}));
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
    TextFile::append(MonthlyRecordPath(now), record);
    ensureHiddenFolder();
    TextFile::append(HiddenRecordPath(now), record);
}

void AppendOpRecord(const QString& scaleTitle, const QString& time, const QString& operatorName,
                    const QString& operation, const QString& ad, const QString& weight, const QString& testWeight)
{
    // No fallback: without \Data the append cannot open the file and the record is lost.
    TextFile::append(OpRecordPath(), lines({scaleTitle, time, operatorName, operation, ad, weight, testWeight}) +
                               QLatin1Char('\n'));
}

QStringList SplitListInput(const QString& line)
{
    QStringList items;
    qsizetype i = 0;
    const qsizetype n = line.size();
    while (true) {
        while (i < n && (line.at(i) == QLatin1Char(' ') || line.at(i) == QLatin1Char('\t')))
            ++i;
        QString item;
        if (i < n && line.at(i) == QLatin1Char('"')) {
            const qsizetype close = line.indexOf(QLatin1Char('"'), i + 1);
            const qsizetype end = close < 0 ? n : close;
            item = line.mid(i + 1, end - i - 1);
            i = close < 0 ? n : close + 1;
            // Whatever follows the closing quote up to the comma is skipped.
            while (i < n && line.at(i) != QLatin1Char(','))
                ++i;
        } else {
            const qsizetype comma = line.indexOf(QLatin1Char(','), i);
            const qsizetype end = comma < 0 ? n : comma;
            item = line.mid(i, end - i).trimmed();
            i = end;
        }
        items << item;
        if (i >= n)
            break;
        ++i;  // past the comma
        if (i >= n)
            break;  // a comma at the end of the line ends the item list
    }
    return items;
}

QList<OpRecordRow> ReadOpRecords(const QString& path)
{
    QList<OpRecordRow> rows;
    QString text;
    if (!TextFile::read(path, &text))
        return rows;
    // The last line end does not start another (empty) line.
    if (text.endsWith(QLatin1Char('\n')))
        text.chop(text.endsWith(QLatin1String("\r\n")) ? 2 : 1);
    else if (text.endsWith(QLatin1Char('\r')))
        text.chop(1);
    if (text.isEmpty())
        return rows;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    int c = 0;
    for (const QStringView line : QStringView(text).split(QLatin1Char('\n'))) {
        for (const QString& item : SplitListInput(line.toString())) {
            if (item.isEmpty())
                continue;
            if (c == 0)
                rows.append(OpRecordRow{});
            rows.last()[size_t(c)] = item;
            c = c < 6 ? c + 1 : 0;
        }
    }
    return rows;
}
