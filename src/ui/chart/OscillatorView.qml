// The oscillator below a chart, and the handle between the two that sets its height. Where a pane is low, the oscillator
// gives way first.
import QtQuick
import Velmora

Item {
    id: view

    required property ChartItem chart
    required property OscillatorViewModel oscillator
    required property SettingsViewModel settings
    property real room: 0  // for both, in points
    property bool pictureTaken: false
    readonly property real leastRoom: 320
    readonly property real chartKeeps: 220
    readonly property real least: 100
    readonly property real most: Math.min(400, Math.max(least, room - chartKeeps - separator.height))
    readonly property real plotHeight: Math.min(oscillator.height, room - chartKeeps - separator.height)

    // Where it has not the room for the height that it is set to, it cannot be made taller, and keeps that.
    function resizeTo(height) {
        if (height >= plotHeight && oscillator.height > plotHeight)
            return;
        settings.set("oscHeight", Math.max(least, Math.min(height, most)));
    }

    visible: oscillator.enabled && room >= leastRoom
    height: visible ? separator.height + plotHeight : 0

    Rectangle {
        id: separator
        objectName: "oscSeparator"
        width: parent.width
        height: 6
        color: Qt.rgba(0.5, 0.5, 0.5, drag.dragging || activeFocus ? 0.5 : drag.containsMouse ? 0.36 : 0.2)
        activeFocusOnTab: true
        Accessible.role: Accessible.Separator
        Accessible.name: qsTr("Divider between chart and oscillator")
        Keys.onPressed: event => {
            const up = (event.key === Qt.Key_Up) - (event.key === Qt.Key_Down);
            if (up === 0 || event.modifiers & ~Qt.KeypadModifier)
                return;
            view.settings.beginGesture();
            view.resizeTo(plot.height + 10 * up);
            event.accepted = true;
        }
        Keys.onReleased: event => {
            if (!event.isAutoRepeat)
                view.settings.endGesture();
        }
        onActiveFocusChanged: if (!activeFocus) view.settings.endGesture()

        Rectangle {
            anchors.centerIn: parent
            width: 28
            height: 2
            radius: 1
            color: separator.activeFocus ? Theme.focus : Theme.textFaint
            visible: drag.containsMouse || drag.dragging || separator.activeFocus
        }
        MouseArea {
            id: drag
            property bool dragging: false
            property real from: 0  // where the pointer was pressed
            property real startHeight: 0
            anchors.fill: parent
            anchors.topMargin: -2
            anchors.bottomMargin: -2
            hoverEnabled: true
            preventStealing: true
            cursorShape: Qt.SplitVCursor

            function end() {
                dragging = false;
                view.settings.endGesture();
            }

            onPressed: mouse => from = mapToItem(null, 0, mouse.y).y
            onPositionChanged: mouse => {
                if (!pressed)
                    return;
                const moved = mapToItem(null, 0, mouse.y).y - from;
                if (!dragging) {
                    if (Math.abs(moved) < 10)
                        return;
                    dragging = true;
                    startHeight = plot.height;
                    view.settings.beginGesture();
                }
                view.resizeTo(startHeight - moved);
            }
            onReleased: end()
            onCanceled: end()
            onDoubleClicked: view.settings.restoreDefaults("oscHeight")
        }
    }
    OscillatorItem {
        id: plot
        objectName: "oscillator"
        y: separator.height
        width: parent.width
        height: view.plotHeight
        onBareWindow: true
        chart: view.chart
        Accessible.role: Accessible.Graphic
        Accessible.name: qsTr("Oscillator")

        PinchHandler {
            property real lastScale: 1
            target: null
            acceptedDevices: PointerDevice.TouchScreen
            onActiveChanged: lastScale = 1
            onActiveScaleChanged: {
                view.chart.magnify(activeScale / lastScale - 1);
                lastScale = activeScale;
            }
        }
        OscCrosshairLayer {
            anchors.fill: parent
            visible: !view.pictureTaken
            cross: view.chart.crosshair
        }
        OscCrosshairLayer {
            anchors.fill: parent
            visible: !view.pictureTaken
            cross: view.chart.peerCrosshair
            ofPeer: true
        }
    }
}
