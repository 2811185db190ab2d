#pragma once

#include "editing/ProgramDrawing.h"

#include <optional>

namespace kestrova {

// Where the drawing of a program stands in a window: so many pixels per millimetre (or inch),
// the point of the sheet at the window's centre, Y upwards as on the machine.
struct DrawingTransform {
    double scale = 1;
    double centreX = 0;
    double centreY = 0;
    int width = 0;
    int height = 0;

    [[nodiscard]] double ToX(double x) const { return width / 2.0 + (x - centreX) * scale; }
    [[nodiscard]] double ToY(double y) const { return height / 2.0 - (y - centreY) * scale; }
    [[nodiscard]] double WorldX(double px) const { return centreX + (px - width / 2.0) / scale; }
    [[nodiscard]] double WorldY(double py) const { return centreY - (py - height / 2.0) / scale; }

    // The whole box in a window of that size, with a margin of pixels all round.
    [[nodiscard]] static DrawingTransform Fitting(const Bounds& box, int width, int height, int margin);
};

// An arc element as angles: where it starts and how far it turns (negative clockwise), in
// radians; a full circle turns the whole way.
struct ArcSweep {
    double radius = 0;
    double start = 0;
    double turn = 0;
};
[[nodiscard]] ArcSweep SweepOf(const ArcCentre& centre, float fromX, float fromY,
                               const DrawnElement& element);

// Where element i starts: the end of the one before, or the program's start point.
[[nodiscard]] std::pair<float, float> StartOf(const ProgramDrawing& drawing, std::uint32_t i);

// The element under a point of the window, within tolerance pixels of a hit, a line or an arc:
// a hit before any move (its mark lies over them), else the nearest, and of equals the one drawn
// last (it lies on top).
[[nodiscard]] std::optional<std::uint32_t> PickElement(const ProgramDrawing& drawing,
                                                       const DrawingTransform& view, double px, double py,
                                                       double tolerance);

} // namespace kestrova
