// Style flags and button specs.

#include <gtest/gtest.h>

#include "progress_fixture.h"

namespace {

using progress_helpers::prog_style;

// Which flags a style holds is seen in every layout; what the layout never asks is a comparison.
TEST(Records, AStyleComparesAboveNilAndByValue) {
  const prog_style two = prog_style::has_progress();
  EXPECT_EQ(prog_style::none().Compare(nullptr), -1);
  EXPECT_EQ(prog_style::hidden().Compare(&two), 1);
  EXPECT_EQ(prog_style::has_message().Compare(&two), -1);
  EXPECT_EQ(two.Compare(&two), 0);
}

TEST(Records, SpecsReadOnlyIdAndTextAndSkipWhatIsNoObject) {
  auto d = qem_test::Command(R"({"a":[{"text":"Only text"},{"id":"v","visible":false,"width":9},)"
                             R"("x",7,{"id":{"no":1}}]})");
  std::vector<std::size_t> skipped;
  auto specs = button_spec::from_dictionary_array(d->Value("a").ArrayValue(),
                                                  [&](std::size_t i) { skipped.push_back(i); });
  ASSERT_EQ(specs.size(), 2u);
  EXPECT_EQ(specs[0]->id, "");
  EXPECT_EQ(specs[1]->text, "");
  for (const auto& s : specs) EXPECT_TRUE(s->visible && s->width == 0.0);
  EXPECT_EQ(skipped, (std::vector<std::size_t>{2, 3, 4}));
  // The stand-ins are shared for good, one per index, and never shown.
  EXPECT_EQ(button_spec::dummy(3), button_spec::dummy(3));
  EXPECT_EQ(button_spec::dummy(2)->index, 2);
  EXPECT_FALSE(button_spec::dummy(2)->visible);
}

}  // namespace
