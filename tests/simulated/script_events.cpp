// What the application does in its event handlers.

#include "opos/common.h"
#include "platform/clock.h"
#include "script.h"

namespace marbex::tests {

void Script::Handle(const TillEvent& event, int32_t* response)
{
    if (settling_) return;
    if (nested_ < 2 && dice_.OneIn(temper_.nestsOneIn)) {
        ++nested_;
        Nest();
        --nested_;
    }
    if (event.kind != TillEvent::Kind::kError) return;
    const int answer = dice_.Between(1, 100);
    if (answer <= temper_.retryPercent) {
        *response = opos::OPOS_ER_RETRY;
    } else if (answer <= temper_.retryPercent + temper_.clearPercent) {
        *response = opos::OPOS_ER_CLEAR;
    } else if (answer == 100) {
        *response = opos::OPOS_ER_CONTINUEINPUT;
    }
}

// A call of the service from inside an event handler.
void Script::Nest()
{
    switch (dice_.Below(16)) {
        case 0:
            till_.Print(1);
            break;
        case 1:
        case 2:
        case 3: {
            const bool async = till_.IsAsync();
            till_.Async(!async);
            dice_.OneIn(4) ? till_.PrintNow() : till_.Print(1);
            till_.Async(async);
            if (dice_.OneIn(2)) till_.Release();
            break;
        }
        case 4:
            till_.Cut();
            break;
        case 5:
            till_.Clear();
            break;
        case 6:
            till_.Freeze(true, true);
            till_.Print(1);
            till_.Freeze(false, true);
            break;
        case 7:
            till_.Release();
            break;
        case 8:
        case 9:
            till_.Close();
            till_.Claim(0);
            till_.CheckHealth();
            till_.Release();
            break;
        case 10:
            till_.Close();
            till_.Open();
            break;
        case 11:
            till_.Drop();
            break;
        case 12:
        case 13:
            CloseOnWorker();
            break;
        case 14:
            RunMessages(static_cast<uint32_t>(dice_.Between(0, 3000)));
            break;
        default:
            platform::SystemClock().Sleep(static_cast<uint32_t>(dice_.Between(0, 3000)));
            break;
    }
}

// The handler waits for a thread that closes the service.
void Script::CloseOnWorker()
{
    const auto closer = platform::Thread::Start([this] { till_.Close(); });
    platform::WaitForOne(*closer, platform::kForever);
}

}  // namespace marbex::tests
