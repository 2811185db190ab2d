#include "platform/Wildcard.h"

#include "platform/Blanks.h"

namespace kestrova {

namespace {

inline char16_t FoldAscii(char16_t c) {
    return (c >= u'a' && c <= u'z') ? char16_t(c - 32) : c;
}

bool GlobMatch(const QChar* p, qsizetype pn, const QChar* s, qsizetype sn) {
    qsizetype pi = 0, si = 0, starP = -1, starS = 0;
    while (si < sn) {
        if (pi < pn && p[pi] == u'*') {
            starP = pi++;
            starS = si;
        } else if (pi < pn && (p[pi] == u'?' || FoldAscii(p[pi].unicode()) == FoldAscii(s[si].unicode()))) {
            ++pi;
            ++si;
        } else if (starP >= 0) {
            pi = starP + 1;
            si = ++starS;
        } else {
            return false;
        }
    }
    while (pi < pn && p[pi] == u'*')
        ++pi;
    return pi == pn;
}

} // namespace

bool WildcardMatch(const QString& pattern, const QString& name) {
    if (GlobMatch(pattern.constData(), pattern.size(), name.constData(), name.size()))
        return true;
    if (pattern.endsWith(QLatin1String(".*")) && !name.contains(u'.'))
        return GlobMatch(pattern.constData(), pattern.size() - 2, name.constData(), name.size());
    return false;
}

WildcardSet::WildcardSet(const QString& patterns) {
    for (const QString& part : patterns.split(u';')) {
        const QString p = TrimBlanks(part);
        if (!p.isEmpty())
            m_patterns << p;
    }
}

bool WildcardSet::Matches(const QString& name) const {
    for (const QString& p : m_patterns)
        if (WildcardMatch(p, name))
            return true;
    return false;
}

} // namespace kestrova
