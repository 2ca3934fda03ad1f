.pragma library
// The motion of a damped spring of unit mass that is let go at 0, at rest, and comes to rest at 1, as
// an easing curve. The animation that plays it starts at rest too: where a motion is turned round
// half-way, the speed it had is lost. The curve has the spring's own positions and speeds at a few
// moments and is within a thousandth of it at all others; it ends when the spring is that close to 1.

const stillness = 0.001

// The oscillation that decays. `response` is the period of the undamped spring in seconds;
// `dampingFraction`, between 0 and 1, is the part of the damping that would stop all swinging.
function motion(response, dampingFraction) {
    const frequency = 2 * Math.PI / response
    const decay = dampingFraction * frequency
    const swing = frequency * Math.sqrt(1 - dampingFraction * dampingFraction)
    return {
        duration: -Math.log(stillness) / decay,
        position: t => 1 - Math.exp(-decay * t) * (Math.cos(swing * t) + decay / swing * Math.sin(swing * t)),
        speed: t => Math.exp(-decay * t) * frequency * frequency / swing * Math.sin(swing * t)
    }
}

// How long the spring moves, in milliseconds.
function duration(response, dampingFraction) {
    return Math.round(1000 * motion(response, dampingFraction).duration)
}

// Cubic Bézier pieces in the form of QEasingCurve: two handles and an end for each, time and position
// running from 0 to 1. Pieces get longer as the motion calms down. QEasingCurve has room for ten and
// writes beyond its memory when there are more.
function points(response, dampingFraction) {
    const spring = motion(response, dampingFraction)
    const pieces = 10
    const times = Array.from({ length: pieces + 1 }, (_, i) => Math.pow(i / pieces, 1.3))
    const position = time => time === 1 ? 1 : spring.position(time * spring.duration)
    const slope = time => spring.speed(time * spring.duration) * spring.duration
    const result = []
    for (let i = 0; i < pieces; ++i) {
        const start = times[i]
        const end = times[i + 1]
        const third = (end - start) / 3
        result.push(start + third, position(start) + slope(start) * third,
                    end - third, position(end) - slope(end) * third,
                    end, position(end))
    }
    return result
}
