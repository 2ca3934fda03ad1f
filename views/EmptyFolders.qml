// What stands in the place of the cards while no folder is watched.
import QtQuick
import Kestrivane

Panel {
    id: empty

    required property bool isRussian

    objectName: "emptyState"
    implicitHeight: column.height + 2 * 40
    radius: 20
    fill: Theme.material
    outline: Qt.rgba(1, 1, 1, 0.15)

    Column {
        id: column
        anchors.centerIn: parent
        spacing: 12

        Symbol {
            objectName: "emptySymbol"
            anchors.horizontalCenter: parent.horizontalCenter
            name: "folder.badge.questionmark"
            size: 36
            color: Theme.secondary
            colorEnd: Theme.faded(Theme.secondary, 0.5)
        }
        Label {
            objectName: "emptyText"
            text: empty.isRussian ? "Добавьте папки для слежения" : "Add folders to monitor"
            font.pixelSize: 13
            font.weight: Font.Medium
            color: Theme.secondary
        }
    }
}
