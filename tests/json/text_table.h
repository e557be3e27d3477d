#pragma once
// Table-driven checks of the reader's stages: each row is an input text and what one stage
// must make of it, byte for byte.

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qem_test {

struct TextCase {
  std::string input;
  std::string expected;
};

template <class Stage>
void ExpectEach(const std::vector<TextCase>& cases, Stage stage) {
  for (const auto& c : cases) EXPECT_EQ(stage(c.input), c.expected) << "input: " << c.input;
}

}  // namespace qem_test
