// The saved templates of the chart's symbol and source: three slots to load from and to save to.
import QtQuick
import Velmora

FloatingPanel {
    id: panel

    required property TemplatesViewModel templates
    readonly property var slotRows: templates.slotRows
    readonly property bool anySaved: slotRows.some(row => row.present)
    readonly property string hint: templates.pair === "" ? qsTr("Open a chart to keep templates of it.")
                                                         : templates.busy ? qsTr("Saving…")
                                                                          : templates.loading && !templates.known ? qsTr("Loading…")
                                                                                                                  : templates.known && !anySaved ? qsTr("Save keeps this chart's settings and view.")
                                                                                                                                                 : ""

    panelId: "templates"
    title: qsTr("Templates")
    defaultSize: Qt.size(344, 272)
    minSize: Qt.size(312, 120)
    autoFit: true

    body: Component {
        FocusScope {
            implicitHeight: column.implicitHeight + 24

            Column {
                id: column
                x: 16
                y: 8
                width: parent.width - 32

                Repeater {
                    model: 3  // always these, so that a fresh list takes the keyboard from no button
                    delegate: Item {
                        id: row

                        required property int index
                        readonly property var slot: panel.slotRows[index]

                        width: column.width
                        height: 48

                        Icon {
                            id: star
                            objectName: "templateStar" + row.slot.digit
                            anchors.verticalCenter: parent.verticalCenter
                            name: "star"
                            filled: row.slot.preferred
                            color: row.slot.preferred ? Theme.gold : Theme.textFaint
                            Accessible.role: Accessible.Graphic
                            Accessible.name: starTip.text

                            HoverHandler {
                                id: starHover
                                margin: 8
                            }
                            Tip {
                                id: starTip
                                wanted: starHover.hovered
                                text: row.slot.preferred ? qsTr("Preferred (auto-applied on load)")
                                                         : qsTr("Saving makes a slot preferred")
                            }
                        }
                        Column {
                            anchors.left: star.right
                            anchors.leftMargin: 12
                            anchors.right: buttons.left
                            anchors.rightMargin: 8
                            anchors.verticalCenter: parent.verticalCenter
                            Label {
                                width: parent.width
                                elide: Text.ElideRight
                                font.weight: Font.DemiBold
                                color: row.slot.present ? Theme.text : Theme.textSoft
                                text: qsTr("Slot %1").arg(row.slot.digit)
                            }
                            Label {
                                objectName: "templateDate" + row.slot.digit
                                width: parent.width
                                elide: Text.ElideRight
                                font.pixelSize: Theme.small
                                color: row.slot.present ? Theme.textSoft : Theme.textFaint
                                text: panel.templates.known ? row.slot.date : "–"
                            }
                        }
                        Row {
                            id: buttons
                            anchors.right: parent.right
                            anchors.verticalCenter: parent.verticalCenter
                            spacing: 8
                            opacity: panel.templates.busy ? 0.5 : 1  // they keep the keyboard, and do nothing meanwhile

                            PushButton {
                                objectName: "loadTemplate" + row.slot.digit
                                width: 64
                                height: 32
                                leftPadding: 8
                                rightPadding: 8
                                enabled: row.slot.present
                                text: qsTr("Load")
                                Accessible.name: qsTr("Load slot %1").arg(row.slot.digit)
                                onClicked: panel.templates.load(row.slot.key)
                            }
                            PushButton {
                                objectName: "saveTemplate" + row.slot.digit
                                width: 64
                                height: 32
                                leftPadding: 8
                                rightPadding: 8
                                enabled: panel.templates.pair !== ""
                                text: qsTr("Save")
                                Accessible.name: qsTr("Save to slot %1").arg(row.slot.digit)
                                onClicked: panel.templates.save(row.slot.key)
                            }
                        }
                        Rectangle {
                            anchors.bottom: parent.bottom
                            width: parent.width
                            height: 1
                            color: Theme.line
                        }
                    }
                }
                Item {
                    width: parent.width
                    height: Math.max(40, said.implicitHeight + 16)

                    Icon {
                        id: sign
                        visible: panel.templates.failed && panel.hint === ""
                        anchors.verticalCenter: parent.verticalCenter
                        name: "triangle-alert"
                        color: Theme.error
                    }
                    Label {
                        id: said
                        objectName: "templateStatus"
                        anchors.left: sign.visible ? sign.right : parent.left
                        anchors.leftMargin: sign.visible ? 8 : 0
                        anchors.right: again.visible ? again.left : pair.left
                        anchors.rightMargin: 8
                        anchors.verticalCenter: parent.verticalCenter
                        wrapMode: Text.Wrap
                        maximumLineCount: 4
                        elide: Text.ElideRight
                        font.pixelSize: Theme.small
                        color: panel.hint !== "" ? Theme.textSoft : panel.templates.failed ? Theme.error : Theme.accent
                        text: panel.hint !== "" ? panel.hint : panel.templates.status
                        Accessible.role: Accessible.AlertMessage
                        Accessible.name: text
                    }
                    Label {
                        id: pair
                        objectName: "templatePair"
                        visible: !again.visible
                        anchors.right: parent.right
                        anchors.verticalCenter: parent.verticalCenter
                        font.pixelSize: Theme.small
                        color: Theme.textFaint
                        text: panel.templates.pair.replace("_", " · ").slice(0, 18)
                    }
                    PushButton {
                        id: again
                        objectName: "templatesAgain"
                        visible: panel.templates.failed && !panel.templates.known && !panel.templates.loading
                        anchors.right: parent.right
                        anchors.verticalCenter: parent.verticalCenter
                        height: 32
                        leftPadding: 12
                        rightPadding: 12
                        text: qsTr("Try again")
                        onClicked: panel.templates.refresh()
                    }
                }
            }
        }
    }
}
