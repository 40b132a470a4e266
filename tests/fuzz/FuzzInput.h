#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

// A promise that every input has to keep; the fuzzer and the replay end with the process.
inline void require(bool holds, const char* promise) {
    if (holds)
        return;
    std::fprintf(stderr, "fuzz: broken: %s\n", promise);
    std::abort();
}

// Input bytes as text: leading lines tell what to do, the rest is what to do it with.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_rest(data, data + size) {}

    std::string line() {
        const std::size_t end = m_rest.find('\n');
        const std::string text = m_rest.substr(0, end);
        m_rest.erase(0, end == std::string::npos ? end : end + 1);
        return text;
    }
    const std::string& rest() const { return m_rest; }

private:
    std::string m_rest;
};

// Only behind the storage runner: the fixed paths are private there, and lie in memory.
inline void writeFuzzFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

inline std::string readFuzzFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
