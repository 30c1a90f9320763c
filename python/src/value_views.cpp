#include "value_views.hpp"

#include <cmath>

#include "python_errors.hpp"
#include "zorexp/units.hpp"
#include "zorexp/zorexp.hpp"

namespace py = pybind11;

namespace zorexp_python {
namespace {

VX_VarParam* AsValue(VX_Type* t) { return t && t->IsValue() ? static_cast<VX_VarParam*>(t) : nullptr; }

bool IsReal(const VX_VarParam& v) {
    return v.GetKind() == VX_VarParam::RealVariable || v.GetKind() == VX_VarParam::RealParameter;
}

// The one place that knows where an array keeps its elements' values: side by side in set
// order, the slots the solver and the equations read. The runtime hands them out read-only
// for the equations' sake; the module writes them as a solver does.
double* ArraySlots(VX_Matrix& array) { return const_cast<double*>(array.Values()); }

double AttributeNumber(VX_VarParam& v, VX_Attr attr) {
    if (auto* var = dynamic_cast<VX_Variable*>(&v)) return attr == VX_ATTR_LOWER ? var->Lower() : var->Upper();
    VX_Type* p = v.FindProperty(attr == VX_ATTR_LOWER ? "LOWER" : "UPPER");
    if (auto* bound = AsValue(p); bound && bound->RealSlot()) return *bound->RealSlot();
    return attr == VX_ATTR_LOWER ? -HUGE_VAL : HUGE_VAL;
}

py::object ElementAttribute(VX_VarParam& v, const std::string& name) {
    if (name == "lower") return py::float_(AttributeNumber(v, VX_ATTR_LOWER));
    if (name == "upper") return py::float_(AttributeNumber(v, VX_ATTR_UPPER));
    if (name == "spec") {
        auto* var = dynamic_cast<VX_Variable*>(&v);
        if (!var) return py::none();
        const char* text = VX_SpecText(var->CurrSpec());
        return text ? py::object(py::str(text)) : py::object(py::int_(static_cast<int>(var->CurrSpec())));
    }
    // The unit values are held in and the quantity, as the units table knows them.
    const vx_units::Measure m = vx_units::MeasureOf(v);
    const std::string text = name == "unit" ? m.baseUnit : m.Name();
    return text.empty() ? py::object(py::none()) : py::object(py::str(text));
}

std::string KindName(const VX_VarParam& v) {
    switch (v.GetKind()) {
        case VX_VarParam::RealVariable: return "real_variable";
        case VX_VarParam::RealParameter: return "real_parameter";
        case VX_VarParam::IntegerParameter: return "integer_parameter";
        case VX_VarParam::StringParameter: return "string_parameter";
        case VX_VarParam::LogicalParameter: return "logical_parameter";
        case VX_VarParam::IntegerSet: return "integer_set";
        case VX_VarParam::StringSet: return "string_set";
    }
    return "value";
}

}  // namespace

std::string KindOf(VX_Type& target) {
    if (VX_VarParam* v = AsValue(&target)) return KindName(*v);
    if (dynamic_cast<VX_Matrix*>(&target)) return "array";
    return "container";
}

std::string ElementKindOf(VX_Type& target) {
    auto* array = dynamic_cast<VX_Matrix*>(&target);
    if (!array) return "";
    for (int k = 0; k < array->Size(); ++k)
        if (VX_Type* e = array->At(k)) return KindOf(*e);
    return "";
}

py::array ValuesOf(VX_Type& target, py::handle owner) {
    if (VX_VarParam* v = AsValue(&target)) {
        if (!IsReal(*v))
            throw InputFault(target.Path() + " is " + KindName(*v) + ", not a real value: it has no numeric view");
        // A real variable's value may live in an array's slot; RealSlot follows it.
        return py::array(py::dtype::of<double>(), std::vector<py::ssize_t>{}, std::vector<py::ssize_t>{}, v->RealSlot(), owner);
    }
    auto* array = dynamic_cast<VX_Matrix*>(&target);
    const std::string elements = ElementKindOf(target);
    if (!array || (elements != "real_variable" && elements != "real_parameter"))
        throw InputFault(target.Path() + " is " + (array ? "an array of " + (elements.empty() ? std::string("nothing yet") : elements) : KindOf(target)) +
                         ", not real values: it has no numeric view");
    const auto n = static_cast<py::ssize_t>(array->Size());
    if (double* slots = ArraySlots(*array))
        return py::array(py::dtype::of<double>(), {n}, {static_cast<py::ssize_t>(sizeof(double))}, slots, owner);
    py::array_t<double> copy(n);
    auto out = copy.mutable_unchecked<1>();
    for (py::ssize_t k = 0; k < n; ++k) {
        VX_VarParam* e = AsValue(array->At(static_cast<int>(k)));
        out(k) = e && e->RealSlot() ? *e->RealSlot() : std::nan("");
    }
    py::detail::array_proxy(copy.ptr())->flags &= ~py::detail::npy_api::NPY_ARRAY_WRITEABLE_;
    return copy;
}

py::object AttributeOf(VX_Type& target, const std::string& name) {
    if (name != "lower" && name != "upper" && name != "spec" && name != "unit" && name != "quantity")
        throw InputFault("no attribute \"" + name + "\" (the attributes are lower, upper, spec, unit and quantity)");
    if (VX_VarParam* v = AsValue(&target)) return ElementAttribute(*v, name);
    auto* array = dynamic_cast<VX_Matrix*>(&target);
    if (!array) return py::none();
    if (name == "unit" || name == "quantity") {
        for (int k = 0; k < array->Size(); ++k)
            if (VX_VarParam* e = AsValue(array->At(k))) return ElementAttribute(*e, name);
        return py::none();
    }
    if (name == "spec") {
        py::list specs;
        for (int k = 0; k < array->Size(); ++k) {
            VX_VarParam* e = AsValue(array->At(k));
            specs.append(e ? ElementAttribute(*e, name) : py::none());
        }
        return specs;
    }
    const VX_Attr attr = name == "lower" ? VX_ATTR_LOWER : VX_ATTR_UPPER;
    py::array_t<double> bounds(array->Size());
    auto out = bounds.mutable_unchecked<1>();
    for (int k = 0; k < array->Size(); ++k) {
        VX_VarParam* e = AsValue(array->At(k));
        out(k) = e ? AttributeNumber(*e, attr) : std::nan("");
    }
    return bounds;
}

py::array InUnit(VX_Type& target, py::handle owner, const std::string& unit) {
    VX_VarParam* measured = AsValue(&target);
    if (auto* array = dynamic_cast<VX_Matrix*>(&target); array && !measured)
        for (int k = 0; k < array->Size() && !measured; ++k) measured = AsValue(array->At(k));
    py::array values = ValuesOf(target, owner);
    py::array_t<double> out(values.request().shape);
    const auto* from = static_cast<const double*>(values.data());
    double* to = out.mutable_data();
    if (!measured) return out;
    const vx_units::Measure m = vx_units::MeasureOf(*measured);
    std::string problem;
    const std::optional<vx_units::Conversion> c = vx_units::ToBase(m, unit, &problem);
    if (!c) throw InputFault(target.Path() + ": " + problem);
    for (py::ssize_t k = 0; k < values.size(); ++k) to[k] = c->Undo(from[k]);
    return out;
}

py::object PlainValueOf(VX_Type& target) {
    VX_VarParam* v = AsValue(&target);
    if (!v) return py::none();
    switch (v->GetKind()) {
        case VX_VarParam::IntegerParameter: return py::int_(static_cast<VX_INTEGERPARAMETER&>(*v).fv());
        case VX_VarParam::LogicalParameter: return py::bool_(static_cast<VX_LOGICALPARAMETER&>(*v).fv());
        case VX_VarParam::RealVariable:
        case VX_VarParam::RealParameter: return py::float_(*v->RealSlot());
        default: return py::str(v->ValueText());   // texts, and sets as their text ("1..5", "A B")
    }
}

std::vector<std::string> IndexTextsOf(VX_Type& target) {
    std::vector<std::string> out;
    if (auto* array = dynamic_cast<VX_Matrix*>(&target))
        for (int k = 0; k < array->Size(); ++k) out.push_back(array->IndexText(k));
    return out;
}

}  // namespace zorexp_python
