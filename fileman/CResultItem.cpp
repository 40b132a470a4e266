#include "fileman/CResultItem.h"

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "fileman/RecordId.h"

std::string CResultItem::uniqueName(const _ResultInfo* info) {
    if (info == nullptr)
        return {};
    std::string name = "[" + info->name + "]-[" + CFileManConf::typeKey2Label(info->type) + "]-[" +
                       CFileManConf::portName2Label(info->port) + "]-[" +
                       CFileManConf::modeName2Label(info->mode) + "]";
    if (name.size() > kLongestId)
        name.resize(kLongestId);
    return name;
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
