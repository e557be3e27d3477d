// qem_ctl end to end through pipes: lines in, commands on the channel, replies out, a bad line
// reported by its number while the rest goes on, and the helper ended at the end of input.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>
#include <vector>

#include "channel/many_to_one_sender.h"
#include "client_fixture.h"

namespace {

using namespace std::chrono_literals;
using qem_test::Kept;
using qem_test::LockHeld;
using qem_test::WaitUntil;
using qem_test::Wakeups;

class QemCtl : public qem_test::ClientTest {
 protected:
  // Starts qem_ctl with the arguments, its standard input a FIFO that Feed() writes to and
  // EndInput() closes.
  Kept Start(std::vector<std::string> args) {
    const auto fifo = root() / "in.fifo";
    ::mkfifo(fifo.c_str(), 0600);
    args.insert(args.begin(), QEM_CTL_PATH);
    Kept ctl(args, root(), "ctl", {.stdin_path = fifo.string()});
    input_.open(fifo);  // once qem_ctl has opened its end
    EXPECT_TRUE(input_.is_open());
    return ctl;
  }
  void Feed(const std::string& lines) { EXPECT_TRUE(input_ << lines << std::flush); }
  void EndInput() { input_.close(); }
  static long Lines(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

 private:
  std::ofstream input_;
};

TEST_F(QemCtl, LinesAreSentRepliesPrintedAWaitHoldsTheNextLineBackAndBadLinesAreCounted) {
  auto ctl = Start({"--helper=" + StandIn(), "--name=t"});
  Feed(
      "create p1 style=3 title=\"Copying\"\n"
      "frobnicate p1\n"
      "{\"obj_id\":\"p1\",\"cmd\":\"set\",\"progress\":0.5}\n"
      "wait p9 timeout=0.2\n"
      "wait p1\n"
      "create p2 style=1\n");
  ASSERT_TRUE(WaitUntil([&] { return Lines(ctl.Err()) == 2 && Lines(Received()) == 2; }, 60s))
      << ctl.Err();
  auto replies = std::make_shared<many_to_one::sender>("t.reply", log_file::make_null());
  replies->op()->write(R"({"obj_id":"p0","cmd":"pressed","btn_id":"a"})");
  ASSERT_TRUE(WaitUntil([&] { return Lines(ctl.Out()) == 1; }, 60s));
  // p0's reply is no reply of p1: the next line stays back (given a second to go wrong), and
  // qem_ctl sleeps meanwhile: its threads are hardly woken.
  const auto before = Wakeups(ctl.pid());
  EXPECT_FALSE(WaitUntil([&] { return Lines(Received()) > 2; }, 1s)) << Received();
  const auto after = Wakeups(ctl.pid());
  if (before && after) {
    EXPECT_LE(*after - *before, 5) << "woken while it waits";
  }
  replies->op()->write(R"({"obj_id":"p1","cmd":"pressed","btn_id":"b"})");
  ASSERT_TRUE(WaitUntil([&] { return Lines(Received()) == 3; }, 60s)) << Received();
  EXPECT_EQ(ctl.Out(), R"({"obj_id":"p0","cmd":"pressed","btn_id":"a"}
{"obj_id":"p1","cmd":"pressed","btn_id":"b"}
)");
  // A line that comes while qem_ctl sleeps on its input wakes it; the last needs no line break.
  Feed("delete p2");
  EndInput();
  EXPECT_EQ(ctl.Wait(60s), 1) << ctl.Err();
  EXPECT_EQ(Received(),
            R"({"obj_id":"p1","cmd":"create","type":"wprogress","title":"Copying","style":3}
{"obj_id":"p1","cmd":"set","progress":0.5}
{"obj_id":"p2","cmd":"create","type":"wprogress","style":1}
{"obj_id":"p2","cmd":"delete"}
)");
  const std::string err = ctl.Err();
  EXPECT_EQ(Lines(err), 2) << err;
  EXPECT_NE(err.find("qem_ctl: line 2: unknown command \"frobnicate\""), std::string::npos) << err;
  EXPECT_NE(err.find("qem_ctl: line 4: no reply from p9"), std::string::npos) << err;
  EXPECT_FALSE(LockHeld("t.up"));
}

TEST_F(QemCtl, UsageVersionAndLaunchFailuresHaveTheirOwnStatusAndOneLine) {
  const struct {
    const char* name;
    std::vector<std::string> args;
    int status;
    std::string says;  // in the one line on stderr, or on stdout when the status is 0
  } cases[] = {
      {"unknown option", {QEM_CTL_PATH, "--frob"}, 2, "unknown or incomplete option \"--frob\""},
      {"name that leaves its folder", {QEM_CTL_PATH, "--name=a/b"}, 2, "\"/\""},
      {"missing helper",
       {QEM_CTL_PATH, "--helper=" + (root() / "nothing").string()},
       3,
       "is missing"},
      {"version", {QEM_CTL_PATH, "--version"}, 0, "qem_ctl " QEM_VERSION "\n"},
      {"help", {QEM_CTL_PATH, "--help"}, 0, "Exit status"},
  };
  for (const auto& row : cases) {
    const auto ran = qem_test::Run(row.args, root());
    EXPECT_EQ(ran.status, row.status) << row.name;
    const std::string told = row.status == 0 ? ran.out : ran.err;
    EXPECT_EQ(Lines(told) == 1, row.says != "Exit status") << row.name << ": " << told;
    EXPECT_NE(told.find(row.says), std::string::npos) << row.name << ": " << told;
  }
}

}  // namespace
