#include "server/registration.h"

#include <cstdio>

#include "server/class_factories.h"

namespace marbex::server {
namespace {

constexpr const char* kClassesKey = "SOFTWARE\\Classes\\";

std::string BracedText(const CLSID& id)
{
    char text[39];
    std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<unsigned>(id.Data1), id.Data2, id.Data3, id.Data4[0], id.Data4[1], id.Data4[2],
                  id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
    return text;
}

std::string ClassKeyOf(const CreatableClass& creatable)
{
    return std::string(kClassesKey) + "CLSID\\" + BracedText(creatable.classId);
}

std::string ProgIdKeyOf(const CreatableClass& creatable)
{
    return std::string(kClassesKey) + creatable.progId;
}

bool Write(platform::Registry& registry, const std::string& key, const char* name, const std::string& text)
{
    return registry.CreateKey(key) && registry.SetValue(key, {name, platform::RegistryType::kSz, text});
}

bool Remove(platform::Registry& registry, const std::string& key)
{
    return !registry.KeyExists(key) || registry.DeleteKey(key);
}

}  // namespace

bool RegisterClasses(platform::Registry& registry, const std::string& serverFile)
{
    bool complete = true;
    for (const CreatableClass& creatable : CreatableClasses()) {
        const std::string classKey = ClassKeyOf(creatable);
        const std::string serverKey = classKey + "\\InprocServer32";
        complete &= Write(registry, classKey, "", creatable.progId);
        complete &= Write(registry, serverKey, "", serverFile);
        complete &= Write(registry, serverKey, "ThreadingModel", "Apartment");
        complete &= Write(registry, classKey + "\\ProgID", "", creatable.progId);
        complete &= Write(registry, ProgIdKeyOf(creatable) + "\\CLSID", "", BracedText(creatable.classId));
    }
    return complete;
}

bool UnregisterClasses(platform::Registry& registry)
{
    bool complete = true;
    for (const CreatableClass& creatable : CreatableClasses()) {
        complete &= Remove(registry, ClassKeyOf(creatable));
        complete &= Remove(registry, ProgIdKeyOf(creatable));
    }
    return complete;
}

}  // namespace marbex::server
