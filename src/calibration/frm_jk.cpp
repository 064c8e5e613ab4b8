#include "calibration/frm_jk.h"

#include "calibration/cal_records.h"
#include "common/app_paths.h"
#include "shell/lang.h"

#include <QDateEdit>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

namespace {
constexpr int kWidth = 760;
// Column widths of the design in twips, 15 to the pixel.
constexpr int kColumnTwips[7] = {1500, 2000, 1500, 1500, 1300, 1300, 1300};
struct Header {
    const char* key;
    const char* text;
};
constexpr Header kHeaders[7] = {{"FRMJK003", "秤名称"},   {"FRMJK004", "标秤时间"}, {"FRMJK005", "操作员"},
                                {"FRMJK006", "具体操作"}, {"FRMJK007", "AD信号值"}, {"FRMJK008", "重量值"},
                                {"FRMJK009", "砝码值"}};

QString text(const char* key, const char* deflt)
{
    return LangText(QStringLiteral("LANFRMJKFORM"), QLatin1String(key), QString::fromUtf8(deflt));
}
}  // namespace

FrmJk::FrmJk() : FormBase(QStringLiteral("FrmJk"))
{

    lblFormTitle = addTitle(QStringLiteral("lblFormTitle"), text("FRMJK001", "标秤记录"), {0, 10, kWidth, 36}, 20);
    ImageExit = addImage(this, QStringLiteral("ImageExit"), {kWidth - 44, 10, 32, 32}, ButtonSize::ExitIcon,
                         [this] { unloadLater(); });

    lblDate = addLabel(QStringLiteral("lblDate"), text("FRMJK002", "日期"), {20, 56, 60, 28});
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

    MSGrid = new QTableWidget(0, 7, this);
    MSGrid->setObjectName(QStringLiteral("MSGrid"));
    MSGrid->setGeometry(10, 96, kWidth - 20, 420);
    MSGrid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    MSGrid->setSelectionBehavior(QAbstractItemView::SelectRows);
    MSGrid->horizontalHeader()->setDefaultAlignment(Qt::AlignCenter);
    MSGrid->horizontalHeader()->setStretchLastSection(true);
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
        MSGrid->setColumnWidth(c, kColumnTwips[c] / 15);
    FileName = QStringLiteral("BiaoCeng.txt");
    ReadRecords();
}

void FrmJk::writeHeaders()
{
    QStringList headers;
    for (const Header& h : kHeaders)
        headers << text(h.key, h.text);
    MSGrid->setHorizontalHeaderLabels(headers);
}

void FrmJk::ReadRecords()
{
    MSGrid->clearContents();
    MSGrid->setRowCount(0);
    writeHeaders();
    const QString path = AppPaths::inApp(QStringLiteral("Data/") + FileName);
    if (AppPaths::Dir(path, false).isEmpty())
        return;
    const QList<OpRecordRow> rows = ReadOpRecords(path);
    MSGrid->setUpdatesEnabled(false);
    MSGrid->setRowCount(int(rows.size()));
    for (int r = 0; r < rows.size(); ++r) {
        for (int c = 0; c < 7; ++c) {
            const QString& v = rows[r][size_t(c)];
            if (v.isEmpty())
                continue;  // the last row of a file may end short
            auto* item = new QTableWidgetItem(v);
            item->setTextAlignment(Qt::AlignCenter);
            MSGrid->setItem(r, c, item);
        }
    }
    MSGrid->setUpdatesEnabled(true);
}
