#include <winsock2.h>
// After winsock2.h.
#include <iphlpapi.h>
#include <windows.h>

#include <filesystem>

#include "marbex_opos/check/system_facts.h"
#include "platform/windows/wide_text.h"

namespace marbex::tools {

namespace {

std::string ProgramName(DWORD process)
{
    std::string name = "process";
    if (const HANDLE handle = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process)) {
        wchar_t path[1024];
        auto length = static_cast<DWORD>(std::size(path));
        if (QueryFullProcessImageNameW(handle, 0, path, &length) != FALSE)
            name = platform::Utf8FromWide(std::filesystem::path({path, length}).filename().native());
        CloseHandle(handle);
    }
    return name + " (" + std::to_string(process) + ")";
}

}  // namespace

std::string SystemWords(uint32_t error)
{
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text,
                                  static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.'))
        --length;
    return length > 0 ? platform::Utf8FromWide({text, length}) : "error " + std::to_string(error);
}

PortFault FaultOf(uint32_t error)
{
    switch (error) {
        case WSAECONNREFUSED:
            return PortFault::kRefused;
        case WSAETIMEDOUT:
        case WSAEHOSTUNREACH:
        case WSAEHOSTDOWN:
            return PortFault::kNoAnswer;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_DEVICE_NOT_CONNECTED:
            return PortFault::kMissing;
        // What a port answers that somebody has open.
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_BUSY:
            return PortFault::kInUse;
        case ERROR_INVALID_FUNCTION:
            return PortFault::kNoTerminal;
        default:
            return PortFault::kOther;
    }
}

Advice WhyDenied(const std::string&)
{
    return {"", "run it as administrator"};
}

// Windows does not tell who has a port open.
std::vector<std::string> UsersOfFile(const std::string&)
{
    return {};
}

std::vector<std::string> UsersOfAddress(uint32_t address, uint16_t port)
{
    DWORD size = 0;
    GetExtendedTcpTable(nullptr, &size, FALSE, AF_INET, TCP_TABLE_OWNER_PID_CONNECTIONS, 0);
    std::vector<std::byte> room(size + sizeof(MIB_TCPTABLE_OWNER_PID));
    size = static_cast<DWORD>(room.size());
    if (GetExtendedTcpTable(room.data(), &size, FALSE, AF_INET, TCP_TABLE_OWNER_PID_CONNECTIONS, 0) != NO_ERROR)
        return {};
    const auto* table = reinterpret_cast<const MIB_TCPTABLE_OWNER_PID*>(room.data());
    std::vector<std::string> users;
    for (DWORD row = 0; row < table->dwNumEntries; ++row) {
        const MIB_TCPROW_OWNER_PID& link = table->table[row];
        const bool isOurs = link.dwOwningPid == GetCurrentProcessId() || link.dwOwningPid == 0;
        if (isOurs || link.dwRemoteAddr != htonl(address) || (link.dwRemotePort & 0xFFFF) != htons(port)) continue;
        users.push_back(ProgramName(link.dwOwningPid));
    }
    return users;
}

std::string UsbPlace(const std::string& devicePath)
{
    return devicePath;
}

bool MayWriteIn(const std::string& folder)
{
    const std::filesystem::path probe = std::filesystem::path(platform::WideFromUtf8(folder)) /
                                        (L"marbex-opos-" + std::to_wstring(GetCurrentProcessId()) + L".tmp");
    const HANDLE file = CreateFileW(probe.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    CloseHandle(file);
    return true;
}

std::string MakeFolderCommand(const std::string& folder)
{
    return "mkdir \"" + folder + "\"";
}

std::string LetWriteCommand(const std::string& folder)
{
    return "icacls \"" + folder + "\" /grant Users:(OI)(CI)M, as administrator";
}

}  // namespace marbex::tools
