// Rows to be read: they scroll by wheel, drag and keys.
import QtQuick
import Velmora

ListView {
    id: rows

    required property string name

    function scrollBy(points) {
        contentY = originY + Math.max(0, Math.min(contentHeight - height, contentY - originY + points));
    }

    clip: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    keyNavigationEnabled: false
    Accessible.role: Accessible.List
    Accessible.name: name
    Keys.onPressed: event => {
        const by = { [Qt.Key_Down]: 60, [Qt.Key_Up]: -60, [Qt.Key_PageDown]: height - 30, [Qt.Key_PageUp]: 30 - height,
                     [Qt.Key_Home]: -contentHeight, [Qt.Key_End]: contentHeight }[event.key];
        if (by === undefined)
            return;
        scrollBy(by);
        event.accepted = true;
    }

    Rectangle {
        parent: rows.parent
        x: rows.width - 3
        y: rows.y + rows.visibleArea.yPosition * rows.height
        width: 3
        height: rows.visibleArea.heightRatio * rows.height
        radius: 1.5
        color: rows.activeFocus ? Theme.focus : Theme.lineStrong
        visible: rows.contentHeight > rows.height
    }
}
