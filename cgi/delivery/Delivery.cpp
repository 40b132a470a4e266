#include "cgi/delivery/Delivery.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "common/Report.h"

void delivery::reportLeftOut(const char* delivery, const _ResultInfo& record, const char* reason) {
    report(delivery, record.path, std::string("left out, ") + reason);
}

void delivery::waitBeforeCleanUp() {
    std::fflush(stdout);
    std::this_thread::sleep_for(10 * std::chrono::microseconds(100000));
}
