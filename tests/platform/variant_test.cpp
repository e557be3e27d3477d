#include "platform/variant.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "platform/dictionary.h"
#include "platform/exceptions.h"

namespace {

using platform::Variant;

TEST(Variant, ScalarsConvertToStringNumberAndIntegerTruncatedTowardZero) {
  EXPECT_EQ(Variant(1.0).StringValue(), "1");
  EXPECT_EQ(Variant(true).StringValue(), "True");
  EXPECT_EQ(Variant(false).StringValue(), "False");
  EXPECT_EQ(Variant().StringValue(), "");
  EXPECT_EQ(Variant("2.5x").DoubleValue(), 2.5);
  EXPECT_EQ(Variant(true).DoubleValue(), 1);
  // To an integer: truncated toward zero and clamped.
  EXPECT_EQ(Variant(2.9).Int64Value(), 2);
  EXPECT_EQ(Variant(-2.9).Int64Value(), -2);
  EXPECT_EQ(Variant(1e30).Int64Value(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Variant(-1e30).Int64Value(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Variant(std::numeric_limits<double>::quiet_NaN()).Int64Value(), 0);
}

// Keys match ignoring ASCII case; a replaced entry keeps its place and first spelling. Past a
// handful of entries lookups go through an index, which must agree with the plain scan.
TEST(Dictionary, KeysIgnoreAsciiCaseAndKeepTheirPlaceBelowAndAboveTheIndexThreshold) {
  for (int size : {3, 20}) {
    platform::Dictionary d;
    for (int i = 0; i < size; ++i) d.SetValue("Key" + std::to_string(i), Variant(i));
    d.SetValue("KEY1", Variant("one"));
    ASSERT_EQ(d.KeyCount(), static_cast<std::size_t>(size));
    EXPECT_EQ(d.Entries()[1], (platform::Dictionary::Entry{"Key1", Variant("one")})) << size;
    for (int i = 2; i < size; ++i) EXPECT_EQ(d.Value("kEy" + std::to_string(i)), Variant(i));
    EXPECT_EQ(d.Lookup("missing", Variant("dflt")), Variant("dflt"));
    EXPECT_THROW(d.Value("missing"), platform::KeyNotFoundException);
  }
}

}  // namespace
