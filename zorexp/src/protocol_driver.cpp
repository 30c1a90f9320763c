#include "zorexp/protocol_driver.hpp"

#include <algorithm>
#include <climits>
#include <cmath>
#include <exception>

#include "zorexp/arrays.hpp"
#include "zorexp/component_list.hpp"
#include "zorexp/connection.hpp"
#include "zorexp/references.hpp"
#include "zorexp/session.hpp"
#include "zorexp/variable.hpp"

namespace {
// Members run their assignments this many levels below their owner, so that an owner's
// assignment to a member's property always wins over the member's own.
constexpr int kMemberLevelStep = 100;
// SetDims may create members (arrays of sub-models sized over a set); they are sized in turn,
// at most this many times over.
constexpr int kMaxSizingPasses = 16;
}  // namespace

int VX_ProtocolDriver::AddBlock(VX_ModelType& block) {
    m_blocks.push_back(&block);
    return static_cast<int>(m_blocks.size()) - 1;
}

void VX_ProtocolDriver::AddUnit(VX_ModelType& unit) { m_own.push_back(&unit); }

void VX_ProtocolDriver::AddConnection(VX_Connection& connection) { m_own.push_back(&connection); }

void VX_ProtocolDriver::Walk(VX_Type& object, int block, int depth, int parent) {
    auto* model = dynamic_cast<VX_ModelType*>(&object);
    if (model) {
        m_units.push_back(Unit{model, block, depth, parent});
        parent = static_cast<int>(m_units.size()) - 1;
        ++depth;
    }
    auto visit = [&](VX_Type* member) {
        if (!member || member->IsValue()) return;   // variables, parameters and sets hold no units
        if (auto* v = dynamic_cast<VX_VirtualBase*>(member)) member = v->Target();
        if (!member || dynamic_cast<VX_GlobalBase*>(member) || dynamic_cast<VX_ExternalBase*>(member)) return;
        if (dynamic_cast<VX_ModelType*>(member) || dynamic_cast<VX_Matrix*>(member)) Walk(*member, block, depth, parent);
    };
    if (auto* array = dynamic_cast<VX_Matrix*>(&object)) {
        // Elements are all of one type: an array of values holds no units.
        for (int k = 0; k < array->Size(); ++k) {
            VX_Type* e = array->At(k);
            if (e && e->IsValue()) return;
            visit(e);
        }
        return;
    }
    if (auto* container = dynamic_cast<VX_Container*>(&object))
        for (const VX_PropertyEntry& p : container->Properties()) visit(p.object);
}

void VX_ProtocolDriver::Collect() {
    m_units.clear();
    for (std::size_t b = 0; b < m_blocks.size(); ++b) Walk(*m_blocks[b], static_cast<int>(b), 0, -1);
    for (VX_ModelType* u : m_own) m_units.push_back(Unit{u, -1, 0, -1});
}

int VX_ProtocolDriver::UnitOf(const VX_Type& object) const {
    for (std::size_t k = 0; k < m_units.size(); ++k)
        if (m_units[k].object == &object) return static_cast<int>(k);
    return -1;
}

std::int32_t VX_ProtocolDriver::Fail(int unit, std::int32_t status, const char* operation, std::string message) noexcept {
    try {
        m_failure = Failure{status, unit, operation, std::move(message)};
    } catch (...) {
        m_failure.status = status;
        m_failure.unit = unit;
    }
    return status;
}

template <class Op>
std::int32_t VX_ProtocolDriver::Run(int unit, const char* operation, Op&& op) noexcept {
    try {
        const std::int32_t status = op();
        if (status >= 0) return status;
        const VX_Failure& f = VX_Session::Current().LastFailure();
        if (f.status == status && !f.message.empty()) return Fail(unit, status, operation, f.message);
        const std::string text = VX_StatusMessage(status);
        return Fail(unit, status, operation,
                    "status " + std::to_string(status) + (text == "unknown status" ? "" : " (" + text + ")"));
    } catch (const VX_SizeLimitError& e) {
        return Fail(unit, VX_E_SIZE_LIMIT, operation, e.what());
    } catch (const std::exception& e) {
        return Fail(unit, VX_E_MODEL, operation, e.what());
    } catch (...) {
        return Fail(unit, VX_E_MODEL, operation, "an exception of unknown kind");
    }
}

// A member takes its owner's component list unless one was given to it.
void VX_ProtocolDriver::InheritComponentLists() {
    for (const Unit& u : m_units) {
        if (u.parent < 0) continue;
        VX_COMPONENTLISTNAME* mine = u.object->ComponentList();
        VX_COMPONENTLISTNAME* owners = m_units[static_cast<std::size_t>(u.parent)].object->ComponentList();
        if (!mine || !owners || !mine->VALUE().IsDefaultAssignment()) continue;
        if (std::string(mine->fv()) == owners->fv()) continue;
        const VX_Value name(owners->fv(), 0);
        mine->VALUE().SetCurrentValue(&name);
    }
}

std::int32_t VX_ProtocolDriver::SetDims() {
    m_failure = Failure{};
    std::size_t sized = 0;
    for (int pass = 0; pass < kMaxSizingPasses; ++pass) {
        Collect();
        InheritComponentLists();
        if (pass > 0 && m_units.size() == sized) break;
        sized = m_units.size();
        for (std::size_t k = 0; k < m_units.size(); ++k) {
            VX_ModelType* object = m_units[k].object;
            const std::int32_t status = Run(static_cast<int>(k), "SetDims", [&] { object->SetDims(); return 0; });
            if (status < 0) return status;
        }
    }
    // Connections are among the units of their own, which come after all blocks' units.
    for (std::size_t k = m_units.size() - m_own.size(); k < m_units.size(); ++k) {
        auto* c = dynamic_cast<VX_Connection*>(m_units[k].object);
        if (!c) continue;
        const std::int32_t status = Run(static_cast<int>(k), "Match", [&] { c->Match(); return 0; });
        if (status < 0) return status;
    }
    return VX_S_OK;
}

std::int32_t VX_ProtocolDriver::LinkExternals(const ExternalBinder& bind) {
    m_failure = Failure{};
    Collect();
    for (std::size_t k = 0; k < m_units.size(); ++k) {
        VX_ModelType& unit = *m_units[k].object;
        for (const VX_PropertyEntry& p : unit.Properties()) {
            auto* reference = dynamic_cast<VX_ExternalBase*>(p.object);
            if (!reference || reference->IsLinked()) continue;
            VX_Type* object = bind(unit, *reference, p.name);
            if (!object) continue;
            if (reference->ExternalLink(object) < 0)
                return Fail(static_cast<int>(k), VX_E_WRONGKIND, "ExternalLink",
                            std::string("external reference ") + p.name + " takes " + reference->ExternalTypeName() +
                                ", not the " + object->TypeName() + " " + object->Path());
        }
    }
    return VX_S_OK;
}

std::int32_t VX_ProtocolDriver::ExecuteAssignments(int level, int context) {
    m_failure = Failure{};
    for (std::size_t k = 0; k < m_units.size(); ++k) {
        const Unit& u = m_units[k];
        const std::int32_t status = Run(static_cast<int>(k), "ExecuteAssignments", [&] {
            return u.object->ExecuteAssignments(level - kMemberLevelStep * u.depth, context);
        });
        if (status < 0) return status;
    }
    return VX_S_OK;
}

std::int32_t VX_ProtocolDriver::SetUpEquations(int firstGroup) {
    m_failure = Failure{};
    VX_Session& session = VX_Session::Current();
    session.ResetNumbering();
    session.ClearFailure();
    VX_ModelType::m_stLastGroup = firstGroup;
    long long rows = 0, entries = 0;
    for (std::size_t k = 0; k < m_units.size(); ++k) {
        Unit& u = m_units[k];
        const int unit = static_cast<int>(k);
        const std::int32_t n = Run(unit, "SetUpEquations", [&] { return u.object->SetUpEquations(); });
        if (n < 0) return n;
        int counted = 0, nonzeros = 0;
        u.object->CountEqnsAndNZs(counted, nonzeros);
        if (counted != n)
            return Fail(unit, VX_E_STRUCTURE, "SetUpEquations",
                        "returned " + std::to_string(n) + " equations but declared " + std::to_string(counted) + " in its groups");
        u.firstRow = static_cast<int>(rows);
        u.rows = n;
        u.firstEntry = static_cast<int>(entries);
        u.entries = nonzeros;
        rows += n;
        entries += nonzeros;
        if (rows > INT_MAX || entries > INT_MAX)
            return Fail(unit, VX_E_STRUCTURE, "SetUpEquations", "more equations or Jacobian entries than one system can hold");
    }
    m_rows = static_cast<int>(rows);
    m_entries = static_cast<int>(entries);
    return VX_S_OK;
}

std::int32_t VX_ProtocolDriver::JacPattern(int* rows, int* cols, VX_EquationType** types) {
    VX_Session& session = VX_Session::Current();
    session.RestartRows();
    for (std::size_t k = 0; k < m_units.size(); ++k) {
        const Unit& u = m_units[k];
        const int unit = static_cast<int>(k);
        int* r = rows + u.firstEntry;
        int* c = cols + u.firstEntry;
        const int rowsBefore = session.RowCount();
        const std::int32_t status = Run(unit, "JacPattern", [&] { return u.object->JacPattern(r, c, types); });
        if (status < 0) return status;
        const long written = r - (rows + u.firstEntry);
        if (written != u.entries)
            return Fail(unit, VX_E_STRUCTURE, "JacPattern",
                        "wrote " + std::to_string(written) + " entries where SetUpEquations declared " + std::to_string(u.entries));
        if (rowsBefore != u.firstRow || session.RowCount() - rowsBefore != u.rows)
            return Fail(unit, VX_E_STRUCTURE, "JacPattern",
                        "declared " + std::to_string(session.RowCount() - rowsBefore) + " equations where SetUpEquations declared " +
                            std::to_string(u.rows));
        const auto& columns = session.Columns();
        for (int e = u.firstEntry; e < u.firstEntry + u.entries; ++e) {
            if (rows[e] < u.firstRow || rows[e] >= u.firstRow + u.rows)
                return Fail(unit, VX_E_STRUCTURE, "JacPattern", "wrote an entry in row " + std::to_string(rows[e]) + ", outside its rows");
            if (cols[e] < 0 || cols[e] >= static_cast<int>(columns.size()) || !columns[static_cast<std::size_t>(cols[e])])
                return Fail(unit, VX_E_STRUCTURE, "JacPattern", "wrote an entry in column " + std::to_string(cols[e]) + ", which no variable holds");
        }
    }
    return VX_S_OK;
}

std::int32_t VX_ProtocolDriver::Residuals(double* r, int group) noexcept {
    for (std::size_t k = 0; k < m_units.size(); ++k) {
        const Unit& u = m_units[k];
        const int unit = static_cast<int>(k);
        const std::int32_t end = Run(unit, "Residuals", [&] { return u.object->Residuals(r, group, u.firstRow); });
        if (end < 0) return end;
        if (end != u.firstRow + u.rows)
            return Fail(unit, VX_E_STRUCTURE, "Residuals", "returned " + std::to_string(end) + " for rows " +
                                                               std::to_string(u.firstRow) + " to " + std::to_string(u.firstRow + u.rows));
    }
    return VX_S_OK;
}

std::int32_t VX_ProtocolDriver::Jacobian(double* values, int group) noexcept {
    for (std::size_t k = 0; k < m_units.size(); ++k) {
        const Unit& u = m_units[k];
        const int unit = static_cast<int>(k);
        const std::int32_t end = Run(unit, "Jacobian", [&] { return u.object->Jacobian(values, group, u.firstEntry); });
        if (end < 0) return end;
        if (end != u.firstEntry + u.entries)
            return Fail(unit, VX_E_STRUCTURE, "Jacobian", "returned " + std::to_string(end) + " for entries " +
                                                              std::to_string(u.firstEntry) + " to " + std::to_string(u.firstEntry + u.entries));
    }
    return VX_S_OK;
}

int VX_ProtocolDriver::UnitOfRow(int row) const {
    for (std::size_t k = 0; k < m_units.size(); ++k) {
        const Unit& u = m_units[k];
        if (row >= u.firstRow && row < u.firstRow + u.rows) return static_cast<int>(k);
    }
    return -1;
}

const char* VX_ProtocolDriver::RowLabel(int row) const {
    const int k = UnitOfRow(row);
    return k < 0 ? nullptr : m_units[static_cast<std::size_t>(k)].object->RowLabel(row - m_units[static_cast<std::size_t>(k)].firstRow);
}
