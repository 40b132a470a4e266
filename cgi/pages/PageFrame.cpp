#include "cgi/pages/CGICommonUtils.h"

int CGICommonUtils::writePageTop(const char* indent) {
    writeHTMLine(createHTMLine(R"(%s<div class="topmenu">)", indent));
    writeHTMLine(createHTMLine("%s\t<div class=\"topmenu-logo\"></div>", indent));
    return writeHTMLine(createHTMLine("%s</div>", indent));
}

int CGICommonUtils::writePageFoot(const char* indent) {
    writeHTMLine(createHTMLine(
        R"(%s<div style="height:32px; line-height:32px; text-align:center; color:#FFFFFF;">)", indent));
    writeHTMLine(createHTMLine(
        "%s\t<div id=\"copyright\">Copyright (c) the Result File Manager authors</div>", indent));
    return writeHTMLine(createHTMLine("%s</div>", indent));
}
