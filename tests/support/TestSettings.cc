#include "tests/support/TestSettings.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "platform/base/EvDebug.h"
#include "platform/base/KpSettings.h"

TestSettings::TestSettings(const std::string& ini, int debugLevel) : debugLevel_(debugLevel) {
  std::string tmpl = (std::filesystem::temp_directory_path() / "appmgr-test-XXXXXX").string();
  if (!mkdtemp(tmpl.data())) throw std::runtime_error("mkdtemp failed");
  dir_ = tmpl;
  previousPath_ = KpSettings::Instance().Path();
  Write(ini);
}

TestSettings::~TestSettings() {
  KpSettings::Instance().Load(previousPath_);
  EvLog::ConfigureFromSettings();
  std::error_code ec;
  std::filesystem::remove_all(dir_, ec);
}

void TestSettings::Write(const std::string& ini) {
  std::string text = ini;
  KpSettings::Parsed parsed = KpSettings::Parse(ini, "test");
  bool hasLevel = parsed.values.count("eventmanager\nndebuglevel") > 0;
  bool hasDir = parsed.values.count("eventmanager\nslogdirectory") > 0;
  // A later [EventManager] section adds to the one the test wrote, if any.
  text += "\n[EventManager]\n";
  if (!hasLevel) text += "nDebugLevel = " + std::to_string(debugLevel_) + "\n";
  if (!hasDir) text += "sLogDirectory = " + logDir() + "\n";
  std::ofstream(path(), std::ios::trunc) << text;
  KpSettings::Instance().Load(path());
  EvLog::ConfigureFromSettings();
}

std::string ReadFileText(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::ostringstream ss;
  ss << f.rdbuf();
  return ss.str();
}
