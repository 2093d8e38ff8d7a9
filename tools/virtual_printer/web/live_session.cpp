#include <boost/asio/steady_timer.hpp>
#include <boost/beast/websocket.hpp>
#include <optional>
#include <utility>

#include "virtual_printer/web/sessions.h"

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::ordered_json;
namespace websocket = beast::websocket;

constexpr uint64_t kItemsToBeginWith = 1000;     // of the journal, for one who has seen none
constexpr std::chrono::milliseconds kPause{30};  // between messages: many small things are told together
constexpr std::chrono::seconds kSignOfLife{15};  // on a stream of events where nothing happens
constexpr std::size_t kLongestMessage = 4096;    // from a page, which has nothing to say here

// What one reader has seen of one printer.
struct Cursor {
    uint64_t next = 1;
    std::string state;
};

// A WebSocket that tells a page everything about all printers. It waits with the next message until the last one has
// been taken, and keeps nothing for a page that is slow.
class LiveSession final : public std::enable_shared_from_this<LiveSession>, public Listener {
public:
    LiveSession(beast::tcp_stream stream, std::shared_ptr<Hub> hub)
        : socket_(std::move(stream)), timer_(socket_.get_executor()), hub_(std::move(hub))
    {
        ++hub_->connections;
        for (const Station& station : hub_->api.Stations()) {
            const uint64_t next = station.recorder.NextItem();
            cursors_.push_back({next > kItemsToBeginWith ? next - kItemsToBeginWith : 1, {}});
        }
    }
    ~LiveSession() override
    {
        hub_->listeners.erase(this);
        --hub_->connections;
    }
    LiveSession(const LiveSession&) = delete;
    LiveSession& operator=(const LiveSession&) = delete;

    void Begin(http::request<http::string_body> request)
    {
        socket_.read_message_max(kLongestMessage);
        websocket::permessage_deflate compression;
        compression.server_enable = true;
        compression.memLevel = 4;
        socket_.set_option(compression);
        socket_.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
        auto kept = std::make_shared<http::request<http::string_body>>(std::move(request));
        socket_.async_accept(*kept, [self = shared_from_this(), kept](Error error) {
            if (!error) {
                self->hub_->listeners.insert(self.get());
                self->Listen();
                self->Tell();
            }
        });
    }

    void SomethingHappened() override
    {
        news_ = true;
        if (!busy_) {
            Tell();
        }
    }

private:
    // A page says nothing, but its pings and its farewell are heard by reading.
    void Listen()
    {
        socket_.async_read(heard_, [self = shared_from_this()](Error error, std::size_t) {
            if (error) {
                self->hub_->listeners.erase(self.get());
                self->gone_ = true;
                self->timer_.cancel();
                return;
            }
            self->heard_.clear();
            self->Listen();
        });
    }

    void Tell()
    {
        news_ = false;
        message_ = NextMessage();
        if (message_.empty() || gone_) {
            return;
        }
        busy_ = true;
        socket_.text(true);
        socket_.async_write(asio::buffer(message_), [self = shared_from_this()](Error error, std::size_t) {
            if (error) {
                self->hub_->listeners.erase(self.get());
                return;
            }
            self->Rest();
        });
    }

    void Rest()
    {
        timer_.expires_after(kPause);
        timer_.async_wait([self = shared_from_this()](Error error) {
            self->busy_ = false;
            if (!error && (self->news_ || self->more_)) {
                self->Tell();
            }
        });
    }

    // {"printers": [{"printer": 1, "missed": 0, "items": [...], "state": {...}}, ...]}; nothing when there are no news.
    std::string NextMessage()
    {
        more_ = false;
        std::string parts;
        for (std::size_t i = 0; i < cursors_.size(); ++i) {
            const std::string part = News(hub_->api.Stations()[i], cursors_[i]);
            parts += parts.empty() || part.empty() ? part : "," + part;
        }
        return parts.empty() ? "" : "{\"printers\":[" + parts + "]}";
    }

    std::string News(const Station& station, Cursor& cursor)
    {
        Json state = StateOf(station);
        const std::vector<Journal::Item> items = station.recorder.Items(cursor.next);
        std::string list;
        uint64_t missed = 0;
        for (const Journal::Item& item : items) {
            if (list.empty()) {
                missed = item.number - cursor.next;
            }
            // Each item gets its number, as its first value.
            list +=
                (list.empty() ? "" : ",") + ("{\"number\":" + std::to_string(item.number) + ",") + item.json.substr(1);
        }
        if (!items.empty()) {
            cursor.next = items.back().number + 1;
        }
        more_ = more_ || cursor.next < station.recorder.NextItem();
        std::string text = state.dump(-1, ' ', false, Json::error_handler_t::replace);
        if (items.empty() && text == cursor.state) {
            return {};
        }
        std::string news = "{\"printer\":" + std::to_string(station.number) + ",\"missed\":" + std::to_string(missed) +
                           ",\"items\":[" + list + "]";
        if (text != cursor.state) {
            news += ",\"state\":" + text;
            cursor.state = std::move(text);
        }
        return news + "}";
    }

    websocket::stream<beast::tcp_stream> socket_;
    asio::steady_timer timer_;
    std::shared_ptr<Hub> hub_;
    beast::flat_buffer heard_;
    std::vector<Cursor> cursors_;
    std::string message_;
    bool busy_ = false;
    bool news_ = false;
    bool more_ = false;
    bool gone_ = false;
};

// Server-sent events of one printer.
class EventSession final : public std::enable_shared_from_this<EventSession>, public Listener {
public:
    EventSession(beast::tcp_stream stream, const EventStream& wanted, std::shared_ptr<Hub> hub)
        : stream_(std::move(stream)), timer_(stream_.get_executor()), hub_(std::move(hub)), wanted_(wanted)
    {
        ++hub_->connections;
    }
    ~EventSession() override
    {
        hub_->listeners.erase(this);
        --hub_->connections;
    }
    EventSession(const EventSession&) = delete;
    EventSession& operator=(const EventSession&) = delete;

    void Begin()
    {
        hub_->listeners.insert(this);
        Listen();
        Write(
            "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nCache-Control: no-cache\r\n"
            "X-Content-Type-Options: nosniff\r\nConnection: close\r\n\r\n: begun\n\n");
    }

    void SomethingHappened() override
    {
        if (!writing_) {
            Tell();
        }
    }

private:
    void Listen()
    {
        stream_.async_read_some(asio::buffer(&heard_, 1), [self = shared_from_this()](Error error, std::size_t) {
            error ? self->End() : self->Listen();
        });
    }

    void End()
    {
        hub_->listeners.erase(this);
        timer_.cancel();
        stream_.close();
    }

    void Tell()
    {
        std::string text;
        const Recorder& recorder = hub_->api.Stations()[wanted_.printer].recorder;
        for (const Journal::Item& item : recorder.Items(wanted_.from)) {
            wanted_.from = item.number + 1;
            if (item.kind == Journal::Kind::kHappening || wanted_.commands) {
                text += "id: " + std::to_string(item.number) + "\ndata: " + item.json + "\n\n";
            }
        }
        if (!text.empty()) {
            return Write(std::move(text));
        }
        timer_.expires_after(kSignOfLife);
        timer_.async_wait([self = shared_from_this()](Error error) {
            if (!error && !self->writing_) {
                self->Write(":\n\n");
            }
        });
    }

    void Write(std::string text)
    {
        writing_ = true;
        text_ = std::move(text);
        stream_.expires_after(kSignOfLife);
        asio::async_write(stream_, asio::buffer(text_), [self = shared_from_this()](Error error, std::size_t) {
            self->writing_ = false;
            if (error) {
                return self->End();
            }
            self->stream_.expires_never();
            self->Tell();
        });
    }

    beast::tcp_stream stream_;
    asio::steady_timer timer_;
    std::shared_ptr<Hub> hub_;
    EventStream wanted_;
    std::string text_;
    char heard_ = 0;
    bool writing_ = false;
};

}  // namespace

void ServeLive(beast::tcp_stream stream, http::request<http::string_body> request, const Request& asked,
               std::shared_ptr<Hub> hub)
{
    static_cast<void>(asked);
    std::make_shared<LiveSession>(std::move(stream), std::move(hub))->Begin(std::move(request));
}

void ServeEvents(beast::tcp_stream stream, const EventStream& wanted, std::shared_ptr<Hub> hub)
{
    std::make_shared<EventSession>(std::move(stream), wanted, std::move(hub))->Begin();
}

}  // namespace marbex::virtual_printer
