// What the two companion services have in common, with the log to the letter.

#include <functional>

#include "companion_fixture.h"
#include "companions/cash_drawer_driver.h"
#include "companions/line_display_driver.h"

namespace marbex::tests {
namespace {

using companions::MarbexOposCashDrawerDriver;
using companions::MarbexOposLineDisplayDriver;

struct DrawerKind {
    using Driver = MarbexOposCashDrawerDriver;
    static constexpr const char* kTag = "MarbexOposCashDrawerDriver";
    static constexpr const char* kModel = "PELTO";
    static constexpr const char* kMissing = "T This printer doesn't support Cash Drawer";
    static constexpr const char* kDescription = "Marbex OPOS CashDrawer";
    static constexpr const char* kProgId = "Service.MarbexOposCashDrawerDriver";
    static int32_t Use(Driver& driver) { return driver.OpenDrawer(); }
    static constexpr const char* kUse = "OpenDrawer";
    static constexpr const char* kUsed = "Kick(100,100)";
};

struct DisplayKind {
    using Driver = MarbexOposLineDisplayDriver;
    static constexpr const char* kTag = "MarbexOposLineDisplayDriver";
    static constexpr const char* kModel = "ARGO PC TURBO";
    static constexpr const char* kMissing = "T This printer doesn't support Line Display";
    static constexpr const char* kDescription = "Marbex OPOS LineDisplay";
    static constexpr const char* kProgId = "Service.MarbexOposLineDisplayDriver";
    static int32_t Use(Driver& driver) { return driver.ClearText(); }
    static constexpr const char* kUse = "ClearText";
    static constexpr const char* kUsed = "ClearText()";
};

template <typename Kind>
class Companion : public CompanionTest {
protected:
    struct Row {
        std::string name;    // of the method
        std::string suffix;  // of its Begin line
        std::function<int32_t()> call;
    };

    // Every method that both have and that answers a code.
    std::vector<Row> CommonMethods()
    {
        return {
            {"OpenService", "", [this] { return driver.OpenService("", "", nullptr); }},
            {"CloseService", "", [this] { return driver.CloseService(); }},
            {"ClaimDevice", "", [this] { return driver.ClaimDevice(0); }},
            {"ReleaseDevice", "", [this] { return driver.ReleaseDevice(); }},
            {"COFreezeEvents", "", [this] { return driver.COFreezeEvents(true); }},
            {"GetPropertyNumber", " (9)", [this] { return driver.GetPropertyNumber(9); }},
            {"DirectIO", " (257)", [this] { return driver.DirectIO(257, &data, nullptr); }},
            {Kind::kUse, "", [this] { return Kind::Use(driver); }},
            {"CheckHealth", "", [this] { return driver.CheckHealth(1); }},
            {"CompareFirmwareVersion", "", [this] { return driver.CompareFirmwareVersion("f", 1); }},
            {"UpdateFirmware", "", [this] { return driver.UpdateFirmware("f"); }},
            {"ResetStatistics", "", [this] { return driver.ResetStatistics("s"); }},
            {"RetrieveStatistics", "", [this] { return driver.RetrieveStatistics(&statistics); }},
            {"UpdateStatistics", "", [this] { return driver.UpdateStatistics("s"); }},
        };
    }

    CompanionTest::Lines Logged() const { return CompanionTest::Logged(Kind::kTag); }

    // Every method answers 106, an empty text or nothing, logs its Begin line and then reason, and asks nothing of the
    // printer.
    void ExpectRefusals(const std::string& reason)
    {
        for (const Row& row : CommonMethods()) {
            EXPECT_EQ(row.call(), 106) << row.name;
            EXPECT_EQ(Logged(), (CompanionTest::Lines{"T " + row.name + " Begin" + row.suffix, reason}));
        }
        EXPECT_EQ(driver.GetPropertyString(1000002), "");
        EXPECT_EQ(Logged(), (CompanionTest::Lines{"T GetPropertyString Begin (1000002)", reason}));
        driver.SetPropertyNumber(3, 1);
        EXPECT_EQ(Logged(), (CompanionTest::Lines{"T SetPropertyNumber Begin", reason}));
        driver.SetPropertyString(1000002, "x");
        EXPECT_EQ(Logged(), (CompanionTest::Lines{"T SetPropertyString Begin", reason}));
        EXPECT_EQ(this->calls, FakeDevice::Calls{});
    }

    void Ready()
    {
        this->UsePrinter(Kind::kModel);
        driver.OpenService("", "", nullptr);
        driver.ClaimDevice(0);
        driver.SetPropertyNumber(3, 1);
        this->log.Forget();
    }

    int32_t data = 100;
    std::string statistics = "unchanged";
    typename Kind::Driver driver;
};

using Kinds = testing::Types<DrawerKind, DisplayKind>;
TYPED_TEST_SUITE(Companion, Kinds);

TYPED_TEST(Companion, WithoutAPrinterRefusesInSilence)
{
    for (const auto& row : this->CommonMethods())
        EXPECT_EQ(row.call(), 106) << row.name;
    EXPECT_EQ(this->driver.GetPropertyString(1000002), "");
    this->driver.SetPropertyNumber(3, 1);
    this->driver.SetPropertyString(1000002, "x");
    EXPECT_EQ(this->Logged(), CompanionTest::Lines{});

    this->UsePrinter(TypeParam::kModel);
    EXPECT_EQ(this->driver.GetPropertyNumber(3), 0) << "a setter that was refused has done nothing";
    EXPECT_EQ(this->driver.GetPropertyNumber(9), 1);
}

TYPED_TEST(Companion, ModelsWithoutTheHardwareRefuse)
{
    std::string served;
    for (const auto& model : support::PrinterModels()) {
        this->UsePrinter(model.Name);
        if (this->driver.COFreezeEvents(false); this->Logged().back() == "T COFreezeEvents End") {
            served += std::string(model.Name) + ",";
        }
    }
    const bool isDrawer = std::string(TypeParam::kUse) == "OpenDrawer";
    EXPECT_EQ(served, isDrawer ? "TALIS,TALIS ETHERNET,PELTO,SELVA,NESTO,VELA PC,AMBRA,ARGO PC TURBO,"
                               : "NESTO,VELA PC,ARGO PC TURBO,");

    this->UsePrinter("ORVEN");
    this->calls.clear();
    this->ExpectRefusals(TypeParam::kMissing);
    this->printer->Claimed = 0;
    this->driver.COFreezeEvents(false);
    EXPECT_EQ(this->Logged().back(), TypeParam::kMissing) << "told before the printer's state";
}

TYPED_TEST(Companion, APrinterThatIsNotReadyRefuses)
{
    const std::string reason = "T This printer is OPOS_S_CLOSED, Claimed FALSE or DeviceEnable FALSE";
    this->Ready();
    this->printer->State = opos::OPOS_S_CLOSED;
    this->ExpectRefusals(reason);
    this->printer->State = opos::OPOS_S_ERROR;
    this->printer->Claimed = 0;
    this->ExpectRefusals(reason);
    this->printer->Claimed = 1;
    this->printer->DeviceEnabled = 0;
    this->ExpectRefusals(reason);
    this->printer->DeviceEnabled = 1;
    this->printer->SetClosing(true);  // its CloseService delivers what is left of its events
    this->ExpectRefusals(reason);

    this->printer->SetClosing(false);
    EXPECT_EQ(TypeParam::Use(this->driver), 77) << "nothing has changed meanwhile, CloseService included";
}

TYPED_TEST(Companion, OpensClaimsEnablesAndClosesByItself)
{
    using Lines = CompanionTest::Lines;
    this->UsePrinter(TypeParam::kModel);
    auto& driver = this->driver;
    const auto state = [&] {
        return std::vector<int32_t>{driver.GetPropertyNumber(9), driver.GetPropertyNumber(1),
                                    driver.GetPropertyNumber(3)};
    };
    using State = std::vector<int32_t>;
    EXPECT_EQ(state(), (State{1, 0, 0}));

    this->log.Forget();
    EXPECT_EQ(driver.OpenService("any class", "any name", nullptr), 0);
    EXPECT_EQ(this->Logged(), (Lines{"T OpenService Begin", "T OpenService End"}));
    EXPECT_EQ(driver.ReleaseDevice(), 106);
    EXPECT_EQ(this->Logged(), (Lines{"T ReleaseDevice Begin", "T ReleaseDevice - Not yet claimed"}));
    driver.SetPropertyNumber(3, 1);
    EXPECT_EQ(this->Logged(), (Lines{"T SetPropertyNumber Begin", "T SetPropertyNumber End"}));
    EXPECT_EQ(state(), (State{2, 0, 1}));

    this->log.Forget();
    EXPECT_EQ(driver.ClaimDevice(1000), 0);
    EXPECT_EQ(this->Logged(), (Lines{"T ClaimDevice Begin", "T ClaimDevice End"}));
    EXPECT_EQ(state(), (State{2, 1, 0})) << "claiming disables";
    driver.SetPropertyNumber(3, -5);
    EXPECT_EQ(state(), (State{2, 1, 1}));
    this->log.Forget();
    EXPECT_EQ(driver.ClaimDevice(1000), 102);
    EXPECT_EQ(this->Logged(), (Lines{"T ClaimDevice Begin", "T ClaimDevice - Device Already Claimed"}));
    EXPECT_EQ(state(), (State{2, 1, 1}));

    this->log.Forget();
    EXPECT_EQ(driver.CloseService(), 0);
    EXPECT_EQ(this->Logged(),
              (Lines{"T CloseService Begin", "T ReleaseDevice Begin", "T ReleaseDevice End", "T CloseService End"}));
    EXPECT_EQ(state(), (State{1, 0, 0}));
    this->log.Forget();
    EXPECT_EQ(driver.CloseService(), 0);
    EXPECT_EQ(this->Logged(), (Lines{"T CloseService Begin", "T CloseService End"}));
    EXPECT_EQ(this->calls, FakeDevice::Calls{}) << "the printer is not touched";
}

TYPED_TEST(Companion, UseNeedsItOpenClaimedAndEnabled)
{
    using Lines = CompanionTest::Lines;
    const std::string method = TypeParam::kUse;
    const auto refusal = [&](int32_t code) {
        return Lines{"T " + method + " Begin", "T VerifyMayUseAfter Begin (7)",
                     "T SetErrorCode Begin (" + std::to_string(code) + ", 0)", "T SetErrorCode ** ERROR **",
                     "T SetErrorCode End"};
    };
    this->UsePrinter(TypeParam::kModel);
    EXPECT_EQ(TypeParam::Use(this->driver), 101);
    EXPECT_EQ(this->Logged(), refusal(101));
    this->driver.OpenService("", "", nullptr);
    this->log.Forget();
    EXPECT_EQ(TypeParam::Use(this->driver), 103);
    EXPECT_EQ(this->Logged(), refusal(103));
    this->driver.ClaimDevice(0);
    this->log.Forget();
    EXPECT_EQ(TypeParam::Use(this->driver), 105);
    EXPECT_EQ(this->Logged(), refusal(105));
    EXPECT_EQ(this->driver.DirectIO(0, nullptr, nullptr), 105) << "the result code that is left";
    EXPECT_EQ(this->calls, FakeDevice::Calls{});

    this->driver.SetPropertyNumber(3, 1);
    this->log.Forget();
    EXPECT_EQ(TypeParam::Use(this->driver), 77) << "the printer's answer";
    EXPECT_EQ(this->Logged(), (Lines{"T " + method + " Begin", "T VerifyMayUseAfter Begin (7)",
                                     "T VerifyMayUseAfter End", "T " + method + " End"}));
    EXPECT_EQ(this->calls, FakeDevice::Calls{TypeParam::kUsed});
}

TYPED_TEST(Companion, OwnPropertiesComeFirstAndThePrinterAnswersTheRest)
{
    using Lines = CompanionTest::Lines;
    this->UsePrinter(TypeParam::kModel);
    EXPECT_EQ(this->driver.GetPropertyNumber(8), 1014100);
    EXPECT_EQ(this->driver.GetPropertyString(1000002), TypeParam::kDescription);
    EXPECT_EQ(this->driver.GetPropertyString(1000003), TypeParam::kProgId);
    EXPECT_EQ(this->driver.GetPropertyString(1000004), std::string(TypeParam::kDescription) + " SO V1.0.0");
    EXPECT_EQ(this->calls, FakeDevice::Calls{});

    this->log.Forget();
    EXPECT_EQ(this->driver.GetPropertyNumber(6), 77) << "even the result code";
    EXPECT_EQ(this->driver.GetPropertyString(1000001), std::nullopt);
    this->printer->text = "Internal HCheck: OK";
    EXPECT_EQ(this->driver.GetPropertyString(1000001), "Internal HCheck: OK");
    EXPECT_EQ(this->calls,
              (FakeDevice::Calls{"GetPropertyNumber(6)", "GetPropertyString(1000001)", "GetPropertyString(1000001)"}));
    EXPECT_EQ(this->Logged(),
              (Lines{"T GetPropertyNumber Begin (6)", "T GetPropertyNumber End", "T GetPropertyString Begin (1000001)",
                     "T GetPropertyString End", "T GetPropertyString Begin (1000001)", "T GetPropertyString End"}));
}

// An application released the printer's service from the event handler that ran while the companion's call waited.
TYPED_TEST(Companion, ThePrinterOutlivesTheCallThatItIsIn)
{
    this->Ready();
    this->printer->onCall = [this](const std::string&) {
        device::TheProcess().SetCurrentDevice(nullptr);
        EXPECT_EQ(this->calls.back(), TypeParam::kUsed);
        EXPECT_EQ(TypeParam::Use(this->driver), 106) << "there is no printer any more";
    };
    EXPECT_EQ(TypeParam::Use(this->driver), 77);
    EXPECT_EQ(this->calls.back(), "~printer");
}

}  // namespace
}  // namespace marbex::tests
