// The paper account: what it is worth, the ticket, what is held and rests, and what the trades brought.
import QtQuick
import QtQuick.Templates as T
import QtQuick.Window
import Velmora

FloatingPanel {
    id: panel

    required property SimViewModel sim
    signal allAsked(string kind)

    panelId: "sim"
    title: sim.title
    defaultSize: Qt.size(360, 380)
    minSize: Qt.size(360, 320)
    mostWidth: 560

    Binding {
        target: panel.sim
        property: "shown"
        value: panel.open && panel.Window.visibility !== Window.Hidden && panel.Window.visibility !== Window.Minimized
    }

    body: Component {
        FocusScope {
            Label {
                objectName: "simNone"
                anchors.fill: parent
                anchors.margins: 24
                visible: text !== ""
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                wrapMode: Text.Wrap
                color: Theme.textSoft
                text: panel.sim.empty
            }
            Flickable {
                id: view
                objectName: "simView"

                // What is above a card may come and go; the card that one looks at stays where it is.
                property Item held: null
                property real heldAt: 0
                property bool settling: false
                readonly property Item focused: Window.activeFocusItem

                function hold() {
                    if (settling)
                        return;
                    held = null;
                    for (let i = 0; i < column.children.length && !held; ++i) {
                        const card = column.children[i];
                        if (card.visible && card.y + card.height > contentY)
                            held = card;
                    }
                    heldAt = held && contentY > 0 ? contentY - held.y : 0;
                }
                function settle() {
                    if (!held || contentY <= 0)
                        return;
                    settling = true;
                    contentY = Math.max(0, Math.min(held.y + heldAt, contentHeight - height));
                    settling = false;
                }
                function reveal(item) {
                    const top = item.mapToItem(column, 0, 0).y;
                    contentY = Math.max(0, Math.min(top - 12, Math.max(contentY, top + item.height + 12 - height)));
                }

                anchors.top: parent.top
                anchors.bottom: notice.top
                width: parent.width
                visible: panel.sim.empty === ""
                enabled: visible
                contentHeight: column.height + 32
                clip: true
                boundsBehavior: Flickable.StopAtBounds
                onContentYChanged: hold()
                onFocusedChanged: {
                    let control = focused;  // within a number field it is the text that has the keyboard
                    while (control && control.focusReason === undefined)
                        control = control.parent;
                    if (!control || ![Qt.TabFocusReason, Qt.BacktabFocusReason].includes(control.focusReason))
                        return;
                    for (let item = focused; item; item = item.parent)
                        if (item === column)
                            return reveal(focused);
                }
                T.ScrollBar.vertical: T.ScrollBar {
                    id: bar
                    implicitWidth: 8
                    padding: 2
                    minimumSize: 0.1
                    visible: size < 1
                    contentItem: Rectangle {
                        implicitWidth: 4
                        radius: 2
                        color: bar.pressed ? Theme.textFaint : Theme.lineStrong
                    }
                }

                Column {
                    id: column
                    x: 10
                    y: 10
                    width: view.width - 20
                    spacing: 10
                    onPositioningComplete: view.settle()

                    SimAccountBar {
                        x: 2
                        width: parent.width - 4
                        sim: panel.sim
                    }
                    Notice {
                        objectName: "simProblem"
                        width: parent.width
                        visible: text !== ""
                        text: panel.sim.barred
                    }
                    Loader {
                        objectName: "simTicket"
                        x: 2
                        width: parent.width - 4
                        active: panel.sim.empty === ""
                        sourceComponent: panel.sim.marketClosed ? closed : ticket
                    }
                    SimPositions {
                        width: parent.width
                        sim: panel.sim
                    }
                    SimOrders {
                        width: parent.width
                        sim: panel.sim
                    }
                    SimPerformance {
                        width: parent.width
                        sim: panel.sim
                    }
                    SimRowsCard {
                        width: parent.width
                        title: panel.sim.historyHeading
                        sim: panel.sim
                        rows: panel.sim.history
                        kind: "trades"
                        onAllAsked: kind => panel.allAsked(kind)
                    }
                    SimRowsCard {
                        width: parent.width
                        title: qsTr("FILLS")
                        sim: panel.sim
                        rows: panel.sim.fills
                        kind: "fills"
                        onAllAsked: kind => panel.allAsked(kind)
                    }
                    SimReset {
                        width: parent.width
                        sim: panel.sim
                    }
                }
            }
            KeptKeyboard {
                id: keyboard
                cards: column
                pointed: panel.pointed
                onEmptied: panel.focusTitle()
            }
            Connections {
                target: panel.sim
                function onCardsChanged() {
                    keyboard.look();  // rows may have come before the one that has it
                }
            }
            Rectangle {  // why what was asked for was not done
                id: notice
                anchors.bottom: parent.bottom
                anchors.bottomMargin: 2  // the panel's own edge
                x: 2
                width: parent.width - 4
                height: said.text === "" ? 0 : said.implicitHeight + 16
                visible: height > 0
                color: Theme.raised
                Label {
                    id: said
                    objectName: "simNotice"
                    x: 12
                    y: 8
                    width: parent.width - 40
                    wrapMode: Text.Wrap
                    font.pixelSize: Theme.small
                    color: Theme.warning
                    text: panel.sim.notice
                    Accessible.role: Accessible.AlertMessage
                    Accessible.name: text
                }
            }
        }
    }
    Component {
        id: ticket
        SimTicketForm {
            sim: panel.sim
        }
    }
    Component {
        id: closed
        Rectangle {
            objectName: "simClosed"
            implicitHeight: 72
            radius: 8
            color: "#1d1a10"
            border.width: 1
            border.color: "#4a3f16"
            Accessible.role: Accessible.AlertMessage
            Accessible.name: heading.text + ". " + line.text
            Column {
                anchors.centerIn: parent
                spacing: 4
                Label {
                    id: heading
                    anchors.horizontalCenter: parent.horizontalCenter
                    font.weight: Font.DemiBold
                    font.pixelSize: 15
                    color: Theme.warning
                    text: qsTr("Market Closed")
                }
                Label {
                    id: line
                    anchors.horizontalCenter: parent.horizontalCenter
                    color: "#efe6c8"
                    text: qsTr("Trading resumes next session.")
                }
            }
        }
    }
}
