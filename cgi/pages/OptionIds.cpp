#include "cgi/CFileManCGI.h"

std::string CFileManCGI::getRowCheckId(const std::string& name) {
    return "id_row_check_" + name;
}

std::string CFileManCGI::getModeOptionId(const std::string& name) {
    return "id_mode_opt_" + name;
}

std::string CFileManCGI::getTestOptionId(const std::string& name) {
    return "id_test_opt_" + name;
}

std::string CFileManCGI::getPortOptionId(const std::string& name) {
    return "id_port_opt_" + name;
}

std::string CFileManCGI::getRsltTypeOptionId(const std::string& name) {
    return "id_rslt_type_opt_" + name;
}

std::string CFileManCGI::getOptionId(FilterType type, const std::string& name) {
    switch (type) {
    case FIELD_MODULE:
        return "id_module_opt_" + name;
    case FIELD_MODE:
        return getModeOptionId(name);
    case FIELD_TEST:
        return getTestOptionId(name);
    case FIELD_PORT:
        return getPortOptionId(name);
    case FIELD_RESULT_TYPE:
        return getRsltTypeOptionId(name);
    }
    return {};
}
