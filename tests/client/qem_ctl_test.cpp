// qem_ctl end to end through pipes: lines in, commands on the channel, replies out, a bad line
// reported by its number while the rest goes on, and the helper ended at the end of input or on
// a signal.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "channel/many_to_one_sender.h"
#include "client_fixture.h"
#include "support/process.h"

namespace {

using namespace std::chrono_literals;
using qem_test::Child;
using qem_test::ReadFile;
using qem_test::Spawn;
using qem_test::WaitUntil;

class QemCtl : public qem_test::ClientTest {
 protected:
  // Starts qem_ctl with the arguments, standard input from `input` (a file or a FIFO).
  Child Start(std::vector<std::string> args, const std::string& input) {
    args.insert(args.begin(), QEM_CTL_PATH);
    return Spawn(args, {.stdin_path = input,
                        .stdout_path = (root() / "out.txt").string(),
                        .stderr_path = (root() / "err.txt").string()});
  }
  Child Run(std::vector<std::string> args, const std::string& lines) {
    const auto input = root() / "in.txt";
    qem_test::WriteFile(input, lines);
    return Start(std::move(args), input.string());
  }
  std::string Out() { return ReadFile(root() / "out.txt"); }
  std::string Err() { return ReadFile(root() / "err.txt"); }
  static long Lines(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }
};

TEST_F(QemCtl, ShortFormAndJsonAreSentAndABadLineIsToldByItsNumber) {
  auto ctl = Run({"--helper=" + StandIn()},
                 "create p1 style=3 title=\"Copying\"\n"
                 "frobnicate p1\n"
                 "{\"obj_id\":\"p1\",\"cmd\":\"set\",\"progress\":0.5}\n"
                 "# a comment, then a blank line\n"
                 "\n"
                 "wait p9 timeout=0.2\n"
                 "delete p1");  // the last line needs no line break
  EXPECT_EQ(ctl.Wait(60s), 1) << Err();
  EXPECT_EQ(Received(),
            R"({"obj_id":"p1","cmd":"create","type":"wprogress","title":"Copying","style":3})"
            "\n"
            R"({"obj_id":"p1","cmd":"set","progress":0.5})"
            "\n"
            R"({"obj_id":"p1","cmd":"delete"})"
            "\n");
  const std::string err = Err();
  EXPECT_EQ(Lines(err), 2) << err;
  EXPECT_NE(err.find("qem_ctl: line 2: unknown command \"frobnicate\""), std::string::npos) << err;
  EXPECT_NE(err.find("qem_ctl: line 6: no reply from p9"), std::string::npos) << err;
  EXPECT_EQ(Out(), "");
}

TEST_F(QemCtl, RepliesArePrintedAWaitHoldsTheNextLineBackAndASignalEndsAll) {
  const auto fifo = root() / "in.fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  auto ctl = Start({"--helper=" + StandIn(), "--name=t"}, fifo.string());
  const int writer = ::open(fifo.c_str(), O_WRONLY);  // input stays open: only the signal ends it
  ASSERT_GE(writer, 0);
  const std::string lines = "wait p1\ncreate p2 style=1\n";
  ASSERT_EQ(::write(writer, lines.data(), lines.size()), static_cast<ssize_t>(lines.size()));
  ASSERT_TRUE(WaitUntil([] { return Held("t.up"); }, 60s)) << Err();
  auto replies = std::make_shared<many_to_one::sender>("t.reply", log_file::make_null());
  replies->op()->write(R"({"obj_id":"p0","cmd":"pressed","btn_id":"a"})");
  ASSERT_TRUE(WaitUntil([&] { return Lines(Out()) == 1; }, 60s));
  // p0's reply is no reply of p1: the next line stays back (given a second to go wrong), and
  // qem_ctl sleeps meanwhile: its threads are hardly woken.
  const auto before = Wakeups(ctl.pid());
  EXPECT_FALSE(WaitUntil([&] { return !Received().empty(); }, 1s)) << Received();
  const auto after = Wakeups(ctl.pid());
  if (before && after) {
    EXPECT_LE(*after - *before, 5) << "woken while it waits";
  }
  replies->op()->write(R"({"obj_id":"p1","cmd":"pressed","btn_id":"b"})");
  ASSERT_TRUE(WaitUntil([&] { return !Received().empty(); }, 60s));
  EXPECT_EQ(Out(),
            "{\"obj_id\":\"p0\",\"cmd\":\"pressed\",\"btn_id\":\"a\"}\n"
            "{\"obj_id\":\"p1\",\"cmd\":\"pressed\",\"btn_id\":\"b\"}\n");
  // A line that comes while qem_ctl sleeps on its input wakes it.
  const std::string later = "delete p2\n";
  ASSERT_EQ(::write(writer, later.data(), later.size()), static_cast<ssize_t>(later.size()));
  ASSERT_TRUE(WaitUntil([&] { return Lines(Received()) == 2; }, 60s)) << Received();
  EXPECT_EQ(Received(),
            "{\"obj_id\":\"p2\",\"cmd\":\"create\",\"type\":\"wprogress\",\"style\":1}\n"
            "{\"obj_id\":\"p2\",\"cmd\":\"delete\"}\n");
  ctl.Kill(SIGTERM);
  EXPECT_EQ(ctl.Wait(60s), 128 + SIGTERM) << Err();
  EXPECT_FALSE(Held("t.up"));
  ::close(writer);
}

TEST_F(QemCtl, EndOfInputEndsTheRealHelperOnceItHasTakenEveryCommand) {
  // qem_ctl finds the helper beside itself. A style it can't use makes the helper name the
  // window on its stderr, which qem_ctl passes on: proof that the command reached it.
  auto ctl = Run({"--name=t"},
                 "{\"obj_id\":\"w1\",\"cmd\":\"create\",\"type\":\"wprogress\",\"style\":{}}\n"
                 "delete w1\n");
  EXPECT_EQ(ctl.Wait(60s), 0) << Err();
  EXPECT_NE(Err().find("qem_util: wProgress \"w1\""), std::string::npos) << Err();
  EXPECT_FALSE(Held("t.up"));
  EXPECT_TRUE(Listing(tmp()).empty());
}

TEST_F(QemCtl, UsageVersionAndLaunchFailuresHaveTheirOwnStatusAndOneLine) {
  const struct {
    const char* name;
    std::vector<std::string> args;
    int status;
    std::string says;  // in the one line on stderr, or on stdout when the status is 0
  } cases[] = {
      {"unknown option", {"--frob"}, 2, "unknown or incomplete option \"--frob\""},
      {"name that leaves its folder", {"--name=a/b"}, 2, "\"/\""},
      {"missing helper", {"--helper=" + (root() / "nothing").string()}, 3, "is missing"},
      {"version", {"--version"}, 0, "qem_ctl " QEM_VERSION "\n"},
  };
  for (const auto& row : cases) {
    auto ctl = Run(row.args, "");
    EXPECT_EQ(ctl.Wait(60s), row.status) << row.name;
    const std::string told = row.status == 0 ? Out() : Err();
    EXPECT_EQ(Lines(told), 1) << row.name << ": " << told;
    EXPECT_NE(told.find(row.says), std::string::npos) << row.name << ": " << told;
  }
  auto help = Run({"--help"}, "");
  EXPECT_EQ(help.Wait(60s), 0);
  EXPECT_NE(Out().find("Exit status"), std::string::npos);
}

}  // namespace
