#include "device/model_description.h"

#include <array>

namespace marbex::device {

namespace {

using printer::CutCommand;
using printer::Recovery;
using printer::StatusVariant;
using spooler::JobNumbering;
using spooler::SpoolerTraits;

constexpr LineWidths k48mm{2721, 1889, 4800};
constexpr LineWidths k71mm{4025, 2795, 7100};
constexpr LineWidths k72mm{4081, 2834, 7200};
constexpr LineWidths k76mm{4308, 2992, 7600};
constexpr LineWidths k80mm{4535, 3149, 8000};
constexpr LineWidths k104mm{5896, 4094, 10400};
constexpr LineWidths k120mm{6803, 4724, 12000};
constexpr LineWidths k156mm{8844, 6141, 15600};

// Identifiers that GS I answers.
constexpr std::array<uint16_t, 5> kTalisIds{0x5F, 0x6E, 0xB7, 0x83, 0x200};
constexpr std::array<uint16_t, 1> kTalisEthernetIds{0x65};
constexpr std::array<uint16_t, 2> kOrvenIds{0x5D, 0x5E};
constexpr std::array<uint16_t, 1> kOrvenEthIds{0x95};
constexpr std::array<uint16_t, 1> kBrisaIds{0xB9};
constexpr std::array<uint16_t, 1> kBrisaHdIds{0x212};
constexpr std::array<uint16_t, 1> kPeltoIds{0x8E};
constexpr std::array<uint16_t, 1> kGalenIds{0x75};
constexpr std::array<uint16_t, 2> kLumenIds{0xA8, 0x1A8};
constexpr std::array<uint16_t, 1> kOstraIds{0x204};
constexpr std::array<uint16_t, 1> kFerroIds{0x225};
constexpr std::array<uint16_t, 1> kNestoIds{0x226};
constexpr std::array<uint16_t, 1> kVelaPcIds{0x239};
constexpr std::array<uint16_t, 1> kDorinIds{0x208};
constexpr std::array<uint16_t, 1> kAmbraIds{0x20A};
constexpr std::array<uint16_t, 1> kArgoPcIds{0x209};
constexpr std::array<uint16_t, 1> kCorvoIds{0x237};

// GS "e": the presenter pushes the ticket out and holds it.
constexpr std::string_view kPresent3 = "\x1D\x65\x03\x03";
constexpr std::string_view kPresent10 = "\x1D\x65\x03\x0A";

constexpr std::string_view kOstraStartUp = "\x1C<EPOS>";

constexpr std::array<int32_t, 2> kNestoCodePages{437, 737};
constexpr std::array<int32_t, 1> kVelaPcCodePages{437};
constexpr std::array<int32_t, 1> kArgoPcCodePages{737};
constexpr DisplayDescription kNestoDisplay{"2x20", 2, 20, false, 437, kNestoCodePages};
constexpr DisplayDescription kVelaPcDisplay{"2x20", 2, 20, false, 437, kVelaPcCodePages};
constexpr DisplayDescription kArgoPcDisplay{"1x20", 1, 20, true, 737, kArgoPcCodePages};

constexpr SpoolerTraits FamilyA(const char* tag)
{
    return {.tag = tag};
}

constexpr SpoolerTraits FamilyB(const char* tag)
{
    return {.tag = tag, .numbering = JobNumbering::kSecond, .textHasModePrefix = true, .logsCastWidth = false};
}

constexpr SpoolerTraits FamilyBWithFullStatus(const char* tag)
{
    SpoolerTraits traits = FamilyB(tag);
    traits.reportsFullStatus = true;
    return traits;
}

// In the order of the model table.
constexpr std::array<ModelDescription, 18> kModels{{
    {
        .name = "TALIS",
        .tag = "TalisPOSPrinter",
        .description = "TALIS",
        .recLineWidth = k76mm,
        .recLinesToPaperCut = 4,
        .converter = {.tag = "TALIS2POSPrinter", .cut = kCutAfterFourFeeds},
        .encoder = {.queriesErrorBit = true, .identity = {.extendedAfterFF = true, .accepted = kTalisIds}},
        .spooler = FamilyA("CPrintSpoolerTalis"),
    },
    {
        .name = "TALIS ETHERNET",
        .tag = "TalisEthPOSPrinter",
        .description = "TALIS ETHERNET",
        .recLineWidth = k76mm,
        .recLinesToPaperCut = 6,
        .converter = {.tag = "TalisEthPOSPrinter", .cut = kCutAfterSixFeeds},
        .encoder = {.identity = {.wholeSeconds = false, .accepted = kTalisEthernetIds}},
        .spooler = FamilyA("CPrintSpoolerTalisEth"),
    },
    {
        .name = "ORVEN",
        .tag = "OrvenPOSPrinter",
        .description = "ORVEN",
        .recLineWidth = k76mm,
        .recLinesToPaperCut = 3,
        .converter = {.tag = "OrvenPOSPrinter", .cut = kPartialCutAndPresent, .setsLeftMargin = true},
        .encoder = {.cut = CutCommand::kFullWithPresenter,
                    .presenter = kPresent3,
                    .afterCutSequence = true,
                    .status = StatusVariant::kNoDrawerFlag,
                    .identity = {.accepted = kOrvenIds}},
        .spooler = FamilyB("CPrintSpoolerOrven"),
    },
    {
        .name = "ORVENETH",
        .tag = "OrvenEthPOSPrinter",
        .description = "ORVENETH",
        .recLineWidth = k76mm,
        .recLinesToPaperCut = 3,
        .converter = {.tag = "OrvenEthPOSPrinter", .cut = kPartialCutAndPresent},
        .encoder = {.cut = CutCommand::kFullWithPresenter,
                    .presenter = kPresent3,
                    .afterCutSequence = true,
                    .status = StatusVariant::kNoDrawerFlag,
                    .identity = {.accepted = kOrvenEthIds}},
        .spooler = FamilyB("CPrintSpoolerOrvenEth"),
    },
    {
        .name = "BRISA",
        .tag = "BrisaPOSPrinter",
        .description = "BRISA",
        .recLineWidth = k71mm,
        .recLinesToPaperCut = 3,
        .converter = {.tag = "BrisaPOSPrinter", .cut = kPartialCutAndPresent},
        .encoder = {.cut = CutCommand::kFullWithPresenter,
                    .presenter = kPresent3,
                    .afterCutSequence = true,
                    .rasterWidth = 568,
                    .status = StatusVariant::kNoDrawerFlag,
                    .identity = {.accepted = kBrisaIds}},
        .spooler = FamilyB("CPrintSpoolerBrisa"),
    },
    {
        .name = "BRISA-HD",
        .tag = "BrisaHdPOSPrinter",
        .description = "BRISA-HD",
        .recLineWidth = k120mm,
        .recLinesToPaperCut = 3,
        .converter = {.tag = "BrisaHdPOSPrinter", .cut = kPartialCutAndPresent},
        .encoder = {.cut = CutCommand::kFullWithPresenter,
                    .presenter = kPresent3,
                    .afterCutSequence = true,
                    .rasterWidth = 960,
                    .status = StatusVariant::kBrisaHd,
                    .waitsForBitmapEnd = true,
                    .identity = {.extendedAfterFF = true, .accepted = kBrisaHdIds}},
        .spooler = FamilyBWithFullStatus("CPrintSpoolerBrisaHd"),
        .reportsPaperJam = true,
    },
    {
        .name = "PELTO",
        .tag = "PELTOPOSPrinter",
        .description = "PELTO",
        .recLineWidth = k72mm,
        .recLinesToPaperCut = 5,
        .converter = {.tag = "PELTOPOSPrinter", .cut = kPartialCutAfterFiveFeeds},
        .encoder = {.cut = CutCommand::kFull,
                    .rasterWidth = 576,
                    .status = StatusVariant::kReferenceCleansOutput,
                    .identity = {.wholeSeconds = false, .accepted = kPeltoIds}},
        .spooler = FamilyA("CPrintSpoolerPELTO"),
    },
    {
        .name = "SELVA",
        .tag = "SELVAPOSPrinter",
        .description = "SELVA",
        .recLineWidth = k72mm,
        .recLinesToPaperCut = 5,
        .converter = {.tag = "SELVAPOSPrinter", .cut = kPartialCutAfterFiveFeeds},
        .encoder = {.cut = CutCommand::kFull,
                    .rasterWidth = 576,
                    .status = StatusVariant::kReferenceCleansOutput,
                    .identity = {.wholeSeconds = false, .accepted = kPeltoIds}},
        .spooler = FamilyA("CPrintSpoolerSELVA"),
    },
    {
        .name = "GALEN",
        .tag = "GALENPOSPrinter",
        .description = "GALEN",
        .recLineWidth = k76mm,
        .recLinesToPaperCut = 2,
        .converter = {.tag = "GALENPOSPrinter", .cut = kPartialCutAfterFiveFeeds},
        .encoder = {.cut = CutCommand::kFull,
                    .status = StatusVariant::kNoDrawerFlag,
                    .identity = {.accepted = kGalenIds}},
        .spooler = FamilyB("CPrintSpoolerGALEN"),
    },
    {
        .name = "LUMEN",
        .tag = "LumenPOSPrinter",
        .description = "LUMEN",
        .recLineWidth = k76mm,
        .recLinesToPaperCut = 3,
        .converter = {.tag = "LumenPOSPrinter", .cut = kFullCutAndPresent},
        .encoder = {.cut = CutCommand::kFullWithPresenter,
                    .presenter = kPresent3,
                    .afterCutSequence = true,
                    .status = StatusVariant::kNoDrawerFlag,
                    .recovery = Recovery::kDleEnq2,
                    .identity = {.extendedAfterFF = true, .accepted = kLumenIds}},
        .spooler = FamilyB("CPrintSpoolerLumen"),
    },
    {
        .name = "OSTRA",
        .tag = "OSTRAPOSPrinter",
        .description = "OSTRA",
        .recLineWidth = k156mm,
        .recLinesToPaperCut = 2,
        .converter = {.tag = "OSTRAPOSPrinter", .cut = kPartialCutAfterFiveFeeds},
        .encoder = {.cut = CutCommand::kFullWithPresenter,
                    .presenter = kPresent10,
                    .afterCutSequence = true,
                    .rasterWidth = 1248,
                    .status = StatusVariant::kNoDrawerFlag,
                    .startUpBytes = kOstraStartUp,
                    .identity = {.extendedAfterFF = true, .accepted = kOstraIds}},
        .spooler = FamilyB("CPrintSpoolerOSTRA"),
    },
    {
        .name = "FERRO",
        .tag = "FerroPOSPrinter",
        .description = "FERRO",
        .recLineWidth = k104mm,
        .recLinesToPaperCut = 2,
        .converter = {.tag = "FerroPOSPrinter", .cut = kFullCutAndPresent},
        .encoder = {.cut = CutCommand::kPresenterAt100ElsePartial,
                    .presenter = kPresent3,
                    .rasterWidth = 832,
                    .status = StatusVariant::kNoDrawerFlag,
                    .recovery = Recovery::kDleEnq2,
                    .identity = {.extendedAfterFF = true, .accepted = kFerroIds}},
        .spooler = FamilyB("CPrintSpoolerFerro"),
    },
    {
        .name = "NESTO",
        .tag = "NestoPOSPrinter",
        .description = "Nesto",
        .recLineWidth = k48mm,
        .recLinesToPaperCut = 0,
        .converter = {.tag = "NestoPOSPrinter", .cut = kNoCut},
        .encoder = {.cut = CutCommand::kTwoLineFeeds,
                    .rasterWidth = 384,
                    .status = StatusVariant::kNoDrawerFlag,
                    .recovery = Recovery::kDleEnq2,
                    .identity = {.extendedAfterFF = true, .firstAnswerMustBeFF = true, .accepted = kNestoIds}},
        .spooler = FamilyB("CPrintSpoolerNesto"),
        .display = &kNestoDisplay,
    },
    {
        .name = "VELA PC",
        .tag = "VelaPCPOSPrinter",
        .description = "Vela PC",
        .recLineWidth = k80mm,
        .recLinesToPaperCut = 4,
        .converter = {.tag = "VelaPCPOSPrinter", .cut = kCutAfterFourFeeds},
        .encoder = {.rasterWidth = 640,
                    .status = StatusVariant::kNoDrawerFlag,
                    .recovery = Recovery::kDleEnq2,
                    .identity = {.extendedAfterFF = true, .firstAnswerMustBeFF = true, .accepted = kVelaPcIds}},
        .spooler = FamilyB("CPrintSpoolerVelaPC"),
        .drawer = DrawerKick::kSuperIo,
        .display = &kVelaPcDisplay,
    },
    {
        .name = "DORIN",
        .tag = "DorinPOSPrinter",
        .description = "DORIN",
        .recLineWidth = k80mm,
        .recLinesToPaperCut = 3,
        .converter = {.tag = "DorinPOSPrinter", .cut = kThreeFeedsNoCut},
        .encoder = {.cut = CutCommand::kFull,
                    .afterCutSequence = true,
                    .rasterWidth = 640,
                    .status = StatusVariant::kNoDrawerFlag,
                    .asksWideMechanism = true,
                    .identity = {.extendedAfterFF = true, .firstAnswerMustBeFF = true, .accepted = kDorinIds}},
        .spooler = FamilyB("CPrintSpoolerDorin"),
    },
    {
        .name = "AMBRA",
        .tag = "AMBRAPOSPrinter",
        .description = "AMBRA",
        .recLineWidth = k72mm,
        .recLinesToPaperCut = 5,
        .converter = {.tag = "AMBRAPOSPrinter", .cut = kCutAfterFiveFeeds},
        .encoder = {.rasterWidth = 576,
                    .identity = {.extendedAfterFF = true, .firstAnswerMustBeFF = true, .accepted = kAmbraIds}},
        .spooler = FamilyA("CPrintSpoolerAMBRA"),
    },
    {
        .name = "ARGO PC TURBO",
        .tag = "ArgoPCPOSPrinter",
        .description = "Argo PC TURBO",
        .recLineWidth = k48mm,
        .recLinesToPaperCut = 4,
        .converter = {.tag = "ArgoPCPOSPrinter", .cut = kCutAfterFourFeeds},
        .encoder = {.rasterWidth = 384,
                    .status = StatusVariant::kNoDrawerFlag,
                    .recovery = Recovery::kDleEnq2,
                    .secondaryComPort = 5,
                    .identity = {.extendedAtOnce = true, .accepted = kArgoPcIds}},
        .spooler = FamilyB("CPrintSpoolerArgoPC"),
        .drawer = DrawerKick::kSuperIo,
        .display = &kArgoPcDisplay,
    },
    {
        .name = "CORVO",
        .tag = "CORVOPOSPrinter",
        .description = "CORVO",
        .recLineWidth = k80mm,
        .recLinesToPaperCut = 0,
        .converter = {.tag = "CORVOPOSPrinter", .cut = kFullCutAndPresent},
        .encoder = {.cut = CutCommand::kPartialAt50ElseFull,
                    .afterCutSequence = true,
                    .rasterWidth = 640,
                    .status = StatusVariant::kNoDrawerFlag,
                    .recovery = Recovery::kDleEnq2,
                    .identity = {.extendedAtOnce = true, .accepted = kCorvoIds}},
        .spooler = FamilyB("CPrintSpoolerCORVO"),
    },
}};

}  // namespace

std::span<const ModelDescription> ModelDescriptions()
{
    return kModels;
}

const ModelDescription* FindModel(std::string_view name)
{
    for (const ModelDescription& model : kModels) {
        if (model.name == name) return &model;
    }
    return nullptr;
}

}  // namespace marbex::device
