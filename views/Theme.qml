pragma Singleton
// The colours and font families of the popover, in a light and a dark appearance. Every text has a
// contrast of at least 4.5 to 1 to what it stands on.
import QtQuick

QtObject {
    id: theme

    // Follows the desktop until it is assigned.
    property bool dark: system.window.hslLightness < 0.5

    readonly property SystemPalette system: SystemPalette {}

    readonly property color primary: dark ? "#f2f2f5" : "#1d1d21"
    readonly property color secondary: dark ? "#a9a9b4" : "#62626b"
    readonly property color blue: dark ? "#5cacff" : "#0853b8"
    readonly property color cyan: dark ? "#5fd7ee" : "#0fa3c4"
    readonly property color purple: dark ? "#c795ff" : "#7a37c9"
    readonly property color orange: dark ? "#ffae57" : "#964200"

    // What the popover itself is made of, below the background of its content.
    readonly property color popover: dark ? "#303037" : "#f3f3f7"
    readonly property color windowBackground: dark ? "#1d1d22" : "#e4e4ea"
    // Cards: what shines through them is not blurred, for that there is one plain colour behind.
    readonly property color material: dark ? "#12ffffff" : "#b8ffffff"
    readonly property color separator: dark ? "#1affffff" : "#14000000"
    readonly property color focus: blue

    readonly property string systemFamily: Qt.application.font.family
    // The first rounded family that is installed, or else that of the system.
    readonly property string roundedFamily: firstInstalled(["Nunito", "Varela Round", "Manrope"], systemFamily)
    readonly property string monospacedFamily: "monospace"

    function faded(colour, opacity) {
        return Qt.rgba(colour.r, colour.g, colour.b, colour.a * opacity)
    }

    function firstInstalled(families, fallback) {
        const installed = Qt.fontFamilies()
        return families.find(family => installed.includes(family)) ?? fallback
    }
}
