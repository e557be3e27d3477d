// Every step of the locks and the channel that can wait or touch the disk writes its fixed text
// to the log it was given; a wait writes only its start and its end, an op of the receiver never.

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "channel_fixture.h"

namespace {

using many_to_one::receiver;
using ChannelLogTest = qem_test::ChannelTest;

TEST_F(ChannelLogTest, EveryStepWritesItsFixedText) {
  const auto log_path = root() / "steps.log";
  auto log = std::make_shared<log_file>(platform::FolderItem(log_path));
  std::string long_text;
  for (int i = 0; i < 600; ++i) long_text += "\xC3\xA9";  // 600 two-byte characters
  long_text += std::string(500, 'z');
  lock_file::occupy("named", log);
  auto sender = std::make_shared<many_to_one::sender>("ch", log);
  sender->op()->write("short");
  sender->op()->write(long_text);
  auto open = receiver::make("ch", log);
  open->op()->read_all();
  receiver::is_occupied("ch", log);
  receiver::await_until_occupied("ch", log);
  open->close_if_empty();

  const std::string entry = EntryLock("ch").string(), data = Data("ch").string(),
                    attempt = "lock_file.constructor: " + ReceiverLock("ch").string(),
                    probe = "many_to_one.is_occupied: ",
                    await = "many_to_one.receiver.await_until_occupied: ch",
                    close = "many_to_one.receiver.close_if_empty: ";
  std::vector<std::string> want = {"Waiting to lock named", "Locked named; took N"};
  // A record in the log: the text with its NUL, cut after 1000 characters, none of them split.
  for (const std::string& shown : {std::string("short\0", 6), long_text.substr(0, 1200 + 400)}) {
    want.insert(want.end(), {"Waiting to lock " + entry, "Locked " + entry + "; took N",
                             "Starting to write data to " + data + ".", "Data: " + shown,
                             "Finished writing data to " + data + "."});
  }
  want.insert(want.end(),
              {attempt, probe + "Checking if occupied: ch", attempt, probe + "Is occupied: ch",
               await, await + " took N", close + "About to relinquish.",
               close + "receiver_lock relinquished.", close + "close_op relinquished."});
  // The messages: each line without its four leading fields, and each elapsed time as N.
  std::string text = qem_test::ReadFile(log_path);
  text = std::regex_replace(text, std::regex("[^|\n]*\\|[^|\n]*\\|[^|\n]*\\|0\\|"), "");
  std::istringstream messages(std::regex_replace(text, std::regex("took \\d+"), "took N"));
  std::vector<std::string> lines;
  for (std::string line; std::getline(messages, line);) lines.push_back(line);
  EXPECT_EQ(lines, want);
}

}  // namespace
