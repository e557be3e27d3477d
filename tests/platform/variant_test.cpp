#include "platform/variant.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "platform/dictionary.h"
#include "platform/exceptions.h"

namespace {

using platform::Variant;

TEST(Variant, ScalarsConvertToStringAndNumber) {
  EXPECT_EQ(Variant(1.0).StringValue(), "1");
  EXPECT_EQ(Variant(true).StringValue(), "True");
  EXPECT_EQ(Variant(false).StringValue(), "False");
  EXPECT_EQ(Variant().StringValue(), "");
  EXPECT_EQ(Variant("2.5x").DoubleValue(), 2.5);
  EXPECT_EQ(Variant(true).DoubleValue(), 1);
  EXPECT_EQ(Variant().DoubleValue(), 0);
}

TEST(Variant, IntegerConversionTruncatesTowardZeroAndClamps) {
  EXPECT_EQ(Variant(2.9).Int64Value(), 2);
  EXPECT_EQ(Variant(-2.9).Int64Value(), -2);
  EXPECT_EQ(Variant(1e30).Int64Value(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Variant(-1e30).Int64Value(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Variant(std::numeric_limits<double>::quiet_NaN()).Int64Value(), 0);
}

TEST(Variant, ContainersRefuseScalarConversionAndScalarsRefuseContainers) {
  Variant dictionary(platform::NewDictionary());
  Variant array(platform::NewArray());
  EXPECT_THROW(dictionary.StringValue(), platform::TypeMismatchException);
  EXPECT_THROW(array.DoubleValue(), platform::TypeMismatchException);
  EXPECT_THROW(Variant(1.0).ArrayValue(), platform::TypeMismatchException);
  EXPECT_THROW(Variant("x").DictionaryValue(), platform::TypeMismatchException);
  EXPECT_EQ(Variant().ArrayValue(), nullptr);
  EXPECT_NE(dictionary.DictionaryValue(), nullptr);
}

TEST(Dictionary, KeysIgnoreAsciiCaseAndKeepInsertionOrder) {
  platform::Dictionary d;
  d.SetValue("b", 1.0);
  d.SetValue("a", 2.0);
  d.SetValue("B", 3.0);  // replaces "b" in place
  ASSERT_EQ(d.KeyCount(), 2u);
  EXPECT_EQ(d.Entries()[0].first, "b");
  EXPECT_EQ(d.Entries()[0].second, Variant(3.0));
  EXPECT_EQ(d.Entries()[1].first, "a");
  EXPECT_TRUE(d.HasKey("A"));
  EXPECT_EQ(d.Lookup("missing", Variant("dflt")), Variant("dflt"));
  EXPECT_THROW(d.Value("missing"), platform::KeyNotFoundException);
}

TEST(Dictionary, LargeDictionariesFindEveryKeyAndSurviveRemoval) {
  // Past a handful of entries lookups go through an index; it must agree with the entries as
  // they are added, replaced and removed, down to a small dictionary again.
  platform::Dictionary d;
  for (int i = 0; i < 20; ++i) d.SetValue("Key" + std::to_string(i), Variant(i));
  d.SetValue("KEY3", Variant("three"));
  ASSERT_EQ(d.KeyCount(), 20u);
  EXPECT_EQ(d.Value("key3"), Variant("three"));
  for (int i = 0; i < 20; i += 2) d.Remove("kEy" + std::to_string(i));
  EXPECT_FALSE(d.HasKey("key0"));
  EXPECT_THROW(d.Remove("key0"), platform::KeyNotFoundException);
  for (int i = 1; i < 20; i += 2) {
    EXPECT_EQ(d.Entries()[i / 2].first, "Key" + std::to_string(i));
    EXPECT_TRUE(d.HasKey("KEY" + std::to_string(i))) << i;
  }
  for (int i = 1; i < 17; i += 2) d.Remove("key" + std::to_string(i));
  EXPECT_EQ(d.KeyCount(), 2u);
  EXPECT_EQ(d.Value("key19"), Variant(19));
  d.SetValue("key17", Variant(true));
  EXPECT_EQ(d.Entries()[0].second, Variant(true));
}

}  // namespace
