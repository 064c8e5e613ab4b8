#pragma once
// The three traces of a successful calibration: the monthly file of values, its hidden copy on the
// system drive, and the operation list that the record viewer shows. All appended, never edited.
#include <QByteArrayView>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

// The clock of the records; tests set a fixed one. Empty: the system clock.
inline std::function<QDateTime()> CalClock;
QDateTime CalNow();
// Date and time as the records and the calibration arrays hold them: "2026/3/5 14:03:22".
QString CalTimeText(const QDateTime& t);

// Paths at the moment t: the monthly file, the hidden copy, the operation list.
QString MonthlyRecordPath(const QDateTime& t);
QString HiddenRecordPath(const QDateTime& t);
QString OpRecordPath();

void AppendZeroRecord(int scale);
void AppendWeightRecord(int scale);
void AppendOpRecord(const QString& scaleTitle, const QString& time, const QString& operatorName,
                    const QString& operation, const QString& ad, const QString& weight, const QString& testWeight);

// The operation list as the viewer holds it: the items one after another in one UTF-8 buffer, seven to a
// row, so that a long list costs little more than its file. An empty item is dropped, so a record with an
// empty field pulls the next record's first field into its row.
class OpRecords {
public:
    static constexpr int kColumns = 7;
    int rowCount() const { return int((ends_.size() + kColumns - 1) / kColumns); }
    // Empty where the last row of a file ends short.
    QString field(int row, int column) const;
    QByteArrayView fieldBytes(int row, int column) const;  // the same as UTF-8, without a copy
    qsizetype itemCount() const { return qsizetype(ends_.size()); }
    void clear();
    void append(QStringView item);
    void squeeze();  // gives back what growing left unused

private:
    QByteArray text_;
    std::vector<quint32> ends_;  // where each item ends in text_
};

// Reads the file in one pass, whatever its length; empty if it cannot be opened.
OpRecords ReadOpRecords(const QString& path);
// The same on bytes already in memory, in whichever encoding the text file reader finds.
OpRecords ParseOpRecords(const QByteArray& bytes);
// The items of one line as the list-input statement splits them: at commas outside quotes, blanks
// around an unquoted item trimmed, enclosing quotes removed. An empty line is one empty item.
QStringList SplitListInput(const QString& line);
