#pragma once
// A console in the test's private folders with the program's menu bar, clicked as a user would.

#include <QtTest/QTest>
#include <chrono>
#include <memory>
#include <string>

#include "app/main_menu_bar.h"
#include "console/qem_util_test.h"
#include "platform/open_file_dialog.h"
#include "platform/run_loop.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace qem_test {

class ConsoleTest : public TempEnvTest {
 protected:
  void SetUp() override {
    platform::DesktopApplication::Instance()->MenuBar(main_menu_bar());
    console = std::make_unique<qem_util_test>();
  }
  void TearDown() override {
    platform::OpenFileDialog::AnswerForTests(nullptr);
    // A copy that Launch started goes with the console's lock, before its folders go.
    console.reset();
    EXPECT_TRUE(WaitUntil([] { return !LockHeld("alive.launched"); }, std::chrono::seconds(30)));
    platform::DesktopApplication::Instance()->MenuBar(nullptr);
  }
  static void Click(platform::DesktopUIControl& control) {
    QTest::mouseClick(control.Widget(), Qt::LeftButton);
  }
  // The box is clicked on its square, which lies at its left.
  void ClickLockBox() {
    QTest::mouseClick(console->cb_stay_alive_key().Widget(), Qt::LeftButton, {}, QPoint(5, 10));
  }

  std::unique_ptr<qem_util_test> console;
};

}  // namespace qem_test
