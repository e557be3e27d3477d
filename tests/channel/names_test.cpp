#include "channel/names.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Names, NamesThatWouldLeaveTheirFolderAreRefused) {
  const struct {
    std::string name;
    bool channel;
    bool refused;
  } rows[] = {
      {"a/b", false, true},
      {"/abs", false, true},
      {std::string("a\0b", 3), false, true},
      {".", false, true},
      {"..", true, true},
      {"...", false, false},
      {".hidden", false, false},
      {"r.name with blanks\xC3\xA9", false, false},
      {"", false, false},  // whether empty is allowed is the caller's rule
      {std::string(255, 'x'), false, false},
      {std::string(256, 'x'), false, true},
      // "qem.many_to_one.r." + id and "qem.many_to_one." + id + ".dir" must fit in 255 bytes.
      {std::string(235, 'x'), true, false},
      {std::string(236, 'x'), true, true},
  };
  for (const auto& row : rows) {
    auto why =
        row.channel ? names::channel_id_refusal(row.name) : names::lock_name_refusal(row.name);
    EXPECT_EQ(why.has_value(), row.refused)
        << row.name.substr(0, 20) << " (" << row.name.size() << ")";
  }
  EXPECT_NE(names::channel_id_refusal(std::string(236, 'x'))->find("235"), std::string::npos);
}

}  // namespace
