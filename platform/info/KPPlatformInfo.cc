#include "platform/info/KPPlatformInfo.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "platform/base/KpSettings.h"
#include "platform/net/MangleHostName.h"

namespace {

// -1: follow the environment; 0/1: set by setServiceProcess().
std::atomic<int> g_serviceOverride{-1};
// What the environment said: -1 not read yet, else 0/1. Read once: the question is asked on
// every call of the library, and a process does not change its role.
std::atomic<int> g_serviceByEnvironment{-1};

std::string Setting(const char* section, const char* key, const std::string& fallback = "") {
  std::string v;
  return KpSettings::Instance().GetString(section, key, &v) && !v.empty() ? v : fallback;
}

std::string MachineHostName() {
  char buf[256] = {};
  if (::gethostname(buf, sizeof buf - 1) != 0) return "localhost";
  return buf;
}

int CopyOut(const std::string& s, char* buffer, unsigned int size) {
  if (!buffer || size == 0) return 0;
  size_t n = std::min<size_t>(s.size(), size - 1);
  std::memcpy(buffer, s.data(), n);
  buffer[n] = '\0';
  return static_cast<int>(n);
}

}  // namespace

std::string KPPI_Focus::getFocus() {
  const char* env = std::getenv("APPMGR_FOCUS");
  if (env && *env) return env;
  return Setting("Platform", "sFocus", "Instance001");
}

bool KPPI_Focus::AmIAService() {
  int o = g_serviceOverride.load(std::memory_order_relaxed);
  if (o >= 0) return o == 1;
  int e = g_serviceByEnvironment.load(std::memory_order_relaxed);
  if (e < 0) {
    const char* env = std::getenv("APPMGR_PROCESS_ROLE");
    e = env && std::strcmp(env, "service") == 0 ? 1 : 0;
    g_serviceByEnvironment.store(e, std::memory_order_relaxed);
  }
  return e == 1;
}

void KPPI_Focus::setServiceProcess(bool isService) {
  g_serviceOverride.store(isService ? 1 : 0, std::memory_order_relaxed);
}

void KPPI_Focus::resetServiceProcess() {
  g_serviceOverride.store(-1, std::memory_order_relaxed);
  g_serviceByEnvironment.store(-1, std::memory_order_relaxed);
}

unsigned long KPPI_Base::getPlatformType() const {
  unsigned long bits = KPPI_PLATFORM_CLIENT;
  KpSettings::Instance().GetNumber("Platform", "nPlatformType", &bits);
  return bits;
}

bool KPPI_Base::invalidKPPlatform() const {
  // Settings handed over in the overlay alone (appmgrctl --host) describe a platform too.
  const KpSettings& settings = KpSettings::Instance();
  return !settings.FileRead() && !settings.OverlayRead();
}

void KPPI_ControlhostRecord::setFocus(const std::string& focus) {
  KPPI_Base::setFocus(focus);
  hostName_ = Setting("Controlhost", "sHOSTNAME");
  if (hostName_.empty() && isControlhost_) hostName_ = KPPlatformInfo(focus).getPhysicalMachine();
}

std::string KPPlatformInfo::getPhysicalMachine() const {
  return Setting("Platform", "sPhysicalMachine", MachineHostName());
}

int KPPlatformInfo::getControlhosterClientName(char* buffer, unsigned int size) const {
  return CopyOut(Setting("Platform", "sClientName", getPhysicalMachine()), buffer, size);
}

int KPPlatformInfo::findControlhosterClientName(char* buffer, unsigned int size) const {
  std::string name = Setting("Controlhost", "sCLIENTNAME");
  if (name.empty() && (getPlatformType() & KPPI_PLATFORM_CONTROLHOST)) {
    name = Setting("Platform", "sClientName", getPhysicalMachine());
  }
  if (name.empty() || !buffer || size == 0) return 0;
  CopyOut(name, buffer, size);
  return 1;
}

bool KPPlatformInfo::getString(const std::string& section, const std::string& key,
                               std::string* out) const {
  return KpSettings::Instance().GetString(section, key, out);
}

bool KPPlatformInfo::getNumber(const std::string& section, const std::string& key,
                               unsigned long* out) const {
  return KpSettings::Instance().GetNumber(section, key, out);
}

KPClient::KPClient(int which) : which_(which) {}

std::string KPClient::getNetworkHostnameMangled() const {
  const std::string focus = KPPI_Focus::getFocus();
  KPPlatformInfo info(focus);
  char client[257] = {};
  if (which_ != kControlhost) {
    info.getControlhosterClientName(client, 256);
    return MangleHostName(info.getPhysicalMachine(), client, 8400, 8402);
  }
  KPPI_Controlhoster self;
  KPPI_Fleetmember member;
  KPPI_ControlhostRecord& record =
      (info.getPlatformType() & KPPI_PLATFORM_CONTROLHOST) ? static_cast<KPPI_ControlhostRecord&>(self)
                                                          : member;
  record.setFocus(focus);
  const char* host = record.getControlhosterHostName();
  info.findControlhosterClientName(client, 256);
  return MangleHostName(host ? host : "", client, 8400, 8402);
}

int KPClient::getInstallDirectory(std::string& folder, int kind, void* /*reserved*/) const {
  (void)kind;  // only the base folder (1) is kept
  std::string dir = which_ == kControlhost ? Setting("Controlhost", "sINSTALLDIRECTORY")
                                           : Setting("Platform", "sInstallDirectory");
  if (dir.empty()) return 1;
  folder = dir;
  return 0;
}

bool KpFeatureCache::IsFeatureEnabled(const std::string& name) const {
  unsigned long v = 0;
  return KpSettings::Instance().GetNumber("Features", name, &v) && v != 0;
}
