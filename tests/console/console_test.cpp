// The console window: its controls as the developer sees them, the stay-alive box, Start and
// Send on a real channel, Browse, and closing, which ends the run.

#include <gtest/gtest.h>

#include <QApplication>
#include <QPixmap>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <vector>

#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "console_fixture.h"
#include "platform/documents_folder.h"
#include "platform/run_loop.h"

namespace {

using Console = qem_test::ConsoleTest;

TEST_F(Console, ShowsItsControlsInTheirPlacesAndTabsThroughThemInOrder) {
  EXPECT_EQ(console->Title(), "qem_util_test");
  EXPECT_EQ(console->Widget()->size(), QSize(600, 400));
  EXPECT_TRUE(console->Frame()->isVisible());
  auto& c = *console;
  // In the order of creation, which is the tab order.
  const struct {
    const platform::DesktopUIControl* control;
    QRect place;
    std::string text, expected;
  } rows[] = {
      {&c.tfstay_alive_key(), {124, 20, 220, 22}, c.tfstay_alive_key().Text(), ""},
      {&c.Label1(), {12, 20, 100, 20}, c.Label1().Text(), "stay_alive_key"},
      {&c.cb_stay_alive_key(), {364, 20, 100, 20}, c.cb_stay_alive_key().Caption(), "lock"},
      {&c.Label2(), {12, 54, 100, 20}, c.Label2().Text(), "channel"},
      {&c.tfchannel(), {124, 54, 220, 22}, c.tfchannel().Text(), ""},
      {&c.Label3(), {12, 88, 100, 20}, c.Label3().Text(), "exe"},
      {&c.tfpath(), {124, 86, 220, 22}, c.tfpath().Text(), ""},
      {&c.pblaunch(), {459, 86, 80, 22}, c.pblaunch().Caption(), "Launch"},
      {&c.pbbrowse(), {364, 86, 80, 22}, c.pbbrowse().Caption(), "Browse"},
      {&c.pbstart(), {364, 54, 80, 22}, c.pbstart().Caption(), "Start"},
      {&c.TextArea1(), {20, 150, 444, 230}, c.TextArea1().Text(), ""},
      {&c.pbsend(), {476, 258, 80, 22}, c.pbsend().Caption(), "Send"},
  };
  std::vector<QWidget*> focusable;
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const auto& row = rows[i];
    EXPECT_EQ(row.control->Widget()->geometry(), row.place) << "row " << i;
    EXPECT_EQ(row.text, row.expected) << "row " << i;
    EXPECT_TRUE(row.control->Visible() && row.control->Enabled()) << "row " << i;
    if (row.control->Widget()->focusPolicy() & Qt::TabFocus) {
      focusable.push_back(row.control->Widget());
    }
  }
  EXPECT_FALSE(c.cb_stay_alive_key().Value());

  // Tab goes through the controls that take the focus in the order of the table, and round.
  console->Frame()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(console->Frame()));
  ASSERT_GE(focusable.size(), 4u);  // the fields and the area at least
  focusable.front()->setFocus();
  for (std::size_t i = 1; i <= focusable.size(); ++i) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), focusable[i % focusable.size()]) << i;
  }

  // The whole window in use, for the README when $QEM_SCREENSHOT_DIR is set.
  c.tfstay_alive_key().Text("alive");
  c.cb_stay_alive_key().Value(true);
  c.tfchannel().Text("cmd");
  c.tfpath().Text("/usr/local/bin/qem_util");
  c.TextArea1().Text(
      "{\"obj_id\":\"p1\",\"cmd\":\"create\",\"type\":\"wprogress\",\"style\":3,\n"
      " \"title\":\"Copying\",\"message\":\"Step 1\",\"progress\":0.25,\n"
      " \"btn_spec\":[{\"id\":\"stop\",\"text\":\"Stop\"}]}");
  if (const char* dir = std::getenv("QEM_SCREENSHOT_DIR")) {
    console->Frame()->grab().save(QString::fromStdString(std::string(dir) + "/console.png"));
  }
}

TEST_F(Console, TheBoxHoldsTheStayAliveLockWhileCheckedAndNeverAnotherHolders) {
  Type(console->tfstay_alive_key(), "alive");
  ClickLockBox();
  EXPECT_TRUE(Occupied("alive"));
  ClickLockBox();
  EXPECT_FALSE(Occupied("alive"));

  // Held elsewhere: the box stays checked and holds nothing, and clearing it lets go of nothing.
  auto other = lock_file::make("alive", log_file::make_null());
  ClickLockBox();
  EXPECT_TRUE(console->cb_stay_alive_key().Value());
  ClickLockBox();
  other.reset();
  EXPECT_FALSE(Occupied("alive"));
  ClickLockBox();
  EXPECT_TRUE(Occupied("alive")) << "the box takes the lock again once it is free";
}

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
  Type(console->tfchannel(), "good");
  Click(console->pbstart());  // a refused Start must not leave this sender for Send
  auto& key = console->tfstay_alive_key();
  auto& channel = console->tfchannel();
  const struct {
    platform::DesktopTextField* field;
    std::string name;
  } rows[] = {{&key, victim.string()},
              {&key, "../victim"},
              {&key, ""},
              {&channel, "x.dir/../../victim"},
              {&channel, ".."}};
  for (const auto& row : rows) {
    row.field->Text(row.name);
    testing::internal::CaptureStderr();
    if (row.field == &key) {
      ClickLockBox();  // checked, holding nothing; cleared, deleting nothing
      ClickLockBox();
    } else {
      Click(console->pbstart());
      Click(console->pbsend());
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), row.field == &key ? 1 : 2) << said;
    EXPECT_NE(said.find("\"" + row.name + "\" refused"), std::string::npos) << said;
  }
  EXPECT_EQ(tree(), before);
  EXPECT_EQ(qem_test::ReadFile(victim), "keep");
}

TEST_F(Console, SendDeliversTheTextAsOneMessageThroughTheSenderOfTheLastStart) {
  auto one = many_to_one::receiver::make("one", log_file::make_null());
  auto two = many_to_one::receiver::make("two", log_file::make_null());
  Type(console->tfchannel(), "one");
  // Before any Start, the sender is made for the channel field. Written as it stands...
  const std::string written = "{\"obj_id\":\"p1\",\r\n\t\"message\":\"caf\xC3\xA9 \\\"1\\\"\"}";
  console->TextArea1().Text(written);
  Click(console->pbsend());
  // ...and typed, with a line end and letters beyond ASCII, after the field changed: still "one".
  console->tfchannel().Text("two");
  console->TextArea1().Text("");
  Type(console->TextArea1(), "{\"cmd\":\"set\",");
  QTest::keyClick(console->TextArea1().Widget(), Qt::Key_Return);
  Type(console->TextArea1(), "\"title\":\"\xC3\xA9t\xC3\xA9\"}");
  const std::string typed = "{\"cmd\":\"set\",\n\"title\":\"\xC3\xA9t\xC3\xA9\"}";
  Click(console->pbsend());
  Click(console->pbstart());
  Click(console->pbsend());
  EXPECT_EQ(one->op()->read(), written);
  EXPECT_EQ(one->op()->read(), typed);
  EXPECT_EQ(one->op()->read(), "");
  EXPECT_EQ(two->op()->read(), typed);
  EXPECT_EQ(console->TextArea1().Text(), typed);
}

TEST_F(Console, BrowseSetsThePathFromTheDialogAndACancelLeavesIt) {
  for (auto answer : {std::optional(platform::FolderItem("/opt/qem_util")),
                      std::optional<platform::FolderItem>()}) {
    std::optional<platform::OpenFileDialog> shown;
    platform::OpenFileDialog::AnswerForTests([&](const platform::OpenFileDialog& dialog) {
      shown = dialog;
      return answer;
    });
    Click(console->pbbrowse());
    EXPECT_EQ(console->tfpath().Text(), "/opt/qem_util");  // the cancel leaves it
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->Title, "Select qem_util.exe");
    EXPECT_EQ(shown->InitialFolder.Path(), platform::SpecialFolder::Documents().Path());
  }
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
