#include "cgi/answer/Answers.h"

#include <cstdlib>

#include "cgi/answer/Escape.h"

namespace {

std::string_view variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

} // namespace

Answers Answers::s_current;

void Answers::decide() {
    s_current.m_areStrict = variable("FILEMAN_ANSWERS") == "strict";
    s_current.m_method = variable("REQUEST_METHOD");
}

std::string Answers::inHtml(std::string_view value) const {
    return m_areStrict ? escape::forHtml(value) : std::string(value);
}
