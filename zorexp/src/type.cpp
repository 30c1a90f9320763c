#include "zorexp/type.hpp"

#include <cxxabi.h>

#include <cstdlib>
#include <stdexcept>
#include <typeinfo>

#include "zorexp/arrays.hpp"
#include "zorexp/container.hpp"
#include "zorexp/varparam.hpp"

VX_Type* VX_Type::AddProperty(VX_Type* member, VX_Type* owner, const char* name,
                              const char* description, int flags, int) {
    if (!member || !owner || !name) throw std::invalid_argument("AddProperty: null member, owner or name");
    if (auto* c = dynamic_cast<VX_Container*>(owner)) {
        const int slot = c->Register(member, name, description, flags);
        member->SetOwner(owner, slot);
        return member;
    }
    throw std::invalid_argument(std::string("AddProperty: \"") + name + "\" added to an object that holds no properties");
}

std::string VX_Type::LocalName() const {
    const VX_Type* owner = Owner();
    if (!owner) return "";
    if (auto* c = dynamic_cast<const VX_Container*>(owner)) {
        const auto& props = c->Properties();
        const int slot = SlotInOwner();
        if (slot >= 0 && slot < static_cast<int>(props.size())) return props[static_cast<std::size_t>(slot)].name;
        return "";
    }
    if (auto* m = dynamic_cast<const VX_Matrix*>(owner)) {
        return m->LocalName() + "(" + m->IndexText(SlotInOwner()) + ")";
    }
    if (auto* vp = dynamic_cast<const VX_VarParam*>(owner)) {
        (void)vp;
        return "";
    }
    return "";
}

std::string VX_Type::Path() const {
    const VX_Type* owner = Owner();
    if (!owner) return "";
    if (dynamic_cast<const VX_Matrix*>(owner)) {
        // Array elements are named by the array's path plus their index.
        auto* m = static_cast<const VX_Matrix*>(owner);
        return m->Path() + "(" + m->IndexText(SlotInOwner()) + ")";
    }
    std::string head = owner->Path();
    std::string local = LocalName();
    return head.empty() ? local : head + "." + local;
}

const char* VX_Type::Description() const {
    const VX_Type* owner = Owner();
    if (auto* c = dynamic_cast<const VX_Container*>(owner)) {
        const auto& props = c->Properties();
        const int slot = SlotInOwner();
        if (slot >= 0 && slot < static_cast<int>(props.size())) return props[static_cast<std::size_t>(slot)].description;
    }
    if (owner && dynamic_cast<const VX_Matrix*>(owner)) return owner->Description();
    return nullptr;
}

std::string VX_Type::TypeName() const {
    int status = 0;
    char* raw = abi::__cxa_demangle(typeid(*this).name(), nullptr, nullptr, &status);
    std::string name = (status == 0 && raw) ? raw : typeid(*this).name();
    std::free(raw);
    if (name.rfind("VX_", 0) == 0) name.erase(0, 3);
    return name;
}
