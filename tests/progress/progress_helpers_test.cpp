// Style flags, button specs and the guarded move of a control.

#include "progress/progress_helpers.h"

#include <gtest/gtest.h>

#include "json/tree_dictionary.h"
#include "platform/desktop_controls.h"
#include "platform/desktop_window.h"
#include "progress/button_spec.h"

namespace {

using progress_helpers::prog_style;

prog_style Style(std::int64_t value) {
  prog_style style = prog_style::none();
  style = value;
  return style;
}

TEST(ProgStyle, ContainsAndCompare) {
  struct Case {
    const char* name;
    std::int64_t value;
    prog_style flag;
    bool contains;
  };
  const Case cases[] = {
      {"none in 0", 0, prog_style::none(), true},
      {"none in 7", 7, prog_style::none(), true},
      {"message in 3", 3, prog_style::has_message(), true},
      {"message in 2", 2, prog_style::has_message(), false},
      {"progress in 3", 3, prog_style::has_progress(), true},
      {"hidden in 8", 8, prog_style::hidden(), false},
      {"message in 8", 8, prog_style::has_message(), false},
      {"both in 1", 1, prog_style::has_message() | prog_style::has_progress(), false},
  };
  for (const auto& c : cases) EXPECT_EQ(Style(c.value).Contains(c.flag), c.contains) << c.name;

  EXPECT_EQ(Style(3).Compare(nullptr), -1);
  const prog_style two = Style(2);
  EXPECT_EQ(Style(3).Compare(&two), 1);
  EXPECT_EQ(Style(1).Compare(&two), -1);
  EXPECT_EQ(Style(2).Compare(&two), 0);
  EXPECT_EQ((Style(3) ^ two).Value(), 1);
  EXPECT_EQ((Style(3) & two).Value(), 2);
}

TEST(ButtonSpec, FromDictionaryArrayReadsOnlyIdAndText) {
  auto d = JSON::JSONStringToTreeDictionary(
      R"({"a":[{"text":"Only text"},{"id":"v","text":"","visible":false,"width":9},"x",7,)"
      R"({"id":{"no":1}},{"id":"z","text":"Z"}]})");
  std::vector<std::size_t> skipped;
  auto specs = button_spec::from_dictionary_array(d->Value("a").ArrayValue(),
                                                  [&](std::size_t i) { skipped.push_back(i); });
  ASSERT_EQ(specs.size(), 3u);
  EXPECT_EQ(specs[0]->id, "");
  EXPECT_EQ(specs[0]->text, "Only text");
  EXPECT_EQ(specs[1]->id, "v");
  EXPECT_EQ(specs[2]->id, "z");
  for (const auto& s : specs) {
    EXPECT_TRUE(s->visible);
    EXPECT_EQ(s->width, 0.0);
  }
  EXPECT_EQ(skipped, (std::vector<std::size_t>{2, 3, 4}));
  EXPECT_TRUE(button_spec::from_dictionary_array(nullptr).empty());
}

TEST(ButtonSpec, DummiesAreSharedInvisibleAndIndexed) {
  auto third = button_spec::dummy(3);
  EXPECT_EQ(third->index, 3);
  EXPECT_FALSE(third->visible);
  EXPECT_EQ(third->id, "");
  EXPECT_EQ(button_spec::dummy(1)->index, 1);
  EXPECT_EQ(button_spec::dummy(3), third);
}

TEST(SetRect, WritesOnlyWhatDiffers) {
  platform::DesktopWindow window(platform::DesktopWindow::Type::Document);
  platform::DesktopLabel label(window);
  progress_helpers::set_rect(label, 1, 2, 3, 4);
  label.ResetWrites();
  progress_helpers::set_rect(label, 1, 2, 3, 4);
  EXPECT_EQ(label.Writes().Total(), 0);
  progress_helpers::set_rect(label, 1, 2, 30, 4);
  EXPECT_EQ(label.Writes().Total(), 1);
  EXPECT_EQ(label.Writes().Of(platform::Property::Width), 1);
}

}  // namespace
