import QtQuick 2.15

// One entry of Pages.
QtObject {
    property string name // for the program
    property string title // for people
    property string file // of the page, a DeskPage
}
