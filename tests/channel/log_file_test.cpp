// log_file: the line form on a real file, indented handles sharing it, and the null log that
// touches nothing.

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
  EXPECT_THROW(fresh.operator_convert(1), platform::UnsupportedFormatException);
  EXPECT_THROW(log_file(FolderItem(root() / "missing" / "qem.log")), platform::IOException);
}

}  // namespace
