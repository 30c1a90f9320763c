#include "zorexp/varparam.hpp"

#include <cmath>
#include <memory>
#include <unordered_map>
#include <vector>

#include "zorexp/parameters.hpp"
#include "zorexp/session.hpp"
#include "zorexp/sets.hpp"
#include "zorexp/variable.hpp"

namespace {
// Extra named properties (such as "VALID") are rare, so they live beside the object, not in it.
struct Extra {
    std::string name;
    std::unique_ptr<VX_VarParam, void (*)(VX_VarParam*)> object;
};
std::unordered_map<const VX_VarParam*, std::vector<Extra>>& Extras() {
    static auto* table = new std::unordered_map<const VX_VarParam*, std::vector<Extra>>;
    return *table;
}

template <class T>
void DeleteAs(VX_VarParam* p) { delete static_cast<T*>(p); }

bool IsNumber(const VX_Value& v) { return v.GetKind() == VX_Value::Real || v.GetKind() == VX_Value::Integer; }

// Values in messages come from users: kept on one line and cut short when long.
std::string Quote(const std::string& s) { return "\"" + VX_BriefText(s) + "\""; }

std::string ListValid(const VX_StrSetData& set) {
    std::string out;
    for (std::size_t i = 0; i < set.Size(); ++i) out += (i ? ", " : "") + Quote(set.At(i));
    return out;
}
}  // namespace

const char* VX_VarParam::KindName() const {
    switch (m_kind) {
    case RealVariable: return "variable";
    case IntegerParameter: return "integer parameter";
    case RealParameter: return "real parameter";
    case StringParameter: return "string parameter";
    case LogicalParameter: return "logical parameter";
    case IntegerSet: return "integer set";
    case StringSet: return "string set";
    }
    return "property";
}

namespace {
const char* const kAttrNames[VX_ATTR_COUNT] = {"VALUE", "SPEC", "LOWER", "UPPER", "RECORD", "ISMATCHED", "ISCONNECTED"};
}  // namespace

const char* VX_AttrName(VX_Attr a) { return a < VX_ATTR_COUNT ? kAttrNames[a] : ""; }

VX_Attr VX_AttrFromName(const char* name) {
    for (int a = 0; a < VX_ATTR_COUNT; ++a)
        if (name && VX_EqualCI(name, kAttrNames[a])) return static_cast<VX_Attr>(a);
    return VX_ATTR_COUNT;
}

VX_VarParam& VX_VarParam::operator=(const VX_VarParam& o) {
    m_sources = o.m_sources;
    m_spec = o.m_spec;
    m_attrFlags = o.m_attrFlags;
    for (int a = 0; a < VX_ATTR_COUNT; ++a) m_levels[a] = o.m_levels[a];
    return *this;
}

VX_VarParam::~VX_VarParam() {
    if (m_column >= 0) VX_Session::Current().ForgetColumn(*this);
    if (m_flags & kHasExtras) Extras().erase(this);
}

double* VX_VarParam::RealSlot() {
    if (m_kind == RealVariable) return static_cast<VX_Variable&>(*this).m_slot;
    if (m_kind == RealParameter) return &static_cast<VX_REALPARAMETER&>(*this).m_value;
    return nullptr;
}

VX_HRESULT VX_VarParam::SetDefault(const VX_Value& value) {
    if (!CheckValue(VX_ATTR_VALUE, value).empty()) return VX_E_INVALIDARG;
    if (SourceOf(VX_ATTR_VALUE) != VX_SRC_DEFAULT) return VX_S_FALSE;
    Store(VX_ATTR_VALUE, value);
    return VX_S_OK;
}

void VX_VarParam::RecordRead() const { VX_Session::Current().NoteRead(); }

std::string VX_VarParam::CheckValue(VX_Attr attr, const VX_Value& value) const {
    const auto kind = value.GetKind();
    auto wrongKind = [&](const char* expected) {
        return std::string("expects ") + expected + ", got " + value.KindName() + " " + Quote(value.ToString());
    };
    if (attr >= VX_ATTR_RECORD) {
        if (m_kind != RealVariable) return std::string("has no attribute ") + VX_AttrName(attr);
        if (kind == VX_Value::Logical) return "";
        if (kind == VX_Value::Integer && (value.IntValue() == 0 || value.IntValue() == 1)) return "";
        return wrongKind("a logical (true or false)");
    }
    if (attr == VX_ATTR_SPEC) {
        if (m_kind != RealVariable) return "has no spec";
        const int code = kind == VX_Value::Spec || kind == VX_Value::Integer ? value.IntValue() : 0;
        if (!VX_SpecText(code)) return wrongKind("a spec (Fixed, Free, Initial, RateInitial)");
        return "";
    }
    switch (m_kind) {
    case RealVariable: {
        if (!IsNumber(value)) return wrongKind("a real number");
        const double x = value.RealValue();
        if (!std::isfinite(x)) return "expects a finite number, got " + value.ToString();
        auto& self = static_cast<const VX_Variable&>(*this);
        if (attr == VX_ATTR_LOWER && x > self.m_upper) return "lower bound " + value.ToString() + " lies above the upper bound";
        if (attr == VX_ATTR_UPPER && x < self.m_lower) return "upper bound " + value.ToString() + " lies below the lower bound";
        return "";
    }
    case IntegerParameter: {
        if (kind != VX_Value::Integer) return wrongKind("an integer");
        auto& self = static_cast<const VX_INTEGERPARAMETER&>(*this);
        const int x = value.IntValue();
        if (attr == VX_ATTR_VALUE) {
            if (x < self.Lower()) return "value " + std::to_string(x) + " lies below the lower bound " + std::to_string(self.Lower());
            if (x > self.Upper()) return "value " + std::to_string(x) + " lies above the upper bound " + std::to_string(self.Upper());
            // Types with a valid set answer this lookup (making the property on demand).
            if (auto* valid = dynamic_cast<const VX_INTEGERSET*>(FindProperty("VALID")))
                if (!valid->fv().Empty() && !valid->fv().Contains(x))
                    return "value " + std::to_string(x) + " is not in the valid set " + Quote(valid->fv().Text());
        }
        return "";
    }
    case RealParameter: {
        if (!IsNumber(value)) return wrongKind("a real number");
        auto& self = static_cast<const VX_REALPARAMETER&>(*this);
        const double x = value.RealValue();
        if (!std::isfinite(x)) return "expects a finite number, got " + value.ToString();
        if (attr == VX_ATTR_VALUE && (x < self.Lower() || x > self.Upper()))
            return "value " + value.ToString() + " lies outside the bounds [" + VX_Value(self.Lower(), 0).ToString() +
                   ", " + VX_Value(self.Upper(), 0).ToString() + "]";
        return "";
    }
    case StringParameter: {
        if (attr != VX_ATTR_VALUE) return "has no bounds";
        if (kind != VX_Value::Text) return wrongKind("a text");
        const auto& valid = static_cast<const VX_STRINGPARAMETER&>(*this).Valid();
        if (!valid.Empty() && !valid.Contains(value.TextValue()))
            return "value " + Quote(value.TextValue()) + " is not one of the valid values: " + ListValid(valid);
        return "";
    }
    case LogicalParameter:
        if (attr != VX_ATTR_VALUE) return "has no bounds";
        if (kind == VX_Value::Logical) return "";
        if (kind == VX_Value::Integer && (value.IntValue() == 0 || value.IntValue() == 1)) return "";
        return wrongKind("a logical (true or false)");
    case IntegerSet:
        if (attr != VX_ATTR_VALUE) return "has no bounds";
        return kind == VX_Value::IntegerSet ? "" : wrongKind("an integer set");
    case StringSet:
        if (attr != VX_ATTR_VALUE) return "has no bounds";
        return kind == VX_Value::StringSet ? "" : wrongKind("a string set");
    }
    return "cannot be assigned";
}

void VX_VarParam::Store(VX_Attr attr, const VX_Value& value) {
    if (attr >= VX_ATTR_RECORD) {
        const unsigned bit = 1u << (attr - VX_ATTR_RECORD);
        m_attrFlags = static_cast<std::uint8_t>(value.IntValue() != 0 ? (m_attrFlags | bit) : (m_attrFlags & ~bit));
        return;
    }
    switch (m_kind) {
    case RealVariable: {
        auto& self = static_cast<VX_Variable&>(*this);
        switch (attr) {
        case VX_ATTR_VALUE: *self.m_slot = value.RealValue(); break;
        case VX_ATTR_LOWER: self.m_lower = value.RealValue(); break;
        case VX_ATTR_UPPER: self.m_upper = value.RealValue(); break;
        case VX_ATTR_SPEC: m_spec = static_cast<std::int8_t>(value.IntValue()); break;
        default: break;
        }
        break;
    }
    case IntegerParameter: {
        auto& self = static_cast<VX_INTEGERPARAMETER&>(*this);
        if (attr == VX_ATTR_VALUE) self.m_value = value.IntValue();
        else if (attr == VX_ATTR_LOWER) self.m_lower = value.IntValue();
        else if (attr == VX_ATTR_UPPER) self.m_upper = value.IntValue();
        break;
    }
    case RealParameter: {
        auto& self = static_cast<VX_REALPARAMETER&>(*this);
        if (attr == VX_ATTR_VALUE) self.m_value = value.RealValue();
        else if (attr == VX_ATTR_LOWER) self.m_lower = value.RealValue();
        else if (attr == VX_ATTR_UPPER) self.m_upper = value.RealValue();
        break;
    }
    case StringParameter: static_cast<VX_STRINGPARAMETER&>(*this).m_value = value.TextValue(); break;
    case LogicalParameter: static_cast<VX_LOGICALPARAMETER&>(*this).m_value = value.IntValue() != 0; break;
    case IntegerSet: {
        auto& set = static_cast<VX_INTEGERSET&>(*this);
        set.m_data = value.IntSetShared() ? value.IntSetShared() : std::make_shared<VX_IntSetData>();
        set.NotifyDependents();
        break;
    }
    case StringSet: {
        auto& set = static_cast<VX_STRINGSET&>(*this);
        set.m_data = value.StrSetShared() ? value.StrSetShared() : std::make_shared<VX_StrSetData>();
        set.NotifyDependents();
        break;
    }
    }
}

VX_AssignStatus VX_VarParamProp::Assign(const VX_Value* value) const {
    if (!value) return VX_AS_REFUSED;
    VX_VarParam& t = *m_target;
    if (std::string why = t.CheckValue(m_attr, *value); !why.empty()) {
        // A model's refused assignment is kept for the user to see, not lost.
        if (!value->IsUserValue()) VX_Session::Current().NoteRefusal(t, VX_AttrName(m_attr), *value, why);
        return VX_AS_REFUSED;
    }
    const bool user = value->IsUserValue();
    const VX_Source current = t.SourceOf(m_attr);
    if (!user) {
        if (current == VX_SRC_USER) return VX_AS_KEPT_USER_VALUE;
        if (current == VX_SRC_MODEL && value->Level() < t.LevelOf(m_attr)) return VX_AS_KEPT_HIGHER;
    }
    t.Store(m_attr, *value);
    t.SetSource(m_attr, user ? VX_SRC_USER : VX_SRC_MODEL, value->Level());
    return VX_AS_ASSIGNED;
}

VX_HRESULT VX_VarParamProp::SetCurrentValue(const VX_Value* value) const {
    if (!value) return VX_E_POINTER;
    if (!m_target->CheckValue(m_attr, *value).empty()) return VX_E_INVALIDARG;
    m_target->Store(m_attr, *value);
    return VX_S_OK;
}

bool VX_VarParamProp::IsDefaultAssignment() const { return m_target->SourceOf(m_attr) == VX_SRC_DEFAULT; }

VX_AssignStatus VX_VarParam::AssignUser(VX_Attr attr, const VX_Value& value, std::string* why) {
    std::string problem = CheckValue(attr, value);
    if (problem.empty() && (m_kind == IntegerSet || m_kind == StringSet)) {
        // A set users give may size arrays: one beyond the session's limit is refused outright.
        const std::size_t members = m_kind == IntegerSet ? value.IntSet().Size() : value.StrSet().Size();
        const std::size_t limit = VX_Session::Current().ElementLimit();
        if (members > limit)
            problem = "has " + std::to_string(members) + " members, more than the limit of " + std::to_string(limit) +
                      " array elements";
    }
    if (!problem.empty()) {
        if (why) *why = problem;
        return VX_AS_REFUSED;
    }
    VX_Value stamped(value);
    stamped.Stamp(VX_CTX_USER, 0, 0);
    return VX_VarParamProp(*this, attr).Assign(&stamped);
}

VX_HRESULT VX_VarParam::RetractNonModelAssignment() {
    for (int a = 0; a < VX_ATTR_COUNT; ++a)
        if (SourceOf(static_cast<VX_Attr>(a)) == VX_SRC_USER) SetSource(static_cast<VX_Attr>(a), VX_SRC_DEFAULT, 0);
    return VX_S_OK;
}

VX_VarParam& VX_VarParam::GetProperty(const char* name, const VX_Value* defaultValue, int) {
    auto& list = Extras()[this];
    for (auto& e : list)
        if (VX_EqualCI(e.name.c_str(), name)) return *e.object;
    m_flags |= kHasExtras;
    VX_VarParam* made = nullptr;
    void (*deleter)(VX_VarParam*) = nullptr;
    const auto kind = defaultValue ? defaultValue->GetKind() : VX_Value::Empty;
    switch (kind) {
    case VX_Value::IntegerSet: made = new VX_INTEGERSET(true); deleter = DeleteAs<VX_INTEGERSET>; break;
    case VX_Value::StringSet: made = new VX_STRINGSET(true); deleter = DeleteAs<VX_STRINGSET>; break;
    case VX_Value::Integer: made = new VX_INTEGERPARAMETER(true); deleter = DeleteAs<VX_INTEGERPARAMETER>; break;
    case VX_Value::Logical: made = new VX_LOGICALPARAMETER(true); deleter = DeleteAs<VX_LOGICALPARAMETER>; break;
    case VX_Value::Text: made = new VX_STRINGPARAMETER(true); deleter = DeleteAs<VX_STRINGPARAMETER>; break;
    default: made = new VX_REALPARAMETER(true); deleter = DeleteAs<VX_REALPARAMETER>; break;
    }
    if (defaultValue && defaultValue->GetKind() != VX_Value::Empty) made->Store(VX_ATTR_VALUE, *defaultValue);
    made->SetOwner(this, static_cast<int>(list.size()));
    list.push_back(Extra{name, {made, deleter}});
    return *made;
}

VX_Type* VX_VarParam::FindProperty(const char* name) const {
    if (!(m_flags & kHasExtras)) return nullptr;
    auto it = Extras().find(this);
    if (it == Extras().end()) return nullptr;
    for (auto& e : it->second)
        if (VX_EqualCI(e.name.c_str(), name)) return e.object.get();
    return nullptr;
}

VX_Type* VX_VarParam::FindPropertyById(int id) const {
    if (!(m_flags & kHasExtras) || id < 1) return nullptr;
    auto it = Extras().find(this);
    if (it == Extras().end() || id > static_cast<int>(it->second.size())) return nullptr;
    return it->second[static_cast<std::size_t>(id - 1)].object.get();
}

bool VX_VarParam::PropertyNameToId(const char* name, int& id) const {
    if (!(m_flags & kHasExtras)) return false;
    auto it = Extras().find(this);
    if (it == Extras().end()) return false;
    for (std::size_t k = 0; k < it->second.size(); ++k)
        if (VX_EqualCI(it->second[k].name.c_str(), name)) { id += static_cast<int>(k) + 1; return true; }
    return false;
}

std::string VX_VarParam::ValueText() const {
    switch (m_kind) {
    case RealVariable: return VX_Value(static_cast<const VX_Variable&>(*this).fv(), 0).ToString();
    case IntegerParameter: return std::to_string(static_cast<const VX_INTEGERPARAMETER&>(*this).fv());
    case RealParameter: return VX_Value(static_cast<const VX_REALPARAMETER&>(*this).fv(), 0).ToString();
    case StringParameter: return static_cast<const VX_STRINGPARAMETER&>(*this).fv();
    case LogicalParameter: return static_cast<const VX_LOGICALPARAMETER&>(*this).fv() ? "true" : "false";
    case IntegerSet: return static_cast<const VX_INTEGERSET&>(*this).fv().Text();
    case StringSet: return static_cast<const VX_STRINGSET&>(*this).fv().Text();
    }
    return "";
}
