#pragma once
// VX_VarParam: common ground of variables, parameters and sets: what kind of value it holds,
// who last assigned each attribute, and access to its attributes as properties.
#include <cstdint>

#include "zorexp/type.hpp"
#include "zorexp/value.hpp"

// Attributes of variables and parameters that can be addressed as properties. The last three
// are logical flags of variables: RECORD (keep a history), ISMATCHED (a connection matches the
// variable with one of another port) and ISCONNECTED (the variable is connected).
enum VX_Attr : std::uint8_t {
    VX_ATTR_VALUE = 0, VX_ATTR_SPEC = 1, VX_ATTR_LOWER = 2, VX_ATTR_UPPER = 3,
    VX_ATTR_RECORD = 4, VX_ATTR_ISMATCHED = 5, VX_ATTR_ISCONNECTED = 6, VX_ATTR_COUNT = 7
};
// "VALUE", "SPEC", ...; the attribute of a name compared without regard to case (VX_ATTR_COUNT
// when the name is none).
const char* VX_AttrName(VX_Attr a);
VX_Attr VX_AttrFromName(const char* name);

// Who set an attribute last.
enum VX_Source : std::uint8_t { VX_SRC_DEFAULT = 0, VX_SRC_MODEL = 1, VX_SRC_USER = 2 };

class VX_VarParam;

// Handle to one attribute of a variable or parameter; the target of assignments.
class VX_VarParamProp {
public:
    VX_VarParamProp(VX_VarParam& target, VX_Attr attr) : m_target(&target), m_attr(attr) {}
    // Assigns the value under the precedence rules: a user value is never overwritten by a
    // model assignment; among model assignments a higher or equal level replaces a lower one.
    // A value of the wrong kind, outside a valid set or below an integer lower bound is refused
    // and the attribute keeps its previous value. Throws only VX_SizeLimitError, when a set's
    // new value would size its arrays beyond the session's limit of array elements.
    VX_AssignStatus Assign(const VX_Value* value) const;
    // Sets the current value without recording an assignment (used by solvers).
    VX_HRESULT SetCurrentValue(const VX_Value* value) const;
    // True while the attribute holds its type's default (nobody assigned it).
    bool IsDefaultAssignment() const;
    VX_VarParam& Target() const { return *m_target; }
    VX_Attr Attr() const { return m_attr; }

private:
    VX_VarParam* m_target;
    VX_Attr m_attr;
};
using VX_RealVarParamProp = VX_VarParamProp;
using VX_LogicalVarParamProp = VX_VarParamProp;
using VX_SpecVarParamProp = VX_VarParamProp;
using VX_SetVarParamProp = VX_VarParamProp;

class VX_VarParam : public VX_Type {
public:
    enum Kind : std::uint8_t { RealVariable, IntegerParameter, RealParameter, StringParameter,
                               LogicalParameter, IntegerSet, StringSet };

    Kind GetKind() const { return m_kind; }
    const char* KindName() const;

    VX_VarParamProp VALUE() { return {*this, VX_ATTR_VALUE}; }
    VX_VarParamProp LOWER() { return {*this, VX_ATTR_LOWER}; }
    VX_VarParamProp UPPER() { return {*this, VX_ATTR_UPPER}; }
    VX_VarParamProp RECORD() { return {*this, VX_ATTR_RECORD}; }
    VX_VarParamProp ISMATCHED() { return {*this, VX_ATTR_ISMATCHED}; }
    VX_VarParamProp ISCONNECTED() { return {*this, VX_ATTR_ISCONNECTED}; }
    // The current value of a logical attribute (RECORD, ISMATCHED, ISCONNECTED).
    bool Flag(VX_Attr a) const { return a >= VX_ATTR_RECORD && a < VX_ATTR_COUNT && (m_attrFlags >> (a - VX_ATTR_RECORD)) & 1u; }
    // Sets the value a property starts with, in place of its type's default; it stays a default
    // (any assignment replaces it). Refused values leave the property as it is.
    VX_HRESULT SetDefault(const VX_Value& value);
    // The real value a solver or a finite-difference check moves: the value of a real variable or
    // real parameter; null for other properties.
    double* RealSlot();
    // Assigns the VALUE attribute (the form generated assignments use).
    VX_AssignStatus Assign(const VX_Value* value) { return VALUE().Assign(value); }
    // Assigns as the user: checked, recorded as a user value. On refusal, *why says why; a set
    // of more members than the session's limit of array elements is refused too.
    VX_AssignStatus AssignUser(VX_Attr attr, const VX_Value& value, std::string* why = nullptr);
    // Drops a user assignment so that model assignments apply again.
    VX_HRESULT RetractNonModelAssignment() override;

    VX_Source SourceOf(VX_Attr a) const { return static_cast<VX_Source>((m_sources >> (2 * a)) & 3u); }
    // Solver column of a real variable or real parameter that appears in an equation (-1: none).
    int Column() const { return m_column; }
    void SetColumn(int c) { m_column = c; }
    int LevelOf(VX_Attr a) const { return m_levels[a]; }

    // A named extra property of this parameter (such as "VALID"), made on first use from its
    // default value. Lives as long as the parameter.
    VX_VarParam& GetProperty(const char* name, const VX_Value* defaultValue, int flags);
    bool HasExtraProperties() const { return (m_flags & kHasExtras) != 0; }

    VX_Type* FindProperty(const char* name) const override;
    VX_Type* FindPropertyById(int id) const override;
    bool PropertyNameToId(const char* name, int& id) const override;
    bool HasValue() const override { return true; }
    bool IsValue() const override { return true; }

    // Current value as text, for listings; attribute values as VX_Value for inspection.
    std::string ValueText() const;
    // Why a value would be refused (empty when acceptable); used by Assign and by hosts.
    std::string CheckValue(VX_Attr attr, const VX_Value& value) const;

protected:
    explicit VX_VarParam(Kind kind) : m_kind(kind) {}
    // Copies carry the value's provenance, never the solver column or extra properties.
    VX_VarParam(const VX_VarParam& o)
        : VX_Type(o), m_kind(o.m_kind), m_spec(o.m_spec), m_attrFlags(o.m_attrFlags), m_sources(o.m_sources) {
        for (int a = 0; a < VX_ATTR_COUNT; ++a) m_levels[a] = o.m_levels[a];
    }
    VX_VarParam& operator=(const VX_VarParam& o);
    ~VX_VarParam() override;

    void SetSource(VX_Attr a, VX_Source s, int level) {
        m_sources = static_cast<std::uint16_t>((m_sources & ~(3u << (2 * a))) | (static_cast<unsigned>(s) << (2 * a)));
        m_levels[a] = static_cast<std::int16_t>(level);
    }
    // Stores an already checked value into the attribute.
    void Store(VX_Attr attr, const VX_Value& value);
    // Dependency recording of v(): tells the session that this value was read during set-up.
    void RecordRead() const;

    static constexpr std::uint8_t kHasExtras = 1;

    // Packed without holes (48 bytes with the base), so that a variable takes 80 bytes: every
    // element of an array of variables is one of these objects.
    Kind m_kind;
    std::uint8_t m_flags = 0;
    std::int8_t m_spec = VX_SPEC_FREE;  // used by variables
    std::uint8_t m_attrFlags = 0;       // RECORD, ISMATCHED, ISCONNECTED, one bit each
    std::uint16_t m_sources = 0;        // 2 bits per attribute: VX_Source
    std::int16_t m_levels[VX_ATTR_COUNT] = {};
    std::int32_t m_column = -1;         // solver column of a real variable or parameter, -1 until numbered

    friend class VX_VarParamProp;
};
