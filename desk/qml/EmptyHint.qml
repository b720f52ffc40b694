import QtQuick 2.15
import "."

// What is shown in place of an empty list, and what can be done about it.
Column {
    id: root
    property string title
    property string hint
    property string action
    property string otherAction
    property bool otherEnabled: true
    signal triggered()
    signal otherTriggered()

    width: Math.min(parent.width - 40, 560)
    spacing: Theme.space

    PlainText {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        text: root.title
        color: Theme.text
        font.pixelSize: 17
    }
    QuietText {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: root.hint
        font.pixelSize: Theme.textSize
    }
    Row {
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: Theme.space
        ActionButton {
            visible: root.otherAction !== ""
            enabled: root.otherEnabled
            text: root.otherAction
            onClicked: root.otherTriggered()
        }
        ActionButton {
            visible: root.action !== ""
            text: root.action
            onClicked: root.triggered()
        }
    }
}
