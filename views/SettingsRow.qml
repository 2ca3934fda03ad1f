// One line of the settings: a symbol in a disc, a text, and at the end the control that is the child.
import QtQuick
import Kestrivane

Item {
    id: row

    required property string symbol
    required property color tint
    required property string text
    default property alias control: controls.data

    implicitHeight: disc.height + 2 * 16

    Panel {
        id: disc
        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        width: 32
        height: 32
        radius: 16
        fill: Theme.faded(row.tint, 0.2)

        Symbol {
            anchors.centerIn: parent
            name: row.symbol
            size: 14
            color: row.tint
        }
    }
    Label {
        objectName: "settingText"
        anchors {
            left: disc.right
            right: controls.left
            leftMargin: 12
            rightMargin: 8
            verticalCenter: parent.verticalCenter
        }
        text: row.text
        elide: Text.ElideRight
        font.pixelSize: 14
        font.weight: Font.Medium
    }
    Row {
        id: controls
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
    }
}
