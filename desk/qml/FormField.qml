import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// A labelled text field that says at once what is wrong with its text.
ColumnLayout {
    id: root
    property alias text: field.text
    property alias field: field
    property string label
    property string problem
    property bool touched: false
    readonly property bool valid: problem === ""
    signal edited()

    spacing: 3

    PlainText {
        text: root.label
        color: Theme.text
        font.pixelSize: Theme.textSize
    }
    TextField {
        id: field
        Layout.fillWidth: true
        selectByMouse: true
        Accessible.name: root.label
        Accessible.description: hint.visible ? root.problem : ""
        onTextEdited: { root.touched = true; root.edited(); }
        background: FieldFrame { active: field.activeFocus; wrong: hint.visible }
    }
    PlainText {
        id: hint
        Layout.fillWidth: true
        visible: root.touched && !root.valid
        text: root.problem
        wrapMode: Text.Wrap
        color: Theme.bad
        font.pixelSize: Theme.smallSize
    }
}
