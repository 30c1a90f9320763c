#pragma once
// What the user assigns on the command line (--set PATH=VALUE, --fix PATH, --free PATH), applied
// to a container as user assignments: all or nothing. A path that names an array element can
// resolve only once the arrays are sized, so application runs in rounds: each round applies
// what resolves now and keeps the rest for the next.
#include <string>
#include <vector>

class VX_Type;

namespace zorexp_cli {

struct UserAssignment {
    enum Action { Set, Fix, Free };
    Action action;
    std::string path;
    std::string value;   // Set only
};

// Reads "PATH=VALUE"; throws BadInput when there is no '=' or no path.
UserAssignment ParseSetArgument(const std::string& argument);

class AssignmentPlan {
public:
    AssignmentPlan(std::string typeName, std::vector<UserAssignment> assignments)
        : m_typeName(std::move(typeName)), m_pending(std::move(assignments)) {}

    // Applies every pending assignment whose path resolves in root. Before anything is
    // applied, each of them is checked; the first one refused throws BadInput (naming the
    // type, the path, the value and the reason) and nothing of this round is applied. When
    // last is true, a path that still does not resolve throws BadInput as well.
    void ApplyRound(VX_Type& root, bool last);
    bool HasPending() const { return !m_pending.empty(); }

private:
    std::string m_typeName;
    std::vector<UserAssignment> m_pending;
};

}  // namespace zorexp_cli
