#include "common/CCommUtils.h"

#include <cstdlib>
#include <string_view>

namespace {

int digitValue(char c) {
    return CCommUtils::cgiHexValue[static_cast<unsigned char>(c)];
}

} // namespace

std::array<int, 256> CCommUtils::cgiHexValue{};

void CCommUtils::cgiSetupConstants() {
    constexpr std::string_view kDigits = "0123456789";
    constexpr std::string_view kLetters = "ABCDEFabcdef";
    constexpr int kLetterCount = 6;
    cgiHexValue.fill(0);
    for (std::size_t i = 0; i < kDigits.size(); ++i)
        cgiHexValue[static_cast<unsigned char>(kDigits[i])] = static_cast<int>(i);
    for (std::size_t i = 0; i < kLetters.size(); ++i)
        cgiHexValue[static_cast<unsigned char>(kLetters[i])] = 10 + static_cast<int>(i) % kLetterCount;
}

int CCommUtils::cgiUnescapeChars(char** out, const char* in, int length) {
    enum class State { Plain, FirstDigit, SecondDigit };
    cgiSetupConstants();
    if (length < 0)
        length = 0;
    char* const decoded = static_cast<char*>(std::malloc(static_cast<std::size_t>(length) + 1));
    if (decoded == nullptr)
        return 1;
    char* end = decoded;
    State state = State::Plain;
    int value = 0;
    // The two bytes after '%' always count as digits, even '+' and '%'. This is intentional: the decoder
    // never refuses a request.
    for (int i = 0; i < length; ++i) {
        const char c = in[i];
        if (state == State::FirstDigit) {
            value = digitValue(c) * 16;
            state = State::SecondDigit;
        } else if (state == State::SecondDigit) {
            *end++ = static_cast<char>(static_cast<unsigned char>(value + digitValue(c)));
            state = State::Plain;
        } else if (c == '%') {
            state = State::FirstDigit;
        } else {
            *end++ = c == '+' ? ' ' : c;
        }
    }
    *end = '\0';
    *out = decoded;
    return 0;
}

int CCommUtils::parseQueryInfo(std::map<std::string, std::string>& out, const char* query) {
    const std::string text = query == nullptr ? "" : query;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('&', begin);
        parseKeyValue(out, text.substr(begin, end - begin));
        if (end == std::string::npos)
            break;
        begin = end + 1;
    }
    return 1;
}

bool CCommUtils::parseKeyValue(std::map<std::string, std::string>& out, const std::string& pair) {
    const std::size_t equals = pair.find('=');
    if (equals == std::string::npos)
        return false;
    out.emplace(pair.substr(0, equals), pair.substr(equals + 1));
    return true;
}
