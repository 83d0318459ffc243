// Colours, spacing and type, once. Pages ask for roles; only this file knows values.
pragma Singleton
import QtQuick

QtObject {
    id: theme

    // Set by the bridge from the desktop's preference.
    property bool dark: false
    property bool reducedMotion: false
    property real textScale: 1

    readonly property color window: dark ? "#1b1d21" : "#f6f7f9"
    readonly property color sidebar: dark ? "#23262b" : "#eceef2"
    readonly property color card: dark ? "#25282e" : "#ffffff"
    readonly property color hover: dark ? "#2d3138" : "#f0f2f6"
    readonly property color selected: dark ? "#2a364b" : "#e4ecfb"
    readonly property color hairline: dark ? "#393e46" : "#dde0e6"
    readonly property color control: dark ? "#31353c" : "#ffffff"
    readonly property color monogram: dark ? "#343941" : "#eceef2"
    readonly property color pressed: dark ? "#3a3f48" : "#e4e8ef"
    // A switch that is off, and what slides in it.
    readonly property color track: dark ? "#6b727d" : "#8b93a0"
    readonly property color knob: "#ffffff"
    // The edge of what can be pressed.
    readonly property color outline: dark ? "#4a505a" : "#c6cbd4"

    readonly property color primary: dark ? "#eef0f3" : "#1c1f24"
    readonly property color secondary: dark ? "#a7aeb9" : "#5b6470"
    readonly property color textOnAccent: "#ffffff"
    readonly property color accent: dark ? "#3a72d8" : "#1f5fd0"
    readonly property color accentHover: dark ? "#3166c6" : "#1a52b6"
    readonly property color disabled: dark ? "#858d98" : "#7c848f"
    readonly property color accentText: dark ? "#8fb4ff" : "#1f5fd0"

    readonly property color green: dark ? "#4cc38a" : "#157a4a"
    readonly property color orange: dark ? "#f2a154" : "#a85300"
    readonly property color red: dark ? "#ff7d74" : "#c3271f"
    readonly property color yellow: dark ? "#f0c94a" : "#a87900"
    readonly property color blue: dark ? "#7fb0ff" : "#1f5fd0"

    // A colour by the role that a page names.
    function role(name) {
        switch (name) {
        case "green": return green
        case "orange": return orange
        case "red": return red
        case "yellow": return yellow
        case "blue": return blue
        case "accent": return accentText
        case "primary": return primary
        case "clear": return "transparent"
        default: return secondary
        }
    }

    // The 8-point grid, 4 inside controls.
    readonly property int grid: 8
    readonly property int inset: 4
    readonly property int margin: 24
    readonly property int radius: 10
    readonly property int iconSize: 32

    // What holds text grows with it.
    function scaled(size) { return Math.round(size * textScale) }
    readonly property int rowHeight: scaled(56)
    readonly property int controlHeight: scaled(32)
    readonly property int hintWidth: scaled(320)

    readonly property int titleSize: scaled(22)
    readonly property int headingSize: scaled(15)
    readonly property int textSize: scaled(13)
    readonly property int captionSize: scaled(11)

    readonly property int motion: reducedMotion ? 0 : 160
}
