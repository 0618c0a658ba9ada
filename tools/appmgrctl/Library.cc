#include "tools/appmgrctl/Library.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "appmgr/AppMgrVersion.h"

#ifndef APPMGRCTL_LIBDIR_FROM_BINDIR
#define APPMGRCTL_LIBDIR_FROM_BINDIR "../lib"
#endif

namespace appmgrctl {

namespace {

namespace fs = std::filesystem;

// The runtime file, which a runtime package ships; the unversioned name belongs to the
// development package.
constexpr const char* kLibraryName = APPMGRNET_SONAME;
constexpr const char* kLibraryVariable = "APPMGR_LIBRARY";

std::string DlError() {
  const char* text = dlerror();
  return text ? text : "unknown dynamic loader error";
}

// Looks up `name`; false with *error set when the library does not export it.
template <class Fn>
bool Resolve(void* handle, const std::string& path, const char* name, Fn* out, std::string* error) {
  dlerror();  // a null symbol is only an error when dlerror says so
  void* symbol = dlsym(handle, name);
  if (const char* text = dlerror()) {
    *error = path + " does not export " + name + ": " + text;
    return false;
  }
  if (!symbol) {
    *error = path + " exports " + name + " as a null symbol";
    return false;
  }
  *out = reinterpret_cast<Fn>(symbol);
  return true;
}

// The folder of the running program, or empty when /proc cannot tell.
fs::path ProgramFolder() {
  std::error_code ec;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  return ec ? fs::path() : exe.parent_path();
}

}  // namespace

void Library::Closer::operator()(void* handle) const {
  if (handle) dlclose(handle);
}

std::vector<Library::Candidate> Library::Candidates(const std::string& libOption) {
  if (!libOption.empty()) return {{libOption, "--lib", true}};
  if (const char* env = std::getenv(kLibraryVariable); env && *env) {
    return {{env, kLibraryVariable, true}};
  }
  std::vector<Candidate> candidates;
  if (fs::path folder = ProgramFolder(); !folder.empty()) {
    fs::path installed = (folder / APPMGRCTL_LIBDIR_FROM_BINDIR / kLibraryName).lexically_normal();
    candidates.push_back({installed.string(), "the install prefix", false});
    fs::path buildTree = (folder / ".." / "interfaces" / kLibraryName).lexically_normal();
    candidates.push_back({buildTree.string(), "the build tree", false});
  }
  candidates.push_back({kLibraryName, "the loader's search path", true});
  return candidates;
}

std::unique_ptr<Library> Library::Load(const std::vector<Candidate>& candidates,
                                       std::string* error) {
  std::string skipped;
  for (const Candidate& candidate : candidates) {
    std::error_code ec;
    if (!candidate.required && !fs::exists(candidate.path, ec)) {
      skipped += "; not found in " + candidate.where + ": " + candidate.path;
      continue;
    }
    // RTLD_NODELETE: dlclose releases the handle but leaves the library mapped until the process
    // ends. Its session pool, message cache and log sink are process-wide objects that are
    // never destroyed by design; unmapping the code and globals under them would leave them
    // unreachable (a leak report under LeakSanitizer) and would pull code from under any thread
    // the library still runs.
    void* handle = dlopen(candidate.path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!handle) {
      *error = "cannot load " + candidate.path + " (from " + candidate.where + "): " + DlError() +
               skipped;
      return nullptr;
    }
    std::unique_ptr<Library> lib(new Library());
    lib->path_ = candidate.path;
    lib->handle_.reset(handle);
    const std::string& path = lib->path_;
    if (!Resolve(handle, path, "getLibraryInterface", &lib->getLibraryInterface_, error) ||
        !Resolve(handle, path, "EnableClientMessageCache", &lib->enableClientMessageCache_,
                 error) ||
        !Resolve(handle, path, "EnableServerSideMessageCache", &lib->enableServerSideMessageCache_,
                 error) ||
        !Resolve(handle, path, "GetDataInPreInstallMode", &lib->getDataInPreInstallMode_, error) ||
        !Resolve(handle, path, "CleanClientSessionPool", &lib->cleanClientSessionPool_, error) ||
        !Resolve(handle, path, "TerminateClientSessions", &lib->terminateClientSessions_, error) ||
        !Resolve(handle, path, "GetClientLibraryStatistics", &lib->getClientLibraryStatistics_,
                 error)) {
      return nullptr;
    }
    // What was loaded, for --version: the loader's full name of the file, and the version the
    // library reports (a library from before GetClientLibraryVersion reports none).
    lib->file_ = path;
    if (link_map* map = nullptr;
        dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && map && map->l_name && *map->l_name) {
      lib->file_ = map->l_name;
    }
    dlerror();
    if (auto version = reinterpret_cast<AppMgrGetClientLibraryVersionFn>(
            dlsym(handle, "GetClientLibraryVersion"))) {
      if (const char* text = version()) lib->version_ = text;
    }
    lib->setFileTransferProgressCallback_ = reinterpret_cast<AppMgrSetFileTransferProgressCallbackFn>(
        dlsym(handle, "SetFileTransferProgressCallback"));
    if (lib->Object<BSInterface>(APPMGR_INTERFACE_BACKUP_SET) == nullptr) {
      *error = path + ": getLibraryInterface(" + std::to_string(APPMGR_INTERFACE_BACKUP_SET) +
               ") made no backup-set interface";
      return nullptr;
    }
    return lib;
  }
  *error = "cannot find " + std::string(kLibraryName) + skipped;
  return nullptr;
}

Library::~Library() {
  // Explicit, though member order already guarantees it: the objects go before their code.
  for (Owned& object : objects_) object.reset();
}

}  // namespace appmgrctl
