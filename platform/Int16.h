#pragma once

#include "platform/Errors.h"

#include <QString>
#include <cmath>
#include <cstdint>

namespace kestrova {

// The system's 16-bit signed integer: counters, numbers that reach the operator, machine numbers.
// A value is only ever made through a checked path, so a result outside -32768..32767 raises
// the "Overflow" error instead of wrapping. Reading it gives a plain int; arithmetic on ints is
// brought back through From(), which checks.
class Int16 {
public:
    constexpr Int16() = default;
    // Literals are checked at compile time.
    consteval Int16(int literal) : m_value(static_cast<std::int16_t>(literal)) {
        if (literal < -32768 || literal > 32767)
            throw "16-bit literal out of range";
    }

    [[nodiscard]] static Int16 From(long long value) {
        if (value < -32768 || value > 32767)
            throw OverflowError(QString(), QString::number(value));
        Int16 result;
        result.m_value = static_cast<std::int16_t>(value);
        return result;
    }
    // A number truncated towards zero, as integer settings are converted.
    [[nodiscard]] static Int16 Truncate(double value) {
        const double t = std::trunc(value);
        if (!(t >= -32768.0 && t <= 32767.0))
            throw OverflowError(QString(), QString::number(value, 'g', 17));
        return From(static_cast<long long>(t));
    }

    [[nodiscard]] constexpr int value() const noexcept { return m_value; }
    constexpr operator int() const noexcept { return m_value; }

    Int16& operator+=(Int16 other) { return *this = From(static_cast<long long>(m_value) + other.m_value); }
    Int16& operator-=(Int16 other) { return *this = From(static_cast<long long>(m_value) - other.m_value); }
    Int16& operator++() { return *this += Int16(1); }

private:
    std::int16_t m_value = 0;
};

// A boolean where it is stored or compared as a number: true is -1 (all bits set), false 0.
[[nodiscard]] constexpr int AsNumber(bool flag) noexcept {
    return flag ? -1 : 0;
}

} // namespace kestrova
