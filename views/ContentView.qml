// The content of the popover: a header, the watched folders and the settings. It holds no state; it
// shows the properties of the view model (see ViewModelObject.hpp) and calls its operations.
import QtQuick
import Kestrivane

Item {
    id: content

    required property var viewModel

    implicitWidth: 360
    implicitHeight: 540
    width: implicitWidth
    height: implicitHeight
    focus: true

    Rectangle {
        anchors.fill: parent
        color: Theme.popover
    }
    Rectangle {
        objectName: "background"
        anchors.fill: parent
        color: Theme.windowBackground
        opacity: 0.5
    }

    // Whatever comes with addresses of files is taken; the view model sorts out what is a folder.
    DropArea {
        anchors.fill: parent
        onEntered: drag => drag.accepted =
            drag.urls.some(url => url.toString().startsWith("file:"))
        onDropped: drop => {
            drop.accept(Qt.CopyAction)
            if (drop.urls.length > 0)
                content.viewModel.addFolders(drop.urls)
        }
    }

    HeaderView {
        id: header
        anchors {
            top: parent.top
            left: parent.left
            right: parent.right
            topMargin: 24
            leftMargin: 20
            rightMargin: 20
        }
        viewModel: content.viewModel
        exitButton.KeyNavigation.tab: folders.firstStop
    }
    FolderSection {
        id: folders
        anchors {
            top: header.bottom
            bottom: settings.top
            left: parent.left
            right: parent.right
            topMargin: 10
            bottomMargin: 10
        }
        viewModel: content.viewModel
        previousStop: header.exitButton
        nextStop: settings.firstStop
    }
    SettingsCard {
        id: settings
        anchors {
            bottom: parent.bottom
            left: parent.left
            right: parent.right
            bottomMargin: 24
            leftMargin: 20
            rightMargin: 20
        }
        viewModel: content.viewModel
    }
}
