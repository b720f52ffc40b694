import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// Adds a group, or changes one.
FormDialog {
    id: root
    property int group: 0
    readonly property DeviceModel speakers: desk.plugin.getIPAudioModel(root)

    function create() {
        fill(0, "", []);
        title = qsTr("Add a group");
        open();
    }
    function edit(id, name, ids) {
        fill(id, name, ids);
        title = qsTr("Group \"%1\"").arg(name);
        open();
    }
    function fill(id, name, ids) {
        group = id;
        nameField.text = name;
        nameField.touched = false;
        members.clearSearch();
        members.checkedIds = ids ? Array.from(ids) : [];
    }

    objectName: "groupDialog"
    wanted: 500
    onOpened: nameField.field.forceActiveFocus()
    valid: nameField.valid && members.checkedIds.length > 0
    hint: qsTr("A name and at least one speaker are needed.")
    onSave: {
        if (group === 0)
            request.begin(desk.plugin.addNetworkAudioGroup(nameField.text, members.checkedIds));
        else
            request.begin(desk.plugin.updateNetworkAudioGroup(group, nameField.text, members.checkedIds));
    }

    contentItem: ColumnLayout {
        spacing: 10
        FormField {
            id: nameField
            objectName: "groupName"
            Layout.fillWidth: true
            label: qsTr("Name")
            problem: text.trim() === "" ? qsTr("Give the group a name.") : text.length > desk.protocol.maxNameLength ? qsTr("At most %1 characters.").arg(desk.protocol.maxNameLength) : ""
            field.onAccepted: root.submit()
        }
        CheckList {
            id: members
            objectName: "groupMembers"
            Layout.fillWidth: true
            Layout.fillHeight: true
            label: qsTr("Speakers of the group")
            model: root.speakers
            idName: "idRole"
            nameName: "deviceNameRole"
            emptyText: qsTr("There are no speakers yet: add them on the page Speakers.")
        }
    }

    Connections {
        target: desk.plugin
        function onAddNetworkAudioGroupResponse(success, code, id) { if (root.group === 0) root.request.answer(success, code, id); }
        function onUpdateNetworkAudioGroupResponse(success, code, id) { if (root.group !== 0) root.request.answer(success, code, id); }
    }
}
