// The program's icon, which turns while a conversion runs, its name, what it does now, and the button
// that ends it.
import QtQuick
import Kestrivane

Item {
    id: header

    required property var viewModel
    property url artwork: "qrc:/kestrivane/kestrivane-icon.svg"
    readonly property alias exitButton: exit

    implicitHeight: icon.height

    Item {
        id: icon

        objectName: "icon"
        // In degrees. Drawn thirty times a second, which looks as smooth at this size as sixty.
        property real turn: 0
        rotation: Math.round(turn / 8) * 8
        width: 42
        height: 42

        Image {
            id: picture
            anchors.fill: parent
            source: header.artwork
            sourceSize: Qt.size(width, height)
            antialiasing: true
            smooth: true
        }
        Symbol {
            objectName: "missingIcon"
            anchors.centerIn: parent
            visible: picture.status === Image.Error
            name: "questionmark.app"
            size: 35
            color: Theme.primary
        }

        RotationAnimation on turn {
            objectName: "turning"
            // A popover that nobody sees has nothing to turn.
            running: header.viewModel.isProcessing && icon.Window.window?.visible === true
            from: 0
            to: 360
            duration: 1500
            loops: Animation.Infinite
            onStarted: settling.stop()
            onStopped: settling.start()
        }
        RotationAnimation {
            id: settling
            target: icon
            property: "turn"
            to: 0
            direction: RotationAnimation.Shortest
            duration: 350
            easing.type: Easing.InOutQuad
        }
    }

    Column {
        anchors {
            left: icon.right
            right: exit.left
            leftMargin: 16
            rightMargin: 16
            verticalCenter: parent.verticalCenter
        }
        spacing: 2

        Label {
            objectName: "title"
            text: "Kestrivane"
            font.family: Theme.roundedFamily
            font.pixelSize: 22
            font.weight: Font.Bold
        }
        Label {
            readonly property bool busy: header.viewModel.isProcessing
            readonly property string converting: header.viewModel.isRussian ? "Конвертация..." : "Converting..."
            readonly property string ready: header.viewModel.isRussian ? "Готов к работе" : "Ready to work"

            objectName: "status"
            text: busy ? converting : ready
            font.pixelSize: 11
            font.weight: Font.Medium
            color: busy ? Theme.blue : Theme.secondary

            Behavior on color {
                ColorAnimation {
                    duration: 350
                    easing.type: Easing.InOutQuad
                }
            }
        }
    }

    SymbolButton {
        id: exit
        objectName: "exit"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        name: header.viewModel.isRussian ? "Завершить Kestrivane" : "Quit Kestrivane"
        symbol: "power.circle.fill"
        symbolSize: 26
        restingOpacity: 0.6
        onClicked: header.viewModel.quit()
    }
}
