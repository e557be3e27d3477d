#pragma once
// Shared by the console tests: a console in the test's private folders with the menu bar of the
// program, clicks and keys as the user makes them, and a probe of a lock that disturbs no
// holder for long.

#include <QtTest/QTest>
#include <memory>
#include <string>

#include "app/main_menu_bar.h"
#include "channel/lock_file.h"
#include "console/qem_util_test.h"
#include "platform/open_file_dialog.h"
#include "platform/run_loop.h"
#include "support/temp_env.h"

namespace qem_test {

class ConsoleTest : public TempEnvTest {
 protected:
  void SetUp() override {
    TempEnvTest::SetUp();
    platform::DesktopApplication::Instance()->MenuBar(main_menu_bar());
    console = std::make_unique<qem_util_test>();
  }
  void TearDown() override {
    platform::OpenFileDialog::AnswerForTests(nullptr);
    console.reset();
    platform::DesktopApplication::Instance()->MenuBar(nullptr);
    TempEnvTest::TearDown();
  }

  static void Click(platform::DesktopUIControl& control) {
    QTest::mouseClick(control.Widget(), Qt::LeftButton);
  }
  // The box is clicked on its square, which lies at its left.
  void ClickLockBox() {
    QTest::mouseClick(console->cb_stay_alive_key().Widget(), Qt::LeftButton, {}, QPoint(5, 10));
  }
  // Types UTF-8 text key by key; letters beyond ASCII arrive as a keyboard layout sends them.
  static void Type(platform::DesktopUIControl& control, const char* text) {
    for (QChar ch : QString::fromUtf8(text)) {
      if (ch.unicode() < 0x80) {
        QTest::keyClick(control.Widget(), ch.toLatin1());
      } else {
        QTest::sendKeyEvent(QTest::Click, control.Widget(), Qt::Key_unknown, QString(ch), {});
      }
    }
  }
  // True when somebody holds the lock: our own attempt fails.
  static bool Occupied(const std::string& name) {
    return lock_file::make(name, log_file::make_null()) == nullptr;
  }

  std::unique_ptr<qem_util_test> console;
};

}  // namespace qem_test
