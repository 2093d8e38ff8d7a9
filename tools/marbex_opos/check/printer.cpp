#include "device/model_description.h"
#include "marbex_opos/check/check.h"
#include "marbex_opos/check/identity.h"
#include "marbex_opos/check/questions.h"
#include "marbex_opos/check/serial_speed.h"
#include "marbex_opos/check/stranger.h"
#include "marbex_opos/devices/profile_check.h"
#include "marbex_opos/nearest.h"
#include "platform/library.h"
#include "platform/serial.h"
#include "printer/status_query.h"

namespace marbex::tools {

namespace {

constexpr uint32_t kLongestAnswer = 1500;  // ms
constexpr uint32_t kUsualPort = 9100;

class PrinterCheck {
public:
    PrinterCheck(std::unique_ptr<Cable> cable, const DeviceView& device, Steps& steps)
        : cable_(std::move(cable)), device_(device), steps_(steps)
    {
        if (const support::PrinterModelStruct* model = ModelOf(device.profile)) model_ = device::FindModel(model->Name);
    }

    void Run()
    {
        const std::string unasked = cable_->Receive(64, 100);
        Answer got;
        const std::optional<uint32_t> status = AskFullStatus(*cable_, got, kLongestAnswer);
        if (!status) return TellSilence(unasked + got.bytes, got.wasSent);
        steps_.Fine("printer", "answers");
        const bool isReady = (*status & (printer::kFullStatusCover | printer::kFullStatusPaperEnd)) == 0;
        CheckModel(isReady);
        CheckConditions(*status);
        CheckDrawer();
        CheckDisplay();
    }

private:
    bool IsSerial() const { return device_.profile.PortType == support::kPortSerial; }
    bool IsTcp() const { return device_.profile.PortType == support::kPortEthernet; }

    void TellSilence(const std::string& bytes, bool wasSent)
    {
        const std::string place = PortText(device_.profile);
        const bool mayBeOtherPort = IsTcp() && device_.profile.Port != kUsualPort;
        const std::string otherPort = SetCommand(device_, "Port=" + std::to_string(kUsualPort));
        if (IsSerial() && wasSent) {
            // Closed, so that it can be opened at another speed.
            cable_.reset();
            if (const std::optional<uint32_t> speed = FindSpeed(device_.profile)) {
                return steps_.Wrong("printer",
                                    "answers at " + std::to_string(*speed) + " baud, and Speed is " +
                                        std::to_string(device_.profile.Speed),
                                    SetCommand(device_, "Speed=" + std::to_string(*speed)));
            }
        }
        if (!bytes.empty()) {
            steps_.Wrong("printer", place + ": " + DescribeStranger(bytes), mayBeOtherPort ? otherPort : OtherPlace());
        } else if (!wasSent && IsSerial()) {
            steps_.Wrong("printer",
                         place + ": nothing can be sent: the printer is off or holds the line, or the cable has no" +
                             " handshake lines",
                         SetCommand(device_, "Handshake=2") + ", for a printer set to Xon/Xoff");
        } else if (cable_ && cable_->IsEnded()) {
            steps_.Wrong(
                "printer",
                place + " ends the connection at once: it serves another till, or is no printer" + Connected(device_),
                mayBeOtherPort ? otherPort : "close the other till's program; switch the printer off and on");
        } else {
            steps_.Wrong("printer",
                         place + ": nothing answers" + (IsSerial() ? " at any speed" : "") +
                             ": the printer is off, busy with another till, or it is no printer" + Connected(device_),
                         mayBeOtherPort ? otherPort : OtherPlace());
        }
    }

    std::string OtherPlace() const
    {
        if (IsTcp()) return "switch the printer off and on; else " + SetCommand(device_, "IPAddress=ADDRESS");
        if (IsSerial()) return "is it the right port? " + SetCommand(device_, "Com=NUMBER");
        return "switch the printer off and on";
    }

    void CheckModel(bool isReady)
    {
        const std::optional<uint16_t> identifier = AskIdentifier(*cable_, kLongestAnswer);
        if (!identifier) {
            if (isReady) {
                steps_.Wrong("model", "the printer tells its status and not its model: it is no " + Configured(),
                             "switch the printer off and on");
            } else {
                steps_.Warn("model", "the printer does not tell it as long as it cannot print", "see below");
            }
            return;
        }
        const std::vector<std::string> models = ModelsOf(*identifier);
        if (models.empty()) {
            char number[8];
            std::snprintf(number, sizeof number, "0x%02X", *identifier);
            steps_.Wrong("model",
                         "the printer identifies itself as " + std::string(number) + ", which is none of the models",
                         "marbex-opos models");
        } else if (std::ranges::find(models, Configured()) == models.end()) {
            std::string which;
            for (const std::string& model : models)
                which += (which.empty() ? "" : " or ") + model;
            steps_.Wrong("model", "the printer is a " + which + ", and PrinterModel is " + Configured(),
                         SetCommand(device_, ShellWord("PrinterModel=" + models.front())));
        } else {
            steps_.Fine("model", Configured());
        }
    }

    std::string Configured() const
    {
        return model_ != nullptr ? std::string(model_->name) : std::string(device_.profile.PrinterModel);
    }

    void CheckConditions(uint32_t status)
    {
        const bool isCoverOpen = (status & printer::kFullStatusCover) != 0;
        const bool isPaperOut = (status & printer::kFullStatusPaperEnd) != 0;
        const bool isJammed = model_ != nullptr && model_->reportsPaperJam && (status & printer::kFullStatusJam) != 0;
        if (isCoverOpen) {
            steps_.Wrong("cover", "open: nothing is printed", "close it");
        } else {
            steps_.Fine("cover", "closed");
        }
        if (isPaperOut) {
            steps_.Wrong("paper", "there is none", "put a roll in");
        } else if (isJammed) {
            steps_.Wrong("paper", "jammed", "open the cover, take the jammed paper out and close it");
        } else if ((status & printer::kFullStatusNearEnd) != 0) {
            steps_.Warn("paper", "running out", "have a new roll ready");
        } else {
            steps_.Fine("paper", "there is enough");
        }
        printerStatus_ = Ask(*cable_, "\x10\x04\x01", 1, kLongestAnswer).bytes;
        constexpr char kOffline = 0x08;
        const bool isOffline = printerStatus_.size() == 1 && (printerStatus_[0] & kOffline) != 0;
        if (isOffline && !isCoverOpen && !isPaperOut && !isJammed) {
            steps_.Wrong("state", "the printer is offline: it reports an error of its own",
                         "look at its lights; switch it off and on");
        }
    }

    void CheckDrawer()
    {
        if (model_ == nullptr || !HasCompanion(device_.profile, ObjectKind::kCashDrawer)) return;
        constexpr const char* kBoardLibrary = "LpcSio.dll";
        constexpr char kSignal = 0x04;
        const bool tells = model_->encoder.status == printer::StatusVariant::kReference ||
                           model_->encoder.status == printer::StatusVariant::kReferenceCleansOutput;
        if (model_->drawer == device::DrawerKick::kSuperIo) {
            if (platform::DynamicLibrary::Load(kBoardLibrary) == nullptr) {
                steps_.Warn("drawer",
                            std::string("hangs on the board, and its library ") + kBoardLibrary + " is not there",
                            "install what came with the board");
            } else {
                steps_.Fine("drawer", "on the board");
            }
        } else if (tells && printerStatus_.size() == 1) {
            steps_.Fine("drawer",
                        std::string("its signal is ") + ((printerStatus_[0] & kSignal) != 0 ? "high" : "low"));
        } else {
            steps_.Fine("drawer", "at the printer, which does not tell whether it is open");
        }
    }

    void CheckDisplay()
    {
        if (model_ == nullptr || model_->display == nullptr) return;
        const std::string format(model_->display->format);
        if (!model_->display->onSecondLink) return steps_.Fine("display", format + " at the printer");
        const std::string port = "COM" + std::to_string(model_->encoder.secondaryComPort);
        const auto ports = platform::SystemSerial().Ports().value_or(std::vector<platform::SerialPortEntry>());
        if (std::ranges::find(ports, port, &platform::SerialPortEntry::port) == ports.end()) {
            steps_.Warn("display", format + " on " + port + ", which is not there", "plug in what provides " + port);
        } else {
            steps_.Fine("display", format + " on " + port);
        }
    }

    std::unique_ptr<Cable> cable_;
    const DeviceView& device_;
    Steps& steps_;
    const device::ModelDescription* model_ = nullptr;
    std::string printerStatus_;  // the answer to DLE EOT 0x01
};

}  // namespace

void CheckPrinter(std::unique_ptr<Cable> cable, const DeviceView& device, Steps& steps)
{
    PrinterCheck(std::move(cable), device, steps).Run();
}

}  // namespace marbex::tools
