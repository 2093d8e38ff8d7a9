#pragma once

// Another program, run to be looked at: with its streams in our hands, or with a console of its own.

#include <windows.h>

#include <string>
#include <vector>

namespace marbex::tools {

struct Finished {
    DWORD status = 0xFFFFFFFF;
    std::string output;  // standard output and error
};

// words: what the program finds on its command line after its name, in UTF-8.
class Child {
public:
    enum class Streams { kPipes, kOwnConsole };

    Child(const std::string& program, const std::vector<std::string>& words, Streams streams = Streams::kPipes);
    ~Child();  // ends it if it still runs
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    DWORD Id() const { return process_.dwProcessId; }
    void Write(const std::string& bytes);
    void CloseInput();
    std::string ReadLine();  // with its end; what there is when the output ends first
    Finished Finish();       // reads the rest and waits for the end

private:
    bool ReadByte(char& byte);

    PROCESS_INFORMATION process_{};
    HANDLE input_ = nullptr;   // ours to write to
    HANDLE output_ = nullptr;  // ours to read from
};

}  // namespace marbex::tools
