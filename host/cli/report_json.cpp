#include "report_json.hpp"

namespace zorexp_cli {
namespace {

Json ValueJson(const ReportValue& v) {
    return std::visit([](const auto& x) { return Json(x); }, v);
}

void PutValid(Json& j, const std::optional<std::vector<ReportValue>>& valid) {
    if (!valid) return;
    Json& list = j["valid"] = Json::array();
    for (const ReportValue& v : *valid) list.push_back(ValueJson(v));
}

// Every attribute but the valid set.
void PutValues(Json& j, const Attributes& a) {
    if (a.value) j["value"] = ValueJson(*a.value);
    if (a.lower) j["lower"] = ValueJson(*a.lower);
    if (a.upper) j["upper"] = ValueJson(*a.upper);
    if (a.spec) j["spec"] = *a.spec;
    if (a.quantity) j["quantity"] = *a.quantity;
    if (a.unit) j["unit"] = *a.unit;
    if (a.row) j["row"] = *a.row;
    if (a.col) j["col"] = *a.col;
}

Json PropertyJson(const PropertyReport& p) {
    Json j;
    j["name"] = p.name;
    j["kind"] = p.kind;
    if (!p.type.empty()) j["type"] = p.type;
    if (p.description) j["description"] = *p.description;
    PutValues(j, p.attributes);
    PutValid(j, p.attributes.valid);
    if (p.elements) {
        Json& list = j["elements"] = Json::array();
        for (const PropertyReport& e : *p.elements) list.push_back(PropertyJson(e));
    }
    if (p.properties) {
        Json& list = j["properties"] = Json::array();
        for (const PropertyReport& e : *p.properties) list.push_back(PropertyJson(e));
    }
    return j;
}

}  // namespace

Json ToJson(const ContainerReport& r) {
    Json j;
    j["type"] = r.type;
    j["id"] = r.id;
    j["kind"] = r.kind;
    j["base"] = r.base;
    j["defined"] = r.defined;
    j["equations_defined"] = r.equationsDefined;
    Json& props = j["properties"] = Json::array();
    for (const PropertyReport& p : r.properties) props.push_back(PropertyJson(p));
    Json& eqs = j["equations"] = Json::array();
    for (const EquationReport& e : r.equations) {
        Json eq;
        eq["label"] = e.label;
        eq["group"] = e.group;
        eq["residual"] = e.residual;
        Json& nz = eq["nonzeros"] = Json::array();
        for (const NonzeroReport& n : e.nonzeros) nz.push_back(Json{{"variable", n.variable}, {"jacobian", n.jacobian}});
        eqs.push_back(std::move(eq));
    }
    if (r.equationsUnavailable) j["equations_unavailable"] = *r.equationsUnavailable;
    if (!r.refusals.empty()) {
        Json& list = j["refused_assignments"] = Json::array();
        for (const RefusalReport& x : r.refusals)
            list.push_back(Json{{"property", x.property}, {"attribute", x.attribute}, {"value", x.value},
                                {"reason", x.reason}, {"statement", x.statement}});
    }
    return j;
}

Json ToJson(const TypeReport& r) {
    Json j;
    j["type"] = r.type;
    j["class"] = r.className;
    j["kind"] = r.kind;
    j["base"] = r.base;
    PutValues(j, r.attributes);
    if (r.description) j["description"] = *r.description;
    PutValid(j, r.attributes.valid);
    return j;
}

Json ToJson(const std::vector<TypeListing>& listing) {
    Json list = Json::array();
    for (const TypeListing& t : listing) {
        Json j;
        j["name"] = t.name;
        j["kind"] = t.kind;
        if (t.id) j["id"] = *t.id;
        j["base"] = t.base;
        if (t.defined) j["defined"] = *t.defined;
        if (t.equationsDefined) j["equations_defined"] = *t.equationsDefined;
        if (t.creatable) j["creatable"] = *t.creatable;
        list.push_back(std::move(j));
    }
    return list;
}

}  // namespace zorexp_cli
