// The 222 declarations: the table's totals against the catalogue's own count of them, the shared
// entry points, the worked rows, and every declaration binding a call of its own shape.
#include <map>
#include <set>
#include <string>
#include <type_traits>

#include "procedure_test_support.hpp"
#include "procedures/procedure_catalogue.hpp"

namespace {

static_assert(std::is_base_of_v<VX_ProcedureTemplate<VXProc_PSQRT, 1, 1, 0, VX_ProcedureType_F, 1>, VXProc_PSQRT>);
static_assert(std::is_base_of_v<VX_ProcedureTemplate<VXProc_PENTH_MOL_LIQ, 3, 1, 1, VX_ProcedureType_F, 2>, VXProc_PENTH_MOL_LIQ>);
static_assert(std::is_base_of_v<VX_ProcedureType_C, VXProc_PQUORVA>);
static_assert(std::is_constructible_v<VXProc_PBUBT, bool, int, VX_COMPONENTLISTNAME*> && !std::is_constructible_v<VXProc_PBUBT, bool, int>);
static_assert(std::is_constructible_v<VXProc_PPOW, bool, int> && VXProc_PPOW::IsVariableInput(0) == false);
static_assert(VXProc_PSQRT::IsVariableInput(0) && VXProc_PMULT2D::Dimensions(0) == 2);

TEST(ProcedureCatalogue, TotalsMatchTheTable) {
    std::map<std::string, int> libraries, versions;
    int derivatives = 0, lists = 0;
    std::set<std::string> noInputs, cFlavour;
    for (const VX_ProcedureDeclaration* d : VX_ProcedureCatalogue()) {
        ++libraries[d->library];
        ++versions[std::to_string(d->version)];
        derivatives += d->derivatives;
        lists += d->componentList;
        if (d->inputs == 0) noInputs.insert(d->name);
        if (d->language == 'C') cFlavour.insert(d->name);
        EXPECT_EQ(d->version == 4, std::string(d->entry).rfind("ZORM13_", 0) == 0) << d->name;
    }
    EXPECT_EQ(VX_ProcedureCatalogue().size(), 222u);
    EXPECT_EQ(libraries, (std::map<std::string, int>{{"qelp", 121}, {"VXPropMod", 34}, {"Morvanex", 45}, {"Fabrik", 10},
                                                     {"fabrik", 11}, {"Quorvaif", 1}}));
    EXPECT_EQ(versions, (std::map<std::string, int>{{"1", 76}, {"2", 143}, {"4", 3}}));
    EXPECT_EQ(derivatives, 70);
    EXPECT_EQ(lists, 157);
    EXPECT_EQ(noInputs, (std::set<std::string>{"PMOLWEIGHTS", "PMOLWEIGHTS_SEG", "PSOLMODE", "PSPRMOD"}));
    EXPECT_EQ(cFlavour, std::set<std::string>{"PQUORVA"});
}

TEST(ProcedureCatalogue, ThreeEntryPointsServeTwoDeclarationsEach) {
    std::map<std::string, std::set<std::string>> byEntry;
    for (const VX_ProcedureDeclaration* d : VX_ProcedureCatalogue()) byEntry[d->entry].insert(d->name);
    std::map<std::string, std::set<std::string>> shared;
    for (const auto& [entry, names] : byEntry)
        if (names.size() > 1) shared[entry] = names;
    EXPECT_EQ(shared, (std::map<std::string, std::set<std::string>>{
                          {"RX55IF_gpismxci", {"PDENS_MOL_CISOL", "PDENS_MOL_SOL"}},
                          {"RX55IF_gpisexci", {"PENTH_MOL_CISOL", "PENTH_MOL_SOL"}},
                          {"RX55IF_gpisgx", {"PGIBBS_MOL_SOL", "PGIBB_MOL_SOL"}}}));
}

// Binds a call of D's own shape (every array two elements long along each dimension) on a
// counting instance and checks its equation and Jacobian counts.
template <class D>
void BindsItsOwnShape(CallModel& model) {
    const VX_ProcedureDeclaration& decl = D::kDeclaration;
    D* p;
    if constexpr (D::kDeclaration.componentList) p = new D(true, 0, nullptr);
    else p = new D(true, 0);
    std::unique_ptr<D> owned(p);
    std::vector<std::unique_ptr<VX_Type>> elements;
    int outputs = 0, variables = 0;
    for (int a = 0; a < decl.inputs + decl.outputs; ++a) {
        const VX_ProcArgSpec& arg = decl.args[a];
        const bool output = a >= decl.inputs;
        const int n = 1 << arg.dims;
        auto make = [&]() -> VX_VarParam& {
            VX_VarParam* made;
            if (output || arg.type == VX_ARG_REAL) made = new VX_REALVARIABLE(true);
            else if (arg.type == VX_ARG_STRING) made = new VX_STRINGPARAMETER(true);
            else made = new VX_INTEGERPARAMETER(true);
            elements.emplace_back(made);
            return *made;
        };
        if (arg.dims == 0 && !output && arg.type == VX_ARG_INTEGER && !arg.writtenBack) {
            p->Argument(1);   // unstarred integers as constants, the rest as elements
            continue;
        }
        if (arg.dims == 0) {
            p->Argument(make());
        } else {
            p->Argument();
            for (int d = 0; d < arg.dims; ++d) p->SetDimensionSize(2);
            for (int e = 0; e < n; ++e) p->Element(make());
        }
        if (output) outputs += n;
        else if (arg.type == VX_ARG_REAL) variables += n;
    }
    int eqns = 0;
    EXPECT_EQ(p->NZAndEqnContribution(&model, 1, eqns), outputs * (variables + 1)) << decl.name << ": " << p->FailureText();
    EXPECT_EQ(eqns, outputs) << decl.name;
}

TEST(ProcedureCatalogue, EveryDeclarationBindsACallOfItsShape) {
    ScopedSession session;
    CallModel model;
#define VX_PROCEDURE(NAME, ...) BindsItsOwnShape<VXProc_##NAME>(model);
#include "procedures/procedures.def"
#undef VX_PROCEDURE
}

}  // namespace
