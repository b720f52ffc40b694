import QtQuick 2.15
import "."

// The heading of a page.
PlainText {
    font.pixelSize: Theme.titleSize
    font.weight: Font.DemiBold
    color: Theme.text
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
