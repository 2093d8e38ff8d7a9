// The control interface, as programs use it over HTTP, and who may not.

#include <algorithm>
#include <chrono>
#include <thread>

#include "bytes.h"
#include "program.h"
#include "virtual_printer/web/guard.h"

namespace marbex::virtual_printer {
namespace {

struct Reply {
    int status = 0;
    std::string header;
    std::string body;
};

// One request on a connection of its own.
class Http {
public:
    explicit Http(int port) : port_(port) {}

    Reply Ask(const std::string& method, const std::string& path, const std::string& body = "",
              const std::string& headers = "") const
    {
        const std::string host =
            headers.find("Host:") == std::string::npos ? "Host: localhost:" + std::to_string(port_) + "\r\n" : "";
        const int fd = Connect(port_);
        Send(fd, method + " " + path + " HTTP/1.1\r\nConnection: close\r\n" + host + headers +
                     "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
        std::string all;
        std::array<char, 4096> buffer{};
        for (ssize_t count = 0; (count = ::read(fd, buffer.data(), buffer.size())) > 0;) {
            all.append(buffer.data(), static_cast<std::size_t>(count));
        }
        ::close(fd);
        const std::size_t end = std::min(all.find("\r\n\r\n"), all.size());
        return {all.size() > 12 ? std::stoi(all.substr(9, 3)) : 0, all.substr(0, end),
                all.substr(std::min(end + 4, all.size()))};
    }
    Json Get(const std::string& path) const { return Json::parse(Ask("GET", path).body); }
    Json Post(const std::string& path, const std::string& body) const
    {
        return Json::parse(Ask("POST", path, body).body);
    }

private:
    int port_;
};

int PortOf(const std::string& address)
{
    return std::stoi(address.substr(address.find(':', 7) + 1));
}

TEST(Web, PrintsChangesAndShowsOverHttp)
{
    Program program({"--model", "VELA PC", "--tcp", "127.0.0.1:0", "--model", "BRISA", "--name", "Kitchen", "--tcp",
                     "127.0.0.1:0", "--web", "0"});
    const Json first = program.Next();
    EXPECT_EQ(first["printer"], 1);
    EXPECT_EQ(program.Next()["printer"], 2);
    const Http http(PortOf(first["page"]));
    EXPECT_EQ(http.Get("/api/printers")["printers"][1]["name"], "Kitchen");

    const std::string bytes(Z("\x1B!\x08TOTAL 1,20\n\x1Bp0\x19\x19\x10\x04\x14\x1Bi"));
    const Json printed = http.Post("/api/printers/1/print", bytes);
    EXPECT_EQ(printed["taken"], bytes.size());
    EXPECT_EQ(printed["answer"], "10 0F 00 00 00 00");
    EXPECT_EQ(http.Get("/api/printers/1")["drawer"], "open");
    EXPECT_EQ(http.Post("/api/printers/1/condition", R"({"drawer":"closed","cover":"open","paper":"low"})")["paper"],
              "low");
    EXPECT_EQ(http.Get("/api/printers/1")["drawer"], "closed");
    EXPECT_EQ(http.Ask("POST", "/api/printers/1/condition", R"({"paper":"none"})").status, 400);
    EXPECT_EQ(http.Ask("POST", "/api/printers/1/command", "quit").status, 400);
    program.Say("2 cover open");
    for (const char* command : {"drawer close", "cover open", "paper low", "paper none"}) {
        EXPECT_EQ(program.NextNamed("command")["command"], command);
    }
    EXPECT_EQ(program.NextNamed("command")["printer"], 2);

    EXPECT_EQ(http.Ask("GET", "/api/printers/1/receipts/1.txt").body, "TOTAL 1,20\n");
    EXPECT_EQ(http.Ask("GET", "/api/printers/1/receipts/last.bin").body, Z("\x1B!\x08TOTAL 1,20\n\x1Bp0\x19\x19\x1Bi"));
    EXPECT_EQ(http.Get("/api/printers/1/receipts/1.json")["lines"][0]["text"], "TOTAL 1,20");
    EXPECT_EQ(http.Ask("GET", "/api/printers/1/receipts/1.png").body.substr(1, 3), "PNG");
    const Reply dots = http.Ask("GET", "/api/printers/1/receipts/1.dots?from=8&rows=2");
    EXPECT_EQ(dots.body.size(), 160U);
    EXPECT_NE(std::count(dots.body.begin(), dots.body.end(), '\0'), 160);
    for (const char* missing : {"/api/printers/3", "/api/printers/1/receipts/7.png", "/api/printers/1/receipts/1.gif",
                                "/api/printers/x", "/api", "/secret.txt", "/..%2f..%2fetc/passwd"}) {
        EXPECT_EQ(http.Ask("GET", missing).status, 404) << missing;
    }
    EXPECT_EQ(http.Ask("DELETE", "/api/printers/1").status, 405);
    EXPECT_EQ(http.Ask("GET", "/%zz").status, 400);
    EXPECT_EQ(http.Ask("POST", "/api/printers/1/condition", std::string(70000, ' ')).status, 413);
}

TEST(Web, WaitsForWhatATestExpects)
{
    Program program({"--tcp", "127.0.0.1:0", "--web", "0"});
    const Json first = program.Next();
    const Http http(PortOf(first["page"]));
    // What comes while it waits, and what came before when it is told from where.
    Json found;
    std::thread waits(
        [&] { found = http.Post("/api/printers/1/expect", R"({"event":"cut","kind":"full","from":1})"); });
    const int till = Connect(first["port"]);
    Send(till, "one\ntwo\n\x1Bi");
    waits.join();
    EXPECT_EQ(found["found"]["piece"], 1);
    EXPECT_EQ(http.Post("/api/printers/1/expect", R"({"text":"tw","from":1})")["found"]["text"], "two");
    const Reply none = http.Ask("POST", "/api/printers/1/expect", R"({"text":"three","within_ms":50})");
    EXPECT_EQ(none.status, 417);
    EXPECT_EQ(Json::parse(none.body)["last_lines"], (Json{"one", "two"}));
    EXPECT_EQ(http.Ask("POST", "/api/printers/1/expect", "[1").status, 400);
    // A printer that is stopped does not take more than it has room for.
    http.Post("/api/printers/1/condition", R"({"cover":"open"})");
    std::thread closes([&] {
        while (http.Get("/api/printers/1")["waiting_bytes"] < 4096) {
        }
        http.Post("/api/printers/1/condition", R"({"cover":"close"})");
    });
    std::string settings = "\n";
    for (int i = 0; i < 5000; ++i) {
        settings +=
            Z("\x1B"
              "a\0");
    }
    EXPECT_EQ(http.Post("/api/printers/1/print", settings)["taken"], settings.size());
    closes.join();
    ::close(till);
}

TEST(Web, TellsEventsAsTheyHappen)
{
    Program program({"--tcp", "127.0.0.1:0", "--web", "0"});
    const Json first = program.Next();
    const int port = PortOf(first["page"]);
    const int fd = Connect(port);
    Send(fd, "GET /api/printers/1/events?from=1 HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) + "\r\n\r\n");
    Http(port).Post("/api/printers/1/print", "hello\n");
    std::string text;
    std::array<char, 4096> buffer{};
    while (text.find("\"hello\"") == std::string::npos) {
        const ssize_t count = ::read(fd, buffer.data(), buffer.size());
        ASSERT_GT(count, 0) << text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    EXPECT_NE(text.find("Content-Type: text/event-stream"), std::string::npos);
    EXPECT_NE(text.find("id: 3\ndata: {\"event\":\"text\""), std::string::npos) << text;
    ::close(fd);
}

// A page from elsewhere in the developer's browser, or a name made to lead here, switches and sees nothing.
TEST(Web, AnswersNobodyFromElsewhere)
{
    const Guard guard("127.0.0.1", 8080);
    struct Case {
        int status;  // 0: may ask
        std::string_view host;
        std::string_view origin = {};
        std::string_view site = {};
        std::string_view mode = {};
        std::string_view method = "POST";
    };
    for (const Case& c : std::initializer_list<Case>{
             {0, "127.0.0.1:8080"},
             {0, "LocalHost:8080", "http://LocalHost:8080", "same-origin", "cors"},
             {0, "[::1]:8080"},
             {0, "localhost:8080", "", "cross-site", "navigate", "GET"},
             {403, "localhost:8080", "", "cross-site", "navigate", "POST"},
             {403, "localhost:8080", "", "cross-site", "no-cors", "GET"},
             {403, "localhost:8080", "", "same-site", "cors", "GET"},
             {403, "localhost:8080", "http://localhost:3000"},
             {403, "localhost:8080", "https://localhost:8080"},
             {403, "localhost:8080", "null"},
             {403, "evil.example:8080", "http://evil.example:8080"},
             {403, "127.0.0.1"},
             {403, ""},
         }) {
        Request request = *ParseTarget(c.method, "/api/printers/1/condition");
        request.host = c.host;
        request.origin = c.origin;
        request.fetchSite = c.site;
        request.fetchMode = c.mode;
        const auto refusal = guard.Refusal(request);
        EXPECT_EQ(refusal ? refusal->status : 0, c.status) << c.host << " " << c.origin << " " << c.site << c.mode;
    }
    Program program({"--tcp", "127.0.0.1:0", "--web", "0"});
    const Http http(PortOf(program.Next()["page"]));
    EXPECT_EQ(
        http.Ask("POST", "/api/printers/1/condition", R"({"cover":"open"})", "Origin: http://evil.example\r\n").status,
        403);
    EXPECT_EQ(http.Ask("GET", "/", "", "Host: evil.example\r\n").status, 403);
    EXPECT_EQ(http.Ask("GET", "/api/live", "",
                       "Origin: http://evil.example\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
                       "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n")
                  .status,
              403);
    EXPECT_EQ(http.Get("/api/printers/1")["cover"], "closed");
}

TEST(Web, WantsATokenFromOtherMachines)
{
    Program program({"--tcp", "127.0.0.1:0", "--web", "0.0.0.0:0"});
    const std::string page = program.Next()["page"];
    const std::string token = page.substr(page.find('=') + 1);
    ASSERT_EQ(token.size(), 32U) << page;
    const Http http(PortOf(page));
    EXPECT_EQ(http.Ask("GET", "/").status, 401);
    EXPECT_EQ(http.Ask("GET", "/api/printers?token=" + std::string(32, '0')).status, 401);
    EXPECT_EQ(http.Ask("GET", "/api/printers", "", "Authorization: Bearer " + token + "\r\n").status, 200);
    const Reply first = http.Ask("GET", "/?token=" + token, "", "Host: desk.example:1\r\n");
    EXPECT_EQ(first.status, 200);
    const std::size_t at = first.header.find("Set-Cookie: ");
    ASSERT_NE(at, std::string::npos);
    const std::string cookie = first.header.substr(at + 12, first.header.find(';', at) - at - 12);
    EXPECT_EQ(http.Ask("GET", "/api/printers", "", "Cookie: a=b; " + cookie + "\r\n").status, 200);
    EXPECT_NE(first.header.find("HttpOnly; SameSite=Strict"), std::string::npos);
}

// Who only connects, or says half a request, keeps nobody else out for ever and costs little.
TEST(Web, BoundsItsConnections)
{
    Program program({"--tcp", "127.0.0.1:0", "--web", "0"});
    const int port = PortOf(program.Next()["page"]);
    std::vector<int> idle;
    for (int i = 0; i < 120; ++i) {
        idle.push_back(Connect(port));
    }
    // They are taken in order: when the last one has been closed, it is known of all.
    const auto closed = [](int fd, int waitMs) {
        pollfd one{fd, POLLIN, 0};
        char byte = 0;
        return ::poll(&one, 1, waitMs) > 0 && ::read(fd, &byte, 1) <= 0;
    };
    ASSERT_TRUE(closed(idle.back(), 10000));
    EXPECT_EQ(std::count_if(idle.begin(), idle.end() - 1, [&](int fd) { return closed(fd, 0); }), 19);
    for (const int fd : idle) {
        ::close(fd);
    }
    int status = 0;
    for (int i = 0; i < 1000 && status != 200; ++i) {
        status = Http(port).Ask("GET", "/api/printers").status;
    }
    EXPECT_EQ(status, 200);
}

}  // namespace
}  // namespace marbex::virtual_printer
