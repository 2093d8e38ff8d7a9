// A till: prints receipts when it is told to, and tells what it was told about each of their jobs.
//
//     soak-till FOLDER          its registry file is FOLDER/registry.reg
//
// Commands on standard input: "session SEED FIRST COUNT" opens the printer, prints so many receipts and closes it; "one
// SEED NUMBER" prints one, waiting for each of its jobs; "load SEED" prints until the process is killed. After "net"
// the last two send their events to the file FOLDER/events. Standard output, one line each:
//
//     opened RESULT              of OpenService, ClaimDevice and DeviceEnabled together
//     call R J / gave R J RESULT ID
//     complete ID / error CODE EXTENDED ANSWER
//     fate R J FATE RETRIES      done, failed (by a result), cleared (by an answer), silent, stuck
//     closed MILLISECONDS SLOWEST-CALL
//     vitals HEAP DESCRIPTORS THREADS

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <sstream>

#include "till/session.h"
#include "till/vitals.h"

int main(int count, char** arguments)
{
    using namespace marbex::soak;
    if (count != 2) {
        std::fprintf(stderr, "usage: soak-till FOLDER\n");
        return 64;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 4096);
    const std::string folder = arguments[1];
    ::setenv("MARBEX_OPOS_REGISTRY", (folder + "/registry.reg").c_str(), 1);
    try {
        std::string line;
        while (std::getline(std::cin, line)) {
            const bool net = line.starts_with("net ");
            std::istringstream words(net ? line.substr(4) : line);
            std::string command;
            uint64_t seed = 0;
            uint32_t first = 1;
            uint32_t receipts = 0;
            words >> command >> seed >> first >> receipts;
            auto session = std::make_unique<Session>(seed, folder, net ? folder + "/events" : "");
            if (command == "session") {
                session->Print(first, receipts);
            } else if (command == "one") {
                session->PrintOne(first);
            } else {
                session->PrintForEver();
            }
            session.reset();
            const Vitals now = ReadVitals();
            std::printf("vitals %zu %zu %zu\n", now.heap, now.descriptors, now.threads);
        }
    } catch (const std::exception& error) {
        std::printf("broken %s\n", error.what());
        return 1;
    }
    return 0;
}
