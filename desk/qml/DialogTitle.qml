import QtQuick 2.15
import "."

// The head of a dialog.
PlainText {
    topPadding: 16
    leftPadding: 18
    rightPadding: 18
    bottomPadding: 2
    elide: Text.ElideRight
    color: Theme.text
    font { pixelSize: 17; weight: Font.DemiBold }
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
