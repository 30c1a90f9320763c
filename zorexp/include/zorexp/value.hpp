#pragma once
// VX_Value: the runtime's value cell. It holds one datum (real, integer, logical, text,
// integer set, string set or spec) and, when it comes from an assignment, who assigned it:
// the context, the level and the ordinal of the assignment statement.
#include <memory>
#include <string>

#include "zorexp/set_value.hpp"
#include "zorexp/status.hpp"
#include "zorexp/text.hpp"

// Who makes an assignment. Models run their assignments in VX_CTX_MODEL; values that a user
// (the host) assigns carry VX_CTX_USER and are never overwritten by a model's assignments.
enum VX_AssignContext : int { VX_CTX_MODEL = 0, VX_CTX_USER = 1 };

class VX_Value {
public:
    enum Kind : int { Empty, Real, Integer, Logical, Text, IntegerSet, StringSet, Spec };

    VX_Value() = default;
    // Default values of types: datum plus a flags word (always 0 in generated code).
    VX_Value(double v, int flags) : m_kind(Real), m_real(v), m_flags(flags) {}
    VX_Value(int v, int flags) : m_kind(Integer), m_int(v), m_flags(flags) {}
    VX_Value(bool v, int flags) : m_kind(Logical), m_int(v ? 1 : 0), m_flags(flags) {}
    VX_Value(const char* v, int flags) : m_kind(Text), m_text(v ? v : ""), m_flags(flags) {}
    VX_Value(const VX_IntSetValue& v, int flags) : m_kind(IntegerSet), m_intSet(v.Shared()), m_flags(flags) {}
    VX_Value(const VX_StrSetValue& v, int flags) : m_kind(StringSet), m_strSet(v.Shared()), m_flags(flags) {}

    // Assigned values: datum, then (context, level, ordinal of the statement counted from 1).
    VX_Value(int v, int context, int level, int ordinal) : VX_Value(v, 0) { Stamp(context, level, ordinal); }
    VX_Value(double v, int context, int level, int ordinal) : VX_Value(v, 0) { Stamp(context, level, ordinal); }
    VX_Value(bool v, int context, int level, int ordinal) : VX_Value(v, 0) { Stamp(context, level, ordinal); }
    VX_Value(const char* v, int context, int level, int ordinal) : VX_Value(v, 0) { Stamp(context, level, ordinal); }
    VX_Value(const SUValue& v, int context, int level, int ordinal);
    VX_Value(const VX_IntSetValue& v, int context, int level, int ordinal) : VX_Value(v, 0) { Stamp(context, level, ordinal); }
    VX_Value(const VX_StrSetValue& v, int context, int level, int ordinal) : VX_Value(v, 0) { Stamp(context, level, ordinal); }
    VX_Value(VX_SpecType v, int context, int level, int ordinal) : m_kind(Spec), m_int(v) { Stamp(context, level, ordinal); }

    Kind GetKind() const { return m_kind; }
    const char* KindName() const;
    double RealValue() const { return m_kind == Integer ? static_cast<double>(m_int) : m_real; }
    int IntValue() const { return m_int; }
    bool LogicalValue() const { return m_int != 0; }
    const std::string& TextValue() const { return m_text; }
    const VX_IntSetData& IntSet() const;
    const VX_StrSetData& StrSet() const;
    const std::shared_ptr<const VX_IntSetData>& IntSetShared() const { return m_intSet; }
    const std::shared_ptr<const VX_StrSetData>& StrSetShared() const { return m_strSet; }
    VX_SpecType SpecValue() const { return static_cast<VX_SpecType>(m_int); }

    int Context() const { return m_context; }
    int Level() const { return m_level; }
    int Ordinal() const { return m_ordinal; }
    int Flags() const { return m_flags; }
    bool IsUserValue() const { return m_context == VX_CTX_USER; }

    // Forget the datum (back to Empty), keeping nothing of the old value.
    void ResetValue();
    // Human-readable form of the datum, for messages and listings.
    std::string ToString() const;

    // Sets who assigns the value (context, level, statement ordinal).
    void Stamp(int context, int level, int ordinal) { m_context = context; m_level = level; m_ordinal = ordinal; }

private:

    Kind m_kind = Empty;
    double m_real = 0.0;
    int m_int = 0;
    std::string m_text;
    std::shared_ptr<const VX_IntSetData> m_intSet;
    std::shared_ptr<const VX_StrSetData> m_strSet;
    int m_flags = 0;
    int m_context = VX_CTX_MODEL;
    int m_level = 0;
    int m_ordinal = 0;
};
