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
  std::shared_ptr<lock_file> held;
  std::shared_ptr<receiver> open;
  std::string long_text;
  for (int i = 0; i < 600; ++i) long_text += "\xC3\xA9";  // 600 two-byte characters
  long_text += std::string(500, 'z');
  const std::string lock = (tmp() / "l").string(), entry = EntryLock("ch").string(),
                    data = Data("ch").string(), probe = "many_to_one.is_occupied: ",
                    await = "many_to_one.receiver.await_until_", close = "close_if_empty: ";
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
       {"lock_file.constructor: " + lock}},
      {"occupy by name",
       [&] { held = lock_file::occupy("named", log); },
       {"Waiting to lock named", "Locked named; took N"}},
      {"await a held lock",
       [&] { lock_file::await_occupied_by_other("named", log); },
       {"Await named occupied by other.", "Confirmed named occupied by other; took N"}},
      {"send", [&] { sender->op()->write("short"); }, sending(std::string("short\0", 6))},
      {"send a long text", [&] { sender->op()->write(long_text); },
       sending(long_text.substr(0, 1200 + 400))},
      {"open a receiver",
       [&] { open = receiver::make("ch", log); },
       {"lock_file.constructor: " + ReceiverLock("ch").string()}},
      {"read both records",
       [&] {
         open->op()->read();
         open->op()->read();
       },
       {}},
      {"probe an open receiver",
       [&] { receiver::is_occupied("ch", log); },
       {probe + "Checking if occupied: ch", "lock_file.constructor: " + ReceiverLock("ch").string(),
        probe + "Is occupied: ch"}},
      {"probe a free receiver",
       [&] { receiver::is_occupied("x", log); },
       {probe + "Checking if occupied: x", "lock_file.constructor: " + ReceiverLock("x").string(),
        probe + "Is not occupied: x"}},
      {"await occupied",
       [&] { receiver::await_until_occupied("ch", log); },
       {await + "occupied: ch", await + "occupied: ch took N"}},
      {"await not occupied",
       [&] { receiver::await_until_not_occupied("x", log); },
       {await + "not_occupied: x", await + "not_occupied: x took N"}},
      {"close",
       [&] { open->close_if_empty(); },
       {"many_to_one.receiver." + close + "About to relinquish.",
        "many_to_one.receiver." + close + "receiver_lock relinquished.",
        "many_to_one.receiver." + close + "close_op relinquished."}},
  };
  std::size_t seen = 0;
  for (const auto& row : rows) {
    row.run();
    auto messages = qem_test::LoggedMessages(log_path);
    std::vector<std::string> lines(messages.begin() + static_cast<std::ptrdiff_t>(seen),
                                   messages.end());
    seen = messages.size();
    for (auto& line : lines) line = std::regex_replace(line, std::regex("took \\d+$"), "took N");
    EXPECT_EQ(lines, row.lines) << row.step;
  }
}

}  // namespace
