// A list of rows for a view, which changes only where the rows differ.
#pragma once

#include <QAbstractListModel>
#include <QQmlEngine>
#include <QVariantMap>
#include <vector>

namespace vmr {

/// Each row is a map with a "key" of its own. A view keeps its place and its delegates while other rows come and go.
/// Main thread.
class RowsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a view model")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

 public:
    using Rows = std::vector<QVariantMap>;

    using QAbstractListModel::QAbstractListModel;

    int count() const { return static_cast<int>(rows_.size()); }
    const Rows& rows() const { return rows_; }
    /// Tells of what differs: rows that went, came, moved or hold something else. Keys must not repeat.
    void setRows(const Rows& rows);

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : count(); }
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override { return {{rowRole, "row"}}; }

 signals:
    void countChanged();

 private:
    static constexpr int rowRole = Qt::UserRole;
    void removeAllBut(const Rows& rows);
    int find(const QVariant& key, int from) const;

    Rows rows_;
};

}  // namespace vmr
