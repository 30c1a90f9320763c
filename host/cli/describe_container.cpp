#include "describe_container.hpp"

#include <exception>
#include <memory>

#include "errors.hpp"
#include "flowsheet/input_error.hpp"
#include "frame/registry.hpp"
#include "model_library.hpp"
#include "property_inspection.hpp"
#include "zorexp/zorexp.hpp"

namespace zorexp_cli {
namespace {

// The level at which the described object runs its own assignments; its bases run theirs
// one level lower each.
constexpr int kTopLevel = 0;
constexpr const char* kComponentListName = "Components";

struct ReleaseObject {
    void operator()(VX_Containable* p) const { p->Release(); }
};
using ObjectRef = std::unique_ptr<VX_Containable, ReleaseObject>;

class ProtocolRun {
public:
    ProtocolRun(const VX_RegistryEntry& entry, VX_ModelType& model) : m_entry(entry), m_model(model) {}

    // Sizes the arrays and runs the assignments. Arrays are sized over sets that the
    // assignments make, and assignments may reach into array elements, so this runs twice;
    // both operations keep what is already in place.
    void Dimension() {
        for (int pass = 0; pass < 2; ++pass) {
            Run("SetDims", [&] { m_model.SetDims(); return 0; });
            Run("ExecuteAssignments", [&] { return m_model.ExecuteAssignments(kTopLevel, VX_CTX_MODEL); });
        }
    }

    std::vector<EquationReport> Equations() {
        VX_Session& session = VX_Session::Current();
        session.ResetNumbering();
        Run("SetUpEquations", [&] { return m_model.SetUpEquations(); });
        int equations = 0, nonzeros = 0;
        Run("CountEqnsAndNZs", [&] { return m_model.CountEqnsAndNZs(equations, nonzeros); });

        // The model writes its pattern without bounds checks: leave room to detect an overrun.
        const std::size_t room = static_cast<std::size_t>(nonzeros) * 2 + 64;
        std::vector<int> rows(room, -1), cols(room, -1);
        int* r = rows.data();
        int* c = cols.data();
        Run("JacPattern", [&] { return m_model.JacPattern(r, c, nullptr); });
        Expect("JacPattern", "pattern entries", static_cast<int>(r - rows.data()), nonzeros);

        std::vector<double> residuals(static_cast<std::size_t>(equations) + 1);
        std::vector<double> values(static_cast<std::size_t>(nonzeros) + 1);
        Expect("Residuals", "residuals", Run("Residuals", [&] { return m_model.Residuals(residuals.data(), 0, 0); }), equations);
        Expect("Jacobian", "Jacobian entries", Run("Jacobian", [&] { return m_model.Jacobian(values.data(), 0, 0); }), nonzeros);

        // Groups are kept in declaration order, each with its count of equations.
        std::vector<int> groupOfRow;
        for (const auto& g : m_model.Groups()) groupOfRow.insert(groupOfRow.end(), static_cast<std::size_t>(g.equations), g.group);
        Expect("SetUpEquations", "equations in its groups", static_cast<int>(groupOfRow.size()), equations);

        std::vector<EquationReport> out(static_cast<std::size_t>(equations));
        for (int k = 0; k < equations; ++k) {
            EquationReport& e = out[static_cast<std::size_t>(k)];
            const char* label = m_model.RowLabel(k);
            e.label = label ? label : "";
            e.group = groupOfRow[static_cast<std::size_t>(k)];
            e.residual = residuals[static_cast<std::size_t>(k)];
        }
        const auto& columns = session.Columns();
        for (int n = 0; n < nonzeros; ++n) {
            const int row = rows[static_cast<std::size_t>(n)];
            const int col = cols[static_cast<std::size_t>(n)];
            if (row < 0 || row >= equations || col < 0 || col >= static_cast<int>(columns.size()) || !columns[static_cast<std::size_t>(col)])
                throw HostFailure(std::string(m_entry.name) + ": JacPattern entry " + std::to_string(n) +
                                  " lies outside the model's rows or columns");
            out[static_cast<std::size_t>(row)].nonzeros.push_back(
                {columns[static_cast<std::size_t>(col)]->Path(), values[static_cast<std::size_t>(n)]});
        }
        return out;
    }

private:
    // Runs one protocol operation; a negative result or an exception becomes a HostFailure
    // naming the type and the operation.
    template <class Operation>
    int Run(const char* operation, Operation op) const {
        int result = 0;
        try {
            result = op();
        } catch (const VX_SizeLimitError& e) {
            // The user's values asked for more array elements than the limit: their input, not the model.
            throw BadInput(std::string(m_entry.name) + ": " + operation + ": " + e.what() + zx::flowsheet::kSizeLimitHint);
        } catch (const std::exception& e) {
            throw HostFailure(std::string(m_entry.name) + ": " + operation + " failed: " + e.what());
        }
        if (result < 0)
            throw HostFailure(std::string(m_entry.name) + ": " + operation + " failed: " + VX_StatusMessage(result) +
                              " (" + std::to_string(result) + ")");
        return result;
    }
    void Expect(const char* operation, const char* what, int got, int declared) const {
        if (got != declared)
            throw HostFailure(std::string(m_entry.name) + ": " + operation + " gave " + std::to_string(got) + " " + what +
                              " where SetUpEquations declared " + std::to_string(declared));
    }

    const VX_RegistryEntry& m_entry;
    VX_ModelType& m_model;
};

}  // namespace

ContainerReport DescribeContainer(const VX_RegistryEntry& entry, const ContainerRequest& request) {
    if (!entry.exported)
        throw BadInput(std::string(entry.name) + " is a " + entry.kind +
                       " type: it cannot be created on its own, only as a member of the models that hold it");
    ModelLibrary& library = ModelLibrary::Instance();
    ModelLibrary::Factory factory = library.FindFactory(entry.name);
    if (!factory) throw HostFailure("model library " + library.Path() + " has no export " + entry.name + "Factory");

    if (!request.components.empty()) VX_Session::Current().DefineComponentList(kComponentListName, request.components);

    ObjectRef object(factory());
    if (!object) throw HostFailure(std::string(entry.name) + "Factory returned no object");
    auto* model = dynamic_cast<VX_ModelType*>(static_cast<VX_Type*>(object.get()));
    if (!model) throw HostFailure(std::string(entry.name) + "Factory made an object that is not a container: " +
                                  static_cast<VX_Type*>(object.get())->TypeName());

    ProtocolRun run(entry, *model);
    AssignmentPlan plan(entry.name, request.assignments);
    plan.ApplyRound(*model, false);
    run.Dimension();
    if (plan.HasPending()) {   // paths into arrays exist only now that the arrays are sized
        plan.ApplyRound(*model, true);
        run.Dimension();
    }

    ContainerReport report{entry.name, entry.containerId, entry.kind, entry.base, entry.modelled, {}, {}};
    report.equations = run.Equations();
    report.properties = InspectProperties(*model);
    return report;
}

}  // namespace zorexp_cli
