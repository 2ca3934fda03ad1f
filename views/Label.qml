// A text as it stands, whatever characters it has.
import QtQuick
import Kestrivane

Text {
    textFormat: Text.PlainText
    font.family: Theme.systemFamily
    color: Theme.primary
}
