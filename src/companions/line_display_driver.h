#pragma once

#include "companions/companion_service.h"

namespace marbex::companions {

// The LineDisplay service object: the shopper's display on the printer. Plain text at the cursor or at a place, in the
// one window there is; the printer device knows the display's size, characters and commands.
class MarbexOposLineDisplayDriver final : public CompanionService {
public:
    MarbexOposLineDisplayDriver();

    // The printer's answers.
    int32_t ClearText();
    int32_t DisplayText(const std::string& Data, int32_t Attribute);
    int32_t DisplayTextAt(int32_t Row, int32_t Column, const std::string& Data, int32_t Attribute);

    // There are no commands: all are refused, except that a closed display and command 0 change nothing. Returns the
    // result code.
    int32_t DirectIO(int32_t Command, int32_t* pData, std::u16string* pString);

    // All but DeviceEnabled are the printer's.
    void SetPropertyNumber(int32_t PropIndex, int32_t Number);
    void SetPropertyString(int32_t PropIndex, const std::string& String);

    // Not supported.
    int32_t ClearDescriptors();
    int32_t SetDescriptor(int32_t Descriptor = 0, int32_t Attribute = 0);
    // The method CreateWindow, whose own name is a macro of the Windows headers.
    int32_t CreateDisplayWindow(int32_t ViewportRow, int32_t ViewportColumn, int32_t ViewportHeight,
                                int32_t ViewportWidth, int32_t WindowHeight, int32_t WindowWidth);
    int32_t DestroyWindow();
    int32_t RefreshWindow(int32_t Window);
    int32_t ScrollText(int32_t Direction, int32_t Units);
    int32_t DefineGlyph(int32_t GlyphCode, const std::string& Glyph);
    int32_t ReadCharacterAtCursor(int32_t Character);
    int32_t DisplayBitmap(const std::string& FileName, int32_t Width, int32_t AlignmentX, int32_t AlignmentY);
    int32_t SetBitmap(int32_t BitmapNumber, const std::string& FileName, int32_t Width, int32_t AlignmentX,
                      int32_t AlignmentY);
};

}  // namespace marbex::companions
