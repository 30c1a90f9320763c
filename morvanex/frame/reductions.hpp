#pragma once
// Reductions over a set, called by the generated members Sigma<n>, Prod<n>, Max<n>, Min<n> and
// UnionFn<n> in place of the sums, products, maxima, minima and set unions of the model source.
//
// Each walks the set in its order with an iterator and calls the term with that iterator, so a
// term reads arrays indexed by the same set by position, without lookups:
//     double Sigma3() { return vx_reduce::Sigma(m_componentList.v(), [&](const VX_StringSetIter& i) {
//                                                   return X(i).v() * MW(i).v(); }); }
// Iterators of enclosing indices are captured by the term. Terms read values with v() where the
// reduction serves set-up code and with fv() where it serves residuals. The walk itself does no
// allocation and no lookups.
#include <memory>
#include <type_traits>
#include <utility>

#include "runtime/runtime.hpp"

namespace vx_reduce {

// Starting values: the most negative and the most positive finite double.
inline constexpr double kMaxStart = -1.7976931348623157e308;
inline constexpr double kMinStart = 1.7976931348623157e308;

inline VX_IntegerSetIter IterOver(const VX_INTEGERSET& s) { return VX_IntegerSetIter(s); }
inline VX_IntegerSetIter IterOver(const VX_IntSetValue& s) { return VX_IntegerSetIter(s); }
inline VX_StringSetIter IterOver(const VX_STRINGSET& s) { return VX_StringSetIter(s); }
inline VX_StringSetIter IterOver(const VX_StrSetValue& s) { return VX_StringSetIter(s); }

// Sum of the terms in set order; 0.0 over an empty set.
template <class Set, class Term>
double Sigma(const Set& set, Term&& term) {
    double result = 0.0;
    auto it = IterOver(set);
    while (it.Next()) result += term(it);
    return result;
}

// Product of the terms in set order; 1.0 over an empty set.
template <class Set, class Term>
double Prod(const Set& set, Term&& term) {
    double result = 1.0;
    auto it = IterOver(set);
    while (it.Next()) result *= term(it);
    return result;
}

namespace detail {
// Position (in set order, from 0) of the first term that is better than all before it and
// not beaten by any after it; -1 over an empty set.
template <class Set, class Term, class Better>
int FirstExtremum(const Set& set, Term&& term, Better better) {
    int best = -1;
    double value = 0.0;
    auto it = IterOver(set);
    while (it.Next()) {
        const double t = term(it);
        if (best < 0 || better(t, value)) {
            best = it.Position();
            value = t;
        }
    }
    return best;
}
}  // namespace detail

// Max(k, set, term):
//  k == -1: the largest term; it starts at kMaxStart, so over an empty set it is kMaxStart.
//  k >= 0:  the selector of the maximum, that is its derivative with respect to the term at
//           position k (in set order, from 0): 1.0 when that term is the maximum (the first one
//           in set order on ties, so exactly one term is selected), 0.0 otherwise, and 0.0 when
//           k lies outside the set (over an empty set always 0.0).
// Other negative k select nothing and give 0.0.
template <class Set, class Term>
double Max(int k, const Set& set, Term&& term) {
    if (k == -1) {
        double result = kMaxStart;
        auto it = IterOver(set);
        while (it.Next()) {
            const double t = term(it);
            if (t > result) result = t;
        }
        return result;
    }
    if (k < 0) return 0.0;
    return detail::FirstExtremum(set, term, [](double t, double best) { return t > best; }) == k ? 1.0 : 0.0;
}

// Min(k, set, term): the mirror image of Max. k == -1 gives the smallest term, starting at
// kMinStart (so kMinStart over an empty set); k >= 0 gives 1.0 when the term at position k is
// the (first) minimum and 0.0 otherwise.
template <class Set, class Term>
double Min(int k, const Set& set, Term&& term) {
    if (k == -1) {
        double result = kMinStart;
        auto it = IterOver(set);
        while (it.Next()) {
            const double t = term(it);
            if (t < result) result = t;
        }
        return result;
    }
    if (k < 0) return 0.0;
    return detail::FirstExtremum(set, term, [](double t, double best) { return t < best; }) == k ? 1.0 : 0.0;
}

namespace detail {
inline const VX_IntSetData& DataOf(const VX_IntSetValue& s) { return s.Data(); }
inline const VX_IntSetData& DataOf(const VX_INTEGERSET& s) { return s.fv(); }
inline const VX_StrSetData& DataOf(const VX_StrSetValue& s) { return s.Data(); }
inline const VX_StrSetData& DataOf(const VX_STRINGSET& s) { return s.fv(); }
inline void AddAll(VX_IntSetData& to, const VX_IntSetData& from) {
    for (const auto& [low, high] : from.Ranges()) to.AddRange(low, high);
}
inline void AddAll(VX_StrSetData& to, const VX_StrSetData& from) {
    for (const auto& m : from.Members()) to.Add(m);
}
}  // namespace detail

// The union of two sets. Integer sets come out ascending; string sets keep the members of a
// first, then the new members of b, each in its order (members compared without regard to case).
inline VX_IntSetValue Union(const VX_IntSetValue& a, const VX_IntSetValue& b) {
    auto data = std::make_shared<VX_IntSetData>(a.Data());
    detail::AddAll(*data, b.Data());
    return VX_IntSetValue(std::shared_ptr<const VX_IntSetData>(std::move(data)));
}
inline VX_StrSetValue Union(const VX_StrSetValue& a, const VX_StrSetValue& b) {
    auto data = std::make_shared<VX_StrSetData>(a.Data());
    detail::AddAll(*data, b.Data());
    return VX_StrSetValue(std::shared_ptr<const VX_StrSetData>(std::move(data)));
}

// UnionFn(set, term): the union of the sets the term gives for each element, in set order (the
// same ordering rules as Union); the empty set over an empty set. The term returns a set value
// or a set property; the result is a set value of the same kind, ready for a set assignment.
template <class Set, class Term>
auto UnionFn(const Set& set, Term&& term) {
    using Part = std::decay_t<decltype(term(std::declval<decltype(IterOver(set))&>()))>;
    constexpr bool kIntegers = std::is_same_v<Part, VX_IntSetValue> || std::is_same_v<Part, VX_INTEGERSET>;
    using Data = std::conditional_t<kIntegers, VX_IntSetData, VX_StrSetData>;
    using Result = std::conditional_t<kIntegers, VX_IntSetValue, VX_StrSetValue>;
    auto data = std::make_shared<Data>();
    auto it = IterOver(set);
    while (it.Next()) detail::AddAll(*data, detail::DataOf(term(it)));
    return Result(std::shared_ptr<const Data>(std::move(data)));
}

}  // namespace vx_reduce
