#pragma once
// The variable and parameter types of the model library, by name: what kind each is, what it
// derives from, and how to make an object of it. Built from the library's own type tables.
#include <memory>
#include <span>
#include <string_view>

class VX_Type;
class VX_VarParam;

namespace zorexp_cli {

enum class TypeFamily { Variable, IntegerParameter, RealParameter, LogicalParameter, OptionParameter };

struct TypeEntry {
    const char* name;     // without VX_
    const char* base;     // another type of the catalogue or the runtime root (REALVARIABLE, ...)
    TypeFamily family;
    VX_VarParam* (*make)();   // a new object with its attributes initialised
};

// "variable type" or "parameter type".
const char* FamilyKindText(TypeFamily family);

// Every variable type, then every parameter type, each in table order.
std::span<const TypeEntry> TypeCatalog();

// The entry named name (without regard to case), or null.
const TypeEntry* FindTypeEntry(std::string_view name);

// Owner of an object made by TypeEntry::make.
struct DestroyType {
    void operator()(VX_VarParam* p) const;
};
using TypeObject = std::unique_ptr<VX_VarParam, DestroyType>;
inline TypeObject MakeTypeObject(const TypeEntry& e) { return TypeObject(e.make()); }

}  // namespace zorexp_cli
