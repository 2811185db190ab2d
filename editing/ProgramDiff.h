#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <vector>

namespace kestrova {

// How a line of the newer text stands against the older one.
enum class LineChange { Same, Changed, Added, Removed };

// One row of a side-by-side comparison: the line of each text it shows (from 0), or -1 where
// that side has none (an added line has no older one, a removed line no newer one).
struct DiffRow {
    LineChange change = LineChange::Same;
    int older = -1;
    int newer = -1;
};

// The comparison of two versions of a program, line by line. Lines end at CR LF, LF or CR, as
// everywhere in the system; a line is compared without its end, and its bytes are kept exactly
// (high bytes and all) for showing. Within a run of lines that differ, removed and added lines
// are paired in order as changed lines; the rest of the longer side stays removed or added.
// The shortest edit script comes from the DTL library (Wu, Manber and Myers' O(NP) algorithm),
// run on the lines numbered by their text, so that each comparison is one of two integers.
class ProgramDiff {
public:
    ProgramDiff(QByteArray older, QByteArray newer);

    [[nodiscard]] const std::vector<DiffRow>& Rows() const { return m_rows; }
    [[nodiscard]] QByteArrayView OlderLine(int index) const { return m_olderLines.at(std::size_t(index)); }
    [[nodiscard]] QByteArrayView NewerLine(int index) const { return m_newerLines.at(std::size_t(index)); }
    [[nodiscard]] int Changed() const { return m_changed; }
    [[nodiscard]] int Added() const { return m_added; }
    [[nodiscard]] int Removed() const { return m_removed; }
    // The lines that differ: changed, added and removed together.
    [[nodiscard]] int Differences() const { return m_changed + m_added + m_removed; }
    // The rows where a run of differing lines starts, in order: the stops of "next change".
    [[nodiscard]] std::vector<int> ChangeStarts() const;

    // The lines of a text without their ends.
    [[nodiscard]] static std::vector<QByteArrayView> SplitLines(QByteArrayView text);

private:
    QByteArray m_older;
    QByteArray m_newer;
    std::vector<QByteArrayView> m_olderLines;
    std::vector<QByteArrayView> m_newerLines;
    std::vector<DiffRow> m_rows;
    int m_changed = 0;
    int m_added = 0;
    int m_removed = 0;
};

} // namespace kestrova
