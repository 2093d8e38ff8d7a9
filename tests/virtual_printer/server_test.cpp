// The printer behind its links: what a till sees of a printer that works, and of one that misbehaves.

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "bytes.h"
#include "virtual_printer/server.h"

namespace marbex::virtual_printer {
namespace {

constexpr int kLimitMs = 10000;

// The till's end of a link.
class Client {
public:
    explicit Client(int fd) : fd_(fd) {}
    ~Client() { Close(); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    static int ConnectTcp(uint16_t port)
    {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
            ::close(fd);
            return -1;
        }
        return fd;
    }
    bool Open() const { return fd_ >= 0; }
    void Close()
    {
        if (fd_ >= 0) {
            ::close(fd_);
            fd_ = -1;
        }
    }
    void Send(std::string_view bytes) const
    {
        ASSERT_EQ(::write(fd_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    // What is sent before the other end takes nothing for a while, at most limit bytes.
    std::size_t SendUntilStuck(std::size_t limit) const
    {
        const int flags = ::fcntl(fd_, F_GETFL);
        ::fcntl(fd_, F_SETFL, flags | O_NONBLOCK);
        const std::string block(4096, 'x');
        std::size_t sent = 0;
        while (sent < limit) {
            pollfd one{fd_, POLLOUT, 0};
            if (::poll(&one, 1, 300) <= 0) {
                break;
            }
            const ssize_t count = ::write(fd_, block.data(), block.size());
            sent += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        ::fcntl(fd_, F_SETFL, flags);
        return sent;
    }
    std::string Receive(std::size_t count) const
    {
        std::string all;
        while (all.size() < count && Readable(kLimitMs)) {
            std::array<char, 64> buffer{};
            const ssize_t got = ::read(fd_, buffer.data(), std::min(buffer.size(), count - all.size()));
            if (got <= 0) {
                break;
            }
            all.append(buffer.data(), static_cast<std::size_t>(got));
        }
        return all;
    }
    bool Readable(int ms) const
    {
        pollfd one{fd_, POLLIN, 0};
        return ::poll(&one, 1, ms) > 0;
    }
    int Fd() const { return fd_; }

private:
    int fd_;
};

auto Printed(std::size_t lines)
{
    return [lines](const VirtualPrinter& printer) { return printer.Lines().size() >= lines; };
}

template <class T>
auto Happened(std::size_t times = 1)
{
    return [times](const VirtualPrinter& printer) { return printer.All<T>().size() >= times; };
}

TEST(Server, PrintsAndAnswersOverTcp)
{
    TcpPrinterServer server("TALIS");
    Client client(Client::ConnectTcp(server.Port()));
    ASSERT_TRUE(client.Open());
    client.Send("\x1DI\x01");
    EXPECT_EQ(client.Receive(1), "\x5F");
    client.Send("hello\n");
    EXPECT_TRUE(server.WaitFor(Printed(1)));
    EXPECT_EQ(server.Lines(), std::vector<std::string>{"hello"});
    client.Close();
    EXPECT_TRUE(server.WaitFor(Happened<Disconnected>()));
    Client next(Client::ConnectTcp(server.Port()));
    next.Send("\x10\x04\x01");
    EXPECT_EQ(next.Receive(1), "\x12");
}

TEST(Server, DropResetsTheConnectionAndAnotherOneWorks)
{
    TcpPrinterServer server("TALIS");
    Client client(Client::ConnectTcp(server.Port()));
    client.Send("half a row \x1B*b9Wabc");
    ASSERT_TRUE(
        server.WaitFor([](const VirtualPrinter& printer) { return printer.UnfinishedLine() == "half a row "; }));
    server.Drop();
    char byte = 0;
    ASSERT_TRUE(client.Readable(kLimitMs));
    EXPECT_EQ(::read(client.Fd(), &byte, 1), -1);
    EXPECT_EQ(errno, ECONNRESET);
    // The unfinished command is not continued by the next connection.
    Client next(Client::ConnectTcp(server.Port()));
    next.Send("next\n");
    EXPECT_TRUE(server.WaitFor(Printed(1)));
    EXPECT_EQ(server.Lines(), std::vector<std::string>{"half a row next"});
    EXPECT_EQ(server.All<Unknown>().size(), 1U);
}

TEST(Server, RefusesConnectionsUntilToldOtherwise)
{
    TcpPrinterServer server("TALIS");
    const uint16_t port = server.Port();
    server.Refuse(true);
    EXPECT_EQ(Client::ConnectTcp(port), -1);
    EXPECT_EQ(errno, ECONNREFUSED);
    server.Refuse(false);
    EXPECT_EQ(server.Port(), port);
    Client client(Client::ConnectTcp(port));
    EXPECT_TRUE(client.Open());
}

TEST(Server, ComesBackByItselfAfterARefusalAndAfterTheLossOfPower)
{
    TcpPrinterServer server("TALIS");
    server.SetCover(true);
    for (const bool power : {false, true}) {
        Client client(Client::ConnectTcp(server.Port()));
        client.Send("\x18waits\n");
        const uint64_t all = power ? 7 + 1 + 7 : 7;
        ASSERT_TRUE(server.WaitFor([all](const VirtualPrinter& printer) { return printer.Received() == all; }));
        // The first byte of the next ones sets it off: the others are lost with the link.
        server.At(all + 1, [&server, power] {
            const std::chrono::milliseconds time(200);
            power ? server.PowerCycle(time) : server.RefuseFor(time);
        });
        client.Send("lost\n");
        EXPECT_TRUE(server.WaitFor([power](const VirtualPrinter& printer) {
            const auto ends = printer.All<Disconnected>();
            return std::count(ends.begin(), ends.end(), Disconnected{4}) == (power ? 2 : 1);
        }));
        EXPECT_EQ(Client::ConnectTcp(server.Port()), -1);
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLimitMs);
        int fd = -1;
        while (fd < 0 && std::chrono::steady_clock::now() < end) {
            fd = Client::ConnectTcp(server.Port());
        }
        const Client again(fd);
        EXPECT_TRUE(again.Open());
    }
    EXPECT_EQ(server.All<PowerOff>().size(), 1U);
    server.SetCover(false);
    EXPECT_TRUE(server.Lines().empty());
    EXPECT_THROW(server.At(1, [] {}), std::out_of_range);
}

TEST(Server, AStoppedPrinterStopsReading)
{
    LinkOptions link;
    link.receiveBuffer = 4096;
    PrinterServer server("TALIS", link);
    server.SetCover(true);
    const int fd = Client::ConnectTcp(server.Port());
    const int small = 4096;
    ::setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &small, sizeof(small));
    Client client(fd);
    constexpr std::size_t kPlenty = 1000000;
    const std::size_t sent = client.SendUntilStuck(kPlenty);
    EXPECT_GE(sent, FindModel("TALIS")->buffer);
    EXPECT_LT(sent, kPlenty / 2);
    server.With([](VirtualPrinter& printer) {
        EXPECT_EQ(printer.State().waitingBytes, FindModel("TALIS")->buffer);
        EXPECT_TRUE(printer.All<TextLine>().empty());
    });
    server.SetCover(false);
    client.Send("\n");
    EXPECT_TRUE(server.WaitFor([sent](const VirtualPrinter& printer) {
        std::size_t printed = 0;
        for (const std::string& line : printer.Lines()) {
            printed += line.size();
        }
        return printed == sent;
    })) << "bytes that waited were lost";
    EXPECT_TRUE(server.All<Overrun>().empty());
}

TEST(Server, AStoppedPrinterTakesTheNextConnectionWhenTheFirstHasGone)
{
    TcpPrinterServer server("TALIS");
    server.SetCover(true);
    Client client(Client::ConnectTcp(server.Port()));
    client.Send(std::string(20000, 'x'));
    ASSERT_TRUE(server.WaitFor([](const VirtualPrinter& printer) { return printer.Room() == 0; }));
    client.Close();
    Client next(Client::ConnectTcp(server.Port()));
    EXPECT_TRUE(server.WaitFor(Happened<Connected>(2)));
    EXPECT_EQ(server.All<Disconnected>().size(), 1U);
}

TEST(Server, KeepsThePaceOfASlowLine)
{
    LinkOptions link;
    link.bytesPerSecond = 1000;
    PrinterServer server("TALIS", link);
    Client client(Client::ConnectTcp(server.Port()));
    const auto start = std::chrono::steady_clock::now();
    client.Send(std::string(299, 'x') + "\n");
    ASSERT_TRUE(server.WaitFor([](const VirtualPrinter& printer) { return printer.Lines().size() == 6; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(250));
    server.Slow(0);
    client.Send(std::string(30000, '\n'));  // half a minute at the former pace
    EXPECT_TRUE(server.WaitFor(Printed(30006)));
}

// The till's end of an adapter: opens the terminal once its link is there.
int OpenWhenThere(const std::string& path)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLimitMs);
    int fd = -1;
    while (fd < 0 && std::chrono::steady_clock::now() < end) {
        fd = ::open(path.c_str(), O_RDWR | O_NOCTTY);
    }
    return fd;
}

TEST(Server, AnAdapterIsUnpluggedAndComesBackUnderItsName)
{
    LinkOptions link;
    link.kind = LinkOptions::Kind::kSerial;
    link.terminalLink = testing::TempDir() + "vprinter-" + std::to_string(::getpid()) + ".tty";
    PrinterServer server("CORVO", link);
    EXPECT_EQ(server.SerialPath(), link.terminalLink);
    Client client(OpenWhenThere(link.terminalLink));
    ASSERT_TRUE(server.WaitFor(Happened<Connected>()));
    server.SetCover(true);
    client.Send("a\n");
    ASSERT_TRUE(server.WaitFor([](const VirtualPrinter& printer) { return printer.Received() == 2; }));
    server.PowerCycle(std::chrono::milliseconds(50));
    EXPECT_NE(::access(link.terminalLink.c_str(), F_OK), 0);
    char byte = 0;
    EXPECT_EQ(::write(client.Fd(), &byte, 1), -1);
    EXPECT_EQ(errno, EIO);
    server.SetCover(false);
    Client next(OpenWhenThere(link.terminalLink));
    next.Send("b\n");
    EXPECT_TRUE(server.WaitFor(Printed(1)));
    EXPECT_EQ(server.Lines(), std::vector<std::string>{"b"});
    server.Say({0x55});
    next.Close();
    EXPECT_TRUE(server.WaitFor(Happened<Disconnected>(2)));
    // What the till before has not read is not there any more.
    Client last(OpenWhenThere(link.terminalLink));
    EXPECT_FALSE(last.Readable(50));
    EXPECT_EQ(server.All<PowerOff>(), (std::vector<PowerOff>{{0, 2, 2}}));
}

TEST(Server, HoldsTheSenderOfASerialLineByXoff)
{
    LinkOptions link;
    link.kind = LinkOptions::Kind::kSerial;
    link.xonXoff = true;
    PrinterServer server("TALIS", link, {.buffer = 100});
    Client client(::open(server.SerialPath().c_str(), O_RDWR | O_NOCTTY));
    server.SetCover(true);
    client.Send(std::string(75, 'x'));
    EXPECT_FALSE(client.Readable(50));
    client.Send("x");
    EXPECT_EQ(client.Receive(1), "\x13");
    server.SetCover(false);
    EXPECT_EQ(client.Receive(1), "\x11");
    server.Say({0x10, 0x0F});
    EXPECT_EQ(client.Receive(2), "\x10\x0F");
}

TEST(Server, ServesTheDisplayOnItsOwnLine)
{
    LinkOptions link;
    link.kind = LinkOptions::Kind::kSerial;
    link.displaySerial = true;
    PrinterServer server("ARGO PC TURBO", link);
    Client display(::open(server.DisplayPath().c_str(), O_RDWR | O_NOCTTY));
    ASSERT_TRUE(display.Open());
    display.Send(
        Z("\x1B\xA0\0\x1F$\x02\x80"
          "B"));
    EXPECT_TRUE(server.WaitFor([](const VirtualPrinter& printer) {
        const auto contents = printer.All<DisplayContent>();
        return !contents.empty() && contents.back().rows == std::vector<std::string>{"  ΑB                "};
    }));
}

TEST(Server, ServesAUsbStandIn)
{
    LinkOptions link;
    link.kind = LinkOptions::Kind::kUsb;
    link.socketPath = testing::TempDir() + "vprinter-" + std::to_string(::getpid()) + ".sock";
    {
        PrinterServer server("PELTO", link);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, link.socketPath.c_str(), sizeof(address.sun_path) - 1);
        Client client(::socket(AF_UNIX, SOCK_STREAM, 0));
        ASSERT_EQ(::connect(client.Fd(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        client.Send("\x1DI\x01");
        EXPECT_EQ(client.Receive(1), "\x8E");
        server.Drop();
        EXPECT_EQ(client.Receive(1), "");
    }
    EXPECT_NE(::access(link.socketPath.c_str(), F_OK), 0);
}

}  // namespace
}  // namespace marbex::virtual_printer
