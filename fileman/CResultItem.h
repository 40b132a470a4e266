#pragma once

#include <string>

#include "fileman/ResultInfo.h"

// Questions about one record. A null record is none of these and has no name.
class CResultItem {
public:
    // "[name]-[type label]-[port label]-[mode label]", 255 bytes at most: the directory that a download packs
    // the record into.
    static std::string uniqueName(const _ResultInfo* info);
    static bool isPacketCapture(const _ResultInfo* info);
    static bool isOTDR(const _ResultInfo* info);
    static bool isScreenShot(const _ResultInfo* info);
    static bool isFiberScope(const _ResultInfo* info);
};
