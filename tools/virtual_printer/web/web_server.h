#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "virtual_printer/web/api.h"

namespace marbex::virtual_printer {

// Serves the page and the control interface over HTTP, with a thread of its own. Bounded: at most kMostConnections at a
// time, of which none holds more than one request and one message; a reader that is too slow misses items of the
// journal instead of having them kept for it.
class WebServer {
public:
    static constexpr std::size_t kMostConnections = 100;
    static constexpr std::size_t kLongestPrint = 16U << 20U;  // bytes of a request that prints
    static constexpr std::size_t kLongestRequest = 64U << 10U;

    // Throws std::system_error when the address cannot be listened on. port 0 picks one.
    WebServer(const std::string& host, uint16_t port);
    ~WebServer();
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    // Where it is found, with the token when one is needed: "http://127.0.0.1:8080/".
    const std::string& Address() const;
    // Answers from now on.
    void Start(std::vector<Station> stations);
    // Answers no more: returns when nothing of the stations is in use any longer.
    void Stop();
    // Something happened at a printer. From any thread, before Start and after Stop too.
    void Wake();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace marbex::virtual_printer
