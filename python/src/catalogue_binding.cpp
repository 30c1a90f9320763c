// The model library's catalogue as the zorexp command reports it with --json: types, one type
// described (with assignments, fixes and frees), and the procedure declarations. Each returns
// the command's JSON text; the package parses it.
#include <pybind11/stl.h>

#include "bindings.hpp"
#include "describe.hpp"
#include "procedures_listing.hpp"
#include "python_errors.hpp"
#include "report_json.hpp"
#include "types_listing.hpp"
#include "user_assignments.hpp"
#include "zorexp/session.hpp"

namespace py = pybind11;

namespace zorexp_python {
namespace {

constexpr const char* kSource = "zorexp";

std::string Dump(const nlohmann::ordered_json& json) {
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string DescribeJson(const std::string& type, const std::vector<std::string>& sets,
                         const std::vector<std::string>& fixes, const std::vector<std::string>& frees,
                         const std::vector<std::string>& components) {
    return Translated(kSource, [&] {
        zorexp_cli::ContainerRequest request;
        request.components = components;
        for (const std::string& s : sets) request.assignments.push_back(zorexp_cli::ParseSetArgument(s));
        for (const std::string& p : fixes) request.assignments.push_back({zorexp_cli::UserAssignment::Fix, p, {}});
        for (const std::string& p : frees) request.assignments.push_back({zorexp_cli::UserAssignment::Free, p, {}});
        VX_Session::MakeCurrent(nullptr);
        const zorexp_cli::DescribeResult result = zorexp_cli::Describe(type, request);
        return std::visit([](const auto& report) { return Dump(zorexp_cli::ToJson(report)); }, result);
    });
}

}  // namespace

void BindCatalogue(py::module_& m) {
    m.def("types_json", [] { return Translated(kSource, [] { return Dump(zorexp_cli::ToJson(zorexp_cli::ListTypes())); }); });
    m.def("describe_json", &DescribeJson, py::arg("type"), py::arg("sets"), py::arg("fixes"), py::arg("frees"),
          py::arg("components"));
    m.def("procedures_json", [](const std::string& name) {
        return Translated(kSource, [&] {
            return Dump(zorexp_cli::ProceduresJson(zorexp_cli::ListProcedures(name), !name.empty()));
        });
    }, py::arg("name") = "");
}

}  // namespace zorexp_python
