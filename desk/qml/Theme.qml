pragma Singleton
import QtQuick 2.15

// Colours and measures, light and dark.
QtObject {
    property bool dark: false

    readonly property color window: dark ? "#15181c" : "#f3f5f8"
    readonly property color surface: dark ? "#1f242a" : "#ffffff"
    readonly property color raised: dark ? "#2a3038" : "#eef1f5"
    readonly property color border: dark ? "#3b444f" : "#cfd6de"
    readonly property color text: dark ? "#e8ecf1" : "#1a1f26"
    readonly property color quiet: dark ? "#a3afbc" : "#55606d"
    readonly property color accent: dark ? "#5aa9ff" : "#0a5fc2"
    readonly property color accentText: dark ? "#08192c" : "#ffffff"
    readonly property color good: dark ? "#56c97a" : "#187a3a"
    readonly property color bad: dark ? "#ff7b6e" : "#b3261e"
    readonly property color live: dark ? "#e5484d" : "#c62828"
    readonly property color warning: dark ? "#4a3b0f" : "#fff1c7"
    readonly property color warningText: dark ? "#ffe7a3" : "#5a4300"

    readonly property int space: 12
    readonly property int radius: 6
    readonly property int rowHeight: 52
    readonly property int titleSize: 22
    readonly property int textSize: 14
    readonly property int smallSize: 12
}
