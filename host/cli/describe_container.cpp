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
// one level lower each, its members further down.
constexpr int kTopLevel = 0;
constexpr const char* kComponentListName = "Components";

struct ReleaseObject {
    void operator()(VX_Containable* p) const { p->Release(); }
};
using ObjectRef = std::unique_ptr<VX_Containable, ReleaseObject>;

class ProtocolRun {
public:
    // Looked at alone, the block's references to parameters stand for the session's globals of
    // their names and its other external references get stand-ins, which --set reaches by the
    // reference's name; global structures (a reaction configuration) are set up before it.
    ProtocolRun(const VX_RegistryEntry& entry, VX_ModelType& model) : m_entry(entry), m_model(&model) {
        for (const auto& [name, global] : VX_Session::Current().Globals())
            if (auto* structure = dynamic_cast<VX_ModelType*>(global)) m_driver.AddBlock(*structure);
        m_driver.AddBlock(model);
        Check(m_driver.LinkExternals([](VX_ModelType&, VX_ExternalBase& reference, const char* name) {
            VX_Type* global = VX_SessionGlobalFor(reference, name);
            return global ? global : reference.StandIn();
        }));
    }

    // Sizes the arrays and runs the assignments, of the object and what it contains. Arrays are
    // sized over sets that the assignments make, and assignments may reach into array elements,
    // so this runs twice; both operations keep what is already in place.
    void Dimension() {
        for (int pass = 0; pass < 2; ++pass) {
            Check(m_driver.SetDims());
            Check(m_driver.ExecuteAssignments(kTopLevel, VX_CTX_MODEL));
        }
    }

    // The equations, or why they cannot be set up with these settings.
    std::vector<EquationReport> Equations(std::optional<std::string>& unavailable) {
        if (m_driver.SetUpEquations() < 0) {
            const VX_ProtocolDriver::Failure& f = m_driver.LastFailure();
            if (f.status != VX_E_MODEL) Check(f.status);   // a size limit or a broken protocol, not the settings
            unavailable = f.operation + " failed: " + f.message;
            return {};
        }
        const int equations = m_driver.Rows(), nonzeros = m_driver.Entries();
        std::vector<int> rows(static_cast<std::size_t>(nonzeros), -1), cols(static_cast<std::size_t>(nonzeros), -1);
        Check(m_driver.JacPattern(rows.data(), cols.data()));
        std::vector<double> residuals(static_cast<std::size_t>(equations));
        std::vector<double> values(static_cast<std::size_t>(nonzeros));
        // A block whose routines cannot evaluate at these settings (a property block without a
        // component list) still has its equations; only their values are unavailable.
        if (m_driver.Residuals(residuals.data()) < 0 || m_driver.Jacobian(values.data()) < 0) {
            const VX_ProtocolDriver::Failure& f = m_driver.LastFailure();
            unavailable = f.operation + " failed: " + f.message;
            return {};
        }

        std::vector<EquationReport> out(static_cast<std::size_t>(equations));
        for (const VX_ProtocolDriver::Unit& u : m_driver.Units()) {
            // Groups are kept in declaration order, each with its count of equations.
            int row = u.firstRow;
            for (const auto& g : u.object->Groups())
                for (int k = 0; k < g.equations; ++k) out[static_cast<std::size_t>(row++)].group = g.group;
        }
        for (int k = 0; k < equations; ++k) {
            EquationReport& e = out[static_cast<std::size_t>(k)];
            const char* label = m_driver.RowLabel(k);
            e.label = label ? label : "";
            e.residual = residuals[static_cast<std::size_t>(k)];
        }
        const auto& columns = VX_Session::Current().Columns();
        for (int n = 0; n < nonzeros; ++n)
            out[static_cast<std::size_t>(rows[static_cast<std::size_t>(n)])].nonzeros.push_back(
                {columns[static_cast<std::size_t>(cols[static_cast<std::size_t>(n)])]->Path(),
                 values[static_cast<std::size_t>(n)]});
        return out;
    }

private:
    // A failure of the protocol (other than equations that cannot be set up) names the type,
    // the member, the operation and why.
    void Check(std::int32_t status) const {
        if (status >= 0) return;
        const VX_ProtocolDriver::Failure& f = m_driver.LastFailure();
        std::string who = m_entry.name;
        if (f.unit >= 0) {   // a member, or a global structure the object reads
            const VX_ModelType* unit = m_driver.Units()[static_cast<std::size_t>(f.unit)].object;
            if (unit != m_model) who += ", " + (unit->Path().empty() ? unit->TypeName() : unit->Path());
        }
        // An array larger than the limit comes from the user's values: their input, not the model.
        if (f.status == VX_E_SIZE_LIMIT) throw BadInput(who + ": " + f.operation + ": " + f.message + zx::flowsheet::kSizeLimitHint);
        throw HostFailure(who + ": " + f.operation + " failed: " + f.message);
    }

    const VX_RegistryEntry& m_entry;
    const VX_ModelType* m_model;
    VX_ProtocolDriver m_driver;
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

    ContainerReport report{entry.name, entry.containerId, entry.kind, entry.base, entry.modelled, entry.equationsDefined,
                           {}, {}, {}, {}};
    report.equations = run.Equations(report.equationsUnavailable);
    report.properties = InspectProperties(*model);
    for (const VX_Refusal& r : VX_Session::Current().Refusals())
        report.refusals.push_back(RefusalReport{r.path, r.attribute, r.value, r.reason, r.ordinal});
    return report;
}

}  // namespace zorexp_cli
