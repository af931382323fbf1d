// A small picker of colours: hue, saturation and lightness, the hexadecimal digits, and eight swatches.
import QtQuick
import QtQuick.Templates as T

T.Popup {
    id: picker

    property string title
    property string hex  // what is picked now
    property real hue: 0  // of 1; kept while a grey has none
    property real saturation: 0
    property real lightness: 0
    readonly property var swatches: ["#26a69a", "#ef5350", "#00bcd4", "#ff7a00", "#00e5ff", "#ffc208", "#b388ff", "#ffffff"]
    signal picked(string hex)
    signal gestureBegan
    signal gestureEnded

    function digits(color) {
        return color.toString().slice(0, 7);
    }
    function read() {
        const color = Qt.color(hex);
        if (digits(Qt.hsla(hue, saturation, lightness, 1)) === hex.toLowerCase())
            return;
        if (color.hslHue >= 0 && color.hslSaturation > 0)
            hue = color.hslHue;
        saturation = color.hslSaturation;
        lightness = color.hslLightness;
    }
    function pick(h, s, l) {
        const within = value => Math.max(0, Math.min(1, value));
        hue = within(h);
        saturation = within(s);
        lightness = within(l);
        picked(digits(Qt.hsla(hue, saturation, lightness, 1)));
    }
    function stepOf(event) {
        return (event.modifiers & Qt.ShiftModifier ? 10 : 1) / 100;
    }

    x: parent.width - width
    y: parent.height + 4
    width: 216
    height: contentItem.implicitHeight + 2 * padding
    padding: 12
    margins: 8
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
    onAboutToShow: read()
    onHexChanged: if (visible) read()
    onOpened: field.forceActiveFocus(Qt.TabFocusReason)
    onClosed: gestureEnded()

    background: Rectangle {
        radius: 8
        color: Theme.surface
        border.width: 1
        border.color: Theme.lineStrong
    }

    component FocusRing: Rectangle {
        anchors.fill: parent
        anchors.margins: -3
        radius: 6
        color: "transparent"
        border.width: 2
        border.color: Theme.focus
    }

    contentItem: Column {
        spacing: 12
        Accessible.role: Accessible.Dialog
        Accessible.name: picker.title

        Item {  // saturation to the right, lightness upwards
            id: field
            objectName: "saturationAndLightness"
            width: parent.width
            height: 128
            activeFocusOnTab: true
            Accessible.role: Accessible.ColorChooser
            Accessible.name: qsTr("Saturation and lightness")
            Accessible.description: qsTr("%1 % and %2 %").arg(Math.round(picker.saturation * 100)).arg(Math.round(picker.lightness * 100))
            Keys.onPressed: event => {
                const right = (event.key === Qt.Key_Right) - (event.key === Qt.Key_Left);
                const up = (event.key === Qt.Key_Up) - (event.key === Qt.Key_Down);
                if (right === 0 && up === 0)
                    return;
                event.accepted = true;
                picker.gestureBegan();
                const step = picker.stepOf(event);
                picker.pick(picker.hue, picker.saturation + right * step, picker.lightness + up * step);
            }
            Keys.onReleased: event => {
                if (!event.isAutoRepeat)
                    picker.gestureEnded();
            }
            onActiveFocusChanged: if (!activeFocus) picker.gestureEnded()

            Rectangle {
                anchors.fill: parent
                radius: 4
                gradient: Gradient {
                    orientation: Gradient.Horizontal
                    GradientStop { position: 0; color: "#808080" }
                    GradientStop { position: 1; color: Qt.hsla(picker.hue, 1, 0.5, 1) }
                }
            }
            Rectangle {
                anchors.fill: parent
                radius: 4
                gradient: Gradient {
                    GradientStop { position: 0; color: "#ffffffff" }
                    GradientStop { position: 0.5; color: "#00ffffff" }
                    GradientStop { position: 0.501; color: "#00000000" }
                    GradientStop { position: 1; color: "#ff000000" }
                }
            }
            FocusRing {
                visible: field.activeFocus
            }
            Rectangle {
                x: picker.saturation * field.width - width / 2
                y: (1 - picker.lightness) * field.height - height / 2
                width: 12
                height: 12
                radius: 6
                color: picker.hex
                border.width: 2
                border.color: picker.lightness > 0.6 ? "#0a0a0a" : "white"
            }
            MouseArea {
                function move(mouse) {
                    picker.pick(picker.hue, mouse.x / width, 1 - mouse.y / height);
                }
                anchors.fill: parent
                preventStealing: true
                onPressed: mouse => {
                    field.forceActiveFocus(Qt.MouseFocusReason);
                    picker.gestureBegan();
                    move(mouse);
                }
                onPositionChanged: mouse => move(mouse)
                onReleased: picker.gestureEnded()
                onCanceled: picker.gestureEnded()
            }
        }
        Item {
            id: hues
            objectName: "hue"
            readonly property real value: Math.round(picker.hue * 360)  // for screen readers, with the three below
            readonly property real minimumValue: 0
            readonly property real maximumValue: 360
            readonly property real stepSize: 1
            width: parent.width
            height: 16
            activeFocusOnTab: true
            Accessible.role: Accessible.Slider
            Accessible.name: qsTr("Hue")
            Keys.onPressed: event => {
                const by = (event.key === Qt.Key_Right || event.key === Qt.Key_Up) - (event.key === Qt.Key_Left || event.key === Qt.Key_Down);
                if (by === 0 && event.key !== Qt.Key_Home && event.key !== Qt.Key_End)
                    return;
                event.accepted = true;
                picker.gestureBegan();
                picker.pick(by === 0 ? (event.key === Qt.Key_End ? 1 : 0) : picker.hue + by * picker.stepOf(event),
                            picker.saturation, picker.lightness);
            }
            Keys.onReleased: event => {
                if (!event.isAutoRepeat)
                    picker.gestureEnded();
            }
            onActiveFocusChanged: if (!activeFocus) picker.gestureEnded()

            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width
                height: 8
                radius: 4
                gradient: Gradient {
                    orientation: Gradient.Horizontal
                    GradientStop { position: 0; color: "#ff0000" }
                    GradientStop { position: 1 / 6; color: "#ffff00" }
                    GradientStop { position: 2 / 6; color: "#00ff00" }
                    GradientStop { position: 3 / 6; color: "#00ffff" }
                    GradientStop { position: 4 / 6; color: "#0000ff" }
                    GradientStop { position: 5 / 6; color: "#ff00ff" }
                    GradientStop { position: 1; color: "#ff0000" }
                }
            }
            FocusRing {
                visible: hues.activeFocus
            }
            Rectangle {
                x: picker.hue * hues.width - width / 2
                anchors.verticalCenter: parent.verticalCenter
                width: 14
                height: 14
                radius: 7
                color: Qt.hsla(picker.hue, 1, 0.5, 1)
                border.width: 2
                border.color: "white"
            }
            MouseArea {
                function move(mouse) {
                    picker.pick(mouse.x / width, picker.saturation, picker.lightness);
                }
                anchors.fill: parent
                preventStealing: true
                onPressed: mouse => {
                    hues.forceActiveFocus(Qt.MouseFocusReason);
                    picker.gestureBegan();
                    move(mouse);
                }
                onPositionChanged: mouse => move(mouse)
                onReleased: picker.gestureEnded()
                onCanceled: picker.gestureEnded()
            }
        }
        Row {
            width: parent.width
            spacing: 8
            Rectangle {
                width: 24
                height: 24
                radius: 4
                color: picker.hex
                border.width: 1
                border.color: Qt.rgba(1, 1, 1, 0.2)
            }
            T.TextField {
                id: entry
                objectName: "hexEntry"
                readonly property bool bad: !/^#?[0-9a-f]{6}$/i.test(text.trim())

                property bool edited: false  // what stands there is the person's

                function take() {
                    const typed = text.trim().toLowerCase();
                    if (!bad && edited)
                        picker.picked(typed.startsWith("#") ? typed : "#" + typed);
                }

                width: parent.width - 32
                height: 24
                leftPadding: 8
                verticalAlignment: TextInput.AlignVCenter
                font.family: Theme.family
                font.pixelSize: Theme.small
                color: bad ? Theme.error : Theme.text
                selectionColor: Theme.accentPressed
                selectedTextColor: "white"
                renderType: Text.NativeRendering
                selectByMouse: true
                maximumLength: 9
                Accessible.name: qsTr("Hexadecimal digits")
                text: picker.hex.toLowerCase()
                onTextEdited: edited = true
                onAccepted: take()
                Keys.onEscapePressed: event => {
                    edited = false;
                    event.accepted = false;
                }
                onActiveFocusChanged: {
                    if (activeFocus)
                        return selectAll();
                    take();
                    edited = false;
                    text = Qt.binding(() => picker.hex.toLowerCase());
                }
                background: Rectangle {
                    radius: 4
                    color: Theme.background
                    border.width: entry.activeFocus ? 2 : 1
                    border.color: entry.bad ? Theme.error : entry.activeFocus ? Theme.focus : Theme.line
                }
            }
        }
        Row {
            spacing: 4
            Repeater {
                model: picker.swatches
                T.Button {
                    id: swatch
                    required property string modelData
                    objectName: "swatch " + modelData
                    width: 20.5
                    height: 20
                    focusPolicy: Qt.TabFocus
                    Accessible.name: modelData
                    Keys.onReturnPressed: clicked()
                    Keys.onEnterPressed: clicked()
                    onClicked: picker.picked(modelData)
                    background: Rectangle {
                        radius: 4
                        color: swatch.modelData
                        border.width: swatch.visualFocus ? 2 : swatch.modelData === picker.hex.toLowerCase() ? 2 : 0
                        border.color: swatch.visualFocus ? Theme.focus : "white"
                    }
                }
            }
        }
    }
}
