#pragma once

// The application's side of a till: the server, the service objects in use and the events that they report. Everything
// happens on one thread.

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "marbex_opos/session/control_object.h"
#include "marbex_opos/session/server_library.h"
#include "marbex_opos/session/service_object.h"

namespace marbex::tools {

class ObjectSession {
public:
    // serverPath: the library to load, empty for the registered one. It is loaded with the first object.
    ObjectSession(std::string serverPath, const ControlObject::Listener& listener);
    ~ObjectSession();
    ObjectSession(const ObjectSession&) = delete;
    ObjectSession& operator=(const ObjectSession&) = delete;

    // The object, made when it is not there; null, with a reason, when it cannot be made.
    ServiceObject* Object(ObjectKind kind, std::string& problem);
    IDispatch* ControlObjectOf(ObjectKind kind) { return controlObjects_[static_cast<std::size_t>(kind)].get(); }
    void Release(ObjectKind kind);
    void AnswerErrors(std::optional<int32_t> response);

    // Runs messages for so long (ms), or until done says true; false when the time ran out first.
    bool RunMessagesUntil(int32_t milliseconds, const std::function<bool()>& done);

    void RunWaitingMessages();
    int MessageDescriptor();  // -1 while no server is loaded

private:
    bool LoadServer(std::string& problem);

    std::string serverPath_;
    std::unique_ptr<ServerLibrary> server_;
    // Declared before the objects that call them, so that they go last.
    std::array<std::unique_ptr<ControlObject>, kObjectClasses.size()> controlObjects_;
    std::array<std::unique_ptr<ServiceObject>, kObjectClasses.size()> objects_;
};

}  // namespace marbex::tools
