// _zorexp.Sheet: a set-up flowsheet as the package's Flowsheet drives it. Paths are
// "BLOCK.PATH"; values go in as flowsheet-file JSON, through the code that applies a file's
// values, and come out as numpy views of the solver's own doubles.
#include <cmath>
#include <optional>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include "bindings.hpp"
#include "flowsheet/steady_state_solve.hpp"
#include "live_sheet.hpp"
#include "python_errors.hpp"
#include "value_views.hpp"
#include "zorexp/zorexp.hpp"

namespace py = pybind11;

namespace zorexp_python {
namespace {

py::dict Describe(LiveSheet& sheet, const std::string& path) {
    SessionScope scope(sheet);
    VX_Type& target = sheet.Resolve(path);
    py::dict info;
    info["kind"] = KindOf(target);
    info["element_kind"] = ElementKindOf(target);
    info["type"] = target.TypeName();
    if (auto* array = dynamic_cast<VX_Matrix*>(&target)) info["size"] = array->Size();
    return info;
}

py::dict SolveResultDict(const LiveSheet::SolveOutcome& o) {
    py::dict d;
    d["status"] = zx::flowsheet::StatusKey(o.result.status);
    d["converged"] = o.result.status == zx::solve::SolveStatus::Converged;
    d["iterations"] = o.result.iterations;
    d["residual_norm"] = o.result.residual_norm;
    d["message"] = o.result.message;
    d["largest_residuals"] = o.largest;
    d["wall_time"] = o.wallSeconds;
    return d;
}

zx::solve::SolverOptions Options(int maxIterations, double tolerance) {
    if (maxIterations < 1) throw InputFault("max_iterations " + std::to_string(maxIterations) + ": at least 1 iteration is needed");
    if (!(tolerance > 0) || !std::isfinite(tolerance))
        throw InputFault("tolerance " + VX_Value(tolerance, 0).ToString() + ": the tolerance must be a finite number above 0");
    zx::solve::SolverOptions options;
    options.max_iterations = maxIterations;
    options.tolerance = tolerance;
    options.verbose_log = false;
    return options;
}

}  // namespace

void BindSheet(py::module_& m) {
    py::class_<LiveSheet>(m, "Sheet", "A set-up flowsheet (use zorexp.Flowsheet).")
        .def(py::init<const std::string&, std::string, bool>(), py::arg("document_json"), py::arg("source"),
             py::arg("located") = false)
        .def_property_readonly("source", &LiveSheet::Source)
        .def("blocks", [](LiveSheet& s) {
            std::vector<std::pair<std::string, std::string>> out;
            for (const auto& b : s.Sheet().Blocks()) out.emplace_back(b.name, b.type);
            return out;
        })
        .def("describe", &Describe, py::arg("path"))
        .def("values", [](py::object self, const std::string& path) {
            LiveSheet& s = self.cast<LiveSheet&>();
            SessionScope scope(s);
            return ValuesOf(s.Resolve(path), self);
        }, py::arg("path"), "A numpy view of the real values at path (no copy).")
        .def("in_unit", [](py::object self, const std::string& path, const std::string& unit) {
            LiveSheet& s = self.cast<LiveSheet&>();
            SessionScope scope(s);
            return InUnit(s.Resolve(path), self, unit);
        }, py::arg("path"), py::arg("unit"), "A copy of the real values at path in another unit.")
        .def("attribute", [](LiveSheet& s, const std::string& path, const std::string& name) {
            SessionScope scope(s);
            return AttributeOf(s.Resolve(path), name);
        }, py::arg("path"), py::arg("name"))
        .def("plain_value", [](LiveSheet& s, const std::string& path) {
            SessionScope scope(s);
            return PlainValueOf(s.Resolve(path));
        }, py::arg("path"))
        .def("index_texts", [](LiveSheet& s, const std::string& path) {
            SessionScope scope(s);
            return IndexTextsOf(s.Resolve(path));
        }, py::arg("path"))
        .def("apply", [](LiveSheet& s, const std::string& path, const std::string& valueJson) {
            s.Apply(path, Translated(s.Source(), [&] { return zx::flowsheet::InputValue::Parse(valueJson); }));
        }, py::arg("path"), py::arg("value_json"), "Applies a value written as in a flowsheet file.")
        .def("apply_numbers", [](LiveSheet& s, const std::string& path,
                                 py::array_t<double, py::array::c_style | py::array::forcecast> numbers) {
            if (numbers.ndim() != 1) throw InputFault(path + ": give a list of numbers, one per element");
            s.Apply(path, zx::flowsheet::InputValue::MakeNumberList(
                              std::vector<double>(numbers.data(), numbers.data() + numbers.size())));
        }, py::arg("path"), py::arg("numbers"), "Applies one number per element, in set order.")
        .def("analyse", &LiveSheet::AnalyseJson)
        .def("solve", [](LiveSheet& s, int maxIterations, double tolerance) {
            return SolveResultDict(s.Solve(Options(maxIterations, tolerance)));
        }, py::arg("max_iterations") = 50, py::arg("tolerance") = 1e-8)
        .def("solve_case", [](LiveSheet& s, const std::vector<std::string>& paths, const std::vector<double>& values,
                              std::optional<std::vector<double>> start, int maxIterations, double tolerance) {
            zx::flowsheet::SweepEngine& engine = s.Cases(paths);
            const zx::solve::SolverOptions options = Options(maxIterations, tolerance);
            SessionScope scope(s);
            if (start) engine.SetStart(*start);
            zx::flowsheet::SweepPoint point = engine.SolveCase(values, options);
            // A case that fails from a neighbour's solution is tried once more from the flowsheet's own start.
            if (!point.converged && start)
                point = engine.SolveCase(values, options, zx::flowsheet::SweepEngine::Start::Initial);
            py::dict d;
            d["status"] = zx::flowsheet::StatusKey(point.status);
            d["converged"] = point.converged;
            d["iterations"] = point.iterations;
            d["residual_norm"] = point.residualNorm;
            d["message"] = point.failure;
            d["unknowns"] = engine.LastConverged();
            return d;
        }, py::arg("paths"), py::arg("values"), py::arg("start") = py::none(), py::arg("max_iterations") = 50,
           py::arg("tolerance") = 1e-8,
           "Sets the case's values and solves it (from start, the unknowns of a solved neighbour, when given).");
}

}  // namespace zorexp_python
