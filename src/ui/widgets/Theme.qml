// Colours, sizes and the font of every view.
pragma Singleton
import QtQuick

QtObject {
    readonly property color background: "#0a0a0a"
    readonly property color surface: "#121316"
    readonly property color raised: "#191b1f"
    readonly property color hover: "#1f2227"
    readonly property color pressed: "#272b31"
    readonly property color line: "#24272c"
    readonly property color lineStrong: "#353a41"
    readonly property color text: "#e8eaed"
    readonly property color textSoft: "#9aa0a8"
    readonly property color textFaint: "#6b7178"
    readonly property color accent: "#26a69a"
    readonly property color accentHover: "#2fb5a8"
    readonly property color accentPressed: "#1f8f85"
    readonly property color focus: "#4fd1c5"
    readonly property color warning: "#ffc208"
    readonly property color gold: "#f2c14e"
    readonly property color error: "#ff7a76"
    readonly property color gain: "#26a69a"
    readonly property color loss: "#ef5350"

    // the line of values over the chart: labels, and values by their tone (`HudTone`)
    readonly property color hud555: "#555555"
    readonly property color hud888: "#888888"
    readonly property color hudAAA: "#aaaaaa"
    readonly property color hudTeal: "#26a69a"
    readonly property color hudRed: "#ef5350"
    readonly property color hfBlue: "#4f9dff"
    readonly property color hfRed: "#ff6b81"
    readonly property var hudTones: [hud555, hudAAA, hudTeal, hudRed, hfBlue, hfRed]

    readonly property string family: "Saira"
    readonly property int radius: 6
    readonly property int gap: 8
    readonly property int small: 12
    readonly property int normal: 13
    readonly property int large: 26
}
