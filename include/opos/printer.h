#pragma once

// Constants of the OPOS POSPrinter class (UnifiedPOS 1.14): stations, sizes, events and property indices.

#include <cstdint>

namespace opos {

// Stations.
inline constexpr int32_t PTR_S_JOURNAL = 1;
inline constexpr int32_t PTR_S_RECEIPT = 2;
inline constexpr int32_t PTR_S_SLIP = 4;

// Extended result codes.
inline constexpr int32_t OPOS_EPTR_COVER_OPEN = 201;
inline constexpr int32_t OPOS_EPTR_JRN_EMPTY = 202;
inline constexpr int32_t OPOS_EPTR_REC_EMPTY = 203;
inline constexpr int32_t OPOS_EPTR_SLP_EMPTY = 204;

// Map modes.
inline constexpr int32_t PTR_MM_DOTS = 1;
inline constexpr int32_t PTR_MM_TWIPS = 2;
inline constexpr int32_t PTR_MM_ENGLISH = 3;
inline constexpr int32_t PTR_MM_METRIC = 4;

// Status update events.
inline constexpr int32_t PTR_SUE_COVER_OPEN = 11;
inline constexpr int32_t PTR_SUE_COVER_OK = 12;
inline constexpr int32_t PTR_SUE_REC_EMPTY = 24;
inline constexpr int32_t PTR_SUE_REC_NEAREMPTY = 25;
inline constexpr int32_t PTR_SUE_REC_PAPEROK = 26;
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

// Bar codes: symbology, alignment, text position.
inline constexpr int32_t PTR_BCS_UPCA = 101;
inline constexpr int32_t PTR_BCS_UPCE = 102;
inline constexpr int32_t PTR_BCS_EAN8 = 103;
inline constexpr int32_t PTR_BCS_EAN13 = 104;
inline constexpr int32_t PTR_BCS_TF = 105;
inline constexpr int32_t PTR_BCS_ITF = 106;
inline constexpr int32_t PTR_BCS_Codabar = 107;
inline constexpr int32_t PTR_BCS_Code39 = 108;
inline constexpr int32_t PTR_BCS_Code93 = 109;
inline constexpr int32_t PTR_BCS_Code128 = 110;
inline constexpr int32_t PTR_BC_LEFT = -1;
inline constexpr int32_t PTR_BC_CENTER = -2;
inline constexpr int32_t PTR_BC_RIGHT = -3;
inline constexpr int32_t PTR_BC_TEXT_NONE = -11;
inline constexpr int32_t PTR_BC_TEXT_ABOVE = -12;
inline constexpr int32_t PTR_BC_TEXT_BELOW = -13;

// Bitmaps: width and alignment.
inline constexpr int32_t PTR_BM_ASIS = -11;
inline constexpr int32_t PTR_BM_LEFT = -1;
inline constexpr int32_t PTR_BM_CENTER = -2;
inline constexpr int32_t PTR_BM_RIGHT = -3;

// Character sets.
inline constexpr int32_t PTR_CS_UNICODE = 997;
inline constexpr int32_t PTR_CS_ASCII = 998;
inline constexpr int32_t PTR_CS_ANSI = 999;
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
