#include "editing/ProgramDiff.h"

#include <QHash>
#include <dtl/dtl.hpp>

namespace kestrova {

namespace {

using Numbers = std::vector<std::uint32_t>;

// Each line as the number of its text, equal texts the same number, in both texts alike.
void NumberLines(const std::vector<QByteArrayView>& older, const std::vector<QByteArrayView>& newer,
                 Numbers& olderNumbers, Numbers& newerNumbers) {
    QHash<QByteArrayView, std::uint32_t> numbers;
    numbers.reserve(qsizetype(older.size() + newer.size()));
    const auto number = [&numbers](QByteArrayView line) {
        auto found = numbers.constFind(line);
        if (found == numbers.constEnd())
            found = numbers.insert(line, std::uint32_t(numbers.size()));
        return *found;
    };
    olderNumbers.reserve(older.size());
    for (QByteArrayView line : older)
        olderNumbers.push_back(number(line));
    newerNumbers.reserve(newer.size());
    for (QByteArrayView line : newer)
        newerNumbers.push_back(number(line));
}

} // namespace

std::vector<QByteArrayView> ProgramDiff::SplitLines(QByteArrayView text) {
    std::vector<QByteArrayView> lines;
    const char* const data = text.data();
    const qsizetype size = text.size();
    qsizetype start = 0;
    for (qsizetype i = 0; i < size; ++i) {
        if (data[i] != '\r' && data[i] != '\n')
            continue;
        lines.emplace_back(data + start, i - start);
        if (data[i] == '\r' && i + 1 < size && data[i + 1] == '\n')
            ++i;
        start = i + 1;
    }
    if (start < size)
        lines.emplace_back(data + start, size - start);
    return lines;
}

ProgramDiff::ProgramDiff(QByteArray older, QByteArray newer)
    : m_older(std::move(older)), m_newer(std::move(newer)), m_olderLines(SplitLines(m_older)),
      m_newerLines(SplitLines(m_newer)) {
    Numbers a;
    Numbers b;
    NumberLines(m_olderLines, m_newerLines, a, b);
    dtl::Diff<std::uint32_t, Numbers> diff(a, b);
    diff.onHuge();
    diff.compose();

    std::vector<int> removed;
    std::vector<int> added;
    const auto endRun = [&] {
        const std::size_t paired = std::min(removed.size(), added.size());
        for (std::size_t i = 0; i < paired; ++i)
            m_rows.push_back({LineChange::Changed, removed[i], added[i]});
        for (std::size_t i = paired; i < removed.size(); ++i)
            m_rows.push_back({LineChange::Removed, removed[i], -1});
        for (std::size_t i = paired; i < added.size(); ++i)
            m_rows.push_back({LineChange::Added, -1, added[i]});
        m_changed += int(paired);
        m_removed += int(removed.size() - paired);
        m_added += int(added.size() - paired);
        removed.clear();
        added.clear();
    };
    m_rows.reserve(std::max(m_olderLines.size(), m_newerLines.size()));
    for (const auto& [line, info] : diff.getSes().getSequence()) {
        // The library counts lines from 1.
        if (info.type == dtl::SES_DELETE) {
            removed.push_back(int(info.beforeIdx - 1));
        } else if (info.type == dtl::SES_ADD) {
            added.push_back(int(info.afterIdx - 1));
        } else {
            endRun();
            m_rows.push_back({LineChange::Same, int(info.beforeIdx - 1), int(info.afterIdx - 1)});
        }
    }
    endRun();
}

std::vector<int> ProgramDiff::ChangeStarts() const {
    std::vector<int> starts;
    bool inRun = false;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        const bool differs = m_rows[i].change != LineChange::Same;
        if (differs && !inRun)
            starts.push_back(int(i));
        inRun = differs;
    }
    return starts;
}

} // namespace kestrova
