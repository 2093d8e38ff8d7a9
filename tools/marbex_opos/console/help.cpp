#include "marbex_opos/console/help.h"

#include "marbex_opos/opos/code_names.h"

namespace marbex::tools {

namespace {

constexpr const char* kLanguage =
    R"(POSPrinter.Method(argument, ...)    call a method; CashDrawer and LineDisplay are the other objects
POSPrinter.Property                 read a property
POSPrinter.Property = value         write it
... == value or value               the same call or read, and what its result has to be
wait MS                             let events come for so many milliseconds
expect EVENT MS                     let events come until one of this name is there: StatusUpdateEvent,
                                    OutputCompleteEvent, ErrorEvent, DirectIOEvent or any
require EVENT MS                    the same, and it is an error when none comes
answer retry, clear or none         what the error events that follow are answered
release Object                      drop a service object
help Object, help Object.Member     what there is to call, read and write
quit                                end

Values: 12, -1, 0x1F, true, false, constants such as PTR_S_RECEIPT, several joined by |, and "text" with
\n \r \t \\ \" \e \xHH \uHHHH. The tab key completes names.
)";

std::string Described(ObjectKind object, const Property& property)
{
    std::string text = std::string(property.name) + (property.IsText() ? "  text" : "  number");
    std::string names;
    for (const std::string_view constant : ConstantsOf(NamesOfProperty(object, property.name)))
        names += (names.empty() ? ": " : ", ") + std::string(constant);
    return text + names;
}

std::string HelpOfAll(ObjectKind object)
{
    std::string text;
    for (const Method& method : MethodsOf(object))
        text += Signature(method) + "\n";
    text += "\n";
    for (const Property& property : PropertiesOf(object))
        text += std::string(property.name) + (property.IsText() ? "  text" : "  number") + "\n";
    return text;
}

}  // namespace

std::string HelpText(const Help& help)
{
    if (!help.object) return kLanguage;
    if (help.member.empty()) return HelpOfAll(*help.object);
    if (const Method* method = FindMethod(*help.object, help.member)) return Signature(*method) + "\n";
    const std::optional<Property> property = FindProperty(*help.object, help.member);
    return property ? Described(*help.object, *property) + "\n" : std::string();
}

}  // namespace marbex::tools
