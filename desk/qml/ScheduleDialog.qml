import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// Adds a schedule, or changes one; only a possible one can be saved.
FormDialog {
    id: root
    property int schedule: 0
    property bool wasEnabled: true
    property var settings: ({})
    property var weekdays: []
    readonly property DeviceModel speakers: desk.plugin.getIPAudioModel(root)
    readonly property GroupModel groups: desk.plugin.getNetworkAudioGroupModel(root)
    readonly property var files: desk.plugin.audioFileList.filter(function(file) { return file.audioID > 0; })

    function create() {
        const soon = new Date(Date.now() + 5 * 60000);
        fill({ scheduleID: 0, scheduleName: "", enableSchedule: true, scheduleType: desk.protocol.once, scheduleSettings: {},
               scheduleStartTime: Qt.formatDateTime(soon, "yyyy-MM-ddThh:mm:00"), enableScheduleEndTime: false,
               scheduleEndTime: "", audioID: files.length > 0 ? files[0].audioID : 0, groupIDList: [], networkAudioIDList: [] });
        title = qsTr("Add a schedule");
        open();
    }
    function edit(record) {
        fill(record);
        title = qsTr("Schedule \"%1\"").arg(record.scheduleName);
        open();
    }
    function fill(record) {
        schedule = record.scheduleID;
        wasEnabled = record.enableSchedule;
        settings = record.scheduleSettings || {};
        nameField.text = record.scheduleName;
        nameField.touched = false;
        type.currentIndex = record.scheduleType;
        weekdays = settings.weekdays ? Array.from(settings.weekdays) : [];
        start.show(record.scheduleStartTime);
        hasEnd.checked = record.enableScheduleEndTime === true;
        end.show(record.scheduleEndTime !== "" ? record.scheduleEndTime : record.scheduleStartTime);
        let at = -1;
        for (let i = 0; i < files.length; ++i) {
            if (files[i].audioID === record.audioID)
                at = i;
        }
        file.currentIndex = at;
        onSpeakers.clearSearch();
        onGroups.clearSearch();
        onSpeakers.checkedIds = record.networkAudioIDList ? Array.from(record.networkAudioIDList) : [];
        onGroups.checkedIds = record.groupIDList ? Array.from(record.groupIDList) : [];
    }
    function record() {
        const kept = Object.assign({}, settings);
        kept.weekdays = weekdays;
        return {
            scheduleName: nameField.text,
            enableSchedule: wasEnabled,
            scheduleType: type.currentIndex,
            scheduleSettings: kept,
            scheduleStartTime: start.value,
            enableScheduleEndTime: hasEnd.checked,
            scheduleEndTime: hasEnd.checked ? end.value : "",
            audioID: file.currentIndex >= 0 && files.length > file.currentIndex ? files[file.currentIndex].audioID : 0,
            groupIDList: onGroups.checkedIds,
            networkAudioIDList: onSpeakers.checkedIds
        };
    }
    readonly property string problem: nameField.text.length > desk.protocol.maxNameLength ? qsTr("The name has more than %1 characters.").arg(desk.protocol.maxNameLength)
        : !start.valid ? qsTr("The start is not a date and time.")
        : hasEnd.checked && !end.valid ? qsTr("The end is not a date and time.")
        : desk.scheduleValidator.check(record())

    objectName: "scheduleDialog"
    wanted: 640
    width: Math.min(680, (Overlay.overlay ? Overlay.overlay.width : 700) - 40)
    onOpened: nameField.field.forceActiveFocus()
    valid: problem === ""
    hint: problem
    onSave: {
        if (schedule === 0)
            request.begin(desk.plugin.addNetworkAudioSchedule(record()));
        else
            request.begin(desk.plugin.updateNetworkAudioSchedule(schedule, record()));
    }

    contentItem: ColumnLayout {
        spacing: 10
        FormField {
            id: nameField
            objectName: "scheduleName"
            Layout.fillWidth: true
            label: qsTr("Name")
            problem: text.trim() === "" ? qsTr("Give the schedule a name.") : ""
        }
        GridLayout {
            Layout.fillWidth: true
            columns: 2
            columnSpacing: 12
            rowSpacing: 8
            PlainText { text: qsTr("Audio file"); color: Theme.text; font.pixelSize: Theme.textSize }
            DropDown {
                id: file
                Layout.fillWidth: true
                model: root.files.map(function(entry) { return entry.audioName; })
                displayText: currentIndex < 0 ? qsTr("Choose a file") : currentText
                Accessible.name: qsTr("Audio file")
            }
            PlainText { text: qsTr("How often"); color: Theme.text; font.pixelSize: Theme.textSize }
            DropDown {
                id: type
                Layout.fillWidth: true
                model: [qsTr("Once"), qsTr("Every day"), qsTr("On days of the week")]
                Accessible.name: qsTr("How often")
            }
            PlainText { text: qsTr("Days"); color: Theme.text; font.pixelSize: Theme.textSize; visible: type.currentIndex === desk.protocol.weekly }
            RowLayout {
                visible: type.currentIndex === desk.protocol.weekly
                spacing: 2
                Repeater {
                    model: 7
                    ActionButton {
                        readonly property int day: index + 1
                        implicitWidth: 56
                        checkable: true
                        checked: root.weekdays.indexOf(day) >= 0
                        text: Qt.locale().dayName(day % 7, Locale.ShortFormat)
                        onClicked: {
                            const others = root.weekdays.filter(function(other) { return other !== day; });
                            root.weekdays = checked ? others.concat([day]) : others;
                            checked = Qt.binding(function() { return root.weekdays.indexOf(day) >= 0; });
                        }
                    }
                }
            }
            PlainText { text: type.currentIndex === desk.protocol.once ? qsTr("When") : qsTr("From"); color: Theme.text; font.pixelSize: Theme.textSize }
            MomentField { id: start; objectName: "scheduleStart"; name: qsTr("Start") }
            TickBox { id: hasEnd; text: qsTr("Until"); visible: type.currentIndex !== desk.protocol.once; onVisibleChanged: if (!visible) checked = false }
            MomentField { id: end; objectName: "scheduleEnd"; name: qsTr("End"); visible: type.currentIndex !== desk.protocol.once; enabled: hasEnd.checked }
        }
        RowLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumHeight: 120
            spacing: 12
            CheckList {
                id: onSpeakers
                objectName: "scheduleSpeakers"
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                label: qsTr("Speakers")
                model: root.speakers
                idName: "idRole"
                nameName: "deviceNameRole"
                emptyText: qsTr("No speakers yet.")
            }
            CheckList {
                id: onGroups
                objectName: "scheduleGroups"
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                label: qsTr("Groups")
                model: root.groups
                idName: "idRole"
                nameName: "nameRole"
                emptyText: qsTr("No groups yet.")
            }
        }
        QuietText {
            Layout.fillWidth: true
            visible: root.valid && root.wasEnabled
            font.pixelSize: Theme.textSize
            text: visible ? qsTr("Next run: %1 (the server's time)").arg(desk.schedules.nextRun(root.record())) : ""
        }
    }

    Connections {
        target: desk.plugin
        function onAddNetworkAudioScheduleResponse(success, code, id) { if (root.schedule === 0) root.request.answer(success, code, id); }
        function onUpdateNetworkAudioScheduleResponse(success, code, id) { if (root.schedule !== 0) root.request.answer(success, code, id); }
    }
}
