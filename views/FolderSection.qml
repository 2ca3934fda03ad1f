// The watched folders: a heading with their number, a card for each, and the button that adds more.
// The list scrolls; it never grows out of the room that it is given.
import QtQuick
import Kestrivane

Item {
    id: section

    required property var viewModel
    // The Tab key comes from and goes to these controls. Of the cards it reaches the current one; the
    // arrow keys go to the others.
    required property Item previousStop
    required property Item nextStop
    readonly property Item firstStop: list.currentItem?.removeButton ?? addButton
    readonly property Item addButton: list.footerItem?.addButton ?? null

    Row {
        id: heading
        anchors.left: parent.left
        anchors.leftMargin: 20
        spacing: 8

        Label {
            objectName: "heading"
            anchors.verticalCenter: parent.verticalCenter
            text: section.viewModel.isRussian ? "АКТИВНЫЕ ПАПКИ" : "ACTIVE FOLDERS"
            font.family: Theme.roundedFamily
            font.pixelSize: 12
            font.weight: Font.DemiBold
            font.letterSpacing: 1.2
            color: Theme.secondary
        }
        Panel {
            objectName: "badge"
            implicitWidth: count.implicitWidth + 2 * 8
            implicitHeight: count.implicitHeight + 2 * 4
            radius: 8
            continuous: true
            fill: Theme.faded(Theme.secondary, 0.15)

            Label {
                id: count
                objectName: "count"
                anchors.centerIn: parent
                text: list.count
                font.family: Theme.monospacedFamily
                font.pixelSize: 11
                font.weight: Font.Bold
            }
        }
    }

    ListView {
        id: list

        objectName: "list"
        anchors {
            top: heading.bottom
            left: parent.left
            right: parent.right
            topMargin: 14
        }
        height: Math.min(280, section.height - y)
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        spacing: 8
        model: section.viewModel.monitoredFolders
        Accessible.role: Accessible.List
        Accessible.name: section.viewModel.isRussian ? "Активные папки" : "Active folders"

        delegate: FocusScope {
            id: row

            required property int index
            required property string name
            required property string parentPath
            readonly property alias removeButton: card.removeButton

            width: list.width
            height: card.height

            FolderCardView {
                id: card
                anchors {
                    left: parent.left
                    right: parent.right
                    leftMargin: 20
                    rightMargin: 20
                }
                name: row.name
                parentPath: row.parentPath
                isRussian: section.viewModel.isRussian
                removeButton.focus: true
                removeButton.KeyNavigation.tab: section.addButton
                // A card that is vanishing has no place in the list any more.
                onRemove: if (row.index >= 0) section.viewModel.removeFolder(row.index)
            }
        }

        footer: Item {
            id: end

            readonly property alias addButton: add

            width: list.width
            height: column.height

            Column {
                id: column
                // When the last card goes, the list moves back to its origin but leaves the footer
                // where it was.
                y: list.count === 0 ? -end.y : 0
                width: parent.width
                // The list puts no space between its last card and the footer.
                topPadding: list.count > 0 ? list.spacing : 0
                spacing: list.spacing

                EmptyFolders {
                    visible: list.count === 0
                    x: 20
                    width: parent.width - 2 * 20
                    isRussian: section.viewModel.isRussian
                }
                Item {
                    width: parent.width
                    height: 4 + add.height

                    AddFolderButton {
                        id: add
                        x: 20
                        y: 4
                        width: parent.width - 2 * 20
                        name: section.viewModel.isRussian ? "Добавить папку" : "Add folder"
                        KeyNavigation.tab: section.nextStop
                        KeyNavigation.backtab: list.currentItem?.removeButton ?? section.previousStop
                        onClicked: section.viewModel.selectFolders()
                    }
                }
            }
        }

        add: Transition {
            Spring {
                property: "scale"
                from: 0.9
                to: 1
                response: 0.4
                dampingFraction: 0.75
            }
            Spring {
                property: "opacity"
                from: 0
                to: 1
                response: 0.4
                dampingFraction: 0.75
            }
        }
        remove: Transition {
            Spring {
                property: "scale"
                to: 0.8
                response: 0.4
                dampingFraction: 0.75
            }
            Spring {
                property: "opacity"
                to: 0
                response: 0.4
                dampingFraction: 0.75
            }
        }
        displaced: Transition {
            Spring {
                property: "y"
                response: 0.4
                dampingFraction: 0.75
            }
            // A card may be displaced while it is still being added.
            Spring {
                properties: "scale, opacity"
                to: 1
                response: 0.4
                dampingFraction: 0.75
            }
        }
    }
}
