#include "workspace/GestureTable.h"

#include <array>

namespace vmr {

std::span<const Gesture> gestureTable() {
    static constexpr std::string_view chart = "Chart", axis = "Price axis", orders = "Orders",
                                      oscillator = "Oscillator", pressure = "HF pressure", surface = "3D view",
                                      windows = "Windows";
    static constexpr std::array table{
        Gesture{chart, "Move the pointer", "Crosshair with price and time; the bar's values at the top left"},
        Gesture{chart, "Drag", "Move through time and price"},
        Gesture{chart, "Wheel", "Zoom time and price"},
        Gesture{chart, "Shift+Wheel", "Zoom the price alone"},
        Gesture{chart, "Wheel or two fingers, sideways", "Move through time"},
        Gesture{chart, "Pinch", "Zoom time"},
        Gesture{chart, "Double click", "Fit the price again"},
        Gesture{axis, "Drag up and down", "Stretch the price"},
        Gesture{orders, "Right click", "Orders that make sense at that price"},
        Gesture{orders, "Drag a line, its badge or its tag", "Change the price of an order, a stop or a target"},
        Gesture{orders, "Click the cross of a line", "Cancel the order; on the position, close it"},
        Gesture{oscillator, "Drag or wheel", "Move through time, zoom time"},
        Gesture{oscillator, "Drag the separator above it", "Set its height"},
        Gesture{oscillator, "Double click the separator", "Its usual height"},
        Gesture{pressure, "Move the pointer over the plot", "Time and both flows at that moment"},
        Gesture{surface, "Move the pointer over a bar", "Its strike, expiration and gamma"},
        Gesture{surface, "Drag", "Turn it"},
        Gesture{surface, "Wheel", "Come closer or go back"},
        Gesture{surface, "Drag with the right button", "Move it"},
        Gesture{surface, "Click a bar", "Mark its strike on the chart until the view closes"},
        Gesture{windows, "Drag the divider of two charts", "Share the width"},
        Gesture{windows, "Double click the divider", "Halves again"},
        Gesture{windows, "Drag a panel by its title", "Move it"},
        Gesture{windows, "Drag a panel's lower right corner", "Resize it"},
    };
    return table;
}

}  // namespace vmr
