// What an order is entered with: a quantity, a bracket, and three rows of buttons.
import QtQuick
import Velmora

Column {
    id: form

    required property SimViewModel sim
    readonly property real buttonWidth: Math.floor(Math.min(104, (width - 16) * 0.3))

    readonly property string wrongText: qsTr("This is no price above 0")

    spacing: 8

    // What is said of a row: a price as it was read, what is wrong with it, or what a second press would do.
    component Said: Label {
        property int row
        readonly property bool asks: form.sim.questionRow === row
        readonly property bool wrong: row === 1 ? form.sim.limitWrong : row === 2 && form.sim.stopWrong
        objectName: "simSaid" + row
        width: form.width
        height: Math.max(row === 0 ? 0 : 16, implicitHeight)
        visible: row !== 0 || text !== ""
        wrapMode: Text.Wrap
        font.pixelSize: 11
        color: asks ? Theme.warning : wrong ? Theme.error : Theme.textSoft
        text: asks ? form.sim.question : wrong ? form.wrongText
                   : row === 1 ? form.sim.limitRead : row === 2 ? form.sim.stopRead : ""
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
    component Buttons: Row {
        id: buttons
        property int row
        property string suffix
        spacing: 8
        TradeButton {
            objectName: "simBuy" + buttons.row
            width: buttons.row === 0 ? (form.width - 8) / 2 : form.buttonWidth
            text: qsTr("BUY %1").arg(buttons.suffix)
            outlined: form.sim.warning !== ""
            barred: form.sim.barred
            asking: form.sim.questionRow === buttons.row && form.sim.questionBuys
            onPressedOnce: form.sim.press(true, buttons.row)
        }
        TradeButton {
            objectName: "simSell" + buttons.row
            width: buttons.row === 0 ? (form.width - 8) / 2 : form.buttonWidth
            buys: false
            text: qsTr("SELL %1").arg(buttons.suffix)
            outlined: form.sim.warning !== ""
            barred: form.sim.barred
            asking: form.sim.questionRow === buttons.row && !form.sim.questionBuys
            onPressedOnce: form.sim.press(false, buttons.row)
        }
    }

    Label {
        objectName: "simStale"
        width: parent.width
        visible: text !== ""
        wrapMode: Text.Wrap
        font.pixelSize: Theme.small
        color: Theme.warning
        text: form.sim.warning
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
    Item {
        width: parent.width
        height: 30
        Label {
            id: qtyCaption
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            color: Theme.textSoft
            text: qsTr("Qty")
            Accessible.ignored: true
        }
        NumberField {
            objectName: "simQty"
            x: qtyCaption.width + 10
            name: qsTr("Quantity")
            from: 1
            to: form.sim.mostQty
            value: form.sim.qty
            onValueModified: form.sim.qty = value
        }
        CheckField {
            objectName: "simBracket"
            anchors.right: parent.right
            height: parent.height
            text: qsTr("Bracket")
            checked: form.sim.bracketOn
            onToggled: form.sim.bracketOn = checked
        }
    }
    Flow {
        width: parent.width
        spacing: 8
        visible: form.sim.bracketOn
        Row {
            spacing: 6
            Label {
                height: 30
                verticalAlignment: Text.AlignVCenter
                color: Theme.textSoft
                text: "SL"
                Accessible.ignored: true
            }
            NumberField {
                objectName: "simSlTicks"
                name: qsTr("Stop distance")
                width: 92
                to: form.sim.mostDistance
                value: form.sim.slTicks
                onValueModified: form.sim.slTicks = value
            }
        }
        Row {
            spacing: 6
            Label {
                height: 30
                verticalAlignment: Text.AlignVCenter
                color: Theme.textSoft
                text: "TP"
                Accessible.ignored: true
            }
            NumberField {
                objectName: "simTpTicks"
                name: qsTr("Target distance")
                width: 92
                to: form.sim.mostDistance
                value: form.sim.tpTicks
                onValueModified: form.sim.tpTicks = value
            }
        }
        Label {
            height: 30
            verticalAlignment: Text.AlignVCenter
            color: Theme.textFaint
            text: form.sim.useTicks ? qsTr("ticks") : qsTr("points")
        }
        Row {
            spacing: 16
            CheckField {
                objectName: "simTicks"
                height: 30
                text: qsTr("Ticks")
                checked: form.sim.useTicks
                onToggled: form.sim.useTicks = true
            }
            CheckField {
                objectName: "simPoints"
                height: 30
                text: qsTr("Points")
                checked: !form.sim.useTicks
                onToggled: form.sim.useTicks = false
            }
        }
    }
    Column {
        width: parent.width
        spacing: 4
        Buttons {
            row: 0
            suffix: "MKT"
        }
        Said {
            row: 0
        }
    }
    Column {
        width: parent.width
        spacing: 2
        Row {
            spacing: 8
            PriceField {
                objectName: "simLimit"
                width: form.width - 2 * form.buttonWidth - 16
                prompt: qsTr("limit price")
                text: form.sim.limitText
                problem: form.sim.limitWrong ? form.wrongText : ""
                onTyped: text => form.sim.limitText = text
                onStepped: ticks => form.sim.stepPrice(1, ticks)
            }
            Buttons {
                row: 1
                suffix: "LMT"
            }
        }
        Said {
            row: 1
        }
    }
    Column {
        width: parent.width
        spacing: 2
        Row {
            spacing: 8
            PriceField {
                objectName: "simStop"
                width: form.width - 2 * form.buttonWidth - 16
                prompt: qsTr("stop price")
                text: form.sim.stopText
                problem: form.sim.stopWrong ? form.wrongText : ""
                onTyped: text => form.sim.stopText = text
                onStepped: ticks => form.sim.stepPrice(2, ticks)
            }
            Buttons {
                row: 2
                suffix: "STP"
            }
        }
        Said {
            row: 2
        }
    }
}
