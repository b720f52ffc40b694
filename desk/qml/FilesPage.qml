import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Qt.labs.platform 1.1 as Platform
import VoiceDesk 1.0
import "."

// The audio files on the server, and what plays.
DeskPage {
    id: root
    readonly property var shown: desk.plugin.audioFileList.filter(function(file) {
        return file.audioName.toLowerCase().indexOf(search.text.toLowerCase()) >= 0;
    })

    function focusSearch() { search.forceActiveFocus(); }
    function addNew() { picker.open(); }
    function upload(urls) {
        problem = "";
        for (let i = 0; i < urls.length; ++i) {
            const wrong = desk.checkUpload(urls[i]);
            if (wrong !== "")
                problem = wrong;
            else if (!desk.plugin.uploadFile(urls[i]))
                problem = qsTr("The file cannot be sent: there is no connection to the server.");
        }
    }
    function length(ms) {
        const seconds = Math.round(ms / 1000);
        const rest = seconds % 60;
        return ms > 0 ? Math.floor(seconds / 60) + ":" + (rest < 10 ? "0" : "") + rest : qsTr("length unknown");
    }
    function status(file) {
        switch (file.audioStatus) {
        case desk.protocol.uploading: return qsTr("being sent…");
        case desk.protocol.ready: return "";
        case desk.protocol.refusedWithOutput: return qsTr("refused by the server");
        case desk.protocol.refusedWithoutOutput: return qsTr("refused by the server; and this computer has no sound output");
        default: return qsTr("not ready");
        }
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: 12
        SearchField {
            id: search
            Layout.preferredWidth: 260
            placeholderText: qsTr("Search by name")
        }
        Item { Layout.fillWidth: true }
        ActionButton {
            objectName: "uploadFile"
            highlighted: true
            text: qsTr("Send a file…")
            onClicked: root.addNew()
        }
    }

    ListFrame {
        id: frame
        objectName: "fileList"
        Layout.fillWidth: true
        Layout.fillHeight: true
        name: qsTr("Audio files")
        model: root.shown
        onOpenRequested: function(entry) { entry.extra(); }
        onDeleteRequested: function(entry) { entry.remove(); }
        delegate: RecordRow {
            readonly property var file: modelData
            readonly property bool provisional: file.audioID < 0
            title: file.audioName
            detail: root.length(file.audioLength)
            note: root.status(file)
            noteGood: file.audioStatus === desk.protocol.uploading || file.audioStatus === desk.protocol.ready
            editable: false
            extraText: provisional ? "" : qsTr("Play…")
            extraEnabled: desk.connection.online
            onExtra: if (!provisional) player.play(file)
            onRemove: {
                if (provisional && file.audioStatus !== desk.protocol.uploading) {
                    desk.plugin.deleteAudioFile(file.audioID); // the server never had it
                    return;
                }
                confirm.file = file.audioID;
                confirm.question = provisional ? qsTr("\"%1\" is still being sent. It can be taken off this list, but the server may keep it.").arg(file.audioName)
                    : qsTr("Delete \"%1\" from the server? Schedules that play it lose it. This cannot be undone.").arg(file.audioName);
                confirm.open();
            }
            ProgressBar {
                visible: file.audioStatus === desk.protocol.uploading
                indeterminate: desk.connection.sendProgress < 0
                value: Math.max(0, desk.connection.sendProgress)
                implicitWidth: 90
                Accessible.name: qsTr("Being sent")
            }
        }
        EmptyHint {
            anchors.centerIn: parent
            visible: frame.count === 0
            title: search.text !== "" ? qsTr("Nothing is found.") : qsTr("No audio files yet.")
            hint: search.text !== "" ? qsTr("No file's name has this text in it.") : qsTr("Drop WAV, MP3, AAC, FLAC or Ogg files here, or choose one.")
            action: search.text === "" ? qsTr("Send a file…") : ""
            onTriggered: root.addNew()
        }
        DropArea {
            anchors.fill: parent
            onEntered: function(drag) { drag.accepted = drag.hasUrls; }
            onDropped: function(drop) { root.upload(drop.urls); drop.accept(); }
            Rectangle {
                anchors.fill: parent
                visible: parent.containsDrag
                color: Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.18)
                border { width: 3; color: Theme.accent }
                radius: Theme.radius
                PlainText {
                    anchors.centerIn: parent
                    text: qsTr("Drop to send to the server")
                    color: Theme.text
                    font.pixelSize: 18
                }
            }
        }
    }

    PlainText {
        visible: desk.playback.count > 0
        text: qsTr("Playing")
        color: Theme.text
        font { pixelSize: 16; weight: Font.DemiBold }
    }
    ListFrame {
        id: plays
        objectName: "playList"
        Layout.fillWidth: true
        Layout.preferredHeight: Math.min(3, desk.playback.count) * Theme.rowHeight + 6
        visible: desk.playback.count > 0
        name: qsTr("Playing")
        model: desk.playback
        delegate: RecordRow {
            id: play
            readonly property bool live: model.state === PlaybackModel.Asked || model.state === PlaybackModel.Playing
            title: qsTr("%1 on %2").arg(model.title).arg(model.target)
            detail: model.state === PlaybackModel.Asked ? qsTr("starting…") : model.state === PlaybackModel.Playing ? qsTr("%1 %").arg(Math.round(model.progress * 100))
                  : model.state === PlaybackModel.Ended ? qsTr("played to the end")
                  : model.state === PlaybackModel.Failed ? qsTr("failed: %1").arg(model.problem) : model.problem
            editable: false
            removable: false
            extraText: live ? qsTr("Stop") : qsTr("Close")
            onExtra: live ? desk.playback.stop(index) : desk.playback.dismiss(index)
            ProgressBar {
                visible: play.live
                indeterminate: model.state === PlaybackModel.Asked
                value: model.progress || 0
                implicitWidth: 200
                Accessible.name: qsTr("Progress")
            }
        }
    }

    ConfirmDialog {
        id: confirm
        property int file
        title: qsTr("Delete an audio file")
        onAccepted: desk.plugin.deleteAudioFile(file)
    }
    PlayDialog { id: player }
    Platform.FileDialog {
        id: picker
        title: qsTr("Send audio files to the server")
        fileMode: Platform.FileDialog.OpenFiles
        nameFilters: [qsTr("Sound (*.wav *.mp3 *.aac *.m4a *.mp4 *.flac *.ogg *.oga *.aif *.aiff)"), qsTr("All files (*)")]
        onAccepted: root.upload(files)
    }
}
