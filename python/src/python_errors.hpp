#pragma once
// Failures as Python sees them: zorexp.InputError (a value, path, type or file that is not
// acceptable; a ValueError) and zorexp.SolveError (a flowsheet that cannot be set up or solved
// as posed; a RuntimeError). Both carry the one line the zorexp command prints.
#include <stdexcept>
#include <string>

namespace zorexp_python {

class InputFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class SolveFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Runs body, turning the host's exceptions into InputFault or SolveFault. source names the
// flowsheet in messages (its file, or "<flowsheet>" for one built in code); lines and columns
// are given only when the text read is the user's own file (located).
template <class Body>
auto Translated(const std::string& source, Body&& body, bool located = false) -> decltype(body());
[[noreturn]] void RethrowTranslated(const std::string& source, bool located);

template <class Body>
auto Translated(const std::string& source, Body&& body, bool located) -> decltype(body()) {
    try {
        return body();
    } catch (...) {
        RethrowTranslated(source, located);
    }
}

}  // namespace zorexp_python
