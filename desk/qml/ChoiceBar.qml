import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "."

// One of a few, side by side; arrows move between them.
RowLayout {
    id: root
    property var choices: []
    property int currentIndex: 0
    property bool stretch: false
    spacing: 0

    Repeater {
        model: root.choices
        ActionButton {
            Layout.fillWidth: root.stretch
            checkable: true
            autoExclusive: true
            checked: root.currentIndex === index
            highlighted: checked
            text: modelData
            Accessible.role: Accessible.RadioButton
            Accessible.name: text
            onClicked: root.currentIndex = index
            Keys.onLeftPressed: if (index > 0) { nextItemInFocusChain(false).forceActiveFocus(); root.currentIndex = index - 1; }
            Keys.onRightPressed: if (index < root.choices.length - 1) { nextItemInFocusChain().forceActiveFocus(); root.currentIndex = index + 1; }
        }
    }
}
