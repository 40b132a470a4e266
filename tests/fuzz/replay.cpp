// replay DIRECTORY: runs a target with each file of its corpus, and with each beginning of such a file, like
// the rest of an interrupted transfer.

#include <filesystem>

#include "FuzzInput.h"

namespace {

void replay(const std::string& content) {
    constexpr std::size_t kMostBeginnings = 1000;
    const auto* const data = reinterpret_cast<const std::uint8_t*>(content.data());
    for (std::size_t size = 0; size < content.size(); size += content.size() / kMostBeginnings + 1)
        LLVMFuzzerTestOneInput(data, size);
    LLVMFuzzerTestOneInput(data, content.size());
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 || !std::filesystem::exists("/tmp/.private-storage")) {
        std::fputs("usage: scripts/with-storage - replay DIRECTORY\n", stderr);
        return 64;
    }
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        // Printed before the run, so that the last line names the input that failed.
        std::printf("%s\n", entry.path().c_str());
        std::fflush(stdout);
        replay(readFile(entry.path()));
        ++count;
    }
    return count == 0 ? 1 : 0;
}
