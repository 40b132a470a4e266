#include <cstdio>

#include "cgi/CFileManCGI.h"
#include "cgi/CGICommonUtils.h"
#include "cgi/PageLine.h"
#include "common/CCommUtils.h"

namespace {

using page::line;
using Html = CGICommonUtils;

// One element of griddata. Values stand as stored, also those that end the script's string, and the last
// element has its comma too: wanted, the scripts rely on these bytes. Appended into one buffer because a list
// may hold 100,000 of them.
void formatRow(std::string& row, const _ResultInfo& record) {
    row.assign("\t\t{ id: '").append(record.id);
    row.append("', name: '").append(record.name);
    row.append("', module: '").append(record.module);
    row.append("', mode: '").append(record.mode);
    row.append("', test: '").append(record.test);
    row.append("', port: '").append(record.port);
    row.append("', datetime: '").append(record.datetime);
    row.append("', rsltype: '").append(record.rsltype);
    row.append("', path: '").append(record.path);
    row.append("' },\n");
}

void writeGridData(const std::list<_ResultInfo*>& results) {
    line(1, "var griddata = [");
    std::string row;
    for (const _ResultInfo* const record : results) {
        formatRow(row, *record);
        std::fwrite(row.data(), 1, row.size(), stdout);
    }
    line(2, "];");
}

void writeHiddenInput(const char* format, const std::string& value) {
    line(2, Html::createHTMLine(format, value.c_str()));
}

} // namespace

// A line of the page is a line here.
// clang-format off
// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a list of their own
int CFileManCGI::writeFileManPage(std::list<_ResultInfo*> results) {
    Html::writeCGIHeader();
    Html::writeHTMLBeginNode();
    line(0, "<head>");
    line(1, R"(<link href="../css/fileman.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<script src="../js/fileman.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../js/homepage.js" type="text/javascript"></script>)");
    line(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Aqua/css/ligerui-all.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<script src="../LigerUI/lib/jquery/jquery-1.3.2.min.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/core/base.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerGrid.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerDialog.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.min.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.all.js" type="text/javascript"></script>)");
    line(1, R"(<script type="text/javascript">)");
    writeGridData(results);
    line(0, "</script>");
    line(0, "</head>");
    line(0, R"(<body onload="onInitPages();">)");
    line(1, R"(<form id="fm_form1" name="fm_form1">)");
    line(2, R"(<div style="display:block; background-color:white;">)");
    line(3, R"(<div id="rsltgrid" style="margin:0; padding:0;"></div>)");
    line(2, "</div>");
    line(1, "</form>");
    line(1, R"(<div style="display:none;"></div>)");
    writeSubmitForm();
    writeCommandForm();
    line(0, "</body>");
    Html::writeHTMLEndNode();
    return 1;
}

void CFileManCGI::writeSubmitForm() {
    const _AdvanceInfo& advance = m_filter.advanceInfo;
    line(1, R"(<form action="fileman.cgi" id="fm_form">)");
    writeHiddenInput(R"(<input type="hidden" id="fmtype" name="fmtype" value="%s" />)", getFileManTypeString());
    writeHiddenInput(R"(<input type="hidden" id="module" name="module" value="%s" />)", CCommUtils::join(m_filter.modules, ","));
    writeHiddenInput(R"(<input type="hidden" id="mode" name="mode" value="%s" />)", CCommUtils::join(m_filter.modes, ","));
    writeHiddenInput(R"(<input type="hidden" id="test" name="test" value="%s" />)", CCommUtils::join(m_filter.tests, ","));
    writeHiddenInput(R"(<input type="hidden" id="port" name="port" value="%s" />)", CCommUtils::join(m_filter.ports, ","));
    writeHiddenInput(R"(<input type="hidden" id="jobid" name="jobid" value="%s" />)", advance.jobId);
    writeHiddenInput(R"(<input type="hidden" id="account" name="account" value="%s" />)", advance.account);
    writeHiddenInput(R"(<input type="hidden" id="locator" name="locator" value="%s" />)", advance.locator);
    writeHiddenInput(R"(<input type="hidden" id="type" name="type" value="%s" />)", advance.type);
    writeHiddenInput(R"(<input type="hidden" id="fname" name="fname" value="%s" />)", advance.fileName);
    writeHiddenInput(R"(<input type="hidden" id="prefix" name="prefix" value="%s" />)", advance.prefix);
    writeHiddenInput(R"(<input type="hidden" id="suffix" name="suffix" value="%s" />)", advance.suffix);
    line(1, "</form>");
}
// clang-format on

void CFileManCGI::writeCommandForm() {
    line(1, R"(<form action="fileman.cgi" id="cmd_form">)");
    writeHiddenInput(R"(<input type="hidden" id="opertype" name="opertype" value="%s" />)", "");
    writeHiddenInput(R"(<input type="hidden" id="rsltid" name="rsltid" value="%s" />)", "");
    line(1, "</form>");
}
