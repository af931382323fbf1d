// The part of a pane that its floating panels keep to; they are its children. It lets the pointer through.
import QtQuick

Item {
    id: space

    property int topmost: 0
    signal vacated  // a panel has closed that had the keyboard

    function raise(panel) {
        if (panel.z < topmost || topmost === 0)
            panel.z = ++topmost;
    }
    // Closes the panel in front; false where none is open.
    function closeFront() {
        let front = null;
        for (let i = 0; i < children.length; ++i)
            if (children[i].open && (!front || children[i].z > front.z))
                front = children[i];
        if (front)
            front.close();
        return front !== null;
    }
}
