// The console window: the stay-alive box, Start and Send on a real channel, Browse, Launch with
// a real copy of the helper, and closing, which ends the run.

#include <gtest/gtest.h>

#include <QTimer>
#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "console_fixture.h"

namespace {

using namespace std::chrono_literals;
using Console = qem_test::ConsoleTest;
using qem_test::LockHeld;

TEST_F(Console, TheBoxHoldsTheStayAliveLockWhileCheckedAndNeverAnotherHolders) {
  // That clearing the box lets go of its lock is shown by Launch's copy quitting.
  console->tfstay_alive_key().Text("alive");
  // Held elsewhere: the box stays checked and holds nothing, and clearing it lets go of nothing.
  auto other = lock_file::make("alive", log_file::make_null());
  ClickLockBox();
  EXPECT_TRUE(console->cb_stay_alive_key().Value());
  ClickLockBox();
  other.reset();
  EXPECT_FALSE(LockHeld("alive"));
  ClickLockBox();
  EXPECT_TRUE(LockHeld("alive")) << "the box takes the lock again once it is free";
}

// Names are refused where they become paths; one row of each field shows the console wired in,
// and that a refused Start leaves no sender behind.
TEST_F(Console, NamesThatWouldLeaveTheirFolderGiveOneLineAndTouchNoFile) {
  // A file of the user's beside the folders, and a channel folder to climb out of.
  const auto victim = root() / "victim";
  qem_test::WriteFile(victim, "keep");
  std::make_shared<many_to_one::sender>("x", log_file::make_null())->op();
  auto tree = [&] {
    std::set<std::filesystem::path> paths;
    for (const auto& e : std::filesystem::recursive_directory_iterator(root())) paths.insert(e);
    return paths;
  };
  const auto before = tree();
  console->tfchannel().Text("good");
  Click(console->pbstart());  // a refused Start must not leave this sender for Send
  testing::internal::CaptureStderr();
  console->tfstay_alive_key().Text("../victim");
  ClickLockBox();  // checked, holding nothing; cleared, deleting nothing
  ClickLockBox();
  console->tfchannel().Text("x.dir/../../victim");
  Click(console->pbstart());
  Click(console->pbsend());
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 3) << said;
  for (std::string name : {"../victim", "x.dir/../../victim"}) {
    EXPECT_NE(said.find("\"" + name + "\" refused"), std::string::npos) << said;
  }
  EXPECT_EQ(tree(), before);
  EXPECT_EQ(qem_test::ReadFile(victim), "keep");
}

TEST_F(Console, SendDeliversTheTextAsOneMessageThroughTheSenderOfTheLastStart) {
  auto one = many_to_one::receiver::make("one", log_file::make_null());
  auto two = many_to_one::receiver::make("two", log_file::make_null());
  // Before any Start, the sender is made for the channel field; it stays when the field changes.
  console->tfchannel().Text("one");
  const std::string text = "{\"obj_id\":\"p1\",\r\n\t\"message\":\"caf\xC3\xA9 \\\"1\\\"\"}";
  console->TextArea1().Text(text);
  Click(console->pbsend());
  console->tfchannel().Text("two");
  Click(console->pbsend());
  Click(console->pbstart());
  Click(console->pbsend());
  EXPECT_EQ(one->op()->read(), text);
  EXPECT_EQ(one->op()->read(), text);
  EXPECT_EQ(one->op()->read(), "");
  EXPECT_EQ(two->op()->read(), text);
}

// The copy's lifetime is the helper's own; here it is shown that Launch starts nothing for a
// path that can't be started, and for the helper that Browse chose a copy that serves under the
// launch lock named after the stay-alive key until the box is cleared.
TEST_F(Console, LaunchStartsACopyThatServesUntilTheBoxIsClearedAndABadPathNothing) {
  console->tfstay_alive_key().Text("alive");
  ClickLockBox();
  console->tfchannel().Text("cmd");
  const struct {
    const char* path;
    std::string said;
  } cases[] = {
      {"qem_util", ""},  // no full path
      {"/no/such/qem_util",
       "qem_util: Cannot start /no/such/qem_util: No such file or directory\n"},
      {"/", "qem_util: Cannot start /: it is a folder\n"},
  };
  for (const auto& c : cases) {
    console->tfpath().Text(c.path);
    testing::internal::CaptureStderr();
    Click(console->pblaunch());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.said) << c.path;
  }
  platform::OpenFileDialog::AnswerForTests(
      [](const platform::OpenFileDialog&) { return platform::FolderItem(QEM_UTIL_PATH); });
  Click(console->pbbrowse());  // the path comes from Browse's dialog
  Click(console->pblaunch());
  ASSERT_TRUE(qem_test::WaitUntil([] { return LockHeld("alive.launched"); }, 30s));
  ClickLockBox();
  EXPECT_TRUE(qem_test::WaitUntil([] { return !LockHeld("alive.launched"); }, 30s));
}

TEST_F(Console, ClosingTheWindowEndsTheRunWithStatusZero) {
  QTimer::singleShot(0, console->Frame(), [this] { console->Frame()->close(); });
  QTimer never_closed;  // a console that doesn't end the run ends it with another status
  QObject::connect(&never_closed, &QTimer::timeout, [] { platform::Quit(99); });
  never_closed.start(20000);
  EXPECT_EQ(platform::DesktopApplication::Instance()->Run(), 0);
  EXPECT_TRUE(console->Closed());
}

}  // namespace
