// Opens the folder chooser.
import QtQuick
import Kestrivane

PlainButton {
    id: button

    objectName: "add"
    implicitHeight: label.height + 2 * 12

    Panel {
        anchors.fill: parent
        radius: 14
        continuous: true
        fill: Theme.faded(Theme.blue, 0.15)
        outline: Theme.faded(Theme.blue, 0.3)
    }
    Row {
        id: label
        anchors.centerIn: parent
        spacing: 8

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            name: "plus.circle.fill"
            size: 14
            color: Theme.blue
        }
        Label {
            objectName: "addText"
            anchors.verticalCenter: parent.verticalCenter
            text: button.name
            font.pixelSize: 14
            font.weight: Font.DemiBold
            color: Theme.blue
        }
    }
    FocusRing {
        anchors.margins: 0
        radius: 14
    }
}
