#include "conf/ConfState.h"

#include <utility>

#include "conf/CFileManConf.h"

ConfState& confState() {
    static ConfState state;
    return state;
}

ConfState& foundState() {
    ConfState& state = confState();
    // Taken out first: the scan itself comes by here.
    if (const std::function<void()> scan = std::exchange(state.putOffScan, nullptr))
        scan();
    return state;
}

void resetConfState() {
    confState() = ConfState();
    CFileManConf::releaseConf();
}
