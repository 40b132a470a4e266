#include <string>

#include "cgi/CFileManCGI.h"
#include "cgi/answer/Answers.h"
#include "cgi/pages/CGICommonUtils.h"
#include "cgi/pages/IncompleteNotice.h"
#include "cgi/pages/PageHead.h"
#include "cgi/pages/PageLine.h"
#include "cgi/pages/RowFormat.h"
#include "cgi/pages/RowWriter.h"
#include "common/CCommUtils.h"
#include "fileman/CFileManager.h"

namespace {

using page::defaultLine;
using page::either;
using page::line;
using page::value;
using Html = CGICommonUtils;
void writeGridData(const RowSource& showRows) {
    line(1, "var griddata = [");
    if (Answers::current().areStrict())
        writeRows<StrictElements>(showRows);
    else
        writeRows<DefaultElements>(showRows);
    line(2, "];");
}

void writeHiddenInput(const char* format, const std::string& stored) {
    line(2, Html::createHTMLine(format, value(stored).c_str()));
}

// Each line of the page is one line of this source.
// clang-format off
void writePageUntilForms(const RowSource& showRows) {
    page::beginListPage();
    // As text in a strict page: nothing may run there that is not in a file of its own.
    line(1, either(R"(<script type="text/javascript">)", R"(<script type="text/plain" id="griddata">)"));
    writeGridData(showRows);
    line(0, "</script>");
    line(0, "</head>");
    line(0, either(R"(<body onload="onInitPages();">)", "<body>"));
    page::writeIncompleteNotice();
    line(1, R"(<form id="fm_form1" name="fm_form1">)");
    line(2, either(R"(<div style="display:block; background-color:white;">)", "<div>"));
    line(3, either(R"(<div id="rsltgrid" style="margin:0; padding:0;"></div>)", R"(<div id="rsltgrid"></div>)"));
    line(2, "</div>");
    line(1, "</form>");
    defaultLine(1, R"(<div style="display:none;"></div>)");
}
// clang-format on

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a list of their own
int CFileManCGI::writeFileManPage(std::list<_ResultInfo*> results) {
    writePageUntilForms([&results](const RowVisitor& visitor) {
        for (const _ResultInfo* const record : results)
            visitor(rowOf(*record));
    });
    return writeForms();
}

int CFileManCGI::writeFileManPage(const CFileManager& store) {
    writePageUntilForms([&store](const RowVisitor& visitor) { store.forEachLoaded(visitor); });
    return writeForms();
}

int CFileManCGI::writeForms() {
    writeSubmitForm();
    writeCommandForm();
    line(0, "</body>");
    Html::writeHTMLEndNode();
    return 1;
}

// clang-format off

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
