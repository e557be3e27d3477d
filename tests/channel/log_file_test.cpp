// log_file: the line form on a real file, appending, indented handles sharing one file, and the
// null log that touches nothing.

#include "channel/log_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>

#include "platform/exceptions.h"
#include "platform/system.h"
#include "support/temp_env.h"

namespace {

using platform::FolderItem;

class LogFileTest : public qem_test::TempEnvTest {
 protected:
  std::filesystem::path Path() const { return root() / "qem.log"; }
  std::shared_ptr<log_file> Open() const { return std::make_shared<log_file>(FolderItem(Path())); }
  std::string Text() const { return qem_test::ReadFile(Path()); }
  // Everything under the test's folder, with sizes.
  std::vector<std::string> Listing() const {
    std::vector<std::string> entries;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root())) {
      entries.push_back(entry.path().string() + " " +
                        std::to_string(entry.is_regular_file() ? entry.file_size() : 0));
    }
    std::sort(entries.begin(), entries.end());
    return entries;
  }
  // The five fields: program|(pid)|yyyy-mm-dd hh:mm:ss:nnnnnnnnn|0|text, with the given text.
  static std::string LineForm(const std::string& text) {
    return "^" + platform::System::ExecutableName() + "\\|\\(" + std::to_string(::getpid()) +
           "\\)\\|\\d{4,}-\\d{2}-\\d{2} \\d{2}:\\d{2}:\\d{2}:\\d{9}\\|0\\|" + text + "$";
  }
};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(text.substr(start, end - start));
  }
  EXPECT_EQ(start, text.size()) << "every line ends with a line break";
  return lines;
}

TEST_F(LogFileTest, EachWriteIsOneLineOfFiveFieldsOnDiskAtOnce) {
  auto log = Open();
  log->write("first message");
  EXPECT_EQ(Text().size(), Lines(Text()).at(0).size() + 1);  // on disk before write returns
  log->operator_subscript("second | with a bar");
  log->write("");
  auto lines = Lines(Text());
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_TRUE(std::regex_match(lines[0], std::regex(LineForm("first message")))) << lines[0];
  EXPECT_TRUE(std::regex_match(lines[1], std::regex(LineForm("second \\| with a bar"))))
      << lines[1];
  EXPECT_TRUE(std::regex_match(lines[2], std::regex(LineForm("")))) << lines[2];
}

TEST_F(LogFileTest, MessageWithALineBreakIsWrittenAsOneUnprefixedContinuation) {
  Open()->write("one\ntwo");
  auto lines = Lines(Text());
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_TRUE(std::regex_match(lines[0], std::regex(LineForm("one"))));
  EXPECT_EQ(lines[1], "two");
}

TEST_F(LogFileTest, OpeningAnExistingFileAppendsBehindEarlierLines) {
  qem_test::WriteFile(Path(), "earlier line\n");
  Open()->write("later");
  auto lines = Lines(Text());
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], "earlier line");
  EXPECT_TRUE(std::regex_match(lines[1], std::regex(LineForm("later"))));
}

TEST_F(LogFileTest, IndentSharesTheFileFourBlanksDeeperPerStep) {
  auto log = Open();
  auto deeper = log->indent();
  auto deepest = deeper->indent();
  log.reset();  // the indented handles keep the stream open
  deeper->write("two");
  deepest->write("three");
  auto lines = Lines(Text());
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_TRUE(std::regex_match(lines[0], std::regex(LineForm("    two")))) << lines[0];
  EXPECT_TRUE(std::regex_match(lines[1], std::regex(LineForm("        three")))) << lines[1];
}

TEST_F(LogFileTest, NullLogTouchesNothing) {
  auto before = Listing();
  auto null = log_file::make_null();
  EXPECT_NO_THROW(null->write("anything"));
  EXPECT_NO_THROW(null->write(""));
  auto indented = null->indent();
  EXPECT_NO_THROW(indented->write("deeper"));
  EXPECT_NO_THROW(indented->operator_subscript("deeper still"));
  EXPECT_EQ(Listing(), before);
}

TEST_F(LogFileTest, FaultsAreTheFrameworkExceptions) {
  log_file fresh;
  EXPECT_THROW(fresh.write("no stream"), platform::NilObjectException);
  EXPECT_THROW(fresh.indent()->write("no stream"), platform::NilObjectException);
  EXPECT_THROW(fresh.operator_convert(1), platform::UnsupportedFormatException);
  EXPECT_THROW(fresh.write("still not a null log"), platform::NilObjectException);
  EXPECT_THROW(log_file(FolderItem(root() / "missing" / "qem.log")), platform::IOException);
}

}  // namespace
