import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// One record in a list: what it is, and what can be done with it.
Item {
    id: root
    property string title
    property string detail
    property string footnote
    property string note
    property bool noteGood: true
    property string extraText
    property bool extraEnabled: true
    property bool editable: true
    property bool removable: true
    property real progress: -1
    // The buttons of the current row alone take Tab. One that has the focus keeps it.
    readonly property bool takesTab: !ListView.view || ListView.isCurrentItem
    default property alias controls: extraControls.data
    signal extra()
    signal edit()
    signal remove()

    width: ListView.view ? ListView.view.width : implicitWidth
    height: footnote === "" ? Theme.rowHeight : Theme.rowHeight + 16
    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.description: detail + (note !== "" ? ", " + note : "")

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        id: area
        onClicked: { root.ListView.view.forceActiveFocus(); root.ListView.view.currentIndex = index; }
        onDoubleClicked: if (root.editable) root.edit()
    }
    Rectangle {
        anchors.fill: parent
        radius: Theme.radius
        color: area.containsMouse || root.ListView.isCurrentItem ? Theme.raised : "transparent"
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; leftMargin: 10; rightMargin: 10 }
        height: 1
        color: Theme.border
        opacity: 0.6
    }
    RowLayout {
        anchors { fill: parent; leftMargin: 10; rightMargin: 8 }
        spacing: 8
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 1
            PlainText {
                Layout.fillWidth: true
                text: root.title
                elide: Text.ElideRight
                maximumLineCount: 1
                color: Theme.text
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
            PlainText {
                Layout.fillWidth: true
                visible: text !== ""
                text: root.footnote
                elide: Text.ElideRight
                color: Theme.quiet
                font.pixelSize: Theme.smallSize
            }
        }
        PlainText {
            Layout.maximumWidth: 320
            visible: root.note !== ""
            text: root.note
            elide: Text.ElideRight
            color: root.noteGood ? Theme.good : Theme.bad
            font.pixelSize: Theme.smallSize
        }
        RowLayout {
            id: extraControls
            spacing: 6
        }
        ActionButton {
            focusPolicy: activeFocus || root.takesTab ? Qt.StrongFocus : Qt.ClickFocus
            visible: root.extraText !== ""
            enabled: root.extraEnabled
            text: root.extraText
            Accessible.name: qsTr("%1: %2").arg(root.title).arg(text)
            onClicked: root.extra()
        }
        ActionButton {
            focusPolicy: activeFocus || root.takesTab ? Qt.StrongFocus : Qt.ClickFocus
            visible: root.editable
            text: qsTr("Edit…")
            Accessible.name: qsTr("%1: edit").arg(root.title)
            onClicked: root.edit()
        }
        ActionButton {
            focusPolicy: activeFocus || root.takesTab ? Qt.StrongFocus : Qt.ClickFocus
            visible: root.removable
            text: qsTr("Delete…")
            Accessible.name: qsTr("%1: delete").arg(root.title)
            onClicked: root.remove()
        }
    }
}
