#pragma once

// The application: the calls of its program, each watched while it runs and told to the account, and its event handler.

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "account.h"
#include "control_object.h"
#include "device/posprinter_device.h"
#include "platform/simulated/machine/cable.h"
#include "server/posprinter_front.h"
#include "story.h"

namespace marbex::tests {

inline constexpr const char* kEventFile = "events.txt";

class Till {
public:
    // toFile: the service is opened for a file, which takes its events.
    Till(Story& story, Account& account, const simulated::Cable& cable, bool toFile);
    void OnRecord(std::string_view record);  // was put into the file

    // What the application does in its event handler; of an error, response is the answer.
    std::function<void(const TillEvent& event, int32_t* response)> handler;

    // The calls, from any thread; opening and dropping from the first only.
    int32_t Open();
    int32_t Close();
    int32_t Claim(int32_t timeout);
    int32_t Release();
    void Enable();
    int32_t Print(int lines);
    int32_t PrintNow();
    int32_t SendRaw();
    int32_t Cut();
    int32_t FeedToMark();
    int32_t PrintBarCode();
    int32_t PrintPicture();
    int32_t BeginTransaction();
    int32_t EndTransaction();
    int32_t Clear();
    int32_t CheckHealth();
    void Async(bool on);
    void Freeze(bool on, bool byControlObject);
    int32_t Number(int32_t property);
    void Drop();  // the last reference to the service; another one is made

    bool IsOpen() { return State() != opos::OPOS_S_CLOSED; }
    int32_t State() { return Number(opos::PIDX_State); }
    bool IsAsync() const { return async_; }
    bool IsFrozen() const { return frozen_ || controlFrozen_; }
    bool InHandler() const { return handlerDepth_ > 0; }
    bool IsClosing() const
    {
        return closed_.lock() != nullptr && closed_.lock() == Device();
    }  // CloseService was called
    bool CollectsTransaction() const { return transaction_ != 0; }
    int Prints() const { return prints_; }

    void Complain(const std::string& what);
    const std::vector<std::string>& Complaints() const { return complaints_; }

private:
    struct Call;
    class Watch;
    class ModeChange;

    std::shared_ptr<device::POSPrinterDevice> Device() const { return service_->Device(); }
    void Set(int32_t property, bool on);
    int32_t Printed(const std::string& what, Job::Kind kind, int lines, bool queues, bool confirmable,
                    const std::function<int32_t(device::POSPrinterDevice&, const std::string&)>& print);
    void OnEvent(const TillEvent& event, int32_t* response);
    void Answered(int32_t answer);
    void OnError(const TillEvent& event, int32_t* response);
    void ExpectErrorState(const char* when);
    void CountClaim(const std::shared_ptr<device::POSPrinterDevice>& device, int change);
    void ExpectClaim();

    Story& story_;
    Account& account_;
    const simulated::Cable& cable_;
    const bool toFile_;
    ControlObject control_;
    std::unique_ptr<server::MarbexOposPrnDriver> service_;
    std::vector<std::unique_ptr<server::MarbexOposPrnDriver>> dropped_;  // calls of theirs may be under way
    std::vector<Call*> calls_;                                           // under way, the latest last
    std::vector<std::string> complaints_;
    bool async_ = false;
    bool frozen_ = false;
    bool controlFrozen_ = false;
    std::weak_ptr<device::POSPrinterDevice> closed_;  // whose CloseService has returned
    std::weak_ptr<device::POSPrinterDevice> claimed_;
    int claims_ = 0;  // of claimed_, successful ones less the releases
    int handlerDepth_ = 0;
    simulated::Moment inHandlers_ = 0;  // time spent in the outermost
    int transaction_ = 0;
    int transactions_ = 0;
    int prints_ = 0;
    int printCalls_ = 0;
    int modeCalls_ = 0;  // calls that change what becomes of output, begun and ended
    int modeCallsUnderWay_ = 0;
};

}  // namespace marbex::tests
