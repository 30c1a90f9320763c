#include "user_assignments.hpp"

#include "errors.hpp"
#include "flowsheet/input_error.hpp"
#include "paths/property_paths.hpp"
#include "value_parsing.hpp"
#include "zorexp/zorexp.hpp"

namespace zorexp_cli {
namespace {

const char* OptionName(UserAssignment::Action a) {
    return a == UserAssignment::Set ? "--set" : a == UserAssignment::Fix ? "--fix" : "--free";
}

// The assignment as the user typed it, kept short in messages.
std::string Describe(const UserAssignment& a) {
    return VX_BriefText(std::string(OptionName(a.action)) + " " + a.path + (a.action == UserAssignment::Set ? "=" + a.value : ""),
                        100);
}

// Why an object that is not a variable or parameter cannot be assigned.
std::string HoldsNoValue(const std::string& path, const VX_Type& object) {
    if (auto* array = dynamic_cast<const VX_Matrix*>(&object))
        return path + " is an array: assign its elements" +
               (array->Size() > 0 ? ", such as " + path + "(" + array->IndexText(0) + ")" : std::string());
    return path + " is a " + object.TypeName() + " and holds no value of its own";
}

struct Ready {
    const UserAssignment* source;
    VX_VarParam* target;
    VX_Attr attr;
    VX_Value value;
};

}  // namespace

UserAssignment ParseSetArgument(const std::string& argument) {
    const auto eq = argument.find('=');
    if (eq == std::string::npos || eq == 0)
        throw BadInput("--set " + VX_BriefText(argument) + ": expected PATH=VALUE, such as --set NPTS=5");
    return UserAssignment{UserAssignment::Set, argument.substr(0, eq), argument.substr(eq + 1)};
}

void AssignmentPlan::ApplyRound(VX_Type& root, bool last) {
    std::vector<Ready> ready;
    std::vector<UserAssignment> later;
    for (const UserAssignment& a : m_pending) {
        PathResolution found = ResolvePath(root, a.path);
        if (!found.object) {
            if (last) throw BadInput(m_typeName + ": " + Describe(a) + ": " + VX_BriefText(found.problem, 300));
            later.push_back(a);
            continue;
        }
        auto* target = dynamic_cast<VX_VarParam*>(found.object);
        if (!target) throw BadInput(m_typeName + ": " + Describe(a) + ": " + HoldsNoValue(VX_BriefText(a.path), *found.object));
        // An integer type's valid set is a property made on first lookup; the value check
        // consults it only once it exists.
        if (target->GetKind() == VX_VarParam::IntegerParameter) target->FindProperty("VALID");
        Ready r{&a, target, VX_ATTR_VALUE, {}};
        if (a.action == UserAssignment::Set) {
            std::string problem;
            r.value = ParseValue(*target, VX_ATTR_VALUE, a.value, &problem);
            if (!problem.empty()) throw BadInput(m_typeName + ": " + Describe(a) + " refused: " + problem);
        } else {
            r.attr = VX_ATTR_SPEC;
            r.value = VX_Value(a.action == UserAssignment::Fix ? VX_SPEC_FIXED : VX_SPEC_FREE, VX_CTX_USER, 0, 0);
        }
        if (std::string why = target->CheckValue(r.attr, r.value); !why.empty())
            throw BadInput(m_typeName + ": " + Describe(a) + " refused: " + VX_BriefText(a.path) + " " + why);
        ready.push_back(std::move(r));
    }
    for (Ready& r : ready) {
        std::string why;
        try {
            if (r.target->AssignUser(r.attr, r.value, &why) == VX_AS_REFUSED)
                throw BadInput(m_typeName + ": " + Describe(*r.source) + " refused: " + VX_BriefText(r.source->path) + " " + why);
        } catch (const VX_SizeLimitError& e) {
            throw BadInput(m_typeName + ": " + Describe(*r.source) + " refused: " + e.what() + zx::flowsheet::kSizeLimitHint);
        }
    }
    m_pending = std::move(later);
}

}  // namespace zorexp_cli
