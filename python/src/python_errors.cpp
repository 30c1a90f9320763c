#include "python_errors.hpp"

#include <new>

#include "bindings.hpp"
#include "errors.hpp"   // the host's BadInput and HostFailure
#include "flowsheet/input_error.hpp"

namespace py = pybind11;

namespace zorexp_python {

void RethrowTranslated(const std::string& source, bool located) {
    try {
        throw;
    } catch (const zx::flowsheet::InputError& e) {
        // As the command prints it for a file; a document made by the package has no lines and
        // columns the user ever saw.
        if (located) throw InputFault(e.Line(source));
        throw InputFault(e.Pointer().empty() ? source + ": " + e.what() : source + ": " + e.Pointer() + ": " + e.what());
    } catch (const zorexp_cli::BadInput& e) {
        throw InputFault(e.what());
    } catch (const zx::flowsheet::ModelFailure& e) {
        throw SolveFault(source + ": " + e.what());
    } catch (const zorexp_cli::HostFailure& e) {
        throw SolveFault(e.what());
    } catch (const InputFault&) {
        throw;
    } catch (const SolveFault&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const py::error_already_set&) {
        throw;
    } catch (const std::exception& e) {
        // A block threw while being set up (the runtime names the array and index).
        throw SolveFault(source + ": set-up failed: " + e.what());
    }
}

void BindErrors(py::module_& m) {
    py::register_exception<InputFault>(m, "InputError", PyExc_ValueError);
    py::register_exception<SolveFault>(m, "SolveError", PyExc_RuntimeError);
}

}  // namespace zorexp_python
