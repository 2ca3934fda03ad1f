// Sets the appearance of everything that is shown by the same engine.
import QtQuick
import Kestrivane

QtObject {
    required property bool dark

    Component.onCompleted: Theme.dark = dark
}
