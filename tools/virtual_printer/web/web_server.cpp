#include "virtual_printer/web/web_server.h"

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "virtual_printer/web/sessions.h"

namespace marbex::virtual_printer {
namespace {

constexpr std::chrono::milliseconds kRest{100};  // after an accept that failed

std::system_error Failed(const Error& error, const std::string& what)
{
    return {std::error_code(error.value(), std::system_category()), what};
}

}  // namespace

class WebServer::Impl {
public:
    Impl(const std::string& host, uint16_t port) : acceptor_(context_), timer_(context_)
    {
        Error error;
        const auto found = Tcp::resolver(context_).resolve(host, std::to_string(port), error);
        if (error || found.empty()) {
            throw Failed(error, "address " + host);
        }
        const Tcp::endpoint endpoint = *found.begin();
        acceptor_.open(endpoint.protocol(), error);
#ifndef _WIN32
        acceptor_.set_option(Tcp::acceptor::reuse_address(true), error);
#endif
        acceptor_.bind(endpoint, error);
        if (!error) {
            acceptor_.listen(asio::socket_base::max_listen_connections, error);
        }
        if (error) {
            throw Failed(error, "page on " + host + ":" + std::to_string(port));
        }
        port_ = acceptor_.local_endpoint().port();
        guard_.emplace(host, port_);
        address_ = "http://" + InBrackets(host) + ":" + std::to_string(port_) + "/" +
                   (guard_->Token().empty() ? "" : "?token=" + guard_->Token());
    }

    ~Impl()
    {
        Stop();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    void Start(std::vector<Station> stations)
    {
        hub_ = std::make_shared<Hub>(Hub{Api(std::move(stations)), *guard_, {}, 0});
        Accept();
        thread_ = std::thread([this] { context_.run(); });
        started_ = true;
    }

    void Stop()
    {
        started_ = false;
        context_.stop();
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    void Wake()
    {
        if (started_ && !waking_.exchange(true)) {
            asio::post(context_, [this] {
                waking_ = false;
                // One that hears it may leave the list, or the world.
                const std::set<Listener*> listeners = hub_->listeners;
                for (Listener* listener : listeners) {
                    if (hub_->listeners.contains(listener)) {
                        listener->SomethingHappened();
                    }
                }
            });
        }
    }

    const std::string& Address() const
    {
        return address_;
    }

private:
    void Accept()
    {
        acceptor_.async_accept([this](Error error, Tcp::socket socket) {
            if (error) {
                timer_.expires_after(kRest);
                timer_.async_wait([this](Error) { Accept(); });
                return;
            }
            // One too many is closed at once: its browser tries again.
            if (hub_->connections < kMostConnections) {
                Error ignored;
                socket.set_option(Tcp::no_delay(true), ignored);
                ServeHttp(std::move(socket), hub_);
            }
            Accept();
        });
    }

    asio::io_context context_{1};
    Tcp::acceptor acceptor_;
    asio::steady_timer timer_;
    uint16_t port_ = 0;
    std::optional<Guard> guard_;
    std::string address_;
    std::shared_ptr<Hub> hub_;
    std::atomic<bool> started_{false};
    std::atomic<bool> waking_{false};
    std::thread thread_;
};

WebServer::WebServer(const std::string& host, uint16_t port) : impl_(std::make_unique<Impl>(host, port)) {}

WebServer::~WebServer() = default;

const std::string& WebServer::Address() const
{
    return impl_->Address();
}

void WebServer::Start(std::vector<Station> stations)
{
    impl_->Start(std::move(stations));
}

void WebServer::Stop()
{
    impl_->Stop();
}

void WebServer::Wake()
{
    impl_->Wake();
}

}  // namespace marbex::virtual_printer
