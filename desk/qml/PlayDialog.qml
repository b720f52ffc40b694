import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// Where a file is to be played: on a speaker or on a group.
Dialog {
    id: root
    property var file: ({ audioID: 0, audioName: "", audioLength: 0 })
    readonly property DeviceModel speakers: desk.plugin.getIPAudioModel(root)
    readonly property GroupModel groups: desk.plugin.getNetworkAudioGroupModel(root)
    readonly property bool onGroup: tabs.currentIndex === 1

    function play(chosenFile) {
        file = chosenFile;
        search.text = "";
        open();
    }
    function start(id, name) {
        desk.playback.play(onGroup, id, name, file.audioID, file.audioName, file.audioLength);
        close();
    }

    objectName: "playDialog"
    title: qsTr("Play \"%1\"").arg(file.audioName)
    modal: true
    anchors.centerIn: Overlay.overlay
    width: 460
    height: Math.min(520, (Overlay.overlay ? Overlay.overlay.height : 560) - 40)
    padding: 16
    header: DialogTitle { text: root.title }
    footer: DialogButtonBox {
        padding: 14
        background: Rectangle { color: Theme.raised }
        ActionButton {
            text: qsTr("Cancel")
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
        }
    }
    onOpened: list.list.forceActiveFocus()

    contentItem: ColumnLayout {
        spacing: 10
        ChoiceBar {
            id: tabs
            Layout.fillWidth: true
            stretch: true
            choices: [qsTr("On a speaker"), qsTr("On a group")]
        }
        SearchField {
            id: search
            Layout.fillWidth: true
            placeholderText: qsTr("Search by name")
            onTextChanged: {
                root.speakers.setFilter(text);
                root.groups.setFilter(text);
            }
        }
        ListFrame {
            id: list
            objectName: "playTargets"
            Layout.fillWidth: true
            Layout.fillHeight: true
            name: root.onGroup ? qsTr("Groups") : qsTr("Speakers")
            model: root.onGroup ? root.groups : root.speakers
            onModelChanged: list.list.currentIndex = -1
            onOpenRequested: function(entry) { entry.clicked(); }
            delegate: ItemDelegate {
                id: entry
                width: ListView.view.width
                text: (root.onGroup ? model.nameRole : model.deviceNameRole) || ""
                onClicked: root.start(model.idRole, text)
                focusPolicy: Qt.NoFocus
                contentItem: PlainText {
                    text: entry.text
                    elide: Text.ElideRight
                    verticalAlignment: Text.AlignVCenter
                    color: Theme.text
                    font.pixelSize: Theme.textSize
                }
            }
            PlainText {
                anchors.centerIn: parent
                visible: list.count === 0
                color: Theme.quiet
                text: search.text !== "" ? qsTr("Nothing is found.") : root.onGroup ? qsTr("No groups yet.") : qsTr("No speakers yet.")
            }
        }
    }
}
