#include "app/names.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Names, NamesThatWouldLeaveTheirFolderAreRefused) {
  EXPECT_TRUE(names::lock_name_refusal("a/b"));
  EXPECT_TRUE(names::lock_name_refusal("/abs"));
  EXPECT_TRUE(names::lock_name_refusal(std::string("a\0b", 3)));
  EXPECT_TRUE(names::lock_name_refusal("."));
  EXPECT_TRUE(names::lock_name_refusal(".."));
  EXPECT_FALSE(names::lock_name_refusal("..."));
  EXPECT_FALSE(names::lock_name_refusal(".hidden"));
  EXPECT_FALSE(names::lock_name_refusal("r.name with blanks\xC3\xA9"));
  EXPECT_FALSE(names::lock_name_refusal(""));
}

TEST(Names, LengthCountsTheLongestFileNameMadeFromTheName) {
  EXPECT_FALSE(names::lock_name_refusal(std::string(255, 'x')));
  EXPECT_TRUE(names::lock_name_refusal(std::string(256, 'x')));
  // "qem.many_to_one.r." + id and "qem.many_to_one." + id + ".dir" must fit in 255 bytes.
  EXPECT_FALSE(names::channel_id_refusal(std::string(235, 'x')));
  EXPECT_TRUE(names::channel_id_refusal(std::string(236, 'x')));
  EXPECT_NE(names::channel_id_refusal(std::string(236, 'x'))->find("235"), std::string::npos);
}

}  // namespace
