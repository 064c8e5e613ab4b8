#include "shell/link_trace_window.h"

#include "link/link_trace.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace {
// Translated where they are shown; the Chinese is the source text.
constexpr const char* kOutcomeText[kTraceOutcomes] = {
    QT_TRANSLATE_NOOP("LinkTraceWindow", "等待回复"), QT_TRANSLATE_NOOP("LinkTraceWindow", "已确认"),
    QT_TRANSLATE_NOOP("LinkTraceWindow", "否认(NAK)"), QT_TRANSLATE_NOOP("LinkTraceWindow", "已取回复"),
    QT_TRANSLATE_NOOP("LinkTraceWindow", "超时"),     QT_TRANSLATE_NOOP("LinkTraceWindow", "乱码"),
    QT_TRANSLATE_NOOP("LinkTraceWindow", "过短"),     QT_TRANSLATE_NOOP("LinkTraceWindow", "过长"),
    QT_TRANSLATE_NOOP("LinkTraceWindow", "迟到"),     QT_TRANSLATE_NOOP("LinkTraceWindow", "丢弃"),
};
constexpr const char* kHeaderText[LinkTraceModel::Columns] = {
    QT_TRANSLATE_NOOP("LinkTraceWindow", "时间(ms)"), QT_TRANSLATE_NOOP("LinkTraceWindow", "步号"),
    QT_TRANSLATE_NOOP("LinkTraceWindow", "窗体"),     QT_TRANSLATE_NOOP("LinkTraceWindow", "器件"),
    QT_TRANSLATE_NOOP("LinkTraceWindow", "数量"),     QT_TRANSLATE_NOOP("LinkTraceWindow", "发送"),
    QT_TRANSLATE_NOOP("LinkTraceWindow", "回复"),     QT_TRANSLATE_NOOP("LinkTraceWindow", "用时(ms)"),
    QT_TRANSLATE_NOOP("LinkTraceWindow", "结果"),
};

QString outcomeLabel(TraceOutcome o) { return LinkTraceWindow::tr(kOutcomeText[int(o)]); }

bool failed(TraceOutcome o)
{
    return o != TraceOutcome::Waiting && o != TraceOutcome::Acknowledged && o != TraceOutcome::ReplyTaken;
}
}  // namespace

// ---- the model ----

LinkTraceModel::LinkTraceModel(LinkTraceRing& ring, QObject* parent) : QAbstractTableModel(parent), ring_(ring)
{
    first_ = ring.firstSeq();
    rows_ = ring.size();
    connect(&ring, &LinkTraceRing::appended, this, &LinkTraceModel::appended);
    connect(&ring, &LinkTraceRing::updated, this, &LinkTraceModel::updated);
    connect(&ring, &LinkTraceRing::cleared, this, &LinkTraceModel::reset);
}

int LinkTraceModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }
int LinkTraceModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : Columns; }

const TraceExchange* LinkTraceModel::exchange(int row) const
{
    return row < 0 || row >= rows_ ? nullptr : ring_.at(first_ + quint64(row));
}

void LinkTraceModel::appended(quint64 seq)
{
    // The ring has already let its oldest go when it was full.
    if (rows_ > 0 && seq - first_ >= quint64(LinkTraceRing::kCapacity)) {
        beginRemoveRows({}, 0, 0);
        ++first_;
        --rows_;
        endRemoveRows();
    }
    if (rows_ == 0)
        first_ = seq;
    beginInsertRows({}, rows_, rows_);
    ++rows_;
    endInsertRows();
}

void LinkTraceModel::updated(quint64 seq)
{
    if (seq < first_ || seq >= first_ + quint64(rows_))
        return;
    const int row = int(seq - first_);
    emit dataChanged(index(row, 0), index(row, Columns - 1));
}

void LinkTraceModel::reset()
{
    beginResetModel();
    first_ = ring_.firstSeq();
    rows_ = ring_.size();
    endResetModel();
}

QVariant LinkTraceModel::data(const QModelIndex& index, int role) const
{
    const TraceExchange* x = exchange(index.row());
    if (!x)
        return {};
    if (role == Qt::FontRole && (index.column() == Request || index.column() == Reply))
        return QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (role == Qt::ForegroundRole && index.column() == Outcome && failed(x->outcome))
        return QColor(0xC0, 0, 0);
    if (role == Qt::TextAlignmentRole)
        return index.column() == Time || index.column() == Step || index.column() == Count ||
                       index.column() == ReplyAfter
                   ? int(Qt::AlignRight | Qt::AlignVCenter)
                   : int(Qt::AlignLeft | Qt::AlignVCenter);
    // A long block does not fit its column: the whole of it on the pointer.
    if (role == Qt::ToolTipRole && (index.column() == Request || index.column() == Reply))
        return ShowLineChars(index.column() == Request ? x->request : x->reply);
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case Time:
        return x->sentMs >= 0 ? x->sentMs : x->endMs;
    case Step:
        return x->step;
    case Form:
        return x->form;
    case Device:
        return x->device;
    case Count:
        return x->device.isEmpty() ? QVariant() : QVariant(x->count);
    case Request:
        return ShowLineChars(x->request);
    case Reply:
        return ShowLineChars(x->reply);
    case ReplyAfter:
        return x->sentMs >= 0 && x->endMs >= 0 ? QVariant(x->endMs - x->sentMs) : QVariant();
    case Outcome:
        return x->resent ? LinkTraceWindow::tr("重发，%1").arg(outcomeLabel(x->outcome)) : outcomeLabel(x->outcome);
    default:
        return {};
    }
}

QVariant LinkTraceModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < Columns)
        return LinkTraceWindow::tr(kHeaderText[section]);
    return QAbstractTableModel::headerData(section, orientation, role);
}

// ---- the filter ----

class LinkTraceWindow::Filter : public QSortFilterProxyModel {
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;
    int step = -1;
    int outcome = -1;
    void apply() { invalidateRowsFilter(); }

protected:
    bool filterAcceptsRow(int row, const QModelIndex&) const override
    {
        const TraceExchange* x = static_cast<LinkTraceModel*>(sourceModel())->exchange(row);
        if (!x)
            return false;
        if (step >= 0 && x->step != step)
            return false;
        if (outcome == kResentFilter)
            return x->resent;
        return outcome < 0 || int(x->outcome) == outcome;
    }
};

// ---- the window ----

namespace {
QPointer<LinkTraceWindow> g_window;
}

LinkTraceWindow::LinkTraceWindow() : QWidget(nullptr, Qt::Window)
{
    setObjectName(QStringLiteral("LinkTrace"));
    setWindowTitle(tr("通讯记录"));
    setAttribute(Qt::WA_DeleteOnClose, false);

    model_ = new LinkTraceModel(LinkTrace(), this);
    filter_ = new Filter(this);
    filter_->setSourceModel(model_);

    auto* stepLabel = new QLabel(tr("步号:"), this);
    StepFilter = new QComboBox(this);
    StepFilter->setObjectName(QStringLiteral("StepFilter"));
    StepFilter->addItem(tr("全部"), -1);
    StepFilter->setMinimumContentsLength(6);
    auto* outcomeLabelText = new QLabel(tr("结果:"), this);
    OutcomeFilter = new QComboBox(this);
    OutcomeFilter->setObjectName(QStringLiteral("OutcomeFilter"));
    OutcomeFilter->addItem(tr("全部"), -1);
    for (TraceOutcome o : {TraceOutcome::Acknowledged, TraceOutcome::Nak, TraceOutcome::ReplyTaken})
        OutcomeFilter->addItem(outcomeLabel(o), int(o));
    OutcomeFilter->addItem(tr("重发"), kResentFilter);
    for (TraceOutcome o : {TraceOutcome::TimedOut, TraceOutcome::Garbage, TraceOutcome::Short, TraceOutcome::Long,
                           TraceOutcome::Late, TraceOutcome::Dropped, TraceOutcome::Waiting})
        OutcomeFilter->addItem(outcomeLabel(o), int(o));
    CopyRows = new QPushButton(tr("复制所选"), this);
    CopyRows->setObjectName(QStringLiteral("CopyRows"));
    SaveTrace = new QPushButton(tr("全部保存..."), this);
    SaveTrace->setObjectName(QStringLiteral("SaveTrace"));
    LblStatus = new QLabel(this);
    LblStatus->setObjectName(QStringLiteral("LblStatus"));

    TraceRows = new QTableView(this);
    TraceRows->setObjectName(QStringLiteral("TraceRows"));
    TraceRows->setModel(filter_);
    TraceRows->setSelectionBehavior(QAbstractItemView::SelectRows);
    TraceRows->setSelectionMode(QAbstractItemView::ExtendedSelection);
    TraceRows->setEditTriggers(QAbstractItemView::NoEditTriggers);
    TraceRows->setWordWrap(false);
    TraceRows->verticalHeader()->hide();
    TraceRows->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    TraceRows->verticalHeader()->setDefaultSectionSize(22);
    TraceRows->horizontalHeader()->setStretchLastSection(true);
    const int widths[LinkTraceModel::Columns] = {96, 44, 100, 60, 44, 250, 300, 70, 110};
    for (int c = 0; c < LinkTraceModel::Columns; ++c)
        TraceRows->setColumnWidth(c, widths[c]);

    auto* bar = new QHBoxLayout;
    bar->addWidget(stepLabel);
    bar->addWidget(StepFilter);
    bar->addSpacing(12);
    bar->addWidget(outcomeLabelText);
    bar->addWidget(OutcomeFilter);
    bar->addSpacing(12);
    bar->addWidget(LblStatus, 1);
    bar->addWidget(CopyRows);
    bar->addWidget(SaveTrace);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(TraceRows);
    resize(1180, 560);

    for (quint64 s = LinkTrace().firstSeq(); s <= LinkTrace().lastSeq() && s > 0; ++s)
        addStep(LinkTrace().at(s)->step);
    connect(&LinkTrace(), &LinkTraceRing::appended, this, [this](quint64 seq) {
        if (const TraceExchange* x = LinkTrace().at(seq))
            addStep(x->step);
    });
    connect(StepFilter, &QComboBox::currentIndexChanged, this,
            [this] { setStepFilter(StepFilter->currentData().toInt()); });
    connect(OutcomeFilter, &QComboBox::currentIndexChanged, this,
            [this] { setOutcomeFilter(OutcomeFilter->currentData().toInt()); });
    connect(CopyRows, &QPushButton::clicked, this, &LinkTraceWindow::copySelected);
    connect(SaveTrace, &QPushButton::clicked, this, &LinkTraceWindow::saveAll);
    auto* copy = new QShortcut(QKeySequence::Copy, TraceRows);
    connect(copy, &QShortcut::activated, this, &LinkTraceWindow::copySelected);

    // Newest at the bottom: the view follows new rows while it is scrolled to the end.
    QScrollBar* scroll = TraceRows->verticalScrollBar();
    connect(filter_, &QAbstractItemModel::rowsAboutToBeInserted, this,
            [this, scroll] { atBottom_ = scroll->value() >= scroll->maximum(); });
    connect(filter_, &QAbstractItemModel::rowsInserted, this, &LinkTraceWindow::follow);
    TraceRows->scrollToBottom();
}

LinkTraceWindow* LinkTraceWindow::open()
{
    if (!g_window)
        g_window = new LinkTraceWindow;
    g_window->show();
    g_window->raise();
    g_window->activateWindow();
    return g_window;
}

LinkTraceWindow* LinkTraceWindow::existing() { return g_window; }

void ShowLinkTraceWindow() { LinkTraceWindow::open(); }

void LinkTraceWindow::follow()
{
    if (atBottom_)
        TraceRows->scrollToBottom();
}

void LinkTraceWindow::addStep(short step)
{
    if (StepFilter->findData(int(step)) >= 0)
        return;
    int at = 1;
    while (at < StepFilter->count() && StepFilter->itemData(at).toInt() < step)
        ++at;
    StepFilter->insertItem(at, QString::number(step), int(step));
}

void LinkTraceWindow::setStepFilter(int step)
{
    filter_->step = step;
    filter_->apply();
    StepFilter->setCurrentIndex(std::max(0, StepFilter->findData(step)));
    TraceRows->scrollToBottom();
}

void LinkTraceWindow::setOutcomeFilter(int outcome)
{
    filter_->outcome = outcome;
    filter_->apply();
    OutcomeFilter->setCurrentIndex(std::max(0, OutcomeFilter->findData(outcome)));
    TraceRows->scrollToBottom();
}

void LinkTraceWindow::copySelected()
{
    QModelIndexList rows = TraceRows->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    QString text;
    for (const QModelIndex& r : rows) {
        QStringList cells;
        for (int c = 0; c < LinkTraceModel::Columns; ++c)
            cells << filter_->index(r.row(), c).data().toString();
        text += cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    QApplication::clipboard()->setText(text);
    LblStatus->setStyleSheet(QString());
    LblStatus->setText(tr("已复制 %1 行").arg(rows.size()));
}

void LinkTraceWindow::saveAll()
{
    const QDateTime now = QDateTime::currentDateTime();
    const QString suggested = QDir::homePath() + QStringLiteral("/LinkTrace-") +
                              now.toString(QStringLiteral("yyyyMMdd-HHmmss")) + QStringLiteral(".txt");
    const QString path = ChooseSavePath ? ChooseSavePath(this, suggested)
                                        : QFileDialog::getSaveFileName(this, tr("保存通讯记录"), suggested,
                                                                       tr("文本文件 (*.txt)"));
    if (path.isEmpty())
        return;
    if (SaveTraceFile(LinkTrace(), path, now)) {
        LblStatus->setStyleSheet(QString());
        LblStatus->setText(tr("已保存 %1 条通讯到 %2").arg(LinkTrace().size()).arg(QDir::toNativeSeparators(path)));
    } else {
        LblStatus->setStyleSheet(QStringLiteral("color: #C00000"));
        LblStatus->setText(tr("无法写入 %1").arg(QDir::toNativeSeparators(path)));
    }
}
