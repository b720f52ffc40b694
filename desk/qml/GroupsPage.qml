import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import VoiceDesk 1.0
import "."

// Groups of speakers.
DeskPage {
    id: root
    readonly property GroupModel groups: desk.plugin.getNetworkAudioGroupModel(root)

    editor: dialog
    function focusSearch() { search.forceActiveFocus(); }

    RowLayout {
        Layout.fillWidth: true
        spacing: 12
        SearchField {
            id: search
            objectName: "groupSearch"
            Layout.preferredWidth: 260
            placeholderText: qsTr("Search groups and members")
            onTextChanged: root.groups.setFilter(text)
        }
        ActionButton {
            id: order
            property bool descending: false
            text: descending ? qsTr("Z to A") : qsTr("A to Z")
            Accessible.name: qsTr("Order: %1").arg(text)
            onClicked: {
                descending = !descending;
                root.groups.setSort(descending ? Qt.DescendingOrder : Qt.AscendingOrder);
            }
        }
        Item { Layout.fillWidth: true }
        ActionButton {
            objectName: "addGroup"
            highlighted: true
            text: qsTr("Add a group…")
            onClicked: root.addNew()
        }
    }
    ListFrame {
        id: frame
        objectName: "groupList"
        Layout.fillWidth: true
        Layout.fillHeight: true
        name: qsTr("Groups")
        model: root.groups
        onOpenRequested: function(entry) { entry.edit(); }
        onDeleteRequested: function(entry) { entry.remove(); }
        delegate: RecordRow {
            title: nameRole || ""
            detail: networkAudioNameListRole && networkAudioNameListRole.length > 0
                    ? qsTr("%n speaker(s)", "", networkAudioNameListRole.length) + ": " + networkAudioNameListRole.join(", ")
                    : qsTr("no speakers")
            onEdit: dialog.edit(idRole, nameRole, networkAudioIDListRole)
            onRemove: {
                confirm.group = idRole;
                confirm.question = qsTr("Delete the group \"%1\"? Its speakers stay. Schedules that play on it lose it. This cannot be undone.").arg(nameRole);
                confirm.open();
            }
        }
        EmptyHint {
            anchors.centerIn: parent
            visible: frame.count === 0
            title: search.text !== "" ? qsTr("Nothing is found.") : qsTr("No groups yet.")
            hint: search.text !== "" ? qsTr("Neither a group nor one of its members has this text in its name.") : qsTr("A group plays a file on several speakers at once, in step.")
            action: search.text === "" ? qsTr("Add a group…") : ""
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

    PendingRequest { id: deletion }
    Connections {
        target: desk.plugin
        function onDeleteNetworkAudioGroupResponse(success, code, id) { deletion.answer(success, code, id); }
    }
    ConfirmDialog {
        id: confirm
        property int group
        title: qsTr("Delete a group")
        onAccepted: deletion.begin(desk.plugin.deleteNetworkAudioGroup(group))
    }
    GroupDialog { id: dialog }
}
