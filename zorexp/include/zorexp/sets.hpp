#pragma once
// Set properties (integer and string) and the iterators that walk them in set order.
#include <vector>

#include "zorexp/varparam.hpp"

// Something sized over a set (an array) that must follow when the set's value changes.
class VX_SetDependent {
public:
    virtual void IndexSetChanged() = 0;
    virtual void IndexSetDestroyed() = 0;

protected:
    ~VX_SetDependent() = default;
};

class VX_Set : public VX_VarParam {
public:
    ~VX_Set() override;
    // Arrays sized over this set register here and are re-sized whenever its value changes.
    void AddDependent(VX_SetDependent* d) const;
    void RemoveDependent(VX_SetDependent* d) const;
    void NotifyDependents() const;

protected:
    using VX_VarParam::VX_VarParam;
    VX_Set(const VX_Set& o) : VX_VarParam(o) {}   // dependents belong to the original
    VX_Set& operator=(const VX_Set& o) { VX_VarParam::operator=(o); return *this; }

private:
    mutable std::vector<VX_SetDependent*> m_dependents;
};

class VX_INTEGERSET : public VX_Set {
public:
    explicit VX_INTEGERSET(bool = true) : VX_Set(IntegerSet), m_data(Empty()) {}
    VX_INTEGERSET(const VX_INTEGERSET&) = default;
    VX_INTEGERSET& operator=(const VX_INTEGERSET& o);
    VX_INTEGERSET& operator*() { return *this; }
    VX_IntSetValue v() const { RecordRead(); return VX_IntSetValue(m_data); }
    const VX_IntSetData& fv() const { return *m_data; }
    const std::shared_ptr<const VX_IntSetData>& Shared() const { return m_data; }

private:
    static std::shared_ptr<const VX_IntSetData> Empty();
    std::shared_ptr<const VX_IntSetData> m_data;
    friend class VX_VarParam;
};

class VX_STRINGSET : public VX_Set {
public:
    explicit VX_STRINGSET(bool = true) : VX_Set(StringSet), m_data(Empty()) {}
    VX_STRINGSET(const VX_STRINGSET&) = default;
    VX_STRINGSET& operator=(const VX_STRINGSET& o);
    VX_STRINGSET& operator*() { return *this; }
    VX_StrSetValue v() const { RecordRead(); return VX_StrSetValue(m_data); }
    const VX_StrSetData& fv() const { return *m_data; }
    const std::shared_ptr<const VX_StrSetData>& Shared() const { return m_data; }
    // Sets the members directly (component lists are filled by the runtime, not assigned).
    void SetMembers(std::shared_ptr<const VX_StrSetData> data) { m_data = std::move(data); NotifyDependents(); }

private:
    static std::shared_ptr<const VX_StrSetData> Empty();
    std::shared_ptr<const VX_StrSetData> m_data;
    friend class VX_VarParam;
};

// Iteration over a set in its order. Next() moves to the next element and is false once the
// set is exhausted; the first call moves to the first element.
class VX_SetIter {
public:
    bool Next() { return ++m_pos < m_count; }
    void Reset() { m_pos = -1; }
    int Elements() const { return static_cast<int>(m_count); }
    // Position of the current element in set order (0-based).
    int Position() const { return static_cast<int>(m_pos); }

protected:
    explicit VX_SetIter(std::size_t count) : m_count(static_cast<std::ptrdiff_t>(count)) {}
    std::ptrdiff_t m_pos = -1;
    std::ptrdiff_t m_count;
};

class VX_IntegerSetIter : public VX_SetIter {
public:
    explicit VX_IntegerSetIter(const VX_IntSetValue& set) : VX_IntegerSetIter(set.Shared()) {}
    explicit VX_IntegerSetIter(const VX_INTEGERSET& set) : VX_IntegerSetIter(set.Shared()) {}
    explicit VX_IntegerSetIter(std::shared_ptr<const VX_IntSetData> data)
        : VX_SetIter(data->Size()), m_data(std::move(data)) {}

    bool Next() {
        if (!VX_SetIter::Next()) return false;
        if (m_current < m_rangeHigh) { ++m_current; return true; }
        const auto& r = m_data->Ranges()[static_cast<std::size_t>(++m_range)];
        m_current = r.first;
        m_rangeHigh = r.second;
        return true;
    }
    void Reset() { VX_SetIter::Reset(); m_range = -1; m_current = 0; m_rangeHigh = -1; }
    int Integer() const { return m_current; }
    int v() const { return m_current; }
    int fv() const { return m_current; }
    const VX_IntSetData& Set() const { return *m_data; }

private:
    std::shared_ptr<const VX_IntSetData> m_data;
    std::ptrdiff_t m_range = -1;
    int m_current = 0;
    int m_rangeHigh = -1;
};

class VX_StringSetIter : public VX_SetIter {
public:
    explicit VX_StringSetIter(const VX_StrSetValue& set) : VX_StringSetIter(set.Shared()) {}
    explicit VX_StringSetIter(const VX_STRINGSET& set) : VX_StringSetIter(set.Shared()) {}
    explicit VX_StringSetIter(std::shared_ptr<const VX_StrSetData> data)
        : VX_SetIter(data->Size()), m_data(std::move(data)) {}
    const char* String() const { return m_data->At(static_cast<std::size_t>(m_pos)).c_str(); }
    const char* v() const { return String(); }
    const char* fv() const { return String(); }
    const VX_StrSetData& Set() const { return *m_data; }

private:
    std::shared_ptr<const VX_StrSetData> m_data;
};
