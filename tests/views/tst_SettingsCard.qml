import QtQuick
import QtTest
import Kestrivane

Item {
    width: 360
    height: 540

    FakeViewModel {
        id: model
    }
    ContentView {
        id: view
        viewModel: model
    }

    TestCase {
        name: "SettingsCard"
        when: windowShown

        readonly property Item settings: findChild(view, "settings")
        readonly property Item toggle: findChild(view, "switch")
        readonly property Item update: findChild(view, "update")

        function init() {
            model.isRussian = false
            model.showSuccessNotifications = true
            model.calls = []
        }
        // All items below `item` with that object name.
        function all(item, name) {
            return Array.from(item.children).reduce((found, child) => found.concat(all(child, name)),
                                                    item.objectName === name ? [item] : [])
        }

        function test_theCard() {
            compare(settings.x, 20)
            compare(settings.width, 320)
            compare(settings.y + settings.height, 540 - 24)
            compare(settings.height, 64 + 1 + 64)
            compare(settings.radius, 18)
            compare(settings.outline, Qt.rgba(1, 1, 1, 0.2))
        }

        function test_theTextsFitInBothLanguages_data() {
            return [
                { tag: "English", isRussian: false, texts: ["Notify on success", "Check for Updates"] },
                { tag: "Russian", isRussian: true, texts: ["Уведомлять об успехе", "Check for Updates"] }
            ]
        }
        function test_theTextsFitInBothLanguages(data) {
            model.isRussian = data.isRussian
            const labels = all(settings, "settingText")
            compare(labels.map(label => label.text), data.texts)
            compare(update.name, "Update")
            for (const label of labels) {
                compare(label.font.pixelSize, 14)
                compare(label.font.weight, Font.Medium)
                compare(label.color, Theme.primary)
                verify(!label.truncated)
            }
        }

        function test_theSwitchIsBoundBothWays() {
            verify(toggle.checked)
            tryCompare(toggle, "fill", Theme.purple)
            mouseClick(toggle)
            compare(model.showSuccessNotifications, false)
            verify(!toggle.checked)
            model.showSuccessNotifications = true
            verify(toggle.checked)
            tryCompare(toggle, "fill", Theme.purple)
        }

        function test_updateChecksForUpdates() {
            mouseClick(update)
            compare(model.calls, [["checkForUpdates"]])
        }
    }
}
