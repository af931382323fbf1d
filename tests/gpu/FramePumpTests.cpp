// The pacing of frames, one script of events for each way in which it can go wrong.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gpu/FramePump.h"

namespace vmr {

using State = FramePump::State;
using Order = FramePump::Order;

// How a failure prints them.
static void PrintTo(State state, std::ostream* out) {
    static constexpr const char* names[] = {"idle", "asked", "recorded", "onItsWay"};
    *out << names[static_cast<int>(state)];
}
static void PrintTo(Order order, std::ostream* out) {
    static constexpr const char* names[] = {"nothing", "schedule", "watch"};
    *out << names[static_cast<int>(order)];
}

namespace {

enum class Event : unsigned char {
    ask,
    live,     ///< frames at the screen's pace begin
    notLive,  ///< and end
    record,   ///< and nothing moves any more
    ease,     ///< recorded, and something still moves
    askWithin,
    noSize,
    handOver,
    repaint,  ///< the toolkit draws for another item's sake
    show,
    showOld,  ///< the swap of the frame before is heard of now
    late,
    lost,
    join,
    hidden,
    visible,
    resized,
    picture
};

struct Step {
    Event event;
    State state;
    Order order = Order::nothing;
};

struct Case {
    const char* name;
    std::vector<Step> steps;
};

Order play(FramePump& pump, Event event) {
    switch (event) {
        case Event::ask:
            return pump.ask();
        case Event::live:
        case Event::notLive:
            return pump.setLive(event == Event::live);
        case Event::askWithin:
            pump.beginRecord();
            return pump.ask();
        case Event::record:
        case Event::ease:
            pump.beginRecord();
            pump.recorded(event == Event::ease);
            return Order::nothing;
        case Event::noSize:
            pump.beginRecord();
            pump.notRecorded();
            return Order::nothing;
        case Event::handOver:
        case Event::repaint:
            EXPECT_EQ(pump.handOver(), event == Event::handOver);
            return Order::nothing;
        case Event::show:
            return pump.shown(pump.frame());
        case Event::showOld:
            return pump.shown(pump.frame() - 1);
        case Event::late:
            return pump.late();
        case Event::lost:
            return pump.lost();
        case Event::join:
            return pump.join();
        case Event::hidden:
            return pump.hidden();
        case Event::visible:
            return pump.visible();
        case Event::resized:
            return pump.resized();
        case Event::picture:
            return pump.pictureTaken();
    }
    return Order::nothing;
}

// A frame asked for, recorded and handed over.
std::vector<Step> underWay(std::vector<Step> then, Event recorded = Event::record) {
    std::vector<Step> out{
        {Event::ask, State::asked, Order::schedule}, {recorded, State::recorded}, {Event::handOver, State::onItsWay}};
    out.insert(out.end(), then.begin(), then.end());
    return out;
}

const std::vector<Step> nextFrame{
    {Event::record, State::recorded}, {Event::handOver, State::onItsWay}, {Event::show, State::idle}};

std::vector<Step> with(std::vector<Step> steps, const std::vector<Step>& more) {
    steps.insert(steps.end(), more.begin(), more.end());
    return steps;
}

std::vector<Case> cases() {
    const Step asked{Event::ask, State::asked, Order::schedule};
    const Step waits{Event::ask, State::onItsWay, Order::watch};
    return {
        {"one change is one frame", underWay({{Event::show, State::idle}, {Event::repaint, State::idle}})},
        {"asks of one turn are one frame", with({asked, asked}, with(nextFrame, {{Event::repaint, State::idle}}))},
        {"an ask within the recording is covered by it", {asked, {Event::askWithin, State::asked}}},
        {"a change after the recording replaces it",
         with({asked, {Event::record, State::recorded}, asked}, with(nextFrame, {{Event::repaint, State::idle}}))},
        {"what comes meanwhile waits for the screen, and is watched once",
         underWay(
             with({waits, {Event::ask, State::onItsWay}, {Event::show, State::asked, Order::schedule}}, nextFrame))},
        {"easing goes on when its frame is shown",
         underWay(with({{Event::show, State::asked, Order::schedule}}, nextFrame), Event::ease)},
        {"a drag draws at the screen's pace until it ends",
         {{Event::live, State::asked, Order::schedule},
          {Event::record, State::recorded},
          {Event::handOver, State::onItsWay},
          {Event::live, State::onItsWay},
          {Event::show, State::asked, Order::schedule},
          {Event::record, State::recorded},
          {Event::handOver, State::onItsWay},
          {Event::notLive, State::onItsWay},
          {Event::show, State::idle}}},
        {"a plot without a size records nothing and stays quiet until it has one",
         {asked,
          {Event::noSize, State::idle},
          {Event::repaint, State::idle},
          {Event::resized, State::asked, Order::schedule}}},

        // the nine that are easily got wrong
        {"hidden window: its frame is given up, changes are kept, and it is drawn when it comes back",
         underWay(with({{Event::hidden, State::idle},
                        asked,
                        {Event::hidden, State::asked},
                        {Event::visible, State::asked, Order::schedule}},
                       nextFrame))},
        {"lost device: a frame is made anew at once, and the swap of the lost one does not end it",
         underWay({{Event::lost, State::asked, Order::schedule},
                   {Event::show, State::asked},
                   {Event::record, State::recorded},
                   {Event::handOver, State::onItsWay},
                   {Event::showOld, State::onItsWay},
                   {Event::show, State::idle}})},
        {"resize during a drag: one frame more, not two",
         {{Event::live, State::asked, Order::schedule},
          {Event::record, State::recorded},
          {Event::handOver, State::onItsWay},
          {Event::resized, State::onItsWay, Order::watch},
          {Event::ask, State::onItsWay},
          {Event::show, State::asked, Order::schedule},
          {Event::notLive, State::asked},
          {Event::record, State::recorded},
          {Event::handOver, State::onItsWay},
          {Event::show, State::idle}}},
        {"minimised and restored while it eases: the easing goes on",
         underWay(with({{Event::hidden, State::asked, Order::schedule},
                        {Event::late, State::asked},
                        {Event::visible, State::asked, Order::schedule}},
                       nextFrame),
                  Event::ease)},
        {"symbol change while hidden: many changes are one frame when it is shown",
         with({{Event::hidden, State::idle},
               asked,
               asked,
               {Event::late, State::asked},
               {Event::visible, State::asked, Order::schedule}},
              with(nextFrame, {{Event::repaint, State::idle}}))},
        {"two items: the swap that shows another one's frame ends nothing here",
         underWay({{Event::showOld, State::onItsWay},
                   {Event::join, State::asked, Order::schedule},  // the other one moves again, and this one follows
                   {Event::record, State::recorded},
                   {Event::handOver, State::onItsWay},
                   {Event::showOld, State::onItsWay},
                   {Event::show, State::idle}})},
        {"slow screen: late, the next frame goes ahead, and the swap of the late one does not end it",
         underWay({{Event::late, State::onItsWay},  // nobody waits
                   waits,
                   {Event::late, State::asked, Order::schedule},
                   {Event::show, State::asked},
                   {Event::record, State::recorded},
                   {Event::handOver, State::onItsWay},
                   {Event::ask, State::onItsWay, Order::watch},
                   {Event::showOld, State::onItsWay},
                   {Event::show, State::asked, Order::schedule}})},
        {"atlas full: a recorded frame and one on its way are made anew within the window's frame",
         with({asked,
               {Event::record, State::recorded},
               {Event::join, State::asked, Order::schedule},
               {Event::record, State::recorded},
               {Event::handOver, State::onItsWay},
               {Event::join, State::asked, Order::schedule}},
              nextFrame)},
        {"picture taken: its frame comes to no screen, and what waited for it goes on",
         underWay({waits,
                   {Event::picture, State::asked, Order::schedule},
                   {Event::picture, State::asked},
                   {Event::record, State::recorded},
                   {Event::handOver, State::onItsWay},
                   {Event::picture, State::idle},
                   {Event::picture, State::idle}})},
    };
}

TEST(FramePump, GoesOnWhateverHappensToItsFrames) {
    for (const Case& one : cases()) {
        FramePump pump;
        for (std::size_t i = 0; i < one.steps.size(); ++i) {
            SCOPED_TRACE(std::string(one.name) + ", step " + std::to_string(i + 1));
            EXPECT_EQ(play(pump, one.steps[i].event), one.steps[i].order);
            EXPECT_EQ(pump.state(), one.steps[i].state);
        }
    }
}

}  // namespace
}  // namespace vmr
