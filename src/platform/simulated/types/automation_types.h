#pragma once

#include <marbex/automation.h>
