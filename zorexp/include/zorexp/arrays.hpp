#pragma once
// Arrays: families of properties indexed by one integer set (VX_BASE_I) or one string set
// (VX_BASE_S). Elements are made by NewElement, which the generated array template provides,
// and are owned by the array. Re-dimensioning keeps the elements whose index survives.
#include <memory>
#include <string>
#include <vector>

#include "zorexp/sets.hpp"
#include "zorexp/type.hpp"

class VX_Matrix : public VX_Type, public VX_SetDependent {
public:
    ~VX_Matrix() override;
    bool IsAnArray() const override { return true; }
    // Every array answers to the matrix container id.
    bool ContainerDerivesFrom(const char* id) const override;
    // Makes one element (with its properties constructed); the array takes ownership.
    virtual VX_Type* NewElement() = 0;
    // Creates the elements for all members of the current index set.
    virtual void NewElements();
    // Creates one element named by its index text, when the index is a member of the set.
    virtual VX_Type* CreateMissingArrayElement(const char* indexText) = 0;
    // Index text of the element at a position ("0", "A", "A,1").
    virtual std::string IndexText(int position) const = 0;

    int Size() const { return static_cast<int>(m_elements.size()); }

    // Positional access for generated equations: the position of an index along one dimension
    // (-1 when it is not a member), the flat distance between neighbours along it, and the set
    // data it runs over (to check that a loop walks the dimension in the same order).
    virtual std::ptrdiff_t PositionOf(int dim, int index) const = 0;
    virtual std::ptrdiff_t PositionOfText(int dim, const char* index) const = 0;
    virtual std::ptrdiff_t Stride(int) const { return 1; }
    virtual int DimSize(int) const { return Size(); }
    virtual const void* DimSet(int dim) const = 0;
    // Values of an array of variables, side by side in set order (null for other arrays).
    const double* Values() const { return m_values.get(); }
    VX_Type* At(int position) const { return m_elements[static_cast<std::size_t>(position)]; }
    int Dimensions() const override { return 1; }

protected:
    VX_Matrix() = default;
    VX_Matrix(const VX_Matrix&) = delete;
    VX_Matrix& operator=(const VX_Matrix&) = delete;
    VX_Type* Adopt(VX_Type* element, int position);
    void ClearElements();
    // Gives every variable element its slot in a value vector in set order.
    void BindValues();
    // The element at a position, made when missing.
    VX_Type* ElementAt(std::size_t position);
    // Re-sizes over next, keeping the elements whose index survives (Data is the index set's
    // data type). Returns false when next has the same members as current.
    template <class Data>
    bool Reindex(std::shared_ptr<const Data>& current, std::shared_ptr<const Data> next);
    std::unique_ptr<double[]> m_values;   // slots of the elements' values, when they are variables
    // Follows the index set given to SetDim: re-sized whenever that set's value changes.
    void Follow(const VX_Set* set);
    void IndexSetDestroyed() override { m_source = nullptr; }
    const VX_Set* m_source = nullptr;

    std::vector<VX_Type*> m_elements;  // in set order; null where not created
};

class VX_BASE_I : public VX_Matrix {
public:
    // Sizes the array over an integer set.
    // Sizes the array over an integer set and follows later changes of the set.
    void SetDim(const VX_INTEGERSET& set) { Follow(&set); Resize(set.Shared()); }
    // Sizes the array over a fixed set value.
    void SetDim(std::shared_ptr<const VX_IntSetData> set) { Follow(nullptr); Resize(std::move(set)); }
    void IndexSetChanged() override { if (m_source) Resize(static_cast<const VX_INTEGERSET*>(m_source)->Shared()); }
    VX_Type* CreateMissingArrayElement(const char* indexText) override;
    std::string IndexText(int position) const override;
    std::ptrdiff_t PositionOf(int, int index) const override {
        if (m_contiguous) {
            const long off = static_cast<long>(index) - m_low;
            return (off >= 0 && off < static_cast<long>(m_elements.size())) ? off : -1;
        }
        auto p = m_set->PositionOf(index);
        return p ? static_cast<std::ptrdiff_t>(*p) : -1;
    }
    std::ptrdiff_t PositionOfText(int dim, const char* index) const override;
    const void* DimSet(int) const override { return m_set.get(); }

    // Element for an index; null when the index is not in the set.
    VX_Type* Find(int index) const {
        if (m_contiguous) {
            const long off = static_cast<long>(index) - m_low;
            return (off >= 0 && off < static_cast<long>(m_elements.size())) ? m_elements[static_cast<std::size_t>(off)] : nullptr;
        }
        return FindSlow(index);
    }
    const VX_IntSetData& IndexSet() const { return *m_set; }

    // The value vector of an array of variables sized over set, in the set's order, for
    // equations that run over that same set. Throws std::logic_error when the array is not
    // sized over that set object or holds no variables (a model inconsistent with itself).
    const double* ValuesOver(const VX_INTEGERSET& set) const {
        if (m_set.get() == &set.fv() && (m_values || m_elements.empty())) return m_values.get();
        ThrowNotOver(set);
    }

    // Fast value of the variable element for an index: no lookup, no pointer chase.
    double fv(int index) const {
        if (m_contiguous && m_values) {
            const long off = static_cast<long>(index) - m_low;
            if (off >= 0 && off < static_cast<long>(m_elements.size())) return m_values[static_cast<std::size_t>(off)];
        }
        return ValueSlow(index);
    }

protected:
    VX_BASE_I() : m_set(std::make_shared<VX_IntSetData>()) {}
    // Element for an index, or a std::out_of_range naming the array and index.
    VX_Type& Get(int index) const {
        VX_Type* e = Find(index);
        if (!e) ThrowMissing(index);
        return *e;
    }

private:
    void Resize(std::shared_ptr<const VX_IntSetData> set);
    VX_Type* FindSlow(int index) const;
    double ValueSlow(int index) const;
    [[noreturn]] void ThrowNotOver(const VX_INTEGERSET& set) const;
    [[noreturn]] void ThrowMissing(int index) const;
    std::shared_ptr<const VX_IntSetData> m_set;
    bool m_contiguous = true;
    int m_low = 0;
};

class VX_BASE_S : public VX_Matrix {
public:
    void SetDim(const VX_STRINGSET& set) { Follow(&set); Resize(set.Shared()); }
    void SetDim(const VX_StrSetValue& set) { Follow(nullptr); Resize(set.Shared()); }
    void SetDim(std::shared_ptr<const VX_StrSetData> set) { Follow(nullptr); Resize(std::move(set)); }
    void IndexSetChanged() override { if (m_source) Resize(static_cast<const VX_STRINGSET*>(m_source)->Shared()); }
    VX_Type* CreateMissingArrayElement(const char* indexText) override;
    std::string IndexText(int position) const override;
    std::ptrdiff_t PositionOf(int dim, int index) const override;
    std::ptrdiff_t PositionOfText(int, const char* index) const override {
        auto p = index ? m_set->PositionOf(index) : std::nullopt;
        return p ? static_cast<std::ptrdiff_t>(*p) : -1;
    }
    const void* DimSet(int) const override { return m_set.get(); }

    // Element for an index text (compared without regard to case); null when absent.
    VX_Type* Find(const char* index) const;
    // Element at an iterator's position when the iterator walks this array's set: no lookup.
    VX_Type* FindAt(int position) const {
        return (position >= 0 && position < Size()) ? m_elements[static_cast<std::size_t>(position)] : nullptr;
    }
    const VX_StrSetData& IndexSet() const { return *m_set; }
    // Fast value of the variable element at an iterator's position over this array's set.
    double fv(const VX_StringSetIter& it) const {
        if (m_values && &it.Set() == m_set.get()) return m_values[static_cast<std::size_t>(it.Position())];
        return ValueOf(GetAt(it));
    }

protected:
    VX_BASE_S() : m_set(std::make_shared<VX_StrSetData>()) {}
    VX_Type& Get(const char* index) const;
    VX_Type& GetAt(const VX_StringSetIter& it) const;
    static double ValueOf(const VX_Type& element);

private:
    void Resize(std::shared_ptr<const VX_StrSetData> set);
    std::shared_ptr<const VX_StrSetData> m_set;
};

// Checks, for generated equations that read an array by the position of a loop over a set,
// that the array's dimension runs over that very set; throws std::logic_error otherwise.
void VX_CheckIndexedBy(const VX_Matrix& array, int dim, const VX_IntSetData& set);
void VX_CheckIndexedBy(const VX_Matrix& array, int dim, const VX_StrSetData& set);
// Throws the std::out_of_range that names an array and an index it does not have.
[[noreturn]] void VX_ThrowMissingElement(const VX_Matrix& array, const char* index);
