// Test main: death tests run in a freshly started child ("threadsafe"), so
// that a diagnostic is checked against exactly what a process prints.  Where
// the program runs under an emulator it cannot start itself again; there the
// environment chooses the style (GTEST_DEATH_TEST_STYLE=fast: a forked child).
#include <gtest/gtest.h>

#include <cstdlib>

// Under AddressSanitizer: a diagnostic ends the process by design with its
// results still allocated (the library never frees what it hands out), so a
// leak report at exit would only add text to the checked standard error.
// A failed allocation must reach the caller as null, as without the sanitizer.
extern "C" const char* __asan_default_options() { return "detect_leaks=0:allocator_may_return_null=1"; }

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (!std::getenv("GTEST_DEATH_TEST_STYLE")) GTEST_FLAG_SET(death_test_style, "threadsafe");
    return RUN_ALL_TESTS();
}
