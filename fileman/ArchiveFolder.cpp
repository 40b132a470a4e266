#include "fileman/ArchiveFolder.h"

#include "conf/CFileManConf.h"
#include "fileman/RecordId.h"

std::string folderName(const _ResultInfo& record) {
    std::string name = "[" + record.name + "]-[" + CFileManConf::typeKey2Label(record.type) + "]-[" +
                       CFileManConf::portName2Label(record.port) + "]-[" +
                       CFileManConf::modeName2Label(record.mode) + "]";
    if (name.size() > kLongestId)
        name.resize(kLongestId);
    return name;
}
