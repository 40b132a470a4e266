#include "conf/CompanionLimits.h"

#include "common/Report.h"

bool CompanionBudget::spend(std::size_t cost, const std::string& path) {
    if (m_isExhausted)
        return false;
    m_isExhausted = cost > m_left;
    if (m_isExhausted)
        report("read document", path,
               "too much to read for one request, this and what follows counts as empty");
    else
        m_left -= cost;
    return !m_isExhausted;
}
