#pragma once
// What the model library needs from the modelling runtime and the base-type library.
#include "stocklib/generic_bases.hpp"
#include "zorexp/zorexp.hpp"
