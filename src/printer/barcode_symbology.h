#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "printer/barcode_row.h"

namespace marbex::printer {

// The barcode engine's own numbering of symbologies.
enum class Symbology : uint32_t {
    kUpcA = 0,
    kUpcE = 1,
    kEan13 = 2,
    kEan8 = 3,
    kCode39 = 4,
    kItf = 5,
    kCodabar = 6,
    kCode93 = 7,
    kCode128 = 8,
    kCode32 = 9,
};

// A symbology that an application can ask for.
struct BarcodeType {
    int32_t oposCode;  // PTR_BCS_...
    const char* logName;
    Symbology symbology;
    uint8_t printerCode;  // m of GS k m
};

// Null for a code that the printers do not draw, PTR_BCS_TF included.
const BarcodeType* FindBarcodeType(int32_t oposCode);

// The families. Each has
//   Accepts...    whether the data may be printed;
//   Complete...   for those with a check digit of their own: puts it at the end of accepted data that lacks it;
//   Draw...       the bars of accepted (and completed) data;
//   ...Text       the human-readable text, where it is not the data.

// UPC and EAN: ISO/IEC 15420.
bool AcceptsUpcA(std::string_view data);
void CompleteUpcA(std::string& data);
void DrawUpcA(std::string_view data, BarRow& row);
bool AcceptsUpcE(std::string_view data);  // in its UPC-A form
void DrawUpcE(std::string_view data, BarRow& row);
bool AcceptsEan13(std::string_view data);
void CompleteEan13(std::string& data);
void DrawEan13(std::string_view data, BarRow& row);
bool AcceptsEan8(std::string_view data);
void CompleteEan8(std::string& data);
void DrawEan8(std::string_view data, BarRow& row);

// Code 39: ISO/IEC 16388. Code 32 is the number of an Italian medicine in Code 39 (Farmacode, decree of 10 July 1986).
bool AcceptsCode39(std::string_view data);
void DrawCode39(std::string_view data, BarRow& row);
void CompleteCode32(std::string& data);
void DrawCode32(std::string_view data, BarRow& row);  // draws nothing unless the data is nine digits

// Interleaved 2 of 5: ISO/IEC 16390.
bool AcceptsItf(std::string_view data);
void DrawItf(std::string_view data, BarRow& row);

// Codabar: EN 798.
bool AcceptsCodabar(std::string_view data);
void DrawCodabar(std::string_view data, BarRow& row);

// Code 93 with its full ASCII set: AIM USS-93. Drawing writes each character of the data to the service log.
bool AcceptsCode93(std::string_view data);
void DrawCode93(std::string_view data, BarRow& row);
std::string Code93Text(std::string_view data);

// Code 128: ISO/IEC 15417. The data begins with "{A", "{B" or "{C", its start character; the same inside the data
// changes the code set and "{{" is one "{".
bool HasCode128Start(std::string_view data);
bool AcceptsCode128(std::string_view data);
void DrawCode128(std::string_view data, BarRow& row);
std::string Code128Text(std::string_view data);

}  // namespace marbex::printer
