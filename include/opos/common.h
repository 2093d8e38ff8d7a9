#pragma once

// Constants of the OPOS common interface (UnifiedPOS 1.14, appendix A): result codes, states, error
// answers and the property indices that every device class shares.

#include <cstdint>

namespace opos {

// Result codes of every method and of the ResultCode property.
inline constexpr int32_t OPOS_SUCCESS = 0;
inline constexpr int32_t OPOS_E_CLOSED = 101;
inline constexpr int32_t OPOS_E_CLAIMED = 102;
inline constexpr int32_t OPOS_E_NOTCLAIMED = 103;
inline constexpr int32_t OPOS_E_NOSERVICE = 104;
inline constexpr int32_t OPOS_E_DISABLED = 105;
inline constexpr int32_t OPOS_E_ILLEGAL = 106;
inline constexpr int32_t OPOS_E_NOHARDWARE = 107;
inline constexpr int32_t OPOS_E_OFFLINE = 108;
inline constexpr int32_t OPOS_E_NOEXIST = 109;
inline constexpr int32_t OPOS_E_EXISTS = 110;
inline constexpr int32_t OPOS_E_FAILURE = 111;
inline constexpr int32_t OPOS_E_TIMEOUT = 112;
inline constexpr int32_t OPOS_E_BUSY = 113;
inline constexpr int32_t OPOS_E_EXTENDED = 114;

// Reasons a control object may ask for after a failed open.
inline constexpr int32_t OPOS_OR_FAILEDOPEN = 306;

// Device states.
inline constexpr int32_t OPOS_S_CLOSED = 1;
inline constexpr int32_t OPOS_S_IDLE = 2;
inline constexpr int32_t OPOS_S_BUSY = 3;
inline constexpr int32_t OPOS_S_ERROR = 4;

// Where an error event arose, and what the application answers.
inline constexpr int32_t OPOS_EL_OUTPUT = 1;
inline constexpr int32_t OPOS_EL_INPUT = 2;
inline constexpr int32_t OPOS_EL_INPUT_DATA = 3;
inline constexpr int32_t OPOS_ER_RETRY = 11;
inline constexpr int32_t OPOS_ER_CLEAR = 12;
inline constexpr int32_t OPOS_ER_CONTINUEINPUT = 13;

// Levels of CheckHealth.
inline constexpr int32_t OPOS_CH_INTERNAL = 1;
inline constexpr int32_t OPOS_CH_EXTERNAL = 2;
inline constexpr int32_t OPOS_CH_INTERACTIVE = 3;

inline constexpr int32_t OPOS_FOREVER = -1;

// Power reporting.
inline constexpr int32_t OPOS_PR_NONE = 0;
inline constexpr int32_t OPOS_PN_DISABLED = 0;
inline constexpr int32_t OPOS_PN_ENABLED = 1;
inline constexpr int32_t OPOS_PS_UNKNOWN = 2000;

// Binary conversion.
inline constexpr int32_t OPOS_BC_NONE = 0;
inline constexpr int32_t OPOS_BC_NIBBLE = 1;
inline constexpr int32_t OPOS_BC_DECIMAL = 2;

// Property indices, numeric.
inline constexpr int32_t PIDX_Claimed = 1;
inline constexpr int32_t PIDX_DataEventEnabled = 2;
inline constexpr int32_t PIDX_DeviceEnabled = 3;
inline constexpr int32_t PIDX_FreezeEvents = 4;
inline constexpr int32_t PIDX_OutputID = 5;
inline constexpr int32_t PIDX_ResultCode = 6;
inline constexpr int32_t PIDX_ResultCodeExtended = 7;
inline constexpr int32_t PIDX_ServiceObjectVersion = 8;
inline constexpr int32_t PIDX_State = 9;
inline constexpr int32_t PIDX_AutoDisable = 10;
inline constexpr int32_t PIDX_BinaryConversion = 11;
inline constexpr int32_t PIDX_DataCount = 12;
inline constexpr int32_t PIDX_PowerNotify = 13;
inline constexpr int32_t PIDX_PowerState = 14;
inline constexpr int32_t PIDX_CapPowerReporting = 501;
inline constexpr int32_t PIDX_CapStatisticsReporting = 502;
inline constexpr int32_t PIDX_CapUpdateStatistics = 503;
inline constexpr int32_t PIDX_CapCompareFirmwareVersion = 504;
inline constexpr int32_t PIDX_CapUpdateFirmware = 505;

// Property indices, text.
inline constexpr int32_t PIDX_CheckHealthText = 1000001;
inline constexpr int32_t PIDX_DeviceDescription = 1000002;
inline constexpr int32_t PIDX_DeviceName = 1000003;
inline constexpr int32_t PIDX_ServiceObjectDescription = 1000004;

}  // namespace opos
