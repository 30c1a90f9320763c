#include "property_services.hpp"

#include <dlfcn.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "list_context.hpp"

namespace zx::routines {
namespace {

const zorexp_host_services* g_services = nullptr;
std::unique_ptr<thermo::ComponentDatabase> g_database;
std::vector<std::pair<const void*, const void*>> g_said;  // (entry, key) noted in this solve
std::vector<unsigned char> g_said_ranges;                 // per database component: RangeNote bits

std::filesystem::path InstallPrefix() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&InstallPrefix), &info) == 0 || info.dli_fname == nullptr) return {};
    // <prefix>/lib/routines/lib<Name>.so
    return std::filesystem::absolute(info.dli_fname).parent_path().parent_path().parent_path();
}

void Report(int severity, const char* entry, const std::string& message) {
    if (g_services != nullptr && g_services->report != nullptr) g_services->report(severity, entry, message.c_str());
}

}  // namespace

void AttachServices(const zorexp_host_services* services) {
    g_services = services;
    StartSolve();
}

const zorexp_host_services* Services() { return g_services; }

const thermo::ComponentDatabase& Database() {
    if (!g_database) {
        const std::filesystem::path file = thermo::DatabasePath(InstallPrefix());
        try {
            g_database = std::make_unique<thermo::ComponentDatabase>(thermo::ComponentDatabase::Load(file));
        } catch (const thermo::DatabaseError& e) {
            throw RoutineError(e.what());
        }
        g_said_ranges.assign(g_database->Components().size(), 0);
    }
    return *g_database;
}

void StartSolve() {
    g_said.clear();
    std::fill(g_said_ranges.begin(), g_said_ranges.end(), 0);
    ForgetListContexts();
}

void ReportError(const char* entry, const std::string& message) { Report(ZOREXP_REPORT_ERROR, entry, message); }

void NoteOnce(const char* entry, const void* key, const std::string& message) {
    const std::pair<const void*, const void*> said{entry, key};
    if (std::find(g_said.begin(), g_said.end(), said) != g_said.end()) return;
    g_said.push_back(said);
    Report(ZOREXP_REPORT_NOTE, entry, message);
}

void NoteRanges(const char* entry, const char* routine, const thermo::Mixture& mixture, const unsigned char* notes) {
    for (std::size_t i = 0; i < mixture.Size(); ++i) {
        if (notes[i] == 0) continue;
        unsigned char& said = g_said_ranges[mixture.indices[i]];
        const unsigned fresh = notes[i] & ~said;
        if (fresh == 0) continue;
        said |= static_cast<unsigned char>(fresh);
        std::vector<const char*> what;
        if (fresh & thermo::kNoteHeatCapacity) what.push_back("ideal-gas heat capacity");
        if (fresh & thermo::kNoteVapourPressure) what.push_back("vapour pressure");
        if (fresh & thermo::kNoteLiquidVolume) what.push_back("saturated-liquid density");
        if (fresh & thermo::kNoteHeatOfVaporisation) what.push_back("heat of vaporisation");
        Report(ZOREXP_REPORT_NOTE, entry,
               fmt::format("{}: {} of {} extrapolated beyond the correlation's range", routine, fmt::join(what, ", "), mixture.Id(i)));
    }
}

}  // namespace zx::routines
