#pragma once
// The viewer of the operation list: every record of the file, oldest first, one row of seven fields.
#include "shell/form_base.h"

class QDateEdit;
class QLineEdit;
class QPushButton;
class QTableWidget;

class FrmJk : public FormBase {
    Q_OBJECT
public:
    FrmJk();
    void ReadRecords();  // fills MSGrid from the file named in FileName

    QString FileName;

protected:
    void showEvent(QShowEvent* e) override;

private:
    void writeHeaders();

    QLabel* lblFormTitle = nullptr;
    QLabel* lblDate = nullptr;
    QDateEdit* DTPicker1 = nullptr;
    QTableWidget* MSGrid = nullptr;
    QLineEdit* TxtDate = nullptr;
    QPushButton* Command2 = nullptr;
    ImageButton ImageExit;
};
