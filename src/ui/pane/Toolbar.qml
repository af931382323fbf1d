// The row above a chart: what it shows, how the connection stands, the way out.
import QtQuick
import Velmora

Rectangle {
    id: bar

    required property SessionViewModel session
    required property ToolbarViewModel choices
    required property PanelsViewModel panels
    required property WindowViewModel view
    property bool inSecondPlace: false
    property bool marked: false
    property ShellViewModel shell: null

    function symbolRows() {
        const rows = [];
        const add = (heading, symbols) => {
            if (symbols.length > 0)
                rows.push({ label: heading, heading: true });
            for (const symbol of symbols)
                rows.push({ label: symbol, value: symbol });
        };
        add(qsTr("FUTURES"), choices.futures);
        add(qsTr("STOCKS"), choices.stocks);
        return rows;
    }

    implicitHeight: 44
    color: Theme.surface

    Row {
        id: choiceRow
        anchors.left: parent.left
        anchors.leftMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4

        Loader {
            active: bar.shell !== null
            visible: active
            sourceComponent: AppMenu {
                objectName: "menuButton"
                shell: bar.shell
            }
        }
        SairaMenu {
            objectName: "symbolChoice"
            placeholder: bar.choices.symbol === "" ? qsTr("Symbol") : bar.choices.symbol
            options: bar.symbolRows()
            selection: bar.choices.symbol
            listWidth: 148
            Accessible.name: qsTr("Symbol")
            onChosen: value => bar.choices.switchSymbol(value)
        }
        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: 1
            height: 18
            color: Theme.lineStrong
        }
        SairaMenu {
            objectName: "timeframeChoice"
            options: [1, 2, 3, 5, 15, 30, 60].map(minutes => ({ label: minutes + "m", value: minutes }))
            selection: bar.choices.timeframe
            placeholder: bar.choices.timeframe + "m"
            listWidth: 96
            font.weight: Font.Normal
            Accessible.name: qsTr("Timeframe")
            onChosen: value => bar.choices.setTimeframe(value)
        }
    }
    Row {
        anchors.right: parent.right
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.gap

        Rectangle {
            id: lamp
            objectName: "lamp"
            anchors.verticalCenter: parent.verticalCenter
            width: 8
            height: 8
            radius: 4
            color: bar.session.connLimited ? Theme.error : bar.session.connected ? Theme.accent : Theme.warning
        }
        Label {
            objectName: "status"
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, bar.width - choiceRow.width - tools.width - 120)
            visible: bar.width >= 560  // below it the lamp alone tells
            text: bar.session.status
            color: Theme.textSoft
            font.pixelSize: Theme.small
            elide: Text.ElideRight
        }
        Item {
            width: 2
            height: 1
        }
        Row {
            id: tools
            spacing: 2
            IconButton {
                objectName: "dual"
                text: bar.view.dual ? qsTr("One chart") : qsTr("Two charts side by side")
                icon24: "columns-2"
                active: bar.view.dual !== null
                onClicked: bar.view.toggleDual()
            }
            IconButton {
                objectName: "sync"
                visible: bar.view.dual !== null
                text: bar.view.sync ? qsTr("Sync ON — click to disable") : qsTr("Sync charts")
                icon24: "arrow-left-right"
                active: bar.view.sync
                onClicked: bar.view.toggleSync(bar.inSecondPlace)
            }
            IconButton {
                objectName: "newWindow"
                text: qsTr("New window")
                icon24: "plus"
                onClicked: bar.view.newWindow()
            }
        }
        IconButton {
            objectName: "accountButton"
            text: qsTr("Account")
            icon24: "circle-user"
            active: bar.panels.accountPanelOpen
            onClicked: bar.panels.accountPanelOpen = !bar.panels.accountPanelOpen
        }
    }
    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: bar.marked ? Theme.accent : Theme.line
    }
}
