#pragma once
// The model library loaded the way a host loads it: by path, entries found by name.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

class LoadedLibrary {
public:
    // The library as built, loaded once for the whole test run.
    static LoadedLibrary& Shared() {
        static LoadedLibrary* lib = new LoadedLibrary(VX_MODEL_LIBRARY_PATH);
        return *lib;
    }

    // A private copy of the library with module state of its own, all zero as after a host's
    // first load. Each copy stays mapped until the process ends.
    static LoadedLibrary FreshCopy() {
        char path[] = "/tmp/morvanex_frame_XXXXXX.so";
        const int fd = mkstemps(path, 3);
        if (fd < 0) throw std::runtime_error("cannot make a temporary file");
        close(fd);
        std::filesystem::copy_file(VX_MODEL_LIBRARY_PATH, path, std::filesystem::copy_options::overwrite_existing);
        LoadedLibrary lib(path);
        std::filesystem::remove(path);
        return lib;
    }

    template <class Fn>
    Fn Function(const std::string& name) const { return reinterpret_cast<Fn>(Symbol(name)); }

    void* Symbol(const std::string& name) const {
        void* p = dlsym(m_handle, name.c_str());
        if (!p) throw std::runtime_error("no export " + name);
        return p;
    }

private:
    explicit LoadedLibrary(const char* path) : m_handle(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        if (!m_handle) throw std::runtime_error(std::string("cannot load ") + path + ": " + dlerror());
    }
    void* m_handle;
};
