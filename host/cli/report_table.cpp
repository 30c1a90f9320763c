#include "report_table.hpp"

#include <fmt/format.h>

#include "text_table.hpp"

namespace zorexp_cli {
namespace {

std::string Text(const ReportValue& v);

template <class T>
std::string Join(const std::vector<T>& items, const char* separator) {
    std::string out;
    for (std::size_t k = 0; k < items.size(); ++k) {
        if (k) out += separator;
        if constexpr (std::is_same_v<T, ReportValue>) out += Text(items[k]);
        else out += fmt::format("{}", items[k]);
    }
    return out;
}

std::string Text(const ReportValue& v) {
    struct Visitor {
        std::string operator()(bool b) const { return b ? "true" : "false"; }
        std::string operator()(int i) const { return fmt::format("{}", i); }
        std::string operator()(double x) const { return fmt::format("{:.10g}", x == 0.0 ? 0.0 : x); }  // no "-0"
        std::string operator()(const std::string& s) const { return s; }
        std::string operator()(const std::vector<int>& s) const { return "{" + Join(s, ", ") + "}"; }
        std::string operator()(const std::vector<std::string>& s) const { return "{" + Join(s, ", ") + "}"; }
    };
    return std::visit(Visitor{}, v);
}

template <class T>
std::string Cell(const std::optional<T>& v) {
    if (!v) return "";
    if constexpr (std::is_same_v<T, ReportValue>) return Text(*v);
    else return fmt::format("{}", *v);
}

// A container id shows its tab as a blank.
std::string Shown(std::string id) {
    for (char& c : id)
        if (c == '\t') c = ' ';
    return id;
}

std::string Units(const Attributes& a) {
    std::string out = a.unit.value_or("");
    if (a.quantity) out += (out.empty() ? "" : " ") + ("(" + *a.quantity + ")");
    return out;
}

void AddProperty(TextTable& table, const PropertyReport& p) {
    const Attributes& a = p.attributes;
    std::string value = Cell(a.value);
    if (p.elements) value = fmt::format("{} element{}", p.elements->size(), p.elements->size() == 1 ? "" : "s");
    table.AddRow({p.name, p.kind, p.type, value, Cell(a.lower), Cell(a.upper), Cell(a.spec), Units(a),
                  a.valid ? Join(*a.valid, " | ") : "", p.description.value_or("")});
    if (p.elements)
        for (const PropertyReport& e : *p.elements) AddProperty(table, e);
    if (p.properties)
        for (const PropertyReport& m : *p.properties) AddProperty(table, m);
}

}  // namespace

std::string ToText(const ContainerReport& r) {
    std::string out = fmt::format("{}: {}, id \"{}\", base {}, {}\n", r.type, r.kind, Shown(r.id), r.base,
                                  !r.defined            ? "content not defined yet: no properties or equations"
                                  : !r.equationsDefined ? "properties defined, equations not defined yet: it contributes none"
                                                        : "content defined");
    if (!r.defined) return out;

    TextTable props({"Property", "Kind", "Type", "Value", "Lower", "Upper", "Spec", "Unit", "Valid", "Description"});
    for (const PropertyReport& p : r.properties) AddProperty(props, p);
    out += "\nProperties\n" + props.Render();

    TextTable eqs({"Row", "Label", "Group", "Residual", "Variable", "Jacobian"});
    for (std::size_t k = 0; k < r.equations.size(); ++k) {
        const EquationReport& e = r.equations[k];
        const std::string residual = Text(e.residual);
        if (e.nonzeros.empty()) eqs.AddRow({fmt::format("{}", k), e.label, fmt::format("{}", e.group), residual, "", ""});
        for (std::size_t n = 0; n < e.nonzeros.size(); ++n) {
            const NonzeroReport& z = e.nonzeros[n];
            if (n == 0) eqs.AddRow({fmt::format("{}", k), e.label, fmt::format("{}", e.group), residual, z.variable, Text(z.jacobian)});
            else eqs.AddRow({"", "", "", "", z.variable, Text(z.jacobian)});
        }
    }
    if (r.equationsUnavailable)
        out += "\nEquations\nnot available with these settings: " + *r.equationsUnavailable + "\n";
    else
        out += "\nEquations\n" + (eqs.Empty() ? std::string("(none)\n") : eqs.Render());
    if (!r.refusals.empty()) {
        out += "\nRefused assignments (the property kept its value)\n";
        for (const RefusalReport& x : r.refusals)
            out += fmt::format("  statement {}: {} {} := {}: {}\n", x.statement, x.property, x.attribute, x.value, x.reason);
    }
    return out;
}

std::string ToText(const TypeReport& r) {
    const Attributes& a = r.attributes;
    std::vector<std::pair<std::string, std::string>> lines = {
        {"type", r.type}, {"class", r.className}, {"kind", r.kind}, {"base", r.base}};
    auto add = [&](const char* key, std::string value, bool present) { if (present) lines.emplace_back(key, std::move(value)); };
    add("value", Cell(a.value), a.value.has_value());
    add("lower", Cell(a.lower), a.lower.has_value());
    add("upper", Cell(a.upper), a.upper.has_value());
    add("quantity", Cell(a.quantity), a.quantity.has_value());
    add("unit", Cell(a.unit), a.unit.has_value());
    add("row", Cell(a.row), a.row.has_value());
    add("col", Cell(a.col), a.col.has_value());
    add("description", Cell(r.description), r.description.has_value());
    if (a.valid) {
        std::vector<std::string> quoted;
        for (const ReportValue& v : *a.valid) quoted.push_back(std::holds_alternative<std::string>(v) ? "\"" + Text(v) + "\"" : Text(v));
        add("valid", quoted.empty() ? "(supplied at run time)" : Join(quoted, ", "), true);
    }
    std::string out;
    for (const auto& [key, value] : lines) out += fmt::format("{:<12}{}\n", key, value);
    return out;
}

std::string ToText(const std::vector<TypeListing>& listing) {
    TextTable table({"Type", "Kind", "Id", "Base", "Content", "Creatable"});
    for (const TypeListing& t : listing)
        table.AddRow({t.name, t.kind, t.id ? Shown(*t.id) : "", t.base,
                      t.defined ? (!*t.defined ? "not defined yet"
                                   : t.equationsDefined.value_or(true) ? "defined"
                                                                       : "properties only, equations not defined yet")
                                : "",
                      t.creatable ? (*t.creatable ? "yes" : "no") : ""});
    return table.Render();
}

}  // namespace zorexp_cli
