import QtQuick 2.15
import QtQuick.Controls 2.15
import "."

// One of several texts, in a list that drops down.
ComboBox {
    id: root
    delegate: MenuItem {
        id: entry
        width: ListView.view.width
        text: modelData
        highlighted: root.highlightedIndex === index
        contentItem: PlainText {
            text: entry.text
            elide: Text.ElideRight
            color: entry.highlighted ? Theme.accentText : Theme.text
            font { pixelSize: Theme.textSize; weight: root.currentIndex === index ? Font.DemiBold : Font.Normal }
        }
    }
}
