#include "conf/ConfState.h"

#include "conf/CFileManConf.h"

ConfState& confState() {
    static ConfState state;
    return state;
}

void resetConfState() {
    confState() = ConfState();
    CFileManConf::releaseConf();
}
