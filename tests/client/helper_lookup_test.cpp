// Where a session finds the helper when it is given no path: the order of the places.

#include "client/helper_lookup.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/temp_env.h"

namespace {

namespace fs = std::filesystem;
using qem_client::find_helper;
using qem_client::helper_places;

class HelperLookup : public qem_test::TempEnvTest {
 protected:
  // A folder in the test's own, with a file "qem_util" in it when `with_helper`.
  std::string Folder(const std::string& name, bool with_helper) {
    const fs::path folder = root() / name;
    fs::create_directories(folder);
    if (with_helper) qem_test::WriteFile(folder / "qem_util", "#!/bin/sh\n");
    return folder.string();
  }
};

TEST_F(HelperLookup, TakesTheFirstPlaceThatApplies) {
  const std::string program = Folder("program", true);
  const std::string bare = Folder("bare", false);
  const std::string installed = Folder("installed", true);
  const std::string other = Folder("other", true) + "/qem_util";
  const std::string gone = (root() / "gone" / "qem_util").string();
  const struct {
    const char* name;
    helper_places places;
    std::string found;
  } cases[] = {
      {"its own beside the program", {program, other, installed}, program + "/qem_util"},
      {"the named one when none is beside", {bare, other, installed}, other},
      {"the named one even when it is missing", {bare, gone, installed}, gone},
      {"the installed one when nothing is named", {bare, "", installed}, installed + "/qem_util"},
      {"the installed one when the program's folder is unknown",
       {"", "", installed},
       installed + "/qem_util"},
      {"none when the installed folder lacks it", {bare, "", bare}, ""},
      {"none when no place is known", {"", "", ""}, ""},
  };
  for (const auto& row : cases) EXPECT_EQ(find_helper(row.places), row.found) << row.name;
}

}  // namespace
