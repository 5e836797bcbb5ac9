#include <VantoroBasicUtils/containers/UMemUtils.h>

#include <gtest/gtest.h>

TEST(BlockCompare, Placeholder) { EXPECT_EQ(BlockCompare("a", "b", 1), -1); }
