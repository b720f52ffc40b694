import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// When the server plays what: as a list and as a week.
DeskPage {
    id: root
    readonly property ScheduleModel schedules: desk.plugin.getNetworkAudioScheduleModel(root)
    property int revision: 0 // grows with each change of the model
    property date now: new Date()

    editor: dialog
    function focusSearch() { frame.list.forceActiveFocus(); }
    function fileName(id) {
        const files = desk.plugin.audioFileList;
        for (let i = 0; i < files.length; ++i) {
            if (files[i].audioID === id)
                return files[i].audioName;
        }
        return qsTr("no file");
    }
    function askToDelete(row) {
        const record = schedules.record(row);
        confirm.schedule = record.scheduleID;
        confirm.question = qsTr("Delete the schedule \"%1\"? This cannot be undone.").arg(record.scheduleName);
        confirm.open();
    }
    function enable(row, on) {
        const record = schedules.record(row);
        record.enableSchedule = on;
        const refusal = on ? desk.scheduleValidator.check(record) : "";
        deletion.problem = "";
        if (refusal !== "") {
            change.problem = refusal;
            return;
        }
        change.begin(desk.plugin.updateNetworkAudioSchedule(record.scheduleID, record));
    }

    Timer {
        interval: 20000
        repeat: true
        running: root.visible
        onTriggered: root.now = new Date() // "today" and "tomorrow" go on
    }
    Connections {
        target: root.schedules
        function onDataChanged() { ++root.revision; }
        function onRowsInserted() { ++root.revision; }
        function onRowsRemoved() { ++root.revision; }
        function onModelReset() { ++root.revision; }
        function onLayoutChanged() { ++root.revision; }
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: 12
        ChoiceBar {
            id: view
            objectName: "scheduleView"
            choices: [qsTr("List"), qsTr("Week")]
        }
        Item { Layout.fillWidth: true }
        ActionButton {
            objectName: "addSchedule"
            highlighted: true
            text: qsTr("Add a schedule…")
            onClicked: root.addNew()
        }
    }

    StackLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        currentIndex: view.currentIndex

        ListFrame {
            id: frame
            objectName: "scheduleList"
            name: qsTr("Schedules")
            model: root.schedules
            onOpenRequested: function(entry) { entry.edit(); }
            onDeleteRequested: function(entry) { entry.remove(); }
            delegate: RecordRow {
                id: row
                readonly property var record: root.revision >= 0 ? root.schedules.record(index) : ({})
                title: nameRole || ""
                detail: qsTr("%1, %2").arg(root.fileName(audioFileIDRole)).arg(desk.schedules.repetition(record))
                footnote: qsTr("Next run: %1").arg(root.now && desk.schedules.nextRun(record))
                onEdit: dialog.edit(record)
                onRemove: root.askToDelete(index)
                OnOff {
                    id: toggle
                    focusPolicy: activeFocus || row.takesTab ? Qt.StrongFocus : Qt.ClickFocus
                    checked: enableRole === true
                    Accessible.name: qsTr("%1: switched on").arg(row.title)
                    onClicked: {
                        root.enable(index, checked);
                        checked = Qt.binding(function() { return enableRole === true; });
                    }
                }
            }
            EmptyHint {
                anchors.centerIn: parent
                visible: frame.count === 0
                title: qsTr("No schedules yet.")
                hint: qsTr("A schedule plays an audio file by itself: once, every day, or on days of the week.")
                action: qsTr("Add a schedule…")
                onTriggered: root.addNew()
            }
        }
        WeekView {
            schedules: root.schedules
            revision: root.revision
            onChosen: function(row) { dialog.edit(root.schedules.record(row)); }
        }
    }
    PlainText {
        Layout.fillWidth: true
        visible: text !== ""
        text: deletion.problem !== "" ? deletion.problem : change.problem
        wrapMode: Text.Wrap
        color: Theme.bad
        font.pixelSize: Theme.textSize
    }

    PendingRequest { id: deletion }
    PendingRequest { id: change }
    Connections {
        target: desk.plugin
        function onDeleteNetworkAudioScheduleResponse(success, code, id) { deletion.answer(success, code, id); }
        function onUpdateNetworkAudioScheduleResponse(success, code, id) { change.answer(success, code, id); }
    }
    ConfirmDialog {
        id: confirm
        property int schedule
        title: qsTr("Delete a schedule")
        onAccepted: deletion.begin(desk.plugin.deleteNetworkAudioSchedule(schedule))
    }
    ScheduleDialog { id: dialog }
}
