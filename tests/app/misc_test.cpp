#include "app/misc.h"

#include <gtest/gtest.h>

#include <optional>

#include "platform/system.h"

namespace {

TEST(CommandLine, OptionValuesFollowTheSplittingRules) {
  const struct {
    const char* line;
    const char* key;
    std::optional<std::string> expected;
  } rows[] = {
      {"/app --channel=abc --channel=def", "channel", "def"},  // the last one wins
      {"/app --channel", "channel", ""},                       // no "=": the empty value
      {"/app --launch-key=x=y=z", "launch-key", "x"},
      {"/app --channel=--test=true", "test", std::nullopt},
      {"/app --CHANNEL=Up", "channel", "Up"},  // the name ignores case, the value keeps it
      {"/app -channel=a", "channel", std::nullopt},
      {"/app --channelx=a", "channel", std::nullopt},
      {"/my --channel=p/app --channel=b", "channel", "b"},  // a path with a blank
  };
  for (const auto& row : rows) {
    EXPECT_EQ(misc::option_value(row.line, row.key), row.expected) << row.line << " / " << row.key;
  }
}

TEST(CommandLine, CmdLineReadsTheProgramArgumentsAndKeepsWhatItFound) {
  const char* argv[] = {"/bin/qem_util", "--channel=one", "--stay-alive-key=s"};
  platform::System::SetArguments(3, argv);
  EXPECT_EQ(platform::System::CommandLine(), "/bin/qem_util --channel=one --stay-alive-key=s");
  EXPECT_EQ(misc::cmd_line("channel"), "one");
  EXPECT_EQ(misc::cmd_line("launch-key"), "");
  // A found value is kept; an absent one is looked up again.
  const char* later[] = {"/bin/qem_util", "--channel=two", "--launch-key=k"};
  platform::System::SetArguments(3, later);
  EXPECT_EQ(misc::cmd_line("CHANNEL"), "one");
  EXPECT_EQ(misc::cmd_line("launch-key"), "k");
}

}  // namespace
