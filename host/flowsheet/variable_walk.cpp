#include "flowsheet/variable_walk.hpp"

#include "zorexp/zorexp.hpp"

namespace zx::flowsheet {
namespace {

template <class Visit>
void Walk(VX_Type& node, const Visit& visit) {
    if (node.IsValue()) {
        visit(static_cast<VX_VarParam&>(node));
        return;
    }
    if (auto* array = dynamic_cast<VX_Matrix*>(&node)) {
        for (int k = 0; k < array->Size(); ++k)
            if (VX_Type* e = array->At(k)) Walk(*e, visit);
        return;
    }
    if (auto* container = dynamic_cast<VX_Container*>(&node)) {
        for (const VX_PropertyEntry& p : container->Properties())
            if (p.object) Walk(*p.object, visit);
    }
}

void Mix(unsigned long long& h, unsigned long long v) {
    h ^= v + 0x9e3779b97f4a7c15ull + (h << 6) + (h >> 2);
}

void Shape(VX_Type& node, unsigned long long& h) {
    if (node.IsValue()) return;
    if (auto* array = dynamic_cast<VX_Matrix*>(&node)) {
        Mix(h, static_cast<unsigned long long>(array->Size()) + 1);
        // Arrays of variables or parameters have nothing inside that could change shape.
        if (array->Size() == 0 || !array->At(0) || array->At(0)->IsValue()) return;
        for (int k = 0; k < array->Size(); ++k)
            if (VX_Type* e = array->At(k)) Shape(*e, h);
        return;
    }
    if (auto* container = dynamic_cast<VX_Container*>(&node)) {
        Mix(h, container->Properties().size());
        for (const VX_PropertyEntry& p : container->Properties())
            if (p.object) Shape(*p.object, h);
    }
}

}  // namespace

void ForEachVariable(VX_Type& root, const std::function<void(VX_Variable&)>& visit) {
    Walk(root, [&](VX_VarParam& v) {
        if (v.GetKind() == VX_VarParam::RealVariable) visit(static_cast<VX_Variable&>(v));
    });
}

void ForEachValue(VX_Type& root, const std::function<void(VX_VarParam&)>& visit) { Walk(root, visit); }

unsigned long long ShapeFingerprint(VX_Type& root) {
    unsigned long long h = 0;
    Shape(root, h);
    return h;
}

}  // namespace zx::flowsheet
