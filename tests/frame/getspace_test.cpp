// The runtime-support library's storage services.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "support/arrays.h"

namespace {

TEST(GetSpace, BlocksAreUsableAndZeroRequestsDistinct) {
    auto* a = static_cast<unsigned char*>(f90_getspace(0));
    auto* b = static_cast<unsigned char*>(f90_getspace(0));
    auto* c = static_cast<unsigned char*>(f90_getspace(1000));
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_NE(a, b);
    std::memset(c, 0x5A, 1000);
    EXPECT_EQ(c[999], 0x5A);
    f90_freespace(a);
    f90_freespace(b);
    f90_freespace(c);
}

TEST(GetSpaceDeath, FailedAllocationEndsTheProgram) {
    const F90Word huge = ~static_cast<F90Word>(0) - 4096;
    const std::string text =
        "f90_getspace: cannot allocate " + std::to_string(static_cast<unsigned long long>(huge)) + " bytes\n";
#if defined(__SANITIZE_ADDRESS__)
    // The sanitizer's allocator announces the failure before our message.
    EXPECT_EXIT(f90_getspace(huge), ::testing::ExitedWithCode(1), ::testing::EndsWith(text));
#else
    EXPECT_DIES_WITH(f90_getspace(huge), text);
#endif
}

}  // namespace
