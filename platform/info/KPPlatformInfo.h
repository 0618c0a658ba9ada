// Platform information: what this machine is, what its Controlhost is called, and the settings
// store, as the platform's KPPI_* classes, KPPlatformInfo, KPClient and KpFeatureCache offer it.
//
// Every answer comes from the settings store (platform/base/KpSettings.h); docs/settings.md
// lists the keys. The "focus" names the installation instance a caller asks about; one settings
// file describes one instance, so the focus is carried and reported but selects nothing.
//
// Whether the current process is a service: the environment variable APPMGR_PROCESS_ROLE set
// to "service" (services' unit files set it), or KPPI_Focus::setServiceProcess(true) called by
// the program itself, which wins over the environment. The environment is read at the first
// question (and again after resetServiceProcess()), not on every one.
//
// Thread-safety: objects are cheap, per-call and not shared; the static functions may be called
// from any thread.
#pragma once

#include <string>

// Platform type bits ([Platform] nPlatformType).
enum : unsigned long {
  KPPI_PLATFORM_CONTROLHOST = 0x1,  // the Controlhost machine itself
  KPPI_PLATFORM_STORENODE = 0x2,    // a Storenode
  KPPI_PLATFORM_CLIENT = 0x4,       // any other client
};

class KPPI_Focus {
 public:
  // The installation instance: APPMGR_FOCUS, else [Platform] sFocus, else "Instance001".
  static std::string getFocus();
  // True when this process is a service (see the header comment).
  static bool AmIAService();
  // Same question under the name some callers use.
  static bool IsAServer() { return AmIAService(); }
  // Declares the process a service (true) or not (false), overriding the environment.
  static void setServiceProcess(bool isService);
  // Forgets a setServiceProcess() override and what the environment said (tests).
  static void resetServiceProcess();
};

// Base of the platform classes: a focus and the platform type bits.
class KPPI_Base {
 public:
  virtual ~KPPI_Base() = default;
  virtual void setFocus(const std::string& focus) { focus_ = focus; }
  const std::string& focus() const { return focus_; }
  // [Platform] nPlatformType; KPPI_PLATFORM_CLIENT when unset.
  unsigned long getPlatformType() const;
  // True when the platform is unknown: no settings file could be read.
  bool invalidKPPlatform() const;

 protected:
  std::string focus_;
};

class KPPI_EventManager : public KPPI_Base {};

// The Controlhost host name as each kind of machine knows it. The returned pointer stays valid
// until the object is destroyed or focused again; null when unknown.
class KPPI_ControlhostRecord : public KPPI_Base {
 public:
  void setFocus(const std::string& focus) override;
  const char* getControlhosterHostName() const { return hostName_.empty() ? nullptr : hostName_.c_str(); }

 protected:
  explicit KPPI_ControlhostRecord(bool isControlhost) : isControlhost_(isControlhost) {}

 private:
  bool isControlhost_;
  std::string hostName_;
};

// On the Controlhost: its own host name ([Controlhost] sHOSTNAME, else the physical machine).
class KPPI_Controlhoster : public KPPI_ControlhostRecord {
 public:
  KPPI_Controlhoster() : KPPI_ControlhostRecord(true) {}
};
// On a Storenode or any other client: [Controlhost] sHOSTNAME, null when unset.
class KPPI_Storenode : public KPPI_ControlhostRecord {
 public:
  KPPI_Storenode() : KPPI_ControlhostRecord(false) {}
};
class KPPI_Fleetmember : public KPPI_ControlhostRecord {
 public:
  KPPI_Fleetmember() : KPPI_ControlhostRecord(false) {}
};

class KPPlatformInfo : public KPPI_Base {
 public:
  KPPlatformInfo() = default;
  explicit KPPlatformInfo(const std::string& focus) { setFocus(focus); }

  unsigned long getKPPlatformType() const { return getPlatformType(); }
  // [Platform] sPhysicalMachine, else the host name of the machine.
  std::string getPhysicalMachine() const;
  // This Controlhost's own client name ([Platform] sClientName, else the physical machine),
  // copied with at most size-1 characters and terminated. Answers the length copied.
  int getControlhosterClientName(char* buffer, unsigned int size) const;
  // The Controlhost's client name from this machine's record ([Controlhost] sCLIENTNAME; on the
  // Controlhost itself its own client name). Non-zero when found; the buffer is then filled
  // and terminated, and left untouched otherwise.
  int findControlhosterClientName(char* buffer, unsigned int size) const;

  // The settings store. Absent keys leave *out untouched and answer false.
  bool getString(const std::string& section, const std::string& key, std::string* out) const;
  bool getNumber(const std::string& section, const std::string& key, unsigned long* out) const;
};

// A client record. KPClient(2) describes the Controlhost of this machine; KPClient(1) this
// machine itself.
class KPClient {
 public:
  enum : int { kThisMachine = 1, kControlhost = 2 };
  explicit KPClient(int which);

  // The connect string of the client's machine: MangleHostName(host, client, 8400, 8402).
  std::string getNetworkHostnameMangled() const;
  // Install directory ([Controlhost] sINSTALLDIRECTORY for the Controlhost, [Platform]
  // sInstallDirectory for this machine). `kind` 1 asks for the base folder, the only kind kept.
  // Returns 0 and fills `folder`; non-zero and leaves it untouched when not configured.
  int getInstallDirectory(std::string& folder, int kind, void* reserved) const;

 private:
  int which_;
};

// Feature switches: [Features] <name> = 1 enables a feature.
class KpFeatureCache {
 public:
  explicit KpFeatureCache(const std::string& focus) : focus_(focus) {}
  bool IsFeatureEnabled(const std::string& name) const;

 private:
  std::string focus_;
};
