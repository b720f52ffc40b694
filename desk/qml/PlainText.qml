import QtQuick 2.15

// Text as it is: names come from elsewhere, and what looks like markup in them is neither drawn nor fetched.
Text {
    textFormat: Text.PlainText
}
