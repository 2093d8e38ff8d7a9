#pragma once

// The methods of a class as text, one a line: its dispatch identifier, its name, its arguments, and behind " => " what
// comes of it. An argument is a number, a "text", long& or string& for references, or object for a control object.

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "automation_client.h"
#include "platform/text.h"

namespace marbex::tests {

struct MethodCall {
    DISPID id = 0;
    std::string name;
    std::vector<Arg> arguments;
    std::string outcome;
};

class MethodCalls {
public:
    explicit MethodCalls(const std::string& text)
    {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (!line.empty()) calls_.push_back(Read(line));
        }
    }
    ~MethodCalls() { SysFreeString(string_); }
    MethodCalls(const MethodCalls&) = delete;
    MethodCalls& operator=(const MethodCalls&) = delete;

    // Each has its number and takes so many arguments, no more; check is told what a call came to.
    template <typename Check>
    void Make(const Client& client, const Check& check)
    {
        DISPID last = 0;
        for (MethodCall& call : calls_) {
            SCOPED_TRACE(call.name);
            EXPECT_EQ(call.id, ++last);
            EXPECT_EQ(client.IdOf(platform::Utf16FromUtf8(call.name)), call.id);
            check(call);
            call.arguments.emplace_back(0);
            EXPECT_EQ(client.Invoke(call.id, call.arguments).result, DISP_E_BADPARAMCOUNT);
        }
        EXPECT_EQ(client.Invoke(last + 1, {}).result, DISP_E_MEMBERNOTFOUND);
    }

private:
    MethodCall Read(const std::string& line)
    {
        MethodCall call;
        const std::size_t arrow = line.find(" =>");
        call.outcome = line.size() > arrow + 4 ? line.substr(arrow + 4) : "";
        std::istringstream words(line.substr(0, arrow));
        words >> call.id >> call.name >> std::ws;
        while (words.peek() != std::char_traits<char>::eof()) {
            std::string word;
            const bool isText = words.peek() == '"';
            words >> std::quoted(word) >> std::ws;
            if (isText) {
                call.arguments.emplace_back(platform::Utf16FromUtf8(word).c_str());
            } else if (word == "long&") {
                call.arguments.emplace_back(&data_);
            } else if (word == "string&") {
                call.arguments.emplace_back(&string_);
            } else if (word == "object") {
                call.arguments.emplace_back(static_cast<IDispatch*>(nullptr));
            } else {
                call.arguments.emplace_back(std::stoi(word));
            }
        }
        return call;
    }

    LONG data_ = 5;
    BSTR string_ = nullptr;
    std::vector<MethodCall> calls_;
};

}  // namespace marbex::tests
