// How gradients, the shadow and the springs of the views come out, as they are used there.
import QtQuick
import QtTest
import Kestrivane
import "qrc:/qt/qml/Kestrivane/SpringCurve.js" as SpringCurve

Item {
    width: 360
    height: 640

    FakeViewModel {
        id: model
    }
    ContentView {
        id: view
        viewModel: model
    }
    // Black: what is white and shines through can be seen on it.
    Rectangle {
        id: board
        y: 540
        width: 360
        height: 100
        color: "black"

        FolderCardView {
            id: card
            x: 10
            y: 10
            width: 220
            name: "Pictures"
            parentPath: "/home/anna"
            isRussian: false
        }
        Rectangle {
            id: paper
            x: 250
            width: 102
            height: 100

            // Columns of 34 points.
            Symbol {
                width: 34
                height: 100
                name: "folder.fill"
                size: 18
                color: "black"
            }
            Symbol {
                x: 34
                width: 34
                height: 100
                name: "folder.fill"
                size: 18
                color: "black"
                shadowColor: Qt.rgba(0, 0, 0, 0.4)
                shadowRadius: 3
                shadowOffset: 2
            }
            Symbol {
                x: 68
                width: 34
                height: 100
                name: "folder.fill"
                size: 18
                color: "black"
                colorEnd: Qt.rgba(0, 0, 0, 0.5)
            }
        }
    }

    TestCase {
        name: "Looks"
        when: windowShown

        function compareColours(actual, expected, place) {
            for (const channel of ["r", "g", "b"])
                fuzzyCompare(actual[channel], expected[channel], 4 / 255, `${place}: ${actual}, not ${expected}`)
        }
        // `front` as it looks on `back`, which is opaque.
        function over(front, back) {
            const mix = channel => front[channel] * front.a + back[channel] * (1 - front.a)
            return Qt.rgba(mix("r"), mix("g"), mix("b"), 1)
        }
        // A gradient's colour at a part of its way, mixed as it is drawn: with the opacities applied.
        function between(start, end, part) {
            const alpha = start.a * (1 - part) + end.a * part
            const mix = channel => (start[channel] * start.a * (1 - part) + end[channel] * end.a * part) / alpha
            return Qt.rgba(mix("r"), mix("g"), mix("b"), alpha)
        }

        function test_theTileOfACardFadesFromBlueToCyan() {
            const tile = findChild(card, "tile")
            compare(tile.fill, Theme.faded(Theme.blue, 0.2))
            compare(tile.fillEnd, Theme.faded(Theme.cyan, 0.1))
            compare([tile.width, tile.height, tile.radius], [40, 40, 10])
            const shown = grabImage(board)
            const below = over(Theme.material, Qt.rgba(0, 0, 0, 1))
            // Near the corners, where symbol and shadow do not reach.
            for (const [x, y] of [[4, 4], [36, 4], [4, 36], [36, 36]]) {
                const place = tile.mapToItem(board, x, y)
                const colour = between(tile.fill, tile.fillEnd, (x + y + 1) / 80)
                compareColours(shown.pixel(place.x, place.y), over(colour, below), `${x}, ${y}`)
            }
        }

        function test_theOutlineOfACardFadesFromItsTopLeftToItsBottomRight() {
            const shown = grabImage(board)
            const below = over(Theme.material, Qt.rgba(0, 0, 0, 1))
            // The part of the diagonal that a point on the edge is at.
            const part = (x, y) => (x * card.width + y * card.height) / (card.width ** 2 + card.height ** 2)
            for (const [x, y] of [[30, 0], [110, 0], [110, card.height - 1], [190, card.height - 1]]) {
                const white = Qt.rgba(1, 1, 1, 0.4 * (1 - part(x + 0.5, y + 0.5)))
                compareColours(shown.pixel(card.x + x, card.y + y), over(white, below), `${x}, ${y}`)
            }
        }

        function test_theSymbolOfTheEmptyStateFadesDownwards() {
            const symbol = findChild(view, "emptySymbol")
            compare(symbol.name, "folder.badge.questionmark")
            compare(symbol.size, 36)
            compare(symbol.color, Theme.secondary)
            compare(symbol.colorEnd, Theme.faded(Theme.secondary, 0.5))
        }

        // How dark the paper is in the middle of a column, from 0 to 1, and the rows that are at least
        // so dark.
        function darkness(shown, column, y) {
            return 1 - shown.red(paper.x + 34 * column + 17, y) / 255
        }
        function rowsOf(shown, column, least) {
            return Array.from({ length: 100 }, (_, y) => y).filter(y => darkness(shown, column, y) >= least)
        }

        function test_aGradientRunsDownASymbol() {
            const shown = grabImage(board)
            const rows = rowsOf(shown, 0, 0.9)
            verify(rows.length > 8, `${rows}`)
            // The symbol's square is 22 points high and in the middle of the column.
            rows.forEach(y => fuzzyCompare(darkness(shown, 2, y), 1 - 0.5 * (y + 0.5 - 39) / 22, 0.03))
        }

        function test_theFolderSymbolCastsAShadow() {
            const symbol = findChild(card, "folderSymbol")
            compare(symbol.name, "folder.fill")
            compare(symbol.size, 18)
            compare(symbol.color, Theme.blue)
            compare(symbol.shadowColor, Theme.faded(Theme.blue, 0.4))
            compare(symbol.shadowRadius, 3)
            compare(symbol.shadowOffset, 2)
        }

        function test_aShadowFallsBelowItsSymbol() {
            const shown = grabImage(board)
            const symbol = rowsOf(shown, 0, 0.5)
            const shadow = rowsOf(shown, 1, 0.02)
            const above = symbol[0] - shadow[0]
            const under = shadow[shadow.length - 1] - symbol[symbol.length - 1]
            verify(Math.abs(under - above - 2 * 2) <= 1, `${above} above, ${under} under`)
            // A radius of three points: it has faded away three points from its edge.
            verify(Math.abs(under + above - 2 * 3) <= 1, `${above} above, ${under} under`)
            // Directly under the symbol nearly all of it is there.
            fuzzyCompare(darkness(shown, 1, symbol[symbol.length - 1] + 1), 0.4 * 0.84, 0.06)
        }

        function compareSpring(spring, response, dampingFraction) {
            compare([spring.response, spring.dampingFraction], [response, dampingFraction])
            compare(spring.duration, SpringCurve.duration(response, dampingFraction))
            compare(spring.easing.type, Easing.BezierSpline)
            const curve = Array.from(spring.easing.bezierCurve)
            const points = SpringCurve.points(response, dampingFraction)
            compare(curve.length, points.length)
            curve.forEach((value, i) => fuzzyCompare(value, points[i], 1e-5))
        }

        function test_buttonsGrowAndBrightenBySprings() {
            for (const button of [findChild(view, "exit"), card.removeButton]) {
                mouseMove(button)  // springs are made when they are first needed
                tryCompare(button, "scale", 1.1)
                compareSpring(findChild(button, "scaleSpring"), 0.3, 0.6)
                compareSpring(findChild(button, "opacitySpring"), 0.3, 0.6)
            }
        }

        function test_cardsComeAndGoBySprings() {
            const list = findChild(view, "list")
            // Transitions, too, are made when they are first needed.
            model.watch("/a")
            model.watch("/b")
            list.forceLayout()
            model.removeFolder(0)
            list.forceLayout()
            for (const transition of [list.add, list.remove, list.displaced]) {
                verify(transition.animations.length >= 2)
                Array.from(transition.animations).forEach(spring => compareSpring(spring, 0.4, 0.75))
            }
        }

        function test_aGrowingButtonSwingsPastItsSize() {
            const button = card.removeButton
            let largest = 0
            const record = () => largest = Math.max(largest, button.scale)
            // Again where a machine was too busy to draw anything of the swing.
            for (let attempt = 0; attempt < 10 && largest <= 1.1; ++attempt) {
                mouseMove(view, 180, 300)
                tryCompare(button, "scale", 1)
                button.scaleChanged.connect(record)
                mouseMove(card, 60, 20)
                tryCompare(button, "scale", 1.1)
                button.scaleChanged.disconnect(record)
            }
            verify(largest > 1.1)
            // exp(-pi d / sqrt(1 - d^2)) of the way, for the damping fraction d
            verify(largest < 1.1 + 0.1 * 0.096)
        }
    }
}
