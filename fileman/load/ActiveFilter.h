#pragma once

#include <string>

#include "common/UniqueNames.h"
#include "conf/ResultFilter.h"

// The filter that the store loads by, with its lists indexed: each is asked once for every directory.
class ActiveFilter {
public:
    const _ResultFilter& fields() const { return m_fields; }
    void set(const _ResultFilter& filter);

    // Everything that the configuration knows; the modules stay as they are.
    void selectEverything(bool results, bool profiles);

    // Whether a list of the filter lets a name pass; an empty list restricts nothing.
    bool passesTest(const std::string& typeKey) const { return passes(m_tests, typeKey); }
    bool passesPort(const std::string& port) const { return passes(m_ports, port); }

    // Whether the filter names it, so that an empty list names nothing.
    bool namesTest(const std::string& typeKey) const { return m_tests.contains(typeKey); }
    bool namesMode(const std::string& mode) const { return m_modes.contains(mode); }

private:
    static bool passes(const UniqueNames& names, const std::string& name) {
        return names.empty() || names.contains(name);
    }
    void index();

    _ResultFilter m_fields;
    UniqueNames m_modes;
    UniqueNames m_tests;
    UniqueNames m_ports;
};
