import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// Entries to be chosen by check boxes, with a search and a count. The entries are a model with an id and a name role and with
// setFilter(); or, with the idName "modelData", an array of objects with id and name.
ColumnLayout {
    id: root
    property string label
    property var model
    property string idName
    property string nameName
    property var checkedIds: []
    property string emptyText
    readonly property bool isArray: idName === "modelData"
    signal edited()

    function isChecked(id) {
        return checkedIds.indexOf(id) >= 0;
    }
    function setChecked(id, checked) {
        const others = checkedIds.filter(function(other) { return other !== id; });
        checkedIds = checked ? others.concat([id]) : others;
        edited();
    }
    function clearSearch() {
        search.text = "";
    }

    spacing: 4

    RowLayout {
        Layout.fillWidth: true
        PlainText {
            Layout.fillWidth: true
            text: root.checkedIds.length > 0 ? qsTr("%1 (%2 chosen)").arg(root.label).arg(root.checkedIds.length) : root.label
            elide: Text.ElideRight
            color: Theme.text
            font.pixelSize: Theme.textSize
        }
        SearchField {
            id: search
            objectName: root.objectName !== "" ? root.objectName + "Search" : ""
            Layout.preferredWidth: 150
            placeholderText: qsTr("Search")
            onTextChanged: if (!root.isArray) root.model.setFilter(text)
        }
    }
    ListFrame {
        id: frame
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.minimumHeight: 96
        name: root.label
        model: !root.isArray ? root.model
            : (root.model || []).filter(function(entry) { return entry.name.toLowerCase().indexOf(search.text.toLowerCase()) >= 0; })
        onToggleRequested: function(entry) { entry.toggle(); }
        delegate: TickBox {
            id: box
            readonly property var entryId: root.isArray ? modelData.id : model[root.idName]
            width: ListView.view.width
            text: root.isArray ? modelData.name : model[root.nameName] || ""
            checked: root.isChecked(entryId)
            focusPolicy: Qt.ClickFocus
            onClicked: {
                ListView.view.currentIndex = index;
                root.setChecked(entryId, checked);
                checked = Qt.binding(function() { return root.isChecked(box.entryId); });
            }
            function toggle() { root.setChecked(entryId, !root.isChecked(entryId)); }
        }
        PlainText {
            anchors.centerIn: parent
            width: parent.width - 24
            visible: frame.count === 0
            text: search.text !== "" ? qsTr("Nothing is found.") : root.emptyText
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            color: Theme.quiet
            font.pixelSize: Theme.textSize
        }
    }
}
