#include <boost/asio/steady_timer.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <optional>
#include <utility>

#include "virtual_printer/web/page_files.h"
#include "virtual_printer/web/sessions.h"
#include "virtual_printer/web/web_server.h"

namespace marbex::virtual_printer {
namespace {

constexpr std::chrono::seconds kPatience{30};        // with a peer that says or takes nothing
constexpr std::chrono::milliseconds kLookAgain{50};  // at what is awaited, also when nobody says that it happened
constexpr std::size_t kLongestHeader = 16384;

// Nothing but this program's own files, and never inside the frame of another page.
constexpr const char* kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

std::string Text(beast::string_view view)
{
    return {view.data(), view.size()};
}

std::optional<Request> ToRequest(const http::request<http::string_body>& message)
{
    auto request = ParseTarget(Text(message.method_string()), Text(message.target()));
    if (request) {
        request->host = Text(message[http::field::host]);
        request->origin = Text(message[http::field::origin]);
        request->fetchSite = Text(message["Sec-Fetch-Site"]);
        request->fetchMode = Text(message["Sec-Fetch-Mode"]);
        request->authorization = Text(message[http::field::authorization]);
        request->cookie = Text(message[http::field::cookie]);
    }
    return request;
}

// The page is one file whatever is looked at: the rest of its address is for its own use.
Response PageResponse(const Request& request, const Guard& guard)
{
    if (request.method != "GET" && request.method != "HEAD") {
        return Problem(405, "GET expected");
    }
    const bool isPage = request.path.empty() || request.path[0] == "printers";
    const auto file = FindPageFile(isPage ? "index.html" : request.path.size() == 1 ? request.path[0] : "");
    if (!file) {
        return Problem(404, "there is nothing of this name");
    }
    Response response{200, std::string(file->type), std::string(file->content), {}};
    const std::string cookie = guard.Cookie(request);
    if (!cookie.empty()) {
        response.headers.emplace_back("Set-Cookie", cookie);
    }
    return response;
}

class HttpSession final : public std::enable_shared_from_this<HttpSession>, public Listener {
public:
    HttpSession(Tcp::socket socket, std::shared_ptr<Hub> hub)
        : stream_(std::move(socket)), timer_(stream_.get_executor()), hub_(std::move(hub))
    {
        ++hub_->connections;
    }
    ~HttpSession() override
    {
        hub_->listeners.erase(this);
        --hub_->connections;
    }
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    void ReadHeader()
    {
        parser_.emplace();
        parser_->header_limit(static_cast<std::uint32_t>(kLongestHeader));
        parser_->body_limit(WebServer::kLongestPrint);
        stream_.expires_after(kPatience);
        http::async_read_header(stream_, buffer_, *parser_,
                                [self = shared_from_this()](Error error, std::size_t) { self->HeaderRead(error); });
    }

    void SomethingHappened() override { Look(false); }

private:
    void HeaderRead(Error error)
    {
        if (error) {
            return Close();
        }
        auto request = ToRequest(parser_->get());
        if (!request) {
            return Reply(Problem(400, "damaged address"), false);
        }
        // Who may not ask is not listened to any further.
        if (const auto refusal = hub_->guard.Refusal(*request)) {
            return Reply(*refusal, false);
        }
        request_ = std::move(*request);
        const bool prints = request_.path.size() == 4 && request_.path[3] == "print";
        const std::size_t limit = prints ? WebServer::kLongestPrint : WebServer::kLongestRequest;
        if (const auto length = parser_->content_length(); length && *length > limit) {
            return Reply(Problem(413, "longer than " + std::to_string(limit) + " bytes"), false);
        }
        parser_->body_limit(limit);
        stream_.expires_after(kPatience);
        if (beast::iequals(parser_->get()[http::field::expect], "100-continue")) {
            return SendContinue();
        }
        ReadBody();
    }

    void SendContinue()
    {
        auto response = std::make_shared<http::response<http::empty_body>>(http::status::continue_, 11);
        http::async_write(stream_, *response, [self = shared_from_this(), response](Error error, std::size_t) {
            error ? self->Close() : self->ReadBody();
        });
    }

    void ReadBody()
    {
        http::async_read(stream_, buffer_, *parser_,
                         [self = shared_from_this()](Error error, std::size_t) { self->RequestRead(error); });
    }

    void RequestRead(Error error)
    {
        if (error == http::error::body_limit) {
            return Reply(Problem(413, "too long"), false);
        }
        if (error) {
            return Close();
        }
        stream_.expires_never();
        http::request<http::string_body> message = parser_->release();
        keepAlive_ = message.keep_alive();
        const bool live = request_.path == std::vector<std::string>{"api", "live"};
        if (live && beast::websocket::is_upgrade(message)) {
            return ServeLive(std::move(stream_), std::move(message), request_, hub_);
        }
        request_.body = std::move(message.body());
        if (request_.path.empty() || request_.path[0] != "api") {
            return Reply(PageResponse(request_, hub_->guard), true);
        }
        Answer answer = hub_->api.Handle(request_);
        if (auto* response = std::get_if<Response>(&answer)) {
            return Reply(*response, true);
        }
        if (auto* events = std::get_if<EventStream>(&answer)) {
            return ServeEvents(std::move(stream_), *events, hub_);
        }
        awaited_ = std::move(std::get<Awaited>(answer));
        hub_->listeners.insert(this);
        Look(false);
    }

    void Look(bool timeIsUp)
    {
        if (!awaited_) {
            return;
        }
        if (auto response = awaited_->look(timeIsUp)) {
            awaited_.reset();
            timer_.cancel();
            hub_->listeners.erase(this);
            return Reply(*response, true);
        }
        timer_.expires_at(std::min(awaited_->deadline, std::chrono::steady_clock::now() + kLookAgain));
        timer_.async_wait([hold = shared_from_this()](Error error) {
            if (!error) {
                hold->Look(hold->awaited_ && std::chrono::steady_clock::now() >= hold->awaited_->deadline);
            }
        });
    }

    void Reply(const Response& answer, bool goOn)
    {
        auto& response = response_.emplace(static_cast<http::status>(answer.status), 11);
        response.set(http::field::content_type, answer.type);
        response.set(http::field::cache_control, "no-cache");
        response.set("Content-Security-Policy", kPolicy);
        response.set("X-Content-Type-Options", "nosniff");
        response.set("Referrer-Policy", "no-referrer");
        response.set("Cross-Origin-Resource-Policy", "same-origin");
        for (const auto& [name, value] : answer.headers) {
            response.set(name, value);
        }
        response.body() = answer.body;
        response.keep_alive(goOn && keepAlive_);
        response.prepare_payload();
        stream_.expires_after(kPatience);
        http::async_write(stream_, response, [self = shared_from_this()](Error error, std::size_t) {
            error || !self->response_->keep_alive() ? self->Close() : self->ReadHeader();
        });
    }

    void Close()
    {
        Error ignored;
        stream_.socket().shutdown(Tcp::socket::shutdown_send, ignored);
    }

    beast::tcp_stream stream_;
    asio::steady_timer timer_;
    std::shared_ptr<Hub> hub_;
    beast::flat_buffer buffer_{kLongestHeader * 4};
    std::optional<http::request_parser<http::string_body>> parser_;
    std::optional<http::response<http::string_body>> response_;
    Request request_;
    bool keepAlive_ = false;
    std::optional<Awaited> awaited_;
};

}  // namespace

void ServeHttp(Tcp::socket socket, std::shared_ptr<Hub> hub)
{
    std::make_shared<HttpSession>(std::move(socket), std::move(hub))->ReadHeader();
}

}  // namespace marbex::virtual_printer
