#pragma once

#include <tinyxml.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/Files.h"

// Checks a condition that must hold for every input. A failure ends the process, fuzzer or replay.
inline void require(bool holds, const char* promise) {
    if (holds)
        return;
    std::fprintf(stderr, "fuzz: broken: %s\n", promise);
    std::abort();
}

// The input as text: the first lines are parameters, the rest is the data.
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

inline std::string printed(const TiXmlDocument& document) {
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
