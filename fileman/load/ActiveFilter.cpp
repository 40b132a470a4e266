#include "fileman/load/ActiveFilter.h"

#include "conf/CFileManConf.h"

void ActiveFilter::set(const _ResultFilter& filter) {
    m_fields = filter;
    index();
}

std::list<std::string> ActiveFilter::modules() const {
    std::list<std::string> names = m_fields.modules;
    if (names.empty())
        CFileManConf::getCurrentModule(names);
    if (names.empty())
        CFileManConf::getAllModuleNames(names);
    return names;
}

// The lists name everything instead of being empty. This makes a difference: with a list of ports, extra
// directories without a port are left out. This is intentional.
void ActiveFilter::selectEverything(bool results, bool profiles) {
    m_fields.modes.clear();
    m_fields.tests.clear();
    m_fields.ports.clear();
    CFileManConf::getAllModeNames(m_fields.modes);
    CFileManConf::getAllTypeKeys(m_fields.tests);
    CFileManConf::getAllPortNames(m_fields.ports);
    m_fields.includeResults = results;
    m_fields.includeProfiles = profiles;
    m_fields.advanceInfo = _AdvanceInfo();
    index();
}

void ActiveFilter::index() {
    m_modes = NameSet(m_fields.modes);
    m_tests = NameSet(m_fields.tests);
    m_ports = NameSet(m_fields.ports);
}
