// The qem_channel tool as people and scripts use it: two processes round trip, and its exit
// statuses.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "channel_fixture.h"
#include "support/process.h"

namespace {

using namespace std::chrono_literals;

class QemChannelTest : public qem_test::ChannelTest {
 protected:
  // Runs the tool to its end; gives its exit status and keeps what it wrote.
  // With `size_limit`, no file may grow past that many bytes, as on a disk that is full.
  int Run(std::vector<std::string> args, const std::string& input = "", long long size_limit = 0) {
    args.insert(args.begin(), QEM_CHANNEL_TOOL);
    qem_test::WriteFile(root() / "in", input);
    int status = qem_test::Spawn(args, {root() / "in", root() / "out", root() / "err", size_limit})
                     .Wait(60s);
    out = qem_test::ReadFile(root() / "out");
    err = qem_test::ReadFile(root() / "err");
    return status;
  }
  // Starts a receiver in the background and waits until its lock file is there. The test never
  // probes the lock while the tool starts: a probe holds a free lock for a moment, and a
  // receiver that tried in that moment would find the channel taken.
  qem_test::Child StartReceiver(std::vector<std::string> args) {
    const std::string id = args.front();
    args.insert(args.begin(), {QEM_CHANNEL_TOOL, "receive"});
    auto child = qem_test::Spawn(args, {.stdout_path = Received()});
    EXPECT_TRUE(
        qem_test::WaitUntil([&] { return std::filesystem::exists(ReceiverLock(id)); }, 30s));
    return child;
  }
  std::filesystem::path Received() const { return root() / "received"; }
  // Waits until the background receiver has printed `text`, which proves it holds the channel.
  bool AwaitReceived(const std::string& text) {
    return qem_test::WaitUntil([&] { return qem_test::ReadFile(Received()) == text; }, 60s);
  }
  static int Lines(const std::string& text) {
    return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  }
  std::string out, err;
};

TEST_F(QemChannelTest, RoundTripBetweenTwoProcesses) {
  EXPECT_EQ(Run({"occupied", "ch"}), 1);
  auto receiving = StartReceiver({"ch", "--count", "3", "--timeout", "60"});
  const std::string json = "{\"obj_id\":\"p1\", \"text\":\"caf\xC3\xA9\"}";
  EXPECT_EQ(Run({"send", "ch", json}), 0);
  ASSERT_TRUE(AwaitReceived(json + "\n"));
  EXPECT_EQ(Run({"occupied", "ch"}), 0);
  // A second receiver gives up at once with one line; the first goes on.
  EXPECT_EQ(Run({"receive", "ch", "--timeout", "1"}), 3);
  EXPECT_EQ(Lines(err), 1);
  EXPECT_EQ(Run({"send", "ch"}, "two\nthree\n"), 0);  // one message per line of input
  EXPECT_EQ(receiving.Wait(60s), 0);
  EXPECT_EQ(qem_test::ReadFile(Received()), json + "\ntwo\nthree\n");
  EXPECT_EQ(Run({"occupied", "ch"}), 1);
}

TEST_F(QemChannelTest, PurgeNulEndingsAndRecordsBeyondTheCountArePutBack) {
  EXPECT_EQ(Run({"send", "ch", "stale"}), 0);
  auto receiving = StartReceiver({"ch", "--purge", "-0", "--count", "1", "--timeout", "60"});
  ASSERT_TRUE(qem_test::WaitUntil([&] { return !std::filesystem::exists(Data("ch")); }, 60s));
  EXPECT_EQ(Run({"send", "ch"}, "first\nsecond\n\nfourth\n"), 0);
  EXPECT_EQ(receiving.Wait(60s), 0);
  EXPECT_EQ(qem_test::ReadFile(Received()), std::string("first\0", 6));
  // What the tool took beyond its count waits for the next receiver, in order.
  EXPECT_EQ(Run({"receive", "ch", "--count", "3", "--timeout", "60"}), 0);
  EXPECT_EQ(out, "second\n\nfourth\n");
}

TEST_F(QemChannelTest, AWriteThatFailsPartWayLeavesNoPartOfItsRecord) {
  const std::string first(4000, 'a');  // the file's size, and room for the one line on stderr
  EXPECT_EQ(Run({"send", "ch", first}), 0);
  // The second line's record crosses the limit: its write comes back short, then fails.
  EXPECT_EQ(Run({"send", "ch"}, "fits\n" + std::string(100, 'b') + "\n", 4050), 4);
  EXPECT_EQ(Lines(err), 1) << err;
  EXPECT_EQ(qem_test::ReadFile(Data("ch")), first + '\0' + "fits" + '\0');
}

TEST_F(QemChannelTest, BadUsageAndRefusedIdsExitWithTwoAndAQuietChannelTimesOut) {
  const std::vector<std::vector<std::string>> bad = {{},
                                                     {"listen", "ch"},
                                                     {"send", "ch", "one", "two"},
                                                     {"receive", "ch", "--count", "0"},
                                                     {"receive", "ch", "--timeout", "soon"},
                                                     {"send", "a/b", "x"},
                                                     {"receive", ".."},
                                                     {"occupied", "../ch"}};
  for (const auto& args : bad) {
    SCOPED_TRACE(testing::PrintToString(args));
    EXPECT_EQ(Run(args), 2);
    EXPECT_EQ(Lines(err), 1);
    EXPECT_EQ(out, "");
  }
  EXPECT_TRUE(std::filesystem::is_empty(prefs())) << "a refused id touches no file";
  EXPECT_EQ(Run({"receive", "quiet", "--timeout", "0.3"}), 0);  // a quiet channel times out
  EXPECT_EQ(out, "");
  EXPECT_EQ(Run({"--help"}), 0);
  EXPECT_EQ(err, "");
}

}  // namespace
