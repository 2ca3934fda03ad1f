// A movement like that of a damped spring.
import QtQuick
import "SpringCurve.js" as SpringCurve

NumberAnimation {
    // See SpringCurve.js for both.
    property real response: 0.3
    property real dampingFraction: 0.6

    duration: SpringCurve.duration(response, dampingFraction)
    easing.type: Easing.BezierSpline
    easing.bezierCurve: SpringCurve.points(response, dampingFraction)
}
