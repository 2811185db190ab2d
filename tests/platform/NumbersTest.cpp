#include "Thrown.h"
#include "platform/Int16.h"

#include <gtest/gtest.h>

using namespace kestrova;

TEST(Int16, ArithmeticOutsideSixteenBitsIsTheOverflowError) {
    Int16 n = 32760;
    n += Int16(7);
    EXPECT_EQ(n, 32767);
    EXPECT_THROW(n += Int16(1), OverflowError);
    EXPECT_EQ(n, 32767) << "a failed step leaves the value as it was";

    Int16 low = -32768;
    EXPECT_THROW(low -= Int16(1), OverflowError);
    EXPECT_THROW((void)Int16::From(40000), OverflowError);
    EXPECT_EQ(Int16::From(-32768), -32768);
}

TEST(Int16, NumbersAreTruncatedTowardsZero) {
    EXPECT_EQ(Int16::Truncate(7.9), 7);
    EXPECT_EQ(Int16::Truncate(-3.7), -3);
    EXPECT_EQ(Int16::Truncate(32767.99), 32767);
    EXPECT_THROW((void)Int16::Truncate(32768.0), OverflowError);
    const auto overflow = kestrova::testing::Thrown<SystemError>([] { (void)Int16::Truncate(1e9); });
    ASSERT_TRUE(overflow);
    EXPECT_EQ(overflow->reason(), QStringLiteral("Overflow"));
    EXPECT_EQ(AsNumber(true), -1);
    EXPECT_EQ(AsNumber(false), 0);
}
