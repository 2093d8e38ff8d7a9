#include "server/companion_methods.h"

#include "companions/cash_drawer_driver.h"
#include "companions/line_display_driver.h"

namespace marbex::server {
namespace {

using Drawer = companions::MarbexOposCashDrawerDriver;
using Display = companions::MarbexOposLineDisplayDriver;

template <auto Operation>
constexpr DispatchMethod OfDrawer(std::string_view name)
{
    return Method<Operation, Drawer>(name);
}

template <auto Operation>
constexpr DispatchMethod OfDisplay(std::string_view name)
{
    return Method<Operation, Display>(name);
}

// Both in the order of their dispatch identifiers, which is fixed.
constexpr DispatchMethod kDrawerMethods[] = {
    OfDrawer<&Drawer::OpenService>("OpenService"),
    OfDrawer<&Drawer::CloseService>("CloseService"),
    OfDrawer<&Drawer::ClaimDevice>("ClaimDevice"),
    OfDrawer<&Drawer::COFreezeEvents>("COFreezeEvents"),
    OfDrawer<&Drawer::CompareFirmwareVersion>("CompareFirmwareVersion"),
    OfDrawer<&Drawer::UpdateFirmware>("UpdateFirmware"),
    OfDrawer<&Drawer::DirectIO>("DirectIO"),
    OfDrawer<&Drawer::CheckHealth>("CheckHealth"),
    OfDrawer<&Drawer::ReleaseDevice>("ReleaseDevice"),
    OfDrawer<&Drawer::GetPropertyNumber>("GetPropertyNumber"),
    OfDrawer<&Drawer::GetPropertyString>("GetPropertyString"),
    OfDrawer<&Drawer::SetPropertyString>("SetPropertyString"),
    OfDrawer<&Drawer::SetPropertyNumber>("SetPropertyNumber"),
    OfDrawer<&Drawer::OpenDrawer>("OpenDrawer"),
    OfDrawer<&Drawer::WaitForDrawerClose>("WaitForDrawerClose"),
    OfDrawer<&Drawer::ResetStatistics>("ResetStatistics"),
    OfDrawer<&Drawer::RetrieveStatistics>("RetrieveStatistics"),
    OfDrawer<&Drawer::UpdateStatistics>("UpdateStatistics"),
    OfDrawer<&Drawer::ClearInput>("ClearInput"),
    OfDrawer<&Drawer::ClearOutput>("ClearOutput"),
};

constexpr DispatchMethod kDisplayMethods[] = {
    OfDisplay<&Display::OpenService>("OpenService"),
    OfDisplay<&Display::CloseService>("CloseService"),
    OfDisplay<&Display::ClaimDevice>("ClaimDevice"),
    OfDisplay<&Display::COFreezeEvents>("COFreezeEvents"),
    OfDisplay<&Display::ReleaseDevice>("ReleaseDevice"),
    OfDisplay<&Display::CheckHealth>("CheckHealth"),
    OfDisplay<&Display::DirectIO>("DirectIO"),
    OfDisplay<&Display::ClearDescriptors>("ClearDescriptors"),
    AlsoWithoutArguments(OfDisplay<&Display::SetDescriptor>("SetDescriptor")),
    OfDisplay<&Display::ClearText>("ClearText"),
    OfDisplay<&Display::CreateDisplayWindow>("CreateWindow"),
    OfDisplay<&Display::DestroyWindow>("DestroyWindow"),
    OfDisplay<&Display::RefreshWindow>("RefreshWindow"),
    OfDisplay<&Display::DisplayText>("DisplayText"),
    OfDisplay<&Display::DisplayTextAt>("DisplayTextAt"),
    OfDisplay<&Display::ScrollText>("ScrollText"),
    OfDisplay<&Display::CompareFirmwareVersion>("CompareFirmwareVersion"),
    OfDisplay<&Display::UpdateFirmware>("UpdateFirmware"),
    OfDisplay<&Display::ResetStatistics>("ResetStatistics"),
    OfDisplay<&Display::RetrieveStatistics>("RetrieveStatistics"),
    OfDisplay<&Display::UpdateStatistics>("UpdateStatistics"),
    OfDisplay<&Display::DefineGlyph>("DefineGlyph"),
    OfDisplay<&Display::ReadCharacterAtCursor>("ReadCharacterAtCursor"),
    OfDisplay<&Display::DisplayBitmap>("DisplayBitmap"),
    OfDisplay<&Display::SetBitmap>("SetBitmap"),
    OfDisplay<&Display::GetPropertyNumber>("GetPropertyNumber"),
    OfDisplay<&Display::GetPropertyString>("GetPropertyString"),
    OfDisplay<&Display::SetPropertyString>("SetPropertyString"),
    OfDisplay<&Display::SetPropertyNumber>("SetPropertyNumber"),
};

constexpr DispatchTable kDrawerTable("MarbexOposCashDrawerDriver", kDrawerMethods);
constexpr DispatchTable kDisplayTable("MarbexOposLineDisplayDriver", kDisplayMethods);

}  // namespace

const DispatchTable& CashDrawerTable()
{
    return kDrawerTable;
}

const DispatchTable& LineDisplayTable()
{
    return kDisplayTable;
}

}  // namespace marbex::server
