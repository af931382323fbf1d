// A card over the chart that a person moves, sizes and closes, by pointer or by keys: Alt and an arrow moves it, with
// Shift it sizes it. Escape closes what is open, in its order. It opens where it was, and what it shows is there only while it is open.
import QtQuick
import Velmora

FocusScope {
    id: panel

    required property string panelId
    required property PanelFrames frames
    property string title
    property bool open: false
    property size defaultSize: Qt.size(320, 240)
    property size minSize: Qt.size(200, 120)
    property real mostWidth: Infinity
    property point defaultPos: Qt.point(24, 24)
    property bool autoFit: false  // as high as its content
    property real bgOpacity: 0.97
    property Component body
    readonly property alias bodyItem: content.item
    signal close

    readonly property PanelSpace space: parent as PanelSpace
    readonly property size area: space ? Qt.size(space.width, space.height) : Qt.size(0, 0)
    readonly property real measuredContentH: autoFit && content.item ? Math.ceil(content.item.implicitHeight) : 0
    readonly property rect frame: Qt.rect(x, y, width, height)
    property rect wanted  // where it would lie with room enough
    property bool pointed: false  // the pointer was the last to touch it

    function moveTo(px, py) {
        const pos = frames.clampedPos(Qt.point(px, py), Qt.size(width, height), area);
        wanted = Qt.rect(pos.x, pos.y, wanted.width, wanted.height);
    }
    function resizeTo(w, h) {
        const size = frames.clampedSize(Qt.size(w, h), minSize, Qt.size(area.width - x + 8, area.height - y + 8),
                                        measuredContentH);
        wanted = Qt.rect(x, y, Math.min(size.width, mostWidth), size.height);
    }
    function focusTitle() {
        titleBar.forceActiveFocus();
    }
    function persistFrame() {
        frames.keep(panelId, Qt.rect(x, y, wanted.width, wanted.height));
    }
    function stepBy(dx, dy, resizes) {
        const step = frames.step;
        if (resizes)
            resizeTo(width + dx * step, height + dy * step);
        else
            moveTo(x + dx * step, y + dy * step);
        persistFrame();
    }

    visible: open
    // one after the other: the content's height follows from the width
    width: Math.min(mostWidth, frames.clampedSize(Qt.size(wanted.width, wanted.height), minSize, area, 0).width)
    height: frames.clampedSize(Qt.size(wanted.width, wanted.height), minSize, area, measuredContentH).height
    x: Math.round(frames.clampedPos(Qt.point(wanted.x, wanted.y), Qt.size(width, height), area).x)
    y: Math.round(frames.clampedPos(Qt.point(wanted.x, wanted.y), Qt.size(width, height), area).y)
    Accessible.role: Accessible.Dialog
    Accessible.name: title

    onOpenChanged: {
        if (open) {
            wanted = frames.restored(panelId, Qt.rect(defaultPos.x, defaultPos.y, defaultSize.width, defaultSize.height));
            pointed = false;
            frames.moved(panelId, frame);
            space.raise(panel);
            forceActiveFocus();
        } else {
            frames.closed(panelId);
            if (activeFocus)
                space.vacated();
        }
    }
    onFrameChanged: if (open) frames.moved(panelId, frame)
    onActiveFocusChanged: if (activeFocus) space.raise(panel)

    Keys.onPressed: event => {
        pointed = false;
        const keys = event.modifiers & ~Qt.KeypadModifier;
        if (keys === Qt.AltModifier || keys === (Qt.AltModifier | Qt.ShiftModifier)) {
            const right = (event.key === Qt.Key_Right) - (event.key === Qt.Key_Left);
            const down = (event.key === Qt.Key_Down) - (event.key === Qt.Key_Up);
            if (right === 0 && down === 0)
                return;
            stepBy(right, down, keys !== Qt.AltModifier);
        } else {
            return;
        }
        event.accepted = true;
    }

    PointHandler {
        acceptedButtons: Qt.AllButtons
        onActiveChanged: {
            if (!active)
                return;
            panel.pointed = true;
            panel.space.raise(panel);
        }
    }
    MouseArea {  // what is pressed here is not for the chart
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onPressed: titleBar.forceActiveFocus()
        onWheel: wheel => wheel.accepted = true
    }
    Rectangle {
        anchors.fill: parent
        radius: 10
        color: Qt.alpha(Theme.surface, panel.bgOpacity)
        border.width: titleBar.activeFocus && !panel.pointed ? 2 : 1
        border.color: titleBar.activeFocus && !panel.pointed ? Theme.focus : Theme.lineStrong
    }
    Item {
        id: titleBar
        objectName: "panelTitle"
        width: parent.width
        height: panel.frames.titleHeight
        focus: true
        activeFocusOnTab: true
        Accessible.role: Accessible.TitleBar
        Accessible.name: panel.title
        Accessible.description: qsTr("Alt and an arrow key moves the panel, with Shift it sizes it.")
        Accessible.focusable: true

        MouseArea {
            property point grabbed  // of the panel, in its area
            property bool dragged: false
            anchors.fill: parent
            preventStealing: true
            cursorShape: pressed ? Qt.ClosedHandCursor : Qt.ArrowCursor
            onPressed: mouse => {
                grabbed = Qt.point(mouse.x, mouse.y);
                dragged = false;
                titleBar.forceActiveFocus();
            }
            onPositionChanged: mouse => {
                const at = mapToItem(panel.space, mouse.x, mouse.y);
                dragged = true;
                panel.moveTo(at.x - grabbed.x, at.y - grabbed.y);
            }
            onReleased: if (dragged) panel.persistFrame()
            onCanceled: if (dragged) panel.persistFrame()
        }
        Label {
            x: 14
            width: parent.width - 56
            anchors.verticalCenter: parent.verticalCenter
            elide: Text.ElideRight
            font.weight: Font.DemiBold
            text: panel.title
        }
        IconButton {
            objectName: "panelClose"
            anchors.right: parent.right
            anchors.rightMargin: 4
            anchors.verticalCenter: parent.verticalCenter
            implicitWidth: 26
            implicitHeight: 26
            text: qsTr("Close %1").arg(panel.title)
            icon24: "x"
            onClicked: panel.close()
        }
        Rectangle {
            x: 1
            anchors.bottom: parent.bottom
            width: parent.width - 2
            height: 1
            color: Theme.line
        }
    }
    Flickable {
        id: view
        anchors.top: titleBar.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        contentHeight: content.height
        interactive: contentHeight > height
        clip: interactive
        boundsBehavior: Flickable.StopAtBounds

        Loader {
            id: content
            width: view.width
            height: panel.autoFit ? panel.measuredContentH : view.height
            active: panel.open
            sourceComponent: panel.body
        }
    }
    MouseArea {
        id: grip
        objectName: "panelGrip"
        property point grabbed  // from the panel's corner
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        width: 22
        height: 22
        preventStealing: true
        cursorShape: Qt.SizeFDiagCursor
        onPressed: mouse => grabbed = Qt.point(width - mouse.x, height - mouse.y)
        onPositionChanged: mouse => {
            const at = mapToItem(panel, mouse.x, mouse.y);
            panel.resizeTo(at.x + grabbed.x, at.y + grabbed.y);
        }
        onReleased: panel.persistFrame()
        onCanceled: panel.persistFrame()

        Repeater {
            model: [13, 8]
            Rectangle {
                required property int modelData
                anchors.centerIn: parent
                anchors.horizontalCenterOffset: (14 - modelData) / 2 + 1
                anchors.verticalCenterOffset: (14 - modelData) / 2 + 1
                width: modelData
                height: 1
                rotation: -45
                antialiasing: true
                color: Qt.alpha("white", 0.4)
            }
        }
    }
}
