#include "fileman/CResultItem.h"

#include "common/CCommUtils.h"
#include "fileman/ArchiveFolder.h"

std::string CResultItem::uniqueName(const _ResultInfo* info) {
    return info == nullptr ? std::string() : folderName(*info);
}

bool CResultItem::isPacketCapture(const _ResultInfo* info) {
    return info != nullptr && CCommUtils::isEquals(info->rsltype, "PCAP");
}

bool CResultItem::isOTDR(const _ResultInfo* info) {
    return info != nullptr && CCommUtils::isEquals(info->rsltype, "sor");
}

bool CResultItem::isScreenShot(const _ResultInfo* info) {
    return info != nullptr && CCommUtils::isEquals(info->test, "Screen");
}

bool CResultItem::isFiberScope(const _ResultInfo* info) {
    return info != nullptr && CCommUtils::isEquals(info->test, "Fiber Scope");
}
