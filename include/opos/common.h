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
inline constexpr int32_t OPOS_E_DEPRECATED = 115;

// Extended result codes of statistics and firmware methods.
inline constexpr int32_t OPOS_ESTATS_ERROR = 280;
inline constexpr int32_t OPOS_EFIRMWARE_BAD_FILE = 281;
inline constexpr int32_t OPOS_ESTATS_DEPENDENCY = 282;

// Reasons a control object may ask for after a failed open: the control object's own, then a service object's.
inline constexpr int32_t OPOS_OR_ALREADYOPEN = 301;
inline constexpr int32_t OPOS_OR_REGBADNAME = 302;
inline constexpr int32_t OPOS_OR_REGPROGID = 303;
inline constexpr int32_t OPOS_OR_CREATE = 304;
inline constexpr int32_t OPOS_OR_BADIF = 305;
inline constexpr int32_t OPOS_OR_FAILEDOPEN = 306;
inline constexpr int32_t OPOS_OR_BADVERSION = 307;
inline constexpr int32_t OPOS_ORS_NOPORT = 401;
inline constexpr int32_t OPOS_ORS_NOTSUPPORTED = 402;
inline constexpr int32_t OPOS_ORS_CONFIG = 403;
inline constexpr int32_t OPOS_ORS_SPECIFIC = 450;

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
inline constexpr int32_t OPOS_PR_STANDARD = 1;
inline constexpr int32_t OPOS_PR_ADVANCED = 2;
inline constexpr int32_t OPOS_PN_DISABLED = 0;
inline constexpr int32_t OPOS_PN_ENABLED = 1;
inline constexpr int32_t OPOS_PS_UNKNOWN = 2000;
inline constexpr int32_t OPOS_PS_ONLINE = 2001;
inline constexpr int32_t OPOS_PS_OFF = 2002;
inline constexpr int32_t OPOS_PS_OFFLINE = 2003;
inline constexpr int32_t OPOS_PS_OFF_OFFLINE = 2004;
inline constexpr int32_t OPOS_SUE_POWER_ONLINE = 2001;
inline constexpr int32_t OPOS_SUE_POWER_OFF = 2002;
inline constexpr int32_t OPOS_SUE_POWER_OFFLINE = 2003;
inline constexpr int32_t OPOS_SUE_POWER_OFF_OFFLINE = 2004;

// Firmware: answers of CompareFirmwareVersion, progress reported by status update events.
inline constexpr int32_t OPOS_CFV_FIRMWARE_OLDER = 1;
inline constexpr int32_t OPOS_CFV_FIRMWARE_SAME = 2;
inline constexpr int32_t OPOS_CFV_FIRMWARE_NEWER = 3;
inline constexpr int32_t OPOS_CFV_FIRMWARE_DIFFERENT = 4;
inline constexpr int32_t OPOS_CFV_FIRMWARE_UNKNOWN = 5;
inline constexpr int32_t OPOS_SUE_UF_PROGRESS = 2100;
inline constexpr int32_t OPOS_SUE_UF_COMPLETE = 2200;
inline constexpr int32_t OPOS_SUE_UF_FAILED_DEV_OK = 2201;
inline constexpr int32_t OPOS_SUE_UF_FAILED_DEV_UNRECOVERABLE = 2202;
inline constexpr int32_t OPOS_SUE_UF_FAILED_DEV_NEEDS_FIRMWARE = 2203;
inline constexpr int32_t OPOS_SUE_UF_FAILED_DEV_UNKNOWN = 2204;
inline constexpr int32_t OPOS_SUE_UF_COMPLETE_DEV_NOT_RESTORED = 2205;

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
