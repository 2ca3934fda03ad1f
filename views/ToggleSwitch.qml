// A switch. It shows `checked` and asks for the other value by `toggled`; it does not change by itself.
import QtQuick
import Kestrivane

Panel {
    id: toggle

    // For screen readers.
    required property string name
    required property color tint
    required property bool checked

    signal toggled

    objectName: "switch"
    implicitWidth: 38
    implicitHeight: 22
    radius: height / 2
    fill: checked ? tint : Theme.faded(Theme.secondary, 0.35)
    activeFocusOnTab: true
    Accessible.role: Accessible.CheckBox
    Accessible.name: name
    Accessible.focusable: true
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: toggled()
    Accessible.onToggleAction: toggled()

    function press(event) {
        if (!event.isAutoRepeat)
            toggled()
    }
    Keys.onSpacePressed: event => press(event)
    Keys.onReturnPressed: event => press(event)
    Keys.onEnterPressed: event => press(event)

    Behavior on fill {
        ColorAnimation {
            duration: 150
        }
    }

    Panel {
        id: knob
        x: toggle.checked ? toggle.width - width - 2 : 2
        y: 2
        width: 18
        height: 18
        radius: 9
        fill: "white"

        Behavior on x {
            NumberAnimation {
                duration: 150
                easing.type: Easing.InOutQuad
            }
        }
    }
    TapHandler {
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: toggle.toggled()
    }
    FocusRing {}
}
