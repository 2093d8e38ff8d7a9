#include "platform/posix/usb_node.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <termios.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <utility>

#include "platform/posix/poll_wait.h"

namespace marbex::platform {

namespace {

bool IsGoneError(int error)
{
    return error == ENODEV || error == EIO || error == ENXIO || error == ESHUTDOWN || error == EPIPE ||
           error == ECONNRESET;
}

UsbTransfer NotReady(PollResult waited, std::size_t count, uint32_t& error)
{
    error = static_cast<uint32_t>(waited == PollResult::kTimedOut ? ETIMEDOUT : errno);
    return {waited == PollResult::kTimedOut ? UsbStatus::kTimedOut : UsbStatus::kWaitFailed, count};
}

UniqueFd ConnectSocket(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return UniqueFd();
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    UniqueFd descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    // As little as possible between us and the printer: what it has not taken is lost with the link.
    const int sendBuffer = 16 * 1024;
    if (descriptor) setsockopt(descriptor.Get(), SOL_SOCKET, SO_SNDBUF, &sendBuffer, sizeof sendBuffer);
    // A full queue of callers answers at once (EAGAIN) on a socket that does not block.
    if (!descriptor || connect(descriptor.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return UniqueFd();
    return descriptor;
}

// Nodes that are open, by path.
struct OpenNodes {
    Lock lock;
    std::map<std::string, std::weak_ptr<UsbNode>> nodes MARBEX_GUARDED_BY(lock);
};

OpenNodes& Nodes()
{
    static OpenNodes& nodes = *new OpenNodes;  // outlives every pipe, whatever the order at the end of the process
    return nodes;
}

}  // namespace

UsbNode::UsbNode(std::string path, Kind kind, UniqueFd descriptor)
    : path_(std::move(path)), kind_(kind), descriptor_(std::make_shared<UniqueFd>(std::move(descriptor)))
{
}

UniqueFd UsbNode::OpenFile(const std::string& path, Kind& kind)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return UniqueFd();
    if (S_ISSOCK(status.st_mode)) {
        kind = Kind::kSocket;
        return ConnectSocket(path);
    }
    if (!S_ISCHR(status.st_mode)) {
        errno = ENODEV;
        return UniqueFd();
    }
    UniqueFd descriptor(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor) return descriptor;
    termios terminal{};
    kind = tcgetattr(descriptor.Get(), &terminal) == 0 ? Kind::kTerminal : Kind::kPrinterDevice;
    if (kind == Kind::kTerminal) {
        cfmakeraw(&terminal);
        tcsetattr(descriptor.Get(), TCSANOW, &terminal);
    }
    return descriptor;
}

std::shared_ptr<UsbNode> UsbNode::Open(const std::string& path, uint32_t& error)
{
    OpenNodes& open = Nodes();
    const LockHold hold(open.lock);
    std::weak_ptr<UsbNode>& known = open.nodes[path];
    if (auto node = known.lock(); node != nullptr && !node->gone_) return node;
    Kind kind = Kind::kPrinterDevice;
    UniqueFd descriptor = OpenFile(path, kind);
    if (!descriptor) {
        error = static_cast<uint32_t>(errno);
        open.nodes.erase(path);
        return nullptr;
    }
    std::shared_ptr<UsbNode> node(new UsbNode(path, kind, std::move(descriptor)));
    known = node;
    return node;
}

bool UsbNode::IsUsable(const std::string& path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    if (S_ISSOCK(status.st_mode)) return true;
    uint32_t ignored = 0;
    return Open(path, ignored) != nullptr;
}

UsbTransfer UsbNode::Failed(int code, uint32_t& error)
{
    error = static_cast<uint32_t>(code);
    if (!IsGoneError(code)) return {UsbStatus::kNoResult, 0};
    gone_ = true;
    return {UsbStatus::kGone, 0};
}

std::shared_ptr<UniqueFd> UsbNode::Descriptor()
{
    const LockHold hold(lock_);
    return descriptor_;
}

UsbTransfer UsbNode::Write(std::span<const std::byte> bytes, TransferLimit limit, uint32_t& error)
{
    const UsbTransfer written = WriteWithin(bytes, limit, error);
    writePending_ = written.status == UsbStatus::kTimedOut;
    return written;
}

UsbTransfer UsbNode::WriteWithin(std::span<const std::byte> bytes, TransferLimit& limit, uint32_t& error)
{
    const auto descriptor = Descriptor();
    if (!*descriptor) return Failed(ENODEV, error);
    std::size_t count = 0;
    while (count < bytes.size()) {
        const auto rest = bytes.subspan(count);
        const ssize_t put = kind_ == Kind::kSocket ? send(descriptor->Get(), rest.data(), rest.size(), MSG_NOSIGNAL)
                                                   : write(descriptor->Get(), rest.data(), rest.size());
        if (put > 0) {
            count += static_cast<std::size_t>(put);
            limit.Progress();
            continue;
        }
        if (put < 0 && errno == EINTR) continue;
        if (put < 0 && errno != EAGAIN) return Failed(errno, error);
        if (limit.IsOver()) return NotReady(PollResult::kTimedOut, count, error);
        const PollResult waited = PollUntil(descriptor->Get(), POLLOUT, limit);
        if (waited != PollResult::kReady) return NotReady(waited, count, error);
    }
    if (kind_ != Kind::kPrinterDevice) return {UsbStatus::kDone, count};
    // The printer device takes the bytes before the printer does, and is ready for more once the printer has them.
    const PollResult waited = PollUntil(descriptor->Get(), POLLOUT, limit);
    if (waited != PollResult::kReady) return NotReady(waited, count, error);
    return HasHungUp(descriptor->Get()) ? Failed(ENODEV, error) : UsbTransfer{UsbStatus::kDone, count};
}

UsbTransfer UsbNode::Read(std::span<std::byte> buffer, const TransferLimit& limit, uint32_t& error)
{
    const auto descriptor = Descriptor();
    if (!*descriptor) return Failed(ENODEV, error);
    for (;;) {
        const PollResult waited = PollUntil(descriptor->Get(), POLLIN, limit);
        if (waited != PollResult::kReady) return NotReady(waited, 0, error);
        const ssize_t got = read(descriptor->Get(), buffer.data(), buffer.size());
        // On a socket no bytes are its end; on the printer device they are an answer without content.
        if (got == 0 && kind_ != Kind::kPrinterDevice) return Failed(EPIPE, error);
        if (got >= 0) return {UsbStatus::kDone, static_cast<std::size_t>(got)};
        if (errno != EAGAIN && errno != EINTR) return Failed(errno, error);
        if (limit.IsOver()) return NotReady(PollResult::kTimedOut, 0, error);
    }
}

bool UsbNode::CancelWrite(uint32_t& error)
{
    if (!writePending_.exchange(false)) return true;
    if (kind_ == Kind::kSocket) return true;  // what is in the socket has left us
    auto descriptor = Descriptor();
    if (!*descriptor) return true;
    if (kind_ == Kind::kTerminal) {
        if (tcflush(descriptor->Get(), TCOFLUSH) == 0) return true;
        error = static_cast<uint32_t>(errno);
        return false;
    }
    if (PollUntil(descriptor->Get(), POLLOUT, TransferLimit(0, kNeverStopped)) == PollResult::kReady) return true;
    descriptor.reset();
    // The printer device ends a transfer only when it is closed. One that cannot be opened again counts as gone.
    const LockHold hold(lock_);
    Kind kind = kind_;
    descriptor_ = std::make_shared<UniqueFd>();
    descriptor_ = std::make_shared<UniqueFd>(OpenFile(path_, kind));
    if (*descriptor_) return true;
    error = static_cast<uint32_t>(errno);
    return false;
}

}  // namespace marbex::platform
