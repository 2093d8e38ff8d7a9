// Every row of the model table against what the family's data sheet says, written out by hand.

#include <gtest/gtest.h>

#include "device/model_description.h"
#include "opos/printer.h"
#include "support/printer_tables.h"

namespace marbex::device {
namespace {

using enum printer::CutCommand;
using printer::Recovery;
using printer::StatusVariant;

struct Row {
    const char* name;
    const char* token;
    const char* description;
    int metric, twips, english;
    int linesToCut;
    int dots;
    char family;
    const char* converterPartial;  // ESC|50P
    const char* converterFull;     // ESC|100P
    printer::CutCommand cut;
    const char* presenter;
    bool afterCut;
    StatusVariant status;
    Recovery recovery;
    std::vector<uint16_t> identities;
    const char* extras;  // letters: e error bit, w waits for bitmaps, s start-up bytes, m mechanism, 2 second link,
                         // i Super I/O drawer, d display, j paper jam, l left margin
};

constexpr auto kCan = Recovery::kCan;
constexpr auto kEnq = Recovery::kDleEnq2;
constexpr auto kRef = StatusVariant::kReference;
constexpr auto kOut = StatusVariant::kReferenceCleansOutput;
constexpr auto kNoDrawer = StatusVariant::kNoDrawerFlag;
constexpr auto kBrisaHd = StatusVariant::kBrisaHd;

const char* const kPresent3 = "\x1D\x65\x03\x03";
const char* const kPresentPartial = "\n\x1Bm\n\x1D\x65\x03\x03";
const char* const kPresentFull = "\n\x1Bi\n\x1D\x65\x03\x03";
const char* const kFourPartial = "\n\n\n\n\x1Bm";
const char* const kFourFull = "\n\n\n\n\x1Bi";
const char* const kFive = "\n\n\n\n\n\x1Bm";

const std::vector<Row>& Rows()
{
    // clang-format off
    static const std::vector<Row> rows = {
        {"TALIS",          "Talis",    "TALIS",           7600, 4308, 2992, 4,  608, 'A',
         kFourPartial, kFourFull, kFullAt100ElsePartial, "", false, kRef, kCan, {0x5F, 0x6E, 0xB7, 0x83, 0x200}, "e"},
        {"TALIS ETHERNET", "TalisEth", "TALIS ETHERNET",  7600, 4308, 2992, 6,  608, 'A',
         "\n\n\n\n\n\n\x1Bm", "\n\n\n\n\n\n\x1Bi", kFullAt100ElsePartial, "", false, kRef, kCan, {0x65}, ""},
        {"ORVEN",          "Orven",    "ORVEN",           7600, 4308, 2992, 3,  608, 'B',
         kPresentPartial, kPresentPartial, kFullWithPresenter, kPresent3, true, kNoDrawer, kCan, {0x5D, 0x5E}, "l"},
        {"ORVENETH",       "OrvenEth", "ORVENETH",        7600, 4308, 2992, 3,  608, 'B',
         kPresentPartial, kPresentPartial, kFullWithPresenter, kPresent3, true, kNoDrawer, kCan, {0x95}, ""},
        {"BRISA",          "Brisa",    "BRISA",           7100, 4025, 2795, 3,  568, 'B',
         kPresentPartial, kPresentPartial, kFullWithPresenter, kPresent3, true, kNoDrawer, kCan, {0xB9}, ""},
        {"BRISA-HD",       "BrisaHd",  "BRISA-HD",       12000, 6803, 4724, 3,  960, 'B',
         kPresentPartial, kPresentPartial, kFullWithPresenter, kPresent3, true, kBrisaHd, kCan, {0x212}, "wj"},
        {"PELTO",          "PELTO",    "PELTO",           7200, 4081, 2834, 5,  576, 'A',
         kFive, kFive, kFull, "", false, kOut, kCan, {0x8E}, ""},
        {"SELVA",          "SELVA",    "SELVA",           7200, 4081, 2834, 5,  576, 'A',
         kFive, kFive, kFull, "", false, kOut, kCan, {0x8E}, ""},
        {"GALEN",          "GALEN",    "GALEN",           7600, 4308, 2992, 2,  608, 'B',
         kFive, kFive, kFull, "", false, kNoDrawer, kCan, {0x75}, ""},
        {"LUMEN",          "Lumen",    "LUMEN",           7600, 4308, 2992, 3,  608, 'B',
         kPresentFull, kPresentFull, kFullWithPresenter, kPresent3, true, kNoDrawer, kEnq, {0xA8, 0x1A8}, ""},
        {"OSTRA",          "OSTRA",    "OSTRA",          15600, 8844, 6141, 2, 1248, 'B',
         kFive, kFive, kFullWithPresenter, "\x1D\x65\x03\x0A", true, kNoDrawer, kCan, {0x204}, "s"},
        {"FERRO",          "Ferro",    "FERRO",          10400, 5896, 4094, 2,  832, 'B',
         kPresentFull, kPresentFull, kPresenterAt100ElsePartial, kPresent3, false, kNoDrawer, kEnq, {0x225}, ""},
        {"NESTO",          "Nesto",    "Nesto",           4800, 2721, 1889, 0,  384, 'B',
         "", "", kTwoLineFeeds, "", false, kNoDrawer, kEnq, {0x226}, "d"},
        {"VELA PC",        "VelaPC",   "Vela PC",         8000, 4535, 3149, 4,  640, 'B',
         kFourPartial, kFourFull, kFullAt100ElsePartial, "", false, kNoDrawer, kEnq, {0x239}, "id"},
        {"DORIN",          "Dorin",    "DORIN",           8000, 4535, 3149, 3,  640, 'B',
         "\n\n\n", "\n\n\n", kFull, "", true, kNoDrawer, kCan, {0x208}, "m"},
        {"AMBRA",          "AMBRA",    "AMBRA",           7200, 4081, 2834, 5,  576, 'A',
         "\n\n\n\n\n\x1Bm", "\n\n\n\n\n\x1Bi", kFullAt100ElsePartial, "", false, kRef, kCan, {0x20A}, ""},
        {"ARGO PC TURBO",  "ArgoPC",   "Argo PC TURBO",   4800, 2721, 1889, 4,  384, 'B',
         kFourPartial, kFourFull, kFullAt100ElsePartial, "", false, kNoDrawer, kEnq, {0x209}, "2id"},
        {"CORVO",          "CORVO",    "CORVO",           8000, 4535, 3149, 0,  640, 'B',
         kPresentFull, kPresentFull, kPartialAt50ElseFull, "", true, kNoDrawer, kEnq, {0x237}, ""},
    };
    // clang-format on
    return rows;
}

std::string ExtrasOf(const ModelDescription& model)
{
    std::string extras;
    if (model.encoder.queriesErrorBit) extras += 'e';
    if (model.encoder.waitsForBitmapEnd) extras += 'w';
    if (!model.encoder.startUpBytes.empty()) extras += 's';
    if (model.encoder.asksWideMechanism) extras += 'm';
    if (model.encoder.secondaryComPort == 5) extras += '2';
    if (model.drawer == DrawerKick::kSuperIo) extras += 'i';
    if (model.display != nullptr) extras += 'd';
    if (model.reportsPaperJam) extras += 'j';
    if (model.converter.setsLeftMargin) extras += 'l';
    return extras;
}

TEST(ModelTableTest, EveryRowIsAsTheFamilySays)
{
    const auto models = ModelDescriptions();
    ASSERT_EQ(models.size(), Rows().size());
    for (std::size_t i = 0; i < models.size(); ++i) {
        const ModelDescription& model = models[i];
        const Row& row = Rows()[i];
        SCOPED_TRACE(row.name);
        const std::string token = row.token;
        EXPECT_EQ(model.name, row.name);
        EXPECT_STREQ(support::PrinterModels()[i].Name, row.name) << "both tables are in one order";
        EXPECT_EQ(model.tag, token + "POSPrinter");
        EXPECT_EQ(model.spooler.tag, "CPrintSpooler" + token);
        EXPECT_EQ(model.converter.tag, i == 0 ? std::string("TALIS2POSPrinter") : token + "POSPrinter");
        EXPECT_EQ(model.description, row.description);
        EXPECT_EQ(model.recLineWidth.metric, row.metric);
        EXPECT_EQ(model.recLineWidth.twips, row.twips);
        EXPECT_EQ(model.recLineWidth.english, row.english);
        EXPECT_EQ(model.recLinesToPaperCut, row.linesToCut);
        EXPECT_EQ(model.encoder.rasterWidth, row.dots);
        EXPECT_EQ(model.converter.cut.partial, row.converterPartial);
        EXPECT_EQ(model.converter.cut.full, row.converterFull);
        EXPECT_EQ(model.converter.cut.endsLine, model.name != "NESTO");
        EXPECT_EQ(model.encoder.cut, row.cut);
        EXPECT_EQ(model.encoder.presenter, row.presenter);
        EXPECT_EQ(model.encoder.afterCutSequence, row.afterCut);
        EXPECT_EQ(model.encoder.status, row.status);
        EXPECT_EQ(model.encoder.recovery, row.recovery);
        EXPECT_EQ(std::vector<uint16_t>(model.encoder.identity.accepted.begin(), model.encoder.identity.accepted.end()),
                  row.identities);
        EXPECT_EQ(ExtrasOf(model), row.extras);
        const bool familyB = row.family == 'B';
        EXPECT_EQ(model.spooler.textHasModePrefix, familyB);
        EXPECT_EQ(model.spooler.logsCastWidth, !familyB);
        EXPECT_EQ(model.spooler.numbering == spooler::JobNumbering::kSecond, familyB);
        EXPECT_EQ(model.spooler.reportsFullStatus, model.name == "BRISA-HD");
        EXPECT_EQ(model.display != nullptr, support::PrinterModels()[i].HasLineDisplay == 1U);
    }
}

TEST(ModelTableTest, TheIdentityCheckAsksAsEachModelAnswers)
{
    const auto check = [](const char* name) { return FindModel(name)->encoder.identity; };
    for (const char* name : {"ARGO PC TURBO", "CORVO"})
        EXPECT_TRUE(check(name).extendedAtOnce) << name;
    for (const char* name : {"TALIS", "LUMEN", "BRISA-HD", "OSTRA", "FERRO"}) {
        EXPECT_TRUE(check(name).extendedAfterFF && !check(name).firstAnswerMustBeFF) << name;
    }
    for (const char* name : {"NESTO", "VELA PC", "DORIN", "AMBRA"})
        EXPECT_TRUE(check(name).firstAnswerMustBeFF) << name;
    for (const char* name : {"TALIS ETHERNET", "PELTO", "SELVA"})
        EXPECT_FALSE(check(name).wholeSeconds) << name;
    EXPECT_EQ(FindModel("TALIS "), nullptr);
    EXPECT_EQ(FindModel("talis"), nullptr) << "the front upper-cases names";
}

}  // namespace
}  // namespace marbex::device
