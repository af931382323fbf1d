// One pane: its toolbar and its chart.
import QtQuick
import Velmora

FocusScope {
    id: paneView

    required property PaneViewModel pane
    required property WindowViewModel view
    property ShellViewModel shell: null  // whose menu the toolbar shows
    property bool inSecondPlace: false
    property bool marked: false  // of two panes the one that has the keyboard
    readonly property alias toolbarHeight: toolbar.height
    readonly property bool wide: width >= 700  // enough for a column beside the chart
    readonly property real chartWidth: width - (pressure.active && wide ? pressure.width : 0)
    readonly property real uncoveredWidth: width - (pressure.active ? pressure.width : 0)
    readonly property real headHeight: toolbar.height + (hud.visible ? hud.y + hud.height : 0)  // which notices lie below

    signal entered

    function openSymbols() {
        toolbar.openSymbols();
    }

    onActiveFocusChanged: {
        if (activeFocus)
            entered();
    }

    Toolbar {
        id: toolbar
        objectName: "toolbar"
        z: 1
        width: parent.width
        session: paneView.pane.session
        choices: paneView.pane.toolbar
        view: paneView.view
        inSecondPlace: paneView.inSecondPlace
        marked: paneView.marked
        shell: paneView.shell
    }
    ChartItem {
        id: chart
        objectName: "chart"
        anchors.top: toolbar.bottom
        anchors.bottom: oscillator.top
        width: paneView.chartWidth
        focus: true
        onBareWindow: true
        pane: paneView.pane
        clockBox: clocks.clockBox
        onOrderMenuRequested: (x, y) => {
            orderMenu.rows = chart.orderMenu;
            orderMenu.openAt(x, y);
        }
        onOrderMenuEnded: orderMenu.close()

        PointHandler {  // who points at the chart types for it, too
            acceptedButtons: Qt.AllButtons
            onActiveChanged: if (active) chart.forceActiveFocus(Qt.MouseFocusReason)
        }
        PinchHandler {
            property real lastScale: 1
            target: null
            acceptedDevices: PointerDevice.TouchScreen
            onActiveChanged: lastScale = 1
            onActiveScaleChanged: {
                chart.magnify(activeScale / lastScale - 1);
                lastScale = activeScale;
            }
        }
        Rectangle {
            objectName: "litStrike"
            visible: chart.hud.litFrom < chart.hud.litTo && !paneView.view.pictureTaken
            x: chart.width - chart.crosshair.priceAxisWidth - width
            y: chart.hud.litFrom
            width: chart.barsWidth
            height: chart.hud.litTo - chart.hud.litFrom
            color: "#18ffffff"
        }
        Hud {
            id: hud
            objectName: "hud"
            x: 6
            y: 6
            hud: chart.hud
            // beside the strikes' bars and their names, while enough is left
            readonly property real plot: chart.width - chart.crosshair.priceAxisWidth - 2 * x
            readonly property real uncovered: paneView.uncoveredWidth - 2 * x
            room: Math.min(Math.max(plot - chart.barsWidth - 36, Math.min(plot, 220), 0), uncovered)
            wraps: chart.width < 900
            onLaidOut: line => chart.lineLaidOut(line)
        }
        EntryPill {
            objectName: "entryPill"
            pill: chart.entryPill
        }
        Clocks {
            id: clocks
            anchors.fill: parent
            visible: !paneView.pane.chart.empty
            clocks: paneView.pane.clocks
            hud: chart.hud
            timeAxis: chart.crosshair.timeAxisHeight
        }
        Crosshair {
            anchors.fill: parent
            visible: !paneView.view.pictureTaken
            cross: chart.crosshair
        }
        Crosshair {
            anchors.fill: parent
            visible: !paneView.view.pictureTaken
            cross: chart.peerCrosshair
            ofPeer: true
        }
        OrderMenu {
            id: orderMenu
            objectName: "orderMenu"
            onChosen: index => chart.chooseOrder(index)
        }
    }
    OscillatorView {
        id: oscillator
        anchors.bottom: parent.bottom
        width: paneView.chartWidth
        room: paneView.height - toolbar.height
        chart: chart
        oscillator: paneView.pane.oscillator
        settings: paneView.pane.settings
        pictureTaken: paneView.view.pictureTaken
    }
    Loader {
        id: pressure
        active: paneView.pane.pressure.open
        anchors.top: toolbar.bottom
        anchors.bottom: parent.bottom
        anchors.right: parent.right
        width: Math.min(300, parent.width)
        sourceComponent: HFPressurePanel {
            objectName: "pressurePanel"
            pane: paneView.pane
            overlay: !paneView.wide
        }
        onActiveChanged: if (!active && activeFocus) chart.forceActiveFocus()
    }
    Toast {
        objectName: "toast"
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 48
        anchors.horizontalCenter: parent.horizontalCenter
        title: paneView.pane.toast.notice
        detail: paneView.pane.toast.noticeDetail
    }
    Label {
        objectName: "chartNotice"
        anchors.verticalCenter: chart.verticalCenter
        x: (paneView.uncoveredWidth - width) / 2
        width: Math.min(implicitWidth, Math.max(paneView.uncoveredWidth - 64, 64))
        visible: text !== ""
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        color: chart.problem !== "" ? Theme.error : Theme.textFaint
        text: chart.problem !== "" ? chart.problem : paneView.pane.chart.empty ? qsTr("Waiting for bars…") : ""
    }
    PanelSpace {
        id: panelSpace
        objectName: "panelSpace"
        anchors.top: toolbar.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        onVacated: chart.forceActiveFocus()

        readonly property real firstTop: Math.max(36, paneView.headHeight - toolbar.height + 8)  // below the line of values

        AccountPanel {
            objectName: "accountPanel"
            frames: paneView.pane.panelFrames
            session: paneView.pane.session
            account: paneView.pane.account
            defaultPos: Qt.point(panelSpace.width - defaultSize.width - 24, 16)
            open: paneView.pane.panels.accountPanelOpen
            onClose: paneView.pane.panels.accountPanelOpen = false
        }
        TemplatesPanel {
            objectName: "templatesPanel"
            frames: paneView.pane.panelFrames
            templates: paneView.pane.templates
            defaultPos: Qt.point(24, 16)
            open: paneView.pane.panels.templatesPanelOpen
            onClose: paneView.pane.panels.templatesPanelOpen = false
        }
        SettingsPanel {
            objectName: "configPanel"
            frames: paneView.pane.panelFrames
            settings: paneView.pane.settings
            panels: paneView.pane.panels
            session: paneView.pane.session
            onKeysRequested: if (paneView.view.actions) paneView.view.actions.run("keys", paneView.inSecondPlace)
            defaultPos: Qt.point(panelSpace.width - defaultSize.width - 24, 16)
            open: paneView.pane.panels.configPanelOpen
            onClose: paneView.pane.panels.configPanelOpen = false
        }
        SimPanel {
            id: simPanel
            objectName: "simPanel"
            frames: paneView.pane.panelFrames
            sim: paneView.pane.sim
            defaultPos: Qt.point(24, panelSpace.firstTop)
            open: paneView.pane.panels.simPanelOpen && paneView.pane.toolbar.on.simEnabled === true
            onClose: paneView.pane.panels.simPanelOpen = false
            onAllAsked: kind => paneView.pane.simList.kind = kind
            onOpenChanged: if (!open) paneView.pane.simList.kind = ""
        }
        SimListPanel {
            objectName: "simList"
            frames: paneView.pane.panelFrames
            list: paneView.pane.simList
            onHandedBack: if (simPanel.open) simPanel.forceActiveFocus(Qt.TabFocusReason)
            defaultPos: Qt.point(400, panelSpace.firstTop)
        }
    }
    Loader {
        objectName: "gex3D"
        anchors.top: toolbar.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        readonly property url view: paneView.pane.surface.view
        onViewChanged: {
            const hadFocus = item !== null && item.activeFocus;
            setSource(view, { surface: paneView.pane.surface });
            if (hadFocus)
                chart.forceActiveFocus();
        }
        onLoaded: item.forceActiveFocus()
    }
}
