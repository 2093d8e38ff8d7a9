#include "tools/windows/child.h"

#include <stdexcept>

#include "platform/windows/wide_text.h"

namespace marbex::tools {

namespace {

// As CommandLineToArgvW takes it apart.
std::wstring Quoted(const std::wstring& word)
{
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : word) {
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        if (c == L'"') quoted.append(backslashes + 1, L'\\');
        quoted += c;
        if (c == L'"') backslashes = 0;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L'"';
}

}  // namespace

Child::Child(const std::string& program, const std::vector<std::string>& words, Streams streams)
{
    std::wstring line = Quoted(platform::WideFromUtf8(program));
    for (const std::string& word : words)
        line += L' ' + Quoted(platform::WideFromUtf8(word));

    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    HANDLE childInput = nullptr;
    HANDLE childOutput = nullptr;
    if (streams == Streams::kPipes) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        CreatePipe(&childInput, &input_, &inherited, 0);
        CreatePipe(&output_, &childOutput, &inherited, 0);
        SetHandleInformation(input_, HANDLE_FLAG_INHERIT, 0);
        SetHandleInformation(output_, HANDLE_FLAG_INHERIT, 0);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = childInput;
        startup.hStdOutput = childOutput;
        startup.hStdError = childOutput;
    } else {
        startup.dwFlags = STARTF_USESHOWWINDOW;
        startup.wShowWindow = SW_HIDE;
    }
    const DWORD flags = streams == Streams::kPipes ? CREATE_NO_WINDOW : CREATE_NEW_CONSOLE;
    const BOOL isMade = CreateProcessW(nullptr, line.data(), nullptr, nullptr, streams == Streams::kPipes, flags,
                                       nullptr, nullptr, &startup, &process_);
    if (childInput != nullptr) CloseHandle(childInput);
    if (childOutput != nullptr) CloseHandle(childOutput);
    if (!isMade) throw std::runtime_error("cannot start " + program);
}

Child::~Child()
{
    CloseInput();
    if (WaitForSingleObject(process_.hProcess, 0) != WAIT_OBJECT_0) TerminateProcess(process_.hProcess, 99);
    if (output_ != nullptr) CloseHandle(output_);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
}

void Child::Write(const std::string& bytes)
{
    DWORD written = 0;
    WriteFile(input_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

void Child::CloseInput()
{
    if (input_ != nullptr) CloseHandle(input_);
    input_ = nullptr;
}

bool Child::ReadByte(char& byte)
{
    DWORD got = 0;
    return output_ != nullptr && ReadFile(output_, &byte, 1, &got, nullptr) && got == 1;
}

std::string Child::ReadLine()
{
    std::string line;
    char byte = 0;
    while (!line.ends_with('\n') && ReadByte(byte))
        line += byte;
    return line;
}

Finished Child::Finish()
{
    CloseInput();
    Finished finished;
    // Not until the pipe's end: what the program has started in passing, such as the first desktop of a session under
    // Wine, may have inherited it and live on. What the program itself wrote is there when it has ended.
    bool ended = false;
    char byte = 0;
    for (;;) {
        DWORD waiting = 0;
        if (output_ == nullptr || !PeekNamedPipe(output_, nullptr, 0, nullptr, &waiting, nullptr)) break;
        if (waiting > 0 && ReadByte(byte)) {
            finished.output += byte;
        } else if (ended) {
            break;
        } else {
            ended = WaitForSingleObject(process_.hProcess, 5) == WAIT_OBJECT_0;
        }
    }
    WaitForSingleObject(process_.hProcess, INFINITE);
    GetExitCodeProcess(process_.hProcess, &finished.status);
    return finished;
}

}  // namespace marbex::tools
