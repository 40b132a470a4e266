#pragma once

#include <string>
#include <string_view>

// The kind of answers that this process gives, and what differs between the two kinds.
//
// The default answers are fixed byte by byte; clients rely on everything in them that looks odd. Strict
// answers are for instruments whose browser side is ours: clean HTTP, escaped values, honest status. The web
// server chooses them by its configuration: FILEMAN_ANSWERS=strict in the environment, exactly so. No request
// can, because what a client sends arrives in variables that begin with HTTP_.
class Answers {
public:
    // Decides by the environment; once, before anything is read or written. Until then answers are default
    // ones.
    static void decide();
    static const Answers& current() { return s_current; }

    bool areStrict() const { return m_areStrict; }

    // The method is one that no answer exists for. In default answers there is no such method.
    bool isMethodRefused() const { return m_areStrict && !isGet() && !isHead(); }
    // The answer is its header alone, and nothing is to be staged for its body.
    bool areHeaderOnly() const { return m_areStrict && isHead(); }

    // A value in the text or in an attribute of a page: escaped in strict answers, else as it is stored.
    std::string inHtml(std::string_view value) const;

private:
    bool isGet() const { return m_method.empty() || m_method == "GET"; }
    bool isHead() const { return m_method == "HEAD"; }

    static Answers s_current;

    bool m_areStrict = false;
    std::string m_method; // empty when the server tells none
};
