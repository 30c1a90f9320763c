#include "stocklib/multi_index_arrays.hpp"

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace {
const std::shared_ptr<const VX_IntSetData>& EmptyIntSet() {
    static const auto empty = std::make_shared<const VX_IntSetData>();
    return empty;
}
const std::shared_ptr<const VX_StrSetData>& EmptyStrSet() {
    static const auto empty = std::make_shared<const VX_StrSetData>();
    return empty;
}

std::string Trimmed(const std::string& s) {
    const auto first = s.find_first_not_of(" \t");
    if (first == std::string::npos) return "";
    const auto last = s.find_last_not_of(" \t");
    return s.substr(first, last - first + 1);
}

// Splits "A, 1" into its indices; a text without commas is one index.
std::vector<std::string> SplitIndices(const char* text) {
    std::vector<std::string> parts;
    std::string cur;
    for (const char* p = text; *p; ++p) {
        if (*p == ',') { parts.push_back(Trimmed(cur)); cur.clear(); }
        else cur.push_back(*p);
    }
    parts.push_back(Trimmed(cur));
    return parts;
}
}  // namespace

VX_MultiIndexBase::VX_MultiIndexBase(std::initializer_list<VX_IndexKind> kinds) {
    m_dims.reserve(kinds.size());
    for (VX_IndexKind k : kinds) {
        m_dims.push_back(k == VX_IndexKind::I ? IntegerDim(EmptyIntSet()) : StringDim(EmptyStrSet()));
        m_followers.push_back(std::make_unique<SetFollower>(*this));
    }
}

// The followers leave their sets before the elements go.
VX_MultiIndexBase::~VX_MultiIndexBase() = default;

void VX_MultiIndexBase::SetFollower::Follow(const VX_Set* set) {
    if (m_source == set) return;
    if (m_source) m_source->RemoveDependent(this);
    m_source = set;
    if (m_source) m_source->AddDependent(this);
}

void VX_MultiIndexBase::FollowSets(const std::vector<const VX_Set*>& sources) {
    for (std::size_t k = 0; k < m_followers.size(); ++k) m_followers[k]->Follow(k < sources.size() ? sources[k] : nullptr);
}

void VX_MultiIndexBase::SetDimLike(const VX_MultiIndexBase& other) {
    Redimension(other.m_dims);
    FollowSets({});
}

bool VX_MultiIndexBase::HasSetsOf(const VX_MultiIndexBase& other) const {
    if (other.m_dims.size() != m_dims.size() || other.Size() != Size()) return false;
    for (std::size_t k = 0; k < m_dims.size(); ++k) {
        const Dim& a = m_dims[k];
        const Dim& b = other.m_dims[k];
        if (a.kind != b.kind) return false;
        if (a.kind == VX_IndexKind::I ? !(*a.ints == *b.ints) : !(*a.strs == *b.strs)) return false;
    }
    return true;
}

void VX_MultiIndexBase::IndexSetChanged() {
    std::vector<Dim> dims = m_dims;
    bool followed = false;
    for (std::size_t k = 0; k < dims.size(); ++k) {
        const VX_Set* source = m_followers[k]->Source();
        if (!source) continue;
        followed = true;
        dims[k] = dims[k].kind == VX_IndexKind::I ? IntegerDim(static_cast<const VX_INTEGERSET*>(source)->Shared())
                                                   : StringDim(static_cast<const VX_STRINGSET*>(source)->Shared());
    }
    if (followed) Redimension(std::move(dims));
}

VX_MultiIndexBase::Dim VX_MultiIndexBase::IntegerDim(std::shared_ptr<const VX_IntSetData> set) {
    Dim d;
    d.kind = VX_IndexKind::I;
    d.ints = set ? std::move(set) : EmptyIntSet();
    d.contiguous = d.ints->Ranges().size() <= 1;
    d.low = d.ints->Empty() ? 0 : d.ints->Ranges().front().first;
    d.size = static_cast<std::ptrdiff_t>(d.ints->Size());
    return d;
}

VX_MultiIndexBase::Dim VX_MultiIndexBase::StringDim(std::shared_ptr<const VX_StrSetData> set) {
    Dim d;
    d.kind = VX_IndexKind::S;
    d.strs = set ? std::move(set) : EmptyStrSet();
    d.size = static_cast<std::ptrdiff_t>(d.strs->Size());
    return d;
}

const VX_IntSetData& VX_MultiIndexBase::IntegerIndexSet(std::size_t dim) const {
    const Dim& d = m_dims.at(dim);
    if (d.kind != VX_IndexKind::I)
        throw std::invalid_argument("array " + Path() + ": index " + std::to_string(dim + 1) + " is a string index");
    return *d.ints;
}

const VX_StrSetData& VX_MultiIndexBase::StringIndexSet(std::size_t dim) const {
    const Dim& d = m_dims.at(dim);
    if (d.kind != VX_IndexKind::S)
        throw std::invalid_argument("array " + Path() + ": index " + std::to_string(dim + 1) + " is an integer index");
    return *d.strs;
}

std::ptrdiff_t VX_MultiIndexBase::SlowPosition(std::size_t dim, int index) const {
    const Dim& d = m_dims[dim];
    if (d.kind != VX_IndexKind::I) return -1;
    const auto pos = d.ints->PositionOf(index);
    return pos ? static_cast<std::ptrdiff_t>(*pos) : -1;
}

std::ptrdiff_t VX_MultiIndexBase::PositionIn(std::size_t dim, const char* index) const {
    const Dim& d = m_dims[dim];
    if (d.kind != VX_IndexKind::S || !index) return -1;
    const auto pos = d.strs->PositionOf(index);
    return pos ? static_cast<std::ptrdiff_t>(*pos) : -1;
}

void VX_MultiIndexBase::Redimension(std::vector<Dim> dims) {
    if (dims.size() != m_dims.size())
        throw std::invalid_argument("array " + Path() + " has " + std::to_string(m_dims.size()) + " indices, not " +
                                    std::to_string(dims.size()));
    for (std::size_t k = 0; k < dims.size(); ++k)
        if (dims[k].kind != m_dims[k].kind)
            throw std::invalid_argument("array " + Path() + ": index " + std::to_string(k + 1) + " takes " +
                                        (m_dims[k].kind == VX_IndexKind::I ? "an integer set" : "a string set"));

    // Strides from the last index (fastest) to the first. Element positions are ints.
    std::ptrdiff_t total = 1;
    for (std::size_t k = dims.size(); k-- > 0;) {
        dims[k].stride = total;
        if (dims[k].size != 0 && total > std::numeric_limits<int>::max() / dims[k].size)
            throw std::length_error("array " + Path() + " would have more than " +
                                    std::to_string(std::numeric_limits<int>::max()) + " elements");
        total *= dims[k].size;
    }

    bool sameSets = static_cast<std::ptrdiff_t>(m_elements.size()) == total;
    for (std::size_t k = 0; sameSets && k < dims.size(); ++k)
        sameSets = dims[k].kind == VX_IndexKind::I ? *dims[k].ints == *m_dims[k].ints : *dims[k].strs == *m_dims[k].strs;
    if (sameSets) {
        // Same members in the same order: positions are unchanged; take the new set objects so
        // that iterators over them find elements by position.
        m_dims = std::move(dims);
        NewElements();
        return;
    }

    std::vector<VX_Type*> old;
    old.swap(m_elements);
    std::vector<Dim> oldDims;
    oldDims.swap(m_dims);
    m_dims = std::move(dims);
    m_elements.assign(static_cast<std::size_t>(total), nullptr);
    for (std::size_t k = 0; k < old.size(); ++k) {
        if (!old[k]) continue;
        std::ptrdiff_t flat = 0;
        bool kept = true;
        for (std::size_t d = 0; kept && d < oldDims.size(); ++d) {
            const Dim& od = oldDims[d];
            const auto pos = static_cast<std::size_t>((static_cast<std::ptrdiff_t>(k) / od.stride) % od.size);
            const std::ptrdiff_t p = od.kind == VX_IndexKind::I ? PositionIn(d, od.ints->At(pos))
                                                                : PositionIn(d, od.strs->At(pos));
            if (p < 0) kept = false;
            else flat += p * m_dims[d].stride;
        }
        if (kept) Adopt(old[k], static_cast<int>(flat));
        else delete old[k];
    }
    NewElements();
}

void VX_MultiIndexBase::NewElements() {
    for (std::size_t k = 0; k < m_elements.size(); ++k)
        if (!m_elements[k]) Adopt(NewElement(), static_cast<int>(k));
    // Generated equations read an array of variables through Values(), by flat position.
    BindValues();
}

VX_Type* VX_MultiIndexBase::CreateMissingArrayElement(const char* indexText) {
    if (!indexText) return nullptr;
    const std::vector<std::string> parts = SplitIndices(indexText);
    if (parts.size() != m_dims.size()) return nullptr;
    std::ptrdiff_t flat = 0;
    for (std::size_t d = 0; d < m_dims.size(); ++d) {
        std::ptrdiff_t p = -1;
        if (m_dims[d].kind == VX_IndexKind::I) {
            const char* s = parts[d].c_str();
            char* end = nullptr;
            errno = 0;
            const long v = std::strtol(s, &end, 10);
            if (end == s || *end != '\0' || errno == ERANGE || v < std::numeric_limits<int>::min() ||
                v > std::numeric_limits<int>::max())
                return nullptr;
            p = PositionIn(d, static_cast<int>(v));
        } else {
            p = PositionIn(d, parts[d].c_str());
        }
        if (p < 0) return nullptr;
        flat += p * m_dims[d].stride;
    }
    if (!m_elements[static_cast<std::size_t>(flat)]) {
        Adopt(NewElement(), static_cast<int>(flat));
        BindValues();
    }
    return m_elements[static_cast<std::size_t>(flat)];
}

std::string VX_MultiIndexBase::IndexText(int position) const {
    std::string text;
    for (std::size_t d = 0; d < m_dims.size(); ++d) {
        const Dim& dim = m_dims[d];
        const auto pos = static_cast<std::size_t>((static_cast<std::ptrdiff_t>(position) / dim.stride) % dim.size);
        if (d) text += ',';
        text += dim.kind == VX_IndexKind::I ? std::to_string(dim.ints->At(pos)) : dim.strs->At(pos);
    }
    return text;
}

void VX_MultiIndexBase::ThrowMissing(const std::string& indexText) const {
    throw std::out_of_range("array " + Path() + " has no element (" + indexText + ")");
}

std::ptrdiff_t VX_MultiIndexBase::PositionOfText(int dim, const char* index) const {
    if (!index) return -1;
    const Dim& d = m_dims[static_cast<std::size_t>(dim)];
    if (d.kind == VX_IndexKind::S) return PositionIn(static_cast<std::size_t>(dim), index);
    char* end = nullptr;
    const long value = std::strtol(index, &end, 10);
    return (end != index && *end == '\0') ? PositionIn(static_cast<std::size_t>(dim), static_cast<int>(value)) : -1;
}
