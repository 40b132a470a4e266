#include "cgi/pages/PageHead.h"

#include <string>

#include "cgi/answer/Header.h"
#include "cgi/pages/CGICommonUtils.h"
#include "cgi/pages/IncompleteNotice.h"
#include "cgi/pages/PageLine.h"

// The scripts read a page by its kind, and show how much of the storage is missing in it.
void page::writeMeta() {
    strictLine(1, R"(<meta charset="utf-8" />)");
    strictLine(1, "<title>Result file manager</title>");
    strictLine(1, R"(<meta name="fileman-answers" content="strict" />)");
    if (const std::size_t places = unreadPlaces(); places > 0)
        strictLine(1, R"(<meta name="fileman-incomplete" content=")" + std::to_string(places) + R"(" />)");
}

// Each line of the page is one line of this source.
// clang-format off
namespace {

void beginHead() {
    CGICommonUtils::writeCGIHeader();
    CGICommonUtils::writeHTMLBeginNode();
    page::line(0, "<head>");
    page::writeMeta();
    page::line(1, R"(<link href="../css/fileman.css" rel="stylesheet" type="text/css" />)");
    page::line(1, R"(<script src="../js/fileman.js" type="text/javascript"></script>)");
}

} // namespace

void page::beginListPage() {
    beginHead();
    line(1, R"(<script src="../js/homepage.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Aqua/css/ligerui-all.css" rel="stylesheet" type="text/css" />)");
    defaultLine(1, R"(<script src="../LigerUI/lib/jquery/jquery-1.3.2.min.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/core/base.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerGrid.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerDialog.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.min.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.all.js" type="text/javascript"></script>)");
}

void page::beginFilterPage(const char* initCall) {
    beginHead();
    defaultLine(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Aqua/css/ligerui-all.css" rel="stylesheet" type="text/css" />)");
    defaultLine(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Aqua/css/ligerui-form.css" rel="stylesheet" type="text/css" />)");
    defaultLine(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Tab/css/form.css" rel="stylesheet" type="text/css" />)");
    defaultLine(1, R"(<script src="../LigerUI/lib/jquery/jquery-1.3.2.min.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/core/base.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerForm.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerComboBox.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerCheckBox.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerButton.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.all.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script type="text/javascript">)");
    defaultLine(2, "$(function() {");
    defaultLine(3, initCall);
    defaultLine(2, "});");
    defaultLine(1, "</script>");
    line(0, "</head>");
    line(0, "<body>");
    writeIncompleteNotice();
}
// clang-format on
