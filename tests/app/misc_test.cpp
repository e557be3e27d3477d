#include "app/misc.h"

#include <gtest/gtest.h>

#include <optional>

#include "platform/system.h"

namespace {

using misc::option_value;

TEST(CommandLine, OptionValuesFollowTheSplittingRules) {
  struct Case {
    const char* line;
    const char* key;
    std::optional<std::string> expected;
  } cases[] = {
      {"/app --channel=abc", "channel", "abc"},
      {"/app --channel=abc --channel=def", "channel", "def"},  // the last one wins
      {"/app --channel=", "channel", ""},
      {"/app --channel", "channel", ""},  // no "=": present with the empty value
      {"/app --channel=a b", "channel", "a"},
      {"/app --launch-key=x=y=z", "launch-key", "x"},
      {"/app --channel=--test=true", "channel", "--test"},
      {"/app --channel=--test=true", "test", std::nullopt},
      {"/app --CHANNEL=Up", "channel", "Up"},  // the name ignores case, the value keeps it
      {"/app --test=TRUE", "test", "TRUE"},
      {"/app -channel=a", "channel", std::nullopt},
      {"/app channel=a", "channel", std::nullopt},
      {"/app --channel  a", "channel", ""},  // two blanks: an empty piece, then "a"
      {"/app --channelx=a", "channel", std::nullopt},
      {"/my --channel=p/app --channel=b", "channel", "b"},  // a path with a blank
      {"/app --channel=\xC3\xA9t\xC3\xA9", "channel", "\xC3\xA9t\xC3\xA9"},
      {"", "channel", std::nullopt},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(option_value(c.line, c.key), c.expected) << c.line << " / " << c.key;
  }
}

TEST(CommandLine, CmdLineReadsTheProgramArgumentsAndKeepsWhatItFound) {
  const char* argv[] = {"/bin/qem_util", "--channel=one", "--stay-alive-key=s"};
  platform::System::SetArguments(3, argv);
  EXPECT_EQ(platform::System::CommandLine(), "/bin/qem_util --channel=one --stay-alive-key=s");
  EXPECT_EQ(misc::cmd_line("channel"), "one");
  EXPECT_EQ(misc::cmd_line("launch-key"), "");
  // A found value is cached; an absent one is looked up again.
  const char* later[] = {"/bin/qem_util", "--channel=two", "--launch-key=k"};
  platform::System::SetArguments(3, later);
  EXPECT_EQ(misc::cmd_line("CHANNEL"), "one");
  EXPECT_EQ(misc::cmd_line("launch-key"), "k");
}

}  // namespace
