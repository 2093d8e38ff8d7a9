#pragma once

// The service objects for applications on Linux: a receipt printer with its cash drawer and customer display, without
// COM to be seen. Link libmarbexopos.so: pkg-config marbex-opos, or find_package(MarbexOpos).

#include <marbex/cash_drawer.h>
#include <marbex/line_display.h>
#include <marbex/messages.h>
#include <marbex/printer.h>
#include <marbex/result.h>
