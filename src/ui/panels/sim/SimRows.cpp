#include "ui/panels/sim/SimRows.h"

#include <algorithm>
#include <cmath>

namespace vmr {

namespace {
QString text(const std::string& utf8) { return QString::fromStdString(utf8); }
QString text(const std::optional<std::string>& utf8) { return text(utf8.value_or("")); }
QString joined(std::initializer_list<std::string> words) {
    QStringList out;
    for (const std::string& word : words)
        if (!word.empty()) out.append(text(word));
    return out.join(QLatin1Char(' '));
}

template <class Row, class Make>
RowsModel::Rows each(const std::vector<Row>& rows, Make make) {
    RowsModel::Rows out;
    out.reserve(rows.size());
    for (const Row& row : rows) out.push_back(make(row));
    return out;
}
}  // namespace

RowsModel::Rows simRows(const std::vector<SimPositionRow>& rows, const SimEngine& engine) {
    return each(rows, [&engine](const SimPositionRow& row) {
        const SimPnl pnl = simPnl(engine, row.root);
        return QVariantMap{{"key", text(row.root)},        {"long", row.isLong},
                           {"size", text(row.size)},       {"name", text(row.name())},
                           {"average", text(row.average)}, {"elsewhere", !row.contract.empty()},
                           {"addSl", text(row.addSl)},     {"addTp", text(row.addTp)},
                           {"pnl", text(pnl.text)},        {"gain", pnl.gain}};
    });
}

RowsModel::Rows simRows(const std::vector<SimOrderRow>& rows) {
    return each(rows, [](const SimOrderRow& row) {
        return QVariantMap{{"key", text(row.id.text())},
                           {"buys", row.buys},
                           {"side", text(row.side)},
                           {"what", joined({row.qty, row.root, row.type, row.tag})},
                           {"price", text(row.price)}};
    });
}

RowsModel::Rows simRows(const std::vector<SimMetric>& rows) {
    return each(rows, [](const SimMetric& row) {
        return QVariantMap{{"key", text(row.caption)}, {"value", text(row.value)}};
    });
}

RowsModel::Rows simRows(const std::vector<SimDay>& rows) {
    double most = 0;
    for (const SimDay& row : rows) most = std::max(most, std::abs(row.pnl));
    return each(rows, [most](const SimDay& row) {
        return QVariantMap{{"key", QString::number(row.day)},
                           {"day", text(row.name)},
                           {"value", text(row.text)},
                           {"gain", row.pnl >= 0},
                           {"share", most > 0 ? std::abs(row.pnl) / most : 0.0}};
    });
}

RowsModel::Rows simRows(const std::vector<SimHistoryRow>& rows) {
    return each(rows, [](const SimHistoryRow& row) {
        return QVariantMap{{"key", text(row.id.text())}, {"time", text(row.time)},
                           {"buys", row.side == "BUY"},  {"head", joined({row.side, row.qty, row.root})},
                           {"what", text(row.prices)},   {"end", text(row.result)},
                           {"tone", row.gain ? 1 : -1}};
    });
}

RowsModel::Rows simRows(const std::vector<SimFillRow>& rows) {
    return each(rows, [](const SimFillRow& row) {
        return QVariantMap{{"key", text(row.id.text())},
                           {"time", text(row.time)},
                           {"buys", row.buys},
                           {"head", joined({row.side, row.qty, row.root})},
                           {"what", text(row.price)},
                           {"end", text(row.tag)},
                           {"tone", 0}};
    });
}

}  // namespace vmr
