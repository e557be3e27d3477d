// log_file: the line form on a real file, indented handles sharing it, the null log that touches
// nothing, and the fixed texts that the locks and the channel write to it.

#include "channel/log_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <regex>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "channel_fixture.h"
#include "platform/exceptions.h"
#include "platform/system.h"

namespace {

using platform::FolderItem;

class LogFileTest : public qem_test::ChannelTest {
 protected:
  std::filesystem::path Path() const { return root() / "qem.log"; }
  std::shared_ptr<log_file> Open() const { return std::make_shared<log_file>(FolderItem(Path())); }
  // program|(pid)|yyyy-mm-dd hh:mm:ss:nnnnnnnnn|0|text
  static std::string LineForm(const std::string& text) {
    return platform::System::ExecutableName() + "\\|\\(" + std::to_string(::getpid()) +
           "\\)\\|\\d{4,}-\\d{2}-\\d{2} \\d{2}:\\d{2}:\\d{2}:\\d{9}\\|0\\|" + text + "\n";
  }
};

TEST_F(LogFileTest, EachWriteAppendsOneLineOfFiveFieldsOnDiskAtOnce) {
  qem_test::WriteFile(Path(), "earlier line\n");  // opening appends behind what is there
  auto log = Open();
  // Indented handles share the stream, four blanks deeper per step.
  auto deeper = log->indent(), deepest = deeper->indent();
  std::string expected = "earlier line\n";
  const struct {
    std::shared_ptr<log_file> to;
    std::string message, line;
  } rows[] = {
      {log, "first message", LineForm("first message")},
      {log, "with | a bar", LineForm("with \\| a bar")},
      {log, "", LineForm("")},
      {log, "one\ntwo", LineForm("one") + "two\n"},  // a line break: an unprefixed continuation
      {deeper, "two", LineForm("    two")},
      {deepest, "three", LineForm("        three")},
  };
  for (const auto& row : rows) {
    row.to->write(row.message);
    expected += row.line;
    // On disk before write returns.
    EXPECT_TRUE(std::regex_match(qem_test::ReadFile(Path()), std::regex(expected))) << row.message;
  }
}

TEST_F(LogFileTest, NullLogTouchesNothingAndAFreshHandleIsNoLog) {
  auto null = log_file::make_null();
  EXPECT_NO_THROW(null->write("anything"));
  EXPECT_NO_THROW(null->indent()->write("deeper"));
  EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(root()), {}), 3)
      << "only the test's own three folders";
  log_file fresh;
  EXPECT_THROW(fresh.write("no stream"), platform::NilObjectException);
  EXPECT_THROW(log_file(FolderItem(root() / "missing" / "qem.log")), platform::IOException);
}

// Every step of the locks and the channel that can wait or touch the disk writes its fixed text
// to the log it was given; a wait writes only its start and its end, an op of the receiver never.
TEST_F(LogFileTest, EveryStepOfTheLocksAndTheChannelWritesItsFixedText) {
  auto log = Open();
  std::string long_text;
  for (int i = 0; i < 600; ++i) long_text += "\xC3\xA9";  // 600 two-byte characters
  long_text += std::string(500, 'z');
  lock_file::occupy("named", log);
  auto sender = std::make_shared<many_to_one::sender>("ch", log);
  sender->op()->write("short");
  sender->op()->write(long_text);
  auto open = many_to_one::receiver::make("ch", log);
  open->op()->read_all();
  many_to_one::receiver::is_occupied("ch", log);
  many_to_one::receiver::await_until_occupied("ch", log);
  open->close_if_empty();

  const std::string entry = EntryLock("ch").string(), data = Data("ch").string(),
                    attempt = "lock_file.constructor: " + ReceiverLock("ch").string(),
                    probe = "many_to_one.is_occupied: ",
                    await = "many_to_one.receiver.await_until_occupied: ch",
                    close = "many_to_one.receiver.close_if_empty: ";
  std::string want = "Waiting to lock named\nLocked named; took N\n";
  // A record in the log: the text with its NUL, cut after 1000 characters, none of them split.
  for (const std::string& shown : {std::string("short\0", 6), long_text.substr(0, 1200 + 400)}) {
    want += "Waiting to lock " + entry + "\nLocked " + entry +
            "; took N\nStarting to write data to " + data + ".\nData: " + shown +
            "\nFinished writing data to " + data + ".\n";
  }
  for (const std::string& line :
       {attempt, probe + "Checking if occupied: ch", attempt, probe + "Is occupied: ch", await,
        await + " took N", close + "About to relinquish.", close + "receiver_lock relinquished.",
        close + "close_op relinquished."}) {
    want += line + "\n";
  }
  // The messages: each line without its four leading fields, and each elapsed time as N.
  const std::string text = std::regex_replace(qem_test::ReadFile(Path()),
                                              std::regex("[^|\n]*\\|[^|\n]*\\|[^|\n]*\\|0\\|"), "");
  EXPECT_EQ(std::regex_replace(text, std::regex("took \\d+"), "took N"), want);
}

}  // namespace
