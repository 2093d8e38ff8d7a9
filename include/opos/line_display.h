#pragma once

// Constants of the OPOS LineDisplay class (UnifiedPOS 1.14): attributes, character sets, windows and property indices.

#include <cstdint>

namespace opos {

// Attributes of DisplayText and DisplayTextAt, directions of ScrollText, attributes of SetDescriptor.
inline constexpr int32_t DISP_DT_NORMAL = 0;
inline constexpr int32_t DISP_DT_BLINK = 1;
inline constexpr int32_t DISP_DT_REVERSE = 2;
inline constexpr int32_t DISP_DT_BLINK_REVERSE = 3;
inline constexpr int32_t DISP_ST_UP = 1;
inline constexpr int32_t DISP_ST_DOWN = 2;
inline constexpr int32_t DISP_ST_LEFT = 3;
inline constexpr int32_t DISP_ST_RIGHT = 4;
inline constexpr int32_t DISP_SD_OFF = 0;
inline constexpr int32_t DISP_SD_ON = 1;
inline constexpr int32_t DISP_SD_BLINK = 2;

// Character sets.
inline constexpr int32_t DISP_CS_UNICODE = 997;
inline constexpr int32_t DISP_CS_ASCII = 998;
inline constexpr int32_t DISP_CS_WINDOWS = 999;
inline constexpr int32_t DISP_CS_ANSI = 999;
inline constexpr int32_t DISP_CCS_NUMERIC = 0;
inline constexpr int32_t DISP_CCS_ALPHA = 1;
inline constexpr int32_t DISP_CCS_KANA = 10;
inline constexpr int32_t DISP_CCS_KANJI = 11;
inline constexpr int32_t DISP_CCS_UNICODE = 997;
inline constexpr int32_t DISP_CCS_ASCII = 998;

// Blinking, reverse video, read-back, cursors, glyphs.
inline constexpr int32_t DISP_CB_NOBLINK = 0;
inline constexpr int32_t DISP_CB_BLINKALL = 1;
inline constexpr int32_t DISP_CB_BLINKEACH = 2;
inline constexpr int32_t DISP_CR_NONE = 0;
inline constexpr int32_t DISP_CR_REVERSEALL = 1;
inline constexpr int32_t DISP_CR_REVERSEEACH = 2;
inline constexpr int32_t DISP_CRB_NONE = 0;
inline constexpr int32_t DISP_CRB_SINGLE = 1;
inline constexpr int32_t DISP_CCT_NONE = 0x00000000;
inline constexpr int32_t DISP_CCT_FIXED = 0x00000001;
inline constexpr int32_t DISP_CCT_BLOCK = 0x00000002;
inline constexpr int32_t DISP_CCT_HALFBLOCK = 0x00000004;
inline constexpr int32_t DISP_CCT_UNDERLINE = 0x00000008;
inline constexpr int32_t DISP_CCT_REVERSE = 0x00000010;
inline constexpr int32_t DISP_CCT_OTHER = 0x00000020;
inline constexpr int32_t DISP_CCT_BLINK = 0x00000040;
inline constexpr int32_t DISP_CT_NONE = 0;
inline constexpr int32_t DISP_CT_FIXED = 1;
inline constexpr int32_t DISP_CT_BLOCK = 2;
inline constexpr int32_t DISP_CT_HALFBLOCK = 3;
inline constexpr int32_t DISP_CT_UNDERLINE = 4;
inline constexpr int32_t DISP_CT_REVERSE = 5;
inline constexpr int32_t DISP_CT_OTHER = 6;
inline constexpr int32_t DISP_CT_BLINK = 0x10000000;
inline constexpr int32_t DISP_GT_SINGLE = 1;

// Marquees.
inline constexpr int32_t DISP_MT_NONE = 0;
inline constexpr int32_t DISP_MT_UP = 1;
inline constexpr int32_t DISP_MT_DOWN = 2;
inline constexpr int32_t DISP_MT_LEFT = 3;
inline constexpr int32_t DISP_MT_RIGHT = 4;
inline constexpr int32_t DISP_MT_INIT = 5;
inline constexpr int32_t DISP_MF_WALK = 0;
inline constexpr int32_t DISP_MF_PLACE = 1;

// Bitmaps: width, alignment across and down; extended result codes.
inline constexpr int32_t DISP_BM_ASIS = -11;
inline constexpr int32_t DISP_BM_LEFT = -1;
inline constexpr int32_t DISP_BM_CENTER = -2;
inline constexpr int32_t DISP_BM_RIGHT = -3;
inline constexpr int32_t DISP_BM_TOP = -1;
inline constexpr int32_t DISP_BM_BOTTOM = -3;
inline constexpr int32_t OPOS_EDISP_TOOBIG = 201;
inline constexpr int32_t OPOS_EDISP_BADFORMAT = 202;

// Property indices, numeric.
inline constexpr int32_t PIDXDisp_CharacterSet = 5001;
inline constexpr int32_t PIDXDisp_Columns = 5002;
inline constexpr int32_t PIDXDisp_CurrentWindow = 5003;
inline constexpr int32_t PIDXDisp_CursorColumn = 5004;
inline constexpr int32_t PIDXDisp_CursorRow = 5005;
inline constexpr int32_t PIDXDisp_CursorUpdate = 5006;
inline constexpr int32_t PIDXDisp_DeviceBrightness = 5007;
inline constexpr int32_t PIDXDisp_DeviceColumns = 5008;
inline constexpr int32_t PIDXDisp_DeviceDescriptors = 5009;
inline constexpr int32_t PIDXDisp_DeviceRows = 5010;
inline constexpr int32_t PIDXDisp_DeviceWindows = 5011;
inline constexpr int32_t PIDXDisp_InterCharacterWait = 5012;
inline constexpr int32_t PIDXDisp_MarqueeRepeatWait = 5013;
inline constexpr int32_t PIDXDisp_MarqueeType = 5014;
inline constexpr int32_t PIDXDisp_MarqueeUnitWait = 5015;
inline constexpr int32_t PIDXDisp_Rows = 5016;
inline constexpr int32_t PIDXDisp_MarqueeFormat = 5017;
inline constexpr int32_t PIDXDisp_BlinkRate = 5018;
inline constexpr int32_t PIDXDisp_CursorType = 5019;
inline constexpr int32_t PIDXDisp_GlyphHeight = 5020;
inline constexpr int32_t PIDXDisp_GlyphWidth = 5021;
inline constexpr int32_t PIDXDisp_MapCharacterSet = 5022;
inline constexpr int32_t PIDXDisp_MaximumX = 5023;
inline constexpr int32_t PIDXDisp_MaximumY = 5024;
inline constexpr int32_t PIDXDisp_ScreenMode = 5025;

// Property indices, capabilities.
inline constexpr int32_t PIDXDisp_CapBlink = 5501;
inline constexpr int32_t PIDXDisp_CapBrightness = 5502;
inline constexpr int32_t PIDXDisp_CapCharacterSet = 5503;
inline constexpr int32_t PIDXDisp_CapDescriptors = 5504;
inline constexpr int32_t PIDXDisp_CapHMarquee = 5505;
inline constexpr int32_t PIDXDisp_CapICharWait = 5506;
inline constexpr int32_t PIDXDisp_CapVMarquee = 5507;
inline constexpr int32_t PIDXDisp_CapBlinkRate = 5508;
inline constexpr int32_t PIDXDisp_CapCursorType = 5509;
inline constexpr int32_t PIDXDisp_CapCustomGlyph = 5510;
inline constexpr int32_t PIDXDisp_CapReadBack = 5511;
inline constexpr int32_t PIDXDisp_CapReverse = 5512;
inline constexpr int32_t PIDXDisp_CapBitmap = 5513;
inline constexpr int32_t PIDXDisp_CapMapCharacterSet = 5514;
inline constexpr int32_t PIDXDisp_CapScreenMode = 5515;

// Property indices, text.
inline constexpr int32_t PIDXDisp_CharacterSetList = 1005001;
inline constexpr int32_t PIDXDisp_CustomGlyphList = 1005002;
inline constexpr int32_t PIDXDisp_ScreenModeList = 1005003;

}  // namespace opos
