import QtQuick
import QtTest
import Kestrivane
import "qrc:/qt/qml/Kestrivane/SpringCurve.js" as SpringCurve

TestCase {
    name: "Theme"

    readonly property bool followsTheDesktop: Theme.system.window.hslLightness < 0.5

    function cleanup() {
        Theme.dark = followsTheDesktop
    }

    // `front` as it looks on `back`, which is opaque.
    function over(front, back) {
        const mix = channel => front[channel] * front.a + back[channel] * (1 - front.a)
        return Qt.rgba(mix("r"), mix("g"), mix("b"), 1)
    }
    // The contrast of two opaque colours as WCAG 2 has it.
    function contrast(one, other) {
        const linear = c => c <= 0.04045 ? c / 12.92 : Math.pow((c + 0.055) / 1.055, 2.4)
        const luminance = c => 0.2126 * linear(c.r) + 0.7152 * linear(c.g) + 0.0722 * linear(c.b)
        const [dark, light] = [luminance(one), luminance(other)].sort((a, b) => a - b)
        return (light + 0.05) / (dark + 0.05)
    }

    function test_theAppearanceFollowsTheDesktop() {
        compare(Theme.dark, followsTheDesktop)
    }

    function test_textsCanBeRead_data() {
        return [{ tag: "light", dark: false }, { tag: "dark", dark: true }]
    }
    function test_textsCanBeRead(data) {
        Theme.dark = data.dark
        const background = over(Theme.faded(Theme.windowBackground, 0.5), Theme.popover)
        const card = over(Theme.material, background)
        const on = (tint, below) => over(Theme.faded(tint, 0.15), below)
        const pairs = {
            title: [Theme.primary, background],
            status: [Theme.secondary, background],
            busyStatus: [Theme.blue, background],
            badge: [Theme.primary, on(Theme.secondary, background)],
            emptyState: [Theme.secondary, card],
            name: [Theme.primary, card],
            parentPath: [Theme.secondary, card],
            add: [Theme.blue, on(Theme.blue, background)],
            update: [Theme.orange, on(Theme.orange, card)]
        }
        for (const place in pairs) {
            const reached = contrast(...pairs[place])
            verify(reached >= 4.5, `${place}: ${reached}`)
        }
    }

    function test_aMissingFamilyIsReplaced() {
        compare(Theme.firstInstalled(["No Such Family"], "Fallback"), "Fallback")
        const some = Qt.fontFamilies()[0]
        compare(Theme.firstInstalled(["No Such Family", some], "Fallback"), some)
    }

    // The motion found by small steps through the spring's equation: x'' = k (1 - x) - c x'.
    function simulated(response, dampingFraction, duration) {
        const frequency = 2 * Math.PI / response
        const steps = 20000
        const step = duration / steps
        const positions = [0]
        let x = 0
        let speed = 0
        for (let i = 0; i < steps; ++i) {
            speed += step * (frequency * frequency * (1 - x) - 2 * dampingFraction * frequency * speed)
            x += step * speed
            positions.push(x)
        }
        return time => positions[Math.round(time * steps)]
    }

    function test_springsMoveAsSpringsDo_data() {
        return [
            { tag: "hover", response: 0.3, dampingFraction: 0.6 },
            { tag: "removal", response: 0.4, dampingFraction: 0.75 }
        ]
    }
    function test_springsMoveAsSpringsDo(data) {
        const seconds = SpringCurve.duration(data.response, data.dampingFraction) / 1000
        const position = simulated(data.response, data.dampingFraction, seconds)
        const points = SpringCurve.points(data.response, data.dampingFraction)
        compare(points.length, 60)
        const cubic = (p, u) => p[0] * (1 - u) ** 3 + 3 * p[1] * u * (1 - u) ** 2
                                + 3 * p[2] * u ** 2 * (1 - u) + p[3] * u ** 3
        let start = [0, 0]
        let overshoot = 0
        for (let i = 0; i < points.length; i += 6) {
            const [x1, y1, x2, y2, x3, y3] = points.slice(i, i + 6)
            for (let u = 0; u <= 1; u += 0.1) {
                const reached = cubic([start[1], y1, y2, y3], u)
                fuzzyCompare(reached, position(cubic([start[0], x1, x2, x3], u)), 0.002)
                overshoot = Math.max(overshoot, reached - 1)
            }
            start = [x3, y3]
        }
        compare(start, [1, 1])
        // exp(-pi d / sqrt(1 - d^2)) for a damping fraction d
        const d = data.dampingFraction
        fuzzyCompare(overshoot, Math.exp(-Math.PI * d / Math.sqrt(1 - d * d)), 0.002)
    }
}
