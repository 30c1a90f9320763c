#include "zorexp/session.hpp"

#include <algorithm>
#include <cctype>
#include <cxxabi.h>

#include <cstdlib>

#include "zorexp/container.hpp"
#include "zorexp/model_type.hpp"
#include "zorexp/type.hpp"
#include "zorexp/variable.hpp"

namespace {
// The holder of a session's globals: a container without a type of its own, so that a global's
// path is its name.
class GlobalHolder final : public VX_Container {};

// The current session lives in the runtime alone: code of a model library, built with hidden
// visibility, must never hold a copy of it.
VX_Session* s_current = nullptr;
std::size_t s_defaultElementLimit = VX_Session::kNoLimit;
}  // namespace

VX_Session& VX_Session::Current() { return s_current ? *s_current : BuiltIn(); }

VX_Session& VX_Session::BuiltIn() {
    static VX_Session* s = new VX_Session;   // never destroyed: objects may outlive static teardown
    return *s;
}

VX_Session::VX_Session() : m_elementLimit(s_defaultElementLimit) {}

void VX_Session::SetDefaultElementLimit(std::size_t limit) {
    s_defaultElementLimit = limit;
    BuiltIn().m_elementLimit = limit;
}

void VX_Session::CountElements(std::size_t from, std::size_t to, const VX_Type& array) {
    // Arrays made before a session was current may leave another: never count below zero.
    const std::size_t others = m_elements - std::min(from, m_elements);
    // Shrinking is never refused (arrays shrink in destructors).
    if (to > from && (to > m_elementLimit || others > m_elementLimit - to)) {
        const std::string path = array.Path();
        const std::string inUse = others == 0 ? std::string()
                                              : ", bringing the array elements in use to " +
                                                    std::to_string(others + std::min(to, kNoLimit - others));
        throw VX_SizeLimitError((path.empty() ? std::string("an array") : path) + " would have " + std::to_string(to) +
                                    " elements" + inUse + ", more than the limit of " + std::to_string(m_elementLimit) +
                                    " array elements",
                                to, m_elementLimit);
    }
    m_elements = others + to;
}

VX_Session::~VX_Session() {
    for (VX_VarParam* v : m_columns)
        if (v) v->SetColumn(-1);
    for (auto& [name, g] : m_globals) g.destroy(g.object);
    m_globals.clear();
    if (s_current == this) s_current = nullptr;
}

VX_Session* VX_Session::MakeCurrent(VX_Session* s) {
    VX_Session* previous = s_current;
    s_current = s;
    return previous;
}

void VX_Session::ResetNumbering() {
    for (VX_VarParam* v : m_columns)
        if (v) v->SetColumn(-1);
    m_columns.clear();
    m_rows = 0;
    m_tape.clear();
    VX_ModelType::m_stLastGroup = 0;
}

int VX_Session::ColumnOf(VX_VarParam& v) {
    if (!v.RealSlot()) return -1;
    if (v.Column() < 0) {
        v.SetColumn(static_cast<int>(m_columns.size()));
        m_columns.push_back(&v);
    }
    return v.Column();
}

void VX_Session::ForgetColumn(VX_VarParam& v) {
    const int c = v.Column();
    if (c >= 0 && c < static_cast<int>(m_columns.size()) && m_columns[static_cast<std::size_t>(c)] == &v)
        m_columns[static_cast<std::size_t>(c)] = nullptr;
}

const char* VX_Session::InternLabel(const char* label) {
    return m_labels.emplace(label ? label : "").first->c_str();
}

void VX_Session::ReportFailure(std::int32_t status, const VX_Type* object, std::string operation, std::string message) {
    m_failure = VX_Failure{status, object, std::move(operation), std::move(message)};
}

void VX_Session::NoteRefusal(const VX_VarParam& object, const char* attribute, const VX_Value& value,
                             const std::string& reason) {
    VX_Refusal r{&object, object.Path(), attribute ? attribute : "", value.ToString(), reason, value.Ordinal()};
    for (auto& old : m_refusals)
        if (old.object == &object && old.attribute == r.attribute) {
            old = std::move(r);   // the latest attempt replaces an earlier one of the same target
            return;
        }
    m_refusals.push_back(std::move(r));
}

void VX_Session::ForgetRefusals(const VX_VarParam& object) {
    std::erase_if(m_refusals, [&](const VX_Refusal& r) { return r.object == &object; });
}

void VX_Session::Name(VX_Type& global, const std::string& name) {
    if (!m_globalHolder) m_globalHolder = std::make_unique<GlobalHolder>();
    auto& holder = static_cast<GlobalHolder&>(*m_globalHolder);
    global.SetOwner(&holder, holder.Register(&global, InternLabel(name.c_str()), nullptr, 0));
}

std::string VX_Session::GlobalTypeClash(const std::string& name, const VX_Type& existing, const std::type_info& wanted) {
    int status = 0;
    char* raw = abi::__cxa_demangle(wanted.name(), nullptr, nullptr, &status);
    std::string want = (status == 0 && raw) ? raw : wanted.name();
    std::free(raw);
    if (want.rfind("VX_", 0) == 0) want.erase(0, 3);
    return "global " + name + " is declared as " + want + " here but as " + existing.TypeName() + " by another block";
}

std::string VX_Session::Key(const char* name) {
    std::string k(name ? name : "");
    for (char& c : k) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return k;
}

VX_Type* VX_Session::FindGlobal(const char* name) const {
    auto it = m_globals.find(Key(name));
    return it == m_globals.end() ? nullptr : it->second.object;
}

std::vector<std::pair<std::string, VX_Type*>> VX_Session::Globals() const {
    std::vector<std::pair<std::string, VX_Type*>> out;
    for (const auto& [k, g] : m_globals) out.emplace_back(k, g.object);
    return out;
}

void VX_Session::DefineComponentList(const std::string& name, std::vector<std::string> components,
                                     std::map<std::string, SUValue> options) {
    std::map<std::string, SUValue> upper;
    for (auto& [k, v] : options) upper.emplace(Key(k.c_str()), v);
    auto data = std::make_shared<const VX_StrSetData>(std::move(components));
    for (auto& l : m_lists)
        if (VX_EqualCI(l.name.c_str(), name.c_str())) {
            l.components = data;
            l.options = std::move(upper);
            return;
        }
    m_lists.push_back(VX_ComponentListData{name, data, std::move(upper)});
}

const VX_ComponentListData* VX_Session::FindComponentList(const std::string& name) const {
    for (const auto& l : m_lists)
        if (VX_EqualCI(l.name.c_str(), name.c_str())) return &l;
    return nullptr;
}

const VX_ComponentListData* VX_Session::DefaultComponentList() const {
    return m_lists.empty() ? nullptr : &m_lists.front();
}

void VX_Session::AddNote(std::string text) {
    if (std::find(m_notes.begin(), m_notes.end(), text) == m_notes.end()) m_notes.push_back(std::move(text));
}
