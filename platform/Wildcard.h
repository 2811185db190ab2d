#pragma once

#include <QString>
#include <QStringList>

namespace kestrova {

// File name patterns as the system writes them: "*" any run of characters, "?" one character,
// letters matched ignoring case, several patterns joined by ";" ("*.drw;*.prg"). A pattern
// ending in ".*" also matches the name without any extension, so "*.*" matches every name
// and "X.*" finds the file "X" as well as "X.drw".
class WildcardSet {
public:
    explicit WildcardSet(const QString& patterns);

    [[nodiscard]] bool Matches(const QString& name) const;
    [[nodiscard]] bool IsEmpty() const { return m_patterns.isEmpty(); }

private:
    QStringList m_patterns;
};

// One pattern against one name.
[[nodiscard]] bool WildcardMatch(const QString& pattern, const QString& name);

} // namespace kestrova
