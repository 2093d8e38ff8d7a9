// A value of a profile is taken and kept as it is, or refused, and then nothing has changed; the same for what a person
// writes.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>

#include "must.h"
#include "support/profile_fields.h"

using namespace marbex;
using fuzz::Must;

namespace {

constexpr platform::RegistryType kTypes[] = {
    platform::RegistryType::kNone,   platform::RegistryType::kSz,    platform::RegistryType::kExpandSz,
    platform::RegistryType::kBinary, platform::RegistryType::kDword, platform::RegistryType::kMultiSz,
    platform::RegistryType::kQword,
};

bool Same(const support::DeviceProfileStruct& one, const support::DeviceProfileStruct& other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

support::DeviceProfileStruct Defaults()
{
    support::DeviceProfileStruct profile;
    std::memset(&profile, 0, sizeof profile);
    for (const support::ProfileField& field : support::ProfileFields())
        support::SetFieldDefault(field, profile);
    return profile;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider in(bytes, size);
    const auto fields = support::ProfileFields();
    const support::ProfileField& field = fields[in.ConsumeIntegralInRange<std::size_t>(0, fields.size() - 1)];
    const platform::RegistryType type = in.PickValueInArray(kTypes);
    const std::string data = in.ConsumeRemainingBytesAsString();
    const support::DeviceProfileStruct defaults = Defaults();

    support::DeviceProfileStruct loaded = defaults;
    if (support::LoadField(field, {std::string(field.name), type, data}, loaded)) {
        support::DeviceProfileStruct again = defaults;
        const platform::RegistryValue stored = support::StoreField(field, loaded);
        Must(support::LoadField(field, stored, again) && support::StoreField(field, again).data == stored.data);
    } else {
        Must(Same(loaded, defaults));
    }

    support::DeviceProfileStruct assigned = defaults;
    if (support::AssignField(field, data, assigned).empty()) {
        support::DeviceProfileStruct again = defaults;
        Must(support::AssignField(field, support::ShowField(field, assigned), again).empty() && Same(again, assigned));
    } else {
        Must(Same(assigned, defaults));
    }
    return 0;
}
