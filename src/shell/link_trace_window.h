#pragma once
// The link's trace, live, in a window of its own beside the forms: every exchange with the controller,
// newest at the bottom, the reply beside its request, filtered by step and by outcome. Opened by
// Ctrl+Shift+L on any form.
#include <QAbstractTableModel>
#include <QSortFilterProxyModel>
#include <QWidget>

#include <functional>

class QComboBox;
class QLabel;
class QPushButton;
class QTableView;
class LinkTraceRing;
struct TraceExchange;

// The ring's exchanges as rows, oldest first, following it as it grows and turns over.
class LinkTraceModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { Time, Step, Form, Device, Count, Request, Reply, ReplyAfter, Outcome, Columns };
    explicit LinkTraceModel(LinkTraceRing& ring, QObject* parent = nullptr);
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    const TraceExchange* exchange(int row) const;

private:
    void appended(quint64 seq);
    void updated(quint64 seq);
    void reset();

    LinkTraceRing& ring_;
    quint64 first_ = 1;  // seq of row 0
    int rows_ = 0;
};

class LinkTraceWindow : public QWidget {
    Q_OBJECT
public:
    LinkTraceWindow();
    static LinkTraceWindow* open();  // creates it once, then shows and raises it
    static LinkTraceWindow* existing();

    void setStepFilter(int step);  // -1: every step
    // An outcome, or kResentFilter for the re-sends; -1: every outcome.
    void setOutcomeFilter(int outcome);
    static constexpr int kResentFilter = 100;
    void copySelected();
    void saveAll();

    // Where the whole ring is saved: asked by a file dialog; tests give the answer.
    static inline std::function<QString(QWidget* parent, const QString& suggested)> ChooseSavePath;

private:
    void addStep(short step);
    void follow();

    LinkTraceModel* model_ = nullptr;
    class Filter;
    Filter* filter_ = nullptr;
    QComboBox* StepFilter = nullptr;
    QComboBox* OutcomeFilter = nullptr;
    QPushButton* CopyRows = nullptr;
    QPushButton* SaveTrace = nullptr;
    QLabel* LblStatus = nullptr;
    QTableView* TraceRows = nullptr;
    bool atBottom_ = true;
};

void ShowLinkTraceWindow();
