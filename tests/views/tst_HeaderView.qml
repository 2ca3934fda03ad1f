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
    Component {
        id: headerWithoutArtwork

        HeaderView {
            viewModel: model
            artwork: "qrc:/no-such-file.svg"
        }
    }

    TestCase {
        name: "HeaderView"
        when: windowShown

        readonly property Item icon: findChild(view, "icon")
        readonly property Item title: findChild(view, "title")
        readonly property Item status: findChild(view, "status")
        readonly property Item exit: findChild(view, "exit")

        function init() {
            model.isProcessing = false
            model.isRussian = false
            model.calls = []
            mouseMove(view, 180, 500)
        }

        function test_theContentHasItsSizeAndBackground() {
            compare(view.implicitWidth, 360)
            compare(view.implicitHeight, 540)
            const background = findChild(view, "background")
            compare(background.opacity, 0.5)
            compare(background.color, Theme.windowBackground)
            compare(background.width, 360)
            compare(background.height, 540)
        }

        function test_theIconStandsAtTheTopLeft() {
            compare(icon.mapToItem(view, 0, 0), Qt.point(20, 24))
            compare(icon.width, 42)
            compare(icon.height, 42)
            verify(!findChild(icon, "missingIcon").visible)
        }

        function test_aMissingIconIsReplacedByTheSymbol() {
            ignoreWarning(/Cannot open: qrc:\/no-such-file.svg/)
            const header = createTemporaryObject(headerWithoutArtwork, view)
            const symbol = findChild(header, "missingIcon")
            tryVerify(() => symbol.visible)
            compare(symbol.name, "questionmark.app")
        }

        function test_theIconTurnsOnlyWhileAConversionRuns() {
            compare(icon.rotation, 0)
            const turning = findChild(view, "turning")
            compare(turning.duration, 1500)
            compare(turning.to - turning.from, 360)
            verify(turning.loops < 0)  // endless
            compare(turning.easing.type, Easing.Linear)

            model.isProcessing = true
            tryVerify(() => icon.rotation > 180)
            compare(icon.transformOrigin, Item.Center)
            model.isProcessing = false
            tryCompare(icon, "rotation", 0)
        }

        function test_theTitle() {
            compare(title.text, "Kestrivane")
            compare(title.font.pixelSize, 22)
            compare(title.font.weight, Font.Bold)
            compare(title.font.family, Theme.roundedFamily)
            compare(title.color, Theme.primary)
            compare(title.mapToItem(view, 0, 0).x, 20 + 42 + 16)
            compare(status.mapToItem(title, 0, 0), Qt.point(0, title.height + 2))
        }

        function test_theStatusFollowsTheModelAtOnce_data() {
            return [
                { tag: "English", isRussian: false, ready: "Ready to work", busy: "Converting..." },
                { tag: "Russian", isRussian: true, ready: "Готов к работе", busy: "Конвертация..." }
            ]
        }
        function test_theStatusFollowsTheModelAtOnce(data) {
            model.isRussian = data.isRussian
            compare(status.text, data.ready)
            compare(status.font.pixelSize, 11)
            compare(status.font.weight, Font.Medium)
            tryCompare(status, "color", Theme.secondary)
            model.isProcessing = true
            compare(status.text, data.busy)
            tryCompare(status, "color", Theme.blue)
            model.isProcessing = false
            compare(status.text, data.ready)
            tryCompare(status, "color", Theme.secondary)
        }

        function test_theExitButtonGrowsAndBrightensUnderThePointer() {
            tryCompare(exit, "scale", 1)
            tryCompare(exit, "opacity", 0.6)
            compare(exit.symbol, "power.circle.fill")
            compare(exit.symbolSize, 26)
            mouseMove(exit, exit.width / 2, exit.height / 2)
            tryCompare(exit, "scale", 1.1)
            tryCompare(exit, "opacity", 1)
            mouseMove(view, 180, 500)
            tryCompare(exit, "scale", 1)
            tryCompare(exit, "opacity", 0.6)
        }

        function test_theExitButtonQuits() {
            // It may still be shrinking from the test before.
            tryVerify(() => exit.mapToItem(view, exit.width, 0).x === 360 - 20)
            mouseClick(exit)
            compare(model.calls, [["quit"]])
        }
    }
}
