#include "list_context.hpp"

#include <fmt/format.h>

#include "property_services.hpp"

namespace zx::routines {
namespace {

std::vector<std::unique_ptr<ListContext>> g_contexts;

bool StillValid(const ListContext& context, const zorexp_host_services& services) {
    const int n = services.component_count(context.handle);
    if (n != static_cast<int>(context.Size())) return false;
    for (int i = 0; i < n; ++i)
        if (services.component_id(context.handle, i) != context.ids[i]) return false;
    return true;
}

std::unique_ptr<ListContext> Resolve(int handle, const zorexp_host_services& services) {
    const int n = services.component_count(handle);
    if (n <= 0) throw RoutineError(fmt::format("component list {} is unknown to the host or empty", handle));
    auto context = std::make_unique<ListContext>();
    context->handle = handle;
    std::vector<std::string> names;
    for (int i = 0; i < n; ++i) {
        const char* id = services.component_id(handle, i);
        if (id == nullptr) throw RoutineError(fmt::format("component list {} gives no id for component {}", handle, i + 1));
        context->ids.push_back(id);
        names.emplace_back(id);
    }
    const char* method = services.list_option(handle, thermo::kMethodOption);
    const char* kij = services.list_option(handle, thermo::kInteractionOption);
    try {
        const thermo::Method m = method != nullptr ? thermo::ParseMethod(method) : thermo::Method::Ideal;
        context->model = thermo::PropertyModel::Create(thermo::MakeMixture(Database(), names, m, kij != nullptr ? kij : ""));
    } catch (const thermo::UnknownComponentError& e) {
        throw RoutineInputError(e.what());
    } catch (const thermo::PropertyError& e) {
        throw RoutineError(e.what());
    }
    context->equilibrium = std::make_unique<thermo::PhaseEquilibrium>(*context->model);
    context->first.Resize(n);
    context->second.Resize(n);
    context->z.assign(n, 0.0);
    context->z2.assign(n, 0.0);
    context->incipient.assign(n, 0.0);
    context->row.assign(n, 0.0);
    return context;
}

}  // namespace

ListContext& ContextFor(const DenseCall& call) {
    const zorexp_host_services* services = Services();
    if (services == nullptr || services->component_count == nullptr)
        throw RoutineError("the host attached no services, so the component list cannot be read");
    const int handle = *call.list;
    for (auto& context : g_contexts) {
        if (context->handle != handle) continue;
        if (StillValid(*context, *services)) return *context;
        context = Resolve(handle, *services);
        return *context;
    }
    g_contexts.push_back(Resolve(handle, *services));
    return *g_contexts.back();
}

void ForgetListContexts() { g_contexts.clear(); }

}  // namespace zx::routines
