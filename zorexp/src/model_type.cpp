#include "zorexp/model_type.hpp"

#include <algorithm>

#include "zorexp/procedure_type.hpp"
#include "zorexp/session.hpp"
#include "zorexp/variable.hpp"

int VX_ModelType::m_stLastGroup = 0;

VX_EquationType* VX_EquationType::ModelEquation() {
    static VX_EquationType t(Model);
    return &t;
}
VX_EquationType* VX_EquationType::ProcedureEquation() {
    static VX_EquationType t(Procedure);
    return &t;
}

VX_ModelType::~VX_ModelType() {
    for (VX_ProcedureType* p : m_procs) delete p;
}

void VX_ModelType::ResetEquations() {
    m_groups.clear();
    m_currentGroup = -1;
    m_equationCount = 0;
    // Row labels of procedure equations live in the procedures: they go with them.
    if (!m_procs.empty()) m_rowLabels.clear();
    for (VX_ProcedureType* p : m_procs) delete p;
    m_procs.clear();
    m_procGroups.clear();
}

int VX_ModelType::SetUpEquations() {
    ResetEquations();
    return 0;
}

int VX_ModelType::JacPattern(int*&, int*&, VX_EquationType**) {
    m_rowLabels.clear();
    return 0;
}

void VX_ModelType::SetGroupLimits(int group) { AddToGroup(group, 1, 0); }

void VX_ModelType::AddToGroup(int group, int equations, int nonzeros) {
    if (m_currentGroup < 0 || m_groups[static_cast<std::size_t>(m_currentGroup)].group != group) {
        auto it = std::find_if(m_groups.begin(), m_groups.end(), [&](const GroupInfo& g) { return g.group == group; });
        if (it == m_groups.end()) {
            m_groups.push_back(GroupInfo{group, 0, 0});
            it = m_groups.end() - 1;
        }
        m_currentGroup = static_cast<int>(it - m_groups.begin());
    }
    m_groups[static_cast<std::size_t>(m_currentGroup)].equations += equations;
    m_groups[static_cast<std::size_t>(m_currentGroup)].nonzeros += nonzeros;
    if (group > m_stLastGroup) m_stLastGroup = group;
}

void VX_ModelType::AddProcCall(VX_ProcedureType* proc, int group) {
    if (!proc) return;
    if (m_procGroups.empty() || m_procGroups.back().first != group)
        m_procGroups.emplace_back(group, static_cast<int>(m_procs.size()));
    m_procs.push_back(proc);
}

VX_ProcedureType* VX_ModelType::ProcedureEquation(int group, int id) const {
    for (std::size_t g = 0; g < m_procGroups.size(); ++g) {
        if (m_procGroups[g].first != group) continue;
        const int end = g + 1 < m_procGroups.size() ? m_procGroups[g + 1].second : static_cast<int>(m_procs.size());
        const int at = m_procGroups[g].second + id;
        return id >= 0 && at < end ? m_procs[static_cast<std::size_t>(at)] : nullptr;
    }
    return nullptr;
}

void VX_ModelType::AddNonZero(VX_Type&) {
    if (m_currentGroup >= 0) ++m_groups[static_cast<std::size_t>(m_currentGroup)].nonzeros;
}

void VX_ModelType::AddNonZero(VX_SetIter&) {
    if (m_currentGroup >= 0) ++m_groups[static_cast<std::size_t>(m_currentGroup)].nonzeros;
}

int VX_ModelType::SetLocalEqnCount(int n) {
    m_equationCount = n;
    return n;
}

bool VX_ModelType::ContainsGroup(int group) const {
    if (group == 0) return true;
    return std::any_of(m_groups.begin(), m_groups.end(), [&](const GroupInfo& g) { return g.group == group; });
}

void VX_ModelType::AddEqnsInGroup(int group, int& index) const {
    for (const auto& g : m_groups)
        if (g.group == group) { index += g.equations; return; }
}

void VX_ModelType::AddNZsandProcsInGroup(int group, int& index) const {
    for (const auto& g : m_groups)
        if (g.group == group) { index += g.nonzeros; return; }
}

int VX_ModelType::AddEquation(const char* label, VX_EquationType** types) {
    return AddEquation(VX_EquationType::ModelEquation(), label, types);
}

int VX_ModelType::AddEquation(VX_EquationType* type, const char* label, VX_EquationType** types) {
    VX_Session& s = VX_Session::Current();
    const int row = s.NextRow();
    if (types) types[row] = type;
    label = s.InternLabel(label);
    if (!m_rowLabels.empty() && m_rowLabels.back().first == label) ++m_rowLabels.back().second;
    else m_rowLabels.emplace_back(label, 1);
    return row;
}

const char* VX_ModelType::RowLabel(int k) const {
    for (const auto& [label, count] : m_rowLabels) {
        if (k < count) return label;
        k -= count;
    }
    return nullptr;
}

VX_HRESULT VX_ModelType::CountEqnsAndNZs(int& equations, int& nonzeros) const {
    equations = 0;
    nonzeros = 0;
    for (const auto& g : m_groups) {
        equations += g.equations;
        nonzeros += g.nonzeros;
    }
    return VX_S_OK;
}

int VX_ModelType::MaxGroupNo() const {
    int m = 0;
    for (const auto& g : m_groups) m = std::max(m, g.group);
    return m;
}

// Every real variable and real parameter in an equation is a Jacobian entry: parameters get a
// column too (their derivatives are sensitivities); the host makes only free variables unknowns.
void VX_ModelType::RecordVariableTerm(VX_Type& term, int*& rows, int*& cols, int eqn) {
    VX_Session& s = VX_Session::Current();
    s.Record(eqn, -1);
    if (!term.IsValue()) return;
    auto& vp = static_cast<VX_VarParam&>(term);
    if (!vp.RealSlot()) return;
    *rows++ = eqn;
    *cols++ = s.ColumnOf(vp);
}

int VX_ReportFailure(const VX_Type& model, const char* operation, const char* message) {
    VX_Session::Current().ReportFailure(VX_E_MODEL, &model, operation ? operation : "", message ? message : "");
    return VX_E_MODEL;
}

int VX_ReportFailure(const VX_Type& model, const char* operation, const std::exception& e, const std::string& context) {
    const int status = dynamic_cast<const VX_SizeLimitError*>(&e) ? VX_E_SIZE_LIMIT : VX_E_MODEL;
    VX_Session::Current().ReportFailure(status, &model, operation ? operation : "", e.what() + context);
    return status;
}

VX_HRESULT VX_ModelTypeEx::QueryInterface(const VX_GUID& iid, void** out) {
    if (out && iid == VX_IID_ModelDiscontinuity) {
        *out = static_cast<VX_ModelDiscontinuity*>(this);
        AddRef();
        return VX_S_OK;
    }
    return VX_WithExpressions<VX_ModelType>::QueryInterface(iid, out);
}

VX_HRESULT VX_ModelTypeEx2::QueryInterface(const VX_GUID& iid, void** out) {
    if (out && iid == VX_IID_ModelExtensions2) {
        *out = static_cast<VX_ModelExtensions2*>(this);
        AddRef();
        return VX_S_OK;
    }
    return VX_ModelTypeEx::QueryInterface(iid, out);
}

VX_HRESULT VX_PortType::Connect(VX_PortType* other) {
    if (!other || other == this) return VX_E_INVALIDARG;
    if (m_partner || other->m_partner) return VX_E_FAIL;
    m_partner = other;
    other->m_partner = this;
    MarkConnected(true);
    other->MarkConnected(true);
    return VX_S_OK;
}

VX_HRESULT VX_PortType::Disconnect() {
    if (!m_partner) return VX_S_FALSE;
    VX_PortType* other = m_partner;
    m_partner = nullptr;
    other->m_partner = nullptr;
    MarkConnected(false);
    other->MarkConnected(false);
    return VX_S_OK;
}

int VX_PortType::PortDirection() const {
    const VX_Type* owner = Owner();
    if (auto* c = dynamic_cast<const VX_Container*>(owner)) {
        const auto& props = c->Properties();
        const int slot = SlotInOwner();
        return slot >= 0 && slot < static_cast<int>(props.size()) ? props[static_cast<std::size_t>(slot)].flags & 12 : 0;
    }
    return owner ? owner->Direction() & 12 : 0;
}
