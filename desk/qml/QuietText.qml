import QtQuick 2.15
import "."

// An explanation.
PlainText {
    color: Theme.quiet
    font.pixelSize: Theme.smallSize
    wrapMode: Text.Wrap
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
