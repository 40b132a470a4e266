#include "common/CCommUtils.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "common/FileDate.h"
#include "common/UniqueFd.h"

namespace {

// Reads the first line of the file: at most 127 bytes, and up to a zero byte. Returns "" on failure.
std::string readFirstLine(const std::string& path) {
    constexpr std::size_t kLongestLine = 127;
    // Without O_NONBLOCK the open of a FIFO would block for ever.
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    std::array<char, kLongestLine> text{};
    std::size_t size = 0;
    while (file && size < text.size()) {
        const ssize_t count = ::read(file.get(), text.data() + size, text.size() - size);
        if (count <= 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    const std::string_view line(text.data(), size);
    return std::string(line.substr(0, line.find_first_of(std::string_view("\n\0", 2))));
}

} // namespace

bool CCommUtils::isFileExists(const std::string& path) {
    return ::access(path.c_str(), F_OK) == 0;
}

bool CCommUtils::isDirExists(const std::string& path) {
    return isFileExists(path);
}

std::string CCommUtils::createDateTime(const std::string& path) {
    return formatDateTime(changeTime(path));
}

std::string CCommUtils::readInfo(const std::string& path) {
    return trimRight(readFirstLine(path));
}

std::string CCommUtils::getSoftVer(const std::string& path) {
    const std::string line = readInfo(path);
    return line.substr(line.find(':') + 1);
}
