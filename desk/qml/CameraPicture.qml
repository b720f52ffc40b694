import QtQuick 2.15
import QtQuick.Controls 2.15
import VoiceDesk 1.0
import "."

// What the chosen camera sees, live or in stills. A picture that is old is marked; without one the place stays.
Rectangle {
    id: root
    required property CameraView view
    property string camera // its name

    color: Theme.surface
    border.color: Theme.border
    radius: Theme.radius
    clip: true
    Accessible.role: Accessible.Graphic
    Accessible.name: view.hasPicture ? qsTr("Picture of %1").arg(camera) : explanation.text
    Accessible.description: view.stale ? mark.text : badge.visible ? badge.meaning : ""

    Picture {
        objectName: "cameraPicture"
        anchors { fill: parent; margins: 1 }
        visible: root.view.hasPicture
        opacity: root.view.stale ? 0.4 : 1
        view: root.view
    }
    Rectangle {
        id: badge
        objectName: "pictureBadge"
        readonly property string meaning: root.view.live ? qsTr("Live video") : qsTr("No live video: %1.").arg(root.view.videoProblem)
        anchors { right: parent.right; top: parent.top; margins: 8 }
        width: badgeText.implicitWidth + 12
        height: badgeText.implicitHeight + 4
        radius: 3
        visible: root.view.hasPicture && !root.view.stale && (root.view.live || root.view.videoProblem !== "")
        color: root.view.live ? "#c62828" : "#3b444f" // white on it, in both themes
        PlainText {
            id: badgeText
            anchors.centerIn: parent
            text: root.view.live ? qsTr("Live") : qsTr("Stills")
            color: "#ffffff"
            font { pixelSize: Theme.smallSize; weight: Font.DemiBold }
        }
        HoverHandler { id: hover }
        ToolTip.visible: hover.hovered
        ToolTip.text: meaning
    }
    QuietText {
        id: explanation
        objectName: "pictureHint"
        anchors.centerIn: parent
        width: parent.width - 24
        visible: !root.view.hasPicture
        horizontalAlignment: Text.AlignHCenter
        maximumLineCount: 4
        text: root.view.camera === "" ? qsTr("Choose a camera to see its picture.")
            : root.view.problem !== "" ? qsTr("No picture: %1.").arg(root.view.problem) : qsTr("Waiting for the picture…")
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 1 }
        height: mark.height + 8
        visible: root.view.stale
        color: Theme.warning
        PlainText {
            id: mark
            objectName: "pictureMark"
            anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: 8 }
            wrapMode: Text.Wrap
            maximumLineCount: 3
            text: root.view.problem !== "" ? qsTr("Old picture: %1.").arg(root.view.problem) : qsTr("Old picture")
            color: Theme.warningText
            font.pixelSize: Theme.smallSize
        }
    }
}
