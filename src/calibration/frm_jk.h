#pragma once
// The viewer of the operation list: every record of the file, oldest first, one row of seven fields.
#include "calibration/cal_records.h"
#include "shell/form_base.h"

#include <QAbstractTableModel>

class QDateEdit;
class QLineEdit;
class QPushButton;
class QTableView;

// The grid's rows straight out of the parsed list: no item per cell, so a long list stays small.
class OpRecordModel : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void setHeaders(const QStringList& headers);
    void setRecords(OpRecords records);
    void clear();

private:
    OpRecords records_;
    QStringList headers_;
};

class FrmJk : public FormBase {
    Q_OBJECT
public:
    FrmJk();
    ~FrmJk() override;
    void ReadRecords();  // fills MSGrid from the file named in FileName

    QString FileName;

protected:
    void showEvent(QShowEvent* e) override;

private:
    void writeHeaders();

    QLabel* lblFormTitle = nullptr;
    QLabel* lblDate = nullptr;
    QDateEdit* DTPicker1 = nullptr;
    QTableView* MSGrid = nullptr;
    OpRecordModel* model_ = nullptr;
    QLineEdit* TxtDate = nullptr;
    QPushButton* Command2 = nullptr;
    ImageButton ImageExit;
};
