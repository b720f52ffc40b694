import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
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
    implicitHeight: row.implicitHeight + 2 * 8
    Accessible.role: Accessible.AlertMessage
    Accessible.name: root.title + " " + root.detail

    RowLayout {
        id: row
        anchors { fill: parent; leftMargin: 16; rightMargin: 8; topMargin: 8; bottomMargin: 8 }
        spacing: Theme.space
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2
            Text {
                Layout.fillWidth: true
                text: root.title
                wrapMode: Text.Wrap
                color: root.severe ? "#ffffff" : Theme.warningText
                font { pixelSize: Theme.textSize; weight: Font.DemiBold }
            }
            Text {
                Layout.fillWidth: true
                visible: text !== ""
                text: root.detail
                wrapMode: Text.Wrap
                color: root.severe ? "#ffffff" : Theme.warningText
                font.pixelSize: Theme.textSize
            }
        }
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
