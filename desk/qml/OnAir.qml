import QtQuick 2.15
import "."

// On the air: in the rail beside every other page, wherever the operator has gone meanwhile.
Rectangle {
    id: root
    property string partners
    property bool muted
    signal ended()

    implicitHeight: column.implicitHeight + 16
    radius: Theme.radius
    color: muted ? Theme.warning : Theme.live
    readonly property color textColor: muted ? Theme.warningText : "#ffffff"

    Column {
        id: column
        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: 8 }
        spacing: 8
        PlainText {
            width: parent.width
            wrapMode: Text.Wrap
            maximumLineCount: root.muted ? 4 : 5
            elide: Text.ElideRight
            text: qsTr("Talking to %1").arg(root.partners)
            color: root.textColor
            font { pixelSize: Theme.textSize; weight: Font.DemiBold }
        }
        PlainText {
            width: parent.width
            visible: root.muted
            wrapMode: Text.Wrap
            text: qsTr("The microphone is muted.")
            color: root.textColor
            font { pixelSize: Theme.textSize; weight: Font.DemiBold }
        }
        ActionButton {
            width: parent.width
            leftPadding: 4
            rightPadding: 4
            text: qsTr("End the talk")
            onClicked: root.ended()
        }
    }
}
