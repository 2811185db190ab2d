#pragma once

#include <QString>

namespace kestrova {

// What the send form shows of a transmission. The engine keeps it; the form mirrors it into its
// label, progress bar and the force and abort buttons whenever it changes.
struct SendProgress {
    QString Label; // SendLabel
    bool LabelVisible = false;
    int Total = 0;   // steps of the whole program: characters, or thousands above 30000
    int Steps = 0;   // steps done, never above Total
    int Percent = 0; // the bar's value
    bool BarVisible = false;
    bool ForceVisible = false; // SendFrc, the default button while it shows
    bool AbortVisible = false; // SendAbrt, the cancel button (Esc) while it shows
    QString Rate;              // bytes so far, bytes per second and time left (SendRate)

    friend bool operator==(const SendProgress&, const SendProgress&) = default;
};

// How the bar counts a program of count characters: one step per character up to 30000
// characters, else one per 1000 (so a large program does not spend its time redrawing).
class ProgressScale {
public:
    explicit ProgressScale(qint64 count);
    [[nodiscard]] int Total() const { return m_total; }
    // The steps after the n-th character (1-based) of the program has been read.
    [[nodiscard]] int StepsAfter(qint64 n, int stepsBefore) const;
    // The bar's value for a number of steps: the whole-number part of steps / total * 100.
    [[nodiscard]] int PercentOf(int steps) const;

private:
    qint64 m_count;
    bool m_perThousand;
    int m_total;
};

} // namespace kestrova
