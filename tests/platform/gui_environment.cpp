// The application object for in-process widget tests: made once before the first test of the
// executable, gone after the last. Linked into each GUI test executable.

#include <gtest/gtest.h>

#include <memory>

#include "platform/run_loop.h"

namespace {

struct GuiEnvironment : ::testing::Environment {
  void SetUp() override { app = std::make_unique<platform::DesktopApplication>(argc, argv); }
  void TearDown() override { app.reset(); }
  int argc = 1;
  char name[16] = "qem_gui_test";
  char* argv[2] = {name, nullptr};
  std::unique_ptr<platform::DesktopApplication> app;
};

[[maybe_unused]] ::testing::Environment* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new GuiEnvironment);

}  // namespace
