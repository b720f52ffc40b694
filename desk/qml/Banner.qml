import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// A strip that says what happened and what to do. Its height is given: what does not fit is shown under the pointer.
Rectangle {
    id: root
    property string title
    property string detail
    property string action
    property string position // among several
    property bool dismissable: true
    property bool severe: false
    readonly property color textColor: severe ? "#ffffff" : Theme.warningText
    signal triggered()
    signal dismissed()

    color: severe ? Theme.live : Theme.warning
    Accessible.role: Accessible.AlertMessage
    Accessible.name: root.title + " " + root.detail

    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        ToolTip {
            id: whole
            visible: area.containsMouse && (title.truncated || detail.truncated)
            delay: 600
            y: root.height
            contentWidth: Math.min(root.width - 40, 600)
            contentItem: PlainText {
                text: root.title + "\n" + root.detail
                wrapMode: Text.Wrap
                color: Theme.text
                font.pixelSize: Theme.textSize
            }
        }
    }
    Column {
        id: words
        anchors { left: parent.left; leftMargin: 20; verticalCenter: parent.verticalCenter }
        width: buttons.x - x - Theme.space
        spacing: 1
        PlainText {
            id: title
            width: parent.width
            text: root.title
            wrapMode: Text.Wrap
            maximumLineCount: root.detail === "" ? 3 : 2
            elide: Text.ElideRight
            color: root.textColor
            font { pixelSize: Theme.textSize; weight: Font.DemiBold }
        }
        PlainText {
            id: detail
            width: parent.width
            visible: text !== ""
            text: root.detail
            wrapMode: Text.Wrap
            maximumLineCount: title.lineCount > 1 ? 1 : 2
            elide: Text.ElideRight
            color: root.textColor
            font.pixelSize: Theme.smallSize
        }
    }
    Row {
        id: buttons
        anchors { right: parent.right; rightMargin: 20; verticalCenter: parent.verticalCenter }
        spacing: 8
        PlainText {
            anchors.verticalCenter: parent.verticalCenter
            visible: text !== ""
            text: root.position
            color: root.textColor
            font.pixelSize: Theme.smallSize
        }
        ActionButton {
            visible: root.action !== ""
            text: root.action
            onClicked: root.triggered()
        }
        ActionButton {
            objectName: "closeNotice"
            visible: root.dismissable
            text: qsTr("Close")
            Accessible.name: qsTr("Close the message")
            onClicked: root.dismissed()
        }
    }
}
