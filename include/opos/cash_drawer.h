#pragma once

// Constants of the OPOS CashDrawer class (UnifiedPOS 1.14): events and property indices.

#include <cstdint>

namespace opos {

// Status update events.
inline constexpr int32_t CASH_SUE_DRAWERCLOSED = 0;
inline constexpr int32_t CASH_SUE_DRAWEROPEN = 1;

// Property indices, numeric and capabilities.
inline constexpr int32_t PIDXCash_DrawerOpened = 1001;
inline constexpr int32_t PIDXCash_CapStatus = 1501;
inline constexpr int32_t PIDXCash_CapStatusMultiDrawerDetect = 1502;

}  // namespace opos
