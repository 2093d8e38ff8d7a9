#pragma once

#include "server/dispatch_table.h"

namespace marbex::server {

// The twenty methods of MarbexOposCashDrawerDriver.
const DispatchTable& CashDrawerTable();

// The twenty-nine methods of MarbexOposLineDisplayDriver.
const DispatchTable& LineDisplayTable();

}  // namespace marbex::server
