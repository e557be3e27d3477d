#pragma once
// A private folder for one test or benchmark run. While the object lives, HOME, XDG_CONFIG_HOME
// (the preferences folder), TMPDIR (the temporary folder) and XDG_RUNTIME_DIR point into it, so
// that a run never meets a real lock or channel, nor another run's; child processes inherit the
// same. The variables are restored and the folder removed when the object goes.

#include <filesystem>
#include <memory>
#include <vector>

#include "support/scoped_env.h"

namespace qem_test {

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

}  // namespace qem_test
