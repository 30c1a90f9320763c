#include "zorexp/arrays.hpp"

#include <cstdlib>
#include <stdexcept>
#include <unordered_map>

#include "zorexp/references.hpp"
#include "zorexp/session.hpp"
#include "zorexp/variable.hpp"

VX_Matrix::~VX_Matrix() {
    Follow(nullptr);
    VX_Session::Current().CountElements(m_elements.size(), 0, *this);
    ClearElements();
}

template <class Data>
bool VX_Matrix::Reindex(std::shared_ptr<const Data>& current, std::shared_ptr<const Data> next) {
    if (*next == *current && m_elements.size() == next->Size()) {
        current = std::move(next);   // same members: only the set object changes
        return false;
    }
    // Refused here, before anything changes or is allocated, when the session would hold too many.
    VX_Session::Current().CountElements(m_elements.size(), next->Size(), *this);
    std::vector<VX_Type*> old;
    old.swap(m_elements);
    const auto oldSet = std::move(current);
    current = std::move(next);
    m_elements.assign(current->Size(), nullptr);
    for (std::size_t k = 0; k < old.size(); ++k) {
        if (!old[k]) continue;
        if (auto pos = current->PositionOf(oldSet->At(k))) Adopt(old[k], static_cast<int>(*pos));
        else delete old[k];
    }
    NewElements();
    return true;
}

void VX_Matrix::NewElements() {
    for (std::size_t k = 0; k < m_elements.size(); ++k)
        if (!m_elements[k]) Adopt(NewElement(), static_cast<int>(k));
    BindValues();
}

VX_Type* VX_Matrix::ElementAt(std::size_t position) {
    if (!m_elements[position]) {
        Adopt(NewElement(), static_cast<int>(position));
        BindValues();
    }
    return m_elements[position];
}

void VX_Matrix::BindValues() {
    VX_Type* first = nullptr;
    for (VX_Type* e : m_elements)
        if (e) { first = e; break; }
    if (!first || !first->IsSolverVariable()) {
        m_values.reset();
        return;
    }
    // The old slots stay alive until every element has copied its value to the new ones.
    auto values = std::make_unique<double[]>(m_elements.size());
    for (std::size_t k = 0; k < m_elements.size(); ++k)
        if (m_elements[k]) static_cast<VX_Variable*>(m_elements[k])->BindValueSlot(&values[k]);
    m_values = std::move(values);
}

bool VX_Matrix::ContainerDerivesFrom(const char* id) const {
    return id && VX_EqualCI(id, VX_MatrixContainerId());
}

void VX_Matrix::Follow(const VX_Set* set) {
    if (m_source == set) return;
    if (m_source) m_source->RemoveDependent(this);
    m_source = set;
    if (m_source) m_source->AddDependent(this);
}

void VX_Matrix::ClearElements() {
    for (VX_Type* e : m_elements) delete e;
    m_elements.clear();
}

VX_Type* VX_Matrix::Adopt(VX_Type* element, int position) {
    element->SetOwner(this, position);
    m_elements[static_cast<std::size_t>(position)] = element;
    return element;
}

// ---------------------------------------------------------------- integer-indexed

void VX_BASE_I::Resize(std::shared_ptr<const VX_IntSetData> set) {
    if (!Reindex(m_set, set ? std::move(set) : std::make_shared<const VX_IntSetData>())) return;
    m_contiguous = m_set->Ranges().size() <= 1;
    m_low = m_set->Empty() ? 0 : m_set->Ranges().front().first;
}

VX_Type* VX_BASE_I::CreateMissingArrayElement(const char* indexText) {
    if (!indexText) return nullptr;
    char* end = nullptr;
    const long index = std::strtol(indexText, &end, 10);
    if (end == indexText || *end != '\0') return nullptr;
    auto pos = m_set->PositionOf(static_cast<int>(index));
    return pos ? ElementAt(*pos) : nullptr;
}

std::string VX_BASE_I::IndexText(int position) const {
    return std::to_string(m_set->At(static_cast<std::size_t>(position)));
}

VX_Type* VX_BASE_I::FindSlow(int index) const {
    auto pos = m_set->PositionOf(index);
    return pos ? m_elements[*pos] : nullptr;
}

double VX_BASE_I::ValueSlow(int index) const {
    const VX_Type* e = Find(index);
    if (!e) ThrowMissing(index);
    if (!e->IsSolverVariable()) throw std::logic_error("array " + Path() + " does not hold variables");
    return static_cast<const VX_Variable*>(e)->fv();
}

void VX_BASE_I::ThrowNotOver(const VX_INTEGERSET& set) const {
    throw std::logic_error("array " + Path() + (m_values ? " is not sized over the set " + set.Path() : " holds no variables"));
}

void VX_BASE_I::ThrowMissing(int index) const {
    throw std::out_of_range("array " + Path() + " has no element (" + std::to_string(index) + ")");
}

// ---------------------------------------------------------------- string-indexed

void VX_BASE_S::Resize(std::shared_ptr<const VX_StrSetData> set) {
    Reindex(m_set, set ? std::move(set) : std::make_shared<const VX_StrSetData>());
}

VX_Type* VX_BASE_S::CreateMissingArrayElement(const char* indexText) {
    if (!indexText) return nullptr;
    auto pos = m_set->PositionOf(indexText);
    return pos ? ElementAt(*pos) : nullptr;
}

std::string VX_BASE_S::IndexText(int position) const { return m_set->At(static_cast<std::size_t>(position)); }

VX_Type* VX_BASE_S::Find(const char* index) const {
    if (!index) return nullptr;
    auto pos = m_set->PositionOf(index);
    return pos ? m_elements[*pos] : nullptr;
}

VX_Type& VX_BASE_S::Get(const char* index) const {
    if (VX_Type* e = Find(index)) return *e;
    throw std::out_of_range("array " + Path() + " has no element (" + std::string(index ? index : "") + ")");
}

double VX_BASE_S::ValueOf(const VX_Type& element) {
    if (!element.IsSolverVariable()) throw std::logic_error("array element " + element.Path() + " is not a variable");
    return static_cast<const VX_Variable&>(element).fv();
}

VX_Type& VX_BASE_S::GetAt(const VX_StringSetIter& it) const {
    if (&it.Set() == m_set.get()) {   // same set object: the position is the element
        if (VX_Type* e = FindAt(it.Position())) return *e;
    }
    return Get(it.String());
}

std::ptrdiff_t VX_BASE_I::PositionOfText(int dim, const char* index) const {
    if (!index) return -1;
    char* end = nullptr;
    const long value = std::strtol(index, &end, 10);
    return (end != index && *end == '\0') ? PositionOf(dim, static_cast<int>(value)) : -1;
}

std::ptrdiff_t VX_BASE_S::PositionOf(int dim, int index) const {
    return PositionOfText(dim, std::to_string(index).c_str());
}

namespace {
[[noreturn]] void ThrowNotIndexedBy(const VX_Matrix& array, int dim) {
    throw std::logic_error("array " + array.Path() + " is read in the order of a set it is not sized over (index " +
                           std::to_string(dim + 1) + ")");
}
}  // namespace

void VX_CheckIndexedBy(const VX_Matrix& array, int dim, const VX_IntSetData& set) {
    if (array.DimSet(dim) != &set) ThrowNotIndexedBy(array, dim);
}

void VX_CheckIndexedBy(const VX_Matrix& array, int dim, const VX_StrSetData& set) {
    if (array.DimSet(dim) != &set) ThrowNotIndexedBy(array, dim);
}

void VX_ThrowMissingElement(const VX_Matrix& array, const char* index) {
    throw std::out_of_range("array " + array.Path() + " has no element (" + std::string(index ? index : "") + ")");
}
