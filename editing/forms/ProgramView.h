#pragma once

#include "editing/DrawingTransform.h"
#include "editing/MachineFrame.h"
#include "editing/ProgramDrawing.h"
#include "editing/forms/ToolColours.h"
#include "platform/FileSystem.h"

#include <QImage>
#include <QWidget>
#include <future>
#include <memory>

class QTimer;

namespace kestrova {

class ProgramLoad;

// The drawing of an NC program: the sheet (from the program's sheet comment) or else the
// machine's travel as a frame, rapid moves thin and dashed, feed moves and arcs solid, each hit
// a round mark in its tool's colour with a legend of the tools, the start point, and below what
// the reader could not draw. Block deletes are drawn dotted, their hits hollow.
//
// The wheel and "+"/"-" zoom, dragging and the arrow keys pan, Home fits the whole drawing. A
// click on an element highlights it and says which program line drew it; the line of the
// editor's cursor highlights its element in turn. A large program is read a slice at a time
// while the window goes on painting, and is drawn in levels of detail (ProgramPainter) into an
// image kept larger than the window: panning moves that image, and the next one is drawn on a
// worker before the window reaches its edge, so that no frame waits for a whole drawing.
class ProgramView : public QWidget {
    Q_OBJECT
public:
    explicit ProgramView(QWidget* parent = nullptr);
    ~ProgramView() override;

    // The machine the program is for: the frame where it names no sheet, units, kind.
    void SetMachine(const MachineFrame& machine);
    // Reads a program file a slice at a time; raises the error of a file that cannot be opened.
    void Load(const FileSystem& files, const QString& path);
    // Reads a program text at once (the editor's text after a change).
    void SetProgramText(const QByteArray& text);
    void SetDrawing(ProgramDrawing drawing);
    [[nodiscard]] bool Loading() const { return m_load != nullptr; }
    [[nodiscard]] const ProgramDrawing& Drawing() const { return m_drawing; }

    // Highlights the element the program line (from 0) drew; none when it drew nothing.
    void SetCurrentLine(int line);
    [[nodiscard]] std::optional<std::uint32_t> Highlighted() const { return m_highlight; }

    void Fit();
    void ZoomAt(double factor, QPointF anchor);
    void PanBy(QPointF pixels);
    [[nodiscard]] const DrawingTransform& Transform() const { return m_view; }
    [[nodiscard]] QRgb ToolColour(std::uint16_t tool) const { return m_colours.Of(tool); }
    // What is shown under the drawing: the frame, the reading, what was not drawn.
    [[nodiscard]] QStringList Notes() const;

    static constexpr QRgb HighlightColour = 0xffff8c00;
    static constexpr QRgb SheetColour = 0xffffffff;

Q_SIGNALS:
    // The operator clicked an element that the program line (from 0) drew.
    void LineClicked(int line);
    // A program has been read whole and drawn.
    void LoadFinished();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void LoadSlice();
    void Drawn();
    // The box of the frame and the drawing together, for Fit.
    [[nodiscard]] Bounds Extent() const;
    [[nodiscard]] std::optional<std::pair<float, float>> FrameSize() const;
    [[nodiscard]] QRect LegendBox() const;
    [[nodiscard]] int NotesHeight() const;
    // The image kept for the drawing: the window and half of it again on every side.
    struct Rendered {
        QImage image;
        DrawingTransform view;
        int generation = 0;
    };
    [[nodiscard]] DrawingTransform CacheView() const;
    [[nodiscard]] Rendered Render(const DrawingTransform& cacheView, int generation) const;
    void StartRender();
    void TakeRender();
    // The drawing and its colours are read by a render under way: they change only after it.
    void WaitForRender();
    void PaintFrame(QPainter& painter) const;
    void PaintMarks(QPainter& painter) const;
    void PaintLegend(QPainter& painter) const;
    void PaintNotes(QPainter& painter) const;
    [[nodiscard]] QString Unit() const;

    MachineFrame m_machine;
    ProgramDrawing m_drawing;
    ToolColours m_colours;
    DrawingTransform m_view;
    bool m_fitted = true;
    std::optional<std::uint32_t> m_highlight;
    std::unique_ptr<ProgramLoad> m_load;
    QTimer* m_loadTimer;
    QString m_loadError;

    QImage m_cache;
    DrawingTransform m_cacheView;
    bool m_cacheValid = false;
    std::future<Rendered> m_pending;
    QTimer* m_renderPoll;
    int m_generation = 0; // what the kept image was drawn from: the drawing and the window's size

    QPointF m_pressAt;
    QPointF m_lastDrag;
    bool m_dragging = false;
};

} // namespace kestrova
