#include "editing/DrawingTransform.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kestrova {

namespace {

double DistanceToSegment(double px, double py, double ax, double ay, double bx, double by) {
    const double dx = bx - ax, dy = by - ay;
    const double length2 = dx * dx + dy * dy;
    const double t = length2 > 0 ? std::clamp(((px - ax) * dx + (py - ay) * dy) / length2, 0.0, 1.0) : 0.0;
    return std::hypot(px - (ax + t * dx), py - (ay + t * dy));
}

// Whether the angle a lies on the sweep.
bool OnSweep(const ArcSweep& s, double a) {
    constexpr double Full = 2 * std::numbers::pi;
    double along = s.turn >= 0 ? a - s.start : s.start - a;
    along = std::fmod(std::fmod(along, Full) + Full, Full);
    return along <= std::abs(s.turn);
}

} // namespace

DrawingTransform DrawingTransform::Fitting(const Bounds& box, int width, int height, int margin) {
    DrawingTransform t;
    t.width = width;
    t.height = height;
    t.centreX = (double(box.minX) + box.maxX) / 2;
    t.centreY = (double(box.minY) + box.maxY) / 2;
    const double w = std::max(1e-3, double(box.maxX) - box.minX);
    const double h = std::max(1e-3, double(box.maxY) - box.minY);
    t.scale = std::max(1e-6, std::min((width - 2.0 * margin) / w, (height - 2.0 * margin) / h));
    return t;
}

ArcSweep SweepOf(const ArcCentre& centre, float fromX, float fromY, const DrawnElement& element) {
    constexpr double Full = 2 * std::numbers::pi;
    ArcSweep s;
    s.radius = std::hypot(double(fromX) - centre.x, double(fromY) - centre.y);
    s.start = std::atan2(double(fromY) - centre.y, double(fromX) - centre.x);
    const double end = std::atan2(double(element.y) - centre.y, double(element.x) - centre.x);
    const bool clockwise = element.kind == ElementKind::ArcCw;
    double turn = clockwise ? s.start - end : end - s.start;
    turn = std::fmod(std::fmod(turn, Full) + Full, Full);
    if (turn < 1e-9) // back where it started: the whole circle
        turn = Full;
    s.turn = clockwise ? -turn : turn;
    return s;
}

std::pair<float, float> StartOf(const ProgramDrawing& drawing, std::uint32_t i) {
    if (i == 0)
        return {drawing.startX, drawing.startY};
    const DrawnElement& before = drawing.At(i - 1);
    return {before.x, before.y};
}

std::optional<std::uint32_t> PickElement(const ProgramDrawing& drawing, const DrawingTransform& view,
                                         double px, double py, double tolerance) {
    std::optional<std::uint32_t> found;
    double best = tolerance;
    bool bestIsHit = false;
    // The world point and tolerance, so that the loop over millions of elements stays simple.
    const double wx = view.WorldX(px), wy = view.WorldY(py), reach = tolerance / view.scale;
    drawing.ForEach(
        [&](std::uint32_t i, const DrawnElement& e, float fromX, float fromY, const ArcCentre* centre) {
            double distance = -1;
            if (e.kind == ElementKind::Hit) {
                if (std::abs(e.x - wx) <= reach && std::abs(e.y - wy) <= reach)
                    distance = std::hypot(e.x - wx, e.y - wy) * view.scale;
            } else if (centre) {
                const ArcSweep s = SweepOf(*centre, fromX, fromY, e);
                const double dx = wx - centre->x, dy = wy - centre->y;
                if (OnSweep(s, std::atan2(dy, dx)))
                    distance = std::abs(std::hypot(dx, dy) - s.radius) * view.scale;
            } else if (std::min(fromX, e.x) - reach <= wx && wx <= std::max(fromX, e.x) + reach &&
                       std::min(fromY, e.y) - reach <= wy && wy <= std::max(fromY, e.y) + reach) {
                distance = DistanceToSegment(wx, wy, fromX, fromY, e.x, e.y) * view.scale;
            }
            const bool hit = e.kind == ElementKind::Hit;
            if (distance < 0 || (bestIsHit && !hit))
                return;
            if (distance <= best || (hit && !bestIsHit)) {
                best = distance;
                bestIsHit = hit;
                found = i;
            }
        });
    return found;
}

} // namespace kestrova
