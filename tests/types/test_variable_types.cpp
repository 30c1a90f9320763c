// Variable types: the table's shape, every type's effective attributes against its chain of
// bases, and the construction rules.
#include <gtest/gtest.h>

#include <set>

#include "type_rows.hpp"

namespace {
namespace d = vx_defaults;

// Number of library types between a type and the runtime root.
int Depth(const VariableRow& r) {
    int depth = 0;
    for (const VariableRow* b = FindVariableRow(r.base); b; b = FindVariableRow(b->base)) ++depth;
    return depth;
}

TEST(VariableTypes, TableShape) {
    std::set<std::string> names;
    int direct = 0, scaleDeclared = 0;
    for (const auto& r : VariableRows()) {
        EXPECT_TRUE(names.insert(r.name).second) << r.name << " listed twice";
        if (r.base == "REALVARIABLE") ++direct;
        else EXPECT_NE(FindVariableRow(r.base), nullptr) << r.name << ": unknown base " << r.base;
        if (r.scale.declared) ++scaleDeclared;
        // Only the phase reverse flows and the wide fractions sit two levels below the root.
        const int depth = Depth(r);
        EXPECT_LE(depth, 2) << r.name;
        if (depth == 2) {
            EXPECT_TRUE(r.name.ends_with("_REV") || r.name.ends_with("_WIDE")) << r.name;
        }
        // A table position belongs to a type that has a quantity.
        EXPECT_EQ(r.row.declared, r.col.declared) << r.name;
    }
    EXPECT_EQ(VariableRows().size(), 189u);
    EXPECT_EQ(direct, 101);
    EXPECT_EQ(scaleDeclared, 1);   // POLATTRATES only
}

// Every type reports, for every attribute, what its own row or its nearest ancestor's row
// declares (else the runtime default), and it overrides a default operation exactly when its
// row declares the attribute: an inherited default is the very object its base returns.
TEST(VariableTypes, EffectiveAttributesFollowTheChain) {
    using Op = const VX_Value* (VX_Variable::*)() const;
    struct Attr {
        const char* name;
        Op op;
        bool (*declared)(const VariableRow&);
    };
    const Attr attrs[] = {
        {"VALUE", &VX_Variable::VX_DefaultVALUE, [](const VariableRow& r) { return r.value.declared; }},
        {"LOWER", &VX_Variable::VX_DefaultLOWER, [](const VariableRow& r) { return r.lower.declared; }},
        {"UPPER", &VX_Variable::VX_DefaultUPPER, [](const VariableRow& r) { return r.upper.declared; }},
        {"SCALE", &VX_Variable::VX_DefaultSCALE, [](const VariableRow& r) { return r.scale.declared; }},
        {"PHYSICALQUANTITY", &VX_Variable::VX_DefaultPHYSICALQUANTITY, [](const VariableRow& r) { return r.quantity.declared; }},
        {"BASEUOMNAME", &VX_Variable::VX_DefaultBASEUOMNAME, [](const VariableRow& r) { return r.unit.declared; }},
    };
    const VX_REALVARIABLE root;
    for (const auto& r : VariableRows()) {
        SCOPED_TRACE(r.name);
        auto v = r.make();
        EXPECT_EQ(v->TypeName(), r.name);
        EXPECT_EQ(v->fv(), Resolve(r, &VariableRow::value, d::kVariableValue));
        EXPECT_EQ(v->Lower(), Resolve(r, &VariableRow::lower, d::kVariableLower));
        EXPECT_EQ(v->Upper(), Resolve(r, &VariableRow::upper, d::kVariableUpper));
        EXPECT_EQ(v->VX_DefaultSCALE()->RealValue(), Resolve(r, &VariableRow::scale, d::kVariableScale));
        EXPECT_EQ(v->VX_DefaultPHYSICALQUANTITY()->TextValue(), Resolve(r, &VariableRow::quantity, d::kQuantity));
        EXPECT_EQ(v->VX_DefaultBASEUOMNAME()->TextValue(), Resolve(r, &VariableRow::unit, d::kBaseUnit));
        EXPECT_EQ(v->VX_PQRow(), Resolve(r, &VariableRow::row, d::kPQRow));
        EXPECT_EQ(v->VX_PQCol(), Resolve(r, &VariableRow::col, d::kPQCol));

        const VariableRow* baseRow = FindVariableRow(r.base);
        std::unique_ptr<VX_REALVARIABLE> baseObject = baseRow ? baseRow->make() : nullptr;
        const VX_REALVARIABLE& base = baseObject ? *baseObject : root;
        for (const auto& a : attrs) {
            const bool same = ((*v).*a.op)() == (base.*a.op)();
            EXPECT_EQ(same, !a.declared(r)) << a.name;
        }
    }
}

// Declared defaults lie within the effective bounds. No variable type is an exception;
// REFTEMP and COMPONENTATTRIBUTE start exactly on their upper bound, which is allowed.
TEST(VariableTypes, DefaultsLieWithinBounds) {
    for (const auto& r : VariableRows()) {
        auto v = r.make();
        EXPECT_LE(v->Lower(), v->fv()) << r.name;
        EXPECT_LE(v->fv(), v->Upper()) << r.name;
    }
}

TEST(VariableTypes, DefaultIsBuiltOnceAndShared) {
    VX_TEMPERATURE a, b;
    const VX_Value* first = a.VX_DefaultVALUE();
    EXPECT_EQ(first, a.VX_DefaultVALUE());
    EXPECT_EQ(first, b.VX_DefaultVALUE());
    EXPECT_EQ(a.VX_DefaultPHYSICALQUANTITY(), b.VX_DefaultPHYSICALQUANTITY());
    EXPECT_EQ(first->Flags(), 0);
}

TEST(VariableTypes, TwoLevelChainsTakeEachAttributeFromTheNearestDeclaration) {
    VX_FLOW_MOL_VAP_REV flow;   // bounds from itself, quantity and position from FLOW_MOL
    EXPECT_EQ(flow.fv(), 10.0);
    EXPECT_EQ(flow.Lower(), -1e10);
    EXPECT_EQ(flow.Upper(), 1e10);
    EXPECT_EQ(flow.VX_DefaultPHYSICALQUANTITY()->TextValue(), "MoleFlow");
    EXPECT_EQ(flow.VX_DefaultBASEUOMNAME()->TextValue(), "kmol/hr");
    EXPECT_EQ(flow.VX_PQRow(), 11);
    EXPECT_EQ(flow.VX_PQCol(), 3);

    VX_MOLEFRACTION_WIDE x;     // value and lower from FRACTION, quantity from MOLEFRACTION
    EXPECT_EQ(x.fv(), 0.5);
    EXPECT_EQ(x.Lower(), 0.0);
    EXPECT_EQ(x.Upper(), 1e30);
    EXPECT_EQ(x.VX_DefaultPHYSICALQUANTITY()->TextValue(), "MoleFraction");
}

TEST(VariableTypes, TypesWithoutQuantityReportTheRuntimeDefaults) {
    for (const char* name : {"NOTYPE", "POSITIVE", "FRACTION", "K_VALUE"}) {
        auto v = FindVariableRow(name)->make();
        EXPECT_EQ(v->VX_DefaultPHYSICALQUANTITY()->TextValue(), d::kQuantity) << name;
        EXPECT_EQ(v->VX_DefaultBASEUOMNAME()->TextValue(), d::kBaseUnit) << name;
        EXPECT_EQ(v->VX_PQRow(), d::kPQRow) << name;
        EXPECT_EQ(v->VX_PQCol(), d::kPQCol) << name;
    }
}

TEST(VariableTypes, OnlyTheCompleteObjectInitialises) {
    VX_TEMPERATURE part(false);   // as built for a derived type: nothing read yet
    EXPECT_EQ(part.fv(), 0.0);
    EXPECT_EQ(part.Lower(), 0.0);
    EXPECT_EQ(part.Upper(), 0.0);
    part.InitializeSystemAttributes();   // what the most-derived constructor does
    EXPECT_EQ(part.fv(), 25.0);
    EXPECT_EQ(part.Lower(), -246.0);

    // The factory form, from the runtime's pool: the derived bounds, not TEMP_DIFF's.
    auto* drop = new VX_TEMP_DROP(true);
    EXPECT_EQ(drop->Lower(), 0.0);
    EXPECT_EQ(drop->Upper(), 1000.0);
    delete drop;
}

TEST(VariableTypes, CopyAssignmentAndDereference) {
    VX_PRESSURE a, b;
    ASSERT_EQ(b.AssignUser(VX_ATTR_VALUE, VX_Value(3.5, 0)), VX_AS_ASSIGNED);
    VX_PRESSURE& result = (a = b);
    EXPECT_EQ(&result, &a);
    EXPECT_EQ(a.fv(), 3.5);
    EXPECT_EQ(a.SourceOf(VX_ATTR_VALUE), VX_SRC_USER);
    EXPECT_EQ(&*a, &a);
    VX_PRESSURE c(a);
    EXPECT_EQ(c.fv(), 3.5);
    EXPECT_EQ(c.Lower(), 1e-30);
}
}  // namespace
