#pragma once

#include <list>
#include <string>

#include "common/NameSet.h"
#include "conf/ResultFilter.h"

// The filter by which the store loads. Its lists have an index, because each is searched once per directory.
class ActiveFilter {
public:
    const _ResultFilter& fields() const { return m_fields; }
    void set(const _ResultFilter& filter);

    // Returns the modules that the filter names; if it names none, those that were found on disk; if there
    // are none, all.
    std::list<std::string> modules() const;

    // Selects everything that the configuration declares. The modules of the filter do not change.
    void selectEverything(bool results, bool profiles);

    // Whether a name passes a list of the filter. An empty list restricts nothing.
    bool passesTest(const std::string& typeKey) const { return passes(m_tests, typeKey); }
    bool passesPort(const std::string& port) const { return passes(m_ports, port); }

    // Whether a list of the filter contains the name. An empty list contains nothing.
    bool namesTest(const std::string& typeKey) const { return m_tests.contains(typeKey); }
    bool namesMode(const std::string& mode) const { return m_modes.contains(mode); }

private:
    static bool passes(const NameSet& names, const std::string& name) {
        return names.empty() || names.contains(name);
    }
    void index();

    _ResultFilter m_fields;
    NameSet m_modes;
    NameSet m_tests;
    NameSet m_ports;
};
