#pragma once
// Array bases over several index sets, one set per index, each an integer set or a string set
// (VX_BASE_II ... VX_BASE_SISS, listed in multi_index_kinds.def).
//
// The elements live in one flat vector in row-major order: the last index varies fastest, so
// the elements of COEF over {A, B} x {1, 2} come as COEF(A,1), COEF(A,2), COEF(B,1), COEF(B,2).
// An element is found from the positions of its indices. The position of an integer index in a
// contiguous range is a subtraction, and the position of an iterator that walks the array's own
// set is the iterator's position, so neither costs a lookup; a text index costs one hash lookup.
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "zorexp/arrays.hpp"

// Kind of one index: I for an integer set, S for a string set.
enum class VX_IndexKind : unsigned char { I, S };

// What all multi-index bases share; the typed front (VX_BASE_MULTI) adds SetDim and Find with
// one argument per index. An index sized over a set property follows that set: the array is
// re-sized whenever the set's value changes.
class VX_MultiIndexBase : public VX_Matrix {
public:
    ~VX_MultiIndexBase() override;
    int Dimensions() const override { return static_cast<int>(m_dims.size()); }
    // Re-sizes the array over the current values of the sets it follows.
    void IndexSetChanged() override;
    void NewElements() override;
    // Creates the element named by its index text, indices separated by commas ("A,1"); null
    // when the text does not name a member of every set.
    VX_Type* CreateMissingArrayElement(const char* indexText) override;
    // "A,1": the indices of the element at a position, joined by commas.
    std::string IndexText(int position) const override;

    VX_IndexKind KindOf(std::size_t dim) const { return m_dims.at(dim).kind; }
    std::ptrdiff_t PositionOf(int dim, int index) const override {
        return m_dims[static_cast<std::size_t>(dim)].kind == VX_IndexKind::I ? PositionIn(static_cast<std::size_t>(dim), index) : -1;
    }
    std::ptrdiff_t PositionOfText(int dim, const char* index) const override;
    std::ptrdiff_t Stride(int dim) const override { return m_dims[static_cast<std::size_t>(dim)].stride; }
    int DimSize(int dim) const override { return static_cast<int>(m_dims[static_cast<std::size_t>(dim)].size); }
    const void* DimSet(int dim) const override {
        const Dim& d = m_dims[static_cast<std::size_t>(dim)];
        return d.kind == VX_IndexKind::I ? static_cast<const void*>(d.ints.get()) : static_cast<const void*>(d.strs.get());
    }
    // The set of one index; std::invalid_argument when the index is of the other kind.
    const VX_IntSetData& IntegerIndexSet(std::size_t dim) const;
    const VX_StrSetData& StringIndexSet(std::size_t dim) const;
    // Sizes this array over the sets of another array of the same kinds, as fixed set values.
    void SetDimLike(const VX_MultiIndexBase& other);
    // True when both arrays have the same members in the same order in every index.
    bool HasSetsOf(const VX_MultiIndexBase& other) const;

    // Position of an index along one dimension; -1 when the index is not a member.
    std::ptrdiff_t PositionIn(std::size_t dim, int index) const {
        const Dim& d = m_dims[dim];
        if (d.contiguous) {
            const long long off = static_cast<long long>(index) - d.low;
            return (off >= 0 && off < d.size) ? static_cast<std::ptrdiff_t>(off) : -1;
        }
        return SlowPosition(dim, index);
    }
    std::ptrdiff_t PositionIn(std::size_t dim, const char* index) const;
    std::ptrdiff_t PositionIn(std::size_t dim, const std::string& index) const { return PositionIn(dim, index.c_str()); }
    std::ptrdiff_t PositionIn(std::size_t dim, const VX_IntegerSetIter& it) const {
        if (&it.Set() == m_dims[dim].ints.get()) return it.Position();
        return PositionIn(dim, it.Integer());
    }
    std::ptrdiff_t PositionIn(std::size_t dim, const VX_StringSetIter& it) const {
        if (&it.Set() == m_dims[dim].strs.get()) return it.Position();
        return PositionIn(dim, it.String());
    }

protected:
    struct Dim {
        VX_IndexKind kind = VX_IndexKind::I;
        std::shared_ptr<const VX_IntSetData> ints;   // the set of an integer index
        std::shared_ptr<const VX_StrSetData> strs;   // the set of a string index
        bool contiguous = false;                     // one integer range (or none): position by subtraction
        int low = 0;
        std::ptrdiff_t size = 0;
        std::ptrdiff_t stride = 1;                   // flat distance between neighbours along this index
    };

    explicit VX_MultiIndexBase(std::initializer_list<VX_IndexKind> kinds);
    static Dim IntegerDim(std::shared_ptr<const VX_IntSetData> set);
    static Dim StringDim(std::shared_ptr<const VX_StrSetData> set);
    // Sizes the array over new sets (of the same kinds, in order). Elements whose indices are
    // all still members keep their values; the others are destroyed; missing ones are made.
    void Redimension(std::vector<Dim> dims);
    // The set property each index follows from now on (null: none, the index set is fixed).
    void FollowSets(const std::vector<const VX_Set*>& sources);
    static const VX_Set* SourceOf(const VX_INTEGERSET& s) { return &s; }
    static const VX_Set* SourceOf(const VX_STRINGSET& s) { return &s; }
    template <class Fixed>
    static const VX_Set* SourceOf(const Fixed&) { return nullptr; }
    VX_Type* ElementAtFlat(std::ptrdiff_t flat) const { return m_elements[static_cast<std::size_t>(flat)]; }
    [[noreturn]] void ThrowMissing(const std::string& indexText) const;

    std::vector<Dim> m_dims;

private:
    // Follows the set property of one index for the array that owns it.
    class SetFollower final : public VX_SetDependent {
    public:
        explicit SetFollower(VX_MultiIndexBase& owner) : m_owner(owner) {}
        ~SetFollower() { Follow(nullptr); }
        SetFollower(const SetFollower&) = delete;
        SetFollower& operator=(const SetFollower&) = delete;
        void Follow(const VX_Set* set);
        const VX_Set* Source() const { return m_source; }
        void IndexSetChanged() override { m_owner.IndexSetChanged(); }
        void IndexSetDestroyed() override { m_source = nullptr; }

    private:
        VX_MultiIndexBase& m_owner;
        const VX_Set* m_source = nullptr;
    };

    std::ptrdiff_t SlowPosition(std::size_t dim, int index) const;
    std::vector<std::unique_ptr<SetFollower>> m_followers;   // one per index
};

namespace vx_detail {
template <class A>
inline constexpr bool kIsIntegerIndex =
    (std::is_integral_v<A> && !std::is_same_v<A, bool>) || std::is_same_v<A, VX_IntegerSetIter>;
template <class A>
inline constexpr bool kIsStringIndex = std::is_same_v<A, const char*> || std::is_same_v<A, char*> ||
                                       std::is_same_v<A, std::string> || std::is_same_v<A, VX_StringSetIter>;
template <VX_IndexKind K, class A>
inline constexpr bool kIndexFits = K == VX_IndexKind::I ? kIsIntegerIndex<std::decay_t<A>> : kIsStringIndex<std::decay_t<A>>;

inline std::string IndexTextOf(int i) { return std::to_string(i); }
inline std::string IndexTextOf(const char* s) { return s ? s : ""; }
inline std::string IndexTextOf(const std::string& s) { return s; }
inline std::string IndexTextOf(const VX_IntegerSetIter& it) { return std::to_string(it.Integer()); }
inline std::string IndexTextOf(const VX_StringSetIter& it) { return it.String(); }

inline const std::shared_ptr<const VX_IntSetData>& IntSetOf(const VX_INTEGERSET& s) { return s.Shared(); }
inline const std::shared_ptr<const VX_IntSetData>& IntSetOf(const VX_IntSetValue& s) { return s.Shared(); }
inline const std::shared_ptr<const VX_IntSetData>& IntSetOf(const std::shared_ptr<const VX_IntSetData>& s) { return s; }
inline const std::shared_ptr<const VX_StrSetData>& StrSetOf(const VX_STRINGSET& s) { return s.Shared(); }
inline const std::shared_ptr<const VX_StrSetData>& StrSetOf(const VX_StrSetValue& s) { return s.Shared(); }
inline const std::shared_ptr<const VX_StrSetData>& StrSetOf(const std::shared_ptr<const VX_StrSetData>& s) { return s; }
}  // namespace vx_detail

// The typed front of a multi-index base: K... are the kinds of the indices in order.
template <VX_IndexKind... K>
class VX_BASE_MULTI : public VX_MultiIndexBase {
public:
    static constexpr std::size_t kRank = sizeof...(K);

    // Sizes the array over one set per index (VX_INTEGERSET or VX_IntSetValue for an integer
    // index; VX_STRINGSET or VX_StrSetValue, such as a component list, for a string index).
    // A set property (VX_INTEGERSET, VX_STRINGSET) is followed; a set value is taken as it is.
    template <class... Sets>
    void SetDim(const Sets&... sets) {
        static_assert(sizeof...(Sets) == kRank, "SetDim takes one set per index");
        std::vector<Dim> dims;
        dims.reserve(kRank);
        (dims.push_back(MakeDim<K>(sets)), ...);
        Redimension(std::move(dims));
        FollowSets({SourceOf(sets)...});
    }

    // Element for one index per dimension (an integer, a text or an iterator, of the index's
    // kind); null when an index is not a member of its set.
    template <class... A>
    VX_Type* Find(const A&... index) const {
        static_assert(sizeof...(A) == kRank, "Find takes one index per dimension");
        static_assert((vx_detail::kIndexFits<K, A> && ...), "index of the wrong kind (integer or text) for its dimension");
        return FindFlat(std::index_sequence_for<A...>{}, index...);
    }

protected:
    VX_BASE_MULTI() : VX_MultiIndexBase({K...}) {}
    // Element for the indices, or a std::out_of_range naming the array and the indices.
    template <class... A>
    VX_Type& Get(const A&... index) const {
        if (VX_Type* e = Find(index...)) return *e;
        std::string text;
        ((text += (text.empty() ? "" : ",") + vx_detail::IndexTextOf(index)), ...);
        ThrowMissing(text);
    }

private:
    template <VX_IndexKind Kind, class Set>
    static Dim MakeDim(const Set& set) {
        if constexpr (Kind == VX_IndexKind::I) return IntegerDim(vx_detail::IntSetOf(set));
        else return StringDim(vx_detail::StrSetOf(set));
    }
    template <std::size_t... D, class... A>
    VX_Type* FindFlat(std::index_sequence<D...>, const A&... index) const {
        std::ptrdiff_t flat = 0;
        bool found = true;
        ((found = found && Accumulate(D, index, flat)), ...);
        return found ? ElementAtFlat(flat) : nullptr;
    }
    template <class A>
    bool Accumulate(std::size_t dim, const A& index, std::ptrdiff_t& flat) const {
        const std::ptrdiff_t p = PositionIn(dim, index);
        if (p < 0) return false;
        flat += p * m_dims[dim].stride;
        return true;
    }
};

// The named bases, one per row of multi_index_kinds.def (VX_BASE_II, VX_BASE_IS, ...).
#define VX_MULTI_INDEX(NAME, ...)                                    \
    class VX_BASE_##NAME : public VX_BASE_MULTI<VX_INDEX_KINDS(__VA_ARGS__)> { \
    protected:                                                       \
        VX_BASE_##NAME() = default;                                  \
    };
#define VX_INDEX_KIND_I VX_IndexKind::I
#define VX_INDEX_KIND_S VX_IndexKind::S
#define VX_INDEX_KINDS2(a, b) VX_INDEX_KIND_##a, VX_INDEX_KIND_##b
#define VX_INDEX_KINDS3(a, b, c) VX_INDEX_KIND_##a, VX_INDEX_KIND_##b, VX_INDEX_KIND_##c
#define VX_INDEX_KINDS4(a, b, c, d) VX_INDEX_KIND_##a, VX_INDEX_KIND_##b, VX_INDEX_KIND_##c, VX_INDEX_KIND_##d
#define VX_INDEX_KINDS_PICK(_1, _2, _3, _4, NAME, ...) NAME
#define VX_INDEX_KINDS(...) VX_INDEX_KINDS_PICK(__VA_ARGS__, VX_INDEX_KINDS4, VX_INDEX_KINDS3, VX_INDEX_KINDS2, unused)(__VA_ARGS__)
#include "stocklib/multi_index_kinds.def"
#undef VX_MULTI_INDEX
#undef VX_INDEX_KINDS
#undef VX_INDEX_KINDS_PICK
#undef VX_INDEX_KINDS4
#undef VX_INDEX_KINDS3
#undef VX_INDEX_KINDS2
#undef VX_INDEX_KIND_S
#undef VX_INDEX_KIND_I
