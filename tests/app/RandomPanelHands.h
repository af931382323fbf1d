// Hands that work the simulator's panel at random, and the books that are kept of it.
#pragma once

#include <random>

#include "tests/app/SimPanelScript.h"
#include "tests/sim/PlainLedger.h"

namespace vmr::test {

/// A person who keeps in mind what was entered into the ticket, and keeps the books of the fills alone. The market
/// stands still but for what it does here.
class RandomPanelHands {
 public:
    static constexpr double tick = 0.25, worth = 20;  // of NQ: a price step, and what a contract gains in a point

    explicit RandomPanelHands(SimPanelScript& script) : script_(script) { moveMarket(middle); }

    /// The market stands at one price, known to the hands.
    void moveMarket(double to) {
        last_ = std::abs(to - middle) > 60 ? middle : to;
        sim().onQuote("NQ", last_, last_ + tick);
        sim().onTrade("NQ", last_);
    }
    /// Each action is followed by a look at the account and at the panel.
    void work(int times) {
        for (int i = 0; i < times && !testing::Test::HasFailure(); ++i) {
            SCOPED_TRACE(testing::Message() << "action " << ++actions_);
            const bool closed = script_.view().marketClosed();
            for (int moves = closed ? 0 : pick(8) - 3; moves > 0; --moves) moveMarket(last_ + tick * (pick(33) - 16));
            script_.settle();
            const auto before = script_.hands.events();
            for (int tries = 0; tries < 100 && script_.hands.events() == before; ++tries) closed ? actOnCards() : act();
            EXPECT_GT(script_.hands.events(), before) << "there is nothing to do";
            compare();
        }
    }
    /// How often each thing was done.
    Counts& counts() { return counts_; }
    void press(bool buys, int row);
    void compare();

 private:
    static constexpr double middle = 24000;
    static constexpr const char* noPrice = "12.5.1";

    SimEngine& sim() { return script_.sim(); }
    SimViewModel& view() { return script_.view(); }
    int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    bool oneIn(int n) { return pick(n) == 0; }
    sim::Position position() {
        const auto found = sim().positions().find("NQ");
        return found == sim().positions().end() ? sim::Position() : found->second;
    }
    const sim::Order* leg(bool target) {
        const auto found = std::ranges::find(sim().orders(), target ? sim::tpTag : sim::slTag, &sim::Order::tag);
        return found == sim().orders().end() ? nullptr : &*found;
    }
    static double priceOf(const sim::Order& order) { return order.limitPrice ? *order.limitPrice : *order.stopPrice; }
    std::int64_t inTicks(bool target) const { return ticket_.distances[target] * (ticket_.ticks ? 1 : 4); }
    /// Where the ticket would have a leg of a long or a short from that price.
    double legPrice(double from, bool target, bool isLong) const {
        return from + tick * static_cast<double>(inTicks(target)) * (isLong == target ? 1 : -1);
    }

    void act();
    void actOnCards();
    void use(const std::string& control);
    void type(const std::string& field, const std::string& text);
    void setQty();
    void setDistance(bool target);
    void setPrice(int row);
    void expectFill(bool buys, std::int64_t qty, double price);
    void expectOrder(bool buys, int row, double price);
    void flatten();
    void protect(bool target);
    void cancelOne();
    void compareBooks();
    void comparePanel();

    struct Ticket {
        int qty = 1, distances[2]{40, 80};
        bool bracket = true, ticks = true;
        std::string prices[2];
    };

    SimPanelScript& script_;
    std::mt19937 random_{5};
    Ticket ticket_;
    Counts counts_;
    PlainLedger ledger_{counts_};
    std::optional<Uuid> newest_;
    double last_ = middle;
    int actions_ = 0;
};

inline void RandomPanelHands::act() {
    switch (const int what = pick(16)) {
        case 0:
            return setQty();
        case 1:
            ticket_.bracket = !ticket_.bracket;
            return script_.click(script_.item("simBracket"), 0.1);
        case 2:
        case 3:
            return setDistance(what == 3);
        case 4:
            if (!ticket_.bracket) return;
            ticket_.ticks = !oneIn(3);
            return script_.click(script_.item(ticket_.ticks ? "simTicks" : "simPoints"), 0.1);
        case 5:
        case 6:
            return press(oneIn(2), 0);
        case 7:
        case 8:
        case 9:
        case 10: {
            const int row = 1 + pick(2);
            if (!oneIn(3)) setPrice(row);
            return press(oneIn(2), row);
        }
        default:
            return actOnCards();
    }
}

inline void RandomPanelHands::actOnCards() {
    const int what = pick(12);
    if (what < 2) return flatten();
    if (what < 6) return protect(what < 4);
    if (what > 6) return cancelOne();
    if (sim().orders().empty()) return;
    use("simCancelAll");
    EXPECT_TRUE(sim().orders().empty());
}

// By the pointer, or by keys.
inline void RandomPanelHands::use(const std::string& control) {
    QQuickItem* const item = script_.item(control);
    ASSERT_TRUE(item) << control;
    if (!oneIn(6)) return script_.click(item);
    ++counts_["by keys"];
    for (int i = 0; i < 80 && !item->hasActiveFocus(); ++i) script_.hands.key("Tab");
    ASSERT_TRUE(item->hasActiveFocus()) << control << " is out of the keyboard's reach";
    script_.key(oneIn(2) ? "space" : "Return");
}

inline void RandomPanelHands::type(const std::string& field, const std::string& text) {
    script_.click(script_.item(field));
    script_.hands.key("ctrl+a");
    script_.hands.type(text);
    script_.settle();
}

// What is typed counts when a button is pressed, with or without a key that ends it.
inline void RandomPanelHands::setQty() {
    if (oneIn(2)) {
        ticket_.qty = 1 + pick(5);
        type("simQty", std::to_string(ticket_.qty));
        return press(oneIn(2), 0);
    }
    const bool more = oneIn(2);
    ticket_.qty = std::max(1, ticket_.qty + (more ? 1 : -1));
    script_.click(script_.item("simQty"), more ? 0.9 : 0.1);
}

inline void RandomPanelHands::setDistance(bool target) {
    if (!ticket_.bracket) return;
    ticket_.distances[target] = oneIn(5) ? 0 : pick(60);
    type(target ? "simTpTicks" : "simSlTicks", std::to_string(ticket_.distances[target]));
    script_.key(oneIn(2) ? "Return" : "Tab");
}

inline void RandomPanelHands::setPrice(int row) {
    std::string& text = ticket_.prices[row - 1];
    const std::string whole = std::to_string(static_cast<int>(middle) + pick(121) - 60);
    const std::string far = std::to_string(static_cast<int>(middle * (oneIn(2) ? 1.009 : 0.991)));
    const std::string texts[]{noPrice, whole + ",75", far, far, whole};
    text = texts[std::min(pick(9), 4)];
    type(row == 1 ? "simLimit" : "simStop", text);
    if (text != whole || !oneIn(4)) return;
    script_.key("Up");
    text += ".25";
}

inline void RandomPanelHands::press(bool buys, int row) {
    const auto book = *sim().book("NQ");
    const double touch = buys ? book.ask : book.bid;
    const std::int64_t before = position().qty;
    std::string text = row > 0 ? ticket_.prices[row - 1] : "";
    std::ranges::replace(text, ',', '.');
    const bool priced = row == 0 || !(text.empty() || text == noPrice);
    const double price = row > 0 && priced ? std::stod(text) : touch;
    const bool reverses = row == 0 && (buys ? before < 0 : before > 0);
    const std::int64_t qty = ticket_.qty + (reverses ? std::abs(before) : 0);
    const std::int64_t after = std::abs(before + (buys ? qty : -qty));
    const double beyond = buys ? price - touch : touch - price;
    const bool asks =
        row == 0 ? qty > 20 || (after > 20 && after > std::abs(before)) : row == 1 && beyond > touch / 200;
    const std::size_t fills = sim().fills().size(), orders = sim().orders().size();

    const std::string button = (buys ? "simBuy" : "simSell") + std::to_string(row);
    use(button);
    EXPECT_EQ(view().question().isEmpty(), !asks) << button;
    EXPECT_EQ(row == 1 ? view().limitWrong() : row == 2 && view().stopWrong(), !priced) << button;
    if (asks || !priced) {
        ++counts_[asks ? "questions" : "without a price"];
        EXPECT_EQ(sim().fills().size(), fills);
        EXPECT_EQ(sim().orders().size(), orders);
        if (!priced) return;
        QTest::qWait(500);  // as long as a person reads
        script_.click(script_.item(button));
    }
    ++counts_[row == 0 ? "market orders" : row == 1 ? "limit orders" : "stop orders"];
    const bool filled = row == 0 || (row == 1 && beyond >= 0);
    ASSERT_EQ(sim().fills().size(), fills + (filled ? 1 : 0)) << button;
    if (filled) return expectFill(buys, qty, price);
    ASSERT_EQ(sim().orders().size(), orders + 1) << button;
    expectOrder(buys, row, price);
}

inline void RandomPanelHands::expectFill(bool buys, std::int64_t qty, double price) {
    const sim::Fill& fill = sim().fills().front();
    EXPECT_EQ(fill.side, buys ? sim::Side::buy : sim::Side::sell);
    EXPECT_EQ(fill.qty, qty);
    EXPECT_EQ(fill.price, price);
    const std::int64_t after = position().qty;
    if (!ticket_.bracket || after == 0) return;
    for (const bool target : {false, true}) {
        const sim::Order* order = leg(target);
        ASSERT_EQ(order != nullptr, inTicks(target) > 0) << target;
        if (!order) continue;
        EXPECT_NEAR(priceOf(*order), legPrice(price, target, after > 0), 1e-9) << target;
    }
}

inline void RandomPanelHands::expectOrder(bool buys, int row, double price) {
    const sim::Order& order = sim().orders().back();
    EXPECT_EQ(order.side, buys ? sim::Side::buy : sim::Side::sell);
    EXPECT_EQ(order.type, row == 1 ? sim::OrderType::limit : sim::OrderType::stop);
    EXPECT_EQ(order.qty, ticket_.qty);
    EXPECT_EQ(priceOf(order), price);
    ASSERT_EQ(order.bracket.has_value(), ticket_.bracket);
    if (!order.bracket) return;
    EXPECT_EQ(order.bracket->slTicks.value_or(0), inTicks(false));
    EXPECT_EQ(order.bracket->tpTicks.value_or(0), inTicks(true));
}

inline void RandomPanelHands::flatten() {
    const std::int64_t before = position().qty;
    if (before == 0) return;
    const bool closed = view().marketClosed();
    use("simFlat");
    EXPECT_EQ(position().qty, closed ? before : 0);
    EXPECT_EQ(view().notice(), closed ? "Market closed — position kept" : "");
    ++counts_[closed ? "kept" : "flattened"];
}

// From the average, on a price that the root has.
inline void RandomPanelHands::protect(bool target) {
    const std::string button = target ? "simAddTp" : "simAddSl";
    if (!script_.item(button)) return;  // whether it has to be there is compared each time
    use(button);
    const sim::Order* order = leg(target);
    ASSERT_TRUE(order);
    EXPECT_NEAR(priceOf(*order), legPrice(position().avg, target, position().qty > 0), tick / 2 + 1e-9);
    EXPECT_EQ(std::fmod(priceOf(*order), tick), 0);
    ++counts_["protected"];
}

inline void RandomPanelHands::cancelOne() {
    const auto before = sim().orders();
    if (before.empty()) return;
    const auto row = static_cast<std::size_t>(pick(static_cast<int>(before.size())));
    script_.click(script_.item("simCancel", "simOrder " + std::to_string(row)));
    ASSERT_EQ(sim().orders().size(), before.size() - 1);
    EXPECT_EQ(std::ranges::count(sim().orders(), before[row].id, &sim::Order::id), 0);
    ++counts_["cancelled"];
}

inline void RandomPanelHands::compare() {
    compareBooks();
    comparePanel();
}

// The account with what is known of its fills.
inline void RandomPanelHands::compareBooks() {
    const auto& fills = sim().fills();
    const auto known = [this](const sim::Fill& fill) { return fill.id == newest_; };
    for (auto at = std::ranges::find_if(fills, known); at != fills.begin(); ++counts_["fills"])
        ledger_.apply(*--at, worth);
    if (!fills.empty()) newest_ = fills.front().id;
    const auto& plain = ledger_.roots["NQ"];
    const auto size = static_cast<std::int64_t>(plain.contracts.size());
    EXPECT_EQ(position().qty, plain.side == sim::Side::buy ? size : -size);
    EXPECT_NEAR(sim().balance(), ledger_.cash, 1e-6);
    EXPECT_EQ(sim().trades().size(), ledger_.finished.size());
    for (const bool target : {false, true}) {
        const sim::Order* order = leg(target);
        if (!order) continue;
        EXPECT_EQ(order->qty, size);
        EXPECT_EQ(order->side, plain.side == sim::Side::buy ? sim::Side::sell : sim::Side::buy);
    }
}

// The panel with the account, and with what was entered.
inline void RandomPanelHands::comparePanel() {
    const std::int64_t qty = position().qty;
    EXPECT_NEAR(script_.item("simBalance")->property("target").toDouble(), ledger_.cash, 1e-6);
    EXPECT_EQ(script_.item("simPosition NQ") != nullptr, qty != 0);
    if (qty != 0) {
        const QString size = (qty > 0 ? "LONG " : "SHORT ") + QString::number(std::abs(qty));
        EXPECT_EQ(view().positions.rows().at(0)["size"].toString(), size);
    }
    for (const bool target : {false, true}) {
        const QQuickItem* button = script_.item(target ? "simAddTp" : "simAddSl");
        ASSERT_EQ(button != nullptr, qty != 0 && !leg(target)) << target;
        if (!button) continue;
        const QString distance = QString::number(ticket_.distances[target]) + (ticket_.ticks ? "t)" : "pt)");
        EXPECT_EQ(button->property("text").toString(), (target ? "+ TP (" : "+ SL (") + distance);
    }
    const auto& orders = sim().orders();
    EXPECT_EQ(view().ordersHeading(), QString("WORKING (%1)").arg(orders.size()));
    ASSERT_EQ(view().orders.rows().size(), orders.size());
    for (std::size_t i = 0; i < orders.size(); ++i)
        EXPECT_EQ(view().orders.rows()[i]["key"].toString().toStdString(), orders[i].id.text());
    EXPECT_EQ(script_.item("simOrder " + std::to_string(orders.size())), nullptr);
    double net = 0;
    for (const sim::Trade& trade : ledger_.finished) net += trade.pnl - trade.fees;
    EXPECT_EQ(view().metrics.rows().at(0)["value"].toString(), QString::number(ledger_.finished.size()));
    EXPECT_EQ(view().metrics.rows().at(3)["value"].toString(), SimViewModel::num(net));

    ASSERT_EQ(script_.item("simQty") == nullptr, view().marketClosed()) << "the ticket";
    if (view().marketClosed()) return;
    EXPECT_EQ(script_.item("simQty")->property("value"), ticket_.qty);
    EXPECT_EQ(script_.item("simSlTicks") != nullptr, ticket_.bracket);
    EXPECT_EQ(view().slTicks(), ticket_.distances[0]);
    EXPECT_EQ(view().tpTicks(), ticket_.distances[1]);
    EXPECT_EQ(view().useTicks(), ticket_.ticks);
    for (const int row : {0, 1})
        EXPECT_EQ(script_.item(row == 0 ? "simLimit" : "simStop")->property("text").toString().toStdString(),
                  ticket_.prices[row]);
}

}  // namespace vmr::test
