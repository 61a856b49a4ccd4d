#include "plugin_library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "host.h"

namespace tarvo::host {
namespace {

namespace fs = std::filesystem;

// A copy of a file under a name of its own. It is removed when this goes, since an open library needs no name.
class TemporaryCopy {
public:
    explicit TemporaryCopy(const std::string& path)
        : path_((fs::temp_directory_path() / "tarvo-plugin-XXXXXX").string()) {
        const int file = mkstemp(path_.data());
        if (file < 0) throw HostError("cannot make a copy of " + path);
        close(file);
        std::error_code failed;
        fs::copy_file(path, path_, fs::copy_options::overwrite_existing, failed);
        if (failed) {
            remove();
            throw HostError("cannot copy " + path + ": " + failed.message());
        }
    }
    ~TemporaryCopy() { remove(); }
    TemporaryCopy(const TemporaryCopy&) = delete;
    TemporaryCopy& operator=(const TemporaryCopy&) = delete;

    const std::string& path() const { return path_; }

private:
    void remove() {
        std::error_code ignored;
        fs::remove(path_, ignored);
    }
    std::string path_;
};

std::string last_error() {
    const char* text = dlerror();
    return text ? text : "unknown error";
}

void* open_library(const std::string& path, int flags) {
    // The path is made absolute, since a name without a folder would be searched for in the system's folders.
    void* library = dlopen(fs::absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL | flags);
    if (!library) throw HostError("cannot load " + path + ": " + last_error());
    return library;
}

}  // namespace

PluginLibrary::PluginLibrary(const std::string& path, bool private_copy)
    : library_(private_copy ? open_library(TemporaryCopy(path).path(), 0) : open_library(path, RTLD_NODELETE)),
      entry_(reinterpret_cast<REALpluginMain>(dlsym(library_, kREALpluginMainName))) {
    if (entry_) return;
    dlclose(library_);
    throw HostError(path + " is no plugin: it has no " + kREALpluginMainName);
}

PluginLibrary::~PluginLibrary() { dlclose(library_); }

}  // namespace tarvo::host
