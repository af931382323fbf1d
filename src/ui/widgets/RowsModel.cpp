#include "ui/widgets/RowsModel.h"

#include <QSet>
#include <algorithm>

namespace vmr {

namespace {
const QString keyName = QStringLiteral("key");
}

QVariant RowsModel::data(const QModelIndex& index, int role) const {
    if (role != rowRole || index.row() < 0 || index.row() >= count()) return {};
    return rows_[static_cast<std::size_t>(index.row())];
}

void RowsModel::removeAllBut(const Rows& rows) {
    QSet<QString> kept;
    for (const QVariantMap& row : rows) kept.insert(row[keyName].toString());
    for (int i = count() - 1; i >= 0; --i) {
        const auto at = rows_.begin() + i;
        if (kept.contains((*at)[keyName].toString())) continue;
        beginRemoveRows({}, i, i);
        rows_.erase(at);
        endRemoveRows();
    }
}

int RowsModel::find(const QVariant& key, int from) const {
    for (int i = from; i < count(); ++i)
        if (rows_[static_cast<std::size_t>(i)][keyName] == key) return i;
    return -1;
}

void RowsModel::setRows(const Rows& rows) {
    const int before = count();
    removeAllBut(rows);
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
        const QVariantMap& row = rows[static_cast<std::size_t>(i)];
        const int at = find(row[keyName], i);
        const auto place = rows_.begin() + i;
        if (at < 0) {
            beginInsertRows({}, i, i);
            rows_.insert(place, row);
            endInsertRows();
            continue;
        }
        if (at > i) {
            beginMoveRows({}, at, at, {}, i);
            std::rotate(place, rows_.begin() + at, rows_.begin() + at + 1);
            endMoveRows();
        }
        if (*place == row) continue;
        *place = row;
        emit dataChanged(index(i), index(i));
    }
    if (count() != before) emit countChanged();
}

}  // namespace vmr
