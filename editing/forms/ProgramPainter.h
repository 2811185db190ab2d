#pragma once

#include "editing/DrawingTransform.h"
#include "editing/forms/ToolColours.h"

#include <QImage>

class QPainter;

namespace kestrova {

// Paints a program's drawing into an image whose pixels the transform addresses. Two levels of
// detail: while few elements are in sight, each is drawn smoothly (hits as round symbols, rapid
// moves dashed, arcs as arcs); where hundreds of thousands are, each is set pixel by pixel
// (hits as small squares, lines without smoothing), which keeps a whole sheet of millions of
// hits within a frame or two.
class ProgramPainter {
public:
    ProgramPainter(const ProgramDrawing& drawing, const ToolColours& colours);

    void Paint(QImage& image, const DrawingTransform& view) const;
    // An arc element as the painter's pen draws it.
    static void DrawArc(QPainter& painter, const DrawingTransform& view, const ArcCentre& centre, float fromX,
                        float fromY, const DrawnElement& element);

    // More elements in sight than this are set pixel by pixel.
    static constexpr std::size_t SmoothLimit = 50'000;
    static constexpr QRgb RapidColour = 0xff9a9a9a;
    static constexpr int HitRadius = 4; // pixels, when drawn smoothly

private:
    // The elements in sight, or nothing when there are more than SmoothLimit.
    [[nodiscard]] std::optional<std::vector<std::uint32_t>> InSight(const DrawingTransform& view) const;
    void PaintSmooth(QImage& image, const DrawingTransform& view,
                     const std::vector<std::uint32_t>& elements) const;
    void PaintPixels(QImage& image, const DrawingTransform& view) const;

    const ProgramDrawing& m_drawing;
    const ToolColours& m_colours;
};

} // namespace kestrova
