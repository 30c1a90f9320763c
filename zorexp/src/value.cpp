#include "zorexp/value.hpp"

#include <cstdio>
#include <cstdlib>

namespace {
const VX_IntSetData& EmptyIntSet() { static const VX_IntSetData s; return s; }
const VX_StrSetData& EmptyStrSet() { static const VX_StrSetData s; return s; }
}  // namespace

VX_Value::VX_Value(const SUValue& v, int context, int level, int ordinal) {
    switch (v.ValueType()) {
    case SUValue::VT_Integer: m_kind = Integer; m_int = v.Integer(); break;
    case SUValue::VT_Real: m_kind = Real; m_real = std::atof(v.String()); break;
    case SUValue::VT_Text: m_kind = Text; m_text = v.String(); break;
    case SUValue::VT_Empty: m_kind = Empty; break;
    }
    Stamp(context, level, ordinal);
}

const char* VX_Value::KindName() const {
    switch (m_kind) {
    case Empty: return "empty";
    case Real: return "real";
    case Integer: return "integer";
    case Logical: return "logical";
    case Text: return "text";
    case IntegerSet: return "integer set";
    case StringSet: return "string set";
    case Spec: return "spec";
    }
    return "unknown";
}

const VX_IntSetData& VX_Value::IntSet() const { return m_intSet ? *m_intSet : EmptyIntSet(); }
const VX_StrSetData& VX_Value::StrSet() const { return m_strSet ? *m_strSet : EmptyStrSet(); }

void VX_Value::ResetValue() {
    m_kind = Empty;
    m_real = 0.0;
    m_int = 0;
    m_text.clear();
    m_intSet.reset();
    m_strSet.reset();
}

std::string VX_Value::ToString() const {
    char buf[32];
    switch (m_kind) {
    case Empty: return "";
    case Real: std::snprintf(buf, sizeof buf, "%.10g", m_real); return buf;
    case Integer: return std::to_string(m_int);
    case Logical: return m_int ? "true" : "false";
    case Text: return m_text;
    case IntegerSet: return IntSet().Text();
    case StringSet: return StrSet().Text();
    case Spec: { const char* t = VX_SpecText(m_int); return t ? t : std::to_string(m_int); }
    }
    return "";
}
