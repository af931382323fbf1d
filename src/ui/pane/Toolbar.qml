// The row above a chart: what it shows, what can be done, how the connection stands. What has no room folds from the
// right into a menu.
import QtQuick
import Velmora

Rectangle {
    id: bar

    required property SessionViewModel session
    required property ToolbarViewModel choices
    required property WindowViewModel view
    property bool inSecondPlace: false
    property bool marked: false
    property ShellViewModel shell: null
    readonly property ActionsViewModel actions: view.actions

    // In the order of the row; an action's state is that of its icon.
    readonly property var tools: [
        { id: "expiration" }, { id: "gexSource" }, { id: "gex3D", icon: "box" }, { id: "hfPressure", icon: "activity" },
        { id: "templates", icon: "bookmark" }, { id: "settings", icon: "settings" }, { id: "reload", icon: "rotate-cw" },
        { id: "account", icon: "circle-user" }, { id: "dual", icon: "columns-2" }, { id: "sync", icon: "arrow-left-right" },
        { id: "simPanel", icon: "circle-dollar-sign" }, { id: "newWindow", icon: "plus" },
        { id: "chartKey", icon: "circle-help" }
    ]
    readonly property var offered: tools.filter(tool => tool.id === "sync" ? view.dual !== null
                                                        : tool.id === "simPanel" ? choices.on.simEnabled === true : true)
    readonly property int iconStep: 32  // an icon and the gap after it
    readonly property bool tellsStatus: width >= 560  // below it the lamp alone tells
    readonly property real statusRoom: tellsStatus ? Math.min(status.implicitWidth, 110) + Theme.gap : 0
    readonly property real room: width - choiceRow.width - statusRoom - 8 - 5 * Theme.gap
    readonly property int shownTools: {
        const sizes = offered.map(tool => tool.id === "expiration" ? expirations.implicitWidth + 4
                                          : tool.id === "gexSource" ? source.implicitWidth + 4 : iconStep);
        let sum = 0, fit = 0;
        const all = sizes.reduce((one, other) => one + other, 0);
        const most = all <= room ? room : room - iconStep;
        while (fit < sizes.length && sum + sizes[fit] <= most)
            sum += sizes[fit++];
        return fit;
    }
    readonly property var shownIds: offered.slice(0, shownTools).map(tool => tool.id)
    readonly property var foldedIds: offered.slice(shownTools).map(tool => tool.id)

    // Where the middle of each control is that has room.
    readonly property var places: {
        const out = {};
        for (const row of [choiceRow, toolRow]) {
            for (let i = 0; i < row.children.length; ++i) {
                const item = row.children[i];
                if (item.visible && item.objectName !== "")
                    out[item.objectName] = row.x + item.x + item.width / 2;
            }
        }
        return out;
    }

    onPlacesChanged: choices.tellShown(places, foldedIds)
    Component.onCompleted: choices.tellShown(places, foldedIds)
    function key(id) {
        return actions ? actions.keys[id] || "" : "";
    }
    function title(id) {
        return actions ? actions.titles[id] || "" : "";
    }
    function run(id) {
        if (actions)
            actions.run(id, inSecondPlace);
    }
    function isOn(id) {
        return id === "dual" ? view.dual !== null : id === "sync" ? view.sync : choices.on[id] === true;
    }
    function barred(id) {
        return actions && id === "gex3D" ? actions.obstacle(id, inSecondPlace) : "";
    }
    function textOf(id) {
        if (id === "dual")
            return view.dual ? qsTr("One chart") : qsTr("Two charts side by side");
        if (id === "sync")
            return view.sync ? qsTr("Sync ON — click to disable") : qsTr("Sync charts");
        return title(id);
    }
    function openSymbols() {
        symbols.open();
    }

    // What is folded, as rows of a menu.
    function foldedRows() {
        const rows = [];
        for (const id of foldedIds) {
            if (id === "expiration") {
                rows.push({ label: qsTr("EXPIRATION"), heading: true });
                for (const option of expirations.options)
                    rows.push({ label: option.label, value: "expiration " + option.value, on: option.value === choices.expiration });
                rows.push({ separator: true });
            } else if (id === "gexSource") {
                rows.push({ label: qsTr("GEX source: %1").arg(choices.gexSource), value: id, key: key(id) });
            } else {
                rows.push({ label: textOf(id), value: id, key: key(id), on: isOn(id), barred: barred(id) !== "" });
            }
        }
        return rows;
    }
    function takeFolded(value) {
        if (value.startsWith("expiration "))
            choices.setExpiration(value.slice(11));
        else
            run(value);
    }

    implicitHeight: 44
    color: Theme.surface

    component Line: Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: 1
        height: 18
        color: Theme.lineStrong
    }

    Row {
        id: choiceRow
        anchors.left: parent.left
        anchors.leftMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        spacing: 4

        Loader {
            objectName: "menu"
            active: bar.shell !== null
            visible: active
            sourceComponent: AppMenu {
                objectName: "menuButton"
                shell: bar.shell
                actions: bar.actions
            }
        }
        SairaMenu {
            id: symbolButton
            objectName: "symbol"
            text: bar.choices.symbol === "" ? qsTr("Symbol") : bar.choices.symbol
            ownList: symbols
            Accessible.name: qsTr("Symbol: %1").arg(text)
            tip: qsTr("Symbol") + (bar.key("symbol") !== "" ? " (" + bar.key("symbol") + ")" : "")

            PickList {
                id: symbols
                objectName: "symbolMenu"
                y: symbolButton.height + 4
                width: Math.min(280, bar.width - 24)
                mostHeight: Math.min(420, symbolButton.Window.height - 64)
                prompt: qsTr("Symbol or contract")
                nothing: qsTr("No such symbol")
                provider: typed => bar.actions ? bar.actions.symbols(typed, bar.inSecondPlace) : []
                onChosen: value => bar.actions.take(value, bar.inSecondPlace)
            }
        }
        Line {}
        SairaMenu {
            objectName: "timeframe"
            options: [1, 2, 3, 5, 15, 30, 60].map((minutes, i) => ({ label: minutes + "m", value: minutes, key: bar.key("timeframe" + minutes) }))
            selection: bar.choices.timeframe
            placeholder: bar.choices.timeframe + "m"
            listWidth: 112
            font.weight: Font.Normal
            Accessible.name: qsTr("Timeframe: %1").arg(text)
            tip: qsTr("Timeframe")
            onChosen: value => bar.choices.setTimeframe(value)
        }
    }
    Row {
        id: toolRow
        objectName: "tools"
        anchors.left: choiceRow.right
        anchors.leftMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2

        SairaMenu {
            id: expirations
            objectName: "expiration"
            visible: bar.shownIds.includes("expiration")
            enabled: bar.choices.expirations.length > 0
            options: [{ label: qsTr("All expirations"), value: "" }].concat(
                bar.choices.expirations.map((iso, i) => ({ label: bar.choices.expirationLabels[i], value: iso })))
            selection: bar.choices.expiration
            text: bar.choices.expirationText
            listWidth: 176
            font.weight: Font.Normal
            Accessible.name: qsTr("Expiration: %1").arg(text)
            tip: qsTr("Expiration of the options")
            onChosen: value => bar.choices.setExpiration(value)
        }
        SairaMenu {
            id: source
            objectName: "gexSource"
            visible: bar.shownIds.includes("gexSource")
            text: bar.choices.gexSource
            font.weight: Font.Normal
            isMenu: false
            Accessible.name: qsTr("GEX source: %1").arg(text)
            tip: qsTr("GEX source: ETF / Index / Both") + (bar.key("gexSource") !== "" ? " (" + bar.key("gexSource") + ")" : "")
            onPressedPlain: bar.run("gexSource")
        }
        Repeater {
            model: bar.tools.slice(2)
            IconButton {
                required property var modelData
                objectName: modelData.id
                visible: bar.shownIds.includes(modelData.id)
                text: bar.textOf(modelData.id)
                icon24: modelData.icon
                key: bar.key(modelData.id)
                active: bar.isOn(modelData.id)
                barred: bar.barred(modelData.id)
                onClicked: if (barred === "") bar.run(modelData.id)
            }
        }
        IconButton {
            id: more
            objectName: "more"
            visible: bar.foldedIds.length > 0
            text: qsTr("More")
            icon24: "ellipsis"
            active: folded.visible
            tipHeld: folded.visible
            Accessible.role: Accessible.ButtonMenu
            Keys.onDownPressed: openFolded()
            onClicked: folded.visible ? folded.close() : openFolded()
            function openFolded() {
                folded.rows = bar.foldedRows();
                folded.open();
            }

            PopupList {
                id: folded
                objectName: "folded"
                width: 236
                onChosen: value => bar.takeFolded(value)
            }
        }
    }
    Label {
        id: status
        objectName: "status"
        anchors.right: lamp.left
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        width: Math.max(0, Math.min(implicitWidth, lamp.x - toolRow.x - toolRow.width - 2 * Theme.gap))
        visible: bar.tellsStatus
        text: bar.session.status
        color: Theme.textSoft
        font.pixelSize: Theme.small
        elide: Text.ElideRight
    }
    Rectangle {
        id: lamp
        objectName: "lamp"
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        width: 8
        height: 8
        radius: 4
        Accessible.role: Accessible.StaticText
        Accessible.name: bar.session.status
        color: bar.session.connLimited ? Theme.error : bar.session.connected ? Theme.accent : Theme.warning
        HoverHandler {
            id: overLamp
            margin: 8
        }
        Tip {
            text: bar.session.status
            wanted: overLamp.hovered
        }
    }
    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: bar.marked ? Theme.accent : Theme.line
    }
}
