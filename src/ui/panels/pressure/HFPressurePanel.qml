// The history of HF flow beside a pane's chart, or over it where the pane is narrow: its length, the newest numbers, a
// plot of both flows with its times, and the strikes around the money. Where there is no height for all of it, it
// scrolls.
import QtQuick
import Velmora

FocusScope {
    id: panel

    required property PaneViewModel pane
    property bool overlay: false
    readonly property HfPressureViewModel pressure: pane.pressure
    readonly property color quiet: Qt.rgba(1, 1, 1, 0.53)
    readonly property bool still: plots.calm
    readonly property int gap: 6

    width: 300
    Keys.onEscapePressed: event => {
        event.accepted = overlay;
        if (overlay)
            pressure.close();
    }
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("HF pressure")

    function tell() {
        pressure.tellShown(overlay, plots.stripTexts, tag.visible ? tag.said : "");
    }
    onOverlayChanged: tell()
    Component.onCompleted: tell()
    Component.onDestruction: pressure.tellHidden()

    MouseArea {  // nothing of it is for the chart below
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }
    Rectangle {
        anchors.fill: parent
        color: "#0e0e0e"
    }
    Flickable {
        id: view
        objectName: "pressureView"
        anchors.fill: parent
        anchors.leftMargin: 1
        contentHeight: content.height
        interactive: contentHeight > height
        clip: interactive
        boundsBehavior: Flickable.StopAtBounds

        Item {
            id: content
            width: view.width
            height: Math.max(view.height, least)
            readonly property real least: 8 + 24 + panel.gap + readouts.taken + chartCard.leastTaken + ladderPart.taken + 8

            Label {
                id: title
                objectName: "pressureTitle"
                x: 8
                y: 8
                height: 24
                width: pills.x - x - 4
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                text: qsTr("HF PRESSURE")
                font.weight: Font.DemiBold
                color: panel.quiet
            }
            Row {
                id: pills
                objectName: "pressureWindows"
                anchors.right: closeButton.visible ? closeButton.left : parent.right
                anchors.rightMargin: closeButton.visible ? 2 : 8
                y: 10
                spacing: panel.overlay ? 2 : 4
                Accessible.role: Accessible.Grouping
                Accessible.name: qsTr("Length of time")
                Repeater {
                    id: pillList
                    model: panel.pressure.windows
                    PressurePill {
                        required property int index
                        required property int modelData
                        objectName: "window " + modelData
                        minutes: modelData
                        current: modelData === panel.pressure.windowMin
                        onClicked: panel.pressure.setWindow(minutes)
                        Keys.onLeftPressed: pillList.itemAt(Math.max(0, index - 1)).forceActiveFocus(Qt.TabFocusReason)
                        Keys.onRightPressed: pillList.itemAt(Math.min(pillList.count - 1, index + 1)).forceActiveFocus(Qt.TabFocusReason)
                    }
                }
            }
            IconButton {
                id: closeButton
                objectName: "pressureClose"
                visible: panel.overlay
                anchors.right: parent.right
                anchors.rightMargin: 4
                y: 8
                implicitWidth: 24
                implicitHeight: 24
                text: qsTr("Close HF pressure")
                icon24: "x"
                onClicked: panel.pressure.close()
            }
            Grid {
                id: readouts
                readonly property real taken: visible ? height + panel.gap : 0
                visible: panel.pressure.hasStats
                x: 8
                y: 8 + 24 + panel.gap
                width: parent.width - 16
                columns: 2
                spacing: 4
                opacity: panel.pressure.stale ? 0.45 : 1
                Repeater {
                    model: panel.pressure.hasStats ? [
                        { name: "callShare", title: qsTr("CALL SHARE"), share: true, color: Theme.hudTeal },
                        { name: "putShare", title: qsTr("PUT SHARE"), share: true, color: Theme.hudRed },
                        { name: "call", title: qsTr("Σ CALL"), share: false, color: Theme.hudTeal },
                        { name: "put", title: qsTr("Σ PUT"), share: false, color: Theme.hudRed }
                    ] : []
                    PressureReadout {
                        required property var modelData
                        objectName: modelData.name
                        width: (readouts.width - readouts.spacing) / 2
                        title: modelData.title
                        tint: modelData.color
                        target: panel.pressure[modelData.name]
                        nothing: panel.pressure.unknown
                        still: panel.still
                        format: modelData.share ? value => panel.pressure.shareText(value) : value => panel.pressure.flowText(value)
                    }
                }
            }
            Rectangle {
                id: chartCard
                objectName: "pressureChart"
                readonly property real stripHeight: 22
                readonly property real leastTaken: visible ? 110 + stripHeight + panel.gap : 0
                visible: panel.pressure.hasChart
                x: 8
                y: readouts.y + readouts.taken
                width: parent.width - 16
                height: content.height - y - stripHeight - panel.gap - ladderPart.taken - 8
                radius: 4
                color: "#111111"
                border.color: "#1f1f1f"
                Accessible.role: Accessible.Chart
                Accessible.name: qsTr("Call and put flow of the last %1 minutes").arg(panel.pressure.windowMin)

                Label {
                    objectName: "pressureNotice"
                    anchors.centerIn: parent
                    visible: text !== ""
                    text: panel.pressure.notice
                    color: panel.quiet
                }
                HoverHandler {
                    id: pointer
                }
            }
            Item {
                id: ladderPart
                readonly property real taken: visible ? height + panel.gap : 0
                readonly property real boxWidth: (width - 4 * 4) / 5
                visible: panel.pressure.hasLadder
                x: 8
                y: content.height - 8 - height
                width: parent.width - 16
                height: 20 + 96
                opacity: panel.pressure.stale ? 0.45 : 1

                Label {
                    height: 20
                    text: qsTr("HF ATM ±2 STRIKES")
                    color: panel.quiet
                }
                Label {
                    visible: boxes.count === 0
                    y: 20
                    text: panel.pressure.unknown
                    color: panel.quiet
                }
                Repeater {
                    id: boxes
                    model: panel.pressure.hasLadder ? panel.pressure.ladder : null
                    PressureBox {
                        required property int index
                        required property real strike
                        property bool placed: false
                        readonly property rect sparkPlace: Qt.rect(ladderPart.x + x + sparkRoom.x, ladderPart.y + y + sparkRoom.y,
                                                                   sparkRoom.width, sparkRoom.height)
                        objectName: "strike " + label
                        x: index * (ladderPart.boxWidth + 4)
                        y: 20
                        width: ladderPart.boxWidth
                        height: 96
                        pressure: panel.pressure
                        still: panel.still
                        onSparkPlaceChanged: plots.placeSpark(strike, sparkPlace)
                        Component.onCompleted: {
                            plots.placeSpark(strike, sparkPlace);
                            placed = true;
                        }
                        Component.onDestruction: plots.placeSpark(strike, Qt.rect(0, 0, 0, 0))

                        Behavior on x {
                            enabled: placed && panel.pressure.moves && !Motion.reduced
                            NumberAnimation {
                                duration: 350
                                easing.type: Easing.InOutQuad
                            }
                        }
                    }
                }
            }
            HfPressureItem {
                id: plots
                objectName: "pressurePlots"
                anchors.fill: parent
                pane: panel.pane
                mainPlace: chartCard.visible ? Qt.rect(chartCard.x, chartCard.y, chartCard.width, chartCard.height) : Qt.rect(0, 0, 0, 0)
                stripPlace: chartCard.visible ? Qt.rect(chartCard.x, chartCard.y + chartCard.height, chartCard.width, chartCard.stripHeight)
                                              : Qt.rect(0, 0, 0, 0)
                onStripTextsChanged: panel.tell()
            }
            Item {
                id: tag
                objectName: "pressureTag"
                readonly property var none: ({})
                // again with other samples, and only while the pointer is there
                readonly property var spot: pointer.hovered && panel.pressure.revision >= 0
                                            ? panel.pressure.spotAt(pointer.point.position.x, chartCard.width) : none
                readonly property string said: spot.time === undefined ? "" : [spot.time, spot.call, spot.put].join(" ")
                visible: spot.time !== undefined
                x: chartCard.x
                y: chartCard.y
                width: chartCard.width
                height: chartCard.height
                onSaidChanged: panel.tell()

                Rectangle {
                    x: tag.visible ? Math.round(tag.spot.x) : 0
                    y: 14
                    width: 1
                    height: tag.height - 30
                    color: Qt.rgba(1, 1, 1, 0.35)
                }
                Rectangle {
                    id: words
                    readonly property real at: tag.visible ? tag.spot.x : 0
                    x: Math.round(at + 8 + width <= tag.width - 4 ? at + 8 : Math.max(4, at - 8 - width))
                    y: 18
                    width: Math.ceil(lines.width) + 12
                    height: Math.ceil(lines.height) + 8
                    radius: 4
                    color: Theme.raised
                    border.color: Theme.lineStrong
                    Column {
                        id: lines
                        x: 6
                        y: 4
                        Label {
                            text: tag.spot.time ?? ""
                            color: Theme.textSoft
                        }
                        Label {
                            text: qsTr("Call %1").arg(tag.spot.call ?? "")
                            color: Theme.hudTeal
                        }
                        Label {
                            text: qsTr("Put %1").arg(tag.spot.put ?? "")
                            color: Theme.hudRed
                        }
                    }
                }
            }
        }
    }
    Rectangle {
        width: 1
        height: parent.height
        color: "#333333"
    }
    Rectangle {
        visible: view.interactive
        anchors.right: parent.right
        anchors.rightMargin: 2
        y: view.visibleArea.yPosition * view.height
        width: 3
        height: view.visibleArea.heightRatio * view.height
        radius: 1.5
        color: Theme.lineStrong
    }
}
