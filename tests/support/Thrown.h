#pragma once

#include <QString>
#include <optional>
#include <utility>

namespace kestrova::testing {

// The error of the given kind that a call throws, or none when the call returns, so that a test
// checks its text or subject on the result. An error of another kind is not caught: it fails the
// test as it leaves it.
template <class Error, class Call>
std::optional<Error> Thrown(Call&& call) {
    try {
        std::forward<Call>(call)();
    } catch (const Error& error) {
        return error;
    }
    return std::nullopt;
}

// The text of that error, or "no error" when the call returns.
template <class Error, class Call>
QString ThrownText(Call&& call) {
    const std::optional<Error> error = Thrown<Error>(std::forward<Call>(call));
    return error ? error->text() : QStringLiteral("no error");
}

} // namespace kestrova::testing
