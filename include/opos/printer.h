#pragma once

// Constants of the OPOS POSPrinter class (UnifiedPOS 1.14): stations, sizes, events and property indices.

#include <cstdint>

namespace opos {

// Stations.
inline constexpr int32_t PTR_S_JOURNAL = 1;
inline constexpr int32_t PTR_S_RECEIPT = 2;
inline constexpr int32_t PTR_S_SLIP = 4;
inline constexpr int32_t PTR_S_JOURNAL_RECEIPT = 0x0003;
inline constexpr int32_t PTR_S_JOURNAL_SLIP = 0x0005;
inline constexpr int32_t PTR_S_RECEIPT_SLIP = 0x0006;
inline constexpr int32_t PTR_TWO_RECEIPT_JOURNAL = 0x8003;
inline constexpr int32_t PTR_TWO_SLIP_JOURNAL = 0x8005;
inline constexpr int32_t PTR_TWO_SLIP_RECEIPT = 0x8006;

// Extended result codes.
inline constexpr int32_t OPOS_EPTR_COVER_OPEN = 201;
inline constexpr int32_t OPOS_EPTR_JRN_EMPTY = 202;
inline constexpr int32_t OPOS_EPTR_REC_EMPTY = 203;
inline constexpr int32_t OPOS_EPTR_SLP_EMPTY = 204;
inline constexpr int32_t OPOS_EPTR_SLP_FORM = 205;
inline constexpr int32_t OPOS_EPTR_TOOBIG = 206;
inline constexpr int32_t OPOS_EPTR_BADFORMAT = 207;
inline constexpr int32_t OPOS_EPTR_JRN_CARTRIDGE_REMOVED = 208;
inline constexpr int32_t OPOS_EPTR_JRN_CARTRIDGE_EMPTY = 209;
inline constexpr int32_t OPOS_EPTR_JRN_HEAD_CLEANING = 210;
inline constexpr int32_t OPOS_EPTR_REC_CARTRIDGE_REMOVED = 211;
inline constexpr int32_t OPOS_EPTR_REC_CARTRIDGE_EMPTY = 212;
inline constexpr int32_t OPOS_EPTR_REC_HEAD_CLEANING = 213;
inline constexpr int32_t OPOS_EPTR_SLP_CARTRIDGE_REMOVED = 214;
inline constexpr int32_t OPOS_EPTR_SLP_CARTRIDGE_EMPTY = 215;
inline constexpr int32_t OPOS_EPTR_SLP_HEAD_CLEANING = 216;

// Map modes.
inline constexpr int32_t PTR_MM_DOTS = 1;
inline constexpr int32_t PTR_MM_TWIPS = 2;
inline constexpr int32_t PTR_MM_ENGLISH = 3;
inline constexpr int32_t PTR_MM_METRIC = 4;

// Status update events.
inline constexpr int32_t PTR_SUE_COVER_OPEN = 11;
inline constexpr int32_t PTR_SUE_COVER_OK = 12;
inline constexpr int32_t PTR_SUE_JRN_EMPTY = 21;
inline constexpr int32_t PTR_SUE_JRN_NEAREMPTY = 22;
inline constexpr int32_t PTR_SUE_JRN_PAPEROK = 23;
inline constexpr int32_t PTR_SUE_REC_EMPTY = 24;
inline constexpr int32_t PTR_SUE_REC_NEAREMPTY = 25;
inline constexpr int32_t PTR_SUE_REC_PAPEROK = 26;
inline constexpr int32_t PTR_SUE_SLP_EMPTY = 27;
inline constexpr int32_t PTR_SUE_SLP_NEAREMPTY = 28;
inline constexpr int32_t PTR_SUE_SLP_PAPEROK = 29;
inline constexpr int32_t PTR_SUE_JRN_CARTRIDGE_EMPTY = 41;
inline constexpr int32_t PTR_SUE_JRN_CARTRIDGE_NEAREMPTY = 42;
inline constexpr int32_t PTR_SUE_JRN_HEAD_CLEANING = 43;
inline constexpr int32_t PTR_SUE_JRN_CARTRIDGE_OK = 44;
inline constexpr int32_t PTR_SUE_REC_CARTRIDGE_EMPTY = 45;
inline constexpr int32_t PTR_SUE_REC_CARTRIDGE_NEAREMPTY = 46;
inline constexpr int32_t PTR_SUE_REC_HEAD_CLEANING = 47;
inline constexpr int32_t PTR_SUE_REC_CARTRIDGE_OK = 48;
inline constexpr int32_t PTR_SUE_SLP_CARTRIDGE_EMPTY = 49;
inline constexpr int32_t PTR_SUE_SLP_CARTRIDGE_NEAREMPTY = 50;
inline constexpr int32_t PTR_SUE_SLP_HEAD_CLEANING = 51;
inline constexpr int32_t PTR_SUE_SLP_CARTRIDGE_OK = 52;
inline constexpr int32_t PTR_SUE_JRN_COVER_OPEN = 60;
inline constexpr int32_t PTR_SUE_JRN_COVER_OK = 61;
inline constexpr int32_t PTR_SUE_REC_COVER_OPEN = 62;
inline constexpr int32_t PTR_SUE_REC_COVER_OK = 63;
inline constexpr int32_t PTR_SUE_SLP_COVER_OPEN = 64;
inline constexpr int32_t PTR_SUE_SLP_COVER_OK = 65;
inline constexpr int32_t PTR_SUE_IDLE = 1001;

// Error levels.
inline constexpr int32_t PTR_EL_NONE = 1;
inline constexpr int32_t PTR_EL_RECOVERABLE = 2;
inline constexpr int32_t PTR_EL_FATAL = 3;

// Rotation, in RotatePrint.
inline constexpr int32_t PTR_RP_NORMAL = 0x0001;
inline constexpr int32_t PTR_RP_RIGHT90 = 0x0101;
inline constexpr int32_t PTR_RP_LEFT90 = 0x0102;
inline constexpr int32_t PTR_RP_ROTATE180 = 0x0103;
inline constexpr int32_t PTR_RP_BARCODE = 0x1000;
inline constexpr int32_t PTR_RP_BITMAP = 0x2000;

// Transaction control.
inline constexpr int32_t PTR_TP_TRANSACTION = 11;
inline constexpr int32_t PTR_TP_NORMAL = 12;

// Mark feed.
inline constexpr int32_t PTR_MF_TO_TAKEUP = 1;
inline constexpr int32_t PTR_MF_TO_CUTTER = 2;
inline constexpr int32_t PTR_MF_TO_CURRENT_TOF = 4;
inline constexpr int32_t PTR_MF_TO_NEXT_TOF = 8;

// Paper cut.
inline constexpr int32_t PTR_CP_FULLCUT = 100;

// Logos, sides of a slip, ruled lines.
inline constexpr int32_t PTR_L_TOP = 1;
inline constexpr int32_t PTR_L_BOTTOM = 2;
inline constexpr int32_t PTR_PS_UNKNOWN = 0;
inline constexpr int32_t PTR_PS_SIDE1 = 1;
inline constexpr int32_t PTR_PS_SIDE2 = 2;
inline constexpr int32_t PTR_PS_OPPOSITE = 3;
inline constexpr int32_t PTR_RL_HORIZONTAL = 1;
inline constexpr int32_t PTR_RL_VERTICAL = 2;
inline constexpr int32_t PTR_LS_SINGLE_SOLID_LINE = 1;
inline constexpr int32_t PTR_LS_DOUBLE_SOLID_LINE = 2;
inline constexpr int32_t PTR_LS_BROKEN_LINE = 3;
inline constexpr int32_t PTR_LS_CHAIN_LINE = 4;

// Page mode: what PageModePrint does, print directions, abilities.
inline constexpr int32_t PTR_PM_PAGE_MODE = 1;
inline constexpr int32_t PTR_PM_PRINT_SAVE = 2;
inline constexpr int32_t PTR_PM_NORMAL = 3;
inline constexpr int32_t PTR_PM_CANCEL = 4;
inline constexpr int32_t PTR_PD_LEFT_TO_RIGHT = 1;
inline constexpr int32_t PTR_PD_BOTTOM_TO_TOP = 2;
inline constexpr int32_t PTR_PD_RIGHT_TO_LEFT = 3;
inline constexpr int32_t PTR_PD_TOP_TO_BOTTOM = 4;
inline constexpr int32_t PTR_PM_BITMAP = 0x00000001;
inline constexpr int32_t PTR_PM_BARCODE = 0x00000002;
inline constexpr int32_t PTR_PM_BM_ROTATE = 0x00000004;
inline constexpr int32_t PTR_PM_BC_ROTATE = 0x00000008;
inline constexpr int32_t PTR_PM_OPAQUE = 0x00000010;

// Colours and cartridges.
inline constexpr int32_t PTR_COLOR_PRIMARY = 0x00000001;
inline constexpr int32_t PTR_COLOR_CUSTOM1 = 0x00000002;
inline constexpr int32_t PTR_COLOR_CUSTOM2 = 0x00000004;
inline constexpr int32_t PTR_COLOR_CUSTOM3 = 0x00000008;
inline constexpr int32_t PTR_COLOR_CUSTOM4 = 0x00000010;
inline constexpr int32_t PTR_COLOR_CUSTOM5 = 0x00000020;
inline constexpr int32_t PTR_COLOR_CUSTOM6 = 0x00000040;
inline constexpr int32_t PTR_COLOR_CYAN = 0x00000100;
inline constexpr int32_t PTR_COLOR_MAGENTA = 0x00000200;
inline constexpr int32_t PTR_COLOR_YELLOW = 0x00000400;
inline constexpr int32_t PTR_COLOR_FULL = static_cast<int32_t>(0x80000000U);
inline constexpr int32_t PTR_CART_UNKNOWN = 0x10000000;
inline constexpr int32_t PTR_CART_OK = 0x00000000;
inline constexpr int32_t PTR_CART_REMOVED = 0x00000001;
inline constexpr int32_t PTR_CART_EMPTY = 0x00000002;
inline constexpr int32_t PTR_CART_NEAREND = 0x00000004;
inline constexpr int32_t PTR_CART_CLEANING = 0x00000008;
inline constexpr int32_t PTR_CN_DISABLED = 0;
inline constexpr int32_t PTR_CN_ENABLED = 1;

// Bar codes: symbology, alignment, text position.
inline constexpr int32_t PTR_BCS_UPCA = 101;
inline constexpr int32_t PTR_BCS_UPCE = 102;
inline constexpr int32_t PTR_BCS_EAN8 = 103;
inline constexpr int32_t PTR_BCS_JAN8 = 103;
inline constexpr int32_t PTR_BCS_EAN13 = 104;
inline constexpr int32_t PTR_BCS_JAN13 = 104;
inline constexpr int32_t PTR_BCS_TF = 105;
inline constexpr int32_t PTR_BCS_ITF = 106;
inline constexpr int32_t PTR_BCS_Codabar = 107;
inline constexpr int32_t PTR_BCS_Code39 = 108;
inline constexpr int32_t PTR_BCS_Code93 = 109;
inline constexpr int32_t PTR_BCS_Code128 = 110;
inline constexpr int32_t PTR_BCS_UPCA_S = 111;
inline constexpr int32_t PTR_BCS_UPCE_S = 112;
inline constexpr int32_t PTR_BCS_UPCD1 = 113;
inline constexpr int32_t PTR_BCS_UPCD2 = 114;
inline constexpr int32_t PTR_BCS_UPCD3 = 115;
inline constexpr int32_t PTR_BCS_UPCD4 = 116;
inline constexpr int32_t PTR_BCS_UPCD5 = 117;
inline constexpr int32_t PTR_BCS_EAN8_S = 118;
inline constexpr int32_t PTR_BCS_EAN13_S = 119;
inline constexpr int32_t PTR_BCS_EAN128 = 120;
inline constexpr int32_t PTR_BCS_OCRA = 121;
inline constexpr int32_t PTR_BCS_OCRB = 122;
inline constexpr int32_t PTR_BCS_Code128_Parsed = 123;
inline constexpr int32_t PTR_BCS_RSS14 = 131;
inline constexpr int32_t PTR_BCS_RSS_EXPANDED = 132;
inline constexpr int32_t PTR_BCS_GS1DATABAR = 131;
inline constexpr int32_t PTR_BCS_GS1DATABAR_E = 132;
inline constexpr int32_t PTR_BCS_GS1DATABAR_S = 133;
inline constexpr int32_t PTR_BCS_GS1DATABAR_E_S = 134;
inline constexpr int32_t PTR_BCS_PDF417 = 201;
inline constexpr int32_t PTR_BCS_MAXICODE = 202;
inline constexpr int32_t PTR_BCS_DATAMATRIX = 203;
inline constexpr int32_t PTR_BCS_QRCODE = 204;
inline constexpr int32_t PTR_BCS_UQRCODE = 205;
inline constexpr int32_t PTR_BCS_AZTEC = 206;
inline constexpr int32_t PTR_BCS_UPDF417 = 207;
inline constexpr int32_t PTR_BCS_OTHER = 501;
inline constexpr int32_t PTR_BC_LEFT = -1;
inline constexpr int32_t PTR_BC_CENTER = -2;
inline constexpr int32_t PTR_BC_RIGHT = -3;
inline constexpr int32_t PTR_BC_TEXT_NONE = -11;
inline constexpr int32_t PTR_BC_TEXT_ABOVE = -12;
inline constexpr int32_t PTR_BC_TEXT_BELOW = -13;

// Bitmaps: width, alignment, type of a picture in memory.
inline constexpr int32_t PTR_BM_ASIS = -11;
inline constexpr int32_t PTR_BM_LEFT = -1;
inline constexpr int32_t PTR_BM_CENTER = -2;
inline constexpr int32_t PTR_BM_RIGHT = -3;
inline constexpr int32_t PTR_BMT_BMP = 1;
inline constexpr int32_t PTR_BMT_JPEG = 2;
inline constexpr int32_t PTR_BMT_GIF = 3;

// Character sets.
inline constexpr int32_t PTR_CS_UNICODE = 997;
inline constexpr int32_t PTR_CS_ASCII = 998;
inline constexpr int32_t PTR_CS_ANSI = 999;
inline constexpr int32_t PTR_CS_WINDOWS = 999;
inline constexpr int32_t PTR_CCS_ALPHA = 1;
inline constexpr int32_t PTR_CCS_KANA = 10;
inline constexpr int32_t PTR_CCS_KANJI = 11;
inline constexpr int32_t PTR_CCS_UNICODE = 997;
inline constexpr int32_t PTR_CCS_ASCII = 998;

// Property indices, numeric.
inline constexpr int32_t PIDXPtr_AsyncMode = 8001;
inline constexpr int32_t PIDXPtr_CharacterSet = 8002;
inline constexpr int32_t PIDXPtr_CoverOpen = 8003;
inline constexpr int32_t PIDXPtr_ErrorStation = 8004;
inline constexpr int32_t PIDXPtr_FlagWhenIdle = 8005;
inline constexpr int32_t PIDXPtr_JrnEmpty = 8006;
inline constexpr int32_t PIDXPtr_JrnLetterQuality = 8007;
inline constexpr int32_t PIDXPtr_JrnLineChars = 8008;
inline constexpr int32_t PIDXPtr_JrnLineHeight = 8009;
inline constexpr int32_t PIDXPtr_JrnLineSpacing = 8010;
inline constexpr int32_t PIDXPtr_JrnLineWidth = 8011;
inline constexpr int32_t PIDXPtr_JrnNearEnd = 8012;
inline constexpr int32_t PIDXPtr_MapMode = 8013;
inline constexpr int32_t PIDXPtr_RecEmpty = 8014;
inline constexpr int32_t PIDXPtr_RecLetterQuality = 8015;
inline constexpr int32_t PIDXPtr_RecLineChars = 8016;
inline constexpr int32_t PIDXPtr_RecLineHeight = 8017;
inline constexpr int32_t PIDXPtr_RecLineSpacing = 8018;
inline constexpr int32_t PIDXPtr_RecLinesToPaperCut = 8019;
inline constexpr int32_t PIDXPtr_RecLineWidth = 8020;
inline constexpr int32_t PIDXPtr_RecNearEnd = 8021;
inline constexpr int32_t PIDXPtr_RecSidewaysMaxChars = 8022;
inline constexpr int32_t PIDXPtr_RecSidewaysMaxLines = 8023;
inline constexpr int32_t PIDXPtr_SlpEmpty = 8024;
inline constexpr int32_t PIDXPtr_SlpLetterQuality = 8025;
inline constexpr int32_t PIDXPtr_SlpLineChars = 8026;
inline constexpr int32_t PIDXPtr_SlpLineHeight = 8027;
inline constexpr int32_t PIDXPtr_SlpLinesNearEndToEnd = 8028;
inline constexpr int32_t PIDXPtr_SlpLineSpacing = 8029;
inline constexpr int32_t PIDXPtr_SlpLineWidth = 8030;
inline constexpr int32_t PIDXPtr_SlpMaxLines = 8031;
inline constexpr int32_t PIDXPtr_SlpNearEnd = 8032;
inline constexpr int32_t PIDXPtr_SlpSidewaysMaxChars = 8033;
inline constexpr int32_t PIDXPtr_SlpSidewaysMaxLines = 8034;
inline constexpr int32_t PIDXPtr_ErrorLevel = 8035;
inline constexpr int32_t PIDXPtr_RotateSpecial = 8036;
inline constexpr int32_t PIDXPtr_CartridgeNotify = 8037;
inline constexpr int32_t PIDXPtr_JrnCartridgeState = 8038;
inline constexpr int32_t PIDXPtr_JrnCurrentCartridge = 8039;
inline constexpr int32_t PIDXPtr_RecCartridgeState = 8040;
inline constexpr int32_t PIDXPtr_RecCurrentCartridge = 8041;
inline constexpr int32_t PIDXPtr_SlpPrintSide = 8042;
inline constexpr int32_t PIDXPtr_SlpCartridgeState = 8043;
inline constexpr int32_t PIDXPtr_SlpCurrentCartridge = 8044;
inline constexpr int32_t PIDXPtr_MapCharacterSet = 8045;
inline constexpr int32_t PIDXPtr_PageModeDescriptor = 8046;
inline constexpr int32_t PIDXPtr_PageModeHorizontalPosition = 8047;
inline constexpr int32_t PIDXPtr_PageModePrintDirection = 8048;
inline constexpr int32_t PIDXPtr_PageModeStation = 8049;
inline constexpr int32_t PIDXPtr_PageModeVerticalPosition = 8050;

// Property indices, capabilities.
inline constexpr int32_t PIDXPtr_CapConcurrentJrnRec = 8501;
inline constexpr int32_t PIDXPtr_CapConcurrentJrnSlp = 8502;
inline constexpr int32_t PIDXPtr_CapConcurrentRecSlp = 8503;
inline constexpr int32_t PIDXPtr_CapCoverSensor = 8504;
inline constexpr int32_t PIDXPtr_CapJrn2Color = 8505;
inline constexpr int32_t PIDXPtr_CapJrnBold = 8506;
inline constexpr int32_t PIDXPtr_CapJrnDhigh = 8507;
inline constexpr int32_t PIDXPtr_CapJrnDwide = 8508;
inline constexpr int32_t PIDXPtr_CapJrnDwideDhigh = 8509;
inline constexpr int32_t PIDXPtr_CapJrnEmptySensor = 8510;
inline constexpr int32_t PIDXPtr_CapJrnItalic = 8511;
inline constexpr int32_t PIDXPtr_CapJrnNearEndSensor = 8512;
inline constexpr int32_t PIDXPtr_CapJrnPresent = 8513;
inline constexpr int32_t PIDXPtr_CapJrnUnderline = 8514;
inline constexpr int32_t PIDXPtr_CapRec2Color = 8515;
inline constexpr int32_t PIDXPtr_CapRecBarCode = 8516;
inline constexpr int32_t PIDXPtr_CapRecBitmap = 8517;
inline constexpr int32_t PIDXPtr_CapRecBold = 8518;
inline constexpr int32_t PIDXPtr_CapRecDhigh = 8519;
inline constexpr int32_t PIDXPtr_CapRecDwide = 8520;
inline constexpr int32_t PIDXPtr_CapRecDwideDhigh = 8521;
inline constexpr int32_t PIDXPtr_CapRecEmptySensor = 8522;
inline constexpr int32_t PIDXPtr_CapRecItalic = 8523;
inline constexpr int32_t PIDXPtr_CapRecLeft90 = 8524;
inline constexpr int32_t PIDXPtr_CapRecNearEndSensor = 8525;
inline constexpr int32_t PIDXPtr_CapRecPapercut = 8526;
inline constexpr int32_t PIDXPtr_CapRecPresent = 8527;
inline constexpr int32_t PIDXPtr_CapRecRight90 = 8528;
inline constexpr int32_t PIDXPtr_CapRecRotate180 = 8529;
inline constexpr int32_t PIDXPtr_CapRecStamp = 8530;
inline constexpr int32_t PIDXPtr_CapRecUnderline = 8531;
inline constexpr int32_t PIDXPtr_CapSlp2Color = 8532;
inline constexpr int32_t PIDXPtr_CapSlpBarCode = 8533;
inline constexpr int32_t PIDXPtr_CapSlpBitmap = 8534;
inline constexpr int32_t PIDXPtr_CapSlpBold = 8535;
inline constexpr int32_t PIDXPtr_CapSlpDhigh = 8536;
inline constexpr int32_t PIDXPtr_CapSlpDwide = 8537;
inline constexpr int32_t PIDXPtr_CapSlpDwideDhigh = 8538;
inline constexpr int32_t PIDXPtr_CapSlpEmptySensor = 8539;
inline constexpr int32_t PIDXPtr_CapSlpFullslip = 8540;
inline constexpr int32_t PIDXPtr_CapSlpItalic = 8541;
inline constexpr int32_t PIDXPtr_CapSlpLeft90 = 8542;
inline constexpr int32_t PIDXPtr_CapSlpNearEndSensor = 8543;
inline constexpr int32_t PIDXPtr_CapSlpPresent = 8544;
inline constexpr int32_t PIDXPtr_CapSlpRight90 = 8545;
inline constexpr int32_t PIDXPtr_CapSlpRotate180 = 8546;
inline constexpr int32_t PIDXPtr_CapSlpUnderline = 8547;
inline constexpr int32_t PIDXPtr_CapCharacterSet = 8548;
inline constexpr int32_t PIDXPtr_CapTransaction = 8549;
inline constexpr int32_t PIDXPtr_CapJrnCartridgeSensor = 8550;
inline constexpr int32_t PIDXPtr_CapJrnColor = 8551;
inline constexpr int32_t PIDXPtr_CapRecCartridgeSensor = 8552;
inline constexpr int32_t PIDXPtr_CapRecColor = 8553;
inline constexpr int32_t PIDXPtr_CapRecMarkFeed = 8554;
inline constexpr int32_t PIDXPtr_CapSlpBothSidesPrint = 8555;
inline constexpr int32_t PIDXPtr_CapSlpCartridgeSensor = 8556;
inline constexpr int32_t PIDXPtr_CapSlpColor = 8557;
inline constexpr int32_t PIDXPtr_CapMapCharacterSet = 8558;
inline constexpr int32_t PIDXPtr_CapConcurrentPageMode = 8559;
inline constexpr int32_t PIDXPtr_CapRecPageMode = 8560;
inline constexpr int32_t PIDXPtr_CapSlpPageMode = 8561;
inline constexpr int32_t PIDXPtr_CapRecRuledLine = 8562;
inline constexpr int32_t PIDXPtr_CapSlpRuledLine = 8563;

// Property indices, text.
inline constexpr int32_t PIDXPtr_CharacterSetList = 1008001;
inline constexpr int32_t PIDXPtr_JrnLineCharsList = 1008002;
inline constexpr int32_t PIDXPtr_RecLineCharsList = 1008003;
inline constexpr int32_t PIDXPtr_SlpLineCharsList = 1008004;
inline constexpr int32_t PIDXPtr_ErrorString = 1008005;
inline constexpr int32_t PIDXPtr_FontTypefaceList = 1008006;
inline constexpr int32_t PIDXPtr_RecBarCodeRotationList = 1008007;
inline constexpr int32_t PIDXPtr_SlpBarCodeRotationList = 1008008;
inline constexpr int32_t PIDXPtr_RecBitmapRotationList = 1008009;
inline constexpr int32_t PIDXPtr_SlpBitmapRotationList = 1008010;
inline constexpr int32_t PIDXPtr_PageModeArea = 1008011;
inline constexpr int32_t PIDXPtr_PageModePrintArea = 1008012;

}  // namespace opos
