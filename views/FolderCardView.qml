// One watched folder: its name, where it is, and the button that removes it from the list.
import QtQuick
import Kestrivane

Panel {
    id: card

    required property string name
    required property string parentPath
    required property bool isRussian
    readonly property alias removeButton: removal

    signal remove

    objectName: "card"
    implicitHeight: tile.height + 2 * 12
    radius: 16
    continuous: true
    fill: Theme.material
    outline: Qt.rgba(1, 1, 1, 0.4)
    outlineEnd: Qt.rgba(1, 1, 1, 0)
    Accessible.role: Accessible.ListItem
    Accessible.name: name
    Accessible.description: parentPath
    Keys.onDeletePressed: event => removal.press(event)

    HoverHandler {
        id: hover
    }

    Panel {
        id: tile
        objectName: "tile"
        anchors.left: parent.left
        anchors.leftMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        width: 40
        height: 40
        radius: 10
        fill: Theme.faded(Theme.blue, 0.2)
        fillEnd: Theme.faded(Theme.cyan, 0.1)

        Symbol {
            objectName: "folderSymbol"
            anchors.fill: parent
            name: "folder.fill"
            size: 18
            color: Theme.blue
            shadowColor: Theme.faded(Theme.blue, 0.4)
            shadowRadius: 3
            shadowOffset: 2
        }
    }

    Column {
        anchors {
            left: tile.right
            right: removal.left
            leftMargin: 14
            rightMargin: 14
            verticalCenter: parent.verticalCenter
        }
        spacing: 2

        Label {
            objectName: "name"
            width: parent.width
            text: card.name
            elide: Text.ElideMiddle
            maximumLineCount: 1
            font.family: Theme.roundedFamily
            font.pixelSize: 14
            font.weight: Font.DemiBold
        }
        Label {
            objectName: "parentPath"
            width: parent.width
            text: card.parentPath
            elide: Text.ElideLeft
            maximumLineCount: 1
            font.family: Theme.monospacedFamily
            font.pixelSize: 10
            color: Theme.secondary
        }
    }

    SymbolButton {
        id: removal
        objectName: "remove"
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        name: card.isRussian ? "Убрать папку " + card.name : "Remove " + card.name
        symbol: "xmark.circle.fill"
        symbolSize: 18
        restingOpacity: 0.3
        raised: hover.hovered || activeFocus
        onClicked: card.remove()
    }
}
