import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// A date and a time of day, as ISO 8601 without an offset.
RowLayout {
    id: root
    property string name
    property string value
    readonly property bool valid: !isNaN(Date.fromLocaleString(Qt.locale("C"), day.text + " " + time.text, "yyyy-MM-dd hh:mm").getTime())
    spacing: 8

    onValueChanged: {
        const parts = value.split("T");
        if (day.text !== parts[0])
            day.text = parts[0];
        if (parts.length > 1 && time.text !== parts[1].substring(0, 5))
            time.text = parts[1].substring(0, 5);
    }
    function take() {
        if (valid)
            value = day.text + "T" + time.text + ":00";
    }

    TextField {
        id: day
        implicitWidth: 130
        selectByMouse: true
        placeholderText: "2026-12-31"
        Accessible.name: qsTr("%1: day, like 2026-12-31").arg(root.name)
        onTextChanged: root.take()
        background: FieldFrame { active: day.activeFocus; wrong: !root.valid }
    }
    TextField {
        id: time
        implicitWidth: 80
        selectByMouse: true
        placeholderText: "08:30"
        Accessible.name: qsTr("%1: time, like 08:30").arg(root.name)
        onTextChanged: root.take()
        background: FieldFrame { active: time.activeFocus; wrong: !root.valid }
    }
    Item { Layout.fillWidth: true }
}
