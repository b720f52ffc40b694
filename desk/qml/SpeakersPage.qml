import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// The speakers on the server.
DeskPage {
    id: root
    readonly property DeviceModel speakers: desk.plugin.getIPAudioModel(root)
    property var testResults: ({})
    readonly property int testing: desk.talk.testing

    editor: dialog
    function focusSearch() { search.forceActiveFocus(); }
    function setResult(id, text, good) {
        const results = Object.assign({}, testResults);
        results[id] = { "text": text, "good": good };
        testResults = results;
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: 12
        SearchField {
            id: search
            objectName: "speakerSearch"
            Layout.preferredWidth: 260
            placeholderText: qsTr("Search by name")
            onTextChanged: root.speakers.setFilter(text)
        }
        Item { Layout.fillWidth: true }
        ActionButton {
            objectName: "addSpeaker"
            highlighted: true
            text: qsTr("Add a speaker…")
            onClicked: root.addNew()
        }
    }

    ListFrame {
        id: frame
        objectName: "speakerList"
        Layout.fillWidth: true
        Layout.fillHeight: true
        name: qsTr("Speakers")
        model: root.speakers
        onOpenRequested: function(entry) { entry.edit(); }
        onDeleteRequested: function(entry) { entry.remove(); }
        onTestRequested: function(entry) { if (entry.extraEnabled) entry.extra(); }
        delegate: RecordRow {
            title: deviceNameRole || ""
            detail: ipRole + ":" + portRole + (bindingCameraListRole && bindingCameraListRole.length > 0
                    ? "  ·  " + qsTr("%n camera(s)", "", bindingCameraListRole.length) : "")
            note: tested ? qsTr("testing…") : root.testResults[idRole] ? root.testResults[idRole].text : ""
            noteGood: root.testResults[idRole] ? root.testResults[idRole].good : true
            readonly property bool tested: root.testing !== 0 && root.testing === idRole
            extraText: tested ? qsTr("Cancel") : qsTr("Test")
            extraEnabled: tested || (desk.talk.phase === TalkControl.Idle && root.testing === 0 && desk.connection.online)
            onExtra: tested ? desk.talk.cancelTest() : desk.talk.test(idRole)
            onEdit: dialog.edit({ id: idRole, name: deviceNameRole, ip: ipRole, port: portRole, user: userRole,
                                  password: passwordRole, cameras: bindingCameraListRole })
            onRemove: {
                confirm.speaker = idRole;
                confirm.question = qsTr("Delete the speaker \"%1\"? Groups and schedules lose it, too. This cannot be undone.").arg(deviceNameRole);
                confirm.open();
            }
        }
        EmptyHint {
            anchors.centerIn: parent
            visible: frame.count === 0
            title: search.text !== "" ? qsTr("Nothing is found.") : qsTr("No speakers yet.")
            hint: search.text !== "" ? qsTr("No speaker's name has this text in it.") : qsTr("A speaker needs a name, its address and its port.")
            action: search.text === "" ? qsTr("Add a speaker…") : ""
            onTriggered: root.addNew()
        }
    }
    PlainText {
        Layout.fillWidth: true
        visible: deletion.problem !== ""
        text: deletion.problem
        wrapMode: Text.Wrap
        color: Theme.bad
        font.pixelSize: Theme.textSize
    }

    Connections {
        target: desk.talk
        function onTested(speaker, success, text) {
            root.setResult(speaker, text, success);
        }
    }
    Connections {
        target: desk.connection
        function onServerChanged() { root.testResults = {}; }
    }
    PendingRequest { id: deletion }
    Connections {
        target: desk.plugin
        function onDeleteIPAudioResponse(success, code, id) { deletion.answer(success, code, id); }
    }
    ConfirmDialog {
        id: confirm
        property int speaker
        title: qsTr("Delete a speaker")
        onAccepted: deletion.begin(desk.plugin.deleteIPAudio(speaker))
    }
    SpeakerDialog { id: dialog }
}
