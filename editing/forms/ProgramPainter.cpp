#include "editing/forms/ProgramPainter.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace kestrova {

namespace {

constexpr double Degrees16 = 180.0 / std::numbers::pi * 16;

bool IsArc(ElementKind kind) {
    return kind == ElementKind::ArcCw || kind == ElementKind::ArcCcw;
}

// Pixels of an image set one by one, for the level of millions of elements.
class Pixels {
public:
    explicit Pixels(QImage& image)
        : m_bits(reinterpret_cast<QRgb*>(image.bits())), m_stride(image.bytesPerLine() / 4),
          m_width(image.width()), m_height(image.height()) {}

    void Set(int x, int y, QRgb colour) {
        if (unsigned(x) < unsigned(m_width) && unsigned(y) < unsigned(m_height))
            m_bits[qsizetype(y) * m_stride + x] = colour;
    }

    // A hit: a square of three by three, or its outline alone for a block delete.
    void Hit(double px, double py, QRgb colour, bool outline) {
        if (px < -2 || py < -2 || px > m_width + 2 || py > m_height + 2)
            return;
        const int x = int(std::lround(px)), y = int(std::lround(py));
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (!outline || dx != 0 || dy != 0)
                    Set(x + dx, y + dy, colour);
    }

    // A line clipped to the image, a pixel set every stride pixels along it: 1 solid, more a
    // dotted line (a rapid move, a block delete), which also costs that much less.
    void Line(double x0, double y0, double x1, double y1, QRgb colour, int stride) {
        // Liang-Barsky: the part of the line within the image.
        double t0 = 0, t1 = 1;
        const double dx = x1 - x0, dy = y1 - y0;
        const double p[4] = {-dx, dx, -dy, dy};
        const double q[4] = {x0, m_width - 1 - x0, y0, m_height - 1 - y0};
        for (int k = 0; k < 4; ++k) {
            if (p[k] == 0) {
                if (q[k] < 0)
                    return;
                continue;
            }
            const double t = q[k] / p[k];
            if (p[k] < 0)
                t0 = std::max(t0, t);
            else
                t1 = std::min(t1, t);
            if (t0 > t1)
                return;
        }
        const double ax = x0 + t0 * dx, ay = y0 + t0 * dy;
        const double steps = std::max(std::abs(dx), std::abs(dy)) * (t1 - t0);
        const int n = int(std::ceil(steps));
        const double sx = n > 0 ? dx * (t1 - t0) / n : 0, sy = n > 0 ? dy * (t1 - t0) / n : 0;
        for (int i = 0; i <= n; i += stride)
            Set(int(ax + i * sx + 0.5), int(ay + i * sy + 0.5), colour);
    }

private:
    QRgb* m_bits;
    qsizetype m_stride;
    int m_width;
    int m_height;
};

} // namespace

ProgramPainter::ProgramPainter(const ProgramDrawing& drawing, const ToolColours& colours)
    : m_drawing(drawing), m_colours(colours) {}

void ProgramPainter::DrawArc(QPainter& painter, const DrawingTransform& view, const ArcCentre& centre,
                             float fromX, float fromY, const DrawnElement& element) {
    const ArcSweep s = SweepOf(centre, fromX, fromY, element);
    const double r = s.radius * view.scale;
    const QRectF box(view.ToX(centre.x) - r, view.ToY(centre.y) - r, 2 * r, 2 * r);
    painter.drawArc(box, int(std::lround(s.start * Degrees16)), int(std::lround(s.turn * Degrees16)));
}

void ProgramPainter::Paint(QImage& image, const DrawingTransform& view) const {
    if (const auto elements = InSight(view))
        PaintSmooth(image, view, *elements);
    else
        PaintPixels(image, view);
}

std::optional<std::vector<std::uint32_t>> ProgramPainter::InSight(const DrawingTransform& view) const {
    const double reach = (HitRadius + 2) / view.scale;
    const double left = view.WorldX(0) - reach, right = view.WorldX(view.width) + reach;
    const double top = view.WorldY(0) + reach, bottom = view.WorldY(view.height) - reach;
    std::vector<std::uint32_t> found;
    bool tooMany = false;
    m_drawing.ForEach(
        [&](std::uint32_t i, const DrawnElement& e, float fromX, float fromY, const ArcCentre* centre) {
            float x0 = std::min(fromX, e.x), x1 = std::max(fromX, e.x);
            float y0 = std::min(fromY, e.y), y1 = std::max(fromY, e.y);
            if (e.kind == ElementKind::Hit) {
                x0 = x1 = e.x;
                y0 = y1 = e.y;
            } else if (centre) {
                const float r = std::hypot(fromX - centre->x, fromY - centre->y);
                x0 = centre->x - r, x1 = centre->x + r, y0 = centre->y - r, y1 = centre->y + r;
            }
            if (tooMany || x1 < left || x0 > right || y1 < bottom || y0 > top)
                return;
            if (found.size() == SmoothLimit)
                tooMany = true;
            else
                found.push_back(i);
        });
    if (tooMany)
        return std::nullopt;
    return found;
}

void ProgramPainter::PaintSmooth(QImage& image, const DrawingTransform& view,
                                 const std::vector<std::uint32_t>& elements) const {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    // The moves first, the hits over them.
    for (const std::uint32_t i : elements) {
        const DrawnElement& e = m_drawing.At(i);
        if (e.kind == ElementKind::Hit)
            continue;
        const auto [fromX, fromY] = StartOf(m_drawing, i);
        const bool rapid = e.kind == ElementKind::Rapid;
        QPen pen(QColor::fromRgb(rapid ? RapidColour : m_colours.Of(e.tool)), rapid ? 1.0 : 1.6);
        pen.setStyle(e.blockDelete ? Qt::DotLine : rapid ? Qt::DashLine : Qt::SolidLine);
        painter.setPen(pen);
        if (IsArc(e.kind)) {
            if (const auto centre = m_drawing.CentreOf(i)) {
                DrawArc(painter, view, *centre, fromX, fromY, e);
                continue;
            }
        }
        painter.drawLine(QPointF(view.ToX(fromX), view.ToY(fromY)), QPointF(view.ToX(e.x), view.ToY(e.y)));
    }
    for (const std::uint32_t i : elements) {
        const DrawnElement& e = m_drawing.At(i);
        if (e.kind != ElementKind::Hit)
            continue;
        const QColor colour = QColor::fromRgb(m_colours.Of(e.tool));
        painter.setPen(QPen(e.blockDelete ? colour : colour.darker(140), e.blockDelete ? 1.6 : 1.0));
        painter.setBrush(e.blockDelete ? QBrush(Qt::NoBrush) : QBrush(colour));
        painter.drawEllipse(QPointF(view.ToX(e.x), view.ToY(e.y)), HitRadius, HitRadius);
    }
}

void ProgramPainter::PaintPixels(QImage& image, const DrawingTransform& view) const {
    Pixels pixels(image);
    const double ox = view.ToX(0), oy = view.ToY(0), s = view.scale;
    m_drawing.ForEach(
        [&](std::uint32_t, const DrawnElement& e, float fromX, float fromY, const ArcCentre* centre) {
            const double x0 = ox + fromX * s, y0 = oy - fromY * s;
            const double px = ox + e.x * s, py = oy - e.y * s;
            const QRgb colour = m_colours.Of(e.tool);
            const int stride = e.blockDelete ? 3 : 1;
            switch (e.kind) {
            case ElementKind::Hit:
                pixels.Hit(px, py, colour, e.blockDelete);
                return;
            case ElementKind::Rapid:
                pixels.Line(x0, y0, px, py, RapidColour, e.blockDelete ? 24 : 12);
                return;
            case ElementKind::Feed:
            case ElementKind::ArcCw:
            case ElementKind::ArcCcw:
                break;
            }
            if (!centre) {
                pixels.Line(x0, y0, px, py, colour, stride);
                return;
            }
            // The arc as a chain of short chords, about four pixels each, turned step by step; an
            // arc whose circle lies wholly outside the image draws nothing.
            const ArcSweep sweep = SweepOf(*centre, fromX, fromY, e);
            const double cx = ox + centre->x * s, cy = oy - centre->y * s, r = sweep.radius * s;
            if (cx + r < 0 || cy + r < 0 || cx - r > view.width || cy - r > view.height)
                return;
            const int pieces = std::clamp(int(std::abs(sweep.turn) * r / 4), 4, 256);
            const double c = std::cos(sweep.turn / pieces), n = std::sin(sweep.turn / pieces);
            double ux = std::cos(sweep.start), uy = std::sin(sweep.start);
            double x = x0, y = y0;
            for (int p = 1; p <= pieces; ++p) {
                const double turned = ux * c - uy * n;
                uy = ux * n + uy * c;
                ux = turned;
                const double nx = cx + r * ux, ny = cy - r * uy;
                pixels.Line(x, y, nx, ny, colour, stride);
                x = nx;
                y = ny;
            }
        });
}

} // namespace kestrova
