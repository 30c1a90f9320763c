#pragma once
// The parts of the compiled module _zorexp, each registered by its own file.
#include <pybind11/pybind11.h>

namespace zorexp_python {

void BindErrors(pybind11::module_& m);
void BindSheet(pybind11::module_& m);
void BindCatalogue(pybind11::module_& m);

}  // namespace zorexp_python
