// The application object for in-process widget tests: made once before the first test of the
// executable, gone after the last. Linked into each GUI test executable.

#include <gtest/gtest.h>

#include <memory>

#include "platform/run_loop.h"

namespace {

class GuiEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    application_ = std::make_unique<platform::DesktopApplication>(argc_, argv_);
  }
  void TearDown() override { application_.reset(); }

 private:
  int argc_ = 1;
  char name_[16] = "qem_gui_test";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<platform::DesktopApplication> application_;
};

[[maybe_unused]] ::testing::Environment* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new GuiEnvironment);

}  // namespace
