#include <array>
#include <cstdio>

#include "cgi/CFileManCGI.h"
#include "cgi/pages/CGICommonUtils.h"
#include "cgi/pages/PageLine.h"
#include "common/UniqueNames.h"
#include "conf/CFileManConf.h"

namespace {

using page::line;
using Html = CGICommonUtils;
using NameList = std::list<std::string>;

// One group of check boxes: its options, and the filter list that says which of them are checked.
struct FieldRule {
    CFileManCGI::FilterType type;
    const char* id;
    const char* legend;
    void (*readOptions)(NameList& out);
    NameList _ResultFilter::*checked;
};

// clang-format off
// The fields whose check boxes the user may change.
constexpr std::array<FieldRule, 4> kFieldRules = {{
    {CFileManCGI::FIELD_MODULE, "field_module", "Modules", &CFileManConf::getAllModuleNames, &_ResultFilter::modules},
    {CFileManCGI::FIELD_MODE, "field_mode", "Modes", &CFileManConf::getCurrentMode, &_ResultFilter::modes},
    {CFileManCGI::FIELD_TEST, "field_test", "Tests", &CFileManConf::getCurrentTypeNames, &_ResultFilter::tests},
    {CFileManCGI::FIELD_PORT, "field_port", "Ports", &CFileManConf::getCurrentPort, &_ResultFilter::ports},
}};

constexpr char kOptionFormat[] = R"(<div style="margin:5 0 5 5;width:120px;float:left;font-size:14px;"><input type="checkbox" id="%s" value="%s" %s>%s</input></div>)";
// The page only shows whether the list holds results and profiles; the user cannot change these two here.
constexpr char kDisabledOptionFormat[] = R"(<div style="margin:5 0 5 5;width:120px;float:left;font-size:14px;"><input type="checkbox" id="%s" value="%s" %s disabled>%s</input></div>)";

void writeFieldBegin(const char* id, const char* legend) {
    line(0, Html::createHTMLine(R"(<fieldset id="%s" style="margin:10px; border:1px solid gray;font-size:14px;">)", id));
    line(1, Html::createHTMLine("<legend>%s</legend>", legend));
}
// clang-format on

void writeOption(const char* format, CFileManCGI::FilterType type, const std::string& option, bool checked) {
    const std::string id = CFileManCGI::getOptionId(type, option);
    const std::string state = CFileManCGI::checkStat2String(checked);
    line(1, Html::createHTMLine(format, id.c_str(), option.c_str(), state.c_str(), option.c_str()));
}

void writeFieldEnd() {
    line(0, "</fieldset>");
}

void writeResultTypeField(const _ResultFilter& filter) {
    constexpr auto kType = CFileManCGI::FIELD_RESULT_TYPE;
    writeFieldBegin("field_rslt_type", "Result/Profile");
    writeOption(kDisabledOptionFormat, kType, "Result", filter.includeResults);
    writeOption(kDisabledOptionFormat, kType, "Profile", filter.includeProfiles);
    writeFieldEnd();
}

void writeField(const FieldRule& rule, const _ResultFilter& filter) {
    NameList options;
    rule.readOptions(options);
    const UniqueNames checked(filter.*rule.checked);
    writeFieldBegin(rule.id, rule.legend);
    for (const std::string& option : options)
        writeOption(kOptionFormat, rule.type, option, checked.contains(option));
    writeFieldEnd();
}

// Each line of the page is one line of this source.
// clang-format off
// Writes both pages up to the body. initCall is the script code that starts the page.
void writePageBegin(const char* initCall) {
    Html::writeCGIHeader();
    Html::writeHTMLBeginNode();
    line(0, "<head>");
    line(1, R"(<link href="../css/fileman.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<script src="../js/fileman.js" type="text/javascript"></script>)");
    line(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Aqua/css/ligerui-all.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Aqua/css/ligerui-form.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Tab/css/form.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<script src="../LigerUI/lib/jquery/jquery-1.3.2.min.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/core/base.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerForm.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerComboBox.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerCheckBox.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerButton.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.all.js" type="text/javascript"></script>)");
    line(1, R"(<script type="text/javascript">)");
    line(2, "$(function() {");
    line(3, initCall);
    line(2, "});");
    line(1, "</script>");
    line(0, "</head>");
    line(0, "<body>");
}

void writeButtonRow(const char* okId, const char* cancelId) {
    line(3, "<tr>");
    line(4, R"(<td colspan="3" align="center" class="l-table-edit-td">)");
    line(4, Html::createHTMLine(R"(<input type="button" id="%s" value="OK" style="width:100px;" />)", okId));
    line(4, Html::createHTMLine(R"(<input type="button" id="%s" value="Cancel" style="width:100px; margin-left:50px;" />)", cancelId));
    line(4, "</td>");
    line(3, "</tr>");
    line(2, "</table>");
}
// clang-format on

void writeTextRow(const char* labelCell, const char* inputFormat, const std::string& value) {
    line(3, "<tr>");
    line(4, labelCell);
    line(4, Html::createHTMLine(inputFormat, value.c_str()));
    line(4, R"(<td align="left"></td>)");
    line(3, "</tr>");
}

void writePageEnd() {
    line(1, "</form>");
    line(1, R"(<div style="display:none;"></div>)");
    line(0, "</body>");
    Html::writeHTMLEndNode();
}

} // namespace

// Each line of the page is one line of this source.
// clang-format off
void CFileManCGI::writePriFilterPage() {
    writePageBegin("initPriFilter();");
    line(1, R"(<form name="pri_form" id="pri_form">)");
    writeOptionField(FIELD_RESULT_TYPE);
    writeOptionField(FIELD_MODULE);
    writeOptionField(FIELD_MODE);
    writeOptionField(FIELD_TEST);
    writeOptionField(FIELD_PORT);
    line(2, R"(<table align="center" height="50" cellpadding="0" cellspacing="0" class="l-table-edit" style="margin-bottom:0px;">)");
    writeButtonRow("pri_btn_ok", "pri_btn_cancel");
    writePageEnd();
}

void CFileManCGI::writeAdvFilterPage() {
    const _AdvanceInfo& advance = m_filter.advanceInfo;
    writePageBegin("initAdvFilter();");
    line(1, R"(<form name="adv_form" id="adv_form">)");
    line(2, R"(<table align="center" height="400" cellpadding="0" cellspacing="0" class="l-table-edit" >)");
    writeTextRow(R"(<td align="right" class="l-table-edit-td">Job ID:</td>)",
                 R"(<td align="left" class="l-table-edit-td"><input name="adv_jobid" type="text" id="adv_jobid" ltype="text" value="%s" /></td>)",
                 advance.jobId);
    writeTextRow(R"(<td align="right" class="l-table-edit-td">Account:</td>)",
                 R"(<td align="left" class="l-table-edit-td"><input name="adv_account" type="text" id="adv_account" ltype="text" value="%s" /></td>)",
                 advance.account);
    writeTextRow(R"(<td align="right" class="l-table-edit-td">File Name:</td>)",
                 R"(<td align="left" class="l-table-edit-td"><input name="adv_file_name" type="text" id="adv_file_name" ltype="text" value="%s" /></td>)",
                 advance.fileName);
    writeTextRow(R"(<td align="right" class="l-table-edit-td">Prefix:</td>)",
                 R"(<td align="left" class="l-table-edit-td"><input name="adv_prefix" type="text" id="adv_prefix" ltype="text" value="%s" /></td>)",
                 advance.prefix);
    writeTextRow(R"(<td align="right" class="l-table-edit-td">Suffix:</td>)",
                 R"(<td align="left" class="l-table-edit-td"><input name="adv_suffix" type="text" id="adv_suffix" ltype="text" value="%s" /></td>)",
                 advance.suffix);
    writeButtonRow("adv_btn_ok", "adv_btn_cancel");
    writePageEnd();
}
// clang-format on

void CFileManCGI::writeOptionField(FilterType type) {
    if (type == FIELD_RESULT_TYPE) {
        writeResultTypeField(m_filter);
        return;
    }
    for (const FieldRule& rule : kFieldRules) {
        if (rule.type == type)
            writeField(rule, m_filter);
    }
}

std::string CFileManCGI::checkStat2String(bool checked) {
    return checked ? "checked" : "";
}

void CFileManCGI::startOptionColumn(int width, int height) {
    std::printf(R"(<div style="width:%d; height:%d; float:left;border:1px solid red;">)"
                "\n",
                width, height);
}

void CFileManCGI::endOptionColumn() {
    line(0, "</div>");
}
