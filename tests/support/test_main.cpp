// Pages and times print in the local zone, so all tests run in one.
#include <gtest/gtest.h>

#include "tests/support/environment.h"

int main(int argumentCount, char** arguments) {
    delvane::SetVariable("TZ", "UTC");
    testing::InitGoogleTest(&argumentCount, arguments);
    return RUN_ALL_TESTS();
}
