// A till that survives everything. A sale, one line of standard input, is on the disk before it is printed, and marked
// as done afterwards: a printer that is away, an open cover, the till's own end only make it later. What failed halfway
// is printed again as a whole, under the same number. ./till Till1 /var/lib/my-till

#include <marbex/till.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>

namespace fs = std::filesystem;
using marbex::Result;

class Till {
public:
    Till(std::string device, fs::path folder) : device_(std::move(device)), folder_(std::move(folder))
    {
        fs::create_directories(folder_);
        for (const auto& sale : fs::directory_iterator(folder_))
            number_ = std::max(number_, std::stoi(sale.path().stem()));
    }

    // Under another name first, so that a file is there whole or not at all.
    void Keep(const std::string& sale)
    {
        const fs::path file = folder_ / (std::to_string(++number_) + ".sale");
        std::ofstream(file.string() + ".new") << sale << '\n';
        sync();
        fs::rename(file.string() + ".new", file);
        sync();
    }

    // Oldest first; false when something is left for later.
    bool PrintWhatIsKept()
    {
        for (const auto& [number, file] : Unprinted()) {
            std::string sale;
            std::getline(std::ifstream(file), sale);
            const Result result = Print("Receipt " + std::to_string(number) + "\n" + sale + "\n");
            if (result != Result::kSuccess) {
                std::cout << "later: " << Name(result) << ": " << Advice(result) << std::endl;
                (void)printer_.Close();  // begins anew, also with another printer at the same place
                return false;
            }
            fs::rename(file, fs::path(file).replace_extension(".done"));
            std::cout << "printed " << number << std::endl;
        }
        return true;
    }

private:
    Result Print(const std::string& receipt)
    {
        Result result = printer_.IsOpen() ? Result::kSuccess : printer_.Start(device_);
        if (result == Result::kSuccess) result = printer_.BeginTransaction();
        if (result == Result::kSuccess) result = printer_.Print(receipt);
        if (result == Result::kSuccess) result = printer_.Cut();
        return result == Result::kSuccess ? printer_.EndTransaction() : result;
    }

    std::map<int, fs::path> Unprinted() const
    {
        std::map<int, fs::path> sales;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            if (entry.path().extension() == ".sale") sales[std::stoi(entry.path().stem())] = entry.path();
        }
        return sales;
    }

    std::string device_;
    fs::path folder_;
    int number_ = 0;
    marbex::Printer printer_;
};

int main(int argc, char** argv)
{
    Till till(argc > 1 ? argv[1] : "Till1", argc > 2 ? argv[2] : "sales");
    std::setvbuf(stdin, nullptr, _IONBF, 0);  // what is not read yet, poll sees
    bool isOpen = true;
    while (!till.PrintWhatIsKept() || isOpen) {
        // Sales and the printer's events are waited for together, the printer's return for a second at a time.
        pollfd waited[] = {{isOpen ? 0 : -1, POLLIN, 0}, {marbex::MessageDescriptor(), POLLIN, 0}};
        poll(waited, 2, 1000);
        marbex::RunMessages();
        if ((waited[0].revents & (POLLIN | POLLHUP)) == 0) continue;
        std::string sale;
        isOpen = static_cast<bool>(std::getline(std::cin, sale));
        if (isOpen) till.Keep(sale);
    }
    return 0;
}
