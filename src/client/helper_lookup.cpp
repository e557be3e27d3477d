#include "client/helper_lookup.h"

#include <cstdlib>
#include <filesystem>

#include "platform/system.h"

#ifndef QEM_INSTALL_BINDIR
#error "QEM_INSTALL_BINDIR: the build gives the installation's bin/ folder"
#endif

namespace qem_client {

namespace {

constexpr const char* kHelper = "qem_util";

// "qem_util" in `folder` when `folder` is known and the file exists, else "".
std::string HelperIn(const std::string& folder) {
  if (folder.empty()) return "";
  const auto path = std::filesystem::path(folder) / kHelper;
  std::error_code error;
  return std::filesystem::exists(path, error) ? path.string() : "";
}

}  // namespace

helper_places helper_places::of_this_process() {
  helper_places places;
  const std::string self = platform::System::ExecutablePath();
  if (!self.empty()) places.beside = std::filesystem::path(self).parent_path().string();
  if (const char* named = std::getenv(kHelperVariable)) places.named = named;
  places.installed = QEM_INSTALL_BINDIR;
  return places;
}

std::string find_helper(const helper_places& places) {
  if (std::string beside = HelperIn(places.beside); !beside.empty()) return beside;
  if (!places.named.empty()) return places.named;
  return HelperIn(places.installed);
}

std::string not_found(const helper_places& places) {
  const std::string beside = places.beside.empty() ? "the program's folder is unknown"
                                                   : "not beside the program in " + places.beside;
  return std::string(kHelper) + " was not found: " + beside + ", " + kHelperVariable +
         " is not set, not in " + places.installed;
}

}  // namespace qem_client
