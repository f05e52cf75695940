#include "platform/base/Module.h"

#include <dlfcn.h>

#include <filesystem>

#include "platform/base/Error.h"

namespace platform {

void* moduleFunction(const std::string& name, const char* function) {
    Dl_info here{};
    ::dladdr(reinterpret_cast<void*>(&moduleFunction), &here);
    const auto file = std::filesystem::path(here.dli_fname).parent_path() / ("lib" + name + ".so");
    void* const module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const found = module ? ::dlsym(module, function) : nullptr;
    if (!found) throw Error(ErrorKind::Failed, ::dlerror());
    return found;
}

}  // namespace platform
