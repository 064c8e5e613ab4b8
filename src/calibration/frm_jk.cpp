#include "calibration/frm_jk.h"

#include "calibration/cal_records.h"
#include "calibration/records_csv.h"
#include "common/app_paths.h"
#include "common/own_text.h"
#include "common/form_access.h"
#include "common/module1.h"

#include <QAction>
#include <QDateEdit>
#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QTableView>
#include <QVBoxLayout>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {
constexpr int kWidth = 760;
// Column widths in twips, 15 to the pixel.
constexpr int kColumnTwips[7] = {1500, 2000, 1500, 1500, 1300, 1300, 1300};
// The viewer has no section in the language file: its texts are its own.
}  // namespace

int OpRecordModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : records_.rowCount();
}

int OpRecordModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : OpRecords::kColumns; }

QVariant OpRecordModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::DisplayRole)
        return records_.field(index.row(), index.column());
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignCenter);
    return {};
}

QVariant OpRecordModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return headers_.value(section);
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole)
        return int(Qt::AlignCenter);
    return QAbstractTableModel::headerData(section, orientation, role);
}

void OpRecordModel::setHeaders(const QStringList& headers)
{
    headers_ = headers;
    emit headerDataChanged(Qt::Horizontal, 0, OpRecords::kColumns - 1);
}

void OpRecordModel::setRecords(OpRecords records)
{
    beginResetModel();
    records_ = std::move(records);
    endResetModel();
}

void OpRecordModel::clear() { setRecords({}); }

FrmJk::FrmJk() : FormBase(QStringLiteral("FrmJk"))
{

    lblFormTitle = addTitle(QStringLiteral("lblFormTitle"), OwnText::tr("标秤记录"), {0, 10, kWidth, 36}, 20);
    ImageExit = addImage(this, QStringLiteral("ImageExit"), {kWidth - 44, 10, 32, 32}, ButtonSize::ExitIcon,
                         [this] { unloadLater(); });

    lblDate = addLabel(QStringLiteral("lblDate"), OwnText::tr("日期"), {20, 56, 60, 28});
    lblDate->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    DTPicker1 = new QDateEdit(this);
    DTPicker1->setObjectName(QStringLiteral("DTPicker1"));
    DTPicker1->setGeometry(88, 56, 140, 28);
    DTPicker1->setCalendarPopup(true);
    DTPicker1->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    // The date does not filter: the list is one file, read whole each time.
    connect(DTPicker1, &QDateEdit::dateChanged, this, [this] {
        FileName = QStringLiteral("BiaoCeng.txt");
        ReadRecords();
    });
    TxtDate = new QLineEdit(this);
    TxtDate->setObjectName(QStringLiteral("TxtDate"));
    TxtDate->hide();
    Command2 = new QPushButton(this);
    Command2->setObjectName(QStringLiteral("Command2"));
    Command2->hide();
    connect(Command2, &QPushButton::clicked, this, [this] { ReadRecords(); });

    model_ = new OpRecordModel(this);
    MSGrid = new QTableView(this);
    MSGrid->setObjectName(QStringLiteral("MSGrid"));
    MSGrid->setModel(model_);
    MSGrid->setGeometry(10, 96, kWidth - 20, 420);
    MSGrid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    MSGrid->setSelectionBehavior(QAbstractItemView::SelectRows);
    MSGrid->setWordWrap(false);
    MSGrid->horizontalHeader()->setStretchLastSection(false);
    // Fixed heights: the view never measures rows, however many there are.
    MSGrid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    MSGrid->verticalHeader()->setDefaultSectionSize(24);
    MSGrid->setAlternatingRowColors(true);
    setFixedSize(kWidth, 530);

    ExportCsv = new QAction(tr("导出为CSV文件..."), this);
    ExportCsv->setObjectName(QStringLiteral("ExportCsv"));
    ExportCsv->setShortcut(QKeySequence::Save);
    connect(ExportCsv, &QAction::triggered, this, &FrmJk::ExportRows);
    FindText = new QAction(tr("查找..."), this);
    FindText->setObjectName(QStringLiteral("FindText"));
    FindText->setShortcut(QKeySequence::Find);
    connect(FindText, &QAction::triggered, this, &FrmJk::ShowFind);
    addAction(ExportCsv);  // their shortcuts act anywhere on the form
    addAction(FindText);
    MSGridMenu = new QMenu(this);
    MSGridMenu->setObjectName(QStringLiteral("MSGridMenu"));
    MSGridMenu->addAction(ExportCsv);
    MSGridMenu->addAction(FindText);
    MSGrid->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(MSGrid, &QWidget::customContextMenuRequested, this, &FrmJk::showGridMenu);
}

void FrmJk::showGridMenu(const QPoint& at) { MSGridMenu->popup(MSGrid->viewport()->mapToGlobal(at)); }

void FrmJk::showEvent(QShowEvent* e)
{
    FormBase::showEvent(e);
    {
        const QSignalBlocker block(DTPicker1);
        DTPicker1->setDate(QDate::currentDate());
    }
    for (int c = 0; c < 7; ++c)
        MSGrid->setColumnWidth(c, qRound(kColumnTwips[c] / 15.0));
    FileName = QStringLiteral("BiaoCeng.txt");
    ReadRecords();
}

FrmJk::~FrmJk()
{
    // The list may have been long: its memory goes back to the system with the form, not at exit.
    model_->clear();
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

void FrmJk::writeHeaders() { model_->setHeaders(OpRecordHeaders()); }

void FrmJk::ReadRecords()
{
    // The old rows go before the file is read, so that two lists are never held at once.
    model_->clear();
    writeHeaders();
    const QString path = AppPaths::inApp(QStringLiteral("Data/") + FileName);
    if (AppPaths::Dir(path, false).isEmpty())
        return;
    model_->setRecords(ReadOpRecords(path));
}

void FrmJk::ExportRows()
{
    const QString suggested = QDir::homePath() + QLatin1Char('/') + tr("标秤记录") + QLatin1Char('-') +
                              QDate::currentDate().toString(QStringLiteral("yyyyMMdd")) + QStringLiteral(".csv");
    const QString path = ChooseExportPath ? ChooseExportPath(this, suggested)
                                          : QFileDialog::getSaveFileName(this, tr("导出标秤记录"), suggested,
                                                                         tr("CSV文件 (*.csv)"));
    if (path.isEmpty())
        return;
    const QString error = ExportRecordsCsv(model_->records(), path);
    if (error.isEmpty())
        ShowOkBox(tr("已导出%1条记录到：\n%2").arg(model_->rowCount()).arg(QDir::toNativeSeparators(path)), false);
    else
        ShowOkBox(tr("导出失败：\n%1\n%2").arg(QDir::toNativeSeparators(path), error), true);
}

void FrmJk::ShowFind()
{
    if (!FindRecords) {
        FindRecords = new QDialog(this, Qt::Tool);
        FindRecords->setObjectName(QStringLiteral("FindRecords"));
        FindRecords->setWindowTitle(tr("查找记录"));
        TxtFind = new QLineEdit(FindRecords);
        TxtFind->setObjectName(QStringLiteral("TxtFind"));
        TxtFind->setMinimumWidth(220);
        cmdFindNext = new QPushButton(tr("查找下一个"), FindRecords);
        cmdFindNext->setObjectName(QStringLiteral("cmdFindNext"));
        cmdFindNext->setDefault(true);
        lblFindResult = new QLabel(FindRecords);
        lblFindResult->setObjectName(QStringLiteral("lblFindResult"));
        QPalette red = lblFindResult->palette();
        red.setColor(QPalette::WindowText, kRed);
        lblFindResult->setPalette(red);
        auto* row = new QHBoxLayout;
        row->addWidget(TxtFind, 1);
        row->addWidget(cmdFindNext);
        auto* layout = new QVBoxLayout(FindRecords);
        layout->addLayout(row);
        layout->addWidget(lblFindResult);
        connect(cmdFindNext, &QPushButton::clicked, this, [this] {
            const QString text = TxtFind->text();
            lblFindResult->setText(text.isEmpty() || FindNext(text) ? QString() : tr("没有记录含“%1”").arg(text));
        });
        connect(TxtFind, &QLineEdit::textChanged, lblFindResult, &QLabel::clear);
        // Below the form, right-aligned, so that it hides no row; on a small screen as near as it fits.
        FindRecords->adjustSize();
        QRect at(mapToGlobal(QPoint(width() - FindRecords->width(), height() + 8)), FindRecords->size());
        if (const QScreen* s = screen()) {
            const QRect free = s->availableGeometry();
            at.moveBottom(std::min(at.bottom(), free.bottom()));
            at.moveRight(std::min(at.right(), free.right()));
        }
        FindRecords->move(at.topLeft());
    }
    FindRecords->show();
    FindRecords->raise();
    FindRecords->activateWindow();
    TxtFind->setFocus();
    TxtFind->selectAll();
}

bool FrmJk::FindNext(const QString& text)
{
    const int rows = model_->rowCount();
    const QModelIndex current = MSGrid->currentIndex();
    const int from = current.isValid() ? current.row() + 1 : 0;
    const OpRecords& records = model_->records();
    for (int k = 0; k < rows; ++k) {
        const int r = (from + k) % rows;
        for (int c = 0; c < OpRecords::kColumns; ++c) {
            if (!records.field(r, c).contains(text, Qt::CaseInsensitive))
                continue;
            MSGrid->setCurrentIndex(model_->index(r, c));
            MSGrid->selectionModel()->select(model_->index(r, 0),
                                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
            MSGrid->scrollTo(model_->index(r, c), QAbstractItemView::PositionAtCenter);
            return true;
        }
    }
    return false;
}
