// A line icon on a grid of 24 units. The shapes' licence is in icons/LICENSE.txt.
import QtQuick

Canvas {
    id: icon

    property string name
    property color color: Theme.textSoft
    readonly property var shapes: ({
        "arrow-left-right": ["M8 3 4 7l4 4", "M4 7h16", "m16 21 4-4-4-4", "M20 17H4"],
        "bell": ["M10.268 21a2 2 0 0 0 3.464 0",
                 "M3.262 15.326A1 1 0 0 0 4 17h16a1 1 0 0 0 .74-1.673C19.41 13.956 18 12.499 18 8A6 6 0 0 0 6 8c0 4.499-1.411 5.956-2.738 7.326"],
        "chevrons-up-down": ["m7 15 5 5 5-5", "m7 9 5-5 5 5"],
        "bookmark": ["m19 21-7-4-7 4V5a2 2 0 0 1 2-2h10a2 2 0 0 1 2 2v16z"],
        "check": ["M20 6 9 17l-5-5"],
        "circle-user": ["M2 12a10 10 0 1 0 20 0a10 10 0 1 0-20 0", "M9 10a3 3 0 1 0 6 0a3 3 0 1 0-6 0",
                        "M7 20.662V19a2 2 0 0 1 2-2h6a2 2 0 0 1 2 2v1.662"],
        "columns-2": ["M5 3h14a2 2 0 0 1 2 2v14a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2V5a2 2 0 0 1 2-2z", "M12 3v18"],
        "download": ["M12 15V3", "M21 15v4a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2v-4", "m7 10 5 5 5-5"],
        "eye": ["M2.062 12.348a1 1 0 0 1 0-.696 10.75 10.75 0 0 1 19.876 0 1 1 0 0 1 0 .696 10.75 10.75 0 0 1-19.876 0",
                "M9 12a3 3 0 1 0 6 0a3 3 0 1 0-6 0"],
        "eye-off": ["M10.733 5.076a10.744 10.744 0 0 1 11.205 6.575 1 1 0 0 1 0 .696 10.747 10.747 0 0 1-1.444 2.49",
                    "M14.084 14.158a3 3 0 0 1-4.242-4.242",
                    "M17.479 17.499a10.75 10.75 0 0 1-15.417-5.151 1 1 0 0 1 0-.696 10.75 10.75 0 0 1 4.446-5.143",
                    "m2 2 20 20"],
        "file": ["M15 2H6a2 2 0 0 0-2 2v16a2 2 0 0 0 2 2h12a2 2 0 0 0 2-2V7z", "M14 2v4a2 2 0 0 0 2 2h4"],
        "folder": ["M20 20a2 2 0 0 0 2-2V8a2 2 0 0 0-2-2h-7.9a2 2 0 0 1-1.69-.9L9.6 3.9A2 2 0 0 0 7.93 3H4a2 2 0 0 0-2 2v13a2 2 0 0 0 2 2z"],
        "info": ["M2 12a10 10 0 1 0 20 0a10 10 0 1 0-20 0", "M12 16v-4", "M12 8h.01"],
        "log-out": ["m16 17 5-5-5-5", "M21 12H9", "M9 21H5a2 2 0 0 1-2-2V5a2 2 0 0 1 2-2h4"],
        "menu": ["M4 12h16", "M4 6h16", "M4 18h16"],
        "minus": ["M5 12h14"],
        "plus": ["M5 12h14", "M12 5v14"],
        "rotate-ccw": ["M3 12a9 9 0 1 0 9-9 9.75 9.75 0 0 0-6.74 2.74L3 8", "M3 3v5h5"],
        "search": ["M3 11a8 8 0 1 0 16 0a8 8 0 1 0-16 0", "m21 21-4.34-4.34"],
        "triangle-alert": ["m21.73 18-8-14a2 2 0 0 0-3.48 0l-8 14A2 2 0 0 0 4 21h16a2 2 0 0 0 1.73-3", "M12 9v4",
                           "M12 17h.01"],
        "upload": ["M12 15V3", "m17 8-5-5-5 5", "M21 15v4a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2v-4"],
        "wrench": ["M14.7 6.3a1 1 0 0 0 0 1.4l1.6 1.6a1 1 0 0 0 1.4 0l3.77-3.77a6 6 0 0 1-7.94 7.94l-6.91 6.91a2.12 2.12 0 0 1-3-3l6.91-6.91a6 6 0 0 1 7.94-7.94l-3.76 3.76z"],
        "x": ["M18 6 6 18", "m6 6 12 12"]
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
