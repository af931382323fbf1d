// The 3D view over its pane: a card on dimmed ground, closed by a press beside it.
import QtQuick
import Velmora

FocusScope {
    id: modal

    required property Gex3DViewModel surface
    readonly property bool narrow: width < 640
    property bool rowsAsked: false  // where the list covers the scene

    // what is told of the places of the controls
    function tellPlaces() {
        if (!surface.open)
            return;
        const origin = modal.parent ? modal.mapToItem(modal.parent.parent, 0, 0) : Qt.point(0, 0);
        const controls = {};
        const middle = item => {
            const place = modal.mapFromItem(item, item.width / 2, item.height / 2);
            return Qt.point(origin.x + place.x, origin.y + place.y);
        };
        for (const button of header.buttons)
            if (button.visible)
                controls[button.objectName] = middle(button);
        for (const box of rows.boxes())
            controls[box.objectName] = middle(box);
        const corner = modal.mapFromItem(scene, 0, 0);
        surface.tellPlaces(Qt.rect(origin.x + corner.x, origin.y + corner.y, scene.width, scene.height), controls);
    }
    onWidthChanged: Qt.callLater(tellPlaces)
    onHeightChanged: Qt.callLater(tellPlaces)
    onYChanged: Qt.callLater(tellPlaces)
    Component.onCompleted: tellPlaces()
    readonly property var shownIn: Window.window
    onShownInChanged: surface.enterWindow(shownIn)

    Accessible.role: Accessible.Dialog
    Accessible.name: qsTr("3D view")

    Rectangle {
        anchors.fill: parent
        color: "#99000000"
        MouseArea {
            anchors.fill: parent
            acceptedButtons: Qt.AllButtons
            hoverEnabled: true
            onPressed: modal.surface.close()
            onWheel: wheel => wheel.accepted = true
        }
    }
    Rectangle {
        id: card
        objectName: "gex3DCard"
        readonly property int sideMargin: modal.narrow ? 8 : 32
        readonly property int axis: modal.narrow ? 0 : 64  // the chart's prices stay readable beside it
        x: Math.round(sideMargin + (modal.width - axis - 2 * sideMargin - width) / 2)
        y: Math.round((modal.height - height) / 2)
        width: Math.min(1280, modal.width - axis - 2 * sideMargin)
        height: Math.min(860, modal.height - 2 * (modal.narrow ? 8 : 24))
        radius: 10
        color: Qt.rgba(0.051, 0.059, 0.071, 1)
        border.width: 1
        border.color: Qt.rgba(1, 1, 1, 0.18)

        MouseArea {  // what is pressed here does not close it
            anchors.fill: parent
            acceptedButtons: Qt.AllButtons
            hoverEnabled: true
            onWheel: wheel => wheel.accepted = true
        }
        Gex3DHeader {
            id: header
            x: 1
            y: 1
            width: parent.width - 2
            surface: modal.surface
            narrow: modal.narrow
            rowsAsked: modal.rowsAsked
            before: rows.visible ? rows.last : scene
            onRowsToggled: {
                modal.rowsAsked = !modal.rowsAsked;
                Qt.callLater(modal.tellPlaces);
            }
        }
        Gex3DSceneView {
            id: scene
            objectName: "gex3DScene"
            anchors.top: header.bottom
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 1
            x: 1
            width: parent.width - 2 - (rows.visible && !modal.narrow ? rows.width : 0)
            focus: true
            KeyNavigation.tab: rows.visible ? null : header.first
            surface: modal.surface
            onWidthChanged: Qt.callLater(modal.tellPlaces)
            onHeightChanged: Qt.callLater(modal.tellPlaces)
        }
        Gex3DRows {
            id: rows
            objectName: "gex3DRows"
            anchors.right: parent.right
            anchors.rightMargin: 1
            anchors.top: header.bottom
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 1
            width: 148
            visible: modal.surface.expirations.length > 0 && (!modal.narrow || modal.rowsAsked)
            covers: modal.narrow
            surface: modal.surface
            onPlacesChanged: Qt.callLater(modal.tellPlaces)
        }
        Label {
            objectName: "gex3DLoading"
            anchors.centerIn: scene
            visible: modal.surface.loading
            text: qsTr("Loading GEX 3D…")
            color: Theme.textSoft
        }
        Rectangle {
            objectName: "gex3DTooltip"
            anchors.left: scene.left
            anchors.bottom: scene.bottom
            anchors.margins: 12
            visible: modal.surface.tooltip !== ""
            width: tooltip.implicitWidth + 16
            height: tooltip.implicitHeight + 16
            radius: 4
            color: "#bf000000"
            Label {
                id: tooltip
                x: 8
                y: 8
                font.pixelSize: Theme.small
                text: modal.surface.tooltip
            }
        }
    }
}
