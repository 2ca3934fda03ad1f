// The switch for notifications of success and the way to updates.
import QtQuick
import Kestrivane

Panel {
    id: settings

    required property var viewModel
    readonly property alias firstStop: notifications

    objectName: "settings"
    implicitHeight: column.height
    radius: 18
    fill: Theme.material
    outline: Qt.rgba(1, 1, 1, 0.2)

    Column {
        id: column
        width: parent.width

        SettingsRow {
            id: success
            width: parent.width
            symbol: "bell.badge.fill"
            tint: Theme.purple
            text: settings.viewModel.isRussian ? "Уведомлять об успехе" : "Notify on success"

            ToggleSwitch {
                id: notifications
                name: success.text
                tint: success.tint
                checked: settings.viewModel.showSuccessNotifications
                onToggled: settings.viewModel.showSuccessNotifications = !checked
            }
        }
        Rectangle {
            x: 16
            width: parent.width - 2 * 16
            height: 1
            color: Qt.rgba(1, 1, 1, 0.1)

            Rectangle {
                anchors.fill: parent
                color: Theme.separator
            }
        }
        SettingsRow {
            id: updates
            width: parent.width
            symbol: "arrow.triangle.2.circlepath.circle.fill"
            tint: Theme.orange
            text: "Check for Updates"

            PlainButton {
                id: update
                objectName: "update"
                name: "Update"
                implicitWidth: label.implicitWidth + 2 * 12
                implicitHeight: label.implicitHeight + 2 * 6
                onClicked: settings.viewModel.checkForUpdates()

                Panel {
                    anchors.fill: parent
                    radius: height / 2
                    fill: Theme.faded(updates.tint, 0.15)
                }
                Label {
                    id: label
                    anchors.centerIn: parent
                    text: update.name
                    font.pixelSize: 12
                    font.weight: Font.Bold
                    color: updates.tint
                }
                FocusRing {}
            }
        }
    }
}
