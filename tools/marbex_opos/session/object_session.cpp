#include "marbex_opos/session/object_session.h"

#include "platform/clock.h"

namespace marbex::tools {

ObjectSession::ObjectSession(std::string serverPath, const ControlObject::Listener& listener)
    : serverPath_(std::move(serverPath))
{
    for (const ObjectClass& object : kObjectClasses) {
        controlObjects_[static_cast<std::size_t>(object.kind)] = std::make_unique<ControlObject>(object.kind, listener);
    }
}

ObjectSession::~ObjectSession()
{
    // The companions reach their hardware through the printer, so it goes last.
    Release(ObjectKind::kLineDisplay);
    Release(ObjectKind::kCashDrawer);
    Release(ObjectKind::kPrinter);
}

bool ObjectSession::LoadServer(std::string& problem)
{
    if (server_) return true;
    std::string path = serverPath_;
    if (path.empty()) path = FindServer(platform::SystemRegistry(), std::string(kObjectClasses[0].progId), problem);
    if (!path.empty()) server_ = tools::LoadServer(path, problem);
    return server_ != nullptr;
}

ServiceObject* ObjectSession::Object(ObjectKind kind, std::string& problem)
{
    std::unique_ptr<ServiceObject>& object = objects_[static_cast<std::size_t>(kind)];
    if (!object && LoadServer(problem)) {
        object = ServiceObject::Create(*server_, platform::SystemRegistry(), kind, problem);
    }
    return object.get();
}

void ObjectSession::Release(ObjectKind kind)
{
    objects_[static_cast<std::size_t>(kind)].reset();
}

void ObjectSession::AnswerErrors(std::optional<int32_t> response)
{
    for (const auto& controlObject : controlObjects_)
        controlObject->AnswerErrors(response);
}

bool ObjectSession::RunMessagesUntil(int32_t milliseconds, const std::function<bool()>& done)
{
    platform::Clock& clock = platform::SystemClock();
    const uint64_t deadline = clock.Milliseconds() + static_cast<uint64_t>(milliseconds);
    RunWaitingMessages();
    while (!done()) {
        const uint64_t now = clock.Milliseconds();
        if (now >= deadline) return false;
        const auto left = static_cast<int32_t>(deadline - now);
        if (server_) {
            server_->RunMessages(left);
        } else {
            clock.Sleep(static_cast<uint32_t>(left));
        }
    }
    return true;
}

void ObjectSession::RunWaitingMessages()
{
    if (server_) server_->RunMessages(0);
}

int ObjectSession::MessageDescriptor()
{
    return server_ ? server_->MessageDescriptor() : -1;
}

}  // namespace marbex::tools
