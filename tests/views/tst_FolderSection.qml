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

    // With more room than the popover has.
    Component {
        id: roomySection

        FolderSection {
            width: 360
            height: 800
            viewModel: model
            previousStop: view
            nextStop: view
        }
    }
    TestCase {
        name: "FolderSection"
        when: windowShown

        readonly property Item list: findChild(view, "list")
        readonly property Item add: findChild(view, "add")

        function init() {
            mouseMove(view, 180, 20)
            model.isRussian = false
            model.monitoredFolders.clear()
            list.forceLayout()
            tryVerify(() => rows().length === 0)
            model.calls = []
        }

        // The rows that are shown, among them those that are vanishing.
        function rows() {
            return Array.from(list.contentItem.children).filter(item => item.removeButton !== undefined)
        }
        function row(index) {
            tryVerify(() => list.itemAtIndex(index) !== null)
            return list.itemAtIndex(index)
        }
        // Lists folders and waits until nothing moves.
        function watch(paths) {
            paths.forEach(path => model.watch(path))
            list.forceLayout()
            tryVerify(() => rows().every(item => item.scale === 1 && item.opacity === 1))
        }

        function test_theHeading() {
            const heading = findChild(view, "heading")
            compare(heading.text, "ACTIVE FOLDERS")
            model.isRussian = true
            compare(heading.text, "АКТИВНЫЕ ПАПКИ")
            compare(heading.font.pixelSize, 12)
            compare(heading.font.weight, Font.DemiBold)
            fuzzyCompare(heading.font.letterSpacing, 1.2, 0.02)
            compare(heading.font.family, Theme.roundedFamily)
            compare(heading.color, Theme.secondary)
            compare(heading.mapToItem(view, 0, 0).x, 20)
        }

        function test_theBadgeCounts() {
            const count = findChild(view, "count")
            const badge = findChild(view, "badge")
            tryCompare(count, "text", "0")
            model.watch("/a")
            tryCompare(count, "text", "1")
            for (let i = 0; i < 999; ++i)
                model.watch("/" + i)
            tryCompare(count, "text", "1000")
            compare(count.font.pixelSize, 11)
            compare(count.font.weight, Font.Bold)
            compare(count.font.family, Theme.monospacedFamily)
            compare(count.color, Theme.primary)
            compare(badge.width, count.width + 16)
            compare(badge.height, count.height + 8)
            verify(badge.continuous)
            compare(badge.fill, Theme.faded(Theme.secondary, 0.15))
        }

        function test_withoutFoldersTheEmptyStateStandsAboveTheButton() {
            const empty = findChild(view, "emptyState")
            const text = findChild(view, "emptyText")
            verify(empty.visible)
            compare(text.text, "Add folders to monitor")
            model.isRussian = true
            compare(text.text, "Добавьте папки для слежения")
            compare(text.font.pixelSize, 13)
            compare(text.color, Theme.secondary)
            compare(empty.radius, 20)
            compare(empty.width, 320)
            compare(empty.outline, Qt.rgba(1, 1, 1, 0.15))
            verify(add.mapToItem(view, 0, 0).y > empty.mapToItem(view, 0, empty.height).y)
            watch(["/a"])
            verify(!empty.visible)
        }

        function test_anAddedCardScalesInFromNineTenths() {
            model.watch("/a")
            list.forceLayout()
            const card = row(0)
            compare(card.scale, 0.9)
            compare(card.opacity, 0)
            compare(card.transformOrigin, Item.Center)
            tryCompare(card, "scale", 1)
            tryCompare(card, "opacity", 1)
        }

        function test_aRemovedCardFadesAndScalesToEightTenths() {
            watch(["/a", "/b"])
            const card = row(0)
            const scales = []
            const opacities = []
            card.scaleChanged.connect(() => scales.push(card.scale))
            card.opacityChanged.connect(() => opacities.push(card.opacity))
            mouseClick(card.removeButton)
            compare(model.calls, [["removeFolder", 0]])
            tryCompare(findChild(view, "count"), "text", "1")
            tryVerify(() => rows().length === 1)
            compare(scales[scales.length - 1], 0.8)
            compare(opacities[opacities.length - 1], 0)
            tryCompare(row(0), "y", 0)
        }

        function test_aVanishingCardCannotBeRemovedAgain() {
            watch(["/a", "/b"])
            const button = row(0).removeButton
            button.clicked()
            list.forceLayout()
            button.clicked()
            compare(model.calls, [["removeFolder", 0]])
        }

        function test_cardsComeToRestWhenTransitionsMeet() {
            watch(["/a", "/b"])
            model.watch("/c")
            list.forceLayout()
            model.removeFolder(0)
            list.forceLayout()
            model.watch("/d")
            tryVerify(() => rows().length === 3)
            tryVerify(() => rows().every(item => item.scale === 1 && item.opacity === 1))
            const places = rows().map(item => item.y).sort((a, b) => a - b)
            compare(places, [0, 72, 144])
        }

        function test_manyFoldersScrollInTheirRoom() {
            const settings = findChild(view, "settings")
            const before = [settings.y, findChild(view, "title").mapToItem(view, 0, 0).y]
            const paths = []
            for (let i = 0; i < 20; ++i)
                paths.push("/folder" + i)
            watch(paths)
            verify(list.height <= 280)
            verify(list.contentHeight > list.height)
            compare([settings.y, findChild(view, "title").mapToItem(view, 0, 0).y], before)
            verify(list.mapToItem(view, 0, list.height).y <= settings.y)
            list.positionViewAtEnd()
            verify(list.mapFromItem(add, 0, add.height).y <= list.height)
        }

        function test_theListIsNoHigherThanItMayBeWhereThereIsMoreRoom() {
            const paths = []
            for (let i = 0; i < 20; ++i)
                paths.push("/folder" + i)
            watch(paths)
            const roomy = findChild(createTemporaryObject(roomySection, view), "list")
            compare(roomy.height, 280)
            verify(roomy.contentHeight > 280)
            verify(roomy.clip)
        }

        function test_theEmptyStateIsInSightAfterAScrolledListWasEmptied() {
            watch(["/a", "/b", "/c", "/d", "/e", "/f"])
            list.positionViewAtEnd()
            for (let left = 5; left >= 0; --left) {
                model.removeFolder(0)
                tryVerify(() => rows().length === left)
            }
            const empty = findChild(view, "emptyState")
            tryVerify(() => list.mapFromItem(empty, 0, 0).y === 0)
            verify(list.mapFromItem(add, 0, add.height).y <= list.height)
        }

        function test_threeFoldersAndTheButtonNeedNoScrolling() {
            watch(["/a", "/b", "/c"])
            verify(list.contentHeight <= list.height, `${list.contentHeight} in ${list.height}`)
        }

        function test_theCard() {
            watch(["/home/anna/Pictures"])
            const card = findChild(row(0), "card")
            compare(card.x, 20)
            compare(card.width, 320)
            compare(card.height, 64)
            compare(card.radius, 16)
            verify(card.continuous)
            compare(card.outline, Qt.rgba(1, 1, 1, 0.4))
            compare(card.outlineEnd, Qt.rgba(1, 1, 1, 0))

            const name = findChild(card, "name")
            compare(name.text, "Pictures")
            compare(name.font.pixelSize, 14)
            compare(name.font.weight, Font.DemiBold)
            compare(name.font.family, Theme.roundedFamily)
            const parentPath = findChild(card, "parentPath")
            compare(parentPath.text, "/home/anna")
            compare(parentPath.font.pixelSize, 10)
            compare(parentPath.font.family, Theme.monospacedFamily)
            compare(parentPath.color, Theme.secondary)
            compare(name.mapToItem(card, 0, 0).x, 12 + 40 + 14)
            compare(parentPath.mapToItem(name, 0, 0), Qt.point(0, name.height + 2))
        }

        function test_aLongPathLosesItsHead() {
            watch(["/" + "long/".repeat(40) + "parent/Name " + "x".repeat(200)])
            const parentPath = findChild(row(0), "parentPath")
            compare(parentPath.elide, Text.ElideLeft)
            verify(parentPath.truncated)
            const name = findChild(row(0), "name")
            verify(name.truncated)
            const button = row(0).removeButton
            verify(name.mapToItem(view, name.width, 0).x < button.mapToItem(view, 0, 0).x)
        }

        function test_aNameIsNoMarkup() {
            watch(["/<b>bold</b> &amp; <img src='x'>"])
            compare(findChild(row(0), "name").textFormat, Text.PlainText)
            compare(findChild(row(0), "parentPath").textFormat, Text.PlainText)
        }

        function test_theRemoveButtonIsDimUnlessThePointerIsOnItsCard() {
            watch(["/a", "/b"])
            const button = row(0).removeButton
            compare(button.opacity, 0.3)
            compare(button.scale, 1)
            compare(button.symbol, "xmark.circle.fill")
            compare(button.symbolSize, 18)
            mouseMove(row(0), 60, 10)
            tryCompare(button, "opacity", 1)
            tryCompare(button, "scale", 1.1)
            compare(row(1).removeButton.opacity, 0.3)
            mouseMove(row(1), 60, 10)
            tryCompare(button, "opacity", 0.3)
            tryCompare(button, "scale", 1)
        }

        function test_theAddButtonOpensTheChooser() {
            const text = findChild(add, "addText")
            compare(text.text, "Add folder")
            model.isRussian = true
            compare(text.text, "Добавить папку")
            compare(text.font.pixelSize, 14)
            compare(text.font.weight, Font.DemiBold)
            compare(text.color, Theme.blue)
            compare(add.width, 320)
            compare(add.mapToItem(view, 0, 0).x, 20)
            mouseClick(add)
            compare(model.calls, [["selectFolders"]])
        }
    }
}
