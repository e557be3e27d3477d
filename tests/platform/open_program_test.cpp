// Starting a program: the parameter line becomes its arguments, and what can't run is refused
// with the path and the reason.

#include "platform/open_program.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "platform/exceptions.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace {

using namespace std::chrono_literals;
using OpenProgramTest = qem_test::TempEnvTest;

TEST_F(OpenProgramTest, StartsWithTheLineSplitAtBlanksAndRefusesWhatCantRun) {
  const auto a = root() / "a", b = root() / "b";
  platform::OpenProgram(platform::FolderItem("/usr/bin/touch"), a.string() + " " + b.string());
  EXPECT_TRUE(qem_test::WaitUntil(
      [&] { return std::filesystem::exists(a) && std::filesystem::exists(b); }, 20s));

  const auto data = root() / "data";
  qem_test::WriteFile(data, "not a program");
  const struct {
    const char* name;
    std::filesystem::path path;
    const char* reason;
  } cases[] = {
      {"missing", root() / "none", "No such file or directory"},
      {"folder", root(), "it is a folder"},
      {"not executable", data, "Permission denied"},
  };
  for (const auto& c : cases) {
    try {
      platform::OpenProgram(platform::FolderItem(c.path), "");
      ADD_FAILURE() << c.name << " started";
    } catch (const platform::IOException& error) {
      EXPECT_EQ(std::string(error.what()), "Cannot start " + c.path.string() + ": " + c.reason)
          << c.name;
    }
  }
}

}  // namespace
