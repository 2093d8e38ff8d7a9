#pragma once

// The automation server, loaded into this process: its entry points and the messages of the calling thread.

#include <cstdint>
#include <memory>
#include <string>

#include "platform/automation.h"
#include "platform/registry.h"

namespace marbex::tools {

class ServerLibrary {
public:
    virtual ~ServerLibrary() = default;

    virtual HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) = 0;
    virtual HRESULT Register() = 0;
    virtual HRESULT Unregister() = 0;

    // Waits at most so long (ms) for a message of the calling thread, runs those that wait and returns how many ran.
    virtual int32_t RunMessages(int32_t timeout) = 0;

    // Becomes readable when a message waits for the calling thread; -1 when the system has no such thing.
    virtual int MessageDescriptor() = 0;
};

// The library is never unloaded before the process ends. Null, with a reason for a person, when it cannot be loaded.
std::unique_ptr<ServerLibrary> LoadServer(const std::string& path, std::string& problem);

// The server that the ProgID is registered to, else the one built or installed beside this program; empty, with a
// reason, when there is neither. A registry that cannot be read is a reason too.
std::string FindServer(const platform::Registry& registry, const std::string& progId, std::string& problem);

// The server built or installed beside this program; empty when there is none.
std::string ServerBesideProgram();

// The class that the ProgID is registered to, or fallback when it is not registered.
CLSID RegisteredClass(const platform::Registry& registry, const std::string& progId, const CLSID& fallback);

}  // namespace marbex::tools
