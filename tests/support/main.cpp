// Pages and times print in the local zone, so all tests run in one.
#include <cstdlib>
#include <gtest/gtest.h>

int main(int argumentCount, char** arguments) {
    setenv("TZ", "UTC", 1);
    testing::InitGoogleTest(&argumentCount, arguments);
    return RUN_ALL_TESTS();
}
