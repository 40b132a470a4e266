#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

// These tests empty /home: they start in private storage only.
int main(int argc, char** argv) {
    const char* const isPrivate = std::getenv("FILEMAN_PRIVATE_STORAGE");
    if (isPrivate == nullptr || ::access("/tmp/.private-storage", F_OK) != 0) {
        std::fputs("store_test: not in private storage, see scripts/with-storage\n", stderr);
        return 2;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
