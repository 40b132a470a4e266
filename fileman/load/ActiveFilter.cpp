#include "fileman/load/ActiveFilter.h"

#include "conf/CFileManConf.h"

void ActiveFilter::set(const _ResultFilter& filter) {
    m_fields = filter;
    index();
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
    m_modes = UniqueNames(m_fields.modes);
    m_tests = UniqueNames(m_fields.tests);
    m_ports = UniqueNames(m_fields.ports);
}
