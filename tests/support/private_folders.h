#pragma once
// A private folder for one test or benchmark run, and the environment that points into it.

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace qem_test {

// Sets an environment variable (or removes it, for nullptr) for the life of the object; child
// processes started meanwhile see the change.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) saved_ = old, had_ = true;
    value ? ::setenv(name, value, 1) : ::unsetenv(name);
  }
  ~ScopedEnv() { had_ ? ::setenv(name_, saved_.c_str(), 1) : ::unsetenv(name_); }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  const char* name_;
  std::string saved_;
  bool had_ = false;
};

// While the object lives, HOME, XDG_CONFIG_HOME (the preferences folder), TMPDIR (the temporary
// folder) and XDG_RUNTIME_DIR point into a folder of its own, so that a run never meets a real
// lock or channel, nor another run's; child processes inherit the same. The variables are
// restored and the folder removed when the object goes.
class PrivateFolders {
 public:
  // Makes the folder under the current temporary folder; aborts the run if it can't.
  PrivateFolders();
  ~PrivateFolders();
  PrivateFolders(const PrivateFolders&) = delete;
  PrivateFolders& operator=(const PrivateFolders&) = delete;

  const std::filesystem::path& root() const { return root_; }
  std::filesystem::path tmp() const { return root_ / "tmp"; }
  std::filesystem::path prefs() const { return root_ / "config"; }
  std::filesystem::path runtime() const { return root_ / "runtime"; }

 private:
  std::filesystem::path root_;
  std::vector<std::unique_ptr<ScopedEnv>> environment_;
};

// The whole content of a file, or "<missing>" when it can't be read.
std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& content);

}  // namespace qem_test
