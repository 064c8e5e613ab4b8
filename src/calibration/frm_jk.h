#pragma once
// The viewer of the operation list: every record of the file, oldest first, one row of seven fields.
#include "calibration/cal_records.h"
#include "shell/form_base.h"

#include <QAbstractTableModel>
#include <functional>

class QAction;
class QDateEdit;
class QDialog;
class QLineEdit;
class QMenu;
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
    const OpRecords& records() const { return records_; }

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

    // Added to the viewer: the rows shown out as CSV (Ctrl+S, and the grid's menu), and a text found in them
    // (Ctrl+F).
    void ExportRows();
    void ShowFind();
    // Selects the next row after the current one that holds text, from the top again after the last;
    // false if no row holds it.
    bool FindNext(const QString& text);
    // Where the export goes: asked by a file dialog; tests give the answer. Empty: not exported.
    static inline std::function<QString(QWidget* parent, const QString& suggested)> ChooseExportPath;

protected:
    void showEvent(QShowEvent* e) override;

private:
    void writeHeaders();
    void showGridMenu(const QPoint& at);

    QLabel* lblFormTitle = nullptr;
    QLabel* lblDate = nullptr;
    QDateEdit* DTPicker1 = nullptr;
    QTableView* MSGrid = nullptr;
    OpRecordModel* model_ = nullptr;
    QLineEdit* TxtDate = nullptr;
    QPushButton* Command2 = nullptr;
    ImageButton ImageExit;
    QAction* ExportCsv = nullptr;
    QAction* FindText = nullptr;
    QMenu* MSGridMenu = nullptr;
    QDialog* FindRecords = nullptr;
    QLineEdit* TxtFind = nullptr;
    QPushButton* cmdFindNext = nullptr;
    QLabel* lblFindResult = nullptr;
};
