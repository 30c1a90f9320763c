#pragma once
// Failures of reading and setting up a flowsheet, and the exit statuses of the flowsheet
// commands.
#include <stdexcept>
#include <string>

#include "flowsheet/source_position.hpp"

namespace zx::flowsheet {

// Exit statuses of the flowsheet commands.
inline constexpr int kExitOk = 0;
inline constexpr int kExitNotConverged = 1;   // the solver stopped without converging; a check found faults;
                                              // the results could not be written
inline constexpr int kExitBadInput = 2;       // the file or a value in it is not acceptable
inline constexpr int kExitNotSolvable = 3;    // the system is not square or is structurally singular

// Follows the runtime's refusal of an array size beyond the limit of array elements.
inline constexpr const char* kSizeLimitHint =
    " (--max-unknowns sets the limit, which otherwise follows from the memory available)";

// Bad input: where it is (the line and column, and the JSON pointer of the entry such as
// "/blocks/R1/set/NPTS", whichever are known) and what is wrong, naming the block, property
// and value.
class InputError : public std::runtime_error {
public:
    InputError(std::string pointer, const std::string& message, SourcePos pos = {})
        : std::runtime_error(message), m_pointer(std::move(pointer)), m_pos(pos) {}
    InputError(SourcePos pos, const std::string& message) : std::runtime_error(message), m_pos(pos) {}

    const std::string& Pointer() const { return m_pointer; }
    SourcePos Position() const { return m_pos; }
    // The pointer, or "line:column" when there is none.
    std::string Location() const { return m_pointer.empty() && m_pos.Known() ? m_pos.Text() : m_pointer; }
    // Gives the error a line and column when it has none yet.
    void Locate(SourcePos pos) {
        if (!m_pos.Known()) m_pos = pos;
    }
    // "<source>:<line>:<column>: <pointer>: <message>", leaving out what is not known; one line.
    std::string Line(const std::string& source) const;

private:
    std::string m_pointer;
    SourcePos m_pos;
};

// A model answered a protocol call with a failure, or its answers disagree with each other
// (say, JacPattern writes rows outside the block's equations).
class ModelFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace zx::flowsheet
