// A number of the HF pressure panel below its title.
import QtQuick
import Velmora

Rectangle {
    id: cell

    required property string title
    property alias target: number.target
    property alias format: number.format
    property alias nothing: number.nothing
    property alias still: number.still
    property alias tint: number.color
    readonly property string text: number.text

    height: 44
    radius: 4
    color: "#131313"
    border.color: "#1f1f1f"
    Accessible.role: Accessible.StaticText
    Accessible.name: title + " " + format(target)  // and no steps on the way

    Label {
        x: 8
        y: 4
        text: cell.title
        color: Qt.rgba(1, 1, 1, 0.53)
        Accessible.ignored: true
    }
    TweenNumber {
        id: number
        x: 8
        y: 21
        coarse: true
        font: Qt.font({ family: Theme.family, pixelSize: 15, weight: Font.DemiBold })
        Accessible.ignored: true
    }
}
