#pragma once

// Test families. The numbers are part of the interface. No other number is a family.
enum TestMode : int {
    TM_ETHERNET = 1,
    TM_FIBER_CHANNEL = 2,
    TM_SDH = 3, // with SONET, PDH and OTN
    TM_ODU0 = 4,
    TM_OTUX = 5,
    TM_COMMON = 6,
    TM_CABLE = 7,
    TM_CPRI = 8,
};
