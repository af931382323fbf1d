#include "ui/panels/sim/SimListViewModel.h"

#include <array>
#include <cmath>
#include <functional>
#include <set>
#include <utility>

#include "sim/SimTexts.h"

namespace vmr {

namespace {
using sim::FillColumn;
using sim::TradeColumn;

struct Column {
    const char *id, *title;
    bool number = true, result = false;
};
// In the order of `TradeColumn` and of `FillColumn`.
constexpr std::array tradeColumns{Column{"time", "Closed", false},
                                  Column{"root", "Root", false},
                                  Column{"side", "Side", false},
                                  Column{"qty", "Qty"},
                                  Column{"entry", "Entry"},
                                  Column{"exit", "Exit"},
                                  Column{"result", "Result", true, true},
                                  Column{"fees", "Fees"},
                                  Column{"exitKind", "Ended by", false},
                                  Column{"mae", "MAE"},
                                  Column{"mfe", "MFE"}};
constexpr std::array fillColumns{
    Column{"time", "Time", false}, Column{"root", "Root", false}, Column{"side", "Side", false}, Column{"qty", "Qty"},
    Column{"price", "Price"},      Column{"fee", "Fee"},          Column{"tag", "Order", false}};

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }
QString money(double value) { return text(sim::num(value)); }
QString money(const std::optional<double>& value) { return value ? money(*value) : QStringLiteral("–"); }
QString sideText(sim::Side side) { return side == sim::Side::buy ? QStringLiteral("BUY") : QStringLiteral("SELL"); }

QVariantMap row(const Uuid& id, const QStringList& cells, bool gain) {
    return {{"key", text(id.text())}, {"cells", cells}, {"gain", gain}};
}
}  // namespace

void SimListViewModel::bind(SimDesk* desk, MainLoop* main) {
    setKind({});
    desk_ = desk;
    main_ = main;
    desksChanges_ = {};
    if (desk_) desksChanges_ = desk_->changed.connect([this] { mark(); });
}

void SimListViewModel::setKind(const QString& kind) {
    if (kind == kind_ || (!kind.isEmpty() && !desk_)) return;
    kind_ = kind;
    filter_ = {};
    sortedBy_ = 0;
    descending_ = true;
    seen_.reset();
    rows.setRows({});
    emit columnsChanged();
    refresh();
    emit changed();
}

QString SimListViewModel::title() const {
    return kind_.isEmpty() ? QString() : listsTrades() ? tr("Trades") : tr("Fills");
}

QString SimListViewModel::fileName() const {
    return kind_.isEmpty() ? QString() : QStringLiteral("velmora-%1.csv").arg(kind_);
}

QVariantList SimListViewModel::columns() const {
    QVariantList out;
    const auto add = [&out](const Column& one) {
        out.append(
            QVariantMap{{"id", one.id}, {"title", tr(one.title)}, {"number", one.number}, {"result", one.result}});
    };
    if (kind_.isEmpty()) return out;
    if (listsTrades())
        for (const Column& one : tradeColumns) add(one);
    else
        for (const Column& one : fillColumns) add(one);
    return out;
}

void SimListViewModel::setRoot(const QString& root) {
    filter_.root = root.toStdString();
    seen_.reset();
    refresh();
    emit changed();
}

void SimListViewModel::setDay(const QString& day) {
    bool given = false;
    const auto number = day.toLongLong(&given);
    filter_.day = given ? std::optional<std::int64_t>(number) : std::nullopt;
    seen_.reset();
    refresh();
    emit changed();
}

void SimListViewModel::sortBy(int column) {
    if (column < 0 || column >= columns().size()) return;
    const auto at = static_cast<std::size_t>(column);
    const bool number = column == 0 || (listsTrades() ? tradeColumns.at(at) : fillColumns.at(at)).number;
    descending_ = column == sortedBy_ ? !descending_ : number;
    sortedBy_ = column;
    seen_.reset();
    refresh();
    emit changed();
}

// The rows ------------------------------------------------------------------------------------------------------------

void SimListViewModel::mark() {
    if (kind_.isEmpty() || std::exchange(marked_, true)) return;
    main_->post(whileThere_([this] {
        marked_ = false;
        refresh();
    }));
}

std::vector<sim::Trade> SimListViewModel::trades() const {
    const SimEngine& engine = desk_->engine();
    return sim::listTrades(
        engine.trades(), filter_, [&engine](sim::Date date) { return engine.dayOf(date); },
        static_cast<TradeColumn>(sortedBy_), descending_);
}

std::vector<sim::Fill> SimListViewModel::fills() const {
    const SimEngine& engine = desk_->engine();
    return sim::listFills(
        engine.fills(), filter_, [&engine](sim::Date date) { return engine.dayOf(date); },
        static_cast<FillColumn>(sortedBy_), descending_);
}

void SimListViewModel::refresh() {
    if (kind_.isEmpty() || !desk_) return;
    const auto revision = desk_->revision(listsTrades() ? SimDesk::Part::history : SimDesk::Part::fills);
    if (std::exchange(seen_, revision) == revision) return;
    refreshChoices();
    const auto time = [this](sim::Date date) {
        return text(sim::dayText(desk_->engine().dayOf(date)) + " " + sim::hhmmss(date));
    };
    RowsModel::Rows out;
    if (listsTrades()) {
        for (const sim::Trade& one : trades())
            out.push_back(row(one.id,
                              {time(one.closedAt), text(one.sym), sideText(one.side), QString::number(one.qty),
                               money(one.entry), money(one.exit), money(one.pnl - one.fees), money(one.fees),
                               text(sim::exitKind(one)), money(one.mae), money(one.mfe)},
                              one.pnl - one.fees >= 0));
    } else {
        for (const sim::Fill& one : fills())
            out.push_back(row(one.id,
                              {time(one.ts), text(one.sym), sideText(one.side), QString::number(one.qty),
                               money(one.price), money(one.commission), text(one.tag)},
                              true));
    }
    rows.setRows(out);
}

void SimListViewModel::refreshChoices() {
    const SimEngine& engine = desk_->engine();
    std::set<std::string> roots;
    std::set<std::int64_t, std::greater<>> days;
    const auto take = [&](const std::string& root, sim::Date date) {
        roots.insert(root);
        days.insert(engine.dayOf(date));
    };
    if (listsTrades())
        for (const sim::Trade& one : engine.trades()) take(one.sym, one.closedAt);
    else
        for (const sim::Fill& one : engine.fills()) take(one.sym, one.ts);
    QStringList rootTexts;
    QVariantList dayTexts;
    for (const std::string& one : roots) rootTexts.append(text(one));
    for (const std::int64_t one : days)
        dayTexts.append(QVariantMap{{"day", QString::number(one)}, {"name", text(sim::dayText(one))}});
    if (roots_ == rootTexts && days_ == dayTexts) return;
    roots_ = rootTexts;
    days_ = dayTexts;
    emit choicesChanged();
}

QString SimListViewModel::exportTo(const QString& file) const {
    if (kind_.isEmpty() || !desk_) return {};
    const std::string csv = listsTrades() ? sim::tradesCsv(trades()) : sim::fillsCsv(fills());
    return text(sim::writeCsv(std::filesystem::path(file.toStdString()), csv).value_or(""));
}

}  // namespace vmr
