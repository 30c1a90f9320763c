#pragma once
// Property paths as users write them: "NPTS", "T_PROCESS(0)", "COEF(A,1)", "IN_HS.Q".
// Members are separated by dots; an array element is named by its index text in parentheses
// (several indices separated by commas). Names and string indices are compared without regard
// to case, integer indices by value.
#include <string>
#include <string_view>

class VX_Type;

namespace zorexp_cli {

struct PathResolution {
    VX_Type* object = nullptr;   // null when the path names nothing
    std::string problem;         // why not, naming the part of the path that failed
};

PathResolution ResolvePath(VX_Type& root, std::string_view path);

}  // namespace zorexp_cli
