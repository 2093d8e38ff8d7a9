#pragma once

// The methods of an automation class, by name and by number. A row is made from a member function, whose parameter and
// result types say how a call is coerced (arguments.h):
//
//     constexpr DispatchMethod kMethods[] = {
//         Method<&Drawer::OpenDrawer>("OpenDrawer"),
//     };
//     constexpr DispatchTable kTable("Drawer", kMethods);
//
// The dispatch identifier of a method is its place in the table, from 1.

#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "platform/automation.h"
#include "server/arguments.h"

namespace marbex::server {

// The arguments and the places for results of one call, as IDispatch::Invoke brings them.
struct DispatchCall {
    std::span<VARIANTARG> arguments;  // last first, as many as the method has, or none
    VARIANT& result;                  // holds nothing yet
    UINT argumentError = 0;           // the index in arguments of the one that could not be coerced
};

struct DispatchMethod {
    std::string_view name;
    UINT parameterCount = 0;
    HRESULT (*call)(void* service, DispatchCall& call) = nullptr;  // service: an object of the method's class
    bool alsoWithoutArguments = false;                             // then they are 0, or empty
};

constexpr DispatchMethod AlsoWithoutArguments(DispatchMethod method)
{
    method.alsoWithoutArguments = true;
    return method;
}

class DispatchTable {
public:
    // Both must live as long as the table. The name of the class is for the log and for exceptions.
    constexpr DispatchTable(const char* className, std::span<const DispatchMethod> methods)
        : className_(className), methods_(methods)
    {
    }

    // IDispatch::GetIDsOfNames: without regard to case; the methods have no named parameters.
    HRESULT GetIDsOfNames(REFIID riid, OLECHAR** names, UINT count, DISPID* ids) const;

    // IDispatch::Invoke on an object of the class. No exception leaves it.
    HRESULT Invoke(void* service, DISPID id, REFIID riid, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                   EXCEPINFO* exception, UINT* argumentError) const;

    std::span<const DispatchMethod> Methods() const { return methods_; }

private:
    const char* className_;
    std::span<const DispatchMethod> methods_;
};

// What a member function says about its calls.
template <typename Operation>
struct Signature;

template <typename Class, typename Result, typename... Parameters>
struct Signature<Result (Class::*)(Parameters...)> {
    using Service = Class;
    using ResultType = Result;
    using Arguments = std::tuple<Argument<Parameters>...>;
    static constexpr UINT kCount = sizeof...(Parameters);
};

namespace internal {

// Reads the arguments in the order the method declares them.
template <typename Arguments, std::size_t... Index>
HRESULT ReadArguments(Arguments& arguments, DispatchCall& call, std::index_sequence<Index...>)
{
    HRESULT result = S_OK;
    [[maybe_unused]] const auto read = [&](auto& argument, std::size_t index) {
        const std::size_t place = call.arguments.size() - 1 - index;
        result = argument.Read(call.arguments[place]);
        if (FAILED(result)) call.argumentError = static_cast<UINT>(place);
        return SUCCEEDED(result);
    };
    (void)(read(std::get<Index>(arguments), Index) && ...);
    return result;
}

template <typename Arguments, std::size_t... Index>
void WriteBackArguments(const Arguments& arguments, DispatchCall& call, std::index_sequence<Index...>)
{
    (std::get<Index>(arguments).WriteBack(call.arguments[call.arguments.size() - 1 - Index]), ...);
}

}  // namespace internal

// Coerces the arguments of a call when it brings any, runs operation with them, writes back and stores the result.
template <typename Called, typename Operation>
HRESULT RunCall(DispatchCall& call, const Operation& operation)
{
    constexpr auto kIndices = std::make_index_sequence<Called::kCount>();
    typename Called::Arguments arguments;
    const bool brings = !call.arguments.empty();
    const HRESULT read = brings ? internal::ReadArguments(arguments, call, kIndices) : S_OK;
    if (FAILED(read)) return read;

    const auto run = [&](auto&... argument) { return operation(argument.Pass()...); };
    if constexpr (std::is_void_v<typename Called::ResultType>) {
        std::apply(run, arguments);
        if (brings) internal::WriteBackArguments(arguments, call, kIndices);
        return S_OK;
    } else {
        const typename Called::ResultType result = std::apply(run, arguments);
        if (brings) internal::WriteBackArguments(arguments, call, kIndices);
        return PutResult(result, call.result);
    }
}

// A row for a member function of the service itself. A function of a base class needs the class of the service said.
template <auto Operation, typename Service = typename Signature<decltype(Operation)>::Service>
constexpr DispatchMethod Method(std::string_view name)
{
    using Called = Signature<decltype(Operation)>;
    return {name, Called::kCount, [](void* service, DispatchCall& call) {
                auto& object = *static_cast<Service*>(service);
                return RunCall<Called>(call, [&object](auto&&... arguments) {
                    return (object.*Operation)(std::forward<decltype(arguments)>(arguments)...);
                });
            }};
}

}  // namespace marbex::server
