// log_file: the line form on a real file, indented handles sharing one file, and the null log
// that touches nothing.

#include "channel/log_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

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
  // program|(pid)|yyyy-mm-dd hh:mm:ss:nnnnnnnnn|0|text
  static std::string LineForm(const std::string& text) {
    return platform::System::ExecutableName() + "\\|\\(" + std::to_string(::getpid()) +
           "\\)\\|\\d{4,}-\\d{2}-\\d{2} \\d{2}:\\d{2}:\\d{2}:\\d{9}\\|0\\|" + text + "\n";
  }
};

TEST_F(LogFileTest, EachWriteAppendsOneLineOfFiveFieldsOnDiskAtOnce) {
  qem_test::WriteFile(Path(), "earlier line\n");  // opening appends behind what is there
  auto log = Open();
  std::string expected = "earlier line\n";
  const struct {
    std::string message, line;
  } rows[] = {
      {"first message", LineForm("first message")},
      {"with | a bar", LineForm("with \\| a bar")},
      {"", LineForm("")},
      {"one\ntwo", LineForm("one") + "two\n"},  // a line break makes an unprefixed continuation
  };
  for (const auto& row : rows) {
    log->write(row.message);
    expected += row.line;
    // On disk before write returns.
    EXPECT_TRUE(std::regex_match(qem_test::ReadFile(Path()), std::regex(expected))) << row.message;
  }
  log->operator_subscript("subscript");
  EXPECT_TRUE(
      std::regex_match(qem_test::ReadFile(Path()), std::regex(expected + LineForm("subscript"))));
}

TEST_F(LogFileTest, IndentSharesTheFileFourBlanksDeeperPerStep) {
  auto log = Open();
  auto deeper = log->indent();
  auto deepest = deeper->indent();
  log.reset();  // the indented handles keep the stream open
  deeper->write("two");
  deepest->write("three");
  EXPECT_TRUE(std::regex_match(qem_test::ReadFile(Path()),
                               std::regex(LineForm("    two") + LineForm("        three"))));
}

TEST_F(LogFileTest, NullLogTouchesNothingAndAFreshHandleIsNoLog) {
  auto null = log_file::make_null();
  EXPECT_NO_THROW(null->write("anything"));
  EXPECT_NO_THROW(null->indent()->operator_subscript("deeper"));
  EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(root()), {}), 3)
      << "only the test's own three folders";

  log_file fresh;
  EXPECT_THROW(fresh.write("no stream"), platform::NilObjectException);
  EXPECT_THROW(fresh.indent()->write("no stream"), platform::NilObjectException);
  EXPECT_THROW(fresh.operator_convert(1), platform::UnsupportedFormatException);
  EXPECT_THROW(fresh.write("still not a null log"), platform::NilObjectException);
  EXPECT_THROW(log_file(FolderItem(root() / "missing" / "qem.log")), platform::IOException);
}

}  // namespace
