#include "model_library.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "errors.hpp"

namespace zorexp_cli {
namespace {

constexpr const char* kLibraryFile = "libMorvanex220_1.so";
constexpr const char* kLibraryVariable = "ZOREXP_MODEL_LIBRARY";
constexpr std::uintptr_t kRecordVersion = 3;

std::filesystem::path ExecutableDirectory() {
    std::error_code ec;
    const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::filesystem::current_path() : exe.parent_path();
}

// Where the library is looked for, in order: the path the user names, otherwise the library
// folder of the installation and the host's own folder.
std::vector<std::string> Candidates() {
    if (const char* named = std::getenv(kLibraryVariable); named && *named) return {named};
    const auto dir = ExecutableDirectory();
    return {(dir / ".." / "lib" / kLibraryFile).lexically_normal().string(), (dir / kLibraryFile).string()};
}

}  // namespace

ModelLibrary& ModelLibrary::Instance() {
    static ModelLibrary* library = [] {
        auto* made = new ModelLibrary;
        made->Load();
        made->Initialize();
        return made;
    }();
    return *library;
}

void ModelLibrary::Load() {
    std::string tried;
    for (const std::string& path : Candidates()) {
        dlerror();
        if (void* h = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
            m_handle = h;
            m_path = path;
            return;
        }
        const char* why = dlerror();
        tried += (tried.empty() ? "" : "; ") + path + ": " + (why ? why : "unknown error");
    }
    throw HostFailure(std::string("cannot load the model library (set ") + kLibraryVariable +
                      " to its path); tried " + tried);
}

void ModelLibrary::Initialize() {
    using InitializeFn = std::int32_t (*)(InitializationRecord*);
    dlerror();
    auto init = reinterpret_cast<InitializeFn>(dlsym(m_handle, "KRInitialize"));
    if (!init) {
        const char* why = dlerror();
        throw HostFailure("model library " + m_path + " has no KRInitialize: " + (why ? why : "not exported"));
    }
    m_record = InitializationRecord{kRecordVersion, 0, &m_options, &m_service};
    if (init(&m_record) != 1)
        throw HostFailure("model library " + m_path + " refused initialisation (record version " +
                          std::to_string(kRecordVersion) + ")");
}

ModelLibrary::Factory ModelLibrary::FindFactory(const std::string& typeName) const {
    const std::string symbol = typeName + "Factory";
    return reinterpret_cast<Factory>(dlsym(m_handle, symbol.c_str()));
}

}  // namespace zorexp_cli
