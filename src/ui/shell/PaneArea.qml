// The inside of a window: one pane, or two with a divider between them, and what the window has to say above them.
import QtQuick
import Velmora

FocusScope {
    id: area

    required property WindowViewModel view
    required property ServiceViewModel service
    property ShellViewModel shell: null
    readonly property bool two: view.dual !== null
    readonly property real leastPane: Math.min(320, Math.floor((width - divider.width) / 2))
    readonly property real leftWidth: two ? limited(view.split * (width - divider.width)) : width

    onTwoChanged: {
        if (!two)
            first.forceActiveFocus();
    }

    Connections {
        target: area.view
        function onOtherPaneAsked() {
            if (area.two)
                (first.activeFocus ? second.item : first).forceActiveFocus(Qt.TabFocusReason);
        }
        function onSymbolMenuAsked(inSecond) {
            (inSecond && area.two ? second.item : first).openSymbols();
        }
    }

    function limited(left) {
        return Math.round(Math.max(leastPane, Math.min(left, width - divider.width - leastPane)));
    }
    function moveDivider(left) {
        view.split = limited(left) / (width - divider.width);
    }

    ChartPane {
        id: first
        objectName: "chartPane"
        focus: true
        width: area.leftWidth
        height: parent.height
        clip: area.two
        pane: area.view.pane
        view: area.view
        shell: area.shell
        marked: area.two && activeFocus
        onEntered: area.view.activate(false)
    }
    Loader {
        id: second
        active: area.two
        x: divider.x + divider.width
        width: area.width - x
        height: parent.height
        sourceComponent: ChartPane {
            objectName: "dualPane"
            clip: true
            pane: area.view.dual
            view: area.view
            inSecondPlace: true
            marked: activeFocus
            onEntered: area.view.activate(true)
        }
    }
    Rectangle {
        id: divider
        objectName: "divider"
        x: area.leftWidth
        visible: area.two
        width: 1
        height: parent.height
        color: Qt.rgba(1, 1, 1, drag.pressed || activeFocus ? 0.45 : 0.25)
        activeFocusOnTab: area.two
        Accessible.role: Accessible.Separator
        Accessible.name: qsTr("Divider between the charts")
        Keys.onPressed: event => {
            const step = { [Qt.Key_Left]: -16, [Qt.Key_Right]: 16 }[event.key];
            if (step)
                area.moveDivider(area.leftWidth + step);
            else if (event.key === Qt.Key_Home)
                area.moveDivider((area.width - width) / 2);
            else
                return;
            event.accepted = true;
            area.view.keepSplit();
        }

        MouseArea {
            id: drag
            property real grip: 0
            anchors.fill: parent
            anchors.margins: -4
            cursorShape: Qt.SplitHCursor
            onPressed: mouse => grip = mouse.x + anchors.margins
            onPositionChanged: mouse => {
                if (pressed)
                    area.moveDivider(mapToItem(area, mouse.x, 0).x - grip);
            }
            onReleased: area.view.keepSplit()
            onDoubleClicked: {
                area.moveDivider((area.width - divider.width) / 2);
                area.view.keepSplit();
            }
        }
    }
    // beside the price axis of the left pane, so that no last price is covered
    Column {
        readonly property real room: first.chartWidth - 74
        x: (room - width) / 2
        y: first.headHeight + 12
        width: Math.min(560, room - 16)
        spacing: 8

        Notice {
            objectName: "setupNotice"
            width: parent.width
            visible: text !== ""
            text: area.view.pane.session.setupProblem
        }
        Notice {
            objectName: "limitNotice"
            width: parent.width
            visible: area.view.pane.session.connLimited || (area.two && area.view.dual.session.connLimited)
            text: qsTr("Connection limit reached (4 per user, windows + dual panes). Close one to open another.")
        }
        Notice {
            objectName: "accountNotice"
            readonly property SimViewModel sim: area.view.pane.sim
            width: parent.width
            visible: text !== "" && !(sim.shown && sim.barred === text)  // the panel, which it would cover, says the same
            text: area.view.pane.chart.accountProblem
        }
        ServiceBanners {
            width: parent.width
            service: area.service
        }
    }
}
