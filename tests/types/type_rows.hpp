#pragma once
// The rows of the type tables as test data, generated from the same .def files as the types,
// each row with a factory for its class, and the effective attributes that walking a row's
// chain of bases gives.
#include <memory>
#include <string>
#include <vector>

#include "types/parameter_types.hpp"
#include "types/variable_types.hpp"
#include "zorexp/runtime_defaults.hpp"

template <class T>
struct Cell {
    bool declared;
    T value;
};
#define VX_TEST_CELL(c) VX_TEST_CELL_##c
#define VX_TEST_CELL_DECL(x) {true, x}
#define VX_TEST_CELL_INHERIT {false, {}}
#define VX_TEST_CELL_NOVALID {false, {}}

struct VariableRow {
    std::string name, base;
    Cell<double> value, lower, upper, scale;
    Cell<const char*> quantity, unit;
    Cell<int> row, col;
    std::unique_ptr<VX_REALVARIABLE> (*make)();
};

inline const std::vector<VariableRow>& VariableRows() {
    static const std::vector<VariableRow> rows = {
#define VX_VARIABLE_TYPE(NAME, BASE, VALUE, LOWER, UPPER, SCALE, QUANTITY, UNIT, PQROW, PQCOL)         \
    {#NAME, #BASE, VX_TEST_CELL(VALUE), VX_TEST_CELL(LOWER), VX_TEST_CELL(UPPER), VX_TEST_CELL(SCALE), \
     VX_TEST_CELL(QUANTITY), VX_TEST_CELL(UNIT), VX_TEST_CELL(PQROW), VX_TEST_CELL(PQCOL),             \
     []() -> std::unique_ptr<VX_REALVARIABLE> { return std::make_unique<VX_##NAME>(); }},
#include "types/variable_types.def"
#undef VX_VARIABLE_TYPE
    };
    return rows;
}

inline const VariableRow* FindVariableRow(const std::string& name) {
    for (const auto& r : VariableRows())
        if (r.name == name) return &r;
    return nullptr;
}

// The effective attribute: declared by the type, else by its nearest ancestor, else the
// runtime's default.
template <class T>
T Resolve(const VariableRow& row, Cell<T> VariableRow::*attr, T runtimeDefault) {
    for (const VariableRow* r = &row; r; r = FindVariableRow(r->base))
        if ((r->*attr).declared) return (r->*attr).value;
    return runtimeDefault;
}

// Quantity, base unit and units-table position as an object of each variable and real
// parameter type reports them.
struct EffectiveUnit {
    std::string name, quantity, unit;
    int row, col;
};

template <class T>
EffectiveUnit UnitOf(std::string name, const T& object) {
    return {std::move(name), object.VX_DefaultPHYSICALQUANTITY()->TextValue(),
            object.VX_DefaultBASEUOMNAME()->TextValue(), object.VX_PQRow(), object.VX_PQCol()};
}

inline std::vector<EffectiveUnit> TypeUnits() {
    std::vector<EffectiveUnit> out;
    for (const auto& r : VariableRows()) out.push_back(UnitOf(r.name, *r.make()));
#define VX_OPTION_TYPE(NAME, DEFAULT, VALIDSET)
#define VX_INTEGER_TYPE(NAME, DEFAULT, LOWER, VALIDSET)
#define VX_LOGICAL_TYPE(NAME, DEFAULT)
#define VX_REAL_TYPE(NAME, DEFAULT, LOWER, UPPER, QUANTITY, UNIT, PQROW, PQCOL, DESCRIPTION) \
    out.push_back(UnitOf(#NAME, VX_##NAME()));
#include "types/scalar_parameter_types.def"
#undef VX_OPTION_TYPE
#undef VX_INTEGER_TYPE
#undef VX_LOGICAL_TYPE
#undef VX_REAL_TYPE
    return out;
}
