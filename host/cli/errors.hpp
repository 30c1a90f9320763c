#pragma once
// The two ways a command fails. Each carries one line of text that names what went wrong;
// main prints it on stderr and leaves with the matching exit status.
#include <stdexcept>
#include <string>

namespace zorexp_cli {

// The user asked for something that does not exist or is not acceptable: an unknown type,
// property or index, a value of the wrong kind, an option outside its valid set.
class BadInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The host could not do its work: the model library is missing or incomplete, or a model
// broke the protocol.
class HostFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline constexpr int kExitOk = 0;
inline constexpr int kExitHostFailure = 1;
inline constexpr int kExitBadInput = 2;

}  // namespace zorexp_cli
