#include "ui/panels/sim/SimViewModel.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "sim/SimTexts.h"
#include "ui/panels/sim/SimRows.h"

namespace vmr {

namespace {
using sim::OrderType;
using Part = SimDesk::Part;

constexpr std::array rowTypes{OrderType::market, OrderType::limit, OrderType::stop};
constexpr double leastRealSeconds = 0.9;  // between two looks, however fast the market's clock runs

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

OrderType typeOf(int row) { return rowTypes.at(static_cast<std::size_t>(row)); }
}  // namespace

void SimViewModel::bind(SimDesk* desk, const Clock* clock, MainLoop* main) {
    changed_ = {};
    second_.reset();
    desk_ = desk;
    main_ = main;
    seen_ = {};
    if (desk_) {
        changed_ = desk_->changed.connect([this] { mark(); });
        second_.emplace(*clock, *main);
    }
    if (shown_) {
        shown_ = false;
        setShown(desk_ != nullptr);
    }
}

void SimViewModel::setShown(bool shown) {
    if (shown_ == shown || (shown && !desk_)) return;
    shown_ = shown;
    if (shown) {
        second_->every(
            1, [this] { look(); }, leastRealSeconds);
        look();
        emit startedOver();
    } else if (second_) {
        second_->cancel();
    }
    emit shownChanged();
}

// What is shown ------------------------------------------------------------------------------------------------------

void SimViewModel::mark() {
    if (!shown_ || std::exchange(marked_, true)) return;
    main_->post(whileThere_([this] {
        marked_ = false;
        if (desk_ && shown_) refresh();
    }));
}

void SimViewModel::look() {
    desk_->look();
    refresh();
    showPositions();  // whose results prices move
}

bool SimViewModel::moved(Part part) {
    const std::uint64_t revision = desk_->revision(part);
    return std::exchange(seen_.at(static_cast<std::size_t>(part)), revision) != revision;
}

void SimViewModel::refresh() {
    const SimEngine& engine = desk_->engine();
    const bool account = moved(Part::account), held = moved(Part::positions), resting = moved(Part::orders);
    const bool past = moved(Part::history), filled = moved(Part::fills);
    if (held) showPositions();
    if (resting) orders.setRows(simRows(simOrderRows(engine)));
    if (past) history.setRows(simRows(simHistoryRows(engine)));
    if (filled) fills.setRows(simRows(simFillRows(engine)));
    if (moved(Part::performance)) showPerformance();
    if (account || held || resting || past) emit cardsChanged();
    if (moved(Part::ticket)) emit ticketChanged();
    refreshAccount();
}

void SimViewModel::refreshAccount() {
    const SimAccountFacts now = simAccountFacts(desk_->engine());
    const SimAccountFacts before = std::exchange(account_, now);
    if (before != now) emit accountChanged();
    const bool replaced = std::exchange(replacements_, desk_->replacements()) != desk_->replacements();
    if (replaced || before.unpriced != now.unpriced) emit startedOver();
}

void SimViewModel::showPositions() {
    positions.setRows(simRows(simPositionRows(desk_->engine(), ticket()), desk_->engine()));
}

void SimViewModel::showPerformance() {
    performance_ = simPerformance(desk_->engine(), desk_->perfToday());
    metrics.setRows(simRows(performance_.metrics));
    days.setRows(simRows(performance_.days));
    emit performanceChanged();
}

QString SimViewModel::title() const { return desk_ ? text(desk_->title()) : QString(); }
QString SimViewModel::empty() const { return desk_ ? text(desk_->emptyText()) : QString(); }
QString SimViewModel::warning() const { return desk_ ? text(desk_->warning()) : QString(); }
QString SimViewModel::barred() const { return desk_ ? text(desk_->readOnly().value_or("")) : QString(); }
QString SimViewModel::notice() const {
    const QString why = desk_ ? text(desk_->notice().value_or("")) : QString();
    return why.left(1).toUpper() + why.mid(1);
}

QString SimViewModel::positionsHeading() const {
    return desk_ ? text(simPositionsHeading(desk_->engine())) : QString();
}
QString SimViewModel::ordersHeading() const { return desk_ ? text(simOrdersHeading(desk_->engine())) : QString(); }
QString SimViewModel::historyHeading() const { return desk_ ? text(simHistoryHeading(desk_->engine())) : QString(); }

// The ticket ----------------------------------------------------------------------------------------------------------

const sim::SimTicket& SimViewModel::ticket() const {
    static const sim::SimTicket none;
    return desk_ ? desk_->ticket() : none;
}

// The notice goes out even where the ticket is the same: a control that was pressed for nothing goes back.
template <class Change>
void SimViewModel::change(Change change) {
    if (!desk_) return;
    sim::SimTicket changed = ticket();
    change(changed);
    if (changed != ticket()) desk_->setTicket(std::move(changed));
    emit ticketChanged();
}

void SimViewModel::setQty(int qty) {
    change([qty](sim::SimTicket& ticket) { ticket.qty = qty; });
}
void SimViewModel::setBracketOn(bool on) {
    change([on](sim::SimTicket& ticket) { ticket.bracketOn = on; });
}
void SimViewModel::setSlTicks(int distance) {
    change([distance](sim::SimTicket& ticket) { ticket.slTicks = distance; });
}
void SimViewModel::setTpTicks(int distance) {
    change([distance](sim::SimTicket& ticket) { ticket.tpTicks = distance; });
}
void SimViewModel::setUseTicks(bool use) {
    change([use](sim::SimTicket& ticket) { ticket.useTicks = use; });
}
void SimViewModel::setLimitText(const QString& typed) {
    change([&typed](sim::SimTicket& ticket) { ticket.limitText = typed.toStdString(); });
}
void SimViewModel::setStopText(const QString& typed) {
    change([&typed](sim::SimTicket& ticket) { ticket.stopText = typed.toStdString(); });
}

QString SimViewModel::read(OrderType type) const { return desk_ ? text(desk_->field(type).read) : QString(); }
bool SimViewModel::wrong(OrderType type) const { return desk_ && desk_->field(type).wrong; }

QString SimViewModel::question() const {
    return desk_ && desk_->question() ? text(desk_->question()->text) : QString();
}
int SimViewModel::questionRow() const {
    if (!desk_ || !desk_->question()) return -1;
    const auto at = std::find(rowTypes.begin(), rowTypes.end(), desk_->question()->request.type);
    return static_cast<int>(at - rowTypes.begin());
}
bool SimViewModel::questionBuys() const {
    return desk_ && desk_->question() && desk_->question()->request.side == sim::Side::buy;
}

// Gestures ------------------------------------------------------------------------------------------------------------

void SimViewModel::press(bool buys, int row) {
    if (desk_) desk_->press(buys ? sim::Side::buy : sim::Side::sell, typeOf(row));
}

void SimViewModel::stepPrice(int row, int ticks) {
    if (!desk_) return;
    desk_->stepPrice(typeOf(row), ticks);
    emit ticketChanged();
}

void SimViewModel::flatten(const QString& root) {
    if (desk_) desk_->flatten(root.toStdString());
}

void SimViewModel::protect(const QString& root, const QString& kind) {
    if (desk_) desk_->protect(root.toStdString(), kind.toStdString());
}

void SimViewModel::cancel(const QString& id) {
    const auto parsed = Uuid::parse(id.toStdString());
    if (desk_ && parsed) desk_->cancel(*parsed);
}

void SimViewModel::cancelAll() {
    if (desk_) desk_->cancelAll();
}

void SimViewModel::setPerfToday(bool today) {
    if (desk_) desk_->setPerfToday(today);
    emit performanceChanged();
}

QString SimViewModel::resetQuestion() const {
    return desk_ && reset_.balance ? text(simResetQuestion(desk_->engine(), reset_.balance())) : QString();
}

void SimViewModel::reset() {
    if (reset_.run) reset_.run();
}

QString SimViewModel::num(double value) { return text(sim::num(value)); }

}  // namespace vmr
