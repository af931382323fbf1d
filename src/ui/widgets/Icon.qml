// A line icon on a grid of 24 units. The shapes' licence is in icons/LICENSE.txt.
import QtQuick

Canvas {
    id: icon

    property string name
    property color color: Theme.textSoft
    readonly property var shapes: ({
        "chevron-down": ["m6 9 6 6 6-6"],
        "check": ["M20 6 9 17l-5-5"],
        "eye": ["M2.062 12.348a1 1 0 0 1 0-.696 10.75 10.75 0 0 1 19.876 0 1 1 0 0 1 0 .696 10.75 10.75 0 0 1-19.876 0",
                "M9 12a3 3 0 1 0 6 0a3 3 0 1 0-6 0"],
        "eye-off": ["M10.733 5.076a10.744 10.744 0 0 1 11.205 6.575 1 1 0 0 1 0 .696 10.747 10.747 0 0 1-1.444 2.49",
                    "M14.084 14.158a3 3 0 0 1-4.242-4.242",
                    "M17.479 17.499a10.75 10.75 0 0 1-15.417-5.151 1 1 0 0 1 0-.696 10.75 10.75 0 0 1 4.446-5.143",
                    "m2 2 20 20"],
        "log-out": ["m16 17 5-5-5-5", "M21 12H9", "M9 21H5a2 2 0 0 1-2-2V5a2 2 0 0 1 2-2h4"],
        "triangle-alert": ["m21.73 18-8-14a2 2 0 0 0-3.48 0l-8 14A2 2 0 0 0 4 21h16a2 2 0 0 0 1.73-3", "M12 9v4",
                           "M12 17h.01"]
    })

    implicitWidth: 16
    implicitHeight: 16
    onNameChanged: requestPaint()
    onColorChanged: requestPaint()
    onPaint: {
        const context = getContext("2d");
        context.reset();
        context.scale(width / 24, height / 24);
        context.strokeStyle = color;
        context.lineWidth = 2;
        context.lineCap = "round";
        context.lineJoin = "round";
        for (const shape of shapes[name] || []) {
            context.path = shape;
            context.stroke();
        }
    }
}
