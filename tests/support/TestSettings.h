// TestSettings: a private settings file and log directory for one test.
//
// Creates a temporary folder, writes settings.ini there (the given INI text, plus an
// [EventManager] section that points the log into the folder at the given debug level unless
// the text sets those keys itself), points the process's settings store at it and reconfigures
// the event log. The destructor puts the previous settings file back and removes the folder.
#pragma once

#include <string>

class TestSettings {
 public:
  explicit TestSettings(const std::string& ini = "", int debugLevel = 10);
  ~TestSettings();
  TestSettings(const TestSettings&) = delete;
  TestSettings& operator=(const TestSettings&) = delete;

  // Replaces the file's text and re-reads it (and the log configuration).
  void Write(const std::string& ini);

  const std::string& dir() const { return dir_; }
  std::string path() const { return dir_ + "/settings.ini"; }
  std::string logDir() const { return dir_ + "/log"; }

 private:
  std::string dir_;
  std::string previousPath_;
  int debugLevel_;
};

// Reads a whole file; empty when it cannot be read.
std::string ReadFileText(const std::string& path);
