#include "marbex_opos/opos/code_names.h"

#include <algorithm>
#include <array>
#include <optional>

#include "marbex_opos/opos/constant_table.h"
#include "opos/common.h"
#include "platform/registry.h"

namespace marbex::tools {

namespace {

struct EnumeratedProperty {
    std::optional<ObjectKind> object;  // none: every class has it
    std::string_view property;
    std::string_view prefix;
};

constexpr auto kEvery = std::nullopt;
constexpr auto kPrinter = ObjectKind::kPrinter;
constexpr auto kLineDisplay = ObjectKind::kLineDisplay;

constexpr auto kEnumeratedProperties = std::to_array<EnumeratedProperty>({
    {kEvery, "ResultCode", "OPOS_E_"},
    {kEvery, "State", "OPOS_S_"},
    {kEvery, "BinaryConversion", "OPOS_BC_"},
    {kEvery, "PowerNotify", "OPOS_PN_"},
    {kEvery, "PowerState", "OPOS_PS_"},
    {kEvery, "CapPowerReporting", "OPOS_PR_"},
    {kPrinter, "CharacterSet", "PTR_CS_"},
    {kPrinter, "CapCharacterSet", "PTR_CCS_"},
    {kPrinter, "ErrorLevel", "PTR_EL_"},
    {kPrinter, "ErrorStation", "PTR_S_"},
    {kPrinter, "MapMode", "PTR_MM_"},
    {kPrinter, "RotateSpecial", "PTR_RP_"},
    {kPrinter, "CartridgeNotify", "PTR_CN_"},
    {kPrinter, "JrnCartridgeState", "PTR_CART_"},
    {kPrinter, "RecCartridgeState", "PTR_CART_"},
    {kPrinter, "SlpCartridgeState", "PTR_CART_"},
    {kPrinter, "JrnCurrentCartridge", "PTR_COLOR_"},
    {kPrinter, "RecCurrentCartridge", "PTR_COLOR_"},
    {kPrinter, "SlpCurrentCartridge", "PTR_COLOR_"},
    {kPrinter, "SlpPrintSide", "PTR_PS_"},
    {kPrinter, "PageModePrintDirection", "PTR_PD_"},
    {kPrinter, "PageModeStation", "PTR_S_"},
    {kPrinter, "CapJrnColor", "PTR_COLOR_"},
    {kPrinter, "CapRecColor", "PTR_COLOR_"},
    {kPrinter, "CapSlpColor", "PTR_COLOR_"},
    {kPrinter, "CapRecMarkFeed", "PTR_MF_"},
    {kPrinter, "CapRecRuledLine", "PTR_RL_"},
    {kPrinter, "CapSlpRuledLine", "PTR_RL_"},
    {kLineDisplay, "CharacterSet", "DISP_CS_"},
    {kLineDisplay, "CapCharacterSet", "DISP_CCS_"},
    {kLineDisplay, "CapBlink", "DISP_CB_"},
    {kLineDisplay, "CapReverse", "DISP_CR_"},
    {kLineDisplay, "CapReadBack", "DISP_CRB_"},
    {kLineDisplay, "CapCursorType", "DISP_CCT_"},
    {kLineDisplay, "CursorType", "DISP_CT_"},
    {kLineDisplay, "MarqueeType", "DISP_MT_"},
    {kLineDisplay, "MarqueeFormat", "DISP_MF_"},
});

bool IsOf(const NameSets& sets, const Constant& constant)
{
    return std::ranges::any_of(sets, [&](std::string_view prefix) { return constant.name.starts_with(prefix); });
}

}  // namespace

NameSets NamesOfResults()
{
    return {"OPOS_E_"};
}

NameSets NamesOfExtendedResults(ObjectKind object)
{
    NameSets sets{"OPOS_ESTATS_", "OPOS_EFIRMWARE_"};
    if (object == ObjectKind::kPrinter) sets.push_back("OPOS_EPTR_");
    if (object == ObjectKind::kLineDisplay) sets.push_back("OPOS_EDISP_");
    return sets;
}

NameSets NamesOfStatusEvents(ObjectKind object)
{
    NameSets sets{"OPOS_SUE_"};
    if (object == ObjectKind::kPrinter) sets.push_back("PTR_SUE_");
    if (object == ObjectKind::kCashDrawer) sets.push_back("CASH_SUE_");
    return sets;
}

NameSets NamesOfProperty(ObjectKind object, std::string_view property)
{
    if (platform::SameName(property, "ResultCodeExtended")) return NamesOfExtendedResults(object);
    for (const EnumeratedProperty& one : kEnumeratedProperties) {
        const bool isItsObject = !one.object || *one.object == object;
        if (isItsObject && platform::SameName(one.property, property)) return {one.prefix};
    }
    return {};
}

NameSets NamesOfMethod(std::string_view method)
{
    if (method == "GetOpenResult") return {"OPOS_OR_", "OPOS_ORS_"};
    return NamesOfResults();
}

std::string Named(int32_t number, const NameSets& sets)
{
    std::string text = std::to_string(number);
    for (const Constant& constant : Constants()) {
        if (constant.value == number && IsOf(sets, constant)) return text + " (" + std::string(constant.name) + ")";
    }
    return text;
}

std::string ResultText(int32_t code, int32_t extended)
{
    std::string text = Named(code, code == opos::OPOS_SUCCESS ? NameSets{"OPOS_SUCCESS"} : NamesOfResults());
    if (extended != 0) text += ", " + Named(extended, NamesOfExtendedResults(ObjectKind::kPrinter));
    return text;
}

std::vector<std::string_view> ConstantsOf(const NameSets& sets)
{
    std::vector<std::string_view> names;
    for (const Constant& constant : Constants()) {
        if (IsOf(sets, constant)) names.push_back(constant.name);
    }
    return names;
}

}  // namespace marbex::tools
