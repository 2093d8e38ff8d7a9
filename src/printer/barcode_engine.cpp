#include "printer/barcode_engine.h"

#include <array>

namespace marbex::printer {

namespace {

struct Rules {
    bool (*accepts)(std::string_view data);  // null: anything
    void (*complete)(std::string& data);     // null: nothing to add
    void (*draw)(std::string_view data, BarRow& row);
    std::string (*text)(std::string_view data);  // null: the data
};

// By Symbology.
constexpr std::array kRules{
    Rules{AcceptsUpcA, CompleteUpcA, DrawUpcA, nullptr},      Rules{AcceptsUpcE, nullptr, DrawUpcE, nullptr},
    Rules{AcceptsEan13, CompleteEan13, DrawEan13, nullptr},   Rules{AcceptsEan8, CompleteEan8, DrawEan8, nullptr},
    Rules{AcceptsCode39, nullptr, DrawCode39, nullptr},       Rules{AcceptsItf, nullptr, DrawItf, nullptr},
    Rules{AcceptsCodabar, nullptr, DrawCodabar, nullptr},     Rules{AcceptsCode93, nullptr, DrawCode93, Code93Text},
    Rules{AcceptsCode128, nullptr, DrawCode128, Code128Text}, Rules{nullptr, CompleteCode32, DrawCode32, nullptr},
};

const Rules& RulesOf(Symbology symbology)
{
    return kRules[static_cast<std::size_t>(symbology)];
}

}  // namespace

bool BarcodeEngine::Encode(std::string_view data, Symbology symbology, uint32_t moduleWidth)
{
    const Rules& rules = RulesOf(symbology);
    data_ = data.substr(0, data.find('\0'));
    symbology_ = symbology;
    row_.Reset(moduleWidth);
    if (rules.accepts != nullptr && !rules.accepts(data_)) return false;
    if (rules.complete != nullptr) rules.complete(data_);
    rules.draw(data_, row_);
    return true;
}

std::string BarcodeEngine::GetHriText() const
{
    const Rules& rules = RulesOf(symbology_);
    return rules.text != nullptr ? rules.text(data_) : data_;
}

}  // namespace marbex::printer
