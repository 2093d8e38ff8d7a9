#pragma once

#include <string>

#include "platform/registry.h"

namespace marbex::server {

// The entries by which clients find the classes of an in-process server, under SOFTWARE\Classes of the local machine:
//
//     CLSID\{...}                  the ProgID
//     CLSID\{...}\InprocServer32   serverFile, ThreadingModel "Apartment" (the delivery window lives on one thread)
//     CLSID\{...}\ProgID           the ProgID
//     <ProgID>\CLSID               {...}
//
// False when something could not be written or removed; the other entries are made all the same. The device profiles
// are not touched.
bool RegisterClasses(platform::Registry& registry, const std::string& serverFile);
bool UnregisterClasses(platform::Registry& registry);

}  // namespace marbex::server
