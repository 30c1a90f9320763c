#pragma once
// The array templates the generated classes instantiate: VX_ARRAY_I and VX_ARRAY_S over one
// integer or string set, and VX_ARRAY_II ... VX_ARRAY_SISS over several (one per row of
// stocklib/multi_index_kinds.def). The second template argument repeats the element type.
//
// Elements are made fully constructed (T with construct-properties true) and owned by the
// array. operator() returns the element for its indices; with an iterator that walks the
// array's own set it uses the iterator's position and looks nothing up.
#include <memory>
#include <string>
#include <type_traits>

#include "runtime/runtime.hpp"
#include "stocklib/multi_index_arrays.hpp"

// What every array template adds to its base: making elements of type T, and copying: element values are assigned one by one; when the sets differ
// the copy is first sized over the other array's sets, as fixed values (it follows no set
// property until sized over one again).
template <class T, class Base>
class VX_ArrayOf : public Base {
public:
    VX_Type* NewElement() override { return new T(true); }

protected:
    VX_ArrayOf() = default;
    VX_ArrayOf(const VX_ArrayOf& o) : Base() { CopyFrom(o); }
    VX_ArrayOf& operator=(const VX_ArrayOf& o) {
        if (this != &o) CopyFrom(o);
        return *this;
    }

private:
    void CopyFrom(const VX_ArrayOf& o) {
        if constexpr (std::is_base_of_v<VX_BASE_I, Base>) {
            if (!(this->IndexSet() == o.IndexSet()) || this->Size() != o.Size())
                this->SetDim(std::make_shared<const VX_IntSetData>(o.IndexSet()));
        } else if constexpr (std::is_base_of_v<VX_BASE_S, Base>) {
            if (!(this->IndexSet() == o.IndexSet()) || this->Size() != o.Size())
                this->SetDim(std::make_shared<const VX_StrSetData>(o.IndexSet()));
        } else if (!this->HasSetsOf(o)) {
            this->SetDimLike(o);
        }
        for (int k = 0; k < o.Size(); ++k) {
            VX_Type* from = o.At(k);
            VX_Type* to = this->At(k);
            if (from && to) static_cast<T&>(*to) = static_cast<const T&>(*from);
        }
    }
};

// A family of T indexed by one integer set.
template <class T, class E = T>
class VX_ARRAY_I : public VX_ArrayOf<T, VX_BASE_I> {
    static_assert(std::is_same_v<T, E>, "the second template argument repeats the element type");

public:
    explicit VX_ARRAY_I(bool = true) {}
    VX_ARRAY_I(const VX_ARRAY_I&) = default;
    VX_ARRAY_I& operator=(const VX_ARRAY_I&) = default;
    VX_ARRAY_I& operator*() { return *this; }
    const VX_ARRAY_I& operator*() const { return *this; }

    // The element for an index; std::out_of_range when the index is not in the set.
    T& operator()(int index) const { return static_cast<T&>(this->Get(index)); }
    T& operator()(const VX_IntegerSetIter& it) const {
        if (&it.Set() == &this->IndexSet())
            if (VX_Type* e = this->At(it.Position())) return static_cast<T&>(*e);
        return (*this)(it.Integer());
    }
};

// A family of T indexed by one string set (such as a component list).
template <class T, class E = T>
class VX_ARRAY_S : public VX_ArrayOf<T, VX_BASE_S> {
    static_assert(std::is_same_v<T, E>, "the second template argument repeats the element type");

public:
    explicit VX_ARRAY_S(bool = true) {}
    VX_ARRAY_S(const VX_ARRAY_S&) = default;
    VX_ARRAY_S& operator=(const VX_ARRAY_S&) = default;
    VX_ARRAY_S& operator*() { return *this; }
    const VX_ARRAY_S& operator*() const { return *this; }

    // The element for an index text (compared without regard to case); std::out_of_range when
    // the text is not in the set.
    T& operator()(const char* index) const { return static_cast<T&>(this->Get(index)); }
    T& operator()(const std::string& index) const { return (*this)(index.c_str()); }
    T& operator()(const VX_StringSetIter& it) const {
        if (&it.Set() == &this->IndexSet())
            if (VX_Type* e = this->FindAt(it.Position())) return static_cast<T&>(*e);
        return (*this)(it.String());
    }
};

// The element access shared by the multi-index arrays: one index per dimension, each an
// integer, a text or an iterator of the index's kind.
template <class T, class Base>
class VX_ArrayMulti : public VX_ArrayOf<T, Base> {
public:
    template <class... A>
    T& operator()(const A&... index) const { return static_cast<T&>(this->Get(index...)); }

protected:
    VX_ArrayMulti() = default;
    VX_ArrayMulti(const VX_ArrayMulti&) = default;
    VX_ArrayMulti& operator=(const VX_ArrayMulti&) = default;
};

#define VX_MULTI_INDEX(NAME, ...)                                                           \
    template <class T, class E = T>                                                         \
    class VX_ARRAY_##NAME : public VX_ArrayMulti<T, VX_BASE_##NAME> {                       \
        static_assert(std::is_same_v<T, E>, "the second template argument repeats the element type"); \
                                                                                            \
    public:                                                                                 \
        explicit VX_ARRAY_##NAME(bool = true) {}                                            \
        VX_ARRAY_##NAME(const VX_ARRAY_##NAME&) = default;                                  \
        VX_ARRAY_##NAME& operator=(const VX_ARRAY_##NAME&) = default;                       \
        VX_ARRAY_##NAME& operator*() { return *this; }                                      \
        const VX_ARRAY_##NAME& operator*() const { return *this; }                          \
    };
#include "stocklib/multi_index_kinds.def"
#undef VX_MULTI_INDEX
