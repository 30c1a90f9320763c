#pragma once
// Property paths as users write them: "NPTS", "T_PROCESS(0)", "COEF(A,1)", "IN_HS.Q",
// "IN_F(FEED1).T". Members are separated by dots; an array element (or a multiport's connection)
// is named by its index text in parentheses (several indices separated by commas). Names and
// string indices are compared without regard to case, integer indices by value. References
// (globals, externals, virtual members) are followed to the object they stand for.
#include <string>
#include <string_view>

class VX_Type;

struct VX_PathResolution {
    VX_Type* object = nullptr;   // null when the path names nothing
    std::string problem;         // why not, naming the part of the path that failed
};

VX_PathResolution VX_ResolvePath(VX_Type& root, std::string_view path);
