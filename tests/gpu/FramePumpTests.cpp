// The pacing of frames, one script for each way in which it can go wrong. A script's word is an event, the state after
// it and, in capitals, what the pump orders: SCHEDULE a frame, or WATCH the screen.
#include "gpu/FramePump.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>
#include <string>

namespace vmr {
namespace {

using Order = FramePump::Order;

Order record(FramePump& pump, bool moves) {
    pump.beginRecord();
    pump.recorded(moves);
    return Order::nothing;
}

Order draw(FramePump& pump, bool isNew) {
    EXPECT_EQ(pump.handOver(), isNew);
    return Order::nothing;
}

const std::map<std::string, std::function<Order(FramePump&)>> events{
    {"ask", [](auto& pump) { return pump.ask(); }},
    {"live", [](auto& pump) { return pump.setLive(true); }},  // frames at the screen's pace
    {"notLive", [](auto& pump) { return pump.setLive(false); }},
    {"record", [](auto& pump) { return record(pump, false); }},
    {"ease", [](auto& pump) { return record(pump, true); }},  // recorded, and something still moves
    {"askWithin", [](auto& pump) { return pump.beginRecord(), pump.ask(); }},
    {"noSize", [](auto& pump) { return pump.beginRecord(), pump.notRecorded(), Order::nothing; }},
    {"handOver", [](auto& pump) { return draw(pump, true); }},
    {"repaint", [](auto& pump) { return draw(pump, false); }},  // the toolkit draws for another item's sake
    {"show", [](auto& pump) { return pump.shown(pump.frame()); }},
    {"showOld", [](auto& pump) { return pump.shown(pump.frame() - 1); }},  // the swap of the frame before
    {"late", [](auto& pump) { return pump.late(); }},
    {"lost", [](auto& pump) { return pump.lost(); }},
    {"join", [](auto& pump) { return pump.join(); }},
    {"hidden", [](auto& pump) { return pump.hidden(); }},
    {"visible", [](auto& pump) { return pump.visible(); }},
    {"resized", [](auto& pump) { return pump.resized(); }},
    {"picture", [](auto& pump) { return pump.pictureTaken(); }}};

/// The script as it really goes.
std::string play(const std::string& script) {
    static constexpr const char* states[] = {"idle", "asked", "recorded", "onItsWay"};
    static constexpr const char* orders[] = {"", "-SCHEDULE", "-WATCH"};
    FramePump pump;
    std::string out;
    std::istringstream words(script);
    for (std::string word; words >> word;) {
        const std::string event = word.substr(0, word.find('='));
        const Order order = events.at(event)(pump);
        out += event + '=' + states[static_cast<int>(pump.state())] + orders[static_cast<int>(order)] + " ";
    }
    return out;
}

const std::string ask = "ask=asked-SCHEDULE ", handOver = "record=recorded handOver=onItsWay ",
                  underWay = ask + handOver, easing = ask + "ease=recorded handOver=onItsWay ",
                  live = "live=asked-SCHEDULE " + handOver, show = "show=idle ", next = "show=asked-SCHEDULE ",
                  repaint = "repaint=idle ";

TEST(FramePump, GoesOnWhateverHappensToItsFrames) {
    const std::pair<const char*, std::string> cases[] = {
        {"asks of one turn are one frame", ask + "ask=asked-SCHEDULE " + handOver + show + repaint},
        {"an ask within the recording is covered by it", ask + "askWithin=asked "},
        {"a change after the recording replaces it", ask + "record=recorded " + underWay + show + repaint},
        {"what comes meanwhile waits for the screen, and is watched once",
         underWay + "ask=onItsWay-WATCH ask=onItsWay " + next + handOver + show},
        {"easing goes on when its frame is shown", easing + next + handOver + show},
        {"a drag draws at the screen's pace until it ends",
         live + "live=onItsWay " + next + handOver + "notLive=onItsWay " + show},
        {"a plot without a size records nothing and stays quiet until it has one",
         ask + "noSize=idle " + repaint + "resized=asked-SCHEDULE "},

        // the nine that are easily got wrong
        {"hidden window: its frame is given up, changes are kept, and it is drawn when it comes back",
         underWay + "hidden=idle " + ask + "hidden=asked visible=asked-SCHEDULE " + handOver + show},
        {"lost device: a frame is made anew at once, and the swap of the lost one does not end it",
         underWay + "lost=asked-SCHEDULE show=asked " + handOver + "showOld=onItsWay " + show},
        {"resize during a drag: one frame more, not two",
         live + "resized=onItsWay-WATCH ask=onItsWay " + next + "notLive=asked " + handOver + show},
        {"minimised and restored while it eases: the easing goes on",
         easing + "hidden=asked-SCHEDULE late=asked visible=asked-SCHEDULE " + handOver + show},
        {"symbol change while hidden: many changes are one frame when it is shown",
         "hidden=idle " + ask + ask + "late=asked visible=asked-SCHEDULE " + handOver + show + repaint},
        {"two items: the swap that shows another one's frame ends nothing here; it follows when that one moves",
         underWay + "showOld=onItsWay join=asked-SCHEDULE " + handOver + "showOld=onItsWay " + show},
        {"slow screen: late, the next frame goes ahead, and the swap of the late one does not end it",
         underWay + "late=onItsWay ask=onItsWay-WATCH late=asked-SCHEDULE show=asked " + handOver +
             "ask=onItsWay-WATCH showOld=onItsWay " + next},
        {"atlas full: a recorded frame and one on its way are made anew within the window's frame",
         ask + "record=recorded join=asked-SCHEDULE " + handOver + "join=asked-SCHEDULE " + handOver + show},
        {"picture taken: its frame comes to no screen, and what waited for it goes on",
         underWay + "ask=onItsWay-WATCH picture=asked-SCHEDULE picture=asked " + handOver +
             "picture=idle picture=idle "}};
    for (const auto& [name, script] : cases) EXPECT_EQ(play(script), script) << name;
}

}  // namespace
}  // namespace vmr
