// The services the runtime offers routine libraries (zorexp_host_services): the components and
// options of the calling model's component list, and a channel for messages. A list handle is the
// list's position in the current session's component lists plus 1; 0 means no list.
#include <cctype>
#include <string>

#include "zorexp/routine_library.h"
#include "zorexp/routine_loader.hpp"
#include "zorexp/session.hpp"

namespace {

const VX_ComponentListData* ListOf(int handle) {
    const auto& lists = VX_Session::Current().ComponentLists();
    if (handle <= 0 || static_cast<std::size_t>(handle) > lists.size()) return nullptr;
    return &lists[static_cast<std::size_t>(handle - 1)];
}

int ComponentCount(int list) {
    const VX_ComponentListData* l = ListOf(list);
    return l && l->components ? static_cast<int>(l->components->Size()) : 0;
}

const char* ComponentId(int list, int index) {
    const VX_ComponentListData* l = ListOf(list);
    if (!l || !l->components || index < 0 || static_cast<std::size_t>(index) >= l->components->Size()) return nullptr;
    return l->components->At(static_cast<std::size_t>(index)).c_str();
}

const char* ListOption(int list, const char* option) {
    const VX_ComponentListData* l = ListOf(list);
    if (!l || !option) return nullptr;
    std::string key(option);
    for (char& c : key) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    auto it = l->options.find(key);
    return it == l->options.end() ? nullptr : it->second.String();
}

thread_local std::string t_routineError;
thread_local bool t_routineErrorPending = false;

void Report(int severity, const char* routine, const char* message) {
    std::string text = std::string(routine ? routine : "routine") + ": " + (message ? message : "");
    if (severity == ZOREXP_REPORT_ERROR) {
        t_routineError = std::move(text);
        t_routineErrorPending = true;
    } else {
        VX_Session::Current().AddNote(std::move(text));
    }
}

int SolutionMode() { return ZOREXP_SOLUTION_STEADY_STATE; }

const zorexp_host_services kServices{ZOREXP_HOST_SERVICES_VERSION, ComponentCount, ComponentId, ListOption, Report,
                                     SolutionMode};

}  // namespace

const zorexp_host_services* VX_RoutineHostServices() { return &kServices; }

bool VX_RoutineErrorPending() { return t_routineErrorPending; }

std::string VX_TakeRoutineError() {
    t_routineErrorPending = false;
    std::string taken;
    taken.swap(t_routineError);
    return taken;
}
