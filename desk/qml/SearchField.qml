import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// A field that searches while it is typed in; Escape empties it.
TextField {
    id: root
    selectByMouse: true
    implicitHeight: 34
    rightPadding: clear.visible ? clear.width + 6 : 8
    background: FieldFrame { active: root.activeFocus }
    Accessible.name: placeholderText
    Keys.onEscapePressed: function(event) {
        event.accepted = text !== "";
        text = "";
    }

    ToolButton {
        id: clear
        anchors { right: parent.right; verticalCenter: parent.verticalCenter }
        height: parent.height
        width: height
        visible: root.text !== ""
        focusPolicy: Qt.NoFocus
        text: "×"
        Accessible.name: qsTr("Empty the search")
        onClicked: { root.text = ""; root.forceActiveFocus(); }
    }
}
