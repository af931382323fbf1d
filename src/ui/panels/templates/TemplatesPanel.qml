// The saved templates of the chart's symbol and source: three slots to load from and to save to.
import QtQuick
import Velmora

FloatingPanel {
    id: panel

    required property TemplatesViewModel templates
    readonly property var slotRows: templates.slotRows
    readonly property bool anySaved: slotRows.some(row => row.present)
    readonly property bool narrow: width < 320
    readonly property bool tellsFailure: templates.failed && !templates.busy
    readonly property string hint: {  // while there is nothing to tell
        if (templates.pair === "")
            return qsTr("Open a chart to keep templates of it.");
        if (templates.loading && !templates.known)
            return qsTr("Loading…");
        return templates.known && !anySaved ? qsTr("Save keeps this chart's settings and view.") : "";
    }

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
                            Accessible.name: qsTr("Slot %1: %2").arg(row.slot.digit).arg(starTip.text)

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
                            anchors.leftMargin: panel.narrow ? 8 : 12
                            anchors.right: buttons.left
                            anchors.rightMargin: 8
                            anchors.verticalCenter: parent.verticalCenter

                            HoverHandler {
                                id: wordsHover
                            }
                            Tip {
                                wanted: wordsHover.hovered && (slotName.truncated || slotDate.truncated)
                                text: slotName.text + "\n" + slotDate.text
                            }
                            Label {
                                id: slotName
                                width: parent.width
                                elide: Text.ElideRight
                                font.weight: Font.DemiBold
                                color: row.slot.present ? Theme.text : Theme.textSoft
                                text: qsTr("Slot %1").arg(row.slot.digit)
                            }
                            Label {
                                id: slotDate
                                objectName: "templateDate" + row.slot.digit
                                width: parent.width
                                elide: Text.ElideRight
                                font.pixelSize: Theme.small
                                color: row.slot.present ? Theme.textSoft : Theme.textFaint
                                text: panel.templates.known ? row.slot.date : "–"
                                Accessible.role: Accessible.StaticText
                                Accessible.name: panel.templates.known ? text : qsTr("not known yet")
                            }
                        }
                        Row {
                            id: buttons
                            anchors.right: parent.right
                            anchors.verticalCenter: parent.verticalCenter
                            spacing: panel.narrow ? 4 : 8
                            opacity: panel.templates.busy ? 0.5 : 1  // they keep the keyboard, and do nothing meanwhile

                            PushButton {
                                objectName: "loadTemplate" + row.slot.digit
                                width: panel.narrow ? 52 : 64
                                height: 32
                                leftPadding: 4
                                rightPadding: 4
                                enabled: row.slot.present
                                text: qsTr("Load")
                                Accessible.name: qsTr("Load slot %1").arg(row.slot.digit)
                                onClicked: panel.templates.load(row.slot.key)
                            }
                            PushButton {
                                objectName: "saveTemplate" + row.slot.digit
                                width: panel.narrow ? 52 : 64
                                height: 32
                                leftPadding: 4
                                rightPadding: 4
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
                    id: foot

                    readonly property bool stacked: panel.narrow && again.visible
                    width: parent.width
                    height: Math.max(40, said.implicitHeight + 16) + (stacked ? again.height + 8 : 0)

                    Icon {
                        id: sign
                        objectName: "templateSign"
                        visible: panel.tellsFailure
                        anchors.verticalCenter: said.verticalCenter
                        name: "triangle-alert"
                        color: Theme.error
                    }
                    Label {
                        id: said
                        objectName: "templateStatus"
                        anchors.left: sign.visible ? sign.right : parent.left
                        anchors.leftMargin: sign.visible ? 8 : 0
                        anchors.right: foot.stacked ? parent.right : again.visible ? again.left : pair.left
                        anchors.rightMargin: foot.stacked ? 0 : 8
                        anchors.verticalCenter: parent.verticalCenter
                        anchors.verticalCenterOffset: foot.stacked ? -(again.height + 8) / 2 : 0
                        wrapMode: Text.Wrap
                        maximumLineCount: 4
                        elide: Text.ElideRight
                        font.pixelSize: Theme.small
                        color: panel.tellsFailure ? Theme.error
                                                  : panel.templates.busy || panel.templates.status === "" ? Theme.textSoft
                                                                                                          : Theme.accent
                        text: panel.templates.busy ? qsTr("Saving…")
                                                   : panel.templates.status !== "" ? panel.templates.status : panel.hint
                        Accessible.role: Accessible.AlertMessage
                        Accessible.name: text

                        HoverHandler {
                            id: saidHover
                        }
                        Tip {
                            wanted: saidHover.hovered && said.truncated
                            text: said.text
                        }
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
                        anchors.bottom: parent.bottom
                        anchors.bottomMargin: foot.stacked ? 8 : (foot.height - height) / 2
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
