// Every mark of the chart by name, beside a sample that the chart's own layers draw.
import QtQuick
import Velmora

FocusScope {
    id: page

    required property PaneViewModel pane

    function start() {
        rows.forceActiveFocus();
    }

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Marks")

    MarkSampleItem {
        id: samples
        objectName: "markSamples"
        width: sampleSize.width
        height: rows.height
        pane: page.pane
        contentY: rows.contentY
    }
    ScrollRows {
        id: rows
        objectName: "markRows"
        anchors.fill: parent
        name: page.Accessible.name
        model: samples.marks
        delegate: Item {
            id: row
            required property var modelData
            width: rows.width - 8
            height: samples.rowHeight
            Accessible.role: Accessible.ListItem
            Accessible.name: modelData.name + ": " + modelData.meaning

            Rectangle {
                y: (parent.height - height) / 2
                width: samples.sampleSize.width
                height: samples.sampleSize.height
                color: "transparent"
                border.width: 1
                border.color: Theme.line
            }
            Column {
                anchors.verticalCenter: parent.verticalCenter
                x: samples.sampleSize.width + 16
                width: parent.width - x
                spacing: 2
                Label {
                    width: parent.width
                    wrapMode: Text.Wrap
                    font.weight: Font.DemiBold
                    text: row.modelData.name
                }
                Label {
                    width: parent.width
                    wrapMode: Text.Wrap
                    maximumLineCount: 3
                    elide: Text.ElideRight
                    color: Theme.textSoft
                    font.pixelSize: Theme.small
                    text: row.modelData.meaning
                }
            }
        }
    }
}
