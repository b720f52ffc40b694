import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// One camera or speaker that can be talked to.
AbstractButton {
    id: root
    required property string key
    required property string kind
    required property string name
    required property string detail
    required property int state
    required property bool chosen
    required property int index
    property bool locked: false

    readonly property bool offline: root.state === TargetModel.Offline
    readonly property string stateText: root.state === TargetModel.Offline ? qsTr("offline")
        : root.state === TargetModel.Asked ? qsTr("calling…")
        : root.state === TargetModel.Talking ? qsTr("talking")
        : root.state === TargetModel.Failed ? qsTr("failed") : ""

    // During a talk speakers can be added, nobody taken away.
    readonly property bool canToggle: !locked || (kind === "speaker" && !chosen)
    function toggle() {
        if (!canToggle)
            return;
        desk.targets.choose(key, !chosen);
        if (locked)
            desk.talk.start();
    }

    width: ListView.view ? ListView.view.width : implicitWidth
    height: Theme.rowHeight
    focusPolicy: Qt.NoFocus
    onClicked: {
        ListView.view.forceActiveFocus(); // out of the search, where a space would be a letter
        ListView.view.currentIndex = index;
        toggle();
    }
    onDoubleClicked: if (!locked) { desk.targets.chooseOnly(key); desk.talk.start(); }
    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: chosen
    Accessible.name: name
    Accessible.description: kind === "camera" ? qsTr("Camera, %1").arg(stateText) : qsTr("Speaker, %1").arg(stateText)

    background: Rectangle {
        color: root.chosen ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.16) : root.hovered ? Theme.raised : "transparent"
        radius: Theme.radius
    }
    contentItem: RowLayout {
        spacing: 10
        Rectangle {
            Layout.leftMargin: 8
            width: 18
            height: 18
            radius: root.kind === "camera" ? 9 : 3
            color: root.chosen ? Theme.accent : "transparent"
            border.width: 1.5
            border.color: root.chosen ? Theme.accent : Theme.quiet
            PlainText {
                anchors.centerIn: parent
                visible: root.chosen
                text: "✓"
                color: Theme.accentText
                font { pixelSize: 13; weight: Font.Bold }
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 1
            PlainText {
                Layout.fillWidth: true
                text: root.name
                elide: Text.ElideRight
                maximumLineCount: 1
                color: root.offline ? Theme.quiet : Theme.text
                font.pixelSize: Theme.textSize
            }
            PlainText {
                Layout.fillWidth: true
                text: root.detail
                elide: Text.ElideRight
                maximumLineCount: 1
                color: Theme.quiet
                font.pixelSize: Theme.smallSize
            }
        }
        PlainText {
            Layout.rightMargin: 10
            text: root.stateText
            color: root.state === TargetModel.Talking ? Theme.good : root.state === TargetModel.Failed ? Theme.bad : Theme.quiet
            font { pixelSize: Theme.smallSize; weight: Font.DemiBold }
        }
    }
}
