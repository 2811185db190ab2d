#include "editing/LineEnds.h"

#include <cstring>

namespace kestrova {

LineSpan LineAt(const QByteArray& text, qsizetype from) {
    LineSpan line;
    line.start = from;
    const char* begin = text.constData() + from;
    const qsizetype rest = text.size() - from;
    // LF is far more common than a lone CR: find whichever comes first, cheaply.
    const void* lf = std::memchr(begin, '\n', size_t(rest));
    const qsizetype lfAt = lf ? static_cast<const char*>(lf) - begin : rest;
    const void* cr = std::memchr(begin, '\r', size_t(lfAt));
    if (cr) {
        line.length = static_cast<const char*>(cr) - begin;
        line.end = line.length + 1 < rest && begin[line.length + 1] == '\n' ? LineEnd::CrLf : LineEnd::Cr;
    } else {
        line.length = lfAt;
        line.end = lf ? LineEnd::Lf : LineEnd::None;
    }
    return line;
}

const char* LineEndBytes(LineEnd end) {
    switch (end) {
    case LineEnd::CrLf:
        return "\r\n";
    case LineEnd::Lf:
        return "\n";
    case LineEnd::Cr:
        return "\r";
    case LineEnd::None:
        break;
    }
    return "";
}

} // namespace kestrova
