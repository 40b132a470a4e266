#pragma once

#include <string>
#include <string_view>

// The kind of answers that this process gives, and what differs between the two kinds.
//
// Every byte of the default answers is fixed: clients rely even on details that look odd. Strict answers are
// for instruments with our browser side: correct HTTP, escaped values, true status codes. The configuration
// of the web server selects them by exactly FILEMAN_ANSWERS=strict in the environment. A request cannot
// select them, because the header lines of a client arrive in variables that begin with HTTP_.
class Answers {
public:
    // Reads the environment. Call it once, before anything is read or written. Before that, answers are
    // default answers.
    static void decide();
    static const Answers& current() { return s_current; }

    bool areStrict() const { return m_areStrict; }

    // Whether there is no answer for the request method. Default answers exist for every method.
    bool isMethodRefused() const { return m_areStrict && !isGet() && !isHead(); }
    // Whether the answer is only a header. Then nothing needs to be staged for the body.
    bool areHeaderOnly() const { return m_areStrict && isHead(); }

    // Returns a value for the text or an attribute of a page: escaped in strict answers, otherwise as stored.
    std::string inHtml(std::string_view value) const;

private:
    bool isGet() const { return m_method.empty() || m_method == "GET"; }
    bool isHead() const { return m_method == "HEAD"; }

    static Answers s_current;

    bool m_areStrict = false;
    std::string_view m_method; // in the environment; empty when the server tells none
};
