#pragma once

// What the program decides for its whole process before anything else runs.

#include <string>

namespace marbex::tools {

// Makes the file the registry of this process, the server that it loads included. POSIX only: Windows has one registry,
// and there this returns false.
bool UseRegistryFile(const std::string& path);

bool InputIsTerminal();

// Where the history of the interactive console is kept; empty when there is no home for it.
std::string HistoryFile();

}  // namespace marbex::tools
