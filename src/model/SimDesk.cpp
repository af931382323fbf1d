#include "model/SimDesk.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

#include "sim/SimTexts.h"

namespace vmr {

namespace {
using sim::OrderType;

std::size_t fieldIndex(OrderType type) { return type == OrderType::limit ? 0 : 1; }

std::string counted(std::size_t count, const char* one) {
    return fmt::format("{} {}{}", count, one, count == 1 ? "" : "s");
}
}  // namespace

SimDesk::SimDesk(SimEngine& engine, Preferences& preferences, const PaneWork& work,
                 std::function<const std::string&()> root)
    : engine_(engine), preferences_(preferences), work_(work), root_(std::move(root)) {
    account_ = engine_.changed.connect([this](SimEngine::Field field) { accountChanged(field); });
    look();
}

void SimDesk::accountChanged(SimEngine::Field field) {
    using Field = SimEngine::Field;
    switch (field) {
        case Field::startBalance:  // which only another account has
            ++replacements_;
            raise(Part::account);
            break;
        case Field::balance:
            raise(Part::account);
            break;
        case Field::positions:
            raise(Part::positions);
            break;
        case Field::orders:  // a position's buttons go by them
            raise(Part::orders);
            raise(Part::positions);
            break;
        case Field::fills:
            raise(Part::fills);
            break;
        case Field::trades:
            raise(Part::history);
            raise(Part::performance);
            break;
        case Field::keeping:
            raise(Part::ticket);
            break;
    }
    changed();
}

void SimDesk::look() {
    const Seen now{root(), marketClosed(), warning(), engine_.dayOf(engine_.now())};
    if (now == seen_) return;
    const Seen before = std::exchange(seen_, now);
    raise(Part::ticket);
    if (now.day != before.day) raise(Part::performance);
    if (now.root != before.root) {  // a price of one root is none of another
        ticket_.limitText.clear();
        ticket_.stopText.clear();
        pressedWithout_ = {};
        question_.reset();
        if (open_) syncTicket();  // points are other ticks here
    }
    changed();
}

std::string SimDesk::title() const { return "Trade Simulator — " + root(); }

std::string SimDesk::emptyText() const {
    return root().empty() ? "Simulator supports futures only — switch to NQ/ES/RTY/YM/GC/CL." : "";
}

std::string SimDesk::warning() const {
    if (root().empty() || marketClosed()) return "";
    const auto& watches = engine_.watches();
    const auto age = engine_.prices().of(root()).age(sim::secondsSince1970(engine_.now()));
    const std::string price =
        age ? fmt::format("price is {:.0f} s old", std::floor(*age)) : fmt::format("no price of {} yet", root());
    if (!watches.watched(root())) return fmt::format("{} is not watched · {}", root(), price);
    if (!watches.connected(root())) return "Feed is down · " + price;
    if (age && *age <= SimEngine::freshFor) return "";
    return (age ? "P" : "N") + price.substr(1);
}

std::optional<std::string> SimDesk::readOnly() const {
    return engine_.heldElsewhere() ? engine_.problem() : std::nullopt;
}

void SimDesk::setTicket(sim::SimTicket changedTicket) {
    changedTicket.keepWithinRange();
    if (changedTicket == ticket_) return;
    if (changedTicket.limitText != ticket_.limitText) pressedWithout_[0] = false;
    if (changedTicket.stopText != ticket_.stopText) pressedWithout_[1] = false;
    ticket_ = std::move(changedTicket);
    question_.reset();
    syncTicket();
    raise(Part::ticket);
    raise(Part::positions);
    changed();
}

void SimDesk::syncTicket() {
    if (!root().empty()) ticket_.syncTicketDefaults(engine_, root());
}

void SimDesk::setOpen(bool open) {
    if (std::exchange(open_, open) == open) return;
    open ? syncTicket() : resetTicket();
}

void SimDesk::resetTicket() {
    setPerfToday(false);
    const bool same = ticket_ == sim::SimTicket() && !question_ && !notice_ && pressedWithout_ == std::array<bool, 2>();
    ticket_ = {};
    pressedWithout_ = {};
    question_.reset();
    notice_.reset();
    if (same) return;
    raise(Part::ticket);
    raise(Part::positions);
    changed();
}

SimDesk::PriceField SimDesk::field(OrderType type) const {
    const std::string* text = ticket_.fieldOf(type);
    if (!text) return {};
    const auto price = sim::readPrice(*text);
    const bool blank = text->find_first_not_of(" \t") == std::string::npos;
    if (price) return {sim::priceText(*price, 2), false};
    return {"", !blank || pressedWithout_[fieldIndex(type)]};
}

void SimDesk::stepPrice(OrderType type, int steps) {
    sim::SimTicket stepped = ticket_;
    stepped.stepPrice(engine_, root(), type, steps);
    setTicket(std::move(stepped));
}

std::optional<std::string> SimDesk::say(std::optional<std::string> problem) {
    if (problem || notice_) raise(Part::ticket);
    notice_ = problem;
    const int number = ++notices_;
    if (problem)
        work_.after(noticeFor, [this, number] {
            if (number == notices_) say(std::nullopt);
        });
    changed();
    return problem;
}

void SimDesk::ask(const sim::OrderRequest& request, const std::string& text) {
    question_ = Question{request, text, false};
    raise(Part::ticket);
    const int number = ++questions_;
    work_.after(readWithin, [this, number] {
        if (number == questions_ && question_) question_->readable = true;
    });
    work_.after(secondPressWithin, [this, number] {
        if (number != questions_ || !question_) return;
        question_.reset();
        raise(Part::ticket);
        changed();
    });
    changed();
}

std::optional<std::string> SimDesk::press(sim::Side side, OrderType type) {
    SimEngine::Price limit, stop;
    if (const std::string* text = ticket_.fieldOf(type)) {
        const auto price = sim::readPrice(*text);
        if (!price) {
            pressedWithout_[fieldIndex(type)] = true;
            raise(Part::ticket);
            return say(fmt::format("a {} order needs a price above 0", rawText(type)));
        }
        (type == OrderType::limit ? limit : stop) = price;
    }
    const sim::OrderRequest request = ticket_.request(engine_, root(), side, type, limit, stop);
    if (question_ && !question_->readable && question_->request == request) return question_->text;
    const auto asked = std::exchange(question_, std::nullopt);
    if (asked) raise(Part::ticket);
    const bool again = asked && asked->request == request;
    if (!again && confirmsUnusual() && !request.problem(engine_)) {
        if (const auto why = unusual(request, engine_)) {
            ask(request, *why + ": press again");
            return question_->text;
        }
    }
    return say(ticket_.place(engine_, root(), side, type, limit, stop));
}

std::optional<std::string> SimDesk::flatten(const std::string& sym) { return say(sim::flattenOrTell(engine_, sym)); }

std::optional<std::string> SimDesk::protect(const std::string& sym, std::string_view kind) {
    return say(ticket_.protect(engine_, sym, kind));
}

std::optional<std::string> SimDesk::cancel(const Uuid& id) {
    return say(engine_.cancel(id) ? std::nullopt : std::optional<std::string>("the order is gone already"));
}

void SimDesk::cancelAll() {
    engine_.cancelAll();
    say(std::nullopt);
}

void SimDesk::setPerfToday(bool today) {
    if (std::exchange(perfToday_, today) == today) return;
    raise(Part::performance);
    changed();
}

std::string simResetQuestion(const SimEngine& engine, double balance) {
    std::size_t open = 0;
    for (const auto& [root, position] : engine.positions()) open += position.qty != 0;
    std::string lost;
    for (const auto& [count, one] : {std::pair(open, "open position"),
                                     {engine.orders().size(), "working order"},
                                     {engine.trades().size(), "trade"},
                                     {engine.fills().size(), "fill"}})
        if (count > 0) lost += (lost.empty() ? "" : ", ") + counted(count, one);
    return fmt::format("Start again with {}? {}", sim::num(balance),
                       lost.empty() ? "Nothing is lost." : "Lost for good: " + lost + ".");
}

}  // namespace vmr
