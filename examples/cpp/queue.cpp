// Asynchronous output: calls return at once, the printer prints what is queued, and events tell what became of it. An
// error waits for an answer; the program's own loop goes on meanwhile.
//
//     ./queue Till1

#include <marbex/till.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <iostream>
#include <string>

using marbex::ErrorAnswer;
using marbex::Result;

namespace {

constexpr int kReceipts = 3;
constexpr int kMostAttempts = 100;

int Complain(Result result)
{
    std::cerr << Name(result) << ": " << Advice(result) << '\n';
    return 1;
}

// Any loop will do that can wait for a descriptor to become readable.
void RunLoopWhilePending(marbex::Printer& printer)
{
    const int loop = epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLIN;
    epoll_ctl(loop, EPOLL_CTL_ADD, marbex::MessageDescriptor(), &event);
    while (printer.IsOutputPending()) {
        epoll_wait(loop, &event, 1, 1000);
        marbex::RunMessages();
    }
    close(loop);
}

}  // namespace

int main(int argc, char** argv)
{
    marbex::Printer printer;
    int attempts = 0;
    bool isDropped = false;
    printer.onOutputComplete = [&](int32_t outputId) {
        attempts = 0;
        std::cout << "output " << outputId << " is printed" << std::endl;
    };
    // Output that failed is attempted again from its beginning, half a second after the answer.
    printer.onError = [&](Result error) {
        if (attempts == 0) std::cout << "waiting: " << Name(error) << ": " << Advice(error) << std::endl;
        if (++attempts < kMostAttempts) return ErrorAnswer::kRetry;
        isDropped = true;
        return ErrorAnswer::kClear;
    };
    printer.onStatus = [](marbex::Status status) {
        if (status == marbex::Status::kPaperLow) std::cout << "put in a new roll soon" << std::endl;
    };

    Result result = printer.Start(argc > 1 ? argv[1] : "Till1");
    if (result == Result::kSuccess) result = printer.SetAsync(true);
    for (int number = 1; number <= kReceipts && result == Result::kSuccess; ++number) {
        // As a transaction, so that a receipt whose end fails is repeated as a whole.
        result = printer.BeginTransaction();
        if (result == Result::kSuccess) result = printer.Print("Receipt " + std::to_string(number) + "\n");
        if (result == Result::kSuccess) result = printer.Print("1 x Espresso                        2,20 €\n");
        if (result == Result::kSuccess) result = printer.Cut();
        if (result == Result::kSuccess) result = printer.EndTransaction();
        std::cout << "receipt " << number << " is queued as " << printer.OutputId() << std::endl;
    }
    if (result != Result::kSuccess) return Complain(result);

    RunLoopWhilePending(printer);
    if (isDropped) std::cerr << "the printer stayed away: what was queued has been dropped\n";
    return isDropped ? 1 : 0;
}
