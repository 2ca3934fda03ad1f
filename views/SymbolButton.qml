// A symbol to click on that grows and brightens while it is raised.
import QtQuick
import Kestrivane

PlainButton {
    id: button

    required property string symbol
    required property real symbolSize
    // Of the button while it is not raised.
    required property real restingOpacity
    property bool raised: hovered || activeFocus

    implicitWidth: picture.implicitWidth
    implicitHeight: picture.implicitHeight
    scale: raised ? 1.1 : 1
    opacity: raised ? 1 : restingOpacity

    Behavior on scale {
        Spring {
            objectName: "scaleSpring"
        }
    }
    Behavior on opacity {
        Spring {
            objectName: "opacitySpring"
        }
    }

    Symbol {
        id: picture
        name: button.symbol
        size: button.symbolSize
        color: Theme.secondary
    }
    FocusRing {}
}
