// Library: libappmgrnet.so loaded the way any caller loads it, with dlopen, dlsym and the
// factory.
//
//   std::string error;
//   std::unique_ptr<Library> lib = Library::Load(Library::Candidates(libOption), &error);
//   if (!lib) { ...error names the file and holds dlerror's text... }
//   lib->backupSets().lookup(...);
//
// Where the library is looked for (Candidates), first match wins. It is always the file the
// runtime package ships, named by the SONAME (libappmgrnet.so.1), never the development link:
//   1. the path given with --lib;
//   2. else the path in the environment variable APPMGR_LIBRARY;
//   3. else the library beside this program's install prefix, PREFIX/LIBDIR/libappmgrnet.so.1
//      (appmgrctl in PREFIX/BINDIR, the relative way from one to the other fixed at build
//      time), when that file exists;
//   4. else <folder of this program>/../interfaces/libappmgrnet.so.1, when that file exists (the
//      build tree, where appmgrctl sits in tools/ beside interfaces/);
//   5. else "libappmgrnet.so.1" through the dynamic loader's own search (LD_LIBRARY_PATH, the
//      loader cache, the system folders).
// A path without a '/' (from 1 or 2) is also searched for by the loader, as dlopen does.
//
// Load resolves every exported function at once, so a library that is not a complete
// libappmgrnet.so is refused before anything is sent, and makes the backup-set object through
// getLibraryInterface. Object<I>(code) makes the object of any other code on first use and
// keeps it; every object is deleted through its interface class before the library is closed,
// since its code lives in the library. Closing releases the handle; the library itself stays
// mapped until the process ends (RTLD_NODELETE, see Load), because its process-wide state is
// made to live that long.
//
// Thread-safety: one thread uses a Library; the library's own functions are thread-safe.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "appmgr/AppMgrNet.h"
#include "appmgr/BSInterface.h"

namespace appmgrctl {

// Deletes an interface object of the library through its own interface class.
struct InterfaceDestroyer {
  void (*destroy)(void*) = nullptr;
  void operator()(void* object) const {
    if (destroy) destroy(object);
  }
};

class Library {
 public:
  // Where to look, in order (see above). `where` says, for messages, which rule named it.
  struct Candidate {
    std::string path;
    std::string where;
    // False for the build-tree guess: its absence is not an error, the next candidate is tried.
    bool required = true;
  };
  static std::vector<Candidate> Candidates(const std::string& libOption);

  // The first candidate that exists, loaded, with every export resolved and the backup-set
  // object made; null with *error saying what failed (file, symbol, and dlerror's text).
  static std::unique_ptr<Library> Load(const std::vector<Candidate>& candidates,
                                       std::string* error);

  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  // The path dlopen was given.
  const std::string& path() const { return path_; }
  // The file the loader actually mapped (the full path after a search).
  const std::string& file() const { return file_; }
  // The library's own version (GetClientLibraryVersion); empty when it does not tell.
  const std::string& version() const { return version_; }

  // The interface object of `code`, made on first use and owned by this Library (valid until
  // it is destroyed); null when the library makes none for the code. I must be the interface
  // class that belongs to the code.
  template <class I>
  I* Object(AppMgrInterfaceCode code) {
    const size_t slot = static_cast<size_t>(code);
    if (slot >= objects_.size()) return nullptr;
    if (!objects_[slot]) {
      objects_[slot] = Owned(static_cast<I*>(getLibraryInterface_(code)),
                             InterfaceDestroyer{[](void* p) { delete static_cast<I*>(p); }});
    }
    return static_cast<I*>(objects_[slot].get());
  }

  // The backup-set object, made at load.
  BSInterface& backupSets() { return *Object<BSInterface>(APPMGR_INTERFACE_BACKUP_SET); }

  // The exported functions of the library (include/appmgr/AppMgrNet.h).
  void EnableClientMessageCache(bool enable) { enableClientMessageCache_(enable ? 1 : 0); }
  int EnableServerSideMessageCache(unsigned long jobId) {
    return enableServerSideMessageCache_(jobId);
  }
  int GetDataInPreInstallMode(const std::string& host, std::string& url,
                              const std::string& hostClientName) {
    return getDataInPreInstallMode_(host, url, hostClientName);
  }
  int GetClientLibraryStatistics(AppMgrNetStatistics* out) {
    return getClientLibraryStatistics_(out);
  }
  // Follows the file puts of this process; false when the library cannot report them (an older
  // library without SetFileTransferProgressCallback, which is not required).
  bool SetFileTransferProgress(AppMgrFileProgressFn callback, void* context) {
    if (setFileTransferProgressCallback_ == nullptr) return false;
    setFileTransferProgressCallback_(callback, context);
    return true;
  }

 private:
  struct Closer {
    void operator()(void* handle) const;
  };

  Library() = default;

  using Owned = std::unique_ptr<void, InterfaceDestroyer>;

  std::string path_;
  std::string file_;
  std::string version_;
  // Declared before objects_, so it is destroyed after them: their destructors are code of the
  // library.
  std::unique_ptr<void, Closer> handle_;
  std::array<Owned, 17> objects_;  // by interface code

  AppMgrGetLibraryInterfaceFn getLibraryInterface_ = nullptr;
  AppMgrEnableClientMessageCacheFn enableClientMessageCache_ = nullptr;
  AppMgrEnableServerSideMessageCacheFn enableServerSideMessageCache_ = nullptr;
  AppMgrGetDataInPreInstallModeFn getDataInPreInstallMode_ = nullptr;
  // Resolved only to refuse an incomplete library; no command calls them.
  AppMgrVoidFn cleanClientSessionPool_ = nullptr;
  AppMgrVoidFn terminateClientSessions_ = nullptr;
  AppMgrGetClientLibraryStatisticsFn getClientLibraryStatistics_ = nullptr;
  AppMgrSetFileTransferProgressCallbackFn setFileTransferProgressCallback_ = nullptr;  // optional
};

}  // namespace appmgrctl
