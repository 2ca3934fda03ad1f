// Shows that its parent has the keyboard.
import QtQuick
import Kestrivane

Panel {
    anchors.fill: parent
    anchors.margins: -3
    radius: Math.min(width, height) / 2
    outline: Theme.focus
    visible: parent.activeFocus
}
