#include <gtest/gtest.h>

extern "C" int use_header_from_c(void);

TEST(LibraryHeader, IsC) { EXPECT_EQ(use_header_from_c(), 1); }
