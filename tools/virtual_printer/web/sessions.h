#pragma once

// The connections of the web server. All run on its one thread.

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <functional>
#include <list>
#include <memory>
#include <set>

#include "virtual_printer/web/api.h"
#include "virtual_printer/web/guard.h"

namespace marbex::virtual_printer {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using Tcp = asio::ip::tcp;
using Error = beast::error_code;

// One that wants to hear when something happened.
class Listener {
public:
    virtual ~Listener() = default;
    virtual void SomethingHappened() = 0;
};

// What the connections share.
struct Hub {
    Api api;
    Guard guard;
    std::set<Listener*> listeners;
    std::size_t connections = 0;
};

// Answers requests one after the other, as HTTP/1.1 wants it.
void ServeHttp(Tcp::socket socket, std::shared_ptr<Hub> hub);

// Goes on with a connection whose request asked for a WebSocket: tells all printers, then what happens at them.
void ServeLive(beast::tcp_stream stream, http::request<http::string_body> request, const Request& asked,
               std::shared_ptr<Hub> hub);

// Goes on with one that asked for the events of a printer.
void ServeEvents(beast::tcp_stream stream, const EventStream& wanted, std::shared_ptr<Hub> hub);

}  // namespace marbex::virtual_printer
