// All trades or all fills of the paper account, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <optional>

#include "base/WeakTask.h"
#include "model/SimDesk.h"
#include "sim/SimLists.h"
#include "ui/widgets/RowsModel.h"

namespace vmr {

/// The list window beside the simulator's panel: sorted by a column, those of one root or one day. It is closed while
/// `kind` is empty, and follows the account while it is open. Main thread.
class SimListViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(QString kind READ kind WRITE setKind NOTIFY changed)  ///< "trades", "fills" or empty
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString fileName READ fileName NOTIFY changed)  ///< to export to
    /// Each { id, title, number, result }: whether it stands at the right, and whether it is what a trade brought.
    Q_PROPERTY(QVariantList columns READ columns NOTIFY columnsChanged)
    Q_PROPERTY(int sortedBy READ sortedBy NOTIFY changed)
    Q_PROPERTY(bool descending READ descending NOTIFY changed)
    Q_PROPERTY(QString root READ root WRITE setRoot NOTIFY changed)  ///< empty for all
    Q_PROPERTY(QString day READ day WRITE setDay NOTIFY changed)     ///< by its number; empty for all
    Q_PROPERTY(QStringList roots READ roots NOTIFY choicesChanged)
    Q_PROPERTY(QVariantList days READ days NOTIFY choicesChanged)  ///< each { day, name }, the newest first
    Q_PROPERTY(vmr::RowsModel* rows READ rowsOf CONSTANT)

 public:
    using QObject::QObject;

    /// Whose account it is; both outlive their being set here. Null for nobody's.
    void bind(SimDesk* desk, MainLoop* main = nullptr);

    QString kind() const { return kind_; }
    void setKind(const QString& kind);
    QString title() const;
    QString fileName() const;
    QVariantList columns() const;
    int sortedBy() const { return sortedBy_; }
    bool descending() const { return descending_; }
    QString root() const { return QString::fromStdString(filter_.root); }
    void setRoot(const QString& root);
    QString day() const { return filter_.day ? QString::number(*filter_.day) : QString(); }
    void setDay(const QString& day);
    QStringList roots() const { return roots_; }
    QVariantList days() const { return days_; }

    RowsModel rows;

    /// By that column, upwards at first where it holds words; again, the other way round.
    Q_INVOKABLE void sortBy(int column);
    /// Writes the rows that are listed, as they are listed; what went wrong, empty for nothing.
    Q_INVOKABLE QString exportTo(const QString& file) const;

 signals:
    void changed();
    void columnsChanged();
    void choicesChanged();

 private:
    RowsModel* rowsOf() { return &rows; }
    bool listsTrades() const { return kind_ == QLatin1String("trades"); }
    std::vector<sim::Trade> trades() const;
    std::vector<sim::Fill> fills() const;
    void mark();
    void refresh();
    void refreshChoices();

    SimDesk* desk_ = nullptr;
    MainLoop* main_ = nullptr;
    QString kind_;
    sim::ListFilter filter_;
    int sortedBy_ = 0;
    bool descending_ = true, marked_ = false;
    std::optional<std::uint64_t> seen_;  ///< the revision that the rows show
    QStringList roots_;
    QVariantList days_;
    Connection desksChanges_;
    WeakTask whileThere_;
};

}  // namespace vmr
