#include "zorexp/routine_loader.hpp"

#include <dlfcn.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "zorexp/routine_library.h"
#include "zorexp/status.hpp"

namespace fs = std::filesystem;

namespace {

std::string Lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// Every library loaded in this process, never unloaded: procedures keep their entry points.
struct Registry {
    std::mutex mutex;
    std::vector<std::unique_ptr<VX_RoutineLibrary>> libraries;
    std::unordered_map<std::string, VX_RoutineLibrary*> byName;   // lower-case name
    std::unordered_map<std::string, VX_RoutineLibrary*> byPath;   // canonical path
};

Registry& TheRegistry() {
    static Registry* r = new Registry;   // never destroyed: libraries outlive static teardown
    return *r;
}

// The ZOREXP_ROUTINE_PATH entries, split at ':'.
std::vector<std::string> PathEntries() {
    std::vector<std::string> out;
    const char* value = std::getenv(VX_ROUTINE_PATH_VARIABLE);
    if (!value) return out;
    std::string entry;
    for (const char* p = value;; ++p) {
        if (*p == ':' || *p == '\0') {
            out.push_back(entry);
            entry.clear();
            if (*p == '\0') break;
        } else {
            entry += *p;
        }
    }
    return out;
}

// lib<name>.so in dir, matched without regard to case; the exact spelling wins over others.
std::string FindInDirectory(const std::string& dir, const std::string& name) {
    const std::string file = "lib" + name + ".so";
    std::error_code ec;
    if (fs::is_regular_file(fs::path(dir) / file, ec)) return (fs::path(dir) / file).string();
    const std::string wanted = Lower(file);
    std::string found;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string candidate = it->path().filename().string();
        if (Lower(candidate) != wanted || !fs::is_regular_file(it->path(), ec)) continue;
        // Several spellings in one directory: take the first in byte order, so the choice never
        // depends on the order the file system lists them in.
        if (found.empty() || it->path().string() < found) found = it->path().string();
    }
    return found;
}

std::string SearchedText() {
    std::string text = "searched: ";
    const auto dirs = VX_RoutineSearchPath();
    for (std::size_t i = 0; i < dirs.size(); ++i) text += (i ? ", " : "") + dirs[i];
    if (dirs.empty()) text += "(no directory)";
    const auto ignored = VX_IgnoredRoutinePathEntries();
    if (!ignored.empty()) {
        text += std::string(" (ignored ") + VX_ROUTINE_PATH_VARIABLE + " entries, not absolute: ";
        for (std::size_t i = 0; i < ignored.size(); ++i) text += (i ? ", \"" : "\"") + ignored[i] + "\"";
        text += ")";
    }
    return text;
}

VX_RoutineLookup Failure(int status, std::string why) {
    VX_RoutineLookup out;
    out.status = status;
    out.why = std::move(why) + "; " + SearchedText();
    return out;
}

// Loads the file at path once; the record says whether the library reported an interface.
VX_RoutineLibrary* LoadFile(Registry& r, const std::string& name, const std::string& path, std::string& why) {
    std::error_code ec;
    const std::string canonical = fs::canonical(path, ec).string();
    const std::string key = ec ? path : canonical;
    if (auto it = r.byPath.find(key); it != r.byPath.end()) return it->second;
    dlerror();
    void* handle = dlopen(key.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* e = dlerror();
        why = key + " cannot be loaded: " + (e ? e : "unknown error");
        return nullptr;
    }
    auto lib = std::make_unique<VX_RoutineLibrary>();
    lib->name = name;
    lib->path = key;
    lib->handle = handle;
    if (auto iface = reinterpret_cast<zorexp_routine_interface_function*>(dlsym(handle, "zorexp_routine_interface")))
        lib->interfaceVersion = iface();
    if (lib->interfaceVersion > 0)
        if (auto attach = reinterpret_cast<zorexp_routine_attach_function*>(dlsym(handle, "zorexp_routine_attach")))
            attach(VX_RoutineHostServices());
    VX_RoutineLibrary* made = lib.get();
    r.libraries.push_back(std::move(lib));
    r.byPath.emplace(key, made);
    return made;
}

}  // namespace

std::string VX_OwnRoutineDirectory() {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&VX_OwnRoutineDirectory), &info) || !info.dli_fname) return {};
    std::error_code ec;
    const fs::path self = fs::canonical(info.dli_fname, ec);
    if (ec) return {};
    return (self.parent_path() / VX_ROUTINE_DIRECTORY_NAME).string();
}

std::vector<std::string> VX_RoutineSearchPath() {
    std::vector<std::string> dirs;
    for (const std::string& e : PathEntries())
        if (!e.empty() && fs::path(e).is_absolute()) dirs.push_back(e);
    if (std::string own = VX_OwnRoutineDirectory(); !own.empty()) dirs.push_back(own);
    return dirs;
}

std::vector<std::string> VX_IgnoredRoutinePathEntries() {
    std::vector<std::string> ignored;
    for (const std::string& e : PathEntries())
        if (e.empty() || !fs::path(e).is_absolute()) ignored.push_back(e);
    return ignored;
}

VX_RoutineLookup VX_FindRoutine(const char* name, int version, const char* entry) {
    Registry& r = TheRegistry();
    std::lock_guard<std::mutex> lock(r.mutex);
    const std::string wanted = name ? name : "";
    VX_RoutineLibrary* lib = nullptr;
    if (auto it = r.byName.find(Lower(wanted)); it != r.byName.end()) {
        lib = it->second;
    } else {
        std::string path;
        for (const std::string& dir : VX_RoutineSearchPath())
            if (!(path = FindInDirectory(dir, wanted)).empty()) break;
        if (path.empty()) return Failure(VX_E_ROUTINE_LIBRARY_MISSING, "lib" + wanted + ".so not found");
        std::string why;
        lib = LoadFile(r, wanted, path, why);
        if (!lib) return Failure(VX_E_ROUTINE_LIBRARY_REFUSED, why);
        r.byName.emplace(Lower(wanted), lib);
    }
    if (lib->interfaceVersion <= 0)
        return Failure(VX_E_ROUTINE_LIBRARY_REFUSED, lib->path + " does not export zorexp_routine_interface");
    if (lib->interfaceVersion < version)
        return Failure(VX_E_ROUTINE_LIBRARY_REFUSED, lib->path + " reports routine interface " +
                                                         std::to_string(lib->interfaceVersion) + ", the declaration needs " +
                                                         std::to_string(version));
    VX_RoutineLookup out;
    out.library = lib;
    if (entry) {
        dlerror();
        out.entry = dlsym(lib->handle, entry);
        if (!out.entry) return Failure(VX_E_ROUTINE_ENTRY_MISSING, lib->path + " has no entry point \"" + entry + "\"");
    }
    out.status = VX_S_OK;
    return out;
}
