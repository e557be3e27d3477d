// Every step of the locks and the channel that can wait or touch the disk writes its fixed text
// to the log it was given; a wait writes only its start and its end, an op of the receiver never.

#include <gtest/gtest.h>

#include <functional>
#include <regex>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "channel_fixture.h"

namespace {

using many_to_one::receiver;
using platform::FolderItem;
using ChannelLogTest = qem_test::ChannelTest;

TEST_F(ChannelLogTest, EveryStepWritesItsFixedText) {
  const auto log_path = root() / "steps.log";
  auto log = std::make_shared<log_file>(FolderItem(log_path));
  auto sender = std::make_shared<many_to_one::sender>("ch", log);
  std::shared_ptr<receiver> open;
  std::string long_text;
  for (int i = 0; i < 600; ++i) long_text += "\xC3\xA9";  // 600 two-byte characters
  long_text += std::string(500, 'z');
  const std::string entry = EntryLock("ch").string(), data = Data("ch").string(),
                    attempt = "lock_file.constructor: ", probe = "many_to_one.is_occupied: ",
                    close = "many_to_one.receiver.close_if_empty: ";
  // A record in the log: the text with its NUL, cut after 1000 characters, none of them split.
  auto sending = [&](const std::string& shown) {
    return std::vector<std::string>{"Waiting to lock " + entry, "Locked " + entry + "; took N",
                                    "Starting to write data to " + data + ".", "Data: " + shown,
                                    "Finished writing data to " + data + "."};
  };
  const struct {
    std::string step;
    std::function<void()> run;
    std::vector<std::string> lines;
  } rows[] = {
      {"one attempt",
       [&] { lock_file::make(FolderItem(tmp() / "l"), log); },
       {attempt + (tmp() / "l").string()}},
      {"occupy by name",
       [&] { lock_file::occupy("named", log); },
       {"Waiting to lock named", "Locked named; took N"}},
      {"send", [&] { sender->op()->write("short"); }, sending(std::string("short\0", 6))},
      {"send a long text", [&] { sender->op()->write(long_text); },
       sending(long_text.substr(0, 1200 + 400))},
      {"open a receiver and read both records",
       [&] {
         open = receiver::make("ch", log);
         open->op()->read_all();
       },
       {attempt + ReceiverLock("ch").string()}},
      {"probe an open receiver",
       [&] { receiver::is_occupied("ch", log); },
       {probe + "Checking if occupied: ch", attempt + ReceiverLock("ch").string(),
        probe + "Is occupied: ch"}},
      {"await a receiver",
       [&] { receiver::await_until_occupied("ch", log); },
       {"many_to_one.receiver.await_until_occupied: ch",
        "many_to_one.receiver.await_until_occupied: ch took N"}},
      {"close",
       [&] { open->close_if_empty(); },
       {close + "About to relinquish.", close + "receiver_lock relinquished.",
        close + "close_op relinquished."}},
  };
  std::size_t seen = 0;
  for (const auto& row : rows) {
    row.run();
    // The messages: each line without its four leading fields, and each elapsed time as N.
    std::string text = qem_test::ReadFile(log_path);
    text = std::regex_replace(text, std::regex("[^|\n]*\\|[^|\n]*\\|[^|\n]*\\|0\\|"), "");
    text = std::regex_replace(text, std::regex("took \\d+"), "took N");
    std::string want;
    for (const auto& line : row.lines) want += line + "\n";
    EXPECT_EQ(text.substr(seen), want) << row.step;
    seen = text.size();
  }
}

}  // namespace
