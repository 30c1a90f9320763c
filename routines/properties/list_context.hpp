#pragma once
// What a routine keeps per component list: the list's mixture and method, resolved once from the
// host's component ids and list options ("PROPERTY-METHOD", "PR-KIJ"), and work space sized for
// it. A context is checked on every call by the list's size and the addresses of its ids (no
// text is compared on that path) and rebuilt when a solve starts.
#include <memory>
#include <vector>

#include "dense_call.hpp"
#include "thermo/phase_equilibrium.hpp"
#include "thermo/property_model.hpp"

namespace zx::routines {

struct ListContext {
    int handle = 0;
    std::vector<const char*> ids;  // as the host gave them, to notice a changed list
    std::unique_ptr<thermo::PropertyModel> model;
    std::unique_ptr<thermo::PhaseEquilibrium> equilibrium;
    thermo::PhaseProperties first, second;  // phase work space
    std::vector<double> z, z2, incipient, row;

    std::size_t Size() const { return ids.size(); }
    const thermo::Mixture& Mixture() const { return model->GetMixture(); }
};

// The context of the calling model's list; RoutineError when the list is unknown or names a
// component the database lacks, or its options are invalid.
ListContext& ContextFor(const DenseCall& call);
void ForgetListContexts();

}  // namespace zx::routines
