import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// A strip that says what happened and what to do.
Rectangle {
    id: root
    property string title
    property string detail
    property string action
    property bool dismissable: true
    property bool severe: false
    signal triggered()
    signal dismissed()

    color: severe ? Theme.live : Theme.warning
    implicitHeight: Math.max(words.height, buttons.height) + 2 * 8
    Accessible.role: Accessible.AlertMessage
    Accessible.name: root.title + " " + root.detail

    Column {
        id: words
        anchors { left: parent.left; leftMargin: 16; verticalCenter: parent.verticalCenter }
        width: buttons.x - x - Theme.space
        spacing: 2
        PlainText {
            width: parent.width
            text: root.title
            wrapMode: Text.Wrap
            color: root.severe ? "#ffffff" : Theme.warningText
            font { pixelSize: Theme.textSize; weight: Font.DemiBold }
        }
        PlainText {
            width: parent.width
            visible: text !== ""
            text: root.detail
            wrapMode: Text.Wrap
            color: root.severe ? "#ffffff" : Theme.warningText
            font.pixelSize: Theme.textSize
        }
    }
    Row {
        id: buttons
        anchors { right: parent.right; rightMargin: 8; verticalCenter: parent.verticalCenter }
        spacing: 8
        ActionButton {
            visible: root.action !== ""
            text: root.action
            onClicked: root.triggered()
        }
        ActionButton {
            visible: root.dismissable
            text: qsTr("Close")
            Accessible.name: qsTr("Close the message")
            onClicked: root.dismissed()
        }
    }
}
