#include "marbex_opos/opos/automation_text.h"

#include <cstdio>

namespace marbex::tools {

namespace {

const char* Words(HRESULT result)
{
    switch (result) {
        case DISP_E_UNKNOWNNAME:
            return "the server does not know the name";
        case DISP_E_MEMBERNOTFOUND:
            return "the server has no such member";
        case DISP_E_TYPEMISMATCH:
            return "an argument has the wrong type";
        case DISP_E_OVERFLOW:
            return "an argument is out of range";
        case DISP_E_BADPARAMCOUNT:
            return "wrong number of arguments";
        case CLASS_E_CLASSNOTAVAILABLE:
            return "the server does not offer the class";
        case E_OUTOFMEMORY:
            return "out of memory";
        case E_NOINTERFACE:
            return "no such interface";
        default:
            return "failed";
    }
}

}  // namespace

std::string Described(HRESULT result)
{
    char code[16];
    std::snprintf(code, sizeof code, "(0x%08X)", static_cast<unsigned>(result));
    return std::string(Words(result)) + " " + code;
}

}  // namespace marbex::tools
