// A button without a look of its own: what it shows are its children.
import QtQuick
import Kestrivane

Item {
    id: button

    // For screen readers.
    required property string name
    readonly property alias hovered: hover.hovered

    signal clicked

    activeFocusOnTab: true
    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.focusable: true
    Accessible.onPressAction: clicked()

    // Holding the key down is one click.
    function press(event) {
        if (!event.isAutoRepeat)
            clicked()
    }
    Keys.onSpacePressed: event => press(event)
    Keys.onReturnPressed: event => press(event)
    Keys.onEnterPressed: event => press(event)

    HoverHandler {
        id: hover
    }
    TapHandler {
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: button.clicked()
    }
}
