#include "editing/forms/ProgramView.h"

#include "editing/ProgramLoad.h"
#include "editing/ProgramReader.h"
#include "editing/forms/ProgramPainter.h"
#include "platform/Errors.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QWheelEvent>
#include <cmath>

namespace kestrova {

namespace {

constexpr int FitMargin = 24;
// The time one slice of reading may take before the window paints again.
constexpr std::chrono::milliseconds SliceTime{25};
// A press that moves farther than this is a drag, not a click.
constexpr double DragDistance = 4;
constexpr double PickTolerance = 6;
constexpr double ZoomStep = 1.25;
// How often a window waiting for a drawing on the worker looks whether it is done.
constexpr int RenderPollMilliseconds = 15;
// The legend shows at most this many tools, then how many more there are.
constexpr int LegendRows = 16;

constexpr QRgb OutsideColour = 0xffdcdcdc;
constexpr QRgb FrameColour = 0xff505050;
constexpr QRgb StartColour = 0xff00a000;

// A length for the scale bar of about the given size: 1, 2 or 5 times a power of ten.
double RoundLength(double about) {
    const double power = std::pow(10.0, std::floor(std::log10(about)));
    for (const double step : {1.0, 2.0, 5.0})
        if (step * power >= about)
            return step * power;
    return 10 * power;
}

QString Number(double value) {
    return QString::number(value, 'g', 6);
}

} // namespace

ProgramView::ProgramView(QWidget* parent)
    : QWidget(parent), m_loadTimer(new QTimer(this)), m_renderPoll(new QTimer(this)) {
    setObjectName(QStringLiteral("ProgramView"));
    setAccessibleName(QStringLiteral("Program Drawing"));
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(160, 120);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_loadTimer->setInterval(0);
    connect(m_loadTimer, &QTimer::timeout, this, &ProgramView::LoadSlice);
    m_renderPoll->setInterval(RenderPollMilliseconds);
    connect(m_renderPoll, &QTimer::timeout, this, [this] {
        if (m_pending.valid() && m_pending.wait_for(std::chrono::seconds(0)) == std::future_status::ready)
            update();
    });
}

ProgramView::~ProgramView() {
    WaitForRender();
}

void ProgramView::SetMachine(const MachineFrame& machine) {
    m_machine = machine;
    if (m_fitted)
        Fit();
    update();
}

void ProgramView::Load(const FileSystem& files, const QString& path) {
    m_loadTimer->stop();
    m_load.reset();
    m_loadError.clear();
    m_load = std::make_unique<ProgramLoad>(files, path, ReaderOptions{m_machine.punching});
    m_loadTimer->start();
    update();
}

void ProgramView::LoadSlice() {
    bool done = false;
    try {
        done = m_load->Step(SliceTime);
    } catch (const SystemError& error) {
        m_loadError = error.text();
        done = true;
    }
    if (!done) {
        update();
        return;
    }
    m_loadTimer->stop();
    WaitForRender();
    m_drawing = m_load->Finish();
    m_load.reset();
    Drawn();
    Q_EMIT LoadFinished();
}

void ProgramView::SetProgramText(const QByteArray& text) {
    SetDrawing(ReadProgramText(text, ReaderOptions{m_machine.punching}));
}

void ProgramView::SetDrawing(ProgramDrawing drawing) {
    m_loadTimer->stop();
    m_load.reset();
    WaitForRender();
    m_drawing = std::move(drawing);
    Drawn();
}

void ProgramView::Drawn() {
    WaitForRender();
    ++m_generation;
    m_colours = ToolColours(m_drawing.toolsUsed);
    if (m_highlight && *m_highlight >= m_drawing.Count())
        m_highlight.reset();
    m_cacheValid = false;
    if (m_fitted)
        Fit();
    update();
}

void ProgramView::SetCurrentLine(int line) {
    const auto element = m_drawing.ElementOfLine(line);
    if (element == m_highlight)
        return;
    m_highlight = element;
    if (m_highlight) {
        // An element out of sight is brought to the middle.
        const DrawnElement& e = m_drawing.At(*m_highlight);
        const double x = m_view.ToX(e.x), y = m_view.ToY(e.y);
        if (x < 0 || y < 0 || x > width() || y > height()) {
            m_view.centreX = e.x;
            m_view.centreY = e.y;
            m_fitted = false;
        }
    }
    update();
}

std::optional<std::pair<float, float>> ProgramView::FrameSize() const {
    if (m_drawing.sheet)
        return m_drawing.sheet;
    if (m_machine.xTravel > 0 && m_machine.yTravel > 0)
        return std::pair{m_machine.xTravel, m_machine.yTravel};
    return std::nullopt;
}

Bounds ProgramView::Extent() const {
    Bounds box = m_drawing.bounds;
    box.Add(m_drawing.startX, m_drawing.startY);
    if (const auto frame = FrameSize()) {
        box.Add(0, 0);
        box.Add(frame->first, frame->second);
    }
    return box;
}

void ProgramView::Fit() {
    // The whole drawing beside the legend and above the notes, never under them.
    const int right = m_drawing.toolsUsed.empty() ? 0 : LegendBox().width() + 8;
    const int bottom = NotesHeight();
    m_view = DrawingTransform::Fitting(Extent(), width() - right, height() - bottom, FitMargin);
    m_view.width = width();
    m_view.height = height();
    m_view.centreX += right / 2.0 / m_view.scale;
    m_view.centreY -= bottom / 2.0 / m_view.scale;
    m_fitted = true;
    update();
}

QRect ProgramView::LegendBox() const {
    const QFontMetrics metrics = fontMetrics();
    const int row = metrics.height() + 2;
    const int tools = int(m_drawing.toolsUsed.size());
    const int rows = std::min(LegendRows, tools) + 1 + (tools > LegendRows ? 1 : 0);
    const int boxWidth = metrics.horizontalAdvance(QStringLiteral("+ 000 more")) + 16;
    return QRect(width() - boxWidth - 8, 8, boxWidth, rows * row + 8);
}

int ProgramView::NotesHeight() const {
    // The scale bar and up to three notes.
    return 4 * (fontMetrics().height() + 2) + 8;
}

void ProgramView::ZoomAt(double factor, QPointF anchor) {
    // The point under the anchor stays where it is.
    const double x = m_view.WorldX(anchor.x()), y = m_view.WorldY(anchor.y());
    m_view.scale = std::clamp(m_view.scale * factor, 1e-4, 1e5);
    m_view.centreX = x - (anchor.x() - width() / 2.0) / m_view.scale;
    m_view.centreY = y + (anchor.y() - height() / 2.0) / m_view.scale;
    m_fitted = false;
    update();
}

void ProgramView::PanBy(QPointF pixels) {
    m_view.centreX -= pixels.x() / m_view.scale;
    m_view.centreY += pixels.y() / m_view.scale;
    m_fitted = false;
    update();
}

QString ProgramView::Unit() const {
    return m_machine.imperial ? QStringLiteral("in") : QStringLiteral("mm");
}

QStringList ProgramView::Notes() const {
    QStringList notes;
    if (const auto frame = FrameSize())
        notes << QStringLiteral("%1 %2 x %3 %4")
                     .arg(m_drawing.sheet ? QStringLiteral("Sheet") : QStringLiteral("Travel"),
                          Number(frame->first), Number(frame->second), Unit());
    if (m_load)
        notes << QStringLiteral("Reading %1 %").arg(m_load->Percent());
    if (!m_loadError.isEmpty())
        notes << m_loadError;
    if (m_drawing.blocksNotDrawn > 0)
        notes << QStringLiteral("%1 %2 with words not drawn (first on line %3)")
                     .arg(m_drawing.blocksNotDrawn)
                     .arg(m_drawing.blocksNotDrawn == 1 ? QStringLiteral("block") : QStringLiteral("blocks"))
                     .arg(m_drawing.linesNotDrawn.empty() ? 0 : m_drawing.linesNotDrawn.front() + 1);
    return notes;
}

DrawingTransform ProgramView::CacheView() const {
    // Whole pixels of margin, so that the image lies on the window's pixels.
    DrawingTransform cacheView = m_view;
    cacheView.width = width() + 2 * (width() / 2);
    cacheView.height = height() + 2 * (height() / 2);
    return cacheView;
}

ProgramView::Rendered ProgramView::Render(const DrawingTransform& cacheView, int generation) const {
    QImage image(cacheView.width, cacheView.height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    ProgramPainter(m_drawing, m_colours).Paint(image, cacheView);
    return {std::move(image), cacheView, generation};
}

void ProgramView::StartRender() {
    if (m_pending.valid())
        return;
    m_pending = std::async(std::launch::async, [this, cacheView = CacheView(), generation = m_generation] {
        return Render(cacheView, generation);
    });
    m_renderPoll->start();
}

void ProgramView::TakeRender() {
    if (!m_pending.valid() || m_pending.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return;
    Rendered done = m_pending.get();
    m_renderPoll->stop();
    if (done.generation != m_generation || done.view.scale != m_view.scale)
        return; // drawn for what is no longer shown
    m_cache = std::move(done.image);
    m_cacheView = done.view;
    m_cacheValid = true;
}

void ProgramView::WaitForRender() {
    if (m_pending.valid())
        m_pending.wait();
}

void ProgramView::paintEvent(QPaintEvent*) {
    m_view.width = width();
    m_view.height = height();
    TakeRender();
    // Where the kept image stands in the window: drawn anew at once for another scale; on the
    // worker when the window comes within a quarter of its margin of an edge, the old image
    // shown meanwhile.
    const double left = m_view.ToX(m_cacheView.WorldX(0)), top = m_view.ToY(m_cacheView.WorldY(0));
    const double slackX = width() / 8.0, slackY = height() / 8.0;
    if (!m_cacheValid || m_cacheView.scale != m_view.scale) {
        Rendered now = Render(CacheView(), m_generation);
        m_cache = std::move(now.image);
        m_cacheView = now.view;
        m_cacheValid = true;
    } else if (left > -slackX || top > -slackY || left + m_cacheView.width < width() + slackX ||
               top + m_cacheView.height < height() + slackY) {
        StartRender();
    }
    QPainter painter(this);
    PaintFrame(painter);
    painter.drawImage(
        QPointF(std::round(m_view.ToX(m_cacheView.WorldX(0))), std::round(m_view.ToY(m_cacheView.WorldY(0)))),
        m_cache);
    PaintMarks(painter);
    PaintLegend(painter);
    PaintNotes(painter);
    if (hasFocus()) {
        painter.setPen(QPen(palette().highlight().color(), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
    }
}

void ProgramView::PaintFrame(QPainter& painter) const {
    const auto frame = FrameSize();
    painter.fillRect(rect(), QColor::fromRgb(frame ? OutsideColour : SheetColour));
    if (!frame)
        return;
    const QRectF sheet(QPointF(m_view.ToX(0), m_view.ToY(frame->second)),
                       QPointF(m_view.ToX(frame->first), m_view.ToY(0)));
    painter.fillRect(sheet, QColor::fromRgb(SheetColour));
    painter.setPen(QPen(QColor::fromRgb(FrameColour), 1));
    painter.drawRect(sheet);
}

void ProgramView::PaintMarks(QPainter& painter) const {
    painter.setRenderHint(QPainter::Antialiasing);
    // The start point: a cross in a circle.
    const QPointF start(m_view.ToX(m_drawing.startX), m_view.ToY(m_drawing.startY));
    painter.setPen(QPen(QColor::fromRgb(StartColour), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(start, 7, 7);
    painter.drawLine(start - QPointF(10, 0), start + QPointF(10, 0));
    painter.drawLine(start - QPointF(0, 10), start + QPointF(0, 10));

    if (!m_highlight)
        return;
    const DrawnElement& e = m_drawing.At(*m_highlight);
    const QPointF end(m_view.ToX(e.x), m_view.ToY(e.y));
    QPen pen(QColor::fromRgb(HighlightColour), 3);
    painter.setPen(pen);
    if (e.kind != ElementKind::Hit) {
        const auto [fromX, fromY] = StartOf(m_drawing, *m_highlight);
        const auto centre = m_drawing.CentreOf(*m_highlight);
        if (centre)
            ProgramPainter::DrawArc(painter, m_view, *centre, fromX, fromY, e);
        else
            painter.drawLine(QPointF(m_view.ToX(fromX), m_view.ToY(fromY)), end);
    }
    painter.drawEllipse(end, ProgramPainter::HitRadius + 4, ProgramPainter::HitRadius + 4);
}

void ProgramView::PaintLegend(QPainter& painter) const {
    const std::vector<std::uint16_t>& tools = m_drawing.toolsUsed;
    if (tools.empty())
        return;
    const QRect box = LegendBox();
    const int row = fontMetrics().height() + 2;
    const int shown = std::min<int>(LegendRows, int(tools.size()));
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QColor::fromRgb(FrameColour));
    painter.setBrush(QColor(255, 255, 255, 230));
    painter.drawRect(box);
    int y = box.top() + 4;
    painter.drawText(QRect(box.left() + 6, y, box.width() - 8, row), Qt::AlignVCenter,
                     QStringLiteral("Tools"));
    for (int i = 0; i < shown; ++i) {
        y += row;
        painter.setBrush(QColor::fromRgb(m_colours.Of(tools[std::size_t(i)])));
        painter.drawEllipse(QPoint(box.left() + 12, y + row / 2), 5, 5);
        painter.drawText(QRect(box.left() + 24, y, box.width() - 26, row), Qt::AlignVCenter,
                         QStringLiteral("T%1").arg(tools[std::size_t(i)]));
    }
    if (int(tools.size()) > shown)
        painter.drawText(QRect(box.left() + 6, y + row, box.width() - 8, row), Qt::AlignVCenter,
                         QStringLiteral("+ %1 more").arg(tools.size() - std::size_t(shown)));
}

void ProgramView::PaintNotes(QPainter& painter) const {
    const int row = fontMetrics().height() + 2;
    int y = height() - 8;
    // The scale bar, in the machine's units.
    const double length = RoundLength(80 / m_view.scale);
    const double pixels = length * m_view.scale;
    painter.setPen(QPen(QColor::fromRgb(FrameColour), 2));
    painter.drawLine(QPointF(8, y), QPointF(8 + pixels, y));
    painter.drawLine(QPointF(8, y - 4), QPointF(8, y + 0));
    painter.drawLine(QPointF(8 + pixels, y - 4), QPointF(8 + pixels, y));
    painter.drawText(QPointF(12 + pixels, y), QStringLiteral("%1 %2").arg(Number(length), Unit()));
    y -= row;
    const QStringList notes = Notes();
    for (auto note = notes.rbegin(); note != notes.rend(); ++note, y -= row)
        painter.drawText(QPointF(8, y), *note);
}

void ProgramView::resizeEvent(QResizeEvent*) {
    m_view.width = width();
    m_view.height = height();
    m_cacheValid = false;
    ++m_generation;
    if (m_fitted)
        Fit();
}

void ProgramView::wheelEvent(QWheelEvent* event) {
    ZoomAt(std::pow(ZoomStep, event->angleDelta().y() / 120.0), event->position());
    event->accept();
}

void ProgramView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    m_pressAt = m_lastDrag = event->position();
    m_dragging = false;
    setFocus(Qt::MouseFocusReason);
}

void ProgramView::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton))
        return;
    if (!m_dragging && (event->position() - m_pressAt).manhattanLength() > DragDistance)
        m_dragging = true;
    if (m_dragging) {
        PanBy(event->position() - m_lastDrag);
        m_lastDrag = event->position();
    }
}

void ProgramView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || m_dragging) {
        m_dragging = false;
        return;
    }
    const auto element =
        PickElement(m_drawing, m_view, event->position().x(), event->position().y(), PickTolerance);
    if (!element)
        return;
    m_highlight = element;
    update();
    Q_EMIT LineClicked(m_drawing.At(*element).line);
}

void ProgramView::keyPressEvent(QKeyEvent* event) {
    const QPointF middle(width() / 2.0, height() / 2.0);
    const double stepX = width() / 10.0, stepY = height() / 10.0;
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        ZoomAt(ZoomStep, middle);
        break;
    case Qt::Key_Minus:
        ZoomAt(1 / ZoomStep, middle);
        break;
    case Qt::Key_Left:
        PanBy({stepX, 0});
        break;
    case Qt::Key_Right:
        PanBy({-stepX, 0});
        break;
    case Qt::Key_Up:
        PanBy({0, stepY});
        break;
    case Qt::Key_Down:
        PanBy({0, -stepY});
        break;
    case Qt::Key_Home:
        Fit();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace kestrova
