// The field of bars: it draws when something has changed, and takes the pointer's and the keyboard's gestures.
import QtQuick
import QtQuick.Templates as T
import QtQuick3D
import Velmora
import Velmora.Surface3D

T.Control {
    id: scene

    required property Gex3DViewModel surface

    Accessible.role: Accessible.Graphic
    Accessible.name: qsTr("Net gamma by strike and expiration")
    Accessible.description: qsTr("Arrow keys turn it, plus and minus move the camera, Home is the first view")
    focusPolicy: Qt.TabFocus

    Keys.onPressed: event => {
        const step = 20, near = 12;
        const turns = {
            [Qt.Key_Left]: [step, 0], [Qt.Key_Right]: [-step, 0], [Qt.Key_Up]: [0, step], [Qt.Key_Down]: [0, -step]
        }[event.key];
        if (event.modifiers & ~(Qt.KeypadModifier | Qt.ShiftModifier))
            return;
        if (turns)
            surface.orbit(turns[0], turns[1]);
        else if (event.key === Qt.Key_Plus || event.key === Qt.Key_Equal)
            surface.dolly(near);
        else if (event.key === Qt.Key_Minus)
            surface.dolly(-near);
        else if (event.key === Qt.Key_Home)
            surface.home();
        else
            return;
        focusReason = Qt.TabFocusReason;  // whose hand is on the keys sees where they go
        event.accepted = true;
    }

    View3D {
        anchors.fill: parent
        visible: !scene.surface.loading
        environment: SceneEnvironment {
            backgroundMode: SceneEnvironment.Transparent
            antialiasingMode: scene.surface.manySamples ? SceneEnvironment.MSAA : SceneEnvironment.NoAA
            antialiasingQuality: SceneEnvironment.High  // four samples
        }
        camera: camera

        PerspectiveCamera {
            id: camera
            position: scene.surface.cameraPosition
            rotation: scene.surface.cameraRotation
            fieldOfView: scene.surface.fieldOfView
            clipNear: 1
            clipFar: 2000
        }
        DirectionalLight {
            eulerRotation: Qt.vector3d(-60, 45, 0)
            brightness: 1.15
            ambientColor: Qt.rgba(0.45, 0.45, 0.45, 1)
        }
        DirectionalLight {  // the main one strikes both sides that face the first view alike
            eulerRotation: Qt.vector3d(0, 80, 0)
            brightness: 0.3
        }
        Node {
            eulerRotation.y: scene.surface.angle

            component Matt: DefaultMaterial {
                specularAmount: 0
            }
            Model {
                source: "#Cube"
                instancing: Gex3DBars {
                    surface: scene.surface
                    positive: true
                }
                materials: Matt {}
            }
            Model {
                source: "#Cube"
                instancing: Gex3DBars {
                    surface: scene.surface
                }
                materials: Matt {}
            }
            Model {
                source: "#Cube"
                position: Qt.vector3d(0, -0.2, 0)
                scale: Qt.vector3d(2.04, 0.003, 1.24)
                materials: Matt {
                    diffuseColor: Qt.rgba(0.09, 0.1, 0.12, 1)
                }
            }
            Model {
                source: "#Cube"
                position: scene.surface.markerPlace
                scale: Qt.vector3d(0.012, 0.012, 1.2)
                materials: Matt {
                    diffuseColor: Qt.rgba(1, 0.843, 0, 1)
                    opacity: 0.55
                }
            }
            Repeater3D {
                model: scene.surface.labels.length
                Node {
                    id: billboard
                    required property int index
                    readonly property var label: scene.surface.labels[index] || none
                    readonly property var none: ({ text: "", place: Qt.vector3d(0, 0, 0), white: 0, outside: false })
                    readonly property int sharpness: 8  // pixels of text for a unit
                    position: label.place
                    rotation: scene.surface.labelRotation
                    readonly property real size: scene.surface.labelScale / sharpness
                    scale: Qt.vector3d(size, size, size)
                    Text {
                        // not the node's `visible`: Qt 6.4 crashes in the end over a text that was never drawn
                        opacity: scene.surface.labelsShown[billboard.index] === true ? 1 : 0
                        x: width / 2 * (billboard.label.outside ? scene.surface.labelSide - 1 : -1)
                        y: -height / 2
                        renderType: Text.QtRendering
                        font.family: Theme.family
                        font.pixelSize: 3.4 * billboard.sharpness
                        color: Qt.rgba(billboard.label.white, billboard.label.white, billboard.label.white, 1)
                        text: billboard.label.text
                    }
                }
            }
        }
    }
    MouseArea {
        id: hand
        property point last
        property point pressedAt
        property bool drags: false
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        cursorShape: drags ? Qt.ClosedHandCursor : Qt.ArrowCursor

        onPressed: mouse => {
            scene.forceActiveFocus(Qt.MouseFocusReason);
            scene.focusReason = Qt.MouseFocusReason;  // which it had before, perhaps, by a key
            last = pressedAt = Qt.point(mouse.x, mouse.y);
            drags = false;
        }
        onPositionChanged: mouse => {
            if (!pressed)
                return scene.surface.hover(mouse.x, mouse.y);
            if (!drags && Math.hypot(mouse.x - pressedAt.x, mouse.y - pressedAt.y) < 3)
                return;
            if (!drags)
                scene.surface.leave();
            drags = true;
            const dx = mouse.x - last.x, dy = mouse.y - last.y;
            last = Qt.point(mouse.x, mouse.y);
            if (pressedButtons & Qt.LeftButton)
                scene.surface.orbit(dx, dy);
            else
                scene.surface.pan(dx, dy);
        }
        onReleased: mouse => {
            if (drags) {
                if (containsMouse)
                    scene.surface.hover(mouse.x, mouse.y);
            } else if (mouse.button === Qt.LeftButton) {
                scene.surface.press(mouse.x, mouse.y);
            }
            drags = false;
        }
        onCanceled: drags = false
        onEntered: if (!pressed) scene.surface.hover(mouseX, mouseY)
        onExited: scene.surface.leave()
        onWheel: wheel => {
            const precise = Qt.platform.pluginName !== "xcb" && wheel.pixelDelta.y !== 0;
            // a notch of a wheel is 120 eighths of a degree
            scene.surface.dolly(precise ? wheel.pixelDelta.y * 0.4 : wheel.angleDelta.y / 120 * 12);
            wheel.accepted = true;
        }
    }
    Rectangle {
        anchors.fill: parent
        anchors.margins: 2
        visible: scene.visualFocus
        color: "transparent"
        radius: 8
        border.width: 2
        border.color: Theme.focus
    }
}
