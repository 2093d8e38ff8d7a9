#pragma once

// What the program decides for its whole process before anything else runs, and what it knows of its system.

#include <string>
#include <string_view>
#include <vector>

namespace marbex::tools {

// The words of the command line in UTF-8, the program's own name first.
std::vector<std::string> CommandLineWords(int argc, char** argv);

// Makes the file the registry of this process, the server that it loads included. POSIX only: Windows has one registry,
// and there this returns false.
bool UseRegistryFile(const std::string& path);
// A command to type next, "marbex-opos devices set ...", for the registry file that this command line named.
std::string ToType(std::string command);

// Where the registry of this process is, for a person: the path of its file, or "the registry" of Windows.
std::string RegistryPlace();

// What is wrong with a registry that is only going to be read: its file is not there. Empty when nothing is.
std::string MissingRegistry();

// What a person has to see to when the registry cannot be written.
std::string_view RegistryAdvice();
// And when it cannot be read: what to type or to do.
std::string RegistryReadAdvice();

bool InputIsTerminal();
bool OutputIsTerminal();
bool OutputTakesColours();  // a terminal that does, of a user who has not set NO_COLOR

// Where the history of the interactive console is kept; empty when there is no home for it.
std::string HistoryFile();

}  // namespace marbex::tools
