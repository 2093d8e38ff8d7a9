#pragma once

#include "server/dispatch_table.h"

namespace marbex::server {

// The forty-five methods of MarbexOposPrnDriver.
const DispatchTable& PosPrinterTable();

}  // namespace marbex::server
