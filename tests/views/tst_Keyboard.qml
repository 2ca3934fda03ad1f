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
        focus: true
        viewModel: model
    }

    TestCase {
        name: "Keyboard"
        when: windowShown

        readonly property Item list: findChild(view, "list")
        readonly property Item exit: findChild(view, "exit")
        readonly property Item add: findChild(view, "add")
        readonly property Item toggle: findChild(view, "switch")
        readonly property Item update: findChild(view, "update")

        function init() {
            model.monitoredFolders.clear()
            list.forceLayout()
            model.showSuccessNotifications = true
            model.calls = []
            for (const name of ["a", "b", "c", "d", "e", "f"])
                model.watch("/" + name)
            list.forceLayout()
            list.currentIndex = 0
            view.forceActiveFocus()
        }

        function removeButton(index) {
            tryVerify(() => list.itemAtIndex(index) !== null)
            return list.itemAtIndex(index).removeButton
        }
        function expectFocus(item) {
            verify(item.activeFocus, `${item.Window.activeFocusItem} has the keyboard`)
        }

        function test_tabGoesThroughAllControls() {
            const stops = [exit, removeButton(0), add, toggle, update]
            for (const stop of stops) {
                keyClick(Qt.Key_Tab)
                expectFocus(stop)
            }
            for (const stop of stops.slice(0, -1).reverse()) {
                keyClick(Qt.Key_Backtab)
                expectFocus(stop)
            }
        }

        function test_tabGoesThroughAllControlsAfterCardsWereAddedAndRemoved() {
            model.removeFolder(0)
            model.watch("/new")
            list.forceLayout()
            list.positionViewAtEnd()
            list.positionViewAtBeginning()
            for (const stop of [exit, removeButton(0), add, toggle, update]) {
                keyClick(Qt.Key_Tab)
                expectFocus(stop)
            }
        }

        function test_withoutCardsTabSkipsTheList() {
            model.monitoredFolders.clear()
            list.forceLayout()
            for (const stop of [exit, add, toggle, update]) {
                keyClick(Qt.Key_Tab)
                expectFocus(stop)
            }
            keyClick(Qt.Key_Backtab)
            keyClick(Qt.Key_Backtab)
            keyClick(Qt.Key_Backtab)
            expectFocus(exit)
        }

        function test_theFocusIsVisible() {
            const ring = Array.from(exit.children).find(child => child.outline !== undefined)
            verify(!ring.visible)
            keyClick(Qt.Key_Tab)
            verify(ring.visible)
            tryCompare(exit, "opacity", 1)
        }

        function test_arrowsGoFromCardToCardAndScroll() {
            keyClick(Qt.Key_Tab)
            keyClick(Qt.Key_Tab)
            for (let i = 1; i < 6; ++i) {
                keyClick(Qt.Key_Down)
                expectFocus(removeButton(i))
            }
            const last = list.itemAtIndex(5)
            tryVerify(() => list.mapFromItem(last, 0, last.height).y <= list.height)
            keyClick(Qt.Key_Up)
            expectFocus(removeButton(4))
            keyClick(Qt.Key_Tab)
            expectFocus(add)
            keyClick(Qt.Key_Backtab)
            expectFocus(removeButton(4))
        }

        function test_keysRemoveTheCurrentCard_data() {
            return [
                { tag: "space", key: Qt.Key_Space },
                { tag: "return", key: Qt.Key_Return },
                { tag: "enter", key: Qt.Key_Enter },
                { tag: "delete", key: Qt.Key_Delete }
            ]
        }
        function test_keysRemoveTheCurrentCard(data) {
            keyClick(Qt.Key_Tab)
            keyClick(Qt.Key_Tab)
            keyClick(Qt.Key_Down)
            keyClick(data.key)
            compare(model.calls, [["removeFolder", 1]])
            list.forceLayout()
            compare(list.count, 5)
            // The next card has the keyboard now.
            expectFocus(removeButton(1))
        }

        function test_keysPressTheButtons() {
            exit.forceActiveFocus()
            keyClick(Qt.Key_Space)
            add.forceActiveFocus()
            keyClick(Qt.Key_Return)
            update.forceActiveFocus()
            keyClick(Qt.Key_Enter)
            compare(model.calls, [["quit"], ["selectFolders"], ["checkForUpdates"]])
            toggle.forceActiveFocus()
            keyClick(Qt.Key_Space)
            compare(model.showSuccessNotifications, false)
            keyClick(Qt.Key_Return)
            compare(model.showSuccessNotifications, true)
        }

        function test_controlsTellScreenReadersWhatTheyAre() {
            for (const button of [exit, add, update, removeButton(0)]) {
                compare(button.Accessible.role, Accessible.Button)
                verify(button.Accessible.focusable)
            }
            compare(exit.Accessible.name, "Quit Kestrivane")
            compare(add.Accessible.name, "Add folder")
            compare(update.Accessible.name, "Update")
            compare(removeButton(0).Accessible.name, "Remove a")
            compare(toggle.Accessible.role, Accessible.CheckBox)
            compare(toggle.Accessible.name, "Notify on success")
            compare(toggle.Accessible.checked, true)
            compare(list.Accessible.role, Accessible.List)
            const card = findChild(list.itemAtIndex(0), "card")
            compare(card.Accessible.role, Accessible.ListItem)
            compare(card.Accessible.name, "a")
        }
    }
}
