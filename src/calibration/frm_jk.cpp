#include "calibration/frm_jk.h"

#include "calibration/cal_records.h"
#include "common/app_paths.h"
#include "common/own_text.h"

#include <QDateEdit>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {
constexpr int kWidth = 760;
// Column widths of the design in twips, 15 to the pixel.
constexpr int kColumnTwips[7] = {1500, 2000, 1500, 1500, 1300, 1300, 1300};
// The viewer has no section in the language file: its texts are its own.
constexpr const char* kHeaders[7] = {QT_TRANSLATE_NOOP("OwnText", "秤名称"),   QT_TRANSLATE_NOOP("OwnText", "标秤时间"),
                                     QT_TRANSLATE_NOOP("OwnText", "操作员"),   QT_TRANSLATE_NOOP("OwnText", "具体操作"),
                                     QT_TRANSLATE_NOOP("OwnText", "AD信号值"), QT_TRANSLATE_NOOP("OwnText", "重量值"),
                                     QT_TRANSLATE_NOOP("OwnText", "砝码值")};
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
}

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

void FrmJk::writeHeaders()
{
    QStringList headers;
    for (const char* h : kHeaders)
        headers << OwnText::tr(h);
    model_->setHeaders(headers);
}

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
