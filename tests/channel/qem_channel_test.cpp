// The qem_channel tool as people and scripts use it: what each command prints, and its exit
// status. Its sending of many lines under load is the senders' part in channel_process_test.cpp.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "channel/many_to_one_receiver.h"
#include "channel_fixture.h"
#include "support/process.h"

namespace {

using QemChannelTest = qem_test::ChannelTest;

TEST_F(QemChannelTest, EachCommandPrintsWhatItShouldAndEndsWithItsStatus) {
  auto held = many_to_one::receiver::make("held", log_file::make_null());  // this test's own
  ASSERT_NE(held, nullptr);
  const std::string big(4000, 'a');  // the data file's size, and room for the line on stderr
  const struct {
    std::vector<std::string> args;
    int status;
    std::string out;
    std::string input = "";
    long long size_limit = 0;  // no file may grow past it, as on a disk that is full
  } rows[] = {
      {{"send", "ch", "caf\xC3\xA9"}, 0, ""},
      {{"send", "ch"}, 0, "", "two\n\nfour\n"},  // one message per line of input
      // What a receiver took beyond its count waits for the next one, in order.
      {{"receive", "ch", "--count", "2"}, 0, "caf\xC3\xA9\ntwo\n"},
      {{"receive", "ch", "-0", "--count", "2"}, 0, std::string("\0four\0", 6)},
      {{"send", "ch", "stale"}, 0, ""},
      {{"receive", "ch", "--purge", "--timeout", "0.3"}, 0, ""},  // and a quiet channel ends
      {{"occupied", "held"}, 0, ""},
      {{"occupied", "ch"}, 1, ""},
      {{"receive", "held", "--timeout", "5"}, 3, ""},
      // The second line's record crosses the limit: its write comes back short, then fails.
      {{"send", "full", big}, 0, ""},
      {{"send", "full"}, 4, "", "fits\n" + std::string(100, 'b') + "\n", 4050},
      {{"receive", "ch", "--count", "0"}, 2, ""},
      {{"send", "a/b", "x"}, 2, ""},
      {{"occupied", "../ch"}, 2, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.args));
    std::vector<std::string> args = row.args;
    args.insert(args.begin(), QEM_CHANNEL_TOOL);
    const auto ran = qem_test::Run(args, root(), row.input, row.size_limit);
    EXPECT_EQ(ran.status, row.status);
    EXPECT_EQ(ran.out, row.out);
    // A failure says what went wrong on one line; success says nothing there.
    EXPECT_EQ(std::count(ran.err.begin(), ran.err.end(), '\n'), row.status > 1 ? 1 : 0) << ran.err;
  }
  EXPECT_EQ(qem_test::ReadFile(Data("full")), big + '\0' + "fits" + '\0') << "no part of a record";
}

}  // namespace
