#pragma once
// The modelling runtime, whole.
#include "zorexp/arrays.hpp"
#include "zorexp/component_list.hpp"
#include "zorexp/container.hpp"
#include "zorexp/model_type.hpp"
#include "zorexp/parameters.hpp"
#include "zorexp/references.hpp"
#include "zorexp/runtime_defaults.hpp"
#include "zorexp/session.hpp"
#include "zorexp/sets.hpp"
#include "zorexp/value.hpp"
#include "zorexp/variable.hpp"
