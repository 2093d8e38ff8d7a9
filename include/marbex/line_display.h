#pragma once

// The customer display on the printer.

#include <marbex/class_ids.h>
#include <marbex/detail/companion.h>
#include <opos/line_display.h>

namespace marbex {

class LineDisplay final : public detail::Companion {
public:
    explicit LineDisplay(Printer& printer) : Companion(kLineDisplayProgId, "LineDisplay", printer) {}
    ~LineDisplay() { CloseQuietly(); }

    // Queued behind the printer's output in its asynchronous mode.
    Result Clear() { return Output(u"ClearText"); }
    // At the cursor.
    Result Show(std::string_view text) { return Output(u"DisplayText", text, opos::DISP_DT_NORMAL); }
    Result ShowAt(int32_t row, int32_t column, std::string_view text)
    {
        return Output(u"DisplayTextAt", row, column, text, opos::DISP_DT_NORMAL);
    }

    int32_t Rows() { return GetNumber(opos::PIDXDisp_Rows); }
    int32_t Columns() { return GetNumber(opos::PIDXDisp_Columns); }
};

}  // namespace marbex
