// _zorexp: the compiled part of the Python package zorexp. The package (zorexp/__init__.py)
// wraps it in the user-facing Flowsheet, sweep and plot.
#include "bindings.hpp"
#include "memory_budget.hpp"
#include "zorexp/session.hpp"

PYBIND11_MODULE(_zorexp, m) {
    m.doc() = "Flowsheets of the Morvanex220_1 model library: set-up, values, analysis and solving.";
    // Arrays may hold what the memory available holds, as for the zorexp command.
    VX_Session::SetDefaultElementLimit(zorexp_cli::ElementLimitFromMemory(zorexp_cli::AvailableMemory()));
    zorexp_python::BindErrors(m);
    zorexp_python::BindSheet(m);
    zorexp_python::BindCatalogue(m);
}
