#pragma once

#include <string>

#include "fileman/ResultInfo.h"

// Questions about one record. For a null record the answer is always false or "".
class CResultItem {
public:
    // Returns "[name]-[type label]-[port label]-[mode label]", cut to 255 bytes. A download packs the record
    // into a directory of this name.
    static std::string uniqueName(const _ResultInfo* info);
    static bool isPacketCapture(const _ResultInfo* info);
    static bool isOTDR(const _ResultInfo* info);
    static bool isScreenShot(const _ResultInfo* info);
    static bool isFiberScope(const _ResultInfo* info);
};
