#pragma once
// Failures of reading and setting up a flowsheet, and the exit statuses of the flowsheet
// commands.
#include <stdexcept>
#include <string>

namespace zx::flowsheet {

// Exit statuses of the flowsheet commands.
inline constexpr int kExitOk = 0;
inline constexpr int kExitNotConverged = 1;   // the solver stopped without converging; a check found faults
inline constexpr int kExitBadInput = 2;       // the file or a value in it is not acceptable
inline constexpr int kExitNotSolvable = 3;    // the system is not square or is structurally singular

// Bad input: where it is (a JSON pointer such as "/blocks/R1/set/NPTS", or "line:column" for
// a syntax error) and what is wrong, naming the block, property and value.
class InputError : public std::runtime_error {
public:
    InputError(std::string location, const std::string& message)
        : std::runtime_error(message), m_location(std::move(location)) {}
    const std::string& Location() const { return m_location; }
    // "<source>: <location>: <message>" (or "<source>:<line>:<column>: ..." for syntax errors),
    // one line.
    std::string Line(const std::string& source) const;

private:
    std::string m_location;
};

// A model answered a protocol call with a failure, or its answers disagree with each other
// (say, JacPattern writes rows outside the block's equations).
class ModelFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace zx::flowsheet
